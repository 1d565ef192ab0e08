// Listings of folders.

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <memory>
#include <mutex>
#include <string_view>
#include <utility>

#include "platform/files.h"
#include "platform/posix/base/handle.h"
#include "platform/posix/base/last_error.h"
#include "platform/posix/base/scoped_descriptor.h"
#include "platform/posix/paths/paths.h"
#include "platform/posix/text/unicode.h"

namespace brevik::platform {
namespace {

// A path without the literal prefix loses dots and blanks at its end, so it would name another
// file: the one without them or, for a name of dots alone, the folder itself.
bool EndsUnspellably(std::string_view name) {
    return name.ends_with('.') || name.ends_with(' ');
}

// The name in UTF-16 with its NUL. False for one that no path can hold or that has no room.
bool ConvertName(std::string_view name, WCHAR (&target)[MAX_PATH]) {
    UnitWriter<WCHAR> writer(target, MAX_PATH - 1);
    while (!name.empty()) {
        const DecodedCharacter character = DecodeCharacter(name);
        std::array<WCHAR, 4> units;
        if (!character.wellFormed || IsForbidden(character.value) ||
            !writer.Append(units.data(), EncodeCharacter(character.value, units))) {
            return false;
        }
        name.remove_prefix(character.length);
    }
    target[writer.Count()] = u'\0';
    return true;
}

// The entries of a folder, in the order in which the host lists them. A root has no "." and "..".
class Listing : public HandleObject {
  public:
    Listing(ScopedFolder folder, bool isRoot)
        : folder_(std::move(folder)), dotsGiven_(isRoot ? 2 : 0) {}

    // NO_ERROR, ERROR_NO_MORE_FILES at the end, or another error.
    DWORD Next(WIN32_FIND_DATAW* data) {
        const std::lock_guard lock(mutex_);
        *data = {};
        if (dotsGiven_ < 2) {
            ++dotsGiven_;
            data->dwFileAttributes = FILE_ATTRIBUTE_DIRECTORY;
            ConvertName(std::string_view("..").substr(2 - dotsGiven_), data->cFileName);
            return NO_ERROR;
        }
        for (;;) {
            errno = 0;
            const dirent* entry = readdir(folder_.get());
            if (entry == nullptr) {
                return errno == 0 ? ERROR_NO_MORE_FILES : ErrorFromHost(errno);
            }
            if (!EndsUnspellably(entry->d_name) && ConvertName(entry->d_name, data->cFileName) &&
                ReadAttributes(*entry, &data->dwFileAttributes)) {
                return NO_ERROR;
            }
        }
    }

  private:
    // False for a name that is gone by now.
    bool ReadAttributes(const dirent& entry, DWORD* attributes) const {
        if (entry.d_type != DT_LNK && entry.d_type != DT_UNKNOWN) {
            *attributes = entry.d_type == DT_DIR ? FILE_ATTRIBUTE_DIRECTORY : 0;
            return true;
        }
        const int folder = dirfd(folder_.get());
        struct stat status;
        if (fstatat(folder, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) != 0) {
            return false;
        }
        const bool isLink = S_ISLNK(status.st_mode);
        const bool leadsOn = !isLink || fstatat(folder, entry.d_name, &status, 0) == 0;
        const bool isFolder = leadsOn && S_ISDIR(status.st_mode);
        *attributes = (isFolder ? FILE_ATTRIBUTE_DIRECTORY : 0) |
                      (isLink && (isFolder || !leadsOn) ? FILE_ATTRIBUTE_REPARSE_POINT : 0);
        return true;
    }

    std::mutex mutex_;
    ScopedFolder folder_;
    unsigned dotsGiven_;  // how many of "." and ".." have been given
};

// The listing, or null with an error number.
std::shared_ptr<Listing> OpenListing(std::u16string_view pattern, DWORD* error) {
    pattern.remove_suffix(std::u16string_view(u"*.*").size());
    HostPlace place = PlaceOf(pattern);
    place.trailingSeparator = false;  // a file has an error of its own here
    const HostFile folder = FindFile(place);
    *error = folder.error == ERROR_FILE_NOT_FOUND ? ERROR_PATH_NOT_FOUND : folder.error;
    if (*error != NO_ERROR) {
        return nullptr;
    }
    ScopedFolder opened(opendir(folder.path.c_str()));
    if (!opened) {
        *error = errno == ENOENT    ? ERROR_PATH_NOT_FOUND
                 : errno == ENOTDIR ? ERROR_DIRECTORY
                                    : ErrorFromHost(errno);
        return nullptr;
    }
    return std::make_shared<Listing>(std::move(opened), place.IsRoot());
}

}  // namespace

HANDLE FindFirstFileW(const WCHAR* pattern, WIN32_FIND_DATAW* data) {
    DWORD error = NO_ERROR;
    std::shared_ptr<Listing> listing = OpenListing(pattern, &error);
    if (listing) {
        error = listing->Next(data);
        error = error == ERROR_NO_MORE_FILES ? ERROR_FILE_NOT_FOUND : error;
    }
    return error == NO_ERROR ? OpenHandle(std::move(listing)) : Fail(error, INVALID_HANDLE_VALUE);
}

BOOL FindNextFileW(HANDLE listing, WIN32_FIND_DATAW* data) {
    const std::shared_ptr<Listing> found = FindHandle<Listing>(listing);
    return Answer(found ? found->Next(data) : ERROR_INVALID_HANDLE);
}

BOOL FindClose(HANDLE listing) {
    return CloseHandle(listing);
}

}  // namespace brevik::platform
