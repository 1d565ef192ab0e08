#include "platform/volumes.h"

#include <time.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/posix/folder_index.h"
#include "platform/posix/host_volumes.h"
#include "platform/posix/paths.h"
#include "platform/posix/registry_snapshot.h"
#include "platform/posix/text_buffer.h"
#include "platform/posix/volume_settings.h"

namespace brevik::platform {
namespace {

constexpr std::size_t kLongestLabel = 255;

struct Volume {
    std::u16string label;
    HostVolume host;
};

// The host's clock in the steps in which it is cheapest to read, a few milliseconds each.
std::int64_t CurrentStep() {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    return now.tv_sec * 1'000'000'000 + now.tv_nsec;
}

// A volume with all that its answer rests on.
struct KnownVolume {
    struct SeenFolder {
        std::string path;
        FolderStamp stamp;

        bool IsUnchanged() const {
            struct stat status;
            return stat(path.c_str(), &status) == 0 && FolderStamp(status) == stamp;
        }
    };

    Volume volume;
    std::shared_ptr<const RegistrySnapshot> registry;
    std::vector<SeenFolder> folders;
    bool takesMedia = false;
    mutable std::atomic<std::int64_t> lookedAt = 0;  // the step of the last look at the folders

    // Another medium at the same place has another device, number or times of its root folder. A
    // drive that does not change its medium is looked at once in a step of the clock.
    bool IsCurrent() const {
        if (NewestRegistry() != registry) {
            return false;
        }
        const std::int64_t step = CurrentStep();
        if (!takesMedia && lookedAt.load(std::memory_order_relaxed) == step) {
            return true;
        }
        if (!std::all_of(folders.begin(), folders.end(),
                         [](const SeenFolder& folder) { return folder.IsUnchanged(); })) {
            return false;
        }
        lookedAt.store(step, std::memory_order_relaxed);
        return true;
    }
};

// Volumes by the text of their root. A path is hardly ever looked at without its volume.
class VolumeCache {
  public:
    static VolumeCache& Current() {
        // Never destroyed: a thread may still ask while the process ends.
        static VolumeCache& cache = *new VolumeCache;
        return cache;
    }

    // Null where the volume may be another one by now.
    std::shared_ptr<const KnownVolume> Find(std::u16string_view root) {
        std::shared_ptr<const KnownVolume> known;
        {
            const std::lock_guard lock(mutex_);
            const auto found = volumes_.find(root);
            if (found != volumes_.end()) {
                known = found->second;
            }
        }
        return known && known->IsCurrent() ? known : nullptr;
    }

    void Keep(std::u16string_view root, std::shared_ptr<const KnownVolume> volume) {
        constexpr std::size_t kMostVolumes = 64;
        const std::lock_guard lock(mutex_);
        if (volumes_.size() >= kMostVolumes) {
            volumes_.clear();
        }
        volumes_[std::u16string(root)] = std::move(volume);
    }

  private:
    struct Hash : std::hash<std::u16string_view> {
        using is_transparent = void;
    };

    std::mutex mutex_;
    std::unordered_map<std::u16string, std::shared_ptr<const KnownVolume>, Hash, std::equal_to<>>
        volumes_;
};

// The folders whose state decides what a root leads to, the root itself last. Empty where that
// cannot be told for longer than this moment.
std::vector<KnownVolume::SeenFolder> FoldersOf(const HostPlace& place, const HostFile& root,
                                               const timespec& start) {
    std::vector<KnownVolume::SeenFolder> folders;
    // A root that is there as it is spelled stays the one that is meant; one that was found in
    // another case may get a better match beside it.
    if (root.path != place.path) {
        for (std::size_t end = place.top; end < root.path.size();
             end = std::min(root.path.find('/', end + 1), root.path.size())) {
            struct stat status;
            const std::string path = root.path.substr(0, end);
            if (stat(path.c_str(), &status) != 0 || !FolderStamp(status).IsSettledAt(start)) {
                return {};
            }
            folders.push_back({path, FolderStamp(status)});
        }
    }
    // Some file systems keep no times of their root, and then two media are alike from outside.
    if (root.status.st_mtim.tv_sec == 0) {
        return {};
    }
    folders.push_back({root.path, FolderStamp(root.status)});
    return folders;
}

DWORD MissingRoot(const HostPlace& place) {
    return place.isShare ? ERROR_BAD_NETPATH : ERROR_PATH_NOT_FOUND;
}

// Looks up a folder on a volume. 0; 21 for one on a drive without its medium; else the lookup's
// error, and 267 for a file.
DWORD FindFolder(const HostPlace& place, const VolumeSettings& settings, HostFile* folder) {
    if (settings.empty) {
        return ERROR_NOT_READY;
    }
    *folder = FindFile(place);
    if (folder->error == 0 && S_ISDIR(folder->status.st_mode)) {
        return ERROR_SUCCESS;
    }
    HostPlace root = place;
    root.path.resize(root.root);
    const HostFile rootFolder = FindFile(root);
    if (rootFolder.error != 0 || !S_ISDIR(rootFolder.status.st_mode)) {
        return settings.TakesMedia() ? ERROR_NOT_READY : MissingRoot(place);
    }
    return folder->error != 0 ? folder->error : ERROR_DIRECTORY;
}

bool EndsInSeparator(std::u16string_view text) {
    return text.ends_with(u'\\') || text.ends_with(u'/');
}

// Whether the text leads to the same root whatever folder is current.
bool IsAbsolute(std::u16string_view text) {
    return text.starts_with(u"\\\\") || text.substr(1).starts_with(u":\\");
}

// A null root is that of the current folder.
std::u16string RootText(const WCHAR* root) {
    return root != nullptr ? std::u16string(root) : FullPath(u"\\");
}

// Reads what the text of a root leads to, and keeps it where that lasts. 0 or an error number.
DWORD ReadVolume(std::u16string_view text, std::shared_ptr<const KnownVolume>* result) {
    timespec start;
    clock_gettime(CLOCK_REALTIME, &start);
    const HostPlace place = PlaceOf(text);
    auto known = std::make_shared<KnownVolume>();
    known->registry = NewestRegistry();
    HostFile root;
    VolumeSettings settings;
    DWORD error = place.error;
    if (error == 0) {
        settings = ReadVolumeSettings(*known->registry, place);
        error = FindFolder(place, settings, &root);
    }
    // A missing share tells ahead of the spelling of its root.
    if (!text.empty() && !EndsInSeparator(text) && error != ERROR_BAD_NETPATH) {
        return ERROR_INVALID_NAME;
    }
    if (error == 0 && !place.IsRoot()) {
        return ERROR_DIR_NOT_ROOT;
    }
    error = error != 0 ? error : ReadHostVolume(root.path, &known->volume.host);
    if (error != 0) {
        return error;
    }
    known->volume.host.serial = settings.serial.value_or(known->volume.host.serial);
    known->volume.label = settings.label.substr(0, kLongestLabel);
    known->folders = FoldersOf(place, root, start);
    known->takesMedia = settings.TakesMedia();
    if (IsAbsolute(text) && !known->folders.empty()) {
        VolumeCache::Current().Keep(text, known);
    }
    *result = std::move(known);
    return ERROR_SUCCESS;
}

// False where the text does not fit. A null buffer or one of size 0 is not asked for.
bool CopyOut(std::u16string_view text, WCHAR* buffer, DWORD size) {
    return buffer == nullptr || size == 0 || CopyOrAskForRoom(text, buffer, size) == text.size();
}

template <typename Number, typename Value>
void Put(Number* target, Value value) {
    if (target != nullptr) {
        *target = static_cast<Number>(value);
    }
}

BOOL Fail(DWORD error) {
    SetLastError(error);
    return FALSE;
}

}  // namespace

BOOL GetVolumeInformationW(const WCHAR* root, WCHAR* label, DWORD labelSize, DWORD* serial,
                           DWORD* maximumNameLength, DWORD* flags, WCHAR* fileSystem,
                           DWORD fileSystemSize) {
    const std::u16string current = root == nullptr ? RootText(nullptr) : std::u16string();
    const std::u16string_view text = root != nullptr ? root : std::u16string_view(current);
    std::shared_ptr<const KnownVolume> known = VolumeCache::Current().Find(text);
    if (!known) {
        const DWORD error = ReadVolume(text, &known);
        if (error != 0) {
            return Fail(error);
        }
    }
    const HostVolume& host = known->volume.host;
    Put(serial, host.serial);
    Put(maximumNameLength, host.maximumNameLength);
    Put(flags, host.flags);
    if (!CopyOut(known->volume.label, label, labelSize) ||
        !CopyOut(host.fileSystem, fileSystem, fileSystemSize)) {
        return Fail(ERROR_MORE_DATA);
    }
    return TRUE;
}

UINT GetDriveTypeW(const WCHAR* root) {
    const HostPlace place = PlaceOf(RootText(root));
    if (place.error != 0) {
        return DRIVE_NO_ROOT_DIR;
    }
    const VolumeSettings settings = ReadVolumeSettings(*NewestRegistry(), place);
    HostFile folder;
    const DWORD error = FindFolder(place, settings, &folder);
    if (error != 0 && !(error == ERROR_NOT_READY && place.IsRoot())) {
        return DRIVE_NO_ROOT_DIR;
    }
    if (settings.kind) {
        return *settings.kind;
    }
    HostVolume host;
    if (place.isShare || error != 0 || ReadHostVolume(folder.path, &host) != 0) {
        return place.isShare ? DRIVE_REMOTE : DRIVE_FIXED;
    }
    return host.kind;
}

BOOL GetDiskFreeSpaceExW(const WCHAR* folder, ULARGE_INTEGER* freeForCaller, ULARGE_INTEGER* total,
                         ULARGE_INTEGER* free) {
    const HostPlace place = PlaceOf(RootText(folder));
    HostFile found;
    HostVolume host;
    DWORD error = place.error;
    if (error == 0) {
        error = FindFolder(place, ReadVolumeSettings(*NewestRegistry(), place), &found);
    }
    error = error != 0 ? error : ReadHostVolume(found.path, &host);
    if (error != 0) {
        return Fail(error);
    }
    const std::pair<ULARGE_INTEGER*, std::uint64_t> answers[] = {
        {freeForCaller, host.freeForCaller}, {total, host.size}, {free, host.free}};
    for (const auto& [target, bytes] : answers) {
        if (target != nullptr) {
            target->QuadPart = bytes;
        }
    }
    return TRUE;
}

}  // namespace brevik::platform
