// CreateFileW: opening and making files.

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <string>
#include <utility>

#include "platform/files.h"
#include "platform/posix/drive_device.h"
#include "platform/posix/file_attributes.h"
#include "platform/posix/interrupted.h"
#include "platform/posix/open_file.h"
#include "platform/posix/paths.h"

namespace brevik::platform {
namespace {

struct Opening {
    DWORD access;
    DWORD share;
    DWORD disposition;
    DWORD flags;

    // With a file of the name, and without one.
    bool TakesExisting() const { return disposition != CREATE_NEW; }
    bool TakesMissing() const {
        return disposition == CREATE_NEW || disposition == CREATE_ALWAYS ||
               disposition == OPEN_ALWAYS;
    }
    bool Empties() const {
        return disposition == CREATE_ALWAYS || disposition == TRUNCATE_EXISTING;
    }
    bool IsValid() const {
        return disposition >= CREATE_NEW && disposition <= TRUNCATE_EXISTING &&
               (disposition != TRUNCATE_EXISTING || (access & GENERIC_WRITE) != 0);
    }
};

// What can be asked for with the flags of a file that is made or made anew.
constexpr DWORD kAttributesToSet =
    FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;

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

// Nothing else is opened: pipes, sockets and devices have no counterpart here, and opening one can
// wait for ever or set something off.
bool IsOpenable(const struct stat& status) {
    return S_ISREG(status.st_mode) || S_ISDIR(status.st_mode) || IsNullDevice(status);
}

// A file whose contents nobody asked for needs no right to them.
int HostFlags(DWORD access, bool empties, bool folder) {
    constexpr int kAlways = O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    const bool read = (access & GENERIC_READ) != 0;
    const bool write = (access & GENERIC_WRITE) != 0 || empties;
    if (!read && !write) {
        return O_PATH | O_CLOEXEC;
    }
    if (folder) {
        return O_RDONLY | O_DIRECTORY | kAlways;
    }
    return (write ? read ? O_RDWR : O_WRONLY : O_RDONLY) | kAlways;
}

// Why the existing file may not be opened like this; 0 when nothing stands against it.
DWORD RefusalOf(const HostFile& file, const HostPlace& place, const Opening& opening) {
    const bool folder = S_ISDIR(file.status.st_mode);
    if (!folder && place.trailingSeparator) {
        return ERROR_INVALID_NAME;
    }
    if (!opening.TakesExisting()) {
        return ERROR_FILE_EXISTS;
    }
    if (folder && ((opening.flags & FILE_FLAG_BACKUP_SEMANTICS) == 0 || opening.Empties())) {
        return ERROR_ACCESS_DENIED;
    }
    const bool writes = (opening.access & GENERIC_WRITE) != 0 || opening.Empties();
    if (!IsOpenable(file.status) || (!folder && writes && IsReadOnlyFile(file.status.st_mode))) {
        return ERROR_ACCESS_DENIED;
    }
    if (opening.disposition == CREATE_ALWAYS) {
        // A hidden or system file is not made anew by who does not know it for one.
        const auto information = ReadFileInformation(file.path.c_str());
        constexpr DWORD kGuarded = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;
        if (information && (information->attributes & kGuarded & ~opening.flags) != 0) {
            return ERROR_ACCESS_DENIED;
        }
    }
    return NO_ERROR;
}

Attempt Finish(ScopedDescriptor descriptor, ShareMode share, const Opening& opening) {
    HANDLE handle = OpenHandle(
        std::make_shared<OpenFile>(std::move(descriptor), opening.access, std::move(share)));
    return {handle != nullptr ? NO_ERROR : ERROR_TOO_MANY_OPEN_FILES, false, handle};
}

Attempt OpenExisting(const HostFile& file, const HostPlace& place, const Opening& opening) {
    if (const DWORD refusal = RefusalOf(file, place, opening); refusal != NO_ERROR) {
        return Failed(refusal);
    }
    const bool folder = S_ISDIR(file.status.st_mode);
    ScopedDescriptor descriptor =
        OpenDescriptor(file.path, HostFlags(opening.access, opening.Empties(), folder));
    if (!descriptor) {
        return {ErrorFromHost(errno), errno == ENOENT, nullptr};
    }
    struct stat status;
    if (fstat(descriptor.Get(), &status) != 0 || !IsOpenable(status) ||
        S_ISDIR(status.st_mode) != folder) {
        return Failed(ERROR_ACCESS_DENIED);
    }
    ShareMode share;
    // The null device is everybody's.
    if (!IsNullDevice(status)) {
        const DWORD error = share.Enter(status, opening.access, opening.share);
        if (error != NO_ERROR) {
            return Failed(error);
        }
    }
    // Only now that nobody else stands against it.
    if (opening.Empties() && S_ISREG(status.st_mode) &&
        Uninterrupted([&] { return ftruncate(descriptor.Get(), 0); }) != 0) {
        return Failed(ErrorFromHost(errno));
    }
    if (opening.disposition == CREATE_ALWAYS) {
        SetHostAttributes(file.path.c_str(),
                          (opening.flags & kAttributesToSet) | FILE_ATTRIBUTE_ARCHIVE);
    }
    return Finish(std::move(descriptor), std::move(share), opening);
}

Attempt MakeFile(const HostFile& file, const HostPlace& place, const Opening& opening) {
    if (place.trailingSeparator) {
        return Failed(ERROR_INVALID_NAME);
    }
    const bool readOnly = (opening.flags & FILE_ATTRIBUTE_READONLY) != 0;
    // Nothing can be made through a descriptor that stands for the status alone.
    const int access = HostFlags(opening.access | GENERIC_WRITE, false, false);
    ScopedDescriptor descriptor =
        OpenDescriptor(file.path, access | O_CREAT | O_EXCL, readOnly ? 0444 : 0666);
    if (!descriptor) {
        // The folder was there a moment ago: when it is missing now, that is what is told.
        return {errno == ENOENT   ? ERROR_PATH_NOT_FOUND
                : errno == EEXIST ? ERROR_FILE_EXISTS
                                  : ErrorFromHost(errno),
                errno == EEXIST, nullptr};
    }
    const DWORD attributes = opening.flags & kAttributesToSet & ~FILE_ATTRIBUTE_READONLY;
    if (attributes != 0) {
        SetHostAttributes(file.path.c_str(),
                          (opening.flags & kAttributesToSet) | FILE_ATTRIBUTE_ARCHIVE);
    }
    struct stat status;
    if (fstat(descriptor.Get(), &status) != 0) {
        return Failed(ErrorFromHost(errno));
    }
    // Somebody else may have found the new file and opened it first; then it is in use.
    ShareMode share;
    if (const DWORD error = share.Enter(status, opening.access, opening.share); error != NO_ERROR) {
        return Failed(error);
    }
    return Finish(std::move(descriptor), std::move(share), opening);
}

HANDLE Fail(DWORD error) {
    SetLastError(error);
    return INVALID_HANDLE_VALUE;
}

}  // namespace

HANDLE CreateFileW(const WCHAR* path, DWORD access, DWORD share, SECURITY_ATTRIBUTES*,
                   DWORD disposition, DWORD flags, HANDLE) {
    const Opening opening = {access, share, disposition, flags};
    if (path == nullptr || !opening.IsValid()) {
        return Fail(path == nullptr ? ERROR_PATH_NOT_FOUND : ERROR_INVALID_PARAMETER);
    }
    if (IsDriveDevice(path)) {
        return OpenDriveDevice(path);
    }
    const HostPlace place = PlaceOf(path);
    // Another program may make the file and remove it again between two steps here. A link that
    // leads nowhere looks the same each time, so there is an end to it.
    constexpr int kMostAttempts = 16;
    Attempt attempt;
    DWORD existed = NO_ERROR;
    for (int i = 0; i < kMostAttempts && (i == 0 || attempt.again); ++i) {
        const HostFile file = FindFile(place);
        if (file.error == NO_ERROR) {
            attempt = OpenExisting(file, place, opening);
            const bool told = disposition == OPEN_ALWAYS || disposition == CREATE_ALWAYS;
            existed = told ? ERROR_ALREADY_EXISTS : NO_ERROR;
        } else if (file.error == ERROR_FILE_NOT_FOUND && opening.TakesMissing()) {
            attempt = MakeFile(file, place, opening);
            existed = NO_ERROR;
        } else {
            return Fail(file.error);
        }
    }
    if (attempt.handle == nullptr) {
        return Fail(attempt.error);
    }
    SetLastError(existed);
    return attempt.handle;
}

}  // namespace brevik::platform
