#include "platform/posix/base/host_errors.h"

#include <algorithm>
#include <cerrno>
#include <iterator>

namespace brevik::platform {
namespace {

struct HostError {
    int host;
    DWORD error;
};

constexpr HostError kHostErrors[] = {
    {ENOENT, ERROR_FILE_NOT_FOUND},
    {ENOTDIR, ERROR_PATH_NOT_FOUND},
    {ELOOP, ERROR_PATH_NOT_FOUND},
    {ENAMETOOLONG, ERROR_INVALID_NAME},
    {EILSEQ, ERROR_INVALID_NAME},
    {EACCES, ERROR_ACCESS_DENIED},
    {EPERM, ERROR_ACCESS_DENIED},
    {EISDIR, ERROR_ACCESS_DENIED},
    {EAGAIN, ERROR_SHARING_VIOLATION},  // a lease of another program is being taken back
    {ETXTBSY, ERROR_SHARING_VIOLATION},
    {EBUSY, ERROR_SHARING_VIOLATION},
    {EROFS, ERROR_WRITE_PROTECT},
    {EEXIST, ERROR_ALREADY_EXISTS},
    {ENOTEMPTY, ERROR_DIR_NOT_EMPTY},
    {EXDEV, ERROR_NOT_SAME_DEVICE},
    {EMFILE, ERROR_TOO_MANY_OPEN_FILES},
    {ENFILE, ERROR_TOO_MANY_OPEN_FILES},
    {ENOMEM, ERROR_NOT_ENOUGH_MEMORY},
    {ENOSPC, ERROR_DISK_FULL},
    {EDQUOT, ERROR_DISK_FULL},
    {EFBIG, ERROR_DISK_FULL},
    {EMLINK, ERROR_DISK_FULL},  // a folder that can hold no further folders
    {EBADF, ERROR_INVALID_HANDLE},
    {EINVAL, ERROR_INVALID_PARAMETER},
    {EFAULT, ERROR_INVALID_PARAMETER},
    {EOPNOTSUPP, ERROR_NOT_SUPPORTED},
    {ENOSYS, ERROR_NOT_SUPPORTED},
    {ENODEV, ERROR_NOT_READY},
    {ENXIO, ERROR_NOT_READY},
    {ENOMEDIUM, ERROR_NO_MEDIA_IN_DRIVE},
    {EMEDIUMTYPE, ERROR_UNRECOGNIZED_MEDIA},
    {ENETUNREACH, ERROR_NETWORK_UNREACHABLE},
    {ENETDOWN, ERROR_NETWORK_UNREACHABLE},
    {EHOSTUNREACH, ERROR_NETWORK_UNREACHABLE},
    {EHOSTDOWN, ERROR_NETWORK_UNREACHABLE},
    {ENOTCONN, ERROR_NETWORK_UNREACHABLE},
    {ETIMEDOUT, ERROR_NETWORK_UNREACHABLE},
};

}  // namespace

DWORD ErrorFromHost(int hostError) {
    const auto row = std::find_if(std::begin(kHostErrors), std::end(kHostErrors),
                                  [=](const HostError& entry) { return entry.host == hostError; });
    return row == std::end(kHostErrors) ? ERROR_GEN_FAILURE : row->error;
}

}  // namespace brevik::platform
