#include "text/SystemException.h"

#include <cstdio>

#include "platform/messages.h"
#include "platform/modules.h"
#include "text/Texts.h"

namespace {

struct MessageLibrary {
    int facility;
    const WCHAR* name;
};

constexpr MessageLibrary kMessageLibraries[] = {
    {4, WIDE("QUARTZ.DLL")},   {7, WIDE("WMERROR.DLL")},  {13, WIDE("WMERROR.DLL")},
    {7, WIDE("NETMSG.DLL")},   {12, WIDE("MSXML6R.DLL")}, {12, WIDE("MSXML5R.DLL")},
    {12, WIDE("MSXML4R.DLL")}, {12, WIDE("MSXML3R.DLL")}, {12, WIDE("WININET.DLL")},
};

constexpr DWORD kUserDefaultLanguage = 0x400;

// The text without its line end.
WideString Message(DWORD flags, HMODULE module, DWORD code, DWORD language) {
    WCHAR* block = nullptr;
    FormatMessageW(flags | FORMAT_MESSAGE_ALLOCATE_BUFFER, module, code, language,
                   reinterpret_cast<WCHAR*>(&block), 0, nullptr);
    WideString text = block != nullptr ? WideString(block) : WideString();
    LocalFree(block);
    while (!text.empty() && (text.back() == '\r' || text.back() == '\n')) {
        text.pop_back();
    }
    return text;
}

WideString MessageFromLibrary(const WCHAR* name, DWORD code) {
    const HMODULE module = LoadLibraryW(name);
    if (module == nullptr) {
        return {};
    }
    WideString text = Message(FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_FROM_HMODULE, module,
                              code, kUserDefaultLanguage);
    FreeLibrary(module);
    return text;
}

}  // namespace

WideString GetSystemMessage(DWORD code) {
    return Message(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, code, 0);
}

WideString GetHResultMessage(std::int32_t code) {
    const int facility = (code >> 16) & 0x1FFF;
    for (const MessageLibrary& library : kMessageLibraries) {
        if (library.facility == facility) {
            WideString text = MessageFromLibrary(library.name, static_cast<DWORD>(code));
            if (!text.empty()) {
                return text;
            }
        }
    }
    return Message(FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_FROM_SYSTEM, nullptr,
                   static_cast<DWORD>(code), 0);
}

namespace SystemException {
namespace {

Utf8String Hexadecimal(std::uint32_t code) {
    char number[16];
    std::snprintf(number, sizeof number, "0x%08lX", static_cast<unsigned long>(code));
    return NarrowToUtf8(number);
}

Utf8String RuntimeMessage(int code) {
    char message[1024] = {};
    strerror_s(message, sizeof message, code);
    return NarrowToUtf8(message);
}

}  // namespace

VelmarTextArgs TextFor(Source source, std::uint32_t code) {
    const auto number = static_cast<std::int32_t>(code);
    switch (source) {
        case Source::kErrno:
            return VelmarTextArgs(Texts::errnoError,
                                  {NarrowToUtf8(std::to_string(number)), RuntimeMessage(number)});
        case Source::kWin32:
            return VelmarTextArgs(Texts::win32Error,
                                  {Hexadecimal(code), WideToUtf8(GetSystemMessage(code))});
        case Source::kHResult:
            return VelmarTextArgs(Texts::hresultError,
                                  {Hexadecimal(code), WideToUtf8(GetHResultMessage(number))});
        case Source::kMMResult:
            break;
    }
    return VelmarTextArgs(Texts::mmresultError, {Hexadecimal(code)});
}

}  // namespace SystemException
