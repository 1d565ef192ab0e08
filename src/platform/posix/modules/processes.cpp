#include "platform/processes.h"

#include <unistd.h>

#include <memory>
#include <string>

#include "platform/posix/base/handle.h"
#include "platform/posix/base/last_error.h"
#include "platform/posix/machine/programs.h"
#include "platform/posix/paths/paths.h"
#include "platform/posix/text/text_buffer.h"

namespace brevik::platform {
namespace {

// Lists the calling process alone, which keeps nothing.
class Snapshot final : public HandleObject {};

struct Process final : public HandleObject {
    explicit Process(pid_t process) : id(process) {}
    const pid_t id;
};

}  // namespace

HANDLE CreateToolhelp32Snapshot(DWORD, DWORD) {
    return OpenHandle(std::make_shared<Snapshot>());
}

BOOL Process32FirstW(HANDLE snapshot, PROCESSENTRY32W* entry) {
    if (!FindHandle<Snapshot>(snapshot)) {
        return Fail(ERROR_INVALID_HANDLE);
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
    const auto id = static_cast<pid_t>(process);
    struct stat program;
    if (id <= 0 || !StatExecutableOf(id, &program)) {
        return Fail<HANDLE>(ERROR_INVALID_PARAMETER);
    }
    return MayLendItsFolder(CurrentRights(), program) ? OpenHandle(std::make_shared<Process>(id))
                                                      : Fail<HANDLE>(ERROR_ACCESS_DENIED);
}

DWORD GetModuleFileNameExW(HANDLE process, HMODULE, WCHAR* path, DWORD size) {
    const auto opened = FindHandle<Process>(process);
    if (!opened) {
        return Fail<DWORD>(ERROR_INVALID_HANDLE);
    }
    const std::u16string text = WindowsPath(ExecutableOf(opened->id));
    return text.empty() ? Fail<DWORD>(ERROR_FILE_NOT_FOUND) : CopyCutting(text, path, size);
}

}  // namespace brevik::platform
