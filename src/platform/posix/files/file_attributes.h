// Attributes and times of host files.
//
// A file is read-only when its owner has no permission to write. The rest is stored in the extended
// attribute user.DOSATTRIB, as text ("0x22"); the binary form of Samba is read too. A file without
// it has the archive attribute, a folder none. Read-only of a folder, which takes files all the
// same, is stored there as well; a folder that its owner may not write to reads as read-only too.
//
// The creation time is the host's own, else the earlier of the last write and the last change. One
// that was set is stored in user.brevik.creation_time, as a decimal count of file time.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <optional>

#include "platform/clock.h"
#include "platform/errors.h"
#include "platform/types.h"

namespace brevik::platform {

struct FileInformation {
    DWORD attributes = 0;
    FILETIME creation = {};
    FILETIME access = {};
    FILETIME write = {};
    std::uint64_t size = 0;  // 0 for a folder
};

// What statx is to be asked for, for FileInformationOf.
inline constexpr unsigned kInformationMask = STATX_BASIC_STATS | STATX_BTIME;

// `path` is that of the file which `status` describes; links are followed.
PLATFORM_API FileInformation FileInformationOf(const struct statx& status, const char* path);

// The same with its own statx; nothing when that fails.
PLATFORM_API std::optional<FileInformation> ReadFileInformation(const char* path);

// Whether the file may not be opened for writing or deleted, by its owner or anybody else.
constexpr bool IsReadOnlyFile(mode_t mode) {
    return (mode & S_IWUSR) == 0;
}

// Whether the folder may not be removed.
PLATFORM_API bool IsReadOnlyFolder(mode_t mode, const char* path);

// Sets read-only, hidden, system and archive as in `attributes`. NO_ERROR or an error number. Where
// the file system keeps no extended attributes, a change of archive alone is dropped, and a change
// of any other attribute that is stored there fails with ERROR_NOT_SUPPORTED and changes nothing.
PLATFORM_API DWORD SetHostAttributes(const char* path, DWORD attributes);

// Sets the creation time of an open file. NO_ERROR or an error number; ERROR_NOT_SUPPORTED where it
// cannot be kept.
DWORD SetCreationTime(int descriptor, const FILETIME& time);

}  // namespace brevik::platform
