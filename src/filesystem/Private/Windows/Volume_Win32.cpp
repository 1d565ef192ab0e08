#include "filesystem/Private/Windows/Volume_Win32.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <map>
#include <memory>
#include <mutex>
#include <string_view>
#include <tuple>

#include "filesystem/ClassFactory_IF.h"
#include "filesystem/FileException.h"
#include "filesystem/FileSpec_IF.h"
#include "filesystem/Private/Windows/API.h"
#include "platform/handles.h"
#include "platform/never_destroyed.h"

namespace {

using FileSystem_Win32::GetApi;

struct SizeLimit {
    std::basic_string_view<WCHAR> fileSystem;
    std::uint64_t bytes;
};

constexpr SizeLimit kSizeLimits[] = {
    {WIDE("FAT16"), 0x00000000FFFFFFFF},
    {WIDE("FAT32"), 0x00000000FFFFFFFF},
    {WIDE("NTFS"), 0xFFFFFFFFFFFF0000},
};
constexpr std::uint64_t kNoSizeLimit = 0xFFFFFFFFFFFFFFFF;

}  // namespace

SharedHandle<FileSpec_IF> Volume_Win32::GetRootFolder(const SharedHandle<Volume_IF>& self) {
    return ClassFactory_IF::MakeFileSpec(FilePath(info.root), self);
}

std::uint64_t Volume_Win32::GetCapacity() {
    ULARGE_INTEGER total = {};
    Require(GetApi()->GetDiskFreeSpaceExW(info.root.c_str(), nullptr, &total, nullptr));
    return total.QuadPart;
}

std::uint64_t Volume_Win32::GetFreeSpace() {
    ULARGE_INTEGER freeForCaller = {};
    Require(GetApi()->GetDiskFreeSpaceExW(info.root.c_str(), &freeForCaller, nullptr, nullptr));
    return freeForCaller.QuadPart;
}

std::uint64_t Volume_Win32::GetMaximumFileSize() {
    const auto* row = std::find_if(
        std::begin(kSizeLimits), std::end(kSizeLimits),
        [this](const SizeLimit& limit) { return limit.fileSystem == info.file_system; });
    return row != std::end(kSizeLimits) ? row->bytes : kNoSizeLimit;
}

bool Volume_Win32::IsMounted() {
    if (!IsRemovable()) {
        return true;
    }
    try {
        return VolumeInfo(info.root) == info;
    } catch (const std::exception&) {
        return false;
    }
}

bool Volume_Win32::IsNetwork() {
    return GetApi()->GetDriveTypeW(info.root.c_str()) == DRIVE_REMOTE;
}

bool Volume_Win32::IsRemovable() {
    const UINT kind = GetApi()->GetDriveTypeW(info.root.c_str());
    return kind == DRIVE_CDROM || kind == DRIVE_REMOVABLE;
}

void Volume_Win32::Unmount() {
    if (!IsRemovable() || info.root[1] != WIDE(':')) {
        throw VelmarException(".\\Private\\Windows\\FileSystem_Volume_Win32", 145);
    }
    const WideString device = WideString(WIDE("\\\\.\\")) + info.root[0] + WIDE(":");
    const bool isReadOnly = GetApi()->GetDriveTypeW(info.root.c_str()) == DRIVE_CDROM;
    const ScopedHandle handle(GetApi()->CreateFileW(
        device.c_str(), GENERIC_READ | (isReadOnly ? 0 : GENERIC_WRITE),
        FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr));
    Require(static_cast<bool>(handle));
    // The lock that the first one takes ends with the handle.
    for (const DWORD step : {FSCTL_LOCK_VOLUME, FSCTL_DISMOUNT_VOLUME}) {
        DWORD returned = 0;
        Require(DeviceIoControl(handle.Get(), step, nullptr, 0, nullptr, 0, &returned, nullptr));
    }
}

void Volume_Win32::Fail(DWORD code) const {
    ThrowFileError(code, FilePath(info.root));
}

VolumeInfo::VolumeInfo(const WideString& rootPath) : root(StringToLower(rootPath)) {
    WCHAR labelText[0x100] = {};
    WCHAR fileSystemText[0x10] = {};
    DWORD serialNumber = 0;
    DWORD nameLength = 0;
    DWORD flagBits = 0;
    if (!FileSystem_Win32::GetApi()->GetVolumeInformationW(
            root.c_str(), labelText, static_cast<DWORD>(std::size(labelText)), &serialNumber,
            &nameLength, &flagBits, fileSystemText,
            static_cast<DWORD>(std::size(fileSystemText)))) {
        const DWORD error = GetLastError();
        ThrowFileError(error, FilePath(root));
    }
    flags = flagBits;
    max_name_length = nameLength;
    serial = serialNumber;
    label = labelText;
    file_system = fileSystemText;
}

bool operator==(const VolumeInfo& a, const VolumeInfo& b) {
    return std::tie(a.root, a.label, a.serial) == std::tie(b.root, b.label, b.serial);
}

bool operator<(const VolumeInfo& a, const VolumeInfo& b) {
    return std::tie(a.root, a.label, a.serial) < std::tie(b.root, b.label, b.serial);
}

namespace FileSystem_Win32 {
namespace {

struct Registry {
    std::mutex lock;
    std::map<VolumeInfo, SharedHandle<Volume_IF>> volumes;
};

Registry& GetRegistry() {
    static NeverDestroyed<Registry> registry;
    return *registry;
}

}  // namespace

SharedHandle<Volume_IF> FindVolume(const VolumeInfo& info, bool create) {
    Registry& registry = GetRegistry();
    const std::lock_guard<std::mutex> hold(registry.lock);
    const auto found = registry.volumes.find(info);
    if (found != registry.volumes.end()) {
        return found->second;
    }
    if (!create) {
        return nullptr;
    }
    SharedHandle<Volume_IF> volume = std::make_shared<Volume_Win32>(info);
    registry.volumes.emplace(info, volume);
    return volume;
}

void ClearVolumes() {
    Registry& registry = GetRegistry();
    const std::lock_guard<std::mutex> hold(registry.lock);
    registry.volumes.clear();
}

}  // namespace FileSystem_Win32
