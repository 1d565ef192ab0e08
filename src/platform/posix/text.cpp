#include "platform/text.h"

#include <utf8proc.h>

#include <climits>
#include <cstring>
#include <string_view>

#include "platform/posix/unicode.h"

namespace brevik::platform {
namespace {

int Fail(DWORD code) {
    SetLastError(code);
    return 0;
}

bool IsUtf8CodePage(UINT codePage) {
    return codePage == CP_ACP || codePage == CP_THREAD_ACP || codePage == CP_UTF8;
}

template <typename Source, typename Target>
bool AreArgumentsValid(UINT codePage, const Source* source, int length, const Target* target,
                       int size) {
    return IsUtf8CodePage(codePage) && source != nullptr && length != 0 && size >= 0 &&
           (target != nullptr || size == 0) &&
           static_cast<const void*>(source) != static_cast<const void*>(target);
}

// A negative length takes the text up to and with its NUL.
template <typename Unit>
std::basic_string_view<Unit> SourceText(const Unit* source, int length) {
    return {source, length < 0 ? std::char_traits<Unit>::length(source) + 1
                               : static_cast<std::size_t>(length)};
}

template <typename Source, typename Sink>
int Convert(std::basic_string_view<Source> text, bool strict, Sink&& sink) {
    switch (ConvertText(text, strict, sink)) {
        case Conversion::kIllFormed:
            return Fail(ERROR_NO_UNICODE_TRANSLATION);
        case Conversion::kNoRoom:
            return Fail(ERROR_INSUFFICIENT_BUFFER);
        case Conversion::kDone:
            break;
    }
    // A result that an int cannot tell.
    if (sink.Count() > INT_MAX) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    return static_cast<int>(sink.Count());
}

template <typename Source, typename Target>
int ConvertInto(std::basic_string_view<Source> text, bool strict, Target* target, int size) {
    if (size == 0) {
        return Convert(text, strict, UnitCounter<Target>());
    }
    return Convert(text, strict, UnitWriter<Target>(target, static_cast<std::size_t>(size)));
}

constexpr bool IsAscii(char32_t character) {
    return character < 0x80;
}

constexpr char32_t LowerAscii(char32_t character) {
    return character >= 'A' && character <= 'Z' ? character + ('a' - 'A') : character;
}

constexpr char32_t UpperAscii(char32_t character) {
    return character >= 'a' && character <= 'z' ? character - ('a' - 'A') : character;
}

// The two sharp s are not each other's case, whatever the Unicode tables say.
constexpr bool IsSharpS(char32_t character) {
    return character == 0xDF || character == 0x1E9E;
}

// What `change` makes of a character outside ASCII: its partner where that leads back to it, else
// the character itself. A UTF-16 unit has only partners that are one unit too.
template <typename Change, typename ChangeBack>
char32_t Partner(char32_t character, Change change, ChangeBack changeBack) {
    if (IsSharpS(character)) {
        return character;
    }
    const utf8proc_int32_t partner = change(static_cast<utf8proc_int32_t>(character));
    const bool isPair = changeBack(partner) == static_cast<utf8proc_int32_t>(character);
    const auto result = static_cast<char32_t>(partner);
    return isPair && !IsAscii(result) && result <= 0xFFFF ? result : character;
}

char32_t Lower(char32_t character) {
    return IsAscii(character) ? LowerAscii(character)
                              : Partner(character, utf8proc_tolower, utf8proc_toupper);
}

char32_t Upper(char32_t character) {
    return IsAscii(character) ? UpperAscii(character)
                              : Partner(character, utf8proc_toupper, utf8proc_tolower);
}

template <typename Change>
DWORD ChangeCase(WCHAR* text, DWORD length, Change change) {
    if (text == nullptr) {
        return 0;
    }
    for (WCHAR* unit = text; unit != text + length; ++unit) {
        *unit = static_cast<WCHAR>(change(*unit));
    }
    return length;
}

template <typename Change>
DWORD ChangeCase(char* text, DWORD length, Change change) {
    if (text == nullptr) {
        return 0;
    }
    std::string_view rest(text, length);
    for (char* at = text; !rest.empty();) {
        const DecodedCharacter character = DecodeCharacter(rest);
        std::array<char, 4> bytes;
        // Beyond the first plane wide text does not change either.
        if (character.wellFormed && character.value <= 0xFFFF &&
            EncodeCharacter(change(character.value), bytes) == character.length) {
            std::memcpy(at, bytes.data(), character.length);
        }
        at += character.length;
        rest.remove_prefix(character.length);
    }
    return length;
}

}  // namespace

int MultiByteToWideChar(UINT codePage, DWORD flags, const char* source, int length, WCHAR* target,
                        int size) {
    if (!AreArgumentsValid(codePage, source, length, target, size)) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    if ((flags & ~MB_ERR_INVALID_CHARS) != 0) {
        return Fail(ERROR_INVALID_FLAGS);
    }
    return ConvertInto(SourceText(source, length), flags != 0, target, size);
}

int WideCharToMultiByte(UINT codePage, DWORD flags, const WCHAR* source, int length, char* target,
                        int size, const char* defaultCharacter, BOOL* usedDefault) {
    // UTF-8 has room for every character, so there is no default to use.
    if (!AreArgumentsValid(codePage, source, length, target, size) || defaultCharacter != nullptr ||
        usedDefault != nullptr) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    if ((flags & ~WC_ERR_INVALID_CHARS) != 0) {
        return Fail(ERROR_INVALID_FLAGS);
    }
    return ConvertInto(SourceText(source, length), flags != 0, target, size);
}

DWORD CharLowerBuffW(WCHAR* text, DWORD length) {
    return ChangeCase(text, length, Lower);
}

DWORD CharUpperBuffW(WCHAR* text, DWORD length) {
    return ChangeCase(text, length, Upper);
}

DWORD CharLowerBuffA(char* text, DWORD length) {
    return ChangeCase(text, length, Lower);
}

DWORD CharUpperBuffA(char* text, DWORD length) {
    return ChangeCase(text, length, Upper);
}

WCHAR towlower(WCHAR unit) {
    return static_cast<WCHAR>(Lower(unit));
}

WCHAR towupper(WCHAR unit) {
    return static_cast<WCHAR>(Upper(unit));
}

DWORD GetVersion() {
    // Version 10.0 of the NT family, without a build number.
    return 10;
}

BOOL GetVersionExW(OSVERSIONINFOW* information) {
    constexpr DWORD kNtFamily = 2;
    constexpr BYTE kWorkstation = 1;
    const DWORD size = information->dwOSVersionInfoSize;
    if (size != sizeof(OSVERSIONINFOW) && size != sizeof(OSVERSIONINFOEXW)) {
        return Fail(ERROR_INSUFFICIENT_BUFFER);
    }
    OSVERSIONINFOEXW version = {};
    version.dwOSVersionInfoSize = size;
    version.dwMajorVersion = GetVersion();
    version.dwPlatformId = kNtFamily;
    version.wProductType = kWorkstation;
    std::memcpy(information, &version, size);
    return TRUE;
}

}  // namespace brevik::platform
