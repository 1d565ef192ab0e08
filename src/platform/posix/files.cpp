// Files and folders by their path: attributes, deleting, and folders made and removed.

#include "platform/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <optional>

#include "platform/posix/access_rights.h"
#include "platform/posix/file_attributes.h"
#include "platform/posix/paths.h"
#include "platform/posix/share_modes.h"
#include "platform/security.h"

namespace brevik::platform {
namespace {

BOOL Answer(DWORD error) {
    if (error != NO_ERROR) {
        SetLastError(error);
    }
    return error == NO_ERROR;
}

std::u16string_view TextOf(const WCHAR* path) {
    return path != nullptr ? std::u16string_view(path) : std::u16string_view();
}

bool IsLink(const char* path) {
    struct stat status;
    return lstat(path, &status) == 0 && S_ISLNK(status.st_mode);
}

// The file for a place that is there as it is spelled, in one system call; else through the lookup.
std::optional<FileInformation> FindInformation(const HostPlace& place, bool* folder) {
    struct statx status;
    std::string path = place.path;
    const int flags = AT_STATX_SYNC_AS_STAT;
    if (place.error != NO_ERROR ||
        statx(AT_FDCWD, path.c_str(), flags, kInformationMask, &status) != 0) {
        HostFile file = FindFile(place);
        if (!file.HasName()) {
            SetLastError(file.error);
            return std::nullopt;
        }
        path = std::move(file.path);
        const int ofLink = file.isBrokenLink ? AT_SYMLINK_NOFOLLOW : 0;
        if (statx(AT_FDCWD, path.c_str(), flags | ofLink, kInformationMask, &status) != 0) {
            SetLastError(ErrorFromHost(errno));
            return std::nullopt;
        }
        if (file.isBrokenLink) {
            FileInformation information = FileInformationOf(status, path.c_str());
            information.attributes |= FILE_ATTRIBUTE_REPARSE_POINT;
            information.size = 0;
            *folder = false;
            return information;
        }
    }
    *folder = S_ISDIR(status.stx_mode);
    FileInformation information = FileInformationOf(status, path.c_str());
    if (*folder && !place.IsRoot() && IsLink(path.c_str())) {
        information.attributes |= FILE_ATTRIBUTE_REPARSE_POINT;
    }
    return information;
}

DWORD DeleteFound(const HostFile& file, const HostPlace& place) {
    if (S_ISDIR(file.status.st_mode)) {
        return ERROR_ACCESS_DENIED;
    }
    if (place.trailingSeparator) {
        return ERROR_INVALID_NAME;
    }
    // What a link leads to stays, and so does not stand against it.
    if (IsReadOnlyFile(file.status.st_mode) && !IsLink(file.path.c_str())) {
        return ERROR_ACCESS_DENIED;
    }
    ShareMode share;
    const DWORD error = share.EnterToDelete(file.status);
    if (error != NO_ERROR && !IsLink(file.path.c_str())) {
        return error;
    }
    return unlink(file.path.c_str()) == 0 ? NO_ERROR : ErrorFromHost(errno);
}

bool IsCurrentFolder(const struct stat& folder) {
    struct stat current;
    return stat(".", &current) == 0 && current.st_dev == folder.st_dev &&
           current.st_ino == folder.st_ino;
}

DWORD RemoveFound(const HostFile& file, const HostPlace& place) {
    if (!S_ISDIR(file.status.st_mode)) {
        return ERROR_DIRECTORY;
    }
    if (place.IsRoot()) {
        return ERROR_ACCESS_DENIED;
    }
    // Of a link to a folder the link goes; the folder stays, and so does not stand against it.
    if (IsLink(file.path.c_str())) {
        return unlink(file.path.c_str()) == 0 ? NO_ERROR : ErrorFromHost(errno);
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
    if (rmdir(file.path.c_str()) == 0) {
        return NO_ERROR;
    }
    // The host may put "not empty" into these words too.
    return errno == EEXIST ? ERROR_DIR_NOT_EMPTY : ErrorFromHost(errno);
}

}  // namespace

BOOL GetFileAttributesExW(const WCHAR* path, GET_FILEEX_INFO_LEVELS level, void* information) {
    if (level != GetFileExInfoStandard || information == nullptr) {
        return Answer(ERROR_INVALID_PARAMETER);
    }
    const HostPlace place = PlaceOf(TextOf(path));
    bool folder = false;
    const std::optional<FileInformation> found = FindInformation(place, &folder);
    if (!found) {
        return FALSE;
    }
    if (place.trailingSeparator && !folder) {
        return Answer(ERROR_PATH_NOT_FOUND);
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
    const HostPlace place = PlaceOf(TextOf(path));
    const HostFile file = FindFile(place);
    if (file.error != NO_ERROR) {
        return Answer(file.error);
    }
    if (place.trailingSeparator && !S_ISDIR(file.status.st_mode)) {
        return Answer(ERROR_PATH_NOT_FOUND);
    }
    return Answer(SetHostAttributes(file.path.c_str(), attributes));
}

BOOL DeleteFileW(const WCHAR* path) {
    const HostPlace place = PlaceOf(TextOf(path));
    const HostFile file = FindFile(place);
    return Answer(file.HasName() ? DeleteFound(file, place) : file.error);
}

BOOL PathFileExistsW(const WCHAR* path) {
    return FindFile(TextOf(path)).error == NO_ERROR;
}

BOOL CreateDirectoryW(const WCHAR* path, SECURITY_ATTRIBUTES* security) {
    const HostFile file = FindFile(PlaceOf(TextOf(path)));
    if (file.error != ERROR_FILE_NOT_FOUND) {
        return Answer(file.error == NO_ERROR ? ERROR_ALREADY_EXISTS : file.error);
    }
    const bool isSecured = security != nullptr && security->lpSecurityDescriptor != nullptr;
    const DWORD error = MakeFolderWithRights(
        file.path, isSecured ? RightsIn(security->lpSecurityDescriptor) : OtherUsersRights());
    // What is missing here can only be the folder above.
    return Answer(error == ERROR_FILE_NOT_FOUND ? ERROR_PATH_NOT_FOUND : error);
}

BOOL RemoveDirectoryW(const WCHAR* path) {
    const HostPlace place = PlaceOf(TextOf(path));
    const HostFile file = FindFile(place);
    return Answer(file.HasName() ? RemoveFound(file, place) : file.error);
}

}  // namespace brevik::platform
