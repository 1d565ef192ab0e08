#include "platform/posix/modules/file_search.h"

#include <sys/stat.h>
#include <unistd.h>

#include <optional>
#include <sstream>

#include "platform/folders.h"
#include "platform/modules.h"
#include "platform/posix/base/environment.h"
#include "platform/posix/base/file_stamp.h"
#include "platform/posix/base/last_error.h"
#include "platform/posix/machine/programs.h"
#include "platform/posix/paths/folder_index.h"
#include "platform/posix/paths/paths.h"
#include "platform/posix/text/host_text.h"
#include "platform/posix/text/text_buffer.h"

namespace brevik::platform {
namespace {

bool IsRegularFile(const std::string& path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

bool IsAt(const std::string& path, const struct stat& file) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 && IsSameFile(status, file);
}

// Path of the regular file of this name in a folder whose status stat has just read; else empty.
std::string FindIn(const std::string& folder, const struct stat& status, const FoldedName& name) {
    const std::optional<std::string> found = FindName(folder, status, name).name;
    if (!found) {
        return {};
    }
    std::string path = folder + '/' + *found;
    return IsRegularFile(path) ? path : std::string();
}

std::string FindIn(const std::string& folder, const FoldedName& name) {
    struct stat status;
    return stat(folder.c_str(), &status) == 0 ? FindIn(folder, status, name) : std::string();
}

// Path of the host's folder; empty where it cannot be had, and in a privileged process where other
// users can change what lies there.
std::string HostFolder() {
    const std::string host = ExecutableOf(getpid());
    std::string folder = host.substr(0, host.rfind('/') + 1);
    struct stat program;
    const bool isTaken =
        !folder.empty() && (!CurrentRights().isPrivileged ||
                            (StatExecutableOf(getpid(), &program) &&
                             MayHoldLibraries(folder.substr(0, folder.size() - 1), program)));
    return isTaken ? folder : std::string();
}

std::string FindInSystemFolders(const FoldedName& name) {
    std::string found;
    for (const auto* path : {u"C:\\Windows\\System32", u"C:\\Windows"}) {
        const HostFile folder = FindFile(PlaceOf(path));
        if (found.empty() && folder.error == 0) {
            found = FindIn(folder.path, folder.status, name);
        }
    }
    return found;
}

std::string FindInCurrentFolder(const FoldedName& name) {
    struct stat status;
    if (stat(".", &status) != 0 || !MayHoldLibraries(CurrentRights(), status)) {
        return {};
    }
    const std::string found = FindIn(".", status, name);
    if (found.empty()) {
        return {};
    }
    const std::string folder = HostCurrentFolder();
    return folder.empty() ? folder : folder + found.substr(1);
}

std::string FindInPath(const FoldedName& name) {
    const char* variable = EnvironmentVariable("PATH");
    std::istringstream path(variable != nullptr ? variable : "");
    const ProcessRights rights = CurrentRights();
    std::string found;
    for (std::string folder; found.empty() && std::getline(path, folder, ':');) {
        struct stat status;
        if (folder.starts_with('/') && stat(folder.c_str(), &status) == 0 &&
            MayHoldLibraries(rights, status)) {
            found = FindIn(folder, status, name);
        }
    }
    return found;
}

}  // namespace

bool MayHoldLibraries(const WCHAR* folder) {
    const HostFile found = FindFile(folder);
    return found.error == NO_ERROR &&
           (MayHoldLibraries(CurrentRights(), found.status) || IsAt(HostFolder(), found.status));
}

std::string FindRegularFile(std::u16string_view path) {
    const HostFile file = FindFile(PlaceOf(path));
    const bool isRegular = file.error == NO_ERROR && S_ISREG(file.status.st_mode);
    return isRegular ? file.path : std::string();
}

std::string FindInSystemOrder(std::u16string_view bareName) {
    if (!IsValidName(bareName)) {
        return {};
    }
    const std::string hostFolder = HostFolder();
    const FoldedName name(Utf8FromWide(bareName));
    std::string found = hostFolder.empty() ? std::string() : FindIn(hostFolder, name);
    if (found.empty()) {
        found = FindInSystemFolders(name);
    }
    if (found.empty()) {
        found = FindInCurrentFolder(name);
    }
    return found.empty() ? FindInPath(name) : found;
}

DWORD SearchPathW(const WCHAR*, const WCHAR* fileName, const WCHAR*, DWORD size, WCHAR* buffer,
                  WCHAR**) {
    const std::string found = FindInSystemOrder(fileName);
    return found.empty() ? Fail<DWORD>(ERROR_FILE_NOT_FOUND)
                         : CopyOrAskForRoom(WindowsPath(found), buffer, size);
}

}  // namespace brevik::platform
