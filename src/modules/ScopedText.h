// Owner of a counted text, as component objects take and give them.
#pragma once

#include <new>

#include "platform/component_model.h"
#include "platform/types.h"

namespace CLibraryUtils {

class ScopedText {
  public:
    // Null, a place for a text that is given out.
    ScopedText() = default;

    // A copy up to the text's end, an empty one for an empty text. Throws std::bad_alloc.
    explicit ScopedText(const WideString& text)
        : text_(SysAllocStringLen(text.c_str(), static_cast<UINT>(text.size()))) {
        if (text_ == nullptr) {
            throw std::bad_alloc();
        }
    }
    ScopedText(const ScopedText&) = delete;
    ScopedText& operator=(const ScopedText&) = delete;
    ~ScopedText() { SysFreeString(text_); }

    // Stays the holder's.
    BSTR Get() const { return text_; }

    // Where an operation puts the text that it gives. REQUIRES: there is none yet.
    BSTR* Out() { return &text_; }

  private:
    BSTR text_ = nullptr;
};

}  // namespace CLibraryUtils
