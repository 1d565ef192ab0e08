// What is done with an open file through its handle.

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>

#include "platform/files.h"
#include "platform/posix/base/host_errors.h"
#include "platform/posix/base/last_error.h"
#include "platform/posix/files/file_attributes.h"
#include "platform/posix/files/open_file.h"
#include "platform/posix/time/host_times.h"

namespace brevik::platform {
namespace {

using FilePointer = std::shared_ptr<OpenFile>;

// The file of the handle if it was opened for this; else null with the last error.
FilePointer FindFor(bool (OpenFile::*may)() const, HANDLE handle) {
    FilePointer file = FindOpenFile(handle);
    return file && !(*file.*may)() ? Fail<FilePointer>(ERROR_ACCESS_DENIED) : file;
}

FilePointer FindForWriting(HANDLE handle) {
    return FindFor(&OpenFile::CanWrite, handle);
}

// The low half of a number. NO_ERROR becomes the last error, since a half may look like a failure.
DWORD LowHalf(std::int64_t number) {
    SetLastError(NO_ERROR);
    return static_cast<DWORD>(number);
}

// A time of 0 is left as it is, like none.
bool IsToSet(const FILETIME* time) {
    return time != nullptr && CountOf(*time) != 0;
}

bool IsValid(const FILETIME* time) {
    return time == nullptr || CountOf(*time) <= INT64_MAX;
}

timespec HostTimeOrOmitted(const FILETIME* time) {
    return IsToSet(time) ? HostTimeFromFileTime(*time) : timespec{0, UTIME_OMIT};
}

}  // namespace

BOOL ReadFile(HANDLE handle, void* buffer, DWORD count, DWORD* done, OVERLAPPED*) {
    *done = 0;
    const FilePointer file = FindFor(&OpenFile::CanRead, handle);
    return file && Answer(file->Read(buffer, count, done));
}

BOOL WriteFile(HANDLE handle, const void* buffer, DWORD count, DWORD* done, OVERLAPPED*) {
    *done = 0;
    const FilePointer file = FindForWriting(handle);
    return file && Answer(file->Write(buffer, count, done));
}

BOOL FlushFileBuffers(HANDLE handle) {
    const FilePointer file = FindForWriting(handle);
    if (!file) {
        return FALSE;
    }
    // What has nothing to flush, such as the null device, fails with one of these.
    const bool isFlushed = fsync(file->Descriptor()) == 0 || errno == EINVAL || errno == EROFS;
    return Answer(isFlushed ? NO_ERROR : ErrorFromHost(errno));
}

DWORD GetFileSize(HANDLE handle, DWORD* high) {
    const FilePointer file = FindOpenFile(handle);
    std::int64_t size = 0;
    if (!file || !Answer(file->Size(&size))) {
        return INVALID_FILE_SIZE;
    }
    *high = static_cast<DWORD>(size >> 32);
    return LowHalf(size);
}

DWORD SetFilePointer(HANDLE handle, LONG distance, LONG* high, DWORD method) {
    const FilePointer file = FindOpenFile(handle);
    std::int64_t whole = distance;
    if (high != nullptr) {
        whole = static_cast<std::int64_t>(std::uint64_t{static_cast<DWORD>(*high)} << 32 |
                                          static_cast<DWORD>(distance));
    }
    std::int64_t position = 0;
    if (!file || !Answer(file->Seek(whole, method, &position))) {
        return INVALID_SET_FILE_POINTER;
    }
    if (high != nullptr) {
        *high = static_cast<LONG>(position >> 32);
    }
    return LowHalf(position);
}

BOOL SetEndOfFile(HANDLE handle) {
    const FilePointer file = FindForWriting(handle);
    return file && Answer(file->SetEnd());
}

BOOL SetFileTime(HANDLE handle, const FILETIME* creation, const FILETIME* access,
                 const FILETIME* write) {
    const FilePointer file = FindForWriting(handle);
    if (!file) {
        return FALSE;
    }
    if (!IsValid(creation) || !IsValid(access) || !IsValid(write)) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    if (IsToSet(creation)) {
        if (const DWORD error = SetCreationTime(file->Descriptor(), *creation); error != NO_ERROR) {
            return Fail(error);
        }
    }
    const timespec times[] = {HostTimeOrOmitted(access), HostTimeOrOmitted(write)};
    return Answer(ErrorOf(futimens(file->Descriptor(), times)));
}

}  // namespace brevik::platform
