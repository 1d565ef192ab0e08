#include "services/UpdateDispatch.h"

#include "catalogue/manager/CCertificateMgr.h"
#include "catalogue/queries/CVelmarProductCertifier.h"
#include "language/LangManager.h"
#include "modules/ScopedText.h"
#include "services/ServiceCall.h"
#include "services/VelmarUpdateService.h"
#include "trace/UTrace.h"

namespace UpdateDispatch {
namespace {

using CLibraryUtils::ScopedText;

// What the service needs to know of a product.
struct Request {
    std::uint32_t langId = 0;
    std::string version;
    WideString sku;
};

std::uint32_t LanguageOf(const std::string& locale, const CertUpdateInfo& info,
                         std::uint32_t uninstallLanguage) {
    if (!locale.empty()) {
        return LangManager().GetLangIdFromCode(locale);
    }
    return info.m_dwLangID != 0 ? info.m_dwLangID : uninstallLanguage;
}

CertUpdateInfo FindUpdateInfo(const char* dispatch, const std::string& productIdentifier) {
    const CVelmarProductCertifier certifier;
    CertUpdateInfo info;
    CBrevikKitCertificateMgr manager;
    manager.Load(CCertificateMgr::normal_runtime, nullptr, 0);
    const bool found = certifier.GetUpdateInfo(manager, &info, NarrowToUtf8(productIdentifier));
    UTrace::Info("%s: bGotUpdateInfo = %s, certUpdateInfo.m_strInstallerGUID = %s", dispatch,
                 found ? "true" : "false", Utf8ToNarrow(info.m_strInstallerGUID).c_str());
    return info;
}

// kDone once the request is ready for the service.
Status Prepare(const char* dispatch, const std::string& productIdentifier,
               const std::string& locale, Request* request) {
    const CertUpdateInfo info = FindUpdateInfo(dispatch, productIdentifier);
    if (info.m_strUsedBy.empty()) {
        return kNoUpdateInfo;
    }
    std::string sku;
    const bool found = VelmarUpdateService().GetUninstallInfo(
        info.m_strInstallerGUID, info.m_strUsedBy, &request->langId, &request->version, &sku);
    if (found) {
        request->langId = LanguageOf(locale, info, request->langId);
    }
    // Both dispatches say it in these words.
    UTrace::Info("Dispatch_InvokeUpdate(dwLangID=%d, strVersion=%s)",
                 static_cast<int>(request->langId), request->version.c_str());
    request->sku = sku.empty() ? Utf8ToWide(info.m_strInstallerGUID) : NarrowToWide(sku);
    return found ? kDone : kNoUninstallInfo;
}

}  // namespace

Status InvokeUpdate(const std::string& productIdentifier, const std::string& locale,
                    bool runInBackground) {
    Request request;
    const Status status = Prepare("Dispatch_InvokeUpdate", productIdentifier, locale, &request);
    if (status != kDone) {
        return status;
    }
    const VelmarUpdateService::Service service = VelmarUpdateService().GetService();
    if (!service) {
        return kDone;
    }
    const ScopedText version(NarrowToWide(request.version));
    const ScopedText sku(request.sku);
    const ScopedText product(NarrowToWide(productIdentifier));
    const auto run =
        runInBackground ? &IUpdateServices::RunUpdateInBackground : &IUpdateServices::RunUpdate;
    const HRESULT result = CallService(
        runInBackground ? "IUpdateServices::RunUpdateInBackground" : "IUpdateServices::RunUpdate",
        [&]() CALLS_FOREIGN_OBJECTS {
            return (service.Get()->*run)(sku.Get(), version.Get(), request.langId, product.Get());
        });
    return result == S_OK ? kDone : kServiceFailed;
}

Status IsUpdateOrMessageAvailable(const std::string& productIdentifier, const std::string& locale,
                                  bool connectToServer) {
    Request request;
    const Status status =
        Prepare("Dispatch_IsUpdateOrMessageAvailable", productIdentifier, locale, &request);
    if (status != kDone) {
        return status;
    }
    const VelmarUpdateService::Service service = VelmarUpdateService().GetService();
    if (!service) {
        return kDone;
    }
    const ScopedText version(NarrowToWide(request.version));
    const ScopedText sku(request.sku);
    // The low half counts; a service that writes 32 bits finds room for them.
    VARIANT_BOOL available[2] = {VARIANT_FALSE, VARIANT_FALSE};
    const HRESULT result =
        CallService("IUpdateServices::CheckUpdateOrMessage", [&]() CALLS_FOREIGN_OBJECTS {
            return service.Get()->CheckUpdateOrMessage(
                sku.Get(), version.Get(), request.langId,
                connectToServer ? VARIANT_TRUE : VARIANT_FALSE, available);
        });
    return result == S_OK && available[0] == VARIANT_TRUE ? kDone : kServiceFailed;
}

}  // namespace UpdateDispatch
