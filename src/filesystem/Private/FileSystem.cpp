#include "filesystem/FileSystem.h"

#include <atomic>
#include <memory>
#include <mutex>

#include "filesystem/FileException.h"
#include "filesystem/Private/Windows/API.h"
#include "filesystem/Private/Windows/ClassFactory.h"
#include "filesystem/Private/Windows/VolumeRegistry.h"
#include "platform/errors.h"

namespace {

constexpr DWORD kPathSize = 0x8000;

// Never destroyed: a host may make its last calls while the process ends.
std::mutex& GetStartLock() {
    static std::mutex& lock = *new std::mutex;
    return lock;
}

constinit std::atomic<bool> started = false;
constinit std::atomic<HMODULE> start_module = nullptr;

void Start(HMODULE module) {
    start_module = module;
    FileSystem_Win32::EnsureApi();
    ClassFactory_IF::SetFactory(std::make_shared<ClassFactory>());
    WideString path(kPathSize, WCHAR{});
    if (GetModuleFileNameW(module, path.data(), kPathSize) == 0) {
        ThrowFileError(GetLastError(), FilePath());
    }
    FileSpec{FilePath(path)};
    started = true;
}

}  // namespace

void FileSystem_Start(HMODULE module) {
    const std::lock_guard<std::mutex> hold(GetStartLock());
    Start(module);
}

void FileSystem_Stop() {
    {
        const VelmarAutoCriticalSection hold(&FileSystem::GetTempFolderLock());
        FolderSpec& folder = FileSystem::GetTempFolderState();
        if (!folder.IsNull()) {
            folder.DeleteTree();
            folder = FolderSpec();
        }
    }
    const std::lock_guard<std::mutex> hold(GetStartLock());
    FileSystem_Win32::ClearVolumes();
    FileSystem_Win32::ClearApi();
    started = false;
}

namespace FileSystem {

bool IsStarted() {
    return started;
}

std::exception_ptr EnsureStarted() noexcept {
    if (IsStarted()) {
        return nullptr;
    }
    try {
        const std::lock_guard<std::mutex> hold(GetStartLock());
        if (!IsStarted()) {
            Start(nullptr);
        }
        return nullptr;
    } catch (...) {
        return std::current_exception();
    }
}

HMODULE GetModule() {
    return start_module;
}

// Never destroyed, as above; nor is its lock.
FolderSpec& GetTempFolderState() {
    static FolderSpec& temp_folder = *new FolderSpec;
    return temp_folder;
}

BaseCriticalSection& GetTempFolderLock() {
    static VelmarCriticalSection& lock = *new VelmarCriticalSection;
    return lock;
}

}  // namespace FileSystem
