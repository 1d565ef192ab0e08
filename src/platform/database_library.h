// The encrypting database library, which no program of ours is linked with.
//
// It exports the same names as the plain library that it grew out of, and a host may hold that one
// already: linked, one of the two would run in the other's memory. It is loaded by name instead, so
// that its names stay its own. Any thread.
#pragma once

#include <string>

#include "platform/files.h"
#include "platform/modules.h"
#include "platform/types.h"

#ifdef _WIN32

inline constexpr const char* kDatabaseLibraryName = "sqlcipher.dll";

// The other threads of a process are gone before its libraries are shut down.
inline void* LoadDatabaseLibrary(void (*)(), std::string* reason) {
    HMODULE library = LoadLibraryW(L"sqlcipher.dll");
    if (library == nullptr) {
        *reason = "error " + std::to_string(GetLastError());
    }
    return library;
}

inline void* FindDatabaseFunction(void* library, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name));
}

inline std::string DatabaseFilePath(const WCHAR* path, std::string*) {
    const int size = WideCharToMultiByte(CP_UTF8, 0, path, -1, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(size > 0 ? size : 1), '\0');
    WideCharToMultiByte(CP_UTF8, 0, path, -1, narrow.data(), size, nullptr, nullptr);
    narrow.pop_back();
    return narrow;
}

// The folder's access list decides who may use it.
inline BOOL MakeSharedFile(const WCHAR* path) {
    const HANDLE file = CreateFileW(path, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    return file != INVALID_HANDLE_VALUE && CloseHandle(file);
}

inline BOOL EmptySharedFile(const WCHAR* path) {
    constexpr DWORD kAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const HANDLE file = CreateFileW(path, GENERIC_WRITE, kAll, nullptr, TRUNCATE_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    return file != INVALID_HANDLE_VALUE && CloseHandle(file);
}

#else

namespace brevik::platform {

inline constexpr const char* kDatabaseLibraryName = "libsqlcipher.so.0";

// Loads the library for the rest of the process's life. Null with the reason when that fails.
//
// It opens the files of the first database that DatabaseFilePath is asked for in a way that follows
// no link that was put there since, and takes no number of a standard stream.
//
// The library can be used while the process ends: what it stands on is not shut down by its own
// exit handler. A host that uses the same crypto library may shut that down all the same; `stop` is
// called when it does, and must return when nothing uses the database library any more.
PLATFORM_API void* LoadDatabaseLibrary(void (*stop)(), std::string* reason);

// Null when the library has no function of this name.
PLATFORM_API void* FindDatabaseFunction(void* library, const char* name);

// The path in the form in which the library takes it. Empty when the path can lead nowhere, such as
// into a folder that is missing, or when its folder, the file or one that the library keeps beside
// it is a symbolic link or anything but a folder and plain files: who may write there could have
// another user's program write to any file. `fault` then names what that is, after ": ".
PLATFORM_API std::string DatabaseFilePath(const WCHAR* path, std::string* fault);

// Makes a file of no bytes that every user may write who may write into its folder, whatever file
// mode mask the process works under. False with error 80 where the file is there already.
PLATFORM_API BOOL MakeSharedFile(const WCHAR* path);

// Takes all bytes of such a file away.
PLATFORM_API BOOL EmptySharedFile(const WCHAR* path);

}  // namespace brevik::platform

#endif
