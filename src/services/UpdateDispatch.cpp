#include "services/UpdateDispatch.h"

#include "catalogue/manager/CBrevikKitCertificateMgr.h"
#include "catalogue/queries/CVelmarProductCertifier.h"
#include "language/LangManager.h"
#include "modules/ScopedText.h"
#include "services/ServiceCall.h"
#include "services/VelmarUpdateService.h"
#include "trace/UTrace.h"

namespace UpdateDispatch {
namespace {

using CLibraryUtils::ScopedText;

// What the service is told of a product.
struct Request {
    Status status = kNoUpdateInfo;  // kTold: the rest is set
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

Request Prepare(const char* dispatch, const VelmarUpdateService& service,
                const std::string& productIdentifier, const std::string& locale) {
    const CertUpdateInfo info = FindUpdateInfo(dispatch, productIdentifier);
    Request request;
    if (info.m_strUsedBy.empty()) {
        return request;
    }
    std::string sku;
    if (service.GetUninstallInfo(info.m_strInstallerGUID, info.m_strUsedBy, &request.langId,
                                 &request.version, &sku)) {
        request.langId = LanguageOf(locale, info, request.langId);
        request.status = kTold;
    } else {
        request.status = kNoUninstallInfo;
    }
    // Both dispatches say it in these words.
    UTrace::Info("Dispatch_InvokeUpdate(dwLangID=%d, strVersion=%s)",
                 static_cast<int>(request.langId), request.version.c_str());
    request.sku = sku.empty() ? Utf8ToWide(info.m_strInstallerGUID) : NarrowToWide(sku);
    return request;
}

// `isDone` makes the call on the service, given SKU, version and language, and tells whether it
// ended well.
template <typename IsDone>
Status Dispatch(const char* name, const std::string& productIdentifier, const std::string& locale,
                IsDone isDone) {
    const VelmarUpdateService updateService;
    const Request request = Prepare(name, updateService, productIdentifier, locale);
    if (request.status != kTold) {
        return request.status;
    }
    const VelmarUpdateService::Service service = updateService.GetService();
    if (!service) {
        return kTold;
    }
    const ScopedText version(NarrowToWide(request.version));
    const ScopedText sku(request.sku);
    return isDone(service.Get(), sku.Get(), version.Get(), request.langId) ? kTold : kServiceFailed;
}

}  // namespace

Status InvokeUpdate(const std::string& productIdentifier, const std::string& locale,
                    bool runInBackground) {
    const auto update = [&](IUpdateServices* service, BSTR sku, BSTR version, ULONG langId) {
        const ScopedText product(NarrowToWide(productIdentifier));
        return CallService(runInBackground ? "IUpdateServices::RunUpdateInBackground"
                                           : "IUpdateServices::RunUpdate",
                           [&]() CALLS_FOREIGN_OBJECTS {
                               return runInBackground
                                          ? service->RunUpdateInBackground(sku, version, langId,
                                                                           product.Get())
                                          : service->RunUpdate(sku, version, langId, product.Get());
                           }) == S_OK;
    };
    return Dispatch("Dispatch_InvokeUpdate", productIdentifier, locale, update);
}

Status IsUpdateOrMessageAvailable(const std::string& productIdentifier, const std::string& locale,
                                  bool connectToServer) {
    const auto ask = [&](IUpdateServices* service, BSTR sku, BSTR version, ULONG langId) {
        // The low half counts; a service that writes 32 bits finds room for them.
        VARIANT_BOOL available[2] = {VARIANT_FALSE, VARIANT_FALSE};
        const HRESULT result =
            CallService("IUpdateServices::CheckUpdateOrMessage", [&]() CALLS_FOREIGN_OBJECTS {
                return service->CheckUpdateOrMessage(sku, version, langId,
                                                     connectToServer ? VARIANT_TRUE : VARIANT_FALSE,
                                                     available);
            });
        return result == S_OK && available[0] == VARIANT_TRUE;
    };
    return Dispatch("Dispatch_IsUpdateOrMessageAvailable", productIdentifier, locale, ask);
}

}  // namespace UpdateDispatch
