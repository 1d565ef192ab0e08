#include "platform/database_library.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <string>

#include "platform/posix/host_errors.h"
#include "platform/posix/paths.h"
#include "platform/posix/scoped_descriptor.h"

#ifndef __has_feature
#define __has_feature(feature) 0
#endif

namespace brevik::platform {
namespace {

// With the deep binding the library finds its own functions ahead of the host's. The sanitizers'
// run-time libraries, which stand ahead of everything, refuse it.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || \
    __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
constexpr int kDeepBinding = 0;
#else
constexpr int kDeepBinding = RTLD_DEEPBIND;
#endif

BOOL Fail(DWORD error) {
    SetLastError(error);
    return FALSE;
}

// Whether everybody may make files in the folder that a file stands in.
bool StandsInOpenFolder(const std::string& path) {
    struct stat status;
    return stat(path.substr(0, path.rfind('/') + 1).c_str(), &status) == 0 &&
           (status.st_mode & S_IWOTH) != 0;
}

}  // namespace

void* LoadDatabaseLibrary(std::string* reason) {
    void* const library = dlopen(kDatabaseLibraryName, RTLD_NOW | RTLD_LOCAL | kDeepBinding);
    if (library == nullptr) {
        const char* const message = dlerror();
        *reason = message != nullptr ? message : "";
    }
    return library;
}

void* FindDatabaseFunction(void* library, const char* name) {
    return dlsym(library, name);
}

std::string DatabaseFilePath(const WCHAR* path) {
    // The database library opens its files by itself.
    TakeStandardStreams();
    return FindFile(path).path;
}

BOOL MakeSharedFile(const WCHAR* path) {
    const HostFile file = FindFile(path);
    if (file.error != ERROR_FILE_NOT_FOUND) {
        return Fail(file.error == NO_ERROR ? ERROR_FILE_EXISTS : file.error);
    }
    constexpr mode_t everybody = 0666;
    const ScopedDescriptor made(
        open(file.path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, everybody));
    if (!made) {
        return Fail(errno == EEXIST ? ERROR_FILE_EXISTS : ErrorFromHost(errno));
    }
    // A folder with a default access list has set it aside the mask; another one that is open to
    // everybody has not.
    if (StandsInOpenFolder(file.path)) {
        fchmod(made.Get(), everybody);
    }
    return TRUE;
}

}  // namespace brevik::platform
