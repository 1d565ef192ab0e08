#include "platform/posix/drive_device.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "platform/files.h"
#include "platform/posix/handle.h"
#include "platform/posix/paths.h"
#include "platform/posix/share_modes.h"
#include "platform/volumes.h"

namespace brevik::platform {
namespace {

constexpr std::u16string_view kPrefix = u"\\\\.\\";

class DriveDevice : public HandleObject {
  public:
    explicit DriveDevice(std::u16string root) : root_(std::move(root)) {}

    DWORD Lock() {
        HostFile folder;
        if (const DWORD error = FindVolume(folder); error != NO_ERROR) {
            return error;
        }
        const std::lock_guard guard(mutex_);
        if (locked_) {
            return NO_ERROR;
        }
        if (AnyOpenBelow(folder.path, OpenFiles::kAll)) {
            return ERROR_ACCESS_DENIED;
        }
        const DWORD error = lock_.LockVolume(folder.status);
        locked_ = error == NO_ERROR;
        return error;
    }

    // Writes out what the host still holds back of the volume.
    DWORD Dismount() {
        HostFile folder;
        if (const DWORD error = FindVolume(folder); error != NO_ERROR) {
            return error;
        }
        const ScopedDescriptor descriptor(
            open(folder.path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        return descriptor && syncfs(descriptor.Get()) == 0 ? NO_ERROR : ErrorFromHost(errno);
    }

  private:
    // The root folder of the volume, where it is one that can be taken out.
    DWORD FindVolume(HostFile& folder) const {
        const UINT kind = GetDriveTypeW(root_.c_str());
        if (kind != DRIVE_REMOVABLE && kind != DRIVE_CDROM) {
            return ERROR_ACCESS_DENIED;
        }
        if (!GetVolumeInformationW(root_.c_str(), nullptr, 0, nullptr, nullptr, nullptr, nullptr,
                                   0)) {
            return GetLastError();
        }
        folder = FindFile(PlaceOf(root_));
        return folder.error;
    }

    const std::u16string root_;
    std::mutex mutex_;
    bool locked_ = false;
    ShareMode lock_;
};

BOOL Answer(DWORD error) {
    if (error != NO_ERROR) {
        SetLastError(error);
    }
    return error == NO_ERROR;
}

}  // namespace

bool IsDriveDevice(std::u16string_view path) {
    return path.size() == kPrefix.size() + 2 && path.starts_with(kPrefix) && path.back() == u':';
}

HANDLE OpenDriveDevice(std::u16string_view path) {
    std::u16string root(path.substr(kPrefix.size()));
    root += u'\\';
    HANDLE device = nullptr;
    DWORD error = ERROR_FILE_NOT_FOUND;
    if (GetDriveTypeW(root.c_str()) != DRIVE_NO_ROOT_DIR) {
        device = OpenHandle(std::make_shared<DriveDevice>(std::move(root)));
        error = device == nullptr ? ERROR_TOO_MANY_OPEN_FILES : NO_ERROR;
    }
    SetLastError(error);
    return device != nullptr ? device : INVALID_HANDLE_VALUE;
}

BOOL DeviceIoControl(HANDLE device, DWORD code, void*, DWORD, void*, DWORD, DWORD* returned,
                     OVERLAPPED*) {
    if (returned != nullptr) {
        *returned = 0;
    }
    const std::shared_ptr<DriveDevice> drive = FindHandle<DriveDevice>(device);
    if (!drive) {
        return Answer(FindHandleObject(device) ? ERROR_INVALID_PARAMETER : ERROR_INVALID_HANDLE);
    }
    switch (code) {
        case FSCTL_LOCK_VOLUME:
            return Answer(drive->Lock());
        case FSCTL_DISMOUNT_VOLUME:
            return Answer(drive->Dismount());
        default:
            return Answer(ERROR_NOT_SUPPORTED);
    }
}

}  // namespace brevik::platform
