#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <mutex>
#include <system_error>
#include <utility>

#include "platform/folders.h"
#include "platform/never_destroyed.h"
#include "platform/posix/base/file_stamp.h"
#include "platform/posix/base/last_error.h"
#include "platform/posix/base/scoped_descriptor.h"
#include "platform/posix/paths/paths.h"
#include "platform/posix/text/text_buffer.h"

namespace brevik::platform {
namespace {

// The folder last made current, as it was spelled.
struct SpelledFolder {
    std::mutex mutex;
    std::string hostPath;
    std::u16string spelling;
};

SpelledFolder& Spelled() {
    static NeverDestroyed<SpelledFolder> folder;
    return *folder;
}

// Empty when another folder is current now.
std::u16string SpellingIfCurrent(const std::string& hostPath) {
    SpelledFolder& spelled = Spelled();
    const std::lock_guard lock(spelled.mutex);
    return spelled.hostPath == hostPath ? spelled.spelling : std::u16string();
}

// Only the root of a drive keeps the separator at its end.
std::u16string WithoutTrailingSeparator(std::u16string path) {
    if (path.ends_with(u'\\') && !(path.size() == 3 && BeginsWithDrive(path))) {
        path.pop_back();
    }
    return path;
}

// The path as CurrentFolder is to spell it: one without the literal prefix loses dots and blanks at
// its end.
std::u16string SpellingOf(std::u16string_view path) {
    if (path.starts_with(kLiteralPrefix)) {
        return WithoutTrailingSeparator(WithoutLiteralPrefix(std::u16string(path)));
    }
    std::u16string full = FullPath(path);
    full.resize(full.find_last_not_of(u" .") + 1);
    return WithoutTrailingSeparator(std::move(full));
}

}  // namespace

std::string HostCurrentFolder() {
    std::error_code error;
    std::string path = std::filesystem::current_path(error).string();
    return path.starts_with('/') ? path : std::string();
}

bool IsCurrentFolder(const struct stat& folder) {
    struct stat current;
    return stat(".", &current) == 0 && IsSameFile(folder, current);
}

std::u16string CurrentFolder() {
    const std::string host = HostCurrentFolder();
    if (host.empty()) {
        return {};
    }
    std::u16string folder = SpellingIfCurrent(host);
    if (folder.empty()) {
        folder = WithoutTrailingSeparator(WindowsPath(host));
    }
    const HostFile found = FindFile(folder);
    return found.error == NO_ERROR && IsCurrentFolder(found.status) ? folder : std::u16string();
}

DWORD GetCurrentDirectoryW(DWORD size, WCHAR* path) {
    const std::u16string folder = CurrentFolder();
    return folder.empty() ? Fail<DWORD>(ERROR_PATH_NOT_FOUND)
                          : CopyOrAskForRoom(folder, path, size);
}

BOOL SetCurrentDirectoryW(const WCHAR* path) {
    if (*path == u'\0') {
        return Fail(ERROR_INVALID_NAME);
    }
    // Before the change, since a relative path means the folder that is current now.
    std::u16string spelling = SpellingOf(path);
    const HostFile folder = FindFile(path);
    if (folder.error != NO_ERROR) {
        return FALSE;
    }
    if (!S_ISDIR(folder.status.st_mode)) {
        return Fail(ERROR_DIRECTORY);
    }
    // Nothing is to need memory after the change.
    const std::unique_ptr<char, decltype(&free)> real(realpath(folder.path.c_str(), nullptr),
                                                      &free);
    std::string hostPath = real ? real.get() : "";
    SpelledFolder& spelled = Spelled();
    if (chdir(folder.path.c_str()) != 0) {
        return Fail(ErrorFromHost(errno));
    }
    const std::lock_guard lock(spelled.mutex);
    spelled.hostPath = std::move(hostPath);
    spelled.spelling = std::move(spelling);
    return TRUE;
}

KeptFolder KeptFolder::Current() {
    KeptFolder kept;
    ScopedDescriptor folder(open(".", O_PATH | O_DIRECTORY | O_CLOEXEC));
    kept.descriptor_ = folder.Release();
    return kept;
}

KeptFolder::~KeptFolder() {
    if (*this) {
        close(descriptor_);
    }
}

void KeptFolder::MakeCurrent() const noexcept {
    if (*this && fchdir(descriptor_) != 0) {
        // It was the current one: all that can be lost is the right to enter it.
        return;
    }
}

}  // namespace brevik::platform
