// Failures that wrap a code of the operating system or of its run-time library.
//
// GetNumber() is the number of the class's text, the same for every code; GetCode() is the code.
#pragma once

#include <cstdint>

#include "text/VelmarException.h"

namespace SystemException {

// An error number of the run-time library (errno).
class Errno : public VelmarException {
  public:
    explicit Errno(int code);
    ~Errno() override;
    Errno* Clone() const override;
    Errno& SetNote(const std::string& note) override;
    [[noreturn]] void Raise() const override;
    int GetCode() const { return code_; }

  private:
    int code_;
};

// An error number of the operating system (GetLastError).
class Win32 : public VelmarException {
  public:
    explicit Win32(unsigned long code);
    ~Win32() override;
    Win32* Clone() const override;
    Win32& SetNote(const std::string& note) override;
    [[noreturn]] void Raise() const override;
    unsigned long GetCode() const { return code_; }

  private:
    std::uint32_t code_;
};

// A result of the component model.
class HRESULT : public VelmarException {
  public:
    explicit HRESULT(long code);
    ~HRESULT() override;
    HRESULT* Clone() const override;
    HRESULT& SetNote(const std::string& note) override;
    [[noreturn]] void Raise() const override;
    long GetCode() const { return code_; }

  private:
    std::int32_t code_;
};

// A result of the multimedia services.
class MMRESULT : public VelmarException {
  public:
    explicit MMRESULT(unsigned code);
    ~MMRESULT() override;
    MMRESULT* Clone() const override;
    MMRESULT& SetNote(const std::string& note) override;
    [[noreturn]] void Raise() const override;
    unsigned GetCode() const { return code_; }

  private:
    std::uint32_t code_;
};

}  // namespace SystemException
