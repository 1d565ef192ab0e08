// Texts as they pass the library's border: counted ones of component objects, and blocks of
// callers.
#pragma once

#include <algorithm>
#include <new>
#include <string>

#include "platform/component_model.h"
#include "platform/types.h"

namespace CLibraryUtils {

// A copy of a text and its NUL for a caller, who frees it with CoTaskMemFree; null when memory is
// short.
template <typename Unit>
Unit* MakeBlock(const std::basic_string<Unit>& text) {
    auto* block = static_cast<Unit*>(CoTaskMemAlloc((text.size() + 1) * sizeof(Unit)));
    if (block != nullptr) {
        std::copy_n(text.c_str(), text.size() + 1, block);
    }
    return block;
}

// Owner of a counted text.
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
