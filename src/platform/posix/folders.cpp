#include "platform/folders.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

#include "platform/posix/current_folder.h"
#include "platform/posix/file_search.h"
#include "platform/posix/paths.h"
#include "platform/posix/scoped_descriptor.h"
#include "platform/posix/system_modules.h"
#include "platform/posix/text_buffer.h"

namespace brevik::platform {

// The form in which a place of the system's folders passes: a list of one item, which holds the
// folder's number, and the end of the list.
struct ITEMIDLIST {
    WORD itemSize;
    WORD folder;
    WORD end;
};

namespace {

struct SpecialFolder {
    int number;
    std::u16string_view path;
};

constexpr SpecialFolder kSpecialFolders[] = {
    {CSIDL_COMMON_APPDATA, u"C:\\ProgramData"},
    {CSIDL_PROGRAM_FILES_COMMON, u"C:\\Program Files\\Common Files"},
};

const SpecialFolder* FindSpecialFolder(int number) {
    const auto found =
        std::find_if(std::begin(kSpecialFolders), std::end(kSpecialFolders),
                     [=](const SpecialFolder& folder) { return folder.number == number; });
    return found == std::end(kSpecialFolders) ? nullptr : found;
}

// REQUIRES: `path` has room for MAX_PATH units, and the folder's path for its NUL.
BOOL CopyPath(std::u16string_view text, WCHAR* path) {
    *std::copy(text.begin(), text.end(), path) = u'\0';
    return TRUE;
}

BOOL Fail(DWORD error) {
    SetLastError(error);
    return FALSE;
}

// Empty when the host has no current folder any more.
std::string HostCurrentFolder() {
    const std::unique_ptr<char, decltype(&free)> path(getcwd(nullptr, 0), &free);
    return path && *path == '/' ? path.get() : std::string();
}

bool IsCurrent(const HostFile& folder) {
    struct stat current;
    return folder.error == 0 && stat(".", &current) == 0 &&
           folder.status.st_dev == current.st_dev && folder.status.st_ino == current.st_ino;
}

// Where a path ends in a separator that only the root of a drive keeps, it is taken off.
std::u16string WithoutTrailingSeparator(std::u16string path) {
    const bool driveRoot = path.size() == 3 && path[1] == u':';
    if (!driveRoot && path.ends_with(u'\\')) {
        path.pop_back();
    }
    return path;
}

// The full path as it is opened: without the prefix that asks for a path to be taken literally, or
// else without the blanks that fall off.
std::u16string PlainPath(std::u16string_view path) {
    std::u16string full = FullPath(path);
    if (full.starts_with(u"\\\\?\\UNC\\")) {
        full.erase(2, 6);
    } else if (full.starts_with(u"\\\\?\\")) {
        full.erase(0, 4);
    } else {
        full.resize(full.find_last_not_of(u" .") + 1);
    }
    return full;
}

// The folder last made current, as it was spelled.
class SpelledFolder {
  public:
    static SpelledFolder& Current() {
        static SpelledFolder& folder = *new SpelledFolder;
        return folder;
    }

    void Set(std::string hostPath, std::u16string spelling) {
        const std::lock_guard lock(mutex_);
        hostPath_ = std::move(hostPath);
        spelling_ = std::move(spelling);
    }

    // Empty when that folder is another one.
    std::u16string Of(const std::string& hostPath) {
        const std::lock_guard lock(mutex_);
        return hostPath == hostPath_ ? spelling_ : std::u16string();
    }

  private:
    std::mutex mutex_;
    std::string hostPath_;
    std::u16string spelling_;
};

std::u16string SearchSystem(std::u16string_view name) {
    const std::string found = FindInSystemOrder(name);
    if (!found.empty()) {
        return PathLeadingTo(found);
    }
    const SystemModule* system = FindSystemModule(name);
    return system != nullptr ? std::u16string(system->path) : std::u16string();
}

// How a stream is opened: the host's flags, and the mode for its own open call.
struct StreamMode {
    int flags = 0;
    std::string text;
};

// False for a mode that is none.
bool ParseMode(std::u16string_view mode, StreamMode& result) {
    constexpr std::pair<char16_t, int> kKinds[] = {
        {u'r', 0}, {u'w', O_CREAT | O_TRUNC}, {u'a', O_CREAT | O_APPEND}};
    const auto kind = std::find_if(
        std::begin(kKinds), std::end(kKinds),
        [=](const auto& candidate) { return !mode.empty() && candidate.first == mode.front(); });
    // What stands behind the kind in any order: text or binary, which are one here, both ways, and
    // whether the file must be new.
    if (kind == std::end(kKinds) || mode.find_first_not_of(u"bt+x", 1) != mode.npos) {
        return false;
    }
    const bool both = mode.find(u'+') != mode.npos;
    const int access = both ? O_RDWR : kind->first == u'r' ? O_RDONLY : O_WRONLY;
    result.flags = access | kind->second | (mode.find(u'x') != mode.npos ? O_EXCL : 0);
    result.text = static_cast<char>(kind->first);
    result.text += both ? "+" : "";
    return true;
}

// The run-time library's number for an error of a lookup.
int RunTimeError(DWORD error) {
    switch (error) {
        case ERROR_ACCESS_DENIED:
            return EACCES;
        case ERROR_INVALID_NAME:
            return EINVAL;
        default:
            return ENOENT;
    }
}

}  // namespace

std::u16string CurrentFolder() {
    const std::string host = HostCurrentFolder();
    if (host.empty()) {
        return {};
    }
    std::u16string folder = SpelledFolder::Current().Of(host);
    if (folder.empty()) {
        folder = WithoutTrailingSeparator(WindowsPath(host));
    }
    return IsCurrent(FindFile(folder)) ? folder : std::u16string();
}

DWORD GetCurrentDirectoryW(DWORD size, WCHAR* path) {
    const std::u16string folder = CurrentFolder();
    if (folder.empty()) {
        SetLastError(ERROR_PATH_NOT_FOUND);
        return 0;
    }
    return CopyOrAskForRoom(folder, path, size);
}

BOOL SetCurrentDirectoryW(const WCHAR* path) {
    if (path == nullptr || *path == u'\0') {
        return Fail(ERROR_INVALID_NAME);
    }
    // Completed ahead of the change, since a relative path means the folder that is current now.
    std::u16string spelling = WithoutTrailingSeparator(PlainPath(path));
    const HostFile folder = FindFile(path);
    if (folder.error != 0) {
        return FALSE;
    }
    if (!S_ISDIR(folder.status.st_mode)) {
        return Fail(ERROR_DIRECTORY);
    }
    // Nothing is to need memory after the change.
    const std::unique_ptr<char, decltype(&free)> real(realpath(folder.path.c_str(), nullptr),
                                                      &free);
    std::string hostPath = real ? real.get() : "";
    SpelledFolder& kept = SpelledFolder::Current();
    if (chdir(folder.path.c_str()) != 0) {
        return Fail(ErrorFromHost(errno));
    }
    kept.Set(std::move(hostPath), std::move(spelling));
    return TRUE;
}

DWORD SearchPathW(const WCHAR*, const WCHAR* fileName, const WCHAR*, DWORD size, WCHAR* buffer,
                  WCHAR** filePart) {
    const std::u16string found = SearchSystem(fileName);
    if (found.empty()) {
        SetLastError(ERROR_FILE_NOT_FOUND);
        return 0;
    }
    const DWORD length = CopyOrAskForRoom(found, buffer, size);
    if (filePart != nullptr) {
        *filePart =
            length < size && buffer != nullptr ? buffer + found.find_last_of(u'\\') + 1 : nullptr;
    }
    return length;
}

HRESULT SHGetSpecialFolderLocation(HWND, int folder, ITEMIDLIST** list) {
    if (list == nullptr || FindSpecialFolder(folder) == nullptr) {
        return E_INVALIDARG;
    }
    void* block = CoTaskMemAlloc(sizeof(ITEMIDLIST));
    if (block == nullptr) {
        return E_OUTOFMEMORY;
    }
    *list = new (block) ITEMIDLIST{2 * sizeof(WORD), static_cast<WORD>(folder), 0};
    return S_OK;
}

BOOL SHGetPathFromIDListW(const ITEMIDLIST* list, WCHAR* path) {
    const SpecialFolder* folder = list != nullptr ? FindSpecialFolder(list->folder) : nullptr;
    if (folder == nullptr || path == nullptr) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    return CopyPath(folder->path, path);
}

BOOL SHGetSpecialFolderPathW(HWND, WCHAR* path, int number, BOOL create) {
    const SpecialFolder* folder = FindSpecialFolder(number);
    if (folder == nullptr || path == nullptr) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    const HostFile found = FindFile(folder->path);
    if (found.error == ERROR_FILE_NOT_FOUND && create != FALSE) {
        if (mkdir(found.path.c_str(), 0777) != 0 && errno != EEXIST) {
            return Fail(ErrorFromHost(errno));
        }
    } else if (found.error != 0) {
        return FALSE;
    }
    return CopyPath(folder->path, path);
}

UINT GetWindowsDirectoryW(WCHAR* path, UINT size) {
    return CopyOrAskForRoom(u"C:\\Windows", path, size);
}

std::FILE* _wfopen(const WCHAR* path, const WCHAR* mode) {
    StreamMode stream;
    if (path == nullptr || mode == nullptr || !ParseMode(mode, stream)) {
        errno = EINVAL;
        return nullptr;
    }
    const HostPlace place = PlaceOf(path);
    const HostFile file = FindFile(place);
    const bool toBeMade = file.error == ERROR_FILE_NOT_FOUND && (stream.flags & O_CREAT) != 0;
    if (file.error != 0 && !toBeMade) {
        errno = RunTimeError(file.error);
        return nullptr;
    }
    if (file.error == 0 && S_ISDIR(file.status.st_mode)) {
        errno = EACCES;
        return nullptr;
    }
    if (place.trailingSeparator) {
        errno = EINVAL;
        return nullptr;
    }
    // A pipe without a partner is opened at once, or not at all, but never waited for.
    constexpr int kAlways = O_NONBLOCK | O_NOCTTY;
    ScopedDescriptor descriptor = OpenDescriptor(file.path, stream.flags | kAlways, 0666);
    if (!descriptor) {
        return nullptr;
    }
    std::FILE* result = fdopen(descriptor.Get(), stream.text.c_str());
    if (result != nullptr) {
        descriptor.Release();
    }
    return result;
}

}  // namespace brevik::platform
