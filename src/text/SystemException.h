// Failures that wrap a code of the operating system or of its run-time library.
//
// GetNumber() is the number of the class's text, the same for every code; GetCode() is the code.
#pragma once

#include <cstdint>
#include <type_traits>

#include "text/VelmarException.h"

// The operating system's wording for an error number and for a result of the component model,
// without the line end; empty where no table knows the code. Of a result, the message libraries of
// its facility are asked first, in their order.
WideString GetSystemMessage(DWORD code);
WideString GetHResultMessage(std::int32_t code);

namespace SystemException {

enum class Source { kErrno, kWin32, kHResult, kMMResult };

// The text of a failure of this source, with the code and the source's own message.
VelmarTextArgs TextFor(Source source, std::uint32_t code);

template <Source source, typename Code>
class CodeException : public VelmarException {
  public:
    explicit CodeException(Code code)
        : VelmarException(TextFor(source, static_cast<std::uint32_t>(code))),
          code_(static_cast<Stored>(code)) {}
    ~CodeException() override = default;

    CodeException* Clone() const override { return new CodeException(*this); }
    CodeException& SetNote(const std::string& note) override {
        VelmarException::SetNote(note);
        return *this;
    }
    [[noreturn]] void Raise() const override { throw CodeException(*this); }
    Code GetCode() const { return code_; }

  private:
    // A code has 32 bits, also where its type has more.
    using Stored = std::conditional_t<std::is_signed_v<Code>, std::int32_t, std::uint32_t>;
    Stored code_;
};

// An error number of the run-time library (errno).
using Errno = CodeException<Source::kErrno, int>;

// An error number of the operating system (GetLastError).
using Win32 = CodeException<Source::kWin32, unsigned long>;

// A result of the component model.
using HRESULT = CodeException<Source::kHResult, long>;

// A result of the multimedia services.
using MMRESULT = CodeException<Source::kMMResult, unsigned>;

}  // namespace SystemException
