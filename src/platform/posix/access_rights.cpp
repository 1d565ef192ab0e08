#include "platform/posix/access_rights.h"

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>

#include "platform/posix/host_errors.h"
#include "platform/posix/scoped_descriptor.h"

namespace brevik::platform {
namespace {

constexpr char kAccessList[] = "system.posix_acl_access";
constexpr char kDefaultList[] = "system.posix_acl_default";

// An access list in the form in which the host takes it, little-endian.
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

DWORD SetDefaultList(int folder, std::optional<unsigned> below) {
    int result = 0;
    if (below) {
        constexpr std::uint16_t kAll = kMayRead | kMayWrite | kMayRun;
        const auto others = static_cast<std::uint16_t>(*below);
        const DefaultList list = {kListVersion,
                                  {{kOwner, kAll, kNoUser},
                                   {kGroup, others, kNoUser},
                                   {kMask, kAll, kNoUser},
                                   {kOthers, others, kNoUser}}};
        result = fsetxattr(folder, kDefaultList, &list, sizeof list, 0);
    } else {
        result = fremovexattr(folder, kDefaultList);
    }
    return result == 0 || errno == ENODATA || HasNoLists(errno) ? NO_ERROR : ErrorFromHost(errno);
}

DWORD Grant(int descriptor, const OtherUsersRights& rights) {
    struct stat status;
    if (fstat(descriptor, &status) != 0) {
        return ErrorFromHost(errno);
    }
    unsigned others = rights.here;
    if (!S_ISDIR(status.st_mode)) {
        others &= kMayRead | (status.st_mode & S_IRWXU) >> 6;
    }
    // An access list of the file's own would go on telling what its group may do.
    if (fremovexattr(descriptor, kAccessList) != 0 && errno != ENODATA && !HasNoLists(errno)) {
        return ErrorFromHost(errno);
    }
    constexpr mode_t kKept = 07777 & ~(S_IRWXG | S_IRWXO);
    if (fchmod(descriptor, (status.st_mode & kKept) | others << 3 | others) != 0) {
        return ErrorFromHost(errno);
    }
    return S_ISDIR(status.st_mode) ? SetDefaultList(descriptor, rights.below) : DWORD{NO_ERROR};
}

// Opens what need not be readable for being changed; a pipe is not waited for.
ScopedDescriptor Open(const std::string& path) {
    return ScopedDescriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
}

// How a folder is made before it is opened to others. Where they may make files, none may replace
// another's: a link in the place of a file would have its user's programs write where it leads.
mode_t ShutMode(const OtherUsersRights& rights) {
    return S_IRWXU | ((rights.here & kMayWrite) != 0 ? S_ISVTX : 0);
}

// Makes it where it is to be, and opens it to others afterwards.
DWORD MakeInPlace(const std::string& path, const OtherUsersRights& rights) {
    if (mkdir(path.c_str(), ShutMode(rights)) != 0) {
        return ErrorFromHost(errno);
    }
    return GrantToOthers(path, rights);
}

}  // namespace

DWORD GrantToOthers(const std::string& path, const OtherUsersRights& rights) {
    if (!rights.present) {
        return NO_ERROR;
    }
    const ScopedDescriptor file = Open(path);
    return file ? Grant(file.Get(), rights) : ErrorFromHost(errno);
}

DWORD MakeFolderWithRights(const std::string& path, const OtherUsersRights& rights) {
    if (!rights.present) {
        return mkdir(path.c_str(), 0777) == 0 ? NO_ERROR : ErrorFromHost(errno);
    }
    // Under another name until it is as it should be: a process that ends half-way must not leave a
    // folder behind that is shut to all others for good.
    std::string scratch = path.substr(0, path.rfind('/') + 1) + ".brevik-XXXXXX";
    if (mkdtemp(scratch.data()) == nullptr) {
        return ErrorFromHost(errno);
    }
    const DWORD error = chmod(scratch.c_str(), ShutMode(rights)) == 0
                            ? GrantToOthers(scratch, rights)
                            : ErrorFromHost(errno);
    if (error == NO_ERROR &&
        renameat2(AT_FDCWD, scratch.c_str(), AT_FDCWD, path.c_str(), RENAME_NOREPLACE) == 0) {
        return NO_ERROR;
    }
    const int failure = errno;
    rmdir(scratch.c_str());
    if (error != NO_ERROR) {
        return error;
    }
    // A file system that cannot rename in this way.
    return failure == EINVAL || failure == ENOSYS ? MakeInPlace(path, rights)
                                                  : ErrorFromHost(failure);
}

}  // namespace brevik::platform
