#include "platform/volumes.h"

#include <time.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/never_destroyed.h"
#include "platform/posix/base/last_error.h"
#include "platform/posix/base/stamped.h"
#include "platform/posix/paths/paths.h"
#include "platform/posix/registry/registry_snapshot.h"
#include "platform/posix/text/host_text.h"
#include "platform/posix/text/text_buffer.h"
#include "platform/posix/volumes/host_volumes.h"
#include "platform/registry.h"

namespace brevik::platform {
namespace {

constexpr std::size_t kLongestLabel = 255;

// What the machine's registry says of the medium of a drive or share, in place of the host: the
// values of HKEY_LOCAL_MACHINE\SOFTWARE\Brevik\Volumes\X for drive X:, and of
// ...\Volumes\SERVER\SHARE for a share.
struct VolumeSettings {
    std::u16string label;
    std::optional<UINT> kind;
    std::optional<DWORD> serial;
    bool isEmpty = false;  // no medium is in the drive

    // Whether the drive is there also while the folder that it leads to is not.
    bool TakesMedia() const { return kind == DRIVE_REMOVABLE || kind == DRIVE_CDROM; }
};

constexpr std::u16string_view kVolumesKey = u"HKEY_LOCAL_MACHINE\\SOFTWARE\\Brevik\\Volumes\\";

struct KindName {
    std::u16string_view folded;
    UINT kind;
};

constexpr KindName kKinds[] = {
    {u"FIXED", DRIVE_FIXED},
    {u"REMOVABLE", DRIVE_REMOVABLE},
    {u"CDROM", DRIVE_CDROM},
    {u"REMOTE", DRIVE_REMOTE},
};

std::optional<std::u16string> ReadText(const RegistryKey& key, std::u16string_view foldedName) {
    const RegistryValue* value = key.FindValue(foldedName);
    if (value == nullptr || value->type != REG_SZ) {
        return std::nullopt;
    }
    const std::u16string text = Utf16OfBytes(value->data);
    return text.substr(0, text.find(u'\0'));
}

std::optional<DWORD> ReadNumber(const RegistryKey& key, std::u16string_view foldedName) {
    const RegistryValue* value = key.FindValue(foldedName);
    if (value == nullptr || value->type != REG_DWORD || value->data.size() != sizeof(DWORD)) {
        return std::nullopt;
    }
    return NumberOfBytes(value->data);
}

std::optional<UINT> ReadKind(const RegistryKey& key) {
    const std::u16string name = FoldRegistryName(ReadText(key, u"KIND").value_or(u""));
    const auto kind = std::find_if(std::begin(kKinds), std::end(kKinds),
                                   [&](const KindName& entry) { return entry.folded == name; });
    return kind == std::end(kKinds) ? std::nullopt : std::optional(kind->kind);
}

// A value of another type than it ought to be is none.
VolumeSettings ReadVolumeSettings(const RegistrySnapshot& registry, const HostPlace& place) {
    // Without a machine the root of drive Z: is the host itself.
    if (place.error != NO_ERROR || place.root == place.top) {
        return {};
    }
    std::u16string names = WideFromUtf8(
        std::string_view(place.path).substr(place.top + 1, place.root - place.top - 1));
    std::replace(names.begin(), names.end(), u'/', u'\\');
    const RegistryKey* key = registry.tree.Find(std::u16string(kVolumesKey) + names);
    VolumeSettings settings;
    if (key != nullptr) {
        settings.label = ReadText(*key, u"LABEL").value_or(u"");
        settings.kind = ReadKind(*key);
        settings.serial = ReadNumber(*key, u"SERIAL");
        settings.isEmpty = ReadNumber(*key, u"EMPTY").value_or(0) != 0;
    }
    return settings;
}

// The host's clock in the steps in which it is cheapest to read, a few milliseconds each.
std::int64_t CurrentStep() {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    return now.tv_sec * 1'000'000'000 + now.tv_nsec;
}

// A volume with all that its answer rests on.
struct KnownVolume {
    std::u16string label;
    HostVolume host;
    std::shared_ptr<const RegistrySnapshot> registry;
    SeenFiles seen;
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
        if (!seen.AreUnchanged()) {
            return false;
        }
        lookedAt.store(step, std::memory_order_relaxed);
        return true;
    }
};

// Volumes by the text of their root. Nearly every use of a path asks for its volume.
AnswerCache<std::u16string, KnownVolume>& Volumes() {
    static NeverDestroyed<AnswerCache<std::u16string, KnownVolume>> volumes(64);
    return *volumes;
}

// Notes the folders whose state decides what a root leads to, the root itself last. False where
// that may change without a sign.
bool NoteFolders(const HostPlace& place, const HostFile& root, SeenFiles& seen) {
    // A root that is there as it is spelled stays the one that is meant; one that was found in
    // another case may get a better match beside it.
    if (root.path != place.path) {
        for (std::size_t end = place.top; end < root.path.size();
             end = std::min(root.path.find('/', end + 1), root.path.size())) {
            const std::string path = root.path.substr(0, end);
            seen.Add(path, StampOf(path));
        }
    }
    const bool areSettled = seen.AreSettled();
    seen.Add(root.path, FileStamp(root.status));
    // Some file systems keep no times of their root, and then two media look the same.
    return areSettled && root.status.st_mtim.tv_sec != 0;
}

// Finds the root folder of a volume. NO_ERROR or why there is none.
DWORD FindRoot(const HostPlace& place, const VolumeSettings& settings, HostFile* folder) {
    if (place.error != NO_ERROR) {
        return place.error;
    }
    if (settings.isEmpty) {
        return ERROR_NOT_READY;
    }
    *folder = FindFile(place);
    if (folder->error == NO_ERROR && S_ISDIR(folder->status.st_mode)) {
        return NO_ERROR;
    }
    return settings.TakesMedia() ? ERROR_NOT_READY
           : place.isShare       ? ERROR_BAD_NETPATH
                                 : ERROR_PATH_NOT_FOUND;
}

// Reads what a root leads to, and keeps it where that lasts. NO_ERROR or an error number.
DWORD ReadVolume(const WCHAR* root, std::shared_ptr<const KnownVolume>* result) {
    auto known = std::make_shared<KnownVolume>();
    const HostPlace place = PlaceOf(root);
    known->registry = NewestRegistry();
    const VolumeSettings settings = ReadVolumeSettings(*known->registry, place);
    HostFile folder;
    DWORD error = FindRoot(place, settings, &folder);
    if (error == NO_ERROR) {
        error = ReadHostVolume(folder.path, &known->host);
    }
    if (error != NO_ERROR) {
        return error;
    }
    known->host.serial = settings.serial.value_or(known->host.serial);
    known->label = settings.label.substr(0, kLongestLabel);
    known->takesMedia = settings.TakesMedia();
    if (NoteFolders(place, folder, known->seen)) {
        Volumes().Keep(root, known);
    }
    *result = std::move(known);
    return NO_ERROR;
}

}  // namespace

BOOL GetVolumeInformationW(const WCHAR* root, WCHAR* label, DWORD labelSize, DWORD* serial,
                           DWORD* maximumNameLength, DWORD* flags, WCHAR* fileSystem,
                           DWORD fileSystemSize) {
    std::shared_ptr<const KnownVolume> known = Volumes().Find(root);
    if (!known || !known->IsCurrent()) {
        if (const DWORD error = ReadVolume(root, &known); error != NO_ERROR) {
            return Fail(error);
        }
    }
    *serial = known->host.serial;
    *maximumNameLength = known->host.maximumNameLength;
    *flags = known->host.flags;
    CopyOrAskForRoom(known->label, label, labelSize);
    CopyOrAskForRoom(known->host.fileSystem, fileSystem, fileSystemSize);
    return TRUE;
}

UINT GetDriveTypeW(const WCHAR* root) {
    const HostPlace place = PlaceOf(root);
    const VolumeSettings settings = ReadVolumeSettings(*NewestRegistry(), place);
    HostFile folder;
    const DWORD error = FindRoot(place, settings, &folder);
    if (error != NO_ERROR && error != ERROR_NOT_READY) {
        return DRIVE_NO_ROOT_DIR;
    }
    if (settings.kind) {
        return *settings.kind;
    }
    if (place.isShare) {
        return DRIVE_REMOTE;
    }
    HostVolume host;
    const bool isKnown = error == NO_ERROR && ReadHostVolume(folder.path, &host) == NO_ERROR;
    return isKnown ? host.kind : DRIVE_FIXED;
}

BOOL GetDiskFreeSpaceExW(const WCHAR* root, ULARGE_INTEGER* freeForCaller, ULARGE_INTEGER* total,
                         ULARGE_INTEGER*) {
    const HostPlace place = PlaceOf(root);
    HostFile folder;
    HostVolume host;
    DWORD error = FindRoot(place, ReadVolumeSettings(*NewestRegistry(), place), &folder);
    if (error == NO_ERROR) {
        error = ReadHostVolume(folder.path, &host);
    }
    if (error != NO_ERROR) {
        return Fail(error);
    }
    for (const auto& [target, bytes] :
         {std::pair(freeForCaller, host.freeForCaller), std::pair(total, host.size)}) {
        if (target != nullptr) {
            target->QuadPart = bytes;
        }
    }
    return TRUE;
}

}  // namespace brevik::platform
