// What is done with an open file through its handle.

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <optional>

#include "platform/files.h"
#include "platform/posix/file_attributes.h"
#include "platform/posix/host_errors.h"
#include "platform/posix/host_times.h"
#include "platform/posix/interrupted.h"
#include "platform/posix/open_file.h"

namespace brevik::platform {
namespace {

BOOL Answer(DWORD error) {
    if (error != NO_ERROR) {
        SetLastError(error);
    }
    return error == NO_ERROR;
}

// The file of the handle if it was opened for this; else null with the last error.
std::shared_ptr<OpenFile> FindForReading(HANDLE handle) {
    std::shared_ptr<OpenFile> file = FindOpenFile(handle);
    if (file && !file->CanRead()) {
        SetLastError(ERROR_ACCESS_DENIED);
        return nullptr;
    }
    return file;
}

std::shared_ptr<OpenFile> FindForWriting(HANDLE handle) {
    std::shared_ptr<OpenFile> file = FindOpenFile(handle);
    if (file && !file->CanWrite()) {
        SetLastError(ERROR_ACCESS_DENIED);
        return nullptr;
    }
    return file;
}

// Gives a 64-bit number in two halves, and success as the last error: the low half alone does not
// tell it from a failure.
DWORD GiveHalves(std::int64_t number, DWORD* high) {
    if (high != nullptr) {
        *high = static_cast<DWORD>(number >> 32);
    }
    SetLastError(NO_ERROR);
    return static_cast<DWORD>(number);
}

// No time, and the two that the system takes for "leave it".
bool IsToSet(const FILETIME* time) {
    return time != nullptr && CountOf(*time) != 0 && CountOf(*time) != UINT64_MAX;
}

bool IsValid(const FILETIME* time) {
    return !IsToSet(time) || CountOf(*time) <= INT64_MAX;
}

timespec HostTimeOrOmitted(const FILETIME* time) {
    return IsToSet(time) ? HostTimeFromFileTime(*time) : timespec{0, UTIME_OMIT};
}

}  // namespace

BOOL ReadFile(HANDLE handle, void* buffer, DWORD count, DWORD* done, OVERLAPPED*) {
    DWORD ignored = 0;
    DWORD& read = done != nullptr ? *done : ignored;
    read = 0;
    const std::shared_ptr<OpenFile> file = FindForReading(handle);
    return file && Answer(file->Read(buffer, count, &read));
}

BOOL WriteFile(HANDLE handle, const void* buffer, DWORD count, DWORD* done, OVERLAPPED*) {
    DWORD ignored = 0;
    DWORD& written = done != nullptr ? *done : ignored;
    written = 0;
    const std::shared_ptr<OpenFile> file = FindForWriting(handle);
    return file && Answer(file->Write(buffer, count, &written));
}

BOOL FlushFileBuffers(HANDLE handle) {
    const std::shared_ptr<OpenFile> file = FindForWriting(handle);
    if (!file) {
        return FALSE;
    }
    // What has nothing to flush, as the null device, says so in these words.
    const bool flushed = Uninterrupted([&] { return fsync(file->Descriptor()); }) == 0 ||
                         errno == EINVAL || errno == EROFS;
    return Answer(flushed ? NO_ERROR : ErrorFromHost(errno));
}

DWORD GetFileSize(HANDLE handle, DWORD* high) {
    const std::shared_ptr<OpenFile> file = FindOpenFile(handle);
    std::int64_t size = 0;
    if (!file || !Answer(file->Size(&size))) {
        return INVALID_FILE_SIZE;
    }
    return GiveHalves(size, high);
}

DWORD SetFilePointer(HANDLE handle, LONG distance, LONG* high, DWORD method) {
    const std::shared_ptr<OpenFile> file = FindOpenFile(handle);
    if (!file) {
        return INVALID_SET_FILE_POINTER;
    }
    std::int64_t whole = distance;
    if (high != nullptr) {
        whole = static_cast<std::int64_t>(std::uint64_t{static_cast<DWORD>(*high)} << 32 |
                                          static_cast<DWORD>(distance));
    }
    std::int64_t position = 0;
    if (!Answer(file->Seek(whole, method, high == nullptr, &position))) {
        return INVALID_SET_FILE_POINTER;
    }
    DWORD highHalf = 0;
    const DWORD low = GiveHalves(position, &highHalf);
    if (high != nullptr) {
        *high = static_cast<LONG>(highHalf);
    }
    return low;
}

BOOL SetEndOfFile(HANDLE handle) {
    const std::shared_ptr<OpenFile> file = FindForWriting(handle);
    return file && Answer(file->SetEnd());
}

BOOL SetFileTime(HANDLE handle, const FILETIME* creation, const FILETIME* access,
                 const FILETIME* write) {
    const std::shared_ptr<OpenFile> file = FindForWriting(handle);
    if (!file) {
        return FALSE;
    }
    if (!IsValid(creation) || !IsValid(access) || !IsValid(write)) {
        return Answer(ERROR_INVALID_PARAMETER);
    }
    if (IsToSet(creation)) {
        const DWORD error = SetCreationTime(file->Descriptor(), *creation);
        if (error != NO_ERROR) {
            return Answer(error);
        }
    }
    const timespec times[] = {HostTimeOrOmitted(access), HostTimeOrOmitted(write)};
    const bool set =
        (!IsToSet(access) && !IsToSet(write)) || futimens(file->Descriptor(), times) == 0;
    return Answer(set ? NO_ERROR : ErrorFromHost(errno));
}

}  // namespace brevik::platform
