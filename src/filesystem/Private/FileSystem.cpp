#include "filesystem/FileSystem.h"

#include <atomic>
#include <memory>

#include "filesystem/FileException.h"
#include "filesystem/Private/Windows/API.h"
#include "filesystem/Private/Windows/ClassFactory.h"
#include "filesystem/Private/Windows/VolumeRegistry.h"
#include "platform/errors.h"
#include "platform/never_destroyed.h"

namespace {

constexpr DWORD kPathSize = 0x8000;

constinit std::atomic<bool> started = false;
constinit std::atomic<HMODULE> start_module = nullptr;

}  // namespace

void FileSystem_Start(HMODULE module) {
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

void FileSystem_Stop() {
    {
        const VelmarAutoCriticalSection hold(&FileSystem::GetTempFolderLock());
        FolderSpec& folder = FileSystem::GetTempFolderState();
        if (!folder.IsNull()) {
            folder.DeleteTree();
            folder = FolderSpec();
        }
    }
    FileSystem_Win32::ClearVolumes();
    FileSystem_Win32::ClearApi();
    started = false;
}

namespace FileSystem {

bool IsStarted() {
    return started;
}

std::exception_ptr EnsureStarted() noexcept {
    try {
        if (!IsStarted()) {
            FileSystem_Start(nullptr);
        }
        return nullptr;
    } catch (...) {
        return std::current_exception();
    }
}

HMODULE GetModule() {
    return start_module;
}

FolderSpec& GetTempFolderState() {
    static NeverDestroyed<FolderSpec> temp_folder;
    return *temp_folder;
}

BaseCriticalSection& GetTempFolderLock() {
    static NeverDestroyed<VelmarCriticalSection> lock;
    return *lock;
}

}  // namespace FileSystem
