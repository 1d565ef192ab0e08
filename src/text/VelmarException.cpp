#include "text/VelmarException.h"

#include <cstdio>
#include <new>

#include "text/StackWalker.h"
#include "text/Texts.h"

namespace {

VelmarTextArgs WithArguments(const VelmarText& text, Utf8StringList arguments) {
    VelmarTextArgs filled(text);
    static_cast<Utf8StringList&>(filled) = std::move(arguments);
    return filled;
}

// A walker of the host must not fail the making of a report.
void WalkQuietly() {
    try {
        StackWalker::Current()->Walk();
    } catch (...) {
    }
}

}  // namespace

VelmarException::VelmarException(const VelmarException& other)
    : std::exception(other), number_(other.number_), message_(other.message_), note_(other.note_) {}

VelmarException& VelmarException::operator=(const VelmarException& other) {
    number_ = other.number_;
    message_ = other.message_;
    note_ = other.note_;
    return *this;
}

VelmarException::VelmarException(const VelmarText& text)
    : number_(text.GetId()), message_(text.GetText()) {
    WalkQuietly();
}

VelmarException::VelmarException(const char* file, int line)
    : VelmarException(WithArguments(Texts::internalError,
                                    {NarrowToUtf8(file), NarrowToUtf8(std::to_string(line))})) {}

VelmarException::VelmarException(const std::exception& source) {
    const auto* own = dynamic_cast<const VelmarException*>(&source);
    try {
        if (own != nullptr) {
            *this = *own;
        } else if (dynamic_cast<const std::bad_alloc*>(&source) != nullptr) {
            number_ = Texts::memoryError.GetId();
            message_ = Texts::memoryError.GetText();
        } else {
            number_ = Texts::runtimeError.GetId();
            message_ = WithArguments(Texts::runtimeError, {NarrowToUtf8(source.what())}).GetText();
        }
    } catch (const std::exception&) {
        number_ = -1;
        message_.clear();
    }
    if (own == nullptr) {
        WalkQuietly();
    }
}

VelmarException VelmarException::FromId(long id) {
    const VelmarText* text = VelmarText::Find(id);
    if (text != nullptr) {
        return VelmarException(*text);
    }
    char digits[24];
    std::snprintf(digits, sizeof digits, "%ld", id);
    VelmarException unknown(WithArguments(Texts::unknownError, {NarrowToUtf8(digits)}));
    unknown.number_ = id;
    return unknown;
}

VelmarException::~VelmarException() = default;

const char* VelmarException::what() const noexcept {
    try {
        whatText_ = Utf8ToNarrow(message_);
        return whatText_.c_str();
    } catch (const std::exception&) {
        return "";
    }
}

VelmarException* VelmarException::Clone() const {
    return new VelmarException(*this);
}
const std::string& VelmarException::GetNote() const {
    return note_;
}
long VelmarException::GetNumber() const {
    return number_;
}
const Utf8String& VelmarException::GetMessage() const {
    return message_;
}

VelmarException& VelmarException::SetNote(const std::string& note) {
    note_ = note;
    return *this;
}

void VelmarException::Raise() const {
    throw VelmarException(*this);
}
