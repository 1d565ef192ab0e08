// MoveFileW.

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <string>

#include "platform/files.h"
#include "platform/posix/base/last_error.h"
#include "platform/posix/files/share_modes.h"
#include "platform/posix/paths/paths.h"

namespace brevik::platform {
namespace {

bool IsThere(const std::string& path) {
    struct stat status;
    return lstat(path.c_str(), &status) == 0;
}

// Renames to a path where nothing stands. 0 or an errno.
int RenameWithoutReplacing(const std::string& from, const std::string& to) {
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
        return 0;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return errno;
    }
    // A file system that does not know the flag. A file made between these two steps is lost, for
    // want of a better way.
    if (IsThere(to)) {
        return EEXIST;
    }
    return std::rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

struct Move {
    HostPlace sourcePlace;
    HostPlace targetPlace;
    HostFile source;
    HostFile target;

    bool IsOfFolder() const { return S_ISDIR(source.status.st_mode); }

    bool LeavesVolume() const {
        return sourcePlace.path.compare(0, sourcePlace.root, targetPlace.path, 0,
                                        targetPlace.root) != 0;
    }

    // The name as it was asked for, in the folder as it is spelled on the disk.
    std::string TargetPath() const {
        return target.path.substr(0, target.path.rfind('/')) +
               targetPlace.path.substr(targetPlace.path.rfind('/'));
    }
};

// Why the move cannot be made; NO_ERROR when it can.
DWORD RefusalOf(const Move& move) {
    if (move.sourcePlace.IsRoot()) {
        return ERROR_ACCESS_DENIED;
    }
    if (move.target.error == NO_ERROR) {
        // The target may be the source, spelled in another case or not.
        return move.target.path == move.source.path ? NO_ERROR : ERROR_ALREADY_EXISTS;
    }
    if (move.IsOfFolder() && move.target.path.starts_with(move.source.path + '/')) {
        return ERROR_SHARING_VIOLATION;
    }
    if (move.target.error != ERROR_FILE_NOT_FOUND) {
        return move.target.error;
    }
    return move.IsOfFolder() && move.LeavesVolume() ? ERROR_NOT_SAME_DEVICE : NO_ERROR;
}

DWORD Rename(const Move& move) {
    const std::string to = move.TargetPath();
    if (move.target.error == NO_ERROR) {
        return ErrorOf(std::rename(move.source.path.c_str(), to.c_str()));
    }
    switch (const int failure = RenameWithoutReplacing(move.source.path, to)) {
        case 0:
            return NO_ERROR;
        case EINVAL:
            // A folder into itself, through a link.
            return ERROR_SHARING_VIOLATION;
        case ENOENT:
            return IsThere(move.source.path) ? ERROR_PATH_NOT_FOUND : ERROR_FILE_NOT_FOUND;
        default:
            return ErrorFromHost(failure);
    }
}

DWORD TryToRename(const Move& move) {
    ShareMode share;
    if (const DWORD error = share.EnterToDelete(move.source.status); error != NO_ERROR) {
        return error;
    }
    if (const DWORD refusal = RefusalOf(move); refusal != NO_ERROR) {
        return refusal;
    }
    if (move.IsOfFolder() && AnyOpenBelow(move.source.path, OpenFiles::kDenyingDeletion)) {
        return ERROR_ACCESS_DENIED;
    }
    return Rename(move);
}

}  // namespace

BOOL MoveFileW(const WCHAR* from, const WCHAR* to) {
    Move move = {PlaceOf(from), PlaceOf(to), {}, {}};
    move.source = FindFile(move.sourcePlace);
    if (!move.source.HasName()) {
        return Fail(move.source.error);
    }
    move.target = FindFile(move.targetPlace);
    return Answer(TryToRename(move));
}

}  // namespace brevik::platform
