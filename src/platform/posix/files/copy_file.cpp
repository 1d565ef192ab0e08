// CopyFileExW.

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <memory>
#include <string>

#include "platform/files.h"
#include "platform/handles.h"
#include "platform/posix/base/file_stamp.h"
#include "platform/posix/base/interrupted.h"
#include "platform/posix/base/last_error.h"
#include "platform/posix/files/file_attributes.h"
#include "platform/posix/files/open_file.h"
#include "platform/posix/paths/paths.h"
#include "platform/threads.h"

namespace brevik::platform {
namespace {

constexpr std::int64_t kChunk = 4 << 20;
constexpr std::int64_t kBlock = 1 << 20;  // where the host does not copy by itself
constexpr DWORD kStream = 1;

// Reports the progress of a copy to a routine, which may end it.
struct Watcher {
    LPPROGRESS_ROUTINE routine;  // may be null
    void* data;
    HANDLE source;
    HANDLE target;
    std::int64_t size;

    // NO_ERROR, or ERROR_REQUEST_ABORTED when the copy is to end.
    DWORD Report(DWORD reason, std::int64_t done) const {
        const LARGE_INTEGER total = {size};
        const LARGE_INTEGER part = {done};
        const bool goesOn =
            routine == nullptr || routine(total, part, total, part, kStream, reason, source, target,
                                          data) == PROGRESS_CONTINUE;
        return goesOn ? NO_ERROR : ERROR_REQUEST_ABORTED;
    }
};

// Copies the contents of one file into another of the same size that is all holes.
class ContentCopy {
  public:
    ContentCopy(int source, int target, const Watcher& watcher)
        : source_(source), target_(target), watcher_(watcher) {
        struct stat status;
        hasHoles_ = fstat(source_, &status) == 0 && status.st_blocks * 512 < watcher_.size;
    }

    // NO_ERROR or why it failed. `done` is how much the source held.
    DWORD Run(std::int64_t* done) {
        for (*done = 0; *done < watcher_.size;) {
            const std::int64_t end = FindChunk(done);
            const std::int64_t count = *done < end ? CopyPart(*done, end - *done) : 0;
            if (count < 0) {
                return ErrorFromHost(errno);
            }
            if (count == 0 && *done < end) {
                // Another program has cut the source meanwhile.
                return NO_ERROR;
            }
            *done += count;
            if (const DWORD error = watcher_.Report(CALLBACK_CHUNK_FINISHED, *done);
                error != NO_ERROR) {
                return error;
            }
        }
        return NO_ERROR;
    }

  private:
    // Moves the place past a hole. The result is the end of what is to be copied from there at
    // once.
    std::int64_t FindChunk(std::int64_t* place) const {
        std::int64_t end = watcher_.size;
        if (hasHoles_) {
            const off_t data = lseek(source_, *place, SEEK_DATA);
            const off_t hole = data < 0 ? data : lseek(source_, data, SEEK_HOLE);
            if (hole >= 0) {
                *place = std::min<std::int64_t>(data, end);
                end = std::min<std::int64_t>(hole, end);
            } else if (errno == ENXIO) {
                *place = end;
            }
        }
        return std::min(end, *place + kChunk);
    }

    // How much was copied, 0 at the end of the source; negative with errno on failure.
    std::int64_t CopyPart(std::int64_t place, std::int64_t count) {
        if (hostCopies_) {
            off_t from = place;
            off_t to = place;
            const ssize_t done = Uninterrupted([&] {
                return copy_file_range(source_, &from, target_, &to,
                                       static_cast<std::size_t>(count), 0);
            });
            if (done > 0) {
                return done;
            }
            // Hosts refuse files of two kinds in many ways, or copy nothing. If this is a failure
            // of the disk or the end of the source, the blocks meet it as well.
            hostCopies_ = false;
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
    bool hasHoles_;
    bool hostCopies_ = true;
    std::unique_ptr<char[]> block_;
};

DWORD CopyContents(const OpenFile& source, OpenFile& target, const Watcher& watcher) {
    if (watcher.size == 0) {
        return NO_ERROR;
    }
    const HeldSignal withinLimit(SIGXFSZ, IsFileSizeLimited());
    // First, so that a disk without the room refuses before the work.
    DWORD error = target.SetSize(watcher.size);
    std::int64_t done = 0;
    if (error == NO_ERROR) {
        error = ContentCopy(source.Descriptor(), target.Descriptor(), watcher).Run(&done);
    }
    return error == NO_ERROR && done < watcher.size ? target.SetSize(done) : error;
}

// A copy is open only to those that the source is open to, and a program stays one.
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
        IsSameFile(opened, named)) {
        unlink(path.c_str());
    }
}

}  // namespace

BOOL CopyFileExW(const WCHAR* from, const WCHAR* to, LPPROGRESS_ROUTINE progress, void* data, BOOL*,
                 DWORD) {
    const ScopedHandle source(CreateFileW(from, GENERIC_READ, FILE_SHARE_READ, nullptr,
                                          OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!source) {
        return FALSE;
    }
    const std::shared_ptr<OpenFile> sourceFile = FindOpenFile(source.Get());
    struct stat status;
    if (fstat(sourceFile->Descriptor(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return Fail(ERROR_ACCESS_DENIED);
    }
    const ScopedHandle target(
        CreateFileW(to, GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!target) {
        return FALSE;
    }
    const std::shared_ptr<OpenFile> targetFile = FindOpenFile(target.Get());
    const std::string targetPath = FindFile(PlaceOf(to)).path;
    LimitPermissions(status, *targetFile);
    const Watcher watcher = {progress, data, source.Get(), target.Get(), status.st_size};
    DWORD error = watcher.Report(CALLBACK_STREAM_SWITCH, 0);
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
