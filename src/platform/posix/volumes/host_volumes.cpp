#include "platform/posix/volumes/host_volumes.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <linux/msdos_fs.h>
#include <sys/ioctl.h>
#include <sys/statvfs.h>
#include <sys/vfs.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>

#include "platform/posix/base/host_errors.h"
#include "platform/posix/base/scoped_descriptor.h"

namespace brevik::platform {
namespace {

constexpr DWORD kCasePreserved = 0x2;
constexpr DWORD kUnicode = 0x4;
constexpr DWORD kReadOnly = 0x0008'0000;

constexpr DWORD kLongestName = 255;

// A FAT with fewer clusters than this has 16 bits for each, or 12.
constexpr std::uint64_t kFewestClustersOfFat32 = 65'525;

struct FileSystem {
    std::uint32_t magic;
    std::u16string_view name;
    UINT kind;
};

constexpr FileSystem kFileSystems[] = {
    {EXT4_SUPER_MAGIC, u"ext4", DRIVE_FIXED},
    {BTRFS_SUPER_MAGIC, u"btrfs", DRIVE_FIXED},
    {0x58465342, u"xfs", DRIVE_FIXED},
    {0x2FC12FC1, u"zfs", DRIVE_FIXED},
    {F2FS_SUPER_MAGIC, u"f2fs", DRIVE_FIXED},
    {TMPFS_MAGIC, u"tmpfs", DRIVE_FIXED},
    {OVERLAYFS_SUPER_MAGIC, u"overlay", DRIVE_FIXED},
    {FUSE_SUPER_MAGIC, u"fuse", DRIVE_FIXED},
    {V9FS_MAGIC, u"9p", DRIVE_FIXED},
    {SQUASHFS_MAGIC, u"squashfs", DRIVE_FIXED},
    {MSDOS_SUPER_MAGIC, u"FAT32", DRIVE_FIXED},
    {EXFAT_SUPER_MAGIC, u"exFAT", DRIVE_FIXED},
    {0x5346544E, u"NTFS", DRIVE_FIXED},
    {0x7366746E, u"NTFS", DRIVE_FIXED},
    {ISOFS_SUPER_MAGIC, u"CDFS", DRIVE_CDROM},
    {UDF_SUPER_MAGIC, u"UDF", DRIVE_CDROM},
    {NFS_SUPER_MAGIC, u"nfs", DRIVE_REMOTE},
    {CIFS_SUPER_MAGIC, u"cifs", DRIVE_REMOTE},
    {SMB2_SUPER_MAGIC, u"cifs", DRIVE_REMOTE},
    {AFS_SUPER_MAGIC, u"afs", DRIVE_REMOTE},
    {CEPH_SUPER_MAGIC, u"ceph", DRIVE_REMOTE},
};

constexpr FileSystem kOther = {0, u"other", DRIVE_FIXED};

const FileSystem& FindFileSystem(std::uint32_t magic) {
    const auto found = std::find_if(std::begin(kFileSystems), std::end(kFileSystems),
                                    [=](const FileSystem& entry) { return entry.magic == magic; });
    return found == std::end(kFileSystems) ? kOther : *found;
}

// The number that the medium itself has; 0 where it cannot be asked.
DWORD FatSerial(const std::string& folder) {
    const ScopedDescriptor root(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const int serial = root ? ioctl(root.Get(), FAT_IOCTL_GET_VOLUME_ID) : -1;
    return serial == -1 ? 0 : static_cast<DWORD>(serial);
}

DWORD SerialOf(const struct statfs& status) {
    std::uint32_t parts[2];
    static_assert(sizeof parts == sizeof status.f_fsid);
    std::memcpy(parts, &status.f_fsid, sizeof parts);
    return parts[0] ^ parts[1];
}

}  // namespace

DWORD ReadHostVolume(const std::string& folder, HostVolume* volume) {
    struct statfs status;
    if (statfs(folder.c_str(), &status) != 0) {
        return ErrorFromHost(errno);
    }
    const FileSystem& system = FindFileSystem(static_cast<std::uint32_t>(status.f_type));
    volume->fileSystem = system.name;
    volume->kind = system.kind;
    volume->serial = SerialOf(status);
    if (system.magic == MSDOS_SUPER_MAGIC) {
        volume->fileSystem = status.f_blocks < kFewestClustersOfFat32 ? u"FAT" : system.name;
        volume->serial = FatSerial(folder);
    }
    // Some count the bytes of their longest name and not its units.
    volume->maximumNameLength = status.f_namelen <= 0
                                    ? kLongestName
                                    : std::min(static_cast<DWORD>(status.f_namelen), kLongestName);
    volume->flags = kCasePreserved | kUnicode | ((status.f_flags & ST_RDONLY) != 0 ? kReadOnly : 0);
    const auto block =
        static_cast<std::uint64_t>(status.f_frsize != 0 ? status.f_frsize : status.f_bsize);
    volume->size = status.f_blocks * block;
    volume->freeForCaller = status.f_bavail * block;
    return NO_ERROR;
}

}  // namespace brevik::platform
