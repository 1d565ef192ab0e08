#include "brevikctl/files/host_bytes.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <system_error>

#include "brevikctl/output/terminal.h"
#include "platform/posix/base/scoped_descriptor.h"

namespace {

[[noreturn]] void FailOfSystem(int error, const std::string& hostPath) {
    throw std::system_error(error, std::generic_category(), Quoted(hostPath));
}

}  // namespace

std::string ReadHostBytes(const std::string& hostPath, std::size_t limit) {
    const ScopedDescriptor file(OpenDescriptor(hostPath, O_RDONLY | O_NONBLOCK | O_NOCTTY));
    struct stat status;
    if (!file || fstat(file.Get(), &status) != 0) {
        FailOfSystem(errno, hostPath);
    }
    if (!S_ISREG(status.st_mode)) {
        FailOfSystem(S_ISDIR(status.st_mode) ? EISDIR : EINVAL, hostPath);
    }
    std::string bytes;
    char block[65536];
    while (bytes.size() <= limit) {
        const ssize_t count = read(file.Get(), block, sizeof block);
        if (count < 0) {
            FailOfSystem(errno, hostPath);
        }
        if (count == 0) {
            break;
        }
        bytes.append(block, static_cast<std::size_t>(count));
    }
    return bytes;
}

void WriteHostBytes(const std::string& hostPath, const std::string& bytes) {
    std::string scratch = hostPath + ".XXXXXX";
    const ScopedDescriptor file(mkostemp(scratch.data(), O_CLOEXEC));
    if (!file || !WriteText(file.Get(), bytes) || fchmod(file.Get(), 0644) != 0 ||
        std::rename(scratch.c_str(), hostPath.c_str()) != 0) {
        const int error = errno;
        if (file) {
            unlink(scratch.c_str());
        }
        FailOfSystem(error, hostPath);
    }
}

void MakePrivateFile(const std::string& hostPath, const std::string& bytes) {
    const ScopedDescriptor file(
        OpenDescriptor(hostPath, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0600));
    if (!file || !WriteText(file.Get(), bytes)) {
        const int error = errno;
        if (file) {
            unlink(hostPath.c_str());
        }
        FailOfSystem(error, hostPath);
    }
}
