// Listings of folders.

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

#include "platform/files.h"
#include "platform/posix/handle.h"
#include "platform/posix/host_errors.h"
#include "platform/posix/name_pattern.h"
#include "platform/posix/paths.h"
#include "platform/posix/unicode.h"

namespace brevik::platform {
namespace {

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};
using ScopedFolder = std::unique_ptr<DIR, CloseFolder>;

// ASCII that no name of a path may hold.
constexpr auto kForbidden = [] {
    std::array<bool, 128> table = {};
    for (unsigned unit = 0; unit < 0x20; ++unit) {
        table[unit] = true;
    }
    for (const char unit : std::string_view("\"*<>?|:/\\")) {
        table[static_cast<unsigned char>(unit)] = true;
    }
    return table;
}();

// A path without the prefix \\?\ loses dots and blanks at its end, so it would name another file:
// the one without them or, for a name of dots alone, the folder itself.
bool EndsUnspellably(std::string_view name) {
    return name.ends_with('.') || name.ends_with(' ');
}

// The name in UTF-16 with its NUL. False for one that no path can hold or that has no room.
bool ConvertName(std::string_view name, WCHAR (&target)[MAX_PATH]) {
    UnitWriter<WCHAR> writer(target, MAX_PATH - 1);
    while (!name.empty()) {
        const auto byte = static_cast<unsigned char>(name.front());
        DecodedCharacter character = {byte, 1, true};
        if (byte >= 0x80) {
            character = DecodeCharacter(name);
        }
        std::array<WCHAR, 4> units;
        if (!character.wellFormed || (byte < 0x80 && kForbidden[byte]) ||
            !writer.Append(units.data(), EncodeCharacter(character.value, units))) {
            return false;
        }
        name.remove_prefix(character.length);
    }
    target[writer.Count()] = u'\0';
    return true;
}

// The entries of a folder, one after the other as the host gives them.
class Listing : public HandleObject {
  public:
    Listing(ScopedFolder folder, std::u16string_view pattern, bool isRoot)
        : folder_(std::move(folder)), pattern_(pattern) {
        dots_ = isRoot || !pattern_.MatchesFolderItself() ? 2 : 0;
    }

    // 0, or an error number, which is 18 at the end.
    DWORD Next(WIN32_FIND_DATAW* data) {
        const std::lock_guard lock(mutex_);
        data->ftCreationTime = data->ftLastAccessTime = data->ftLastWriteTime = {};
        data->nFileSizeHigh = data->nFileSizeLow = 0;
        data->dwReserved0 = data->dwReserved1 = 0;
        data->cAlternateFileName[0] = u'\0';
        if (dots_ < 2) {
            ++dots_;
            data->dwFileAttributes = FILE_ATTRIBUTE_DIRECTORY;
            ConvertName(std::string_view("..").substr(2 - dots_), data->cFileName);
            return NO_ERROR;
        }
        for (;;) {
            errno = 0;
            const dirent* entry = readdir(folder_.get());
            if (entry == nullptr) {
                return errno == 0 ? ERROR_NO_MORE_FILES : ErrorFromHost(errno);
            }
            if (Take(*entry, data)) {
                return NO_ERROR;
            }
        }
    }

  private:
    bool Take(const dirent& entry, WIN32_FIND_DATAW* data) const {
        const std::string_view name = entry.d_name;
        if (EndsUnspellably(name) || !ConvertName(name, data->cFileName) ||
            !pattern_.Matches(data->cFileName)) {
            return false;
        }
        if (entry.d_type != DT_LNK && entry.d_type != DT_UNKNOWN) {
            data->dwFileAttributes = entry.d_type == DT_DIR ? FILE_ATTRIBUTE_DIRECTORY : 0;
            return true;
        }
        return LookAt(entry.d_name, &data->dwFileAttributes);
    }

    // False for a name that has gone since.
    bool LookAt(const char* name, DWORD* attributes) const {
        const int folder = dirfd(folder_.get());
        struct stat status;
        if (fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) != 0) {
            return false;
        }
        *attributes = S_ISDIR(status.st_mode) ? FILE_ATTRIBUTE_DIRECTORY : 0;
        if (S_ISLNK(status.st_mode)) {
            const bool leadsOn = fstatat(folder, name, &status, 0) == 0;
            if (!leadsOn) {
                *attributes = FILE_ATTRIBUTE_REPARSE_POINT;
            } else if (S_ISDIR(status.st_mode)) {
                *attributes = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;
            }
        }
        return true;
    }

    std::mutex mutex_;
    ScopedFolder folder_;
    NamePattern pattern_;
    unsigned dots_;  // how many of "." and ".." are done with
};

// A folder and the pattern of names in it.
struct Search {
    std::u16string folder;
    std::u16string pattern;
};

bool IsLiteral(std::u16string_view text) {
    return text.starts_with(u"\\\\?\\");
}

Search Split(std::u16string_view text) {
    const std::size_t end = text.find_last_of(IsLiteral(text) ? u"\\" : u"\\/:") + 1;
    Search search = {std::u16string(text.substr(0, end)), std::u16string(text.substr(end))};
    if (end == 0 || search.folder.back() == u':') {
        search.folder += u'.';
    }
    return search;
}

// Takes apart what FindFirstFileW is given.
Search ParseSearch(std::u16string_view text) {
    Search search = Split(text);
    if (IsLiteral(text)) {
        return search;
    }
    std::u16string& pattern = search.pattern;
    if (pattern.find_first_of(u"*?") == pattern.npos && !pattern.empty()) {
        // One name, or what leads to it.
        search = Split(FullPath(text));
    }
    const bool starAndDot = pattern.ends_with(u"*.");
    pattern.resize(pattern.find_last_not_of(u" .") + 1);
    pattern += starAndDot ? u"." : u"";
    return search;
}

// The listing, or null with an error number.
std::shared_ptr<Listing> OpenListing(const Search& search, DWORD* error) {
    const HostPlace place = PlaceOf(search.folder);
    const HostFile folder = FindFile(place);
    *error = folder.error == ERROR_FILE_NOT_FOUND ? ERROR_PATH_NOT_FOUND : folder.error;
    if (*error != NO_ERROR) {
        return nullptr;
    }
    if (!S_ISDIR(folder.status.st_mode)) {
        *error = ERROR_DIRECTORY;
    } else if (!NamePattern::IsValid(search.pattern)) {
        *error = ERROR_INVALID_NAME;
    } else if (search.pattern.empty()) {
        *error = ERROR_FILE_NOT_FOUND;
    }
    if (*error != NO_ERROR) {
        return nullptr;
    }
    ScopedFolder opened(opendir(folder.path.c_str()));
    if (!opened) {
        *error = errno == ENOENT ? ERROR_PATH_NOT_FOUND : ErrorFromHost(errno);
        return nullptr;
    }
    return std::make_shared<Listing>(std::move(opened), search.pattern, place.IsRoot());
}

}  // namespace

HANDLE FindFirstFileW(const WCHAR* pattern, WIN32_FIND_DATAW* data) {
    DWORD error = ERROR_PATH_NOT_FOUND;
    std::shared_ptr<Listing> listing;
    if (pattern != nullptr && *pattern != u'\0') {
        listing = OpenListing(ParseSearch(pattern), &error);
    }
    if (listing) {
        error = listing->Next(data);
        error = error == ERROR_NO_MORE_FILES ? ERROR_FILE_NOT_FOUND : error;
    }
    HANDLE handle = error == NO_ERROR ? OpenHandle(std::move(listing)) : nullptr;
    if (handle == nullptr) {
        SetLastError(error == NO_ERROR ? ERROR_TOO_MANY_OPEN_FILES : error);
        return INVALID_HANDLE_VALUE;
    }
    return handle;
}

BOOL FindNextFileW(HANDLE listing, WIN32_FIND_DATAW* data) {
    const std::shared_ptr<Listing> found = FindHandle<Listing>(listing);
    const DWORD error = found ? found->Next(data) : ERROR_INVALID_HANDLE;
    if (error != NO_ERROR) {
        SetLastError(error);
    }
    return error == NO_ERROR;
}

BOOL FindClose(HANDLE listing) {
    if (!FindHandle<Listing>(listing)) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    return CloseHandle(listing);
}

}  // namespace brevik::platform
