#include "platform/posix/runtime_folder.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "platform/posix/environment.h"

namespace brevik::platform {
namespace {

constexpr std::size_t kReadablePart = 32;

constexpr bool IsHarmless(char16_t unit) {
    return (unit >= u'a' && unit <= u'z') || (unit >= u'0' && unit <= u'9') || unit == u'.';
}

std::string FolderPath() {
    const char* session = EnvironmentVariable("XDG_RUNTIME_DIR");
    if (session != nullptr && *session == '/') {
        return std::string(session) + "/brevikconfig";
    }
    const std::string user = std::to_string(geteuid());
    const std::string usual = "/run/user/" + user;
    struct stat status;
    if (lstat(usual.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
        status.st_uid == geteuid()) {
        return usual + "/brevikconfig";
    }
    return "/tmp/brevikconfig-" + user;
}

// Why a folder cannot be trusted; empty when it can.
std::string RefusalOf(const std::string& path, const ScopedDescriptor& folder) {
    struct stat status;
    if (fstat(folder.Get(), &status) != 0) {
        return "the folder " + path + " cannot be read: " + std::strerror(errno);
    }
    if (status.st_uid != geteuid()) {
        return "the folder " + path + " belongs to another user; remove it";
    }
    if ((status.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
        return "the folder " + path + " is open to others; run: chmod 700 " + path;
    }
    return {};
}

}  // namespace

SocketName SocketNameOf(const WCHAR* windowClass) {
    constexpr std::uint64_t kFnvOffset = 0xCBF29CE484222325;
    constexpr std::uint64_t kFnvPrime = 0x100000001B3;
    char readable[kReadablePart + 1] = {};
    std::uint64_t digest = kFnvOffset;
    for (std::size_t i = 0; windowClass[i] != 0; ++i) {
        const bool upper = windowClass[i] >= u'A' && windowClass[i] <= u'Z';
        const auto unit = static_cast<char16_t>(windowClass[i] + (upper ? u'a' - u'A' : 0));
        digest = (digest ^ (unit & 0xFF)) * kFnvPrime;
        digest = (digest ^ (unit >> 8)) * kFnvPrime;
        if (i < kReadablePart) {
            readable[i] = IsHarmless(unit) ? static_cast<char>(unit) : '_';
        }
    }
    SocketName name = {};
    std::snprintf(name.data(), name.size(), "%s-%016llx", readable,
                  static_cast<unsigned long long>(digest));
    return name;
}

sockaddr_un RuntimeFolder::Address(const SocketName& name) const {
    // Through the open folder: an address holds few characters, and the folder that was checked is
    // the one that is used.
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::snprintf(address.sun_path, sizeof address.sun_path, "/proc/self/fd/%d/%s",
                  descriptor.Get(), name.data());
    return address;
}

RuntimeFolder OpenRuntimeFolder(bool make) {
    RuntimeFolder folder;
    folder.path = FolderPath();
    if (make && mkdir(folder.path.c_str(), S_IRWXU) != 0 && errno != EEXIST) {
        folder.refusal = "the folder " + folder.path + " cannot be made: " + std::strerror(errno) +
                         "; let XDG_RUNTIME_DIR name a folder of yours";
        return folder;
    }
    ScopedDescriptor opened(
        open(folder.path.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!opened) {
        folder.refusal = "the folder " + folder.path +
                         (errno == ENOTDIR || errno == ELOOP
                              ? " is a link or a file; remove it"
                              : std::string(" cannot be opened: ") + std::strerror(errno));
        return folder;
    }
    folder.refusal = RefusalOf(folder.path, opened);
    if (folder.refusal.empty()) {
        folder.descriptor = std::move(opened);
    }
    return folder;
}

}  // namespace brevik::platform
