#include "text/VelmarException.h"

#include <new>

#include "text/StackWalker.h"
#include "text/Texts.h"

namespace {

// A walker of the host must not fail the making of a report.
void WalkQuietly() {
    try {
        StackWalker::Current()->Walk();
    } catch (...) {
    }
}

}  // namespace

VelmarException::VelmarException(const VelmarText& text)
    : number_(text.GetId()), message_(text.GetText()) {
    WalkQuietly();
}

VelmarException::VelmarException(const char* file, int line)
    : VelmarException(VelmarTextArgs(Texts::internalError,
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
            message_ = VelmarTextArgs(Texts::runtimeError, {NarrowToUtf8(source.what())}).GetText();
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
    VelmarException unknown(
        VelmarTextArgs(Texts::unknownError, {NarrowToUtf8(std::to_string(id))}));
    unknown.number_ = id;
    return unknown;
}

const char* VelmarException::what() const noexcept {
    try {
        whatText_ = Utf8ToNarrow(message_);
        return whatText_.c_str();
    } catch (const std::exception&) {
        return "";
    }
}
