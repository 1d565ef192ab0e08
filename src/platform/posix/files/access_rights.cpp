#include "platform/posix/files/access_rights.h"

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>

#include "platform/posix/base/host_errors.h"
#include "platform/posix/base/scoped_descriptor.h"

namespace brevik::platform {
namespace {

constexpr unsigned kMayRead = 4;
constexpr unsigned kAllPermissions = 7;

constexpr char kAccessList[] = "system.posix_acl_access";
constexpr char kDefaultList[] = "system.posix_acl_default";

// An access list in the form that the host takes, little-endian.
struct ListEntry {
    std::uint16_t kind;
    std::uint16_t permissions;
    std::uint32_t user;
};

struct DefaultList {
    std::uint32_t version;
    ListEntry entries[4];
};

constexpr std::uint32_t kListVersion = 2;
constexpr std::uint32_t kNoUser = 0xFFFFFFFF;
constexpr std::uint16_t kOwner = 0x01;
constexpr std::uint16_t kGroup = 0x04;
constexpr std::uint16_t kMask = 0x10;
constexpr std::uint16_t kOthers = 0x20;

bool HasNoLists(int error) {
    return error == EOPNOTSUPP || error == ENOSYS;
}

// All rights for every user.
DWORD SetDefaultList(int folder) {
    constexpr std::uint16_t kAll = kAllPermissions;
    constexpr DefaultList kList = {kListVersion,
                                   {{kOwner, kAll, kNoUser},
                                    {kGroup, kAll, kNoUser},
                                    {kMask, kAll, kNoUser},
                                    {kOthers, kAll, kNoUser}}};
    const bool isSet = fsetxattr(folder, kDefaultList, &kList, sizeof kList, 0) == 0;
    return isSet || HasNoLists(errno) ? NO_ERROR : ErrorFromHost(errno);
}

// The mode of a folder before it is opened to others. Since they may make files, none may replace
// another's: a link in the place of a file would have its user's programs write where it leads.
constexpr mode_t kShutMode = S_IRWXU | S_ISVTX;

// Makes the folder where it is to be, and opens it to others afterwards.
DWORD MakeInPlace(const std::string& path) {
    const DWORD error = ErrorOf(mkdir(path.c_str(), kShutMode));
    return error == NO_ERROR ? OpenToOthers(path) : error;
}

}  // namespace

DWORD OpenToOthers(const std::string& path) {
    // Without blocking, so that a pipe is not waited for.
    const ScopedDescriptor file = OpenDescriptor(path, O_RDONLY | O_NONBLOCK | O_NOCTTY);
    struct stat status;
    if (!file || fstat(file.Get(), &status) != 0) {
        return ErrorFromHost(errno);
    }
    const bool isFolder = S_ISDIR(status.st_mode);
    const unsigned others = isFolder ? kAllPermissions : kMayRead | (status.st_mode & S_IRWXU) >> 6;
    // The file's own access list would otherwise still decide what its group may do.
    if (fremovexattr(file.Get(), kAccessList) != 0 && errno != ENODATA && !HasNoLists(errno)) {
        return ErrorFromHost(errno);
    }
    constexpr mode_t kKept = 07777 & ~(S_IRWXG | S_IRWXO);
    if (fchmod(file.Get(), (status.st_mode & kKept) | others << 3 | others) != 0) {
        return ErrorFromHost(errno);
    }
    return isFolder ? SetDefaultList(file.Get()) : DWORD{NO_ERROR};
}

DWORD MakeOpenFolder(const std::string& path) {
    // Made under another name and renamed when it is ready: a process that ends half-way must not
    // leave a folder that is shut to all others for good.
    std::string scratch = path.substr(0, path.rfind('/') + 1) + ".brevik-XXXXXX";
    if (mkdtemp(scratch.data()) == nullptr) {
        return ErrorFromHost(errno);
    }
    DWORD error = ErrorOf(chmod(scratch.c_str(), kShutMode));
    error = error == NO_ERROR ? OpenToOthers(scratch) : error;
    if (error == NO_ERROR &&
        renameat2(AT_FDCWD, scratch.c_str(), AT_FDCWD, path.c_str(), RENAME_NOREPLACE) == 0) {
        return NO_ERROR;
    }
    const int failure = errno;
    rmdir(scratch.c_str());
    if (error != NO_ERROR) {
        return error;
    }
    // The file system may not be able to rename in this way.
    return failure == EINVAL || failure == ENOSYS ? MakeInPlace(path) : ErrorFromHost(failure);
}

}  // namespace brevik::platform
