#include "filesystem/ClassFactory_IF.h"

#include <atomic>
#include <mutex>

#include "filesystem/FileSpec_IF.h"
#include "text/VelmarException.h"

namespace {

// The lock and the factory are never destroyed: a host may make its last calls while the process
// ends.
std::mutex& GetFactoryLock() {
    static std::mutex& lock = *new std::mutex;
    return lock;
}
constinit SharedHandle<ClassFactory_IF>* factory = nullptr;

// The factory once it is set, for readers without the lock.
constinit std::atomic<ClassFactory_IF*> current_factory = nullptr;

}  // namespace

void ClassFactory_IF::SetFactory(const SharedHandle<ClassFactory_IF>& newFactory) {
    const std::lock_guard<std::mutex> hold(GetFactoryLock());
    if (factory == nullptr && newFactory != nullptr) {
        factory = new SharedHandle<ClassFactory_IF>(newFactory);
        current_factory.store(newFactory.get(), std::memory_order_release);
    }
}

SharedHandle<FileSpec_IF> ClassFactory_IF::MakeFileSpec(const FilePath& path,
                                                        const SharedHandle<Volume_IF>& volume) {
    ClassFactory_IF* const maker = current_factory.load(std::memory_order_acquire);
    if (maker == nullptr) {
        throw VelmarException(".\\Private\\FileSystem_ClassFactory_IF", 35);
    }
    SharedHandle<FileSpec_IF> file;
    if (!path.IsEmpty()) {
        maker->MakeFileSpec(path, volume, file);
    }
    return file;
}
