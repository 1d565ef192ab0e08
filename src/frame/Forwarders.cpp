#include "frame/Forwarders.h"

#include "catalogue/queries/CatalogueQueries.h"
#include "cookies/CookieValues.h"
#include "frame/FailureResults.h"
#include "language/LangManager.h"
#include "language/SelectedLocale.h"
#include "services/ProfileDispatch.h"
#include "services/UpdateDispatch.h"
#include "trace/UTrace.h"

namespace BrevikConfig {
namespace {

const char* TrueOrFalse(bool value) {
    return value ? "true" : "false";
}

// Whether an out argument can be written; a null one is said on the trace.
bool IsPlace(const void* argument, const char* name) {
    if (argument == nullptr) {
        UTrace::Error("The argument %s is null; there is no place for the result.", name);
    }
    return argument != nullptr;
}

}  // namespace

std::uint8_t CertificateItemValue(const char* installerGuid, const char* identifier, void** value,
                                  std::uint32_t* size) {
    const UTrace::Function scope("BrevikKit:CertificateItemValue", nullptr);
    UTrace::Info("BrevikKit:CertificateItemValue(InstallerGUID=%s, sIdentifier=%s)", installerGuid,
                 identifier);
    if (!IsPlace(value, "value") || !IsPlace(size, "size")) {
        return kQueryFailure;
    }
    const bool found =
        CatalogueQueries::CertificateItemValue(installerGuid, identifier, value, size);
    UTrace::Info("BrevikKit:CertificateItemValue--RESULT--(void)");
    return found ? 1 : 0;
}

std::uint8_t CertificateItemValueByProdName(const char* productName, const char* identifier,
                                            void** value, std::uint32_t* size) {
    const UTrace::Function scope("BrevikKit:CertificateItemValueByProdName", nullptr);
    UTrace::Info("BrevikKit:CertificateItemValueByProdName(sProdName=%s, sIdentifier=%s)",
                 productName, identifier);
    if (!IsPlace(value, "value") || !IsPlace(size, "size")) {
        return kQueryFailure;
    }
    const bool found =
        CatalogueQueries::CertificateItemValueByProdName(productName, identifier, value, size);
    UTrace::Info("BrevikKit:CertificateItemValueByProdName--RESULT--(void)");
    return found ? 1 : 0;
}

std::int32_t GetLocalGUIDs(char** guids) {
    const UTrace::Function scope("BrevikKit:GetLocalGUIDs", nullptr);
    return IsPlace(guids, "guids") ? CatalogueQueries::GetLocalGUIDs(guids) : kLocalGuidsFailure;
}

std::int32_t GetUserLanguageIds(const LANGID* langIds, std::uint32_t count, LANGID* selected) {
    const UTrace::Function scope("BrevikKit:GetUserLanguage_Ids", nullptr);
    if (!IsPlace(selected, "selected")) {
        return kLanguageFailure;
    }
    return static_cast<std::int32_t>(
        LangManager::GetLang(langIds, count, selected, &FindInstalledLanguageOrNone));
}

std::int32_t GetUserLanguageCode(const char* const* codes, std::uint32_t count, LANGID* selected) {
    const UTrace::Function scope("BrevikKit:GetUserLanguage_Str", nullptr);
    if (!IsPlace(selected, "selected")) {
        return kLanguageFailure;
    }
    return static_cast<std::int32_t>(
        LangManager().GetLang(codes, count, selected, &FindInstalledLanguageOrNone));
}

std::int32_t ReadOndrelCookieValue(const WCHAR* key, WCHAR** value) {
    const UTrace::Function scope("BrevikKit:ReadOndrelCookieValue", nullptr);
    return IsPlace(value, "value") ? CookieValues::ReadOndrelValue(key, value) : kCookieFailure;
}

std::int32_t WriteOndrelCookieValue(const WCHAR* key, const WCHAR* value) {
    const UTrace::Function scope("BrevikKit:WriteOndrelCookieValue", nullptr);
    return CookieValues::WriteOndrelValue(key, value);
}

std::int32_t ReadCookieValue(const WCHAR* domain, const WCHAR* cookie, const WCHAR* key,
                             WCHAR** value) {
    const UTrace::Function scope("BrevikKit:ReadCookieValue", nullptr);
    return IsPlace(value, "value") ? CookieValues::ReadValue(domain, cookie, key, value)
                                   : kCookieFailure;
}

std::int32_t WriteCookieValue(const WCHAR* domain, const WCHAR* cookie, const WCHAR* key,
                              const WCHAR* value) {
    const UTrace::Function scope("BrevikKit:WriteCookieValue", nullptr);
    return CookieValues::WriteValue(domain, cookie, key, value);
}

std::int32_t InvokeUpdate(const char* productIdentifier, const char* locale, bool runInBackground) {
    const UTrace::Function scope("BrevikKit:Dispatch_InvokeUpdate", nullptr);
    UTrace::Info(
        "BrevikKit:Dispatch_InvokeUpdate - productIdentifier=%s, locale=%s, bRunInBackground=%s",
        productIdentifier, locale, TrueOrFalse(runInBackground));
    return UpdateDispatch::InvokeUpdate(productIdentifier, LocaleOrSelected(locale),
                                        runInBackground);
}

std::uint8_t IsUpdateOrMessageAvailable(const char* productIdentifier, const char* locale,
                                        bool connectToServer) {
    const UTrace::Function scope("BrevikKit:Dispatch_IsUpdateOrMessageAvailable", nullptr);
    UTrace::Info(
        "BrevikKit:Dispatch_IsUpdateOrMessageAvailable - productIdentifier=%s, locale=%s, "
        "connectToServer=%s",
        productIdentifier, locale, TrueOrFalse(connectToServer));
    const UpdateDispatch::Status status = UpdateDispatch::IsUpdateOrMessageAvailable(
        productIdentifier, LocaleOrSelected(locale), connectToServer);
    return status == UpdateDispatch::kTold ? 1 : 0;
}

std::int32_t GetKindletProfileID(const char* kindletUid, const char* locale, void* window,
                                 char** profileId) {
    const UTrace::Function scope("BrevikKit:Dispatch_GetKindletProfileID", nullptr);
    return IsPlace(profileId, "strProfileID")
               ? ProfileDispatch::GetKindletProfileID(kindletUid, locale, window, profileId)
               : kProfileFailure;
}

}  // namespace BrevikConfig
