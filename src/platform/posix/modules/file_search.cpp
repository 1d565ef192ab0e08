#include "platform/posix/modules/file_search.h"

#include <sys/stat.h>

#include <optional>
#include <sstream>

#include "platform/folders.h"
#include "platform/posix/base/environment.h"
#include "platform/posix/base/last_error.h"
#include "platform/posix/machine/trusted_places.h"
#include "platform/posix/modules/executables.h"
#include "platform/posix/paths/current_folder.h"
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

// Path of the regular file of this name in a folder that stat has just told of; else empty.
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
    std::string found;
    for (std::string folder; found.empty() && std::getline(path, folder, ':');) {
        if (folder.starts_with('/')) {
            found = FindIn(folder, name);
        }
    }
    return found;
}

}  // namespace

bool IsBareName(std::u16string_view name) {
    return name.find_first_of(u"\\/:") == std::u16string_view::npos;
}

std::u16string WithDefaultExtension(std::u16string_view name, std::u16string_view extension) {
    std::u16string result(name);
    if (name.ends_with(u'.')) {
        result.pop_back();
        return result;
    }
    const std::size_t start = name.find_last_of(u"\\/") + 1;
    if (name.find(u'.', start) == std::u16string_view::npos) {
        result += extension;
    }
    return result;
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
    const std::string host = HostExecutable();
    const std::string hostFolder = host.substr(0, host.find_last_of('/') + 1);
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
