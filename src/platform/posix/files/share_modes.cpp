#include "platform/posix/files/share_modes.h"

#include <fcntl.h>
#include <sched.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <mutex>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "platform/files.h"
#include "platform/never_destroyed.h"
#include "platform/posix/base/file_stamp.h"
#include "platform/posix/base/host_errors.h"
#include "platform/posix/base/interrupted.h"
#include "platform/posix/machine/machine.h"

namespace brevik::platform {
namespace {

// The bytes of a file. Their order lets the usual openings lock one run of bytes.
enum SlotByte : unsigned {
    kDeletes,
    kWrites,
    kReads,
    kDeniesDelete,
    kDeniesWrite,
    kDeniesRead,
    kSection,
    kVolumeLock,
    kSlotSize
};

// The place of a file's bytes. A lock's offset has 63 bits, so 60 are left for the file's number:
// of a larger one the highest bits are mixed into them, and two files that meet are very unlikely.
constexpr off_t SlotOf(ino_t number) {
    constexpr unsigned kBits = 60;
    constexpr std::uint64_t kOdd = 0x9E3779B97F4A7C15;
    const std::uint64_t mixed = number ^ (number >> kBits) * kOdd;
    return static_cast<off_t>(mixed & ((std::uint64_t{1} << kBits) - 1)) * kSlotSize;
}

struct AccessKind {
    DWORD access;
    DWORD share;
    SlotByte has;
    SlotByte denies;
};

constexpr AccessKind kAccessKinds[] = {
    {GENERIC_READ, FILE_SHARE_READ, kReads, kDeniesRead},
    {GENERIC_WRITE, FILE_SHARE_WRITE, kWrites, kDeniesWrite},
    {DELETE, FILE_SHARE_DELETE, kDeletes, kDeniesDelete},
};

// Bytes of a slot as a bit set.
struct SlotBytes {
    unsigned taken = 0;     // that the handle locks
    unsigned excluded = 0;  // that no other handle may have locked
};

constexpr SlotBytes BytesOf(DWORD access, DWORD share) {
    SlotBytes bytes;
    for (const AccessKind& kind : kAccessKinds) {
        if ((access & kind.access) != 0) {
            bytes.taken |= 1u << kind.has;
            bytes.excluded |= 1u << kind.denies;
        }
    }
    if (bytes.taken == 0) {
        return {};
    }
    for (const AccessKind& kind : kAccessKinds) {
        if ((share & kind.share) == 0) {
            bytes.taken |= 1u << kind.denies;
            bytes.excluded |= 1u << kind.has;
        }
    }
    return bytes;
}

// Calls `use` with first and length of each run of set bits until it returns an error.
template <typename Use>
DWORD ForEachRun(unsigned bits, Use use) {
    for (unsigned first = 0; bits >> first != 0;) {
        if ((bits >> first & 1) == 0) {
            ++first;
            continue;
        }
        unsigned end = first;
        while ((bits >> end & 1) != 0) {
            ++end;
        }
        if (const DWORD error = use(first, end - first); error != NO_ERROR) {
            return error;
        }
        first = end;
    }
    return NO_ERROR;
}

struct flock LockOf(int type, off_t start, off_t length) {
    struct flock lock = {};
    lock.l_type = static_cast<short>(type);
    lock.l_whence = SEEK_SET;
    lock.l_start = start;
    lock.l_len = length;
    return lock;
}

// Whether another open description has a lock in the range of `lock`, which receives it. A host
// without such locks enforces nothing.
bool FindLock(int file, struct flock& lock) {
    lock.l_pid = 0;
    return Uninterrupted([&] { return fcntl(file, F_OFD_GETLK, &lock); }) == 0 &&
           lock.l_type != F_UNLCK;
}

// NO_ERROR also where the host's file system has no locks.
DWORD SetLock(int file, int type, off_t start, off_t length) {
    struct flock lock = LockOf(type, start, length);
    if (Uninterrupted([&] { return fcntl(file, F_OFD_SETLK, &lock); }) == 0) {
        return NO_ERROR;
    }
    return errno == EAGAIN || errno == EACCES ? ERROR_SHARING_VIOLATION : NO_ERROR;
}

// From here until the byte is unlocked no other opening looks at the file's bytes or locks them.
// NO_ERROR, or ERROR_SHARING_VIOLATION where another program does not reach the end of its section:
// one that is stopped there must not stop all others.
DWORD LockSection(int file, off_t slot) {
    constexpr int kYields = 200;
    constexpr int kWaits = 2000;
    constexpr timespec kWait = {0, 1'000'000};
    for (int turn = 0;; ++turn) {
        const DWORD error = SetLock(file, F_WRLCK, slot + kSection, 1);
        if (error == NO_ERROR || turn == kYields + kWaits) {
            return error;
        }
        if (turn < kYields) {
            sched_yield();
        } else {
            nanosleep(&kWait, nullptr);
        }
    }
}

std::string LockFilePath(dev_t device) {
    char name[64];
    std::snprintf(name, sizeof name, "/locks/%jx", static_cast<std::uintmax_t>(device));
    return Machine::Current().Folder() + name;
}

ScopedDescriptor OpenPath(const std::string& path, int flags, mode_t mode = 0) {
    return OpenDescriptor(path, O_RDWR | O_NOFOLLOW | O_NONBLOCK | flags, mode);
}

// Makes a lock file that is missing, open to all that may write in its folder.
ScopedDescriptor MakeLockFile(const std::string& path) {
    const std::string folder = path.substr(0, path.rfind('/'));
    mkdir(folder.c_str(), 0777);
    struct stat status;
    if (stat(folder.c_str(), &status) != 0) {
        return {};
    }
    const mode_t mode = status.st_mode & 0666;
    ScopedDescriptor file = OpenPath(path, O_CREAT | O_EXCL, mode);
    if (file) {
        fchmod(file.Get(), mode);
        return file;
    }
    return errno == EEXIST ? OpenPath(path, 0) : ScopedDescriptor();
}

// Whether the host can open nothing at all at the moment, and not just this file.
bool IsShortage(int hostError) {
    return hostError == EMFILE || hostError == ENFILE || hostError == ENOMEM;
}

// A lock file that no handle uses at the moment, kept open for the next one: deleting a tree would
// otherwise open one for each file.
class SpareLockFile {
  public:
    // The spare, when this process opened it for this device and its path still leads to it; else
    // none.
    LockFile Take(pid_t process, dev_t device) {
        const std::lock_guard lock(mutex_);
        if (!spare_.file || spare_.owner != process || spare_.device != device) {
            return {};
        }
        LockFile taken = std::move(spare_);
        struct stat status;
        if (fstat(taken.file.Get(), &status) != 0 || !IsSameFile(status, taken.own)) {
            // The host has closed a descriptor that it does not know; the number may now be its
            // own.
            taken.file.Release();
            return {};
        }
        return status.st_nlink != 0 ? std::move(taken) : LockFile();
    }

    // REQUIRES: nothing is locked by way of the file any more.
    void Keep(LockFile file) {
        const std::lock_guard lock(mutex_);
        if (!spare_.file || spare_.owner != file.owner) {
            spare_ = std::move(file);
        }
    }

  private:
    std::mutex mutex_;
    LockFile spare_;
};

SpareLockFile& Spare() {
    static NeverDestroyed<SpareLockFile> spare;
    return *spare;
}

}  // namespace

DWORD ShareMode::OpenLockFile(const struct stat& file) {
    slot_ = SlotOf(file.st_ino);
    const pid_t process = getpid();
    lockFile_ = Spare().Take(process, file.st_dev);
    if (lockFile_.file) {
        return NO_ERROR;
    }
    const std::string path = LockFilePath(file.st_dev);
    ScopedDescriptor opened = OpenPath(path, 0);
    if (!opened && errno == ENOENT) {
        opened = MakeLockFile(path);
    }
    struct stat own;
    if (!opened || fstat(opened.Get(), &own) != 0) {
        return IsShortage(errno) ? ErrorFromHost(errno) : NO_ERROR;
    }
    lockFile_ = {std::move(opened), process, file.st_dev, own};
    return NO_ERROR;
}

DWORD ShareMode::BeginSection(const struct stat& file) {
    DWORD error = OpenLockFile(file);
    if (lockFile_.file) {
        error = LockSection(lockFile_.file.Get(), slot_);
    }
    if (error != NO_ERROR) {
        Leave();
    }
    return error;
}

DWORD ShareMode::Enter(const struct stat& file, DWORD access, DWORD share) {
    const SlotBytes bytes = BytesOf(access, share);
    if (bytes.taken == 0) {
        return NO_ERROR;
    }
    DWORD error = BeginSection(file);
    if (!lockFile_.file) {
        return error;
    }
    const int lockFile = lockFile_.file.Get();
    error = ForEachRun(bytes.excluded, [&](unsigned first, unsigned length) {
        struct flock lock = LockOf(F_WRLCK, slot_ + first, length);
        return FindLock(lockFile, lock) ? ERROR_SHARING_VIOLATION : NO_ERROR;
    });
    if (error == NO_ERROR) {
        error = ForEachRun(bytes.taken, [&](unsigned first, unsigned length) {
            return SetLock(lockFile, F_RDLCK, slot_ + first, length);
        });
    }
    SetLock(lockFile, F_UNLCK, slot_ + kSection, 1);
    if (error != NO_ERROR) {
        Leave();
    }
    return error;
}

DWORD ShareMode::EnterToDelete(const struct stat& file) {
    const DWORD error = BeginSection(file);
    if (!lockFile_.file) {
        return error;
    }
    struct flock lock = LockOf(F_WRLCK, slot_ + kDeniesDelete, 1);
    if (FindLock(lockFile_.file.Get(), lock)) {
        Leave();
        return ERROR_SHARING_VIOLATION;
    }
    // The section ends with Leave.
    return NO_ERROR;
}

DWORD ShareMode::LockVolume(const struct stat& root) {
    const DWORD opened = OpenLockFile(root);
    if (!lockFile_.file) {
        return opened;
    }
    if (SetLock(lockFile_.file.Get(), F_WRLCK, slot_ + kVolumeLock, 1) != NO_ERROR) {
        Leave();
        return ERROR_ACCESS_DENIED;
    }
    return NO_ERROR;
}

void ShareMode::Leave() {
    if (lockFile_.file && lockFile_.owner == getpid()) {
        SetLock(lockFile_.file.Get(), F_UNLCK, slot_, kSlotSize);
        Spare().Keep(std::move(lockFile_));
    }
    lockFile_.file.Close();
}

namespace {

using Slots = std::unordered_set<off_t>;

bool Covers(const struct flock& lock, unsigned byte) {
    const off_t first = lock.l_start % kSlotSize;
    return first <= byte && byte < first + lock.l_len;
}

bool Counts(const struct flock& lock, OpenFiles which) {
    return which == OpenFiles::kDenyingDeletion
               ? Covers(lock, kDeniesDelete)
               : Covers(lock, kReads) || Covers(lock, kWrites) || Covers(lock, kDeletes);
}

// The host reports one lock of a range, and not the first: what is left on either side of it is
// looked at in turn.
Slots OpenSlotsOf(dev_t device, OpenFiles which) {
    Slots slots;
    const ScopedDescriptor lockFile = OpenPath(LockFilePath(device), 0);
    if (!lockFile) {
        return slots;
    }
    std::vector<std::pair<off_t, off_t>> ranges = {{0, INT64_MAX}};
    while (!ranges.empty()) {
        const auto [first, last] = ranges.back();
        ranges.pop_back();
        // A length of 0 reaches to the end.
        struct flock lock = LockOf(F_WRLCK, first, last == INT64_MAX ? 0 : last - first + 1);
        if (!FindLock(lockFile.Get(), lock) || lock.l_len == 0) {
            continue;
        }
        if (Counts(lock, which)) {
            slots.insert(lock.l_start - lock.l_start % kSlotSize);
        }
        if (lock.l_start > first) {
            ranges.emplace_back(first, lock.l_start - 1);
        }
        const off_t end = lock.l_start + (lock.l_len - 1);
        if (end < last) {
            ranges.emplace_back(end + 1, last);
        }
    }
    return slots;
}

// Null for what is no folder of the device itself.
ScopedFolder OpenFolder(const std::string& path, int flags, dev_t device) {
    ScopedDescriptor folder = OpenDescriptor(path, O_RDONLY | O_DIRECTORY | O_NONBLOCK | flags);
    struct stat status;
    if (!folder || fstat(folder.Get(), &status) != 0 || status.st_dev != device) {
        return nullptr;
    }
    ScopedFolder listing(fdopendir(folder.Get()));
    if (listing) {
        folder.Release();
    }
    return listing;
}

}  // namespace

bool AnyOpenBelow(const std::string& folder, OpenFiles which) {
    struct stat status;
    if (stat(folder.c_str(), &status) != 0) {
        return false;
    }
    const dev_t device = status.st_dev;
    const Slots slots = OpenSlotsOf(device, which);
    std::vector<std::string> folders;
    if (!slots.empty()) {
        folders.push_back(folder);
    }
    while (!folders.empty()) {
        const std::string path = std::move(folders.back());
        folders.pop_back();
        const ScopedFolder listing =
            OpenFolder(path, path.size() == folder.size() ? 0 : O_NOFOLLOW, device);
        while (const dirent* entry = listing ? readdir(listing.get()) : nullptr) {
            const std::string_view name = entry->d_name;
            if (name == "." || name == "..") {
                continue;
            }
            if (slots.contains(SlotOf(entry->d_ino))) {
                return true;
            }
            if (entry->d_type == DT_DIR || entry->d_type == DT_UNKNOWN) {
                folders.push_back(path + '/' + entry->d_name);
            }
        }
    }
    return false;
}

}  // namespace brevik::platform
