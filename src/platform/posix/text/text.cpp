#include "platform/text.h"

#include <utf8proc.h>

#include <string_view>

#include "platform/posix/base/last_error.h"
#include "platform/posix/text/unicode.h"

namespace brevik::platform {
namespace {

template <typename Source, typename Target>
int Convert(const Source* source, int length, Target* target, int size) {
    const std::basic_string_view<Source> text(
        source, length < 0 ? std::char_traits<Source>::length(source) + 1
                           : static_cast<std::size_t>(length));
    UnitWriter<Target> writer(size != 0 ? target : nullptr, static_cast<std::size_t>(size));
    return ConvertText(text, writer) ? static_cast<int>(writer.Count())
                                     : Fail(ERROR_INSUFFICIENT_BUFFER);
}

constexpr bool IsAscii(char32_t character) {
    return character < 0x80;
}

template <typename Unit>
constexpr Unit LowerAscii(Unit unit) {
    return unit >= 'A' && unit <= 'Z' ? static_cast<Unit>(unit + ('a' - 'A')) : unit;
}

template <typename Unit>
constexpr Unit UpperAscii(Unit unit) {
    return unit >= 'a' && unit <= 'z' ? static_cast<Unit>(unit - ('a' - 'A')) : unit;
}

// What `change` makes of a unit outside ASCII: its partner where that is one unit outside ASCII too
// and leads back, else the unit itself. The two sharp s are no partners, whatever Unicode's tables
// say.
template <typename Change, typename ChangeBack>
WCHAR Partner(WCHAR unit, Change change, ChangeBack changeBack) {
    const utf8proc_int32_t partner = change(unit);
    const bool isSharpS = unit == 0xDF || unit == 0x1E9E;
    const bool isPair = !isSharpS && changeBack(partner) == unit;
    return isPair && !IsAscii(static_cast<char32_t>(partner)) && partner <= 0xFFFF
               ? static_cast<WCHAR>(partner)
               : unit;
}

WCHAR Lower(WCHAR unit) {
    return IsAscii(unit) ? LowerAscii(unit) : Partner(unit, utf8proc_tolower, utf8proc_toupper);
}

WCHAR Upper(WCHAR unit) {
    return IsAscii(unit) ? UpperAscii(unit) : Partner(unit, utf8proc_toupper, utf8proc_tolower);
}

template <typename Unit, typename Change>
DWORD ChangeCase(Unit* text, DWORD length, Change change) {
    for (DWORD index = 0; index < length; ++index) {
        text[index] = change(text[index]);
    }
    return length;
}

}  // namespace

int MultiByteToWideChar(UINT, DWORD, const char* source, int length, WCHAR* target, int size) {
    return Convert(source, length, target, size);
}

int WideCharToMultiByte(UINT, DWORD, const WCHAR* source, int length, char* target, int size,
                        const char*, BOOL*) {
    return Convert(source, length, target, size);
}

DWORD CharLowerBuffW(WCHAR* text, DWORD length) {
    return ChangeCase(text, length, Lower);
}

DWORD CharUpperBuffW(WCHAR* text, DWORD length) {
    return ChangeCase(text, length, Upper);
}

DWORD CharLowerBuffA(char* text, DWORD length) {
    return ChangeCase(text, length, LowerAscii<char>);
}

DWORD CharUpperBuffA(char* text, DWORD length) {
    return ChangeCase(text, length, UpperAscii<char>);
}

WCHAR towlower(WCHAR unit) {
    return LowerAscii(unit);
}

WCHAR towupper(WCHAR unit) {
    return UpperAscii(unit);
}

DWORD GetVersion() {
    // Version 10.0 of the NT family, without a build number.
    return 10;
}

BOOL GetVersionExW(OSVERSIONINFOW* information) {
    auto& version = *reinterpret_cast<OSVERSIONINFOEXW*>(information);
    version.dwMajorVersion = GetVersion();
    version.wServicePackMajor = 0;
    return TRUE;
}

}  // namespace brevik::platform
