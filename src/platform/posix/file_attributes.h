// Attributes and times of host files.
//
// Read-only is a file's missing permission to write of its owner. The rest stands in the extended
// attribute user.DOSATTRIB, in the text that Samba writes there ("0x22"); its binary form is read
// too. A file without it has the archive attribute, a folder none. Read-only of a folder does not
// keep files from being made in it, so it stands in the extended attribute as well; a folder that
// its owner may not write to reads as read-only all the same. A leading dot means nothing.
//
// The creation time is the host's own, and where it has none the earlier of the last write and the
// last change. One that was set stands in the extended attribute user.brevik.creation_time, as a
// decimal count of file time.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/errors.h"
#include "platform/file_times.h"
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

// The same with its own statx; nothing with errno when that fails.
PLATFORM_API std::optional<FileInformation> ReadFileInformation(const char* path);

// Whether nobody may open the file for writing, or delete it.
constexpr bool IsReadOnlyFile(mode_t mode) {
    return (mode & S_IWUSR) == 0;
}

// Whether the folder may not be removed.
PLATFORM_API bool IsReadOnlyFolder(mode_t mode, const char* path);

// Sets read-only, hidden, system and archive as in `attributes`. 0 or an error number. Where the
// file system keeps no extended attributes, a change of archive alone is dropped, and a change of
// any other attribute that would stand there gives 50 and changes nothing.
PLATFORM_API DWORD SetHostAttributes(const char* path, DWORD attributes);

// Sets the creation time of an open file. 0 or an error number; 50 where it cannot be kept.
DWORD SetCreationTime(int descriptor, const FILETIME& time);

// The attributes in a value of user.DOSATTRIB; nothing for one in no form that is known.
PLATFORM_API std::optional<DWORD> ParseStoredAttributes(std::string_view value);

}  // namespace brevik::platform
