#include "platform/posix/machine/machine.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/posix/base/environment.h"
#include "platform/posix/base/made_once.h"
#include "platform/posix/base/scoped_descriptor.h"
#include "platform/posix/machine/programs.h"

namespace brevik::platform {
namespace {

constexpr char kSystemMachine[] = "/var/lib/brevikconfig";

// A path at which nothing can ever stand, for a machine whose place is unknown.
constexpr char kNowhere[] = "/dev/null/brevikconfig";

struct MachineFolder {
    std::string_view name;
    bool forEveryUser;  // every user may put things there, and take away only their own
};

// In the order of their making.
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

// With errno 0 where something else stands there.
bool IsFolder(const std::string& path) {
    struct stat status;
    errno = 0;
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

// Throws std::system_error for an error of the host that is none of these: it may pass.
void RequireOneOf(std::initializer_list<int> lasting, int error) {
    if (std::ranges::find(lasting, error) == lasting.end()) {
        throw std::system_error(error, std::generic_category());
    }
}

// Such as EMFILE or ENOSPC may pass.
void RequireLasting(int error) {
    RequireOneOf({0, ENOENT, ENOTDIR, EACCES, EPERM, EROFS, ELOOP, ENAMETOOLONG}, error);
}

struct UserEntry {
    std::string name;
    std::string home;
};

// The effective user's row of the password database. Throws std::system_error when it cannot be
// read at this moment.
std::optional<UserEntry> FindUser() {
    TakeStandardStreams();  // the C library opens files and sockets for it
    std::vector<char> buffer(1024);
    for (;;) {
        passwd row;
        passwd* found = nullptr;
        const int error = getpwuid_r(geteuid(), &row, buffer.data(), buffer.size(), &found);
        if (error == ERANGE && buffer.size() < (1u << 20)) {
            buffer.resize(buffer.size() * 2);
        } else {
            // These say that there is no such row; with another one it could not be looked for.
            RequireOneOf({0, ENOENT, ESRCH}, error);
            return found != nullptr ? std::optional(UserEntry{row.pw_name, row.pw_dir})
                                    : std::nullopt;
        }
    }
}

std::string MakeAbsolute(const char* path) {
    if (*path == '/') {
        return WithoutTrailingSlashes(path);
    }
    const std::unique_ptr<char, decltype(&free)> current(getcwd(nullptr, 0), &free);
    if (!current) {
        RequireLasting(errno);
    }
    if (!current || *current != '/') {
        return kNowhere;
    }
    return WithoutTrailingSlashes(std::string(current.get()) + "/" + path);
}

// Empty when the user has none. Throws as FindUser does.
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
    const std::optional<UserEntry> user = FindUser();
    return user && user->home.starts_with('/')
               ? WithoutTrailingSlashes(user->home) + "/.local/share"
               : std::string();
}

// A privileged program goes by the machine of the user whose program it is, and never by that of
// one who can merely start it.
bool IsUsersProgram() {
    const ProcessRights rights = CurrentRights();
    struct stat program;
    return !rights.isPrivileged ||
           (StatExecutableOf(getpid(), &program) && program.st_uid == rights.user);
}

// The machine of all users has the modes that the documents promise, whatever mask it was made
// under. What a link leads to is no part of the machine.
void SetMode(const std::string& path, bool forEveryUser) {
    struct stat status;
    if (lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) {
        chmod(path.c_str(), forEveryUser ? 01777 : 0755);
    }
}

// Where the machine of this process is, and how what is missing of it is made.
struct MachinePlace {
    std::string folder;
    bool ofSystem = false;
    mode_t mode = 0777;
};

// Throws std::system_error when it cannot be settled at this moment.
MachinePlace FindPlace() {
    if (const char* named = EnvironmentVariable("BREVIK_MACHINE")) {
        return {MakeAbsolute(named)};
    }
    if (IsFolder(kSystemMachine)) {
        return {kSystemMachine, true};
    }
    // One that may be there is not passed over: it would part what the user's programs keep.
    RequireOneOf({0, ENOENT, ENOTDIR}, errno);
    const std::string data = IsUsersProgram() ? OwnDataFolder() : std::string();
    return {data.empty() ? kNowhere : data + "/brevikconfig", false, 0700};
}

// The last folder that is made shows that all of them are.
bool IsComplete(const std::string& folder) {
    return IsFolder(folder + std::string(std::end(kFolders)[-1].name));
}

// Makes what is missing of a machine. Whether all of it is there then.
bool MakeMachine(const MachinePlace& place) {
    if (!MakeFolders(place.folder, place.mode)) {
        return false;
    }
    for (const MachineFolder& folder : kFolders) {
        if (folder.name == "/shares" && symlink("/", (place.folder + "/drives/z").c_str()) != 0 &&
            errno != EEXIST) {
            return false;
        }
        const std::string path = place.folder + std::string(folder.name);
        if (mkdir(path.c_str(), 0777) != 0) {
            if (errno != EEXIST) {
                return false;
            }
        } else if (place.ofSystem) {
            SetMode(path, folder.forEveryUser);
        }
    }
    return true;
}

// Whether a folder is real and the user's or root's.
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

// Empty when it cannot be made. Throws as FindUser does.
std::string MakeUserFolder(const std::string& machine, const std::string& user) {
    std::string path = machine + user;
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

}  // namespace

const Machine& Machine::Current() {
    static constinit MadeOnce<Machine> kept;
    if (const Machine* machine = kept.Find()) {
        return *machine;
    }
    try {
        MachinePlace place = FindPlace();
        const bool exists = IsComplete(place.folder) || MakeMachine(place);
        RequireLasting(exists ? 0 : errno);
        return kept.Keep(Machine(std::move(place.folder), true, exists));
    } catch (const std::system_error&) {
        static constinit MadeOnce<Machine> unknown;
        const Machine* machine = unknown.Find();
        return machine != nullptr ? *machine : unknown.Keep(Machine(kNowhere, false, false));
    }
}

bool Machine::IsMade(std::string* folder) {
    *folder = FindPlace().folder;
    return IsComplete(*folder);
}

void Machine::SetModes() const {
    if (folder_ == kSystemMachine) {
        SetMode(folder_ + "/.", false);  // it may be reached by a link
        for (const MachineFolder& folder : kFolders) {
            SetMode(folder_ + std::string(folder.name), folder.forEveryUser);
        }
    }
}

std::string Machine::UserFolder() const {
    try {
        return IsKnown() ? MakeUserFolder(folder_, "/users/" + LoginName()) : std::string();
    } catch (const std::system_error&) {
        return {};
    }
}

}  // namespace brevik::platform
