// The twelve exported functions: each is the call frame around its trace scope and the call into
// the subsystem that does the work.

#define BREVIKCONFIG_NO_COTASKMEMFREE
#include "brevikconfig.h"

#include "catalogue/queries/CatalogueQueries.h"
#include "cookies/CookieValues.h"
#include "frame/CallFrame.h"
#include "language/LangManager.h"
#include "services/ProfileDispatch.h"
#include "services/UpdateDispatch.h"
#include "trace/UTrace.h"

using namespace BrevikConfig;

namespace {

// What a function returns when it fails as a whole: for a null out argument, and for an exception
// that reached the call frame.
constexpr std::uint8_t kQueryFailure = 0;
constexpr std::int32_t kLocalGuidsFailure = 0;
constexpr std::int32_t kLanguageFailure = 1;
constexpr std::int32_t kCookieFailure = 1;
constexpr std::int32_t kUpdateFailure = 2;
constexpr std::uint8_t kAvailabilityFailure = 0;
constexpr std::int32_t kProfileFailure = 2;

const char* OrEmpty(const char* text) {
    return text != nullptr ? text : "";
}
const WCHAR* OrEmpty(const WCHAR* text) {
    return text != nullptr ? text : WIDE("");
}

const char* TrueOrFalse(std::uint8_t value) {
    return value != 0 ? "true" : "false";
}

// Whether an out argument can be written; a null one is reported on the trace.
bool IsPlace(const void* argument, const char* name) {
    if (argument == nullptr) {
        UTrace::Error("The argument %s is null; there is no place for the result.", name);
    }
    return argument != nullptr;
}

// The line of the exports that write none.
constexpr auto kNoLine = [] {};

}  // namespace

extern "C" {

PLATFORM_API std::uint8_t bvkc_CertificateItemValue(const char* InstallerGUID,
                                                    const char* sIdentifier, void** value,
                                                    std::uint32_t* size) {
    const char* guid = OrEmpty(InstallerGUID);
    const char* identifier = OrEmpty(sIdentifier);
    const auto line = [&] {
        UTrace::Info("BrevikKitAPI bvkc_CertificateItemValue (InstallerGUID=%s,sIdentifier=%s)",
                     guid, identifier);
    };
    return RunCall(__func__, kQueryFailure, line, [&] {
        const UTrace::Function scope("BrevikKit:CertificateItemValue", nullptr);
        UTrace::Info("BrevikKit:CertificateItemValue(InstallerGUID=%s, sIdentifier=%s)", guid,
                     identifier);
        if (!IsPlace(value, "value") || !IsPlace(size, "size")) {
            return kQueryFailure;
        }
        const bool found = CatalogueQueries::CertificateItemValue(guid, identifier, value, size);
        UTrace::Info("BrevikKit:CertificateItemValue--RESULT--(void)");
        return static_cast<std::uint8_t>(found);
    });
}

PLATFORM_API std::uint8_t bvkc_CertificateItemValueByProdName(const char* sProdName,
                                                              const char* sIdentifier, void** value,
                                                              std::uint32_t* size) {
    const char* product = OrEmpty(sProdName);
    const char* identifier = OrEmpty(sIdentifier);
    const auto line = [&] {
        UTrace::Info(
            "BrevikKitAPI bvkc_CertificateItemValueByProdName (sProdName=%s,sIdentifier=%s)",
            product, identifier);
    };
    return RunCall(__func__, kQueryFailure, line, [&] {
        const UTrace::Function scope("BrevikKit:CertificateItemValueByProdName", nullptr);
        UTrace::Info("BrevikKit:CertificateItemValueByProdName(sProdName=%s, sIdentifier=%s)",
                     product, identifier);
        if (!IsPlace(value, "value") || !IsPlace(size, "size")) {
            return kQueryFailure;
        }
        const bool found =
            CatalogueQueries::CertificateItemValueByProdName(product, identifier, value, size);
        UTrace::Info("BrevikKit:CertificateItemValueByProdName--RESULT--(void)");
        return static_cast<std::uint8_t>(found);
    });
}

PLATFORM_API std::int32_t bvkc_GetLocalGUIDs(char** guids) {
    const auto line = [] { UTrace::Info("BrevikKitAPI bvkc_GetLocalGUIDs"); };
    return RunCall(__func__, kLocalGuidsFailure, line, [&] {
        const UTrace::Function scope("BrevikKit:GetLocalGUIDs", nullptr);
        return IsPlace(guids, "guids") ? CatalogueQueries::GetLocalGUIDs(guids)
                                       : kLocalGuidsFailure;
    });
}

PLATFORM_API std::int32_t bvkc_GetUserLanguage_Ids(const bvkc_langid* langIds, std::uint32_t count,
                                                   bvkc_langid* selected) {
    const auto line = [] { UTrace::Info("BrevikKitAPI bvkc_GetUserLanguage_Ids"); };
    return RunCall(__func__, kLanguageFailure, line, [&] {
        const UTrace::Function scope("BrevikKit:GetUserLanguage_Ids", nullptr);
        return IsPlace(selected, "selected")
                   ? static_cast<std::int32_t>(LangManager::GetLang(langIds, count, selected))
                   : kLanguageFailure;
    });
}

PLATFORM_API std::int32_t bvkc_GetUserLanguage_Code(const char* const* codes, std::uint32_t count,
                                                    bvkc_langid* selected) {
    const auto line = [] { UTrace::Info("BrevikKitAPI bvkc_GetUserLanguage_Code"); };
    return RunCall(__func__, kLanguageFailure, line, [&] {
        const UTrace::Function scope("BrevikKit:GetUserLanguage_Str", nullptr);
        return IsPlace(selected, "selected")
                   ? static_cast<std::int32_t>(LangManager().GetLang(codes, count, selected))
                   : kLanguageFailure;
    });
}

PLATFORM_API std::int32_t bvkc_VCM_ReadOndrelCookieValue(const bvkc_wchar* key,
                                                         bvkc_wchar** value) {
    return RunCall(__func__, kCookieFailure, kNoLine, [&] {
        const UTrace::Function scope("BrevikKit:ReadOndrelCookieValue", nullptr);
        return IsPlace(value, "value") ? CookieValues::ReadOndrelValue(OrEmpty(key), value)
                                       : kCookieFailure;
    });
}

PLATFORM_API std::int32_t bvkc_VCM_WriteOndrelCookieValue(const bvkc_wchar* key,
                                                          const bvkc_wchar* value) {
    return RunCall(__func__, kCookieFailure, kNoLine, [&] {
        const UTrace::Function scope("BrevikKit:WriteOndrelCookieValue", nullptr);
        return CookieValues::WriteOndrelValue(OrEmpty(key), OrEmpty(value));
    });
}

PLATFORM_API std::int32_t bvkc_VCM_ReadCookieValue(const bvkc_wchar* domain,
                                                   const bvkc_wchar* cookie, const bvkc_wchar* key,
                                                   bvkc_wchar** value) {
    return RunCall(__func__, kCookieFailure, kNoLine, [&] {
        const UTrace::Function scope("BrevikKit:ReadCookieValue", nullptr);
        return IsPlace(value, "value")
                   ? CookieValues::ReadValue(OrEmpty(domain), OrEmpty(cookie), OrEmpty(key), value)
                   : kCookieFailure;
    });
}

PLATFORM_API std::int32_t bvkc_VCM_WriteCookieValue(const bvkc_wchar* domain,
                                                    const bvkc_wchar* cookie, const bvkc_wchar* key,
                                                    const bvkc_wchar* value) {
    return RunCall(__func__, kCookieFailure, kNoLine, [&] {
        const UTrace::Function scope("BrevikKit:WriteCookieValue", nullptr);
        return CookieValues::WriteValue(OrEmpty(domain), OrEmpty(cookie), OrEmpty(key),
                                        OrEmpty(value));
    });
}

PLATFORM_API std::int32_t bvkc_Dispatch_InvokeUpdate(const char* productIdentifier,
                                                     const char* locale,
                                                     std::uint8_t bRunInBackground) {
    const char* product = OrEmpty(productIdentifier);
    const char* language = OrEmpty(locale);
    const auto line = [&] {
        UTrace::Info(
            "BrevikKitAPI bvkc_Dispatch_InvokeUpdate "
            "(productIdentifier=%s,locale=%s,bRunInBackground=%d)",
            product, language, bRunInBackground);
    };
    return RunCall(__func__, kUpdateFailure, line, [&]() -> std::int32_t {
        const UTrace::Function scope("BrevikKit:Dispatch_InvokeUpdate", nullptr);
        UTrace::Info(
            "BrevikKit:Dispatch_InvokeUpdate - productIdentifier=%s, locale=%s, "
            "bRunInBackground=%s",
            product, language, TrueOrFalse(bRunInBackground));
        return UpdateDispatch::InvokeUpdate(product, LocaleOrSelected(language),
                                            bRunInBackground != 0);
    });
}

PLATFORM_API std::uint8_t bvkc_Dispatch_IsUpdateOrMessageAvailable(const char* productIdentifier,
                                                                   const char* locale,
                                                                   std::uint8_t connectToServer) {
    const char* product = OrEmpty(productIdentifier);
    const char* language = OrEmpty(locale);
    const auto line = [&] {
        UTrace::Info(
            "BrevikKitAPI bvkc_Dispatch_IsUpdateOrMessageAvailable "
            "(productIdentifier=%s,locale=%s,connectToServer=%d)",
            product, language, connectToServer);
    };
    return RunCall(__func__, kAvailabilityFailure, line, [&] {
        const UTrace::Function scope("BrevikKit:Dispatch_IsUpdateOrMessageAvailable", nullptr);
        UTrace::Info(
            "BrevikKit:Dispatch_IsUpdateOrMessageAvailable - productIdentifier=%s, locale=%s, "
            "connectToServer=%s",
            product, language, TrueOrFalse(connectToServer));
        const UpdateDispatch::Status status = UpdateDispatch::IsUpdateOrMessageAvailable(
            product, LocaleOrSelected(language), connectToServer != 0);
        return static_cast<std::uint8_t>(status == UpdateDispatch::kDone);
    });
}

PLATFORM_API std::int32_t bvkc_Dispatch_GetKindletProfileID(const char* strKindletUID,
                                                            const char* locale, bvkc_window hWnd,
                                                            char** strProfileID) {
    const char* uid = OrEmpty(strKindletUID);
    const char* language = OrEmpty(locale);
    if (strProfileID != nullptr) {
        *strProfileID = nullptr;  // whatever fails: a caller frees what is not null
    }
    const auto line = [&] {
        UTrace::Info(
            "BrevikKitAPI bvkc_Dispatch_GetKindletProfileID "
            "(strKindletUID=%s,locale=%s,hWnd=%d)",
            uid, language, hWnd != nullptr ? 1 : 0);
    };
    return RunCall(__func__, kProfileFailure, line, [&] {
        const UTrace::Function scope("BrevikKit:Dispatch_GetKindletProfileID", nullptr);
        return IsPlace(strProfileID, "strProfileID")
                   ? ProfileDispatch::GetKindletProfileID(uid, language, hWnd, strProfileID)
                   : kProfileFailure;
    });
}

}  // extern "C"
