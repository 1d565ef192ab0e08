// Paths of the Windows grammar, and where they lie on the host.
//
// A drive is the entry drives/LETTER of the machine, a share the entry shares/SERVER/SHARE, found
// without regard to case; each is a folder, or a symbolic link that leads to one. A path never
// leads out of its drive or share by "..". Safe on any thread.
#pragma once

#include <sys/stat.h>

#include <string>
#include <string_view>

#include "platform/errors.h"
#include "platform/posix/host_errors.h"
#include "platform/types.h"

namespace brevik::platform {

// The full path of a path: made absolute against the process's current folder, with "." and ".."
// resolved, single separators, and no dots at the end of the last name. No disk is asked. Behind
// the prefix \\?\ names keep their dots. Empty for an empty path, and for a relative one while the
// current folder cannot be had.
PLATFORM_API std::u16string FullPath(std::u16string_view path);

// Where a path leads on the host by its spelling, before anything is looked up.
struct HostPlace {
    // 0, or why the path can lead nowhere: 123 for a malformed name, 3 for a missing drive letter
    // or an empty path, 53 for a share path without its share, 2 for a device.
    DWORD error = 0;

    // Host path with the names as they were spelled, without a trailing slash.
    std::string path;

    // How much of `path` is the machine's own folder of all drives or shares, and how much is the
    // root of the drive or share.
    std::size_t top = 0;
    std::size_t root = 0;

    bool isShare = false;
    bool trailingSeparator = false;  // the path ended in one, so that it can mean only a folder

    bool IsRoot() const { return path.size() == root; }
};

// A path with the prefix \\?\ is taken as it stands; any other one as its full path, without the
// blanks and dots at the end of its last name.
PLATFORM_API HostPlace PlaceOf(std::u16string_view path);

// What a lookup found on the host.
struct HostFile {
    // 0; 2 when only the last name is missing, 3 when one before it is missing or is no folder or
    // when there is no such drive, 53 when there is no such share; 5 and others of the host.
    DWORD error = 0;

    // The path with the names as they stand on the disk. With error 2 the path at which the missing
    // file or folder is to be made. Of a broken link its own path. Else empty.
    std::string path;

    // REQUIRES: error is 0, and then symbolic links are followed, or the link is broken, and then
    // it is the link's own.
    struct stat status = {};

    // Whether the name is there and is a symbolic link, below a root, that leads nowhere, in a
    // circle, or where this process may not look. It can be deleted and renamed, and no more.
    bool isBrokenLink = false;

    bool HasName() const { return error == 0 || isBrokenLink; }
};

// Looks the place up: as spelled in one system call, and only where that misses without regard to
// case. To a symbolic link that leads nowhere the error is that of a missing file.
PLATFORM_API HostFile FindFile(const HostPlace& place);

// Looks a path up and leaves its error to GetLastError.
PLATFORM_API HostFile FindFile(std::u16string_view path);

// The path under which an absolute host path free of links, "." and ".." is known: that of the
// drive or share whose folder is the longest prefix of it. Empty when there is none. What no path
// can spell, ill-formed UTF-8 and backslashes in names, shows as U+FFFD. `isCertain` receives
// whether it will be the same at the next try: false where a drive or share could not be looked at.
PLATFORM_API std::u16string WindowsPath(std::string_view hostPath, bool* isCertain = nullptr);

// Whether a name on the host can be one of a path: not empty, "." or "..", well-formed, free of the
// characters that no name may hold, and not longer than the host can hold.
PLATFORM_API bool IsValidName(std::u16string_view name);

}  // namespace brevik::platform
