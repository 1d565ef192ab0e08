// What each exported function does inside the call frame: the function's trace scope, and the call
// into the subsystem that does the work. Arguments and results are those of brevikconfig.h; texts
// are never null here, out arguments may be.
#pragma once

#include <cstdint>

#include "platform/types.h"

namespace BrevikConfig {

std::uint8_t CertificateItemValue(const char* installerGuid, const char* identifier, void** value,
                                  std::uint32_t* size);
std::uint8_t CertificateItemValueByProdName(const char* productName, const char* identifier,
                                            void** value, std::uint32_t* size);
std::int32_t GetLocalGUIDs(char** guids);

std::int32_t GetUserLanguageIds(const LANGID* langIds, std::uint32_t count, LANGID* selected);
std::int32_t GetUserLanguageCode(const char* const* codes, std::uint32_t count, LANGID* selected);

std::int32_t ReadOndrelCookieValue(const WCHAR* key, WCHAR** value);
std::int32_t WriteOndrelCookieValue(const WCHAR* key, const WCHAR* value);
std::int32_t ReadCookieValue(const WCHAR* domain, const WCHAR* cookie, const WCHAR* key,
                             WCHAR** value);
std::int32_t WriteCookieValue(const WCHAR* domain, const WCHAR* cookie, const WCHAR* key,
                              const WCHAR* value);

std::int32_t InvokeUpdate(const char* productIdentifier, const char* locale, bool runInBackground);
std::uint8_t IsUpdateOrMessageAvailable(const char* productIdentifier, const char* locale,
                                        bool connectToServer);
std::int32_t GetKindletProfileID(const char* kindletUid, const char* locale, void* window,
                                 char** profileId);

}  // namespace BrevikConfig
