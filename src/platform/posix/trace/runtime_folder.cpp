#include "platform/posix/trace/runtime_folder.h"

#include <sys/socket.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string_view>

#include "platform/posix/base/environment.h"
#include "platform/posix/machine/machine.h"

namespace brevik::platform {
namespace {

std::string SessionFolder() {
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
    // One machine has one name, however its folder is spelled.
    const std::string& folder = Machine::Current().Folder();
    const std::unique_ptr<char, decltype(&free)> real(realpath(folder.c_str(), nullptr), &free);
    std::uint64_t digest = kFnvOffset;
    for (; *windowClass != 0; ++windowClass) {
        digest = (digest ^ static_cast<std::uint16_t>(*windowClass)) * kFnvPrime;
    }
    for (const char byte : std::string_view(real ? real.get() : folder.c_str())) {
        digest = (digest ^ static_cast<unsigned char>(byte)) * kFnvPrime;
    }
    SocketName name = {};
    std::snprintf(name.data(), name.size(), "viewer-%016llx",
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

std::vector<std::string> RuntimeFolderPaths() {
    std::vector<std::string> paths = {SessionFolder()};
    const char* home = EnvironmentVariable("HOME");
    if (home != nullptr && *home == '/') {
        paths.push_back(std::string(home) + "/.brevikconfig");
    }
    return paths;
}

RuntimeFolder OpenRuntimeFolder(const std::string& path, bool make) {
    RuntimeFolder folder;
    folder.path = path;
    if (make && mkdir(folder.path.c_str(), S_IRWXU) != 0 && errno != EEXIST) {
        folder.refusal = "the folder " + folder.path + " cannot be made: " + std::strerror(errno) +
                         "; let XDG_RUNTIME_DIR name a folder of yours";
        return folder;
    }
    ScopedDescriptor opened = OpenDescriptor(folder.path, O_PATH | O_DIRECTORY | O_NOFOLLOW);
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
