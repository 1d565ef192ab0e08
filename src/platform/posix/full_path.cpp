#include <string>

#include "platform/folders.h"
#include "platform/posix/paths.h"
#include "platform/posix/text_buffer.h"

namespace brevik::platform {

DWORD GetFullPathNameW(const WCHAR* path, DWORD size, WCHAR* buffer, WCHAR** filePart) {
    if (path == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    if (*path == u'\0') {
        return 0;
    }
    const std::u16string full = FullPath(path);
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
