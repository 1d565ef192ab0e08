// CreateFileW: opening and making files.

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <utility>

#include "platform/files.h"
#include "platform/posix/base/last_error.h"
#include "platform/posix/files/drive_device.h"
#include "platform/posix/files/file_attributes.h"
#include "platform/posix/files/open_file.h"
#include "platform/posix/paths/paths.h"

namespace brevik::platform {
namespace {

struct Opening {
    DWORD access;
    DWORD share;
    DWORD disposition;
    DWORD flags;
};

// What came of one attempt.
struct Attempt {
    DWORD error = NO_ERROR;
    bool again = false;  // the file came or went since it was looked up
    HANDLE handle = nullptr;
};

Attempt Failed(DWORD error) {
    return {error, false, nullptr};
}

bool IsNullDevice(const struct stat& status) {
    return S_ISCHR(status.st_mode) && status.st_rdev == makedev(1, 3);
}

// Pipes, sockets and other devices have no counterpart here, and opening one can wait for ever or
// set something off.
bool IsOpenable(const struct stat& status) {
    return S_ISREG(status.st_mode) || S_ISDIR(status.st_mode) || IsNullDevice(status);
}

// Who does not ask for the contents of a file needs no right to them.
int HostFlags(DWORD access, bool isFolder) {
    constexpr int kAlways = O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    const bool reads = (access & GENERIC_READ) != 0;
    const bool writes = (access & GENERIC_WRITE) != 0;
    if (!reads && !writes) {
        return O_PATH | O_CLOEXEC;
    }
    if (isFolder) {
        return O_RDONLY | O_DIRECTORY | kAlways;
    }
    return (writes ? reads ? O_RDWR : O_WRONLY : O_RDONLY) | kAlways;
}

// Why the existing file may not be opened like this; NO_ERROR when it may.
DWORD RefusalOf(const HostFile& file, const Opening& opening) {
    const bool isFolder = S_ISDIR(file.status.st_mode);
    if (opening.disposition == CREATE_NEW) {
        return ERROR_FILE_EXISTS;
    }
    if (isFolder) {
        const bool isMeant = (opening.flags & FILE_FLAG_BACKUP_SEMANTICS) != 0;
        return isMeant ? NO_ERROR : ERROR_ACCESS_DENIED;
    }
    const bool writes = (opening.access & GENERIC_WRITE) != 0;
    const bool isRefused =
        !IsOpenable(file.status) || (writes && IsReadOnlyFile(file.status.st_mode));
    return isRefused ? ERROR_ACCESS_DENIED : NO_ERROR;
}

// A handle on what was opened, unless the share mode of another stands against it.
Attempt Finish(ScopedDescriptor descriptor, const struct stat& status, const Opening& opening) {
    ShareMode share;
    // Everybody shares the null device.
    if (!IsNullDevice(status)) {
        if (const DWORD error = share.Enter(status, opening.access, opening.share);
            error != NO_ERROR) {
            return Failed(error);
        }
    }
    return {NO_ERROR, false,
            OpenHandle(std::make_shared<OpenFile>(std::move(descriptor), opening.access,
                                                  std::move(share)))};
}

Attempt OpenExisting(const HostFile& file, const Opening& opening) {
    if (const DWORD refusal = RefusalOf(file, opening); refusal != NO_ERROR) {
        return Failed(refusal);
    }
    const bool isFolder = S_ISDIR(file.status.st_mode);
    ScopedDescriptor descriptor = OpenDescriptor(file.path, HostFlags(opening.access, isFolder));
    if (!descriptor) {
        return {ErrorFromHost(errno), errno == ENOENT, nullptr};
    }
    // Something else may have taken its place by now.
    struct stat status;
    if (fstat(descriptor.Get(), &status) != 0 || !IsOpenable(status) ||
        S_ISDIR(status.st_mode) != isFolder) {
        return Failed(ERROR_ACCESS_DENIED);
    }
    return Finish(std::move(descriptor), status, opening);
}

// Others may find the new file and open it first; then it is in use.
Attempt MakeFile(const HostFile& file, const Opening& opening) {
    // Nothing can be made through a descriptor that gives access to the status alone.
    const int flags = HostFlags(opening.access | GENERIC_WRITE, false) | O_CREAT | O_EXCL;
    ScopedDescriptor descriptor = OpenDescriptor(file.path, flags, 0666);
    struct stat status;
    if (descriptor && fstat(descriptor.Get(), &status) == 0) {
        return Finish(std::move(descriptor), status, opening);
    }
    switch (errno) {
        case ENOENT:
            // The folder was there a moment ago.
            return Failed(ERROR_PATH_NOT_FOUND);
        case EEXIST:
            return {ERROR_FILE_EXISTS, true, nullptr};
        default:
            return Failed(ErrorFromHost(errno));
    }
}

}  // namespace

HANDLE CreateFileW(const WCHAR* path, DWORD access, DWORD share, SECURITY_ATTRIBUTES*,
                   DWORD disposition, DWORD flags, HANDLE) {
    // An empty BSTR may be null.
    if (path == nullptr) {
        return Fail(ERROR_PATH_NOT_FOUND, INVALID_HANDLE_VALUE);
    }
    if (IsDriveDevice(path)) {
        return OpenDriveDevice(path);
    }
    const Opening opening = {access, share, disposition, flags};
    const HostPlace place = PlaceOf(path);
    // Another program may make the file and remove it again between two steps here. A link that
    // leads nowhere looks the same each time, so there is an end to it.
    constexpr int kMostAttempts = 16;
    Attempt attempt;
    for (int i = 0; i == 0 || (attempt.again && i < kMostAttempts); ++i) {
        const HostFile file = FindFile(place);
        if (file.error == NO_ERROR) {
            attempt = OpenExisting(file, opening);
        } else if (file.error == ERROR_FILE_NOT_FOUND && disposition != OPEN_EXISTING) {
            attempt =
                place.trailingSeparator ? Failed(ERROR_INVALID_NAME) : MakeFile(file, opening);
        } else {
            attempt = Failed(file.error);
        }
    }
    return attempt.handle != nullptr ? attempt.handle : Fail(attempt.error, INVALID_HANDLE_VALUE);
}

}  // namespace brevik::platform
