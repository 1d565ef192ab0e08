#include "filesystem/FileSystem.h"

#include <atomic>
#include <memory>

#include "filesystem/ClassFactory_IF.h"
#include "filesystem/Private/PlatformPath.h"
#include "filesystem/Private/Windows/API.h"
#include "filesystem/Private/Windows/FileSpec_Win32.h"
#include "filesystem/Private/Windows/Volume_Win32.h"
#include "platform/never_destroyed.h"

// The library's own factory: file objects of the class that the running platform asks for.
class ClassFactory : public ClassFactory_IF {
  public:
    using ClassFactory_IF::MakeFileSpec;

    void MakeFileSpec(const FilePath& path, const SharedHandle<Volume_IF>& volume,
                      SharedHandle<FileSpec_IF>& file) override {
        if (path.IsEmpty()) {
            file.reset();
        } else if (IsWin9x()) {
            file = std::make_shared<FileSpec_Win9X>(path, volume);
        } else {
            file = std::make_shared<FileSpec_Win32>(path, volume);
        }
    }
};

namespace {

constinit std::atomic<bool> started = false;
constinit std::atomic<HMODULE> start_module = nullptr;

}  // namespace

void FileSystem_Start(HMODULE module) {
    start_module = module;
    FileSystem_Win32::EnsureApi();
    ClassFactory_IF::SetFactory(std::make_shared<ClassFactory>());
    FileSpec{FileSystem::PathOfModule(module)};
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
