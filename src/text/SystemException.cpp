#include "text/SystemException.h"

#include <cstdio>

#include "platform/messages.h"
#include "text/SystemMessages.h"
#include "text/Texts.h"

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
