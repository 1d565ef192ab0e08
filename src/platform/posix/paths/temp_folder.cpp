#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <system_error>

#include "platform/folders.h"
#include "platform/posix/base/environment.h"
#include "platform/posix/paths/paths.h"
#include "platform/posix/text/text_buffer.h"

namespace brevik::platform {
namespace {

constexpr char16_t kMachineFolder[] = u"C:\\Windows\\Temp";

bool TakesFiles(const std::string& hostFolder) {
    return faccessat(AT_FDCWD, (hostFolder + "/.").c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}

bool MachineFolderTakesFiles() {
    const HostFile folder = FindFile(PlaceOf(kMachineFolder));
    return folder.error == NO_ERROR && TakesFiles(folder.path);
}

// The path under which a folder of the host is known; empty when it has none, or takes no files.
std::u16string HostFolder(const char* path) {
    if (path == nullptr || *path != '/' || !TakesFiles(path)) {
        return {};
    }
    std::error_code error;
    return WindowsPath(std::filesystem::canonical(path, error).string());
}

std::u16string TempFolder() {
    if (!MachineFolderTakesFiles()) {
        for (const char* path : {EnvironmentVariable("TMPDIR"), "/tmp"}) {
            std::u16string folder = HostFolder(path);
            if (!folder.empty()) {
                return folder;
            }
        }
    }
    return kMachineFolder;
}

}  // namespace

DWORD GetTempPathW(DWORD size, WCHAR* path) {
    std::u16string folder = TempFolder();
    if (!folder.ends_with(u'\\')) {
        folder += u'\\';
    }
    return CopyOrAskForRoom(folder, path, size);
}

}  // namespace brevik::platform
