#include "platform/processes.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <climits>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/posix/executables.h"
#include "platform/posix/handle.h"
#include "platform/posix/host_text.h"
#include "platform/posix/paths.h"
#include "platform/posix/scoped_descriptor.h"
#include "platform/posix/text_buffer.h"

namespace brevik::platform {
namespace {

// The size of an entry on the 32-bit system, the least that a caller may announce.
constexpr DWORD kLeastEntrySize = 556;

struct ProcessRow {
    pid_t process = 0;
    pid_t parent = 0;
    std::string file;
};

std::string LastPart(const std::string& path) {
    return path.substr(path.find_last_of('/') + 1);
}

ProcessRow ThisProcess() {
    return {getpid(), getppid(), LastPart(HostExecutable())};
}

std::string ReadStart(const std::string& path) {
    const ScopedDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    char text[512];
    const ssize_t length = file ? read(file.Get(), text, sizeof text) : 0;
    return std::string(text, length > 0 ? static_cast<std::size_t>(length) : 0);
}

// What /proc tells of a process: "ID (NAME) STATE PARENT ...", where the name may hold anything.
std::optional<ProcessRow> ReadProcess(pid_t process) {
    const std::string text = ReadStart("/proc/" + std::to_string(process) + "/stat");
    const std::size_t open = text.find('(');
    const std::size_t close = text.rfind(')');
    if (open == std::string::npos || close == std::string::npos || close + 4 > text.size()) {
        return std::nullopt;
    }
    ProcessRow row;
    row.process = process;
    std::from_chars(text.data() + close + 4, text.data() + text.size(), row.parent);
    row.file = LastPart(ExecutableOf(process));
    if (row.file.empty()) {
        row.file = text.substr(open + 1, close - open - 1);
    }
    return row;
}

// One walk over the processes. The other processes are asked for only when they are.
class Snapshot final : public HandleObject {
  public:
    ProcessRow First() {
        const std::lock_guard lock(mutex_);
        folder_.reset();
        atEnd_ = false;
        return ThisProcess();
    }

    std::optional<ProcessRow> Next() {
        const std::lock_guard lock(mutex_);
        if (!folder_ && !atEnd_) {
            folder_.reset(opendir("/proc"));
        }
        while (const dirent* entry = folder_ ? readdir(folder_.get()) : nullptr) {
            const std::string_view name = entry->d_name;
            pid_t process = 0;
            const auto [end, error] =
                std::from_chars(name.data(), name.data() + name.size(), process);
            if (error != std::errc() || *end != '\0' || process == getpid()) {
                continue;
            }
            if (std::optional<ProcessRow> row = ReadProcess(process)) {
                return row;
            }
        }
        folder_.reset();
        atEnd_ = true;
        return std::nullopt;
    }

  private:
    struct CloseFolder {
        void operator()(DIR* folder) const { closedir(folder); }
    };

    std::mutex mutex_;
    std::unique_ptr<DIR, CloseFolder> folder_;
    bool atEnd_ = false;
};

class Process final : public HandleObject {
  public:
    explicit Process(pid_t id) : id_(id) {}
    pid_t Id() const { return id_; }

  private:
    pid_t id_;
};

BOOL Fail(DWORD error) {
    SetLastError(error);
    return FALSE;
}

BOOL FillEntry(const ProcessRow& row, PROCESSENTRY32W* entry) {
    entry->cntUsage = 0;
    entry->th32ProcessID = static_cast<DWORD>(row.process);
    entry->th32DefaultHeapID = 0;
    entry->th32ModuleID = 0;
    entry->cntThreads = 1;
    entry->th32ParentProcessID = static_cast<DWORD>(row.parent);
    entry->pcPriClassBase = 8;
    entry->dwFlags = 0;
    const std::u16string file = WideFromUtf8(row.file);
    *std::copy_n(file.begin(), std::min<std::size_t>(file.size(), MAX_PATH - 1), entry->szExeFile) =
        u'\0';
    return TRUE;
}

}  // namespace

HANDLE CreateToolhelp32Snapshot(DWORD flags, DWORD) {
    HANDLE handle = nullptr;
    if (flags != TH32CS_SNAPPROCESS) {
        SetLastError(ERROR_INVALID_PARAMETER);
    } else if ((handle = OpenHandle(std::make_shared<Snapshot>())) == nullptr) {
        SetLastError(ERROR_NO_SYSTEM_RESOURCES);
    }
    return handle != nullptr ? handle : INVALID_HANDLE_VALUE;
}

BOOL Process32FirstW(HANDLE snapshot, PROCESSENTRY32W* entry) {
    const auto walk = FindHandle<Snapshot>(snapshot);
    if (!walk) {
        return Fail(ERROR_INVALID_HANDLE);
    }
    if (entry->dwSize < kLeastEntrySize) {
        return Fail(ERROR_INSUFFICIENT_BUFFER);
    }
    return FillEntry(walk->First(), entry);
}

BOOL Process32NextW(HANDLE snapshot, PROCESSENTRY32W* entry) {
    const auto walk = FindHandle<Snapshot>(snapshot);
    if (!walk) {
        return Fail(ERROR_INVALID_HANDLE);
    }
    if (entry->dwSize < kLeastEntrySize) {
        return Fail(ERROR_INSUFFICIENT_BUFFER);
    }
    const std::optional<ProcessRow> row = walk->Next();
    return row ? FillEntry(*row, entry) : Fail(ERROR_NO_MORE_FILES);
}

DWORD GetCurrentProcessId() {
    return static_cast<DWORD>(getpid());
}

HANDLE OpenProcess(DWORD, BOOL, DWORD process) {
    // Numbers beyond are groups of processes to the host.
    const bool possible = process != 0 && process <= INT_MAX;
    const auto id = static_cast<pid_t>(process);
    if (!possible || (kill(id, 0) != 0 && errno == ESRCH)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    HANDLE handle = OpenHandle(std::make_shared<Process>(id));
    if (handle == nullptr) {
        SetLastError(ERROR_NO_SYSTEM_RESOURCES);
    }
    return handle;
}

DWORD GetModuleFileNameExW(HANDLE process, HMODULE module, WCHAR* path, DWORD size) {
    const auto opened = FindHandle<Process>(process);
    if (!opened) {
        SetLastError(ERROR_INVALID_HANDLE);
        return 0;
    }
    if (opened->Id() == getpid()) {
        return GetModuleFileNameW(module, path, size);
    }
    if (module != nullptr) {
        SetLastError(ERROR_INVALID_HANDLE);
        return 0;
    }
    const std::string executable = ExecutableOf(opened->Id());
    const std::u16string text = WindowsPath(executable);
    if (text.empty()) {
        SetLastError(executable.empty() ? ErrorFromHost(errno) : ERROR_FILE_NOT_FOUND);
        return 0;
    }
    return CopyCutting(text, path, size);
}

}  // namespace brevik::platform
