// SearchPathW.

#include "platform/folders.h"
#include "platform/posix/file_search.h"
#include "platform/posix/last_error.h"
#include "platform/posix/paths.h"
#include "platform/posix/text_buffer.h"

namespace brevik::platform {

DWORD SearchPathW(const WCHAR*, const WCHAR* fileName, const WCHAR*, DWORD size, WCHAR* buffer,
                  WCHAR**) {
    const std::string found = FindInSystemOrder(fileName);
    return found.empty() ? Fail<DWORD>(ERROR_FILE_NOT_FOUND)
                         : CopyOrAskForRoom(WindowsPath(found), buffer, size);
}

}  // namespace brevik::platform
