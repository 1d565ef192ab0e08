#include "platform/posix/machine.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/posix/environment.h"
#include "platform/posix/made_once.h"

namespace brevik::platform {
namespace {

constexpr char kSystemMachine[] = "/var/lib/brevikconfig";

// A path at which nothing can ever stand, for a machine whose place cannot be told.
constexpr char kNowhere[] = "/dev/null/brevikconfig";

struct MachineFolder {
    std::string_view name;
    bool forEveryUser;  // every user may put things there, and nobody may take away another's
};

// In the order of their making. The last one tells that a machine is complete.
constexpr MachineFolder kFolders[] = {
    {"/drives", false},
    {"/drives/c", false},
    {"/drives/c/ProgramData", true},
    {"/drives/c/Program Files", false},
    {"/drives/c/Program Files/Common Files", false},
    {"/drives/c/Windows", false},
    {"/drives/c/Windows/System32", false},
    {"/drives/c/Windows/Temp", true},
    {"/shares", false},
    {"/locks", true},
    {"/users", true},
};

bool IsFolder(const std::string& path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

// Makes a folder and those above it that are missing. Others may be making them at the same time.
bool MakeFolders(const std::string& path, mode_t mode) {
    if (mkdir(path.c_str(), mode) == 0 || errno == EEXIST) {
        return true;
    }
    const std::size_t slash = path.rfind('/');
    if (errno != ENOENT || slash == std::string::npos || slash == 0) {
        return false;
    }
    return MakeFolders(path.substr(0, slash), mode) &&
           (mkdir(path.c_str(), mode) == 0 || errno == EEXIST);
}

std::string WithoutTrailingSlashes(std::string path) {
    while (path.size() > 1 && path.back() == '/') {
        path.pop_back();
    }
    return path;
}

struct UserEntry {
    std::string name;
    std::string home;
};

// Whether a failing look-up may succeed later; any other means that there is no such row.
bool IsPassing(int error) {
    return error == EINTR || error == EIO || error == EMFILE || error == ENFILE || error == ENOMEM;
}

// The effective user's row of the password database. Throws std::system_error when it cannot be
// read at this moment.
std::optional<UserEntry> FindUser() {
    std::vector<char> buffer(1024);
    for (;;) {
        passwd row;
        passwd* found = nullptr;
        const int error = getpwuid_r(geteuid(), &row, buffer.data(), buffer.size(), &found);
        if (error == ERANGE && buffer.size() < (1u << 20)) {
            buffer.resize(buffer.size() * 2);
        } else if (error == 0 && found != nullptr) {
            return UserEntry{row.pw_name, row.pw_dir};
        } else if (IsPassing(error)) {
            throw std::system_error(error, std::generic_category());
        } else {
            return std::nullopt;
        }
    }
}

std::string MakeAbsolute(const char* path) {
    if (*path == '/') {
        return WithoutTrailingSlashes(path);
    }
    const std::unique_ptr<char, decltype(&free)> current(getcwd(nullptr, 0), &free);
    if (!current || *current != '/') {
        return kNowhere;
    }
    return WithoutTrailingSlashes(std::string(current.get()) + "/" + path);
}

std::string OwnDataFolder() {
    // A relative folder here is none: it would be another one in each folder that becomes current.
    const char* data = EnvironmentVariable("XDG_DATA_HOME");
    if (data != nullptr && *data == '/') {
        return WithoutTrailingSlashes(data);
    }
    const char* home = EnvironmentVariable("HOME");
    if (home != nullptr && *home == '/') {
        return WithoutTrailingSlashes(home) + "/.local/share";
    }
    try {
        const std::optional<UserEntry> user = FindUser();
        if (user && user->home.starts_with('/')) {
            return WithoutTrailingSlashes(user->home) + "/.local/share";
        }
    } catch (const std::system_error&) {
    }
    return {};
}

// The machine of all users is theirs, whatever mask works on it. Rights that a folder has stay, and
// what is behind a link is no part of the machine.
void LetEveryUserIn(const std::string& path, bool forEveryUser) {
    struct stat status;
    if (lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) {
        chmod(path.c_str(), (status.st_mode & 07777) | (forEveryUser ? 01777 : 0755));
    }
}

// Makes what is missing of a machine. Whether all of it is there then.
bool MakeMachine(const std::string& root, bool ofSystem, mode_t mode) {
    if (!MakeFolders(root, mode)) {
        return false;
    }
    for (const MachineFolder& folder : kFolders) {
        if (folder.name == "/shares" && symlink("/", (root + "/drives/z").c_str()) != 0 &&
            errno != EEXIST) {
            return false;
        }
        const std::string path = root + std::string(folder.name);
        if (mkdir(path.c_str(), 0777) != 0) {
            if (errno != EEXIST) {
                return false;
            }
        } else if (ofSystem) {
            LetEveryUserIn(path, folder.forEveryUser);
        }
    }
    return true;
}

// Where the machine of this process is, and how what is missing of it is made.
struct MachinePlace {
    std::string folder;
    bool ofSystem = false;
    mode_t mode = 0777;
};

MachinePlace FindPlace() {
    if (const char* named = EnvironmentVariable("BREVIK_MACHINE")) {
        return {MakeAbsolute(named)};
    }
    if (IsFolder(kSystemMachine)) {
        return {kSystemMachine, true};
    }
    const std::string data = OwnDataFolder();
    return {data.empty() ? kNowhere : data + "/brevikconfig", false, 0700};
}

bool IsComplete(const std::string& folder) {
    return IsFolder(folder + std::string(std::end(kFolders)[-1].name));
}

// Whether a folder is real and nobody's but the user's or root's.
bool IsOwnFolder(const struct stat& status) {
    return S_ISDIR(status.st_mode) && (status.st_uid == geteuid() || status.st_uid == 0);
}

std::string FindLoginName() {
    const std::optional<UserEntry> user = FindUser();
    if (!user || user->name.empty() || user->name.front() == '.' ||
        user->name.find('/') != std::string::npos) {
        return std::to_string(geteuid());
    }
    return user->name;
}

// Throws as FindUser does, and is then asked anew: a number in the name's place would part the
// user's cookies.
const std::string& LoginName() {
    static constinit MadeOnce<std::string> kept;
    const std::string* login = kept.Find();
    return login != nullptr ? *login : kept.Keep(FindLoginName());
}

}  // namespace

const Machine& Machine::Current() {
    static constinit MadeOnce<Machine> kept;
    const Machine* machine = kept.Find();
    return machine != nullptr ? *machine : kept.Keep(Machine());
}

bool Machine::IsMade(std::string* folder) {
    *folder = FindPlace().folder;
    return IsComplete(*folder);
}

Machine::Machine() {
    MachinePlace place = FindPlace();
    exists_ = IsComplete(place.folder) || MakeMachine(place.folder, place.ofSystem, place.mode);
    folder_ = std::move(place.folder);
}

void Machine::SetModes() const {
    if (folder_ == kSystemMachine) {
        LetEveryUserIn(folder_ + "/.", false);  // it may be reached by a link
        for (const MachineFolder& folder : kFolders) {
            LetEveryUserIn(folder_ + std::string(folder.name), folder.forEveryUser);
        }
    }
}

std::string Machine::UserFolder() const {
    std::string user = "/users/";
    try {
        user += LoginName();
    } catch (const std::system_error&) {
        return {};
    }
    std::string path = folder_ + user;
    mkdir(path.c_str(), 0700);
    struct stat status;
    if (lstat(path.c_str(), &status) != 0) {
        return {};
    }
    if (IsOwnFolder(status)) {
        return path;
    }
    // Where every user may make folders, another one was first with this name.
    const std::string data = OwnDataFolder();
    path = data + "/brevikconfig" + user;
    const bool isThere =
        !data.empty() && MakeFolders(path, 0700) && lstat(path.c_str(), &status) == 0;
    return isThere && IsOwnFolder(status) ? path : std::string();
}

}  // namespace brevik::platform
