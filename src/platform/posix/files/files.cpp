// Files and folders by their path: attributes, deleting, and folders made and removed.

#include "platform/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <string>
#include <utility>

#include "platform/posix/base/last_error.h"
#include "platform/posix/files/access_rights.h"
#include "platform/posix/files/file_attributes.h"
#include "platform/posix/files/share_modes.h"
#include "platform/posix/paths/paths.h"
#include "platform/security.h"

namespace brevik::platform {
namespace {

bool IsLink(const char* path) {
    struct stat status;
    return lstat(path, &status) == 0 && S_ISLNK(status.st_mode);
}

using FoundInformation = std::optional<FileInformation>;

// What is known of a place that is there as it is spelled, in one system call, or else of what a
// lookup finds. Nothing with the last error on failure.
FoundInformation FindInformation(const HostPlace& place) {
    constexpr int kFlags = AT_STATX_SYNC_AS_STAT;
    struct statx status;
    std::string path = place.path;
    if (place.error != NO_ERROR || place.trailingSeparator ||
        statx(AT_FDCWD, path.c_str(), kFlags, kInformationMask, &status) != 0) {
        HostFile file = FindFile(place);
        if (!file.HasName()) {
            return Fail<FoundInformation>(file.error);
        }
        path = std::move(file.path);
        const int ofLink = file.isBrokenLink ? AT_SYMLINK_NOFOLLOW : 0;
        if (statx(AT_FDCWD, path.c_str(), kFlags | ofLink, kInformationMask, &status) != 0) {
            return Fail<FoundInformation>(ErrorFromHost(errno));
        }
    }
    FileInformation information = FileInformationOf(status, path.c_str());
    const bool isFolder = S_ISDIR(status.stx_mode);
    if (S_ISLNK(status.stx_mode)) {
        information.size = 0;
    }
    if (S_ISLNK(status.stx_mode) || (isFolder && !place.IsRoot() && IsLink(path.c_str()))) {
        information.attributes |= FILE_ATTRIBUTE_REPARSE_POINT;
    }
    return information;
}

DWORD DeleteFound(const HostFile& file) {
    if (S_ISDIR(file.status.st_mode)) {
        return ERROR_ACCESS_DENIED;
    }
    ShareMode share;
    // What a link leads to stays, so its state does not matter.
    if (!IsLink(file.path.c_str())) {
        if (IsReadOnlyFile(file.status.st_mode)) {
            return ERROR_ACCESS_DENIED;
        }
        if (const DWORD error = share.EnterToDelete(file.status); error != NO_ERROR) {
            return error;
        }
    }
    return ErrorOf(unlink(file.path.c_str()));
}

DWORD RemoveFound(const HostFile& file, const HostPlace& place) {
    if (!S_ISDIR(file.status.st_mode)) {
        return ERROR_DIRECTORY;
    }
    if (place.IsRoot()) {
        return ERROR_ACCESS_DENIED;
    }
    // A link to a folder is removed itself; the folder stays, so its state does not matter.
    if (IsLink(file.path.c_str())) {
        return ErrorOf(unlink(file.path.c_str()));
    }
    if (IsReadOnlyFolder(file.status.st_mode, file.path.c_str())) {
        return ERROR_ACCESS_DENIED;
    }
    if (IsCurrentFolder(file.status)) {
        return ERROR_SHARING_VIOLATION;
    }
    ShareMode share;
    if (const DWORD error = share.EnterToDelete(file.status); error != NO_ERROR) {
        return error;
    }
    const DWORD error = ErrorOf(rmdir(file.path.c_str()));
    // Some hosts report a folder that is not empty like this.
    return error == ERROR_ALREADY_EXISTS ? ERROR_DIR_NOT_EMPTY : error;
}

}  // namespace

BOOL GetFileAttributesExW(const WCHAR* path, GET_FILEEX_INFO_LEVELS, void* information) {
    const FoundInformation found = FindInformation(PlaceOf(path));
    if (!found) {
        return FALSE;
    }
    *static_cast<WIN32_FILE_ATTRIBUTE_DATA*>(information) = {
        found->attributes,
        found->creation,
        found->access,
        found->write,
        static_cast<DWORD>(found->size >> 32),
        static_cast<DWORD>(found->size),
    };
    return TRUE;
}

BOOL SetFileAttributesW(const WCHAR* path, DWORD attributes) {
    const HostFile file = FindFile(path);
    return file.error == NO_ERROR && Answer(SetHostAttributes(file.path.c_str(), attributes));
}

BOOL DeleteFileW(const WCHAR* path) {
    const HostFile file = FindFile(PlaceOf(path));
    return Answer(file.HasName() ? DeleteFound(file) : file.error);
}

BOOL PathFileExistsW(const WCHAR* path) {
    return FindFile(path).error == NO_ERROR;
}

BOOL CreateDirectoryW(const WCHAR* path, SECURITY_ATTRIBUTES* security) {
    const HostFile file = FindFile(PlaceOf(path));
    if (file.error != ERROR_FILE_NOT_FOUND) {
        return Fail(file.error == NO_ERROR ? ERROR_ALREADY_EXISTS : file.error);
    }
    const auto* const descriptor =
        security != nullptr
            ? static_cast<const SECURITY_DESCRIPTOR*>(security->lpSecurityDescriptor)
            : nullptr;
    if (descriptor != nullptr && !descriptor->list.isOpenToAll) {
        return Fail(ERROR_NOT_SUPPORTED);
    }
    const DWORD error =
        descriptor != nullptr ? MakeOpenFolder(file.path) : ErrorOf(mkdir(file.path.c_str(), 0777));
    // What is missing here can only be the folder above.
    return Answer(error == ERROR_FILE_NOT_FOUND ? ERROR_PATH_NOT_FOUND : error);
}

BOOL RemoveDirectoryW(const WCHAR* path) {
    const HostPlace place = PlaceOf(path);
    const HostFile file = FindFile(place);
    return Answer(file.HasName() ? RemoveFound(file, place) : file.error);
}

}  // namespace brevik::platform
