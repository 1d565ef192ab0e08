#include "platform/posix/files/drive_device.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <string>
#include <utility>

#include "platform/files.h"
#include "platform/posix/base/handle.h"
#include "platform/posix/base/last_error.h"
#include "platform/posix/files/share_modes.h"
#include "platform/posix/paths/paths.h"
#include "platform/volumes.h"

namespace brevik::platform {
namespace {

class DriveDevice : public HandleObject {
  public:
    explicit DriveDevice(std::u16string root) : root_(std::move(root)) {}

    // REQUIRES: this handle has no lock yet.
    DWORD Lock() {
        HostFile folder;
        if (const DWORD error = FindVolume(folder); error != NO_ERROR) {
            return error;
        }
        return AnyOpenBelow(folder.path, OpenFiles::kAll) ? ERROR_ACCESS_DENIED
                                                          : lock_.LockVolume(folder.status);
    }

    // Writes out what the host still holds in memory of the volume.
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
        // Fails where there is no medium.
        ULARGE_INTEGER ignored;
        if (!GetDiskFreeSpaceExW(root_.c_str(), &ignored, nullptr, nullptr)) {
            return GetLastError();
        }
        folder = FindFile(PlaceOf(root_));
        return folder.error;
    }

    const std::u16string root_;
    ShareMode lock_;
};

}  // namespace

bool IsDriveDevice(std::u16string_view path) {
    return path.size() == kDevicePrefix.size() + 2 && path.starts_with(kDevicePrefix) &&
           path.back() == u':';
}

HANDLE OpenDriveDevice(std::u16string_view path) {
    std::u16string root(path.substr(kDevicePrefix.size()));
    root += u'\\';
    if (GetDriveTypeW(root.c_str()) == DRIVE_NO_ROOT_DIR) {
        return Fail(ERROR_FILE_NOT_FOUND, INVALID_HANDLE_VALUE);
    }
    return OpenHandle(std::make_shared<DriveDevice>(std::move(root)));
}

BOOL DeviceIoControl(HANDLE device, DWORD code, void*, DWORD, void*, DWORD, DWORD* returned,
                     OVERLAPPED*) {
    *returned = 0;
    const std::shared_ptr<DriveDevice> drive = FindHandle<DriveDevice>(device);
    if (!drive) {
        return Fail(ERROR_INVALID_HANDLE);
    }
    switch (code) {
        case FSCTL_LOCK_VOLUME:
            return Answer(drive->Lock());
        case FSCTL_DISMOUNT_VOLUME:
            return Answer(drive->Dismount());
        default:
            return Fail(ERROR_NOT_SUPPORTED);
    }
}

}  // namespace brevik::platform
