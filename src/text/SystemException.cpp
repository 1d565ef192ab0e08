#include "text/SystemException.h"

#include <cstdio>

#include "platform/messages.h"
#include "text/SystemMessages.h"
#include "text/Texts.h"

namespace SystemException {
namespace {

VelmarTextArgs Filled(const VelmarText& text, const char* number) {
    VelmarTextArgs filled(text);
    filled.push_back(NarrowToUtf8(number));
    return filled;
}

VelmarTextArgs Filled(const VelmarText& text, const char* number, Utf8String message) {
    VelmarTextArgs filled = Filled(text, number);
    filled.push_back(std::move(message));
    return filled;
}

struct NumberText {
    char text[16];
};

NumberText Decimal(int code) {
    NumberText number;
    std::snprintf(number.text, sizeof number.text, "%d", code);
    return number;
}

NumberText Hexadecimal(std::uint32_t code) {
    NumberText number;
    std::snprintf(number.text, sizeof number.text, "0x%08lX", static_cast<unsigned long>(code));
    return number;
}

Utf8String RuntimeMessage(int code) {
    char message[1024] = {};
    strerror_s(message, sizeof message, code);
    return NarrowToUtf8(message);
}

}  // namespace

Errno::Errno(int code)
    : VelmarException(Filled(Texts::errnoError, Decimal(code).text, RuntimeMessage(code))),
      code_(code) {}
Errno::~Errno() = default;
Errno* Errno::Clone() const {
    return new Errno(*this);
}
Errno& Errno::SetNote(const std::string& note) {
    VelmarException::SetNote(note);
    return *this;
}
void Errno::Raise() const {
    throw Errno(*this);
}

Win32::Win32(unsigned long code)
    : VelmarException(Filled(Texts::win32Error, Hexadecimal(static_cast<std::uint32_t>(code)).text,
                             WideToUtf8(GetSystemMessage(static_cast<DWORD>(code))))),
      code_(static_cast<std::uint32_t>(code)) {}
Win32::~Win32() = default;
Win32* Win32::Clone() const {
    return new Win32(*this);
}
Win32& Win32::SetNote(const std::string& note) {
    VelmarException::SetNote(note);
    return *this;
}
void Win32::Raise() const {
    throw Win32(*this);
}

HRESULT::HRESULT(long code)
    : VelmarException(Filled(Texts::hresultError,
                             Hexadecimal(static_cast<std::uint32_t>(code)).text,
                             WideToUtf8(GetHResultMessage(static_cast<std::int32_t>(code))))),
      code_(static_cast<std::int32_t>(code)) {}
HRESULT::~HRESULT() = default;
HRESULT* HRESULT::Clone() const {
    return new HRESULT(*this);
}
HRESULT& HRESULT::SetNote(const std::string& note) {
    VelmarException::SetNote(note);
    return *this;
}
void HRESULT::Raise() const {
    throw HRESULT(*this);
}

MMRESULT::MMRESULT(unsigned code)
    : VelmarException(Filled(Texts::mmresultError, Hexadecimal(code).text)), code_(code) {}
MMRESULT::~MMRESULT() = default;
MMRESULT* MMRESULT::Clone() const {
    return new MMRESULT(*this);
}
MMRESULT& MMRESULT::SetNote(const std::string& note) {
    VelmarException::SetNote(note);
    return *this;
}
void MMRESULT::Raise() const {
    throw MMRESULT(*this);
}

}  // namespace SystemException
