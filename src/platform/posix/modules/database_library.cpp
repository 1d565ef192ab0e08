#include "platform/database_library.h"

#include <dlfcn.h>
#include <sys/stat.h>

#include <atomic>
#include <cerrno>
#include <new>
#include <string>
#include <string_view>

#include "platform/posix/base/host_errors.h"
#include "platform/posix/base/interrupted.h"
#include "platform/posix/base/last_error.h"
#include "platform/posix/base/made_once.h"
#include "platform/posix/base/scoped_descriptor.h"
#include "platform/posix/paths/paths.h"

#ifndef __has_feature
#define __has_feature(feature) 0
#endif

namespace brevik::platform {
namespace {

// With the deep binding the library finds its own functions before the host's. The sanitizers'
// run-time libraries, which come before everything, refuse it.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || \
    __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
constexpr int kDeepBinding = 0;
#else
constexpr int kDeepBinding = RTLD_DEEPBIND;
#endif

// The crypto library's exit handler frees the locks that other threads hold. This keeps it from
// being set; where the host has set it before, it calls `stop` first. False when the crypto library
// has been shut down already, or had no memory to start with. A database library on another one
// needs nothing of this.
bool KeepCryptoLibrary(void* library, void (*stop)()) {
    using Initialise = int(std::uint64_t options, const void* settings);
    using AtExit = int(void (*handler)());
    constexpr std::uint64_t kNoExitHandler = 0x00080000;
    auto* const initialise = reinterpret_cast<Initialise*>(dlsym(library, "OPENSSL_init_crypto"));
    auto* const atExit = reinterpret_cast<AtExit*>(dlsym(library, "OPENSSL_atexit"));
    return initialise == nullptr || atExit == nullptr ||
           (initialise(kNoExitHandler, nullptr) == 1 && atExit(stop) == 1);
}

// Whether every user may make files in the folder that a file stands in.
bool StandsInOpenFolder(const std::string& path) {
    struct stat status;
    return stat(path.substr(0, path.rfind('/') + 1).c_str(), &status) == 0 &&
           (status.st_mode & S_IWOTH) != 0;
}

// A file with a second name may be any file of another user's.
bool MayBeUsed(const std::string& path, const struct stat& status, mode_t kind) {
    return (status.st_mode & S_IFMT) == kind &&
           (kind != S_IFREG || status.st_nlink <= 1 || !StandsInOpenFolder(path));
}

// Why a file or folder must not be used; empty when it may, or is not there.
std::string FaultOf(const std::string& path, mode_t kind) {
    struct stat status;
    if (lstat(path.c_str(), &status) != 0 || MayBeUsed(path, status, kind)) {
        return {};
    }
    return ": " + path +
           (S_ISLNK(status.st_mode)   ? " is a symbolic link"
            : kind == S_IFDIR         ? " is no folder"
            : S_ISREG(status.st_mode) ? " has another name besides"
                                      : " is no plain file");
}

// The database library's interface to the operating system, as far as it is used here.
using SystemCall = void();
struct OperatingSystem {
    int version;
    int numbers[2];
    void* pointers[16];
    int (*setSystemCall)(OperatingSystem* self, const char* name, SystemCall* function);
    SystemCall* (*getSystemCall)(OperatingSystem* self, const char* name);
};
constexpr int kFirstVersionWithSystemCalls = 3;

// The host path of the database that was asked for first: a process has one.
constinit MadeOnce<std::string> guardedPath;

// How the library opened files before; a host may have had a say in it.
constinit std::atomic<int (*)(const char*, int, int)> usualOpen = nullptr;

bool IsGuarded(const char* path) {
    const std::string* const database = guardedPath.Find();
    return database != nullptr && std::string_view(path).starts_with(*database);
}

// Opens a file that was looked at before: others may have put a link there since.
int OpenUnlinked(const char* path, int flags, mode_t mode) {
    ScopedDescriptor file = OpenDescriptor(path, flags | O_NOFOLLOW | O_NONBLOCK, mode);
    struct stat status;
    if (file && (fstat(file.Get(), &status) != 0 || !MayBeUsed(path, status, S_IFREG))) {
        file.Close();
        errno = EACCES;
    }
    return file.Release();
}

// Opens files for the database library, which makes the journal anew for each transaction.
int OpenForDatabase(const char* path, int flags, int mode) {
    if (!IsGuarded(path)) {
        return usualOpen.load()(path, flags, mode);
    }
    try {
        return OpenUnlinked(path, flags, static_cast<mode_t>(mode));
    } catch (const std::bad_alloc&) {
        errno = ENOMEM;
        return -1;
    }
}

void OpenFilesByOurselves(void* library) {
    auto* const find =
        reinterpret_cast<OperatingSystem* (*)(const char*)>(dlsym(library, "sqlite3_vfs_find"));
    OperatingSystem* const system = find != nullptr ? find(nullptr) : nullptr;
    if (system == nullptr || system->version < kFirstVersionWithSystemCalls) {
        return;
    }
    SystemCall* const own = reinterpret_cast<SystemCall*>(&OpenForDatabase);
    SystemCall* const usual = system->getSystemCall(system, "open");
    if (usual != nullptr && usual != own) {
        usualOpen = reinterpret_cast<int (*)(const char*, int, int)>(usual);
        system->setSystemCall(system, "open", own);
    }
}

}  // namespace

void* LoadDatabaseLibrary(void (*stop)(), std::string* reason) {
    void* const library = dlopen(kDatabaseLibraryName, RTLD_NOW | RTLD_LOCAL | kDeepBinding);
    if (library == nullptr) {
        const char* const message = dlerror();
        *reason = message != nullptr ? message : "";
    } else if (!KeepCryptoLibrary(library, stop)) {
        *reason = "the crypto library has ended, or could not start";
        return nullptr;
    } else {
        OpenFilesByOurselves(library);
    }
    return library;
}

void* FindDatabaseFunction(void* library, const char* name) {
    return dlsym(library, name);
}

std::string DatabaseFilePath(const WCHAR* path, std::string* fault) {
    // The database library opens its files by itself.
    TakeStandardStreams();
    const HostFile file = FindFile(path);
    if (file.path.empty()) {
        const std::u16string_view text = path;
        const HostFile folder = FindFile(text.substr(0, text.rfind(u'\\')));
        *fault = folder.HasName() ? FaultOf(folder.path, S_IFDIR) : std::string();
        return {};
    }
    *fault = FaultOf(file.path.substr(0, file.path.rfind('/')), S_IFDIR);
    for (const char* suffix : {"", "-journal", "-wal", "-shm"}) {
        if (fault->empty()) {
            *fault = FaultOf(file.path + suffix, S_IFREG);
        }
    }
    if (!fault->empty()) {
        return {};
    }
    if (guardedPath.Find() == nullptr) {
        guardedPath.Keep(file.path);
    }
    return file.path;
}

BOOL EmptySharedFile(const WCHAR* path) {
    const HostFile file = FindFile(path);
    if (file.error != NO_ERROR) {
        return Fail(file.error);
    }
    const ScopedDescriptor opened(OpenUnlinked(file.path.c_str(), O_WRONLY, 0));
    const bool isEmptied = opened && Uninterrupted([&] { return ftruncate(opened.Get(), 0); }) == 0;
    return isEmptied ? TRUE : Fail(ErrorFromHost(errno));
}

BOOL MakeSharedFile(const WCHAR* path) {
    const HostFile file = FindFile(path);
    if (file.error != ERROR_FILE_NOT_FOUND) {
        return Fail(file.error == NO_ERROR ? ERROR_FILE_EXISTS : file.error);
    }
    constexpr mode_t everybody = 0666;
    const ScopedDescriptor made = OpenDescriptor(file.path, O_WRONLY | O_CREAT | O_EXCL, everybody);
    if (!made) {
        return Fail(errno == EEXIST ? ERROR_FILE_EXISTS : ErrorFromHost(errno));
    }
    // Unlike a default access list, the mode of an open folder does not set the mask aside.
    if (StandsInOpenFolder(file.path)) {
        fchmod(made.Get(), everybody);
    }
    return TRUE;
}

}  // namespace brevik::platform
