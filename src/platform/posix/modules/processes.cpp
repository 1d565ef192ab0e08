#include "platform/processes.h"
#include "platform/posix/base/last_error.h"

#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <memory>
#include <string>

#include "platform/posix/base/handle.h"
#include "platform/posix/machine/executables.h"
#include "platform/posix/machine/trusted_places.h"
#include "platform/posix/paths/paths.h"
#include "platform/posix/text/text_buffer.h"

namespace brevik::platform {
namespace {

// The size of an entry on the 32-bit system, the least that a caller may announce.
constexpr DWORD kLeastEntrySize = 556;

// Lists the calling process alone, which keeps nothing.
class Snapshot final : public HandleObject {};

class Process final : public HandleObject {
  public:
    explicit Process(pid_t id) : id_(id) {}
    pid_t Id() const { return id_; }

  private:
    pid_t id_;
};

bool MayBeOpened(pid_t process) {
    struct stat program;
    return StatExecutableOf(process, &program) && MayLendItsFolder(CurrentRights(), program);
}

}  // namespace

HANDLE CreateToolhelp32Snapshot(DWORD flags, DWORD) {
    return flags == TH32CS_SNAPPROCESS ? OpenHandle(std::make_shared<Snapshot>())
                                       : Fail(ERROR_INVALID_PARAMETER, INVALID_HANDLE_VALUE);
}

BOOL Process32FirstW(HANDLE snapshot, PROCESSENTRY32W* entry) {
    if (!FindHandle<Snapshot>(snapshot)) {
        return Fail(ERROR_INVALID_HANDLE);
    }
    if (entry->dwSize < kLeastEntrySize) {
        return Fail(ERROR_INSUFFICIENT_BUFFER);
    }
    entry->th32ProcessID = GetCurrentProcessId();
    entry->th32ParentProcessID = static_cast<DWORD>(getppid());
    return TRUE;
}

BOOL Process32NextW(HANDLE snapshot, PROCESSENTRY32W*) {
    return Fail(FindHandle<Snapshot>(snapshot) ? ERROR_NO_MORE_FILES : ERROR_INVALID_HANDLE);
}

DWORD GetCurrentProcessId() {
    return static_cast<DWORD>(getpid());
}

HANDLE OpenProcess(DWORD, BOOL, DWORD process) {
    // Numbers beyond are groups of processes to the host.
    const bool possible = process != 0 && process <= INT_MAX;
    const auto id = static_cast<pid_t>(process);
    if (!possible || (kill(id, 0) != 0 && errno == ESRCH)) {
        return Fail<HANDLE>(ERROR_INVALID_PARAMETER);
    }
    if (id != getpid() && !MayBeOpened(id)) {
        return Fail<HANDLE>(ERROR_ACCESS_DENIED);
    }
    return OpenHandle(std::make_shared<Process>(id));
}

DWORD GetModuleFileNameExW(HANDLE process, HMODULE module, WCHAR* path, DWORD size) {
    const auto opened = FindHandle<Process>(process);
    if (opened && opened->Id() == getpid()) {
        return GetModuleFileNameW(module, path, size);
    }
    if (!opened || module != nullptr) {
        return Fail<DWORD>(ERROR_INVALID_HANDLE);
    }
    const std::string executable = ExecutableOf(opened->Id());
    const std::u16string text = WindowsPath(executable);
    if (text.empty()) {
        return Fail<DWORD>(executable.empty() ? ErrorFromHost(errno) : ERROR_FILE_NOT_FOUND);
    }
    return CopyCutting(text, path, size);
}

}  // namespace brevik::platform
