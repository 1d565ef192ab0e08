// Share modes: what the handles on one file let each other do, between all processes.
//
// An opening conflicts with a handle that is open on the same file when both have some access of
// read, write or delete, and the access of one is not covered by the share mode of the other.
// Deleting and renaming count as openings with delete access and all sharing while they last.
//
// Each handle holds byte range locks of its own open description (F_OFD_SETLK), which vanish with
// the process, on a file in the machine's folder "locks": the file itself may be read-only or on a
// file system without locks, and other programs must find it free. There is a lock file for each
// device, with eight bytes for each file's number:
//  - One byte stands for each access that some handle has, one for each that some handle denies.
//    A handle read-locks its bytes; it conflicts with a lock on the byte of an access that it
//    denies, or on that of the denial of an access that it wants.
//  - Looking and locking, deleting and renaming happen under a write lock on a further byte, which
//    is waited for two seconds at most.
//  - A forked child inherits the descriptions, so closing one does not unlock: leaving unlocks
//    explicitly, for all copies, and only in the process that entered.
// Where no lock file can be used, share modes are not enforced, and files open all the same.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <string>

#include "platform/errors.h"
#include "platform/posix/base/scoped_descriptor.h"
#include "platform/types.h"

namespace brevik::platform {

// An open description of a lock file, and what it is for.
struct LockFile {
    ScopedDescriptor file;
    pid_t owner = 0;       // the process that opened it
    dev_t device = 0;      // of the files that are locked with it
    struct stat own = {};  // of the lock file itself
};

// What one handle holds. For one thread at a time.
//
// REQUIRES: the file exists until Leave, so that no other one gets its number.
class PLATFORM_API ShareMode {
  public:
    ShareMode() = default;
    ShareMode(ShareMode&&) noexcept = default;
    ~ShareMode() { Leave(); }

    // Each of these REQUIRES that nothing has been entered, and returns NO_ERROR, or an error where
    // the host has no further descriptors or memory, or as said.

    // Enters for a handle with this access and share mode; ERROR_SHARING_VIOLATION for a conflict.
    DWORD Enter(const struct stat& file, DWORD access, DWORD share);

    // The same with delete access and all sharing. Until Leave no other opening can enter, and
    // waits: for the moment that deleting or renaming takes.
    DWORD EnterToDelete(const struct stat& file);

    // Takes the one lock of the volume with this root folder; ERROR_ACCESS_DENIED when another
    // handle has it.
    DWORD LockVolume(const struct stat& root);

    void Leave();

  private:
    // Without a lock file there is nothing to enforce, and nothing is entered.
    DWORD OpenLockFile(const struct stat& file);
    DWORD BeginSection(const struct stat& file);

    LockFile lockFile_;
    off_t slot_ = 0;
};

// Which open files count.
enum class OpenFiles {
    kAll,             // with some access of read, write or delete
    kDenyingDeletion  // those that do not share deletion
};

// Whether some handle of any process is open on a file or folder below `folder` and on its device.
// Reads the tree only when some file of the device is open.
PLATFORM_API bool AnyOpenBelow(const std::string& folder, OpenFiles which);

}  // namespace brevik::platform
