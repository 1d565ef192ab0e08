#include "platform/posix/file_search.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>
#include <optional>

#include "platform/posix/environment.h"
#include "platform/posix/executables.h"
#include "platform/posix/folder_index.h"
#include "platform/posix/host_text.h"
#include "platform/posix/machine.h"
#include "platform/posix/paths.h"

namespace brevik::platform {
namespace {

// A folder of the machine that every search looks into.
struct SystemFolder {
    std::string_view hostPath;        // in the machine, as it was made
    std::u16string_view windowsPath;  // should somebody have changed its case
};

constexpr SystemFolder kSystemFolders[] = {
    {"/drives/c/Windows/System32", u"C:\\Windows\\System32"},
    {"/drives/c/Windows", u"C:\\Windows"},
};

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
    std::string path = Machine::Current().Folder();
    const std::size_t machine = path.size();
    for (const SystemFolder& folder : kSystemFolders) {
        path.resize(machine);
        path += folder.hostPath;
        struct stat status;
        std::string found;
        if (stat(path.c_str(), &status) == 0) {
            found = FindIn(path, status, name);
        } else if (const HostFile file = FindFile(PlaceOf(folder.windowsPath)); file.error == 0) {
            found = FindIn(file.path, file.status, name);
        }
        if (!found.empty()) {
            return found;
        }
    }
    return {};
}

std::string FindInCurrentFolder(const FoldedName& name) {
    const std::string found = FindIn(".", name);
    if (found.empty()) {
        return {};
    }
    const std::unique_ptr<char, decltype(&free)> folder(getcwd(nullptr, 0), &free);
    return folder && *folder == '/' ? folder.get() + found.substr(1) : std::string();
}

// Whether an entry of PATH stands there more than once, and this is not the first.
bool IsRepeated(std::string_view path, std::string_view entry) {
    for (std::size_t start = 0; path.data() + start != entry.data();) {
        const std::size_t colon = path.find(':', start);
        if (path.substr(start, colon - start) == entry) {
            return true;
        }
        start = colon + 1;
    }
    return false;
}

std::string FindInPath(const FoldedName& name) {
    const char* variable = EnvironmentVariable("PATH");
    const std::string_view path = variable != nullptr ? variable : "";
    std::string folder;
    for (std::size_t start = 0; start < path.size();) {
        const std::string_view entry = path.substr(start, path.find(':', start) - start);
        start += entry.size() + 1;
        if (!entry.starts_with('/') || IsRepeated(path, entry)) {
            continue;
        }
        folder = entry;
        std::string found = FindIn(folder, name);
        if (!found.empty()) {
            return found;
        }
    }
    return {};
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
    const HostPlace place = PlaceOf(path);
    const HostFile file = FindFile(place);
    const bool regular = file.error == 0 && S_ISREG(file.status.st_mode);
    return regular && !place.trailingSeparator ? file.path : std::string();
}

std::string FindInSystemOrder(std::u16string_view bareName) {
    if (!IsValidName(bareName)) {
        return {};
    }
    static const std::string& hostFolder =
        *new std::string(HostExecutable().substr(0, HostExecutable().find_last_of('/') + 1));
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

}  // namespace brevik::platform
