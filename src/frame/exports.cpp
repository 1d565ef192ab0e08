// The twelve exported functions: each is the call frame around its forwarder.

#define BREVIKCONFIG_NO_COTASKMEMFREE
#include "brevikconfig.h"

#include "frame/CallFrame.h"
#include "frame/FailureResults.h"
#include "frame/Forwarders.h"
#include "trace/UTrace.h"

using namespace BrevikConfig;

namespace {

const char* OrEmpty(const char* text) {
    return text != nullptr ? text : "";
}
const WCHAR* OrEmpty(const WCHAR* text) {
    return text != nullptr ? text : WIDE("");
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
    return RunCall(
        __func__, kQueryFailure,
        [&] {
            UTrace::Info("BrevikKitAPI bvkc_CertificateItemValue (InstallerGUID=%s,sIdentifier=%s)",
                         guid, identifier);
        },
        [&] { return CertificateItemValue(guid, identifier, value, size); });
}

PLATFORM_API std::uint8_t bvkc_CertificateItemValueByProdName(const char* sProdName,
                                                              const char* sIdentifier, void** value,
                                                              std::uint32_t* size) {
    const char* product = OrEmpty(sProdName);
    const char* identifier = OrEmpty(sIdentifier);
    return RunCall(
        __func__, kQueryFailure,
        [&] {
            UTrace::Info(
                "BrevikKitAPI bvkc_CertificateItemValueByProdName (sProdName=%s,sIdentifier=%s)",
                product, identifier);
        },
        [&] { return CertificateItemValueByProdName(product, identifier, value, size); });
}

PLATFORM_API std::int32_t bvkc_GetLocalGUIDs(char** guids) {
    return RunCall(
        __func__, kLocalGuidsFailure, [] { UTrace::Info("BrevikKitAPI bvkc_GetLocalGUIDs"); },
        [&] { return GetLocalGUIDs(guids); });
}

PLATFORM_API std::int32_t bvkc_GetUserLanguage_Ids(const bvkc_langid* langIds, std::uint32_t count,
                                                   bvkc_langid* selected) {
    return RunCall(
        __func__, kLanguageFailure, [] { UTrace::Info("BrevikKitAPI bvkc_GetUserLanguage_Ids"); },
        [&] { return GetUserLanguageIds(langIds, count, selected); });
}

PLATFORM_API std::int32_t bvkc_GetUserLanguage_Code(const char* const* codes, std::uint32_t count,
                                                    bvkc_langid* selected) {
    return RunCall(
        __func__, kLanguageFailure, [] { UTrace::Info("BrevikKitAPI bvkc_GetUserLanguage_Code"); },
        [&] { return GetUserLanguageCode(codes, count, selected); });
}

PLATFORM_API std::int32_t bvkc_VCM_ReadOndrelCookieValue(const bvkc_wchar* key,
                                                         bvkc_wchar** value) {
    return RunCall(__func__, kCookieFailure, kNoLine,
                   [&] { return ReadOndrelCookieValue(OrEmpty(key), value); });
}

PLATFORM_API std::int32_t bvkc_VCM_WriteOndrelCookieValue(const bvkc_wchar* key,
                                                          const bvkc_wchar* value) {
    return RunCall(__func__, kCookieFailure, kNoLine,
                   [&] { return WriteOndrelCookieValue(OrEmpty(key), OrEmpty(value)); });
}

PLATFORM_API std::int32_t bvkc_VCM_ReadCookieValue(const bvkc_wchar* domain,
                                                   const bvkc_wchar* cookie, const bvkc_wchar* key,
                                                   bvkc_wchar** value) {
    return RunCall(__func__, kCookieFailure, kNoLine, [&] {
        return ReadCookieValue(OrEmpty(domain), OrEmpty(cookie), OrEmpty(key), value);
    });
}

PLATFORM_API std::int32_t bvkc_VCM_WriteCookieValue(const bvkc_wchar* domain,
                                                    const bvkc_wchar* cookie, const bvkc_wchar* key,
                                                    const bvkc_wchar* value) {
    return RunCall(__func__, kCookieFailure, kNoLine, [&] {
        return WriteCookieValue(OrEmpty(domain), OrEmpty(cookie), OrEmpty(key), OrEmpty(value));
    });
}

PLATFORM_API std::int32_t bvkc_Dispatch_InvokeUpdate(const char* productIdentifier,
                                                     const char* locale,
                                                     std::uint8_t bRunInBackground) {
    const char* product = OrEmpty(productIdentifier);
    const char* language = OrEmpty(locale);
    return RunCall(
        __func__, kUpdateFailure,
        [&] {
            UTrace::Info(
                "BrevikKitAPI bvkc_Dispatch_InvokeUpdate "
                "(productIdentifier=%s,locale=%s,bRunInBackground=%d)",
                product, language, bRunInBackground);
        },
        [&] { return InvokeUpdate(product, language, bRunInBackground != 0); });
}

PLATFORM_API std::uint8_t bvkc_Dispatch_IsUpdateOrMessageAvailable(const char* productIdentifier,
                                                                   const char* locale,
                                                                   std::uint8_t connectToServer) {
    const char* product = OrEmpty(productIdentifier);
    const char* language = OrEmpty(locale);
    return RunCall(
        __func__, kAvailabilityFailure,
        [&] {
            UTrace::Info(
                "BrevikKitAPI bvkc_Dispatch_IsUpdateOrMessageAvailable "
                "(productIdentifier=%s,locale=%s,connectToServer=%d)",
                product, language, connectToServer);
        },
        [&] { return IsUpdateOrMessageAvailable(product, language, connectToServer != 0); });
}

PLATFORM_API std::int32_t bvkc_Dispatch_GetKindletProfileID(const char* strKindletUID,
                                                            const char* locale, bvkc_window hWnd,
                                                            char** strProfileID) {
    const char* uid = OrEmpty(strKindletUID);
    const char* language = OrEmpty(locale);
    if (strProfileID != nullptr) {
        *strProfileID = nullptr;  // whatever fails: a caller frees what is not null
    }
    return RunCall(
        __func__, kProfileFailure,
        [&] {
            UTrace::Info(
                "BrevikKitAPI bvkc_Dispatch_GetKindletProfileID "
                "(strKindletUID=%s,locale=%s,hWnd=%d)",
                uid, language, hWnd != nullptr ? 1 : 0);
        },
        [&] { return GetKindletProfileID(uid, language, hWnd, strProfileID); });
}

}  // extern "C"
