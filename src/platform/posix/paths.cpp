#include "platform/posix/paths.h"

#include <dirent.h>
#include <limits.h>
#include <stdlib.h>
#include <time.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/folders.h"
#include "platform/posix/current_folder.h"
#include "platform/posix/folder_index.h"
#include "platform/posix/host_text.h"
#include "platform/posix/machine.h"
#include "platform/posix/unicode.h"

namespace brevik::platform {
namespace {

constexpr std::u16string_view kLiteralPrefix = u"\\\\?\\";
constexpr std::u16string_view kDevicePrefix = u"\\\\.\\";
constexpr std::u16string_view kSharePrefix = u"UNC\\";

// Where no machine could be made, drive Z: is the host all the same, so that the host's own
// programs have paths.
constexpr char kHostRoot[] = "/.";

bool IsLetter(char16_t unit) {
    return (unit >= u'A' && unit <= u'Z') || (unit >= u'a' && unit <= u'z');
}

char16_t UpperLetter(char16_t unit) {
    return unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - 0x20) : unit;
}

bool BeginsWithShareWord(std::u16string_view text) {
    return text.size() >= kSharePrefix.size() &&
           std::equal(kSharePrefix.begin(), kSharePrefix.end(), text.begin(),
                      [](char16_t left, char16_t right) { return left == UpperLetter(right); });
}

bool BeginsWithDevicePrefix(std::u16string_view text) {
    return text.starts_with(kLiteralPrefix) || text.starts_with(kDevicePrefix);
}

// Length of SERVER\SHARE\ at `from`, with the last separator where there is one.
std::size_t SkipServerAndShare(std::u16string_view text, std::size_t from) {
    for (int part = 0; part < 2; ++part) {
        const std::size_t separator = text.find(u'\\', from);
        if (separator == std::u16string_view::npos) {
            return text.size();
        }
        from = separator + 1;
    }
    return from;
}

// Length of the root of a path that is not relative: what ".." does not go beyond.
std::size_t RootLength(std::u16string_view text) {
    if (BeginsWithDevicePrefix(text)) {
        const std::size_t prefix = kDevicePrefix.size();
        const std::u16string_view rest = text.substr(prefix);
        if (BeginsWithShareWord(rest)) {
            return SkipServerAndShare(text, prefix + kSharePrefix.size());
        }
        const bool drive = rest.size() > 2 && rest[1] == u':' && rest[2] == u'\\';
        return prefix + (drive ? 3 : 0);
    }
    if (text.starts_with(u"\\\\")) {
        return SkipServerAndShare(text, 2);
    }
    return 3;
}

// Completes a relative path with the current folder, or with the part of it that the path leaves
// out. Empty when that cannot be had.
std::u16string Complete(std::u16string text) {
    if (text.starts_with(u"\\\\")) {
        return text;
    }
    const bool hasDrive = text.size() > 1 && text[1] == u':';
    if (hasDrive && text.size() > 2 && text[2] == u'\\') {
        return text;
    }
    std::u16string base = CurrentFolder();
    if (hasDrive) {
        // Drives other than the current one are at their root.
        if (base.size() < 2 || base[1] != u':' || UpperLetter(base[0]) != UpperLetter(text[0])) {
            base = text.substr(0, 2);
        }
        text.erase(0, 2);
    }
    if (base.empty()) {
        return {};
    }
    if (text.starts_with(u'\\')) {
        base.resize(std::min(base.size(), RootLength(base)));
    }
    if (!base.ends_with(u'\\') && !text.starts_with(u'\\')) {
        base += u'\\';
    }
    return base + text;
}

void RemoveLastName(std::u16string& path, std::size_t root) {
    while (path.size() > root && path.back() != u'\\') {
        path.pop_back();
    }
    if (path.size() > root) {
        path.pop_back();
    }
}

// Calls `use` with each part between separators and whether it is the last.
template <typename Use>
void ForEachPart(std::u16string_view text, Use use) {
    for (;;) {
        const std::size_t separator = text.find(u'\\');
        use(text.substr(0, separator), separator == std::u16string_view::npos);
        if (separator == std::u16string_view::npos) {
            return;
        }
        text.remove_prefix(separator + 1);
    }
}

// The name as it enters a full path: dots at the end of the last name fall off, and so does a
// single dot behind any other.
std::u16string_view WithoutDots(std::u16string_view name, bool last) {
    if (last) {
        return name.substr(0, name.find_last_not_of(u'.') + 1);
    }
    if (name.size() > 1 && name.back() == u'.' && name[name.size() - 2] != u'.') {
        name.remove_suffix(1);
    }
    return name;
}

// Which characters no name may hold, the separator left out.
bool IsForbidden(char16_t unit) {
    return unit < 0x20 || std::u16string_view(u"\"*<>?|:/").find(unit) != std::u16string_view::npos;
}

void AppendName(HostPlace& place, std::u16string_view name) {
    if (!IsValidName(name)) {
        place.error = place.error != 0 ? place.error : ERROR_INVALID_NAME;
        return;
    }
    place.path += '/';
    place.path += Utf8FromWide(name);
}

// Takes the root off the front of a full path and begins the place with it.
HostPlace BeginPlace(std::u16string_view& text) {
    HostPlace place;
    bool share = false;
    const bool device = BeginsWithDevicePrefix(text);
    if (device) {
        text.remove_prefix(kDevicePrefix.size());
        share = BeginsWithShareWord(text);
        text.remove_prefix(share ? kSharePrefix.size() : 0);
    } else if (text.starts_with(u"\\\\")) {
        share = true;
        text.remove_prefix(2);
    }
    const Machine& machine = Machine::Current();
    if (share) {
        const std::size_t server = text.find(u'\\');
        const std::size_t end = std::min(text.find(u'\\', server + 1), text.size());
        if (server == std::u16string_view::npos || server == 0 || end == server + 1) {
            place.error = ERROR_BAD_NETPATH;
            return place;
        }
        place.isShare = true;
        place.path = machine.Folder() + "/shares";
        place.top = place.path.size();
        AppendName(place, text.substr(0, server));
        AppendName(place, text.substr(server + 1, end - server - 1));
        text.remove_prefix(std::min(end + 1, text.size()));
    } else if (text.size() > 2 && text[1] == u':' && text[2] == u'\\') {
        const char16_t letter = UpperLetter(text[0]);
        if (!IsLetter(letter)) {
            place.error = ERROR_PATH_NOT_FOUND;
        } else if (letter == u'Z' && !machine.Exists()) {
            place.path = kHostRoot;
            place.top = place.path.size();
        } else {
            place.path = machine.Folder() + "/drives";
            place.top = place.path.size();
            place.path += {'/', static_cast<char>(letter - u'A' + 'a')};
        }
        text.remove_prefix(3);
    } else {
        place.error = device ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND;
    }
    place.root = place.path.size();
    return place;
}

// The error of a lookup that found no entry for the name which ends at `end` of the place's path.
DWORD MissingError(const HostPlace& place, std::size_t end) {
    if (end <= place.root) {
        return place.isShare ? ERROR_BAD_NETPATH : ERROR_PATH_NOT_FOUND;
    }
    return end == place.path.size() ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND;
}

bool IsMissing(int hostError) {
    return hostError == ENOENT || hostError == ENOTDIR;
}

// Looks whether a name that cannot be looked through is a link that is there itself.
void NoteBrokenLink(const HostPlace& place, const std::string& path, HostFile& file) {
    struct stat status;
    if (!place.IsRoot() && lstat(path.c_str(), &status) == 0 && S_ISLNK(status.st_mode)) {
        file.path = path;
        file.status = status;
        file.isBrokenLink = true;
    }
}

// A folder in the state in which it was looked into.
struct SeenFolder {
    std::string path;
    FolderStamp stamp;

    bool IsUnchanged() const {
        struct stat status;
        return stat(path.c_str(), &status) == 0 && FolderStamp(status) == stamp;
    }
};

bool AreUnchanged(const std::vector<SeenFolder>& folders) {
    return std::all_of(folders.begin(), folders.end(),
                       [](const SeenFolder& folder) { return folder.IsUnchanged(); });
}

// A lookup that found nothing, and the folders on whose state that rests.
struct Miss {
    HostFile file;
    std::vector<SeenFolder> folders;
};

// Paths that are looked for again and again while they are missing.
class MissCache {
  public:
    static MissCache& Current() {
        static MissCache& cache = *new MissCache;
        return cache;
    }

    // Null where the path may be there by now.
    std::shared_ptr<const Miss> Find(const std::string& path) {
        std::shared_ptr<const Miss> miss;
        {
            const std::lock_guard lock(mutex_);
            const auto found = misses_.find(path);
            if (found != misses_.end()) {
                miss = found->second;
            }
        }
        return miss && AreUnchanged(miss->folders) ? miss : nullptr;
    }

    void Keep(const std::string& path, Miss miss) {
        constexpr std::size_t kMostMisses = 256;
        auto kept = std::make_shared<const Miss>(std::move(miss));
        const std::lock_guard lock(mutex_);
        if (misses_.size() >= kMostMisses) {
            misses_.clear();
        }
        misses_[path] = std::move(kept);
    }

  private:
    std::mutex mutex_;
    std::unordered_map<std::string, std::shared_ptr<const Miss>> misses_;
};

// Finds the longest part of the place that is there as spelled. Result: its length, or 0 with the
// error in `file`.
std::size_t FindSpelledPart(const HostPlace& place, HostFile& file) {
    std::size_t end = place.path.rfind('/');
    for (;; end = place.path.rfind('/', end - 1)) {
        file.path = place.path.substr(0, end);
        if (stat(file.path.c_str(), &file.status) == 0) {
            return end;
        }
        if (!IsMissing(errno) || end <= place.top) {
            file.error = IsMissing(errno) ? MissingError(place, place.root) : ErrorFromHost(errno);
            file.path.clear();
            return 0;
        }
    }
}

// Looks up a place that is not there as it is spelled.
HostFile FindWithoutCase(const HostPlace& place) {
    Miss miss;
    HostFile& file = miss.file;
    std::size_t end = FindSpelledPart(place, file);
    bool lasting = true;
    while (end != 0 && end < place.path.size()) {
        const std::size_t start = end + 1;
        end = std::min(place.path.find('/', start), place.path.size());
        const FoldedName name(std::string_view(place.path).substr(start, end - start));
        const bool inFolder = S_ISDIR(file.status.st_mode);
        const NameInFolder found = FindName(file.path, file.status, name);
        lasting = lasting && found.lasting;
        miss.folders.push_back({file.path, FolderStamp(file.status)});
        file.path += '/';
        file.path += found.name ? *found.name : name.Name();
        if (found.name && stat(file.path.c_str(), &file.status) == 0) {
            continue;
        }
        const int failure = found.name ? errno : found.error;
        const bool missing = failure == 0 || IsMissing(failure);
        file.error = missing ? MissingError(place, end) : ErrorFromHost(failure);
        if (!inFolder && file.error == ERROR_FILE_NOT_FOUND) {
            file.error = ERROR_PATH_NOT_FOUND;
        }
        if (found.name && end == place.path.size()) {
            NoteBrokenLink(place, std::string(file.path), file);
        }
        if (file.error != ERROR_FILE_NOT_FOUND && !file.isBrokenLink) {
            file.path.clear();
        }
        HostFile result = file;
        if (lasting && !found.name) {
            MissCache::Current().Keep(place.path, std::move(miss));
        }
        return result;
    }
    return file;
}

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};

// The drives and shares of the machine with the host folders that they lead to.
class Roots {
  public:
    static std::shared_ptr<const Roots> Current() {
        static std::mutex& mutex = *new std::mutex;
        static std::shared_ptr<const Roots>& kept = *new std::shared_ptr<const Roots>;
        std::unique_lock lock(mutex);
        std::shared_ptr<const Roots> roots = kept;
        lock.unlock();
        if (!roots || !AreUnchanged(roots->folders_)) {
            roots = std::make_shared<const Roots>();
            lock.lock();
            kept = roots->lasting_ ? roots : nullptr;
        }
        return roots;
    }

    Roots() {
        clock_gettime(CLOCK_REALTIME, &start_);
        const Machine& machine = Machine::Current();
        if (!machine.Exists()) {
            roots_.push_back({"", u"Z:"});
            lasting_ = certain_ = machine.IsKnown();
            return;
        }
        ReadDrives(machine.Folder() + "/drives");
        ReadShares(machine.Folder() + "/shares");
        std::stable_sort(roots_.begin(), roots_.end(), [](const Root& left, const Root& right) {
            return left.hostFolder.size() > right.hostFolder.size();
        });
    }

    // Whether all of them could be looked at.
    bool AreCertain() const { return certain_; }

    std::u16string WindowsPath(std::string_view hostPath) const {
        for (const Root& root : roots_) {
            if (!hostPath.starts_with(root.hostFolder)) {
                continue;
            }
            std::string_view rest = hostPath.substr(root.hostFolder.size());
            if (!rest.empty() && rest.front() != '/') {
                continue;
            }
            std::u16string path = WideFromUtf8(rest.empty() ? "/" : rest);
            std::replace(path.begin(), path.end(), u'\\',
                         static_cast<char16_t>(kReplacementCharacter));
            std::replace(path.begin(), path.end(), u'/', u'\\');
            return root.windowsPath + path;
        }
        return {};
    }

  private:
    struct Root {
        std::string hostFolder;  // without a trailing slash, also for the host's root
        std::u16string windowsPath;
    };

    // The names in a folder that make part of a path, in byte order; remembers its state.
    std::vector<std::string> NamesIn(const std::string& path) {
        const std::unique_ptr<DIR, CloseFolder> folder(opendir(path.c_str()));
        struct stat status;
        std::vector<std::string> names;
        if (!folder || fstat(dirfd(folder.get()), &status) != 0) {
            NoteFailure();
            return names;
        }
        folders_.push_back({path, FolderStamp(status)});
        lasting_ = lasting_ && folders_.back().stamp.IsSettledAt(start_);
        errno = 0;
        while (const dirent* entry = readdir(folder.get())) {
            if (IsValidName(WideFromUtf8(entry->d_name))) {
                names.push_back(entry->d_name);
            }
            errno = 0;
        }
        if (errno != 0) {
            NoteFailure();
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    // What is missing may come at any time: removable media do. What could not be looked at may
    // have been there all along.
    void NoteFailure() {
        lasting_ = false;
        certain_ = certain_ && (IsMissing(errno) || errno == ELOOP);
    }

    void Add(const std::string& hostPath, std::u16string windowsPath) {
        const std::unique_ptr<char, decltype(&free)> real(realpath(hostPath.c_str(), nullptr),
                                                          &free);
        if (!real) {
            NoteFailure();
            return;
        }
        std::string folder = real.get();
        if (folder == "/") {
            folder.clear();
        }
        roots_.push_back({std::move(folder), std::move(windowsPath)});
    }

    void ReadDrives(const std::string& folder) {
        for (const std::string& name : NamesIn(folder)) {
            const char16_t letter = UpperLetter(static_cast<char16_t>(name[0]));
            if (name.size() == 1 && IsLetter(letter)) {
                Add(folder + '/' + name, {letter, u':'});
            }
        }
    }

    void ReadShares(const std::string& folder) {
        for (const std::string& server : NamesIn(folder)) {
            for (const std::string& share : NamesIn(folder + '/' + server)) {
                Add(folder + '/' + server + '/' + share,
                    u"\\\\" + WideFromUtf8(server) + u'\\' + WideFromUtf8(share));
            }
        }
    }

    timespec start_;
    std::vector<Root> roots_;
    std::vector<SeenFolder> folders_;
    bool lasting_ = true;
    bool certain_ = true;
};

}  // namespace

std::u16string FullPath(std::u16string_view path) {
    if (path.empty()) {
        return {};
    }
    std::u16string text(path);
    std::replace(text.begin(), text.end(), u'/', u'\\');
    text = Complete(std::move(text));
    const std::size_t root = std::min(RootLength(text), text.size());
    std::u16string full = text.substr(0, root);
    if (root == text.size()) {
        return full;
    }
    const bool literal = text.starts_with(kLiteralPrefix);
    const auto append = [&](std::u16string_view name) {
        if (full.size() > root) {
            full += u'\\';
        }
        full += name;
    };
    ForEachPart(std::u16string_view(text).substr(root), [&](std::u16string_view part, bool last) {
        if (part == u"..") {
            RemoveLastName(full, root);
        } else if (part.empty() || part == u".") {
            if (part.empty() && last && full.size() > root) {
                full += u'\\';
            }
        } else {
            const std::u16string_view name = literal ? part : WithoutDots(part, last);
            if (!name.empty() || full.size() > root) {
                append(name);
            }
        }
    });
    return full;
}

HostPlace PlaceOf(std::u16string_view path) {
    std::u16string full;
    if (!path.starts_with(kLiteralPrefix)) {
        full = FullPath(path);
        const std::size_t end = full.find_last_not_of(u" .") + 1;
        full.resize(std::max(end, std::min(RootLength(full), full.size())));
        path = full;
    }
    std::u16string_view rest = path;
    HostPlace place = BeginPlace(rest);
    if (rest.empty()) {
        return place;
    }
    ForEachPart(rest, [&](std::u16string_view name, bool last) {
        if (last && name.empty()) {
            place.trailingSeparator = true;
        } else {
            AppendName(place, name);
        }
    });
    if (place.error == 0 && place.path.size() >= PATH_MAX) {
        place.error = ERROR_INVALID_NAME;
    }
    return place;
}

HostFile FindFile(const HostPlace& place) {
    HostFile file;
    file.error = place.error;
    if (file.error != 0) {
        return file;
    }
    if (const std::shared_ptr<const Miss> miss = MissCache::Current().Find(place.path)) {
        return miss->file;
    }
    if (stat(place.path.c_str(), &file.status) == 0) {
        file.path = place.path;
        return file;
    }
    if (!IsMissing(errno)) {
        file.error = ErrorFromHost(errno);
        NoteBrokenLink(place, place.path, file);
        return file;
    }
    return FindWithoutCase(place);
}

HostFile FindFile(std::u16string_view path) {
    HostFile file = FindFile(PlaceOf(path));
    if (file.error != 0) {
        SetLastError(file.error);
    }
    return file;
}

std::u16string WindowsPath(std::string_view hostPath, bool* isCertain) {
    if (!hostPath.starts_with('/')) {
        return {};
    }
    const std::shared_ptr<const Roots> roots = Roots::Current();
    if (isCertain != nullptr) {
        *isCertain = roots->AreCertain();
    }
    return roots->WindowsPath(hostPath == "/" ? "" : hostPath);
}

bool IsValidName(std::u16string_view name) {
    if (name.empty() || name.size() > NAME_MAX || name == u"." || name == u"..") {
        return false;
    }
    std::size_t bytes = 0;
    while (!name.empty()) {
        const DecodedCharacter character = DecodeCharacter(name);
        if (!character.wellFormed || IsForbidden(name.front())) {
            return false;
        }
        std::array<char, 4> units;
        bytes += EncodeCharacter(character.value, units);
        name.remove_prefix(character.length);
    }
    return bytes <= NAME_MAX;
}

}  // namespace brevik::platform
