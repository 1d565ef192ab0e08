// CopyFileExW.

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <iterator>
#include <memory>
#include <string>

#include "platform/files.h"
#include "platform/posix/file_attributes.h"
#include "platform/posix/held_signal.h"
#include "platform/posix/host_errors.h"
#include "platform/posix/interrupted.h"
#include "platform/posix/open_file.h"
#include "platform/posix/paths.h"
#include "platform/posix/scoped_handle.h"

namespace brevik::platform {
namespace {

constexpr std::int64_t kChunk = 4 << 20;
constexpr std::int64_t kBlock = 1 << 20;  // where the host does not copy by itself
constexpr DWORD kStream = 1;

// Whoever watches a copy and may end it.
struct Watcher {
    LPPROGRESS_ROUTINE routine;
    void* data;
    BOOL* cancel;
    HANDLE source;
    HANDLE target;
    std::int64_t size;

    bool HasCancelled() const {
        return cancel != nullptr && std::atomic_ref<BOOL>(*cancel).load() != FALSE;
    }

    // 0, or 1235 when the copy is to end.
    DWORD Tell(DWORD reason, std::int64_t done) const {
        const LARGE_INTEGER total = {size};
        const LARGE_INTEGER part = {done};
        if (routine != nullptr && routine(total, part, total, part, kStream, reason, source, target,
                                          data) != PROGRESS_CONTINUE) {
            return ERROR_REQUEST_ABORTED;
        }
        return HasCancelled() ? ERROR_REQUEST_ABORTED : NO_ERROR;
    }
};

// What a host gives that cannot copy between these two files by itself.
bool IsNoWayOfCopying(int hostError) {
    constexpr int kErrors[] = {EXDEV,  EINVAL, ENOSYS, EOPNOTSUPP, EPERM,
                               EACCES, EBADF,  EIO,    ETXTBSY};
    return std::find(std::begin(kErrors), std::end(kErrors), hostError) != std::end(kErrors);
}

// Copies the contents of one file into another of the same size that is all holes.
class ContentCopy {
  public:
    ContentCopy(int source, int target, const Watcher& watcher)
        : source_(source), target_(target), watcher_(watcher) {
        struct stat status;
        hasHoles_ = fstat(source_, &status) == 0 && status.st_blocks * 512 < watcher_.size;
    }

    // 0 or an error number. `done` is how much there was.
    DWORD Run(std::int64_t* done) {
        for (*done = 0; *done < watcher_.size;) {
            const std::int64_t end = FindChunk(done);
            const std::int64_t count = *done < end ? CopyPart(*done, end - *done) : 0;
            if (count < 0) {
                return ErrorFromHost(errno);
            }
            if (count == 0 && *done < end) {
                // Somebody has cut the source since.
                return NO_ERROR;
            }
            *done += count;
            if (const DWORD error = watcher_.Tell(CALLBACK_CHUNK_FINISHED, *done);
                error != NO_ERROR) {
                return error;
            }
        }
        return NO_ERROR;
    }

  private:
    // Moves the place beyond a hole. The end of what is to be copied from there at once.
    std::int64_t FindChunk(std::int64_t* place) {
        std::int64_t end = watcher_.size;
        if (hasHoles_) {
            const off_t data = lseek(source_, *place, SEEK_DATA);
            const off_t hole = data < 0 ? data : lseek(source_, data, SEEK_HOLE);
            if (data < 0 && errno == ENXIO) {
                *place = end;
            } else if (hole < 0) {
                hasHoles_ = false;
            } else {
                *place = std::min<std::int64_t>(data, end);
                end = std::min<std::int64_t>(hole, end);
            }
        }
        return std::min(end, *place + kChunk);
    }

    // How much was copied, 0 at the end of the source; negative with errno on failure.
    std::int64_t CopyPart(std::int64_t place, std::int64_t count) {
        while (hostCopies_) {
            off_t from = place;
            off_t to = place;
            const ssize_t done = Uninterrupted([&] {
                return copy_file_range(source_, &from, target_, &to,
                                       static_cast<std::size_t>(count), 0);
            });
            if (done > 0) {
                return done;
            }
            // Some hosts say so by copying nothing.
            if (done == 0 || IsNoWayOfCopying(errno)) {
                hostCopies_ = false;
            } else {
                return -1;
            }
        }
        return CopyBlock(place, std::min(count, kBlock));
    }

    std::int64_t CopyBlock(std::int64_t place, std::int64_t count) {
        if (!block_) {
            block_ = std::make_unique_for_overwrite<char[]>(kBlock);
        }
        const ssize_t length = Uninterrupted(
            [&] { return pread(source_, block_.get(), static_cast<std::size_t>(count), place); });
        for (ssize_t written = 0; written < length;) {
            const ssize_t part = Uninterrupted([&] {
                return pwrite(target_, block_.get() + written,
                              static_cast<std::size_t>(length - written), place + written);
            });
            if (part < 0) {
                return -1;
            }
            written += part;
        }
        return length;
    }

    int source_;
    int target_;
    const Watcher& watcher_;
    bool hasHoles_ = false;
    bool hostCopies_ = true;
    std::unique_ptr<char[]> block_;
};

DWORD SetSize(HANDLE file, std::int64_t size) {
    LONG high = static_cast<LONG>(size >> 32);
    if (SetFilePointer(file, static_cast<LONG>(size), &high, FILE_BEGIN) ==
            INVALID_SET_FILE_POINTER &&
        GetLastError() != NO_ERROR) {
        return GetLastError();
    }
    return SetEndOfFile(file) ? NO_ERROR : GetLastError();
}

DWORD CopyContents(const OpenFile& source, const OpenFile& target, const Watcher& watcher) {
    if (watcher.size == 0) {
        return NO_ERROR;
    }
    const HeldSignal withinLimit(SIGXFSZ, IsFileSizeLimited());
    // Where the host lets two files share their blocks, that is all there is to do.
    if (ioctl(target.Descriptor(), FICLONE, source.Descriptor()) == 0) {
        return watcher.Tell(CALLBACK_CHUNK_FINISHED, watcher.size);
    }
    // A disk without the room for it refuses ahead of the work.
    DWORD error = SetSize(watcher.target, watcher.size);
    std::int64_t done = 0;
    if (error == NO_ERROR) {
        error = ContentCopy(source.Descriptor(), target.Descriptor(), watcher).Run(&done);
    }
    return error == NO_ERROR && done < watcher.size ? SetSize(watcher.target, done) : error;
}

// Nobody gets at a copy who does not get at the source, and what may be run may be so as a copy.
void LimitPermissions(const struct stat& source, const OpenFile& target) {
    struct stat status;
    if (fstat(target.Descriptor(), &status) == 0) {
        const mode_t readers = status.st_mode & 0444;
        const mode_t mode = source.st_mode & (status.st_mode | readers >> 2) & 0777;
        fchmod(target.Descriptor(), mode | S_IWUSR);
    }
}

// The copy's time of last write and attributes are those of the source.
void Describe(const struct stat& source, const std::string& sourcePath, const OpenFile& target,
              const std::string& targetPath) {
    const timespec times[] = {{0, UTIME_OMIT}, source.st_mtim};
    futimens(target.Descriptor(), times);
    const auto information = ReadFileInformation(sourcePath.c_str());
    const DWORD attributes = information ? information->attributes : 0;
    if (SetHostAttributes(targetPath.c_str(), attributes | FILE_ATTRIBUTE_ARCHIVE) != NO_ERROR) {
        // A file system that cannot keep all of them may keep this one.
        SetHostAttributes(targetPath.c_str(),
                          (attributes & FILE_ATTRIBUTE_READONLY) | FILE_ATTRIBUTE_ARCHIVE);
    }
}

void Remove(const OpenFile& target, const std::string& path) {
    struct stat opened;
    struct stat named;
    if (fstat(target.Descriptor(), &opened) == 0 && lstat(path.c_str(), &named) == 0 &&
        opened.st_dev == named.st_dev && opened.st_ino == named.st_ino) {
        unlink(path.c_str());
    }
}

BOOL Fail(DWORD error) {
    SetLastError(error);
    return FALSE;
}

}  // namespace

BOOL CopyFileExW(const WCHAR* from, const WCHAR* to, LPPROGRESS_ROUTINE progress, void* data,
                 BOOL* cancel, DWORD flags) {
    if (from == nullptr || to == nullptr) {
        return Fail(ERROR_PATH_NOT_FOUND);
    }
    const ScopedHandle source(CreateFileW(from, GENERIC_READ, FILE_SHARE_READ, nullptr,
                                          OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!source.IsOpen()) {
        return FALSE;
    }
    const std::shared_ptr<OpenFile> sourceFile = FindOpenFile(source.Get());
    struct stat status;
    if (fstat(sourceFile->Descriptor(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return Fail(ERROR_ACCESS_DENIED);
    }
    const bool isNew = (flags & COPY_FILE_FAIL_IF_EXISTS) != 0;
    const ScopedHandle target(CreateFileW(to, GENERIC_WRITE, 0, nullptr,
                                          isNew ? CREATE_NEW : CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL,
                                          nullptr));
    if (!target.IsOpen()) {
        return FALSE;
    }
    const bool existed = GetLastError() == ERROR_ALREADY_EXISTS;
    const std::shared_ptr<OpenFile> targetFile = FindOpenFile(target.Get());
    const std::string targetPath = FindFile(PlaceOf(to)).path;
    if (!existed) {
        LimitPermissions(status, *targetFile);
    }
    const Watcher watcher = {progress, data, cancel, source.Get(), target.Get(), status.st_size};
    DWORD error = watcher.Tell(CALLBACK_STREAM_SWITCH, 0);
    if (error == NO_ERROR) {
        error = CopyContents(*sourceFile, *targetFile, watcher);
    }
    if (error != NO_ERROR) {
        Remove(*targetFile, targetPath);
        return Fail(error);
    }
    Describe(status, FindFile(PlaceOf(from)).path, *targetFile, targetPath);
    return TRUE;
}

}  // namespace brevik::platform
