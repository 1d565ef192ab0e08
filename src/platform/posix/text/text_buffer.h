// How the system gives a path back in a caller's buffer.
#pragma once

#include <algorithm>
#include <string_view>

#include "platform/posix/base/last_error.h"
#include "platform/types.h"

namespace brevik::platform {

// The length of the text, or, where it and its NUL do not fit, the size needed; the buffer is
// untouched then.
inline DWORD CopyOrAskForRoom(std::u16string_view text, WCHAR* buffer, DWORD size) {
    if (buffer == nullptr || text.size() >= size) {
        return static_cast<DWORD>(text.size() + 1);
    }
    *std::copy(text.begin(), text.end(), buffer) = u'\0';
    return static_cast<DWORD>(text.size());
}

// The length of the text, or, where it and its NUL do not fit, `size` with error 122; the text is
// cut then.
inline DWORD CopyCutting(std::u16string_view text, WCHAR* buffer, DWORD size) {
    if (text.size() < size) {
        *std::copy(text.begin(), text.end(), buffer) = u'\0';
        return static_cast<DWORD>(text.size());
    }
    if (size > 0) {
        *std::copy_n(text.begin(), size - 1, buffer) = u'\0';
    }
    return Fail(ERROR_INSUFFICIENT_BUFFER, size);
}

}  // namespace brevik::platform
