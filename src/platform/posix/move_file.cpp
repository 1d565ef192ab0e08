// MoveFileW.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>

#include "platform/files.h"
#include "platform/posix/paths.h"
#include "platform/posix/share_modes.h"

namespace brevik::platform {
namespace {

BOOL Answer(DWORD error) {
    if (error != NO_ERROR) {
        SetLastError(error);
    }
    return error == NO_ERROR;
}

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
    // The file system may not know the flag. What comes between these two steps is lost, for want
    // of a better way.
    if (IsThere(to)) {
        return EEXIST;
    }
    return std::rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

struct Move {
    const WCHAR* from;
    const WCHAR* to;
    HostPlace sourcePlace;
    HostPlace targetPlace;
    HostFile source;
    HostFile target;

    bool IsFolder() const { return S_ISDIR(source.status.st_mode); }
    bool LeavesVolume() const {
        return sourcePlace.path.compare(0, sourcePlace.root, targetPlace.path, 0,
                                        targetPlace.root) != 0;
    }
    bool EntersItself() const { return target.path.starts_with(source.path + '/'); }

    // The name as it was asked for in the folder as it stands on the disk.
    std::string TargetPath() const {
        const std::string& folder = target.path;
        const std::string& name = targetPlace.path;
        return folder.substr(0, folder.rfind('/')) + name.substr(name.rfind('/'));
    }
};

// Copies to the other volume and removes the source. A source that stays then is no failure: the
// file is where it was wanted.
DWORD MoveByCopying(const Move& move) {
    if (!CopyFileExW(move.from, move.to, nullptr, nullptr, nullptr, COPY_FILE_FAIL_IF_EXISTS)) {
        // Copying tells of an existing target in other words than moving.
        return GetLastError() == ERROR_FILE_EXISTS ? ERROR_ALREADY_EXISTS : GetLastError();
    }
    ShareMode share;
    if (share.EnterToDelete(move.source.status) == NO_ERROR) {
        unlink(move.source.path.c_str());
    }
    return NO_ERROR;
}

// Why the move cannot be made; 0 when nothing stands against it.
DWORD RefusalOf(const Move& move) {
    if (move.sourcePlace.IsRoot()) {
        return ERROR_ACCESS_DENIED;
    }
    if (!move.IsFolder() &&
        (move.sourcePlace.trailingSeparator || move.targetPlace.trailingSeparator)) {
        return ERROR_INVALID_NAME;
    }
    if (move.target.error == NO_ERROR) {
        // The target is the source in other letters, or in the same.
        return move.target.path == move.source.path ? NO_ERROR : ERROR_ALREADY_EXISTS;
    }
    if (move.IsFolder() && move.EntersItself()) {
        return ERROR_SHARING_VIOLATION;
    }
    if (move.target.error != ERROR_FILE_NOT_FOUND) {
        return move.target.error;
    }
    return move.IsFolder() && move.LeavesVolume() ? ERROR_NOT_SAME_DEVICE : NO_ERROR;
}

DWORD Rename(const Move& move) {
    const std::string to = move.TargetPath();
    if (move.target.error == NO_ERROR) {
        return to == move.source.path || std::rename(move.source.path.c_str(), to.c_str()) == 0
                   ? NO_ERROR
                   : ErrorFromHost(errno);
    }
    switch (const int failure = RenameWithoutReplacing(move.source.path, to)) {
        case 0:
            return NO_ERROR;
        case EINVAL:
            // A folder into itself, by way of a link.
            return ERROR_SHARING_VIOLATION;
        case ENOENT:
            return IsThere(move.source.path) ? ERROR_PATH_NOT_FOUND : ERROR_FILE_NOT_FOUND;
        default:
            return ErrorFromHost(failure);
    }
}

DWORD MoveFound(const Move& move) {
    {
        ShareMode share;
        if (const DWORD error = share.EnterToDelete(move.source.status); error != NO_ERROR) {
            return error;
        }
        if (const DWORD refusal = RefusalOf(move); refusal != NO_ERROR) {
            return refusal;
        }
        if (move.IsFolder() && AnyOpenBelow(move.source.path, OpenFiles::kDenyingDeletion)) {
            return ERROR_ACCESS_DENIED;
        }
        const DWORD error = Rename(move);
        if (error != ERROR_NOT_SAME_DEVICE || move.IsFolder()) {
            return error;
        }
    }
    return MoveByCopying(move);
}

}  // namespace

BOOL MoveFileW(const WCHAR* from, const WCHAR* to) {
    if (from == nullptr || to == nullptr) {
        return Answer(ERROR_PATH_NOT_FOUND);
    }
    Move move = {from, to, PlaceOf(from), PlaceOf(to), {}, {}};
    move.source = FindFile(move.sourcePlace);
    if (!move.source.HasName()) {
        return Answer(move.source.error);
    }
    move.target = FindFile(move.targetPlace);
    return Answer(MoveFound(move));
}

}  // namespace brevik::platform
