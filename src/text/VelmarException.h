// The library's failure: a number that says what kind it is, a message ready for a user, and a free
// note for the programmer.
//
// The number is the id of the text that the failure was made from, never a code of the operating
// system; the message is in the language that was loaded then. One thread at a time.
#pragma once

#include <exception>
#include <string>

#include "text/StringConversions.h"
#include "text/VelmarText.h"

class VelmarException : public std::exception {
  public:
    VelmarException(const VelmarException&) = default;
    VelmarException& operator=(const VelmarException&) = default;

    // Number and wording of a text; give a VelmarTextArgs for one with arguments.
    explicit VelmarException(const VelmarText& text);

    // A broken rule of the library's own, at this place of its source.
    VelmarException(const char* file, int line);

    // Of our own family number, message and note; of a std::bad_alloc "memory allocation error";
    // else "runtime error" with the what(). Throws nothing.
    explicit VelmarException(const std::exception& source);

    // The failure with this number, its placeholders unfilled; for a number without a text
    // "unknown error" with that number.
    static VelmarException FromId(long id);

    ~VelmarException() override = default;

    // The message in narrow text; valid until the next call on the object or its end. Empty when
    // memory is short.
    const char* what() const noexcept override;

    // A copy of the most derived class, which the caller deletes.
    virtual VelmarException* Clone() const { return new VelmarException(*this); }
    virtual const std::string& GetNote() const { return note_; }
    virtual long GetNumber() const { return number_; }
    virtual const Utf8String& GetMessage() const { return message_; }

    // Returns the exception itself.
    virtual VelmarException& SetNote(const std::string& note) {
        note_ = note;
        return *this;
    }

    // Throws a copy.
    [[noreturn]] virtual void Raise() const { throw VelmarException(*this); }

  private:
    long number_ = 0;
    Utf8String message_;
    std::string note_;
    mutable std::string whatText_;
};
