// The Windows path of a host path, by the drives and shares of the machine.

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/never_destroyed.h"
#include "platform/posix/base/made_once.h"
#include "platform/posix/base/scoped_descriptor.h"
#include "platform/posix/base/stamped.h"
#include "platform/posix/machine/machine.h"
#include "platform/posix/machine/programs.h"
#include "platform/posix/paths/paths.h"
#include "platform/posix/text/host_text.h"
#include "platform/posix/text/unicode.h"

namespace brevik::platform {
namespace {

// A drive or share with the host folder that it leads to.
struct Root {
    std::string hostFolder;  // without a trailing slash, so empty for the host's root
    std::u16string windowsPath;
};

// The longest host folder first.
using Roots = Stamped<std::vector<Root>>;

// The names in a folder that can be part of a path, in byte order.
std::vector<std::string> NamesIn(const std::string& path, SeenFiles& seen) {
    const ScopedFolder folder(opendir(path.c_str()));
    struct stat status;
    std::vector<std::string> names;
    if (!folder || fstat(dirfd(folder.get()), &status) != 0) {
        seen.Distrust();
        return names;
    }
    seen.Add(path, FileStamp(status));
    errno = 0;
    while (const dirent* entry = readdir(folder.get())) {
        if (IsValidName(WideFromUtf8(entry->d_name))) {
            names.push_back(entry->d_name);
        }
        errno = 0;
    }
    if (errno != 0) {
        seen.Distrust();
    }
    std::sort(names.begin(), names.end());
    return names;
}

void AddRoot(const std::string& hostPath, std::u16string windowsPath, Roots& roots) {
    std::error_code error;
    std::string folder = std::filesystem::canonical(hostPath, error).string();
    if (error) {
        // What it leads to may come at any time, as a removable medium does.
        roots.seen.Distrust();
        return;
    }
    if (folder == "/") {
        folder.clear();
    }
    roots.answer.push_back({std::move(folder), std::move(windowsPath)});
}

std::shared_ptr<const Roots> ReadRoots(const std::string& machine) {
    auto roots = std::make_shared<Roots>();
    const std::string drives = machine + "/drives/";
    for (const std::string& name : NamesIn(drives, roots->seen)) {
        const char16_t letter = UpperLetter(static_cast<char16_t>(name[0]));
        if (name.size() == 1 && IsDriveLetter(letter)) {
            AddRoot(drives + name, {letter, u':'}, *roots);
        }
    }
    const std::string shares = machine + "/shares/";
    for (const std::string& server : NamesIn(shares, roots->seen)) {
        for (const std::string& share : NamesIn(shares + server, roots->seen)) {
            AddRoot(shares + server + '/' + share,
                    u"\\\\" + WideFromUtf8(server) + u'\\' + WideFromUtf8(share), *roots);
        }
    }
    std::stable_sort(roots->answer.begin(), roots->answer.end(),
                     [](const Root& left, const Root& right) {
                         return left.hostFolder.size() > right.hostFolder.size();
                     });
    return roots;
}

std::shared_ptr<const Roots> CurrentRoots() {
    static NeverDestroyed<AnswerCache<std::string, Roots>> kept(1);
    const std::string& machine = Machine::Current().Folder();
    std::shared_ptr<const Roots> roots = kept->Find(machine);
    if (!roots || !roots->seen.AreUnchanged()) {
        roots = ReadRoots(machine);
        if (roots->seen.AreSettled()) {
            kept->Keep(machine, roots);
        }
    }
    return roots;
}

// The path in the root, "/" for the root itself. Nothing for a path outside of it.
std::optional<std::string_view> PathInRoot(std::string_view hostPath, const Root& root) {
    if (!hostPath.starts_with(root.hostFolder)) {
        return std::nullopt;
    }
    hostPath.remove_prefix(root.hostFolder.size());
    if (hostPath.empty()) {
        return "/";
    }
    return hostPath.front() == '/' ? std::optional(hostPath) : std::nullopt;
}

std::u16string Spell(const std::u16string& root, std::string_view hostPath) {
    std::u16string path = WideFromUtf8(hostPath);
    std::replace(path.begin(), path.end(), u'\\', static_cast<char16_t>(kReplacementCharacter));
    std::replace(path.begin(), path.end(), u'/', u'\\');
    return root + path;
}

}  // namespace

std::u16string WindowsPath(std::string_view hostPath) {
    if (!hostPath.starts_with('/')) {
        return {};
    }
    if (!Machine::Current().Exists()) {
        return Spell(u"Z:", hostPath);
    }
    const std::shared_ptr<const Roots> roots = CurrentRoots();
    for (const Root& root : roots->answer) {
        if (const auto path = PathInRoot(hostPath, root)) {
            return Spell(root.windowsPath, *path);
        }
    }
    return {};
}

std::u16string HostExecutableWindowsPath() {
    static constinit MadeOnce<std::u16string> kept;
    if (const std::u16string* path = kept.Find()) {
        return *path;
    }
    std::u16string path = WindowsPath(ExecutableOf(getpid()));
    return path.empty() || !Machine::Current().IsKnown() ? path : kept.Keep(std::move(path));
}

}  // namespace brevik::platform
