#include <string>

#include "platform/folders.h"
#include "platform/posix/paths.h"
#include "platform/posix/text_buffer.h"

namespace brevik::platform {
namespace {

// Whether the path is its own full path for certain: one on a drive, with plain names between
// single separators. No name that ends in a dot is plain.
bool IsPlain(std::u16string_view path) {
    if (path.size() < 4 || path[1] != u':' || path[2] != u'\\') {
        return false;
    }
    char16_t last = u'\\';
    for (const char16_t unit : path.substr(3)) {
        if (unit == u'/' || (unit == u'\\' && (last == u'\\' || last == u'.'))) {
            return false;
        }
        last = unit;
    }
    return last != u'\\' && last != u'.';
}

}  // namespace

DWORD GetFullPathNameW(const WCHAR* path, DWORD size, WCHAR* buffer, WCHAR** filePart) {
    if (path == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    if (*path == u'\0') {
        return 0;
    }
    std::u16string_view full(path);
    std::u16string completed;
    if (!IsPlain(full)) {
        completed = FullPath(full);
        full = completed;
    }
    if (full.empty()) {
        SetLastError(ERROR_PATH_NOT_FOUND);
        return 0;
    }
    const DWORD length = CopyOrAskForRoom(full, buffer, size);
    if (filePart != nullptr) {
        // A path that ends in a separator has no last name.
        const std::size_t name = full.find_last_of(u'\\') + 1;
        *filePart = length == full.size() && name < full.size() ? buffer + name : nullptr;
    }
    return length;
}

}  // namespace brevik::platform
