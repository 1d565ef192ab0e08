// Where Windows paths lie on the host.
//
// A drive is the entry drives/LETTER of the machine, a share the entry shares/SERVER/SHARE, found
// without regard to case; each is a folder, or a symbolic link that leads to one. A path never
// leaves its drive or share by "..". Safe on any thread.
#pragma once

#include <sys/stat.h>

#include <string>
#include <string_view>

#include "platform/errors.h"
#include "platform/posix/base/host_errors.h"
#include "platform/posix/paths/path_text.h"
#include "platform/types.h"

namespace brevik::platform {

// Where a path leads on the host by its spelling, before anything is looked up.
struct HostPlace {
    // NO_ERROR, or why the path can lead nowhere: ERROR_INVALID_NAME for a malformed name,
    // ERROR_PATH_NOT_FOUND for an empty path or one without a drive letter, ERROR_BAD_NETPATH for a
    // server without a share, ERROR_FILE_NOT_FOUND for a device.
    DWORD error = NO_ERROR;

    // Host path with the names as they were spelled, without a trailing slash.
    std::string path;

    // How much of `path` is the machine's folder of all drives or shares, and how much is the root
    // of the drive or share.
    std::size_t top = 0;
    std::size_t root = 0;

    bool isShare = false;
    bool trailingSeparator = false;  // the path ended in one, so it can only mean a folder

    bool IsRoot() const { return path.size() == root; }
};

// A path with the literal prefix is taken as it stands; any other by its full path, without the
// blanks and dots at the end of its last name.
PLATFORM_API HostPlace PlaceOf(std::u16string_view path);

// What a lookup found on the host.
struct HostFile {
    // NO_ERROR; ERROR_FILE_NOT_FOUND when only the last name is missing; ERROR_PATH_NOT_FOUND when
    // one before it is missing or is no folder, or when there is no such drive; ERROR_BAD_NETPATH
    // when there is no such share; ERROR_ACCESS_DENIED and others of the host.
    DWORD error = NO_ERROR;

    // The path with the names as they stand on the disk. Of a missing file, where only the last
    // name is missing, the path at which it is to be made; of a broken link its own. Else empty.
    std::string path;

    // Of what was found, with symbolic links followed, or of a broken link itself.
    struct stat status = {};

    // Whether the name is there and is a symbolic link, below a root, that leads nowhere, in a
    // circle, or where this process may not look. Such a link can only be deleted and renamed.
    bool isBrokenLink = false;

    bool HasName() const { return error == NO_ERROR || isBrokenLink; }
};

// Looks the place up: as spelled in one system call, and only where that misses without regard to
// case. A symbolic link that leads nowhere gives the error of a missing file; a file where only a
// folder can be meant, ERROR_INVALID_NAME.
PLATFORM_API HostFile FindFile(const HostPlace& place);

// Looks a path up and leaves its error to GetLastError.
PLATFORM_API HostFile FindFile(std::u16string_view path);

// The path under which an absolute host path free of links, "." and ".." is known: that of the
// drive or share whose folder is the longest prefix of it. Empty when there is none. What no path
// can spell, ill-formed UTF-8 and backslashes in names, becomes U+FFFD.
PLATFORM_API std::u16string WindowsPath(std::string_view hostPath);

// Of this process's executable; empty when it cannot be read. Once had, it is not asked for again.
std::u16string HostExecutableWindowsPath();

// The process's current folder, without a trailing backslash but at the root of a drive. It is
// spelled as SetCurrentDirectoryW was given it while the process is still in that folder. Empty
// when there is none, or when no path leads to it, as to a folder whose name ends in a dot. Safe on
// any thread.
std::u16string CurrentFolder();

// The same on the host, with links followed. Empty when there is none.
std::string HostCurrentFolder();

bool IsCurrentFolder(const struct stat& folder);

}  // namespace brevik::platform
