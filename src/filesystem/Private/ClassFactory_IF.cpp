#include "filesystem/ClassFactory_IF.h"

#include <atomic>
#include <mutex>

#include "filesystem/FileSpec_IF.h"
#include "platform/never_destroyed.h"
#include "text/VelmarException.h"

namespace {

std::mutex& GetFactoryLock() {
    static NeverDestroyed<std::mutex> lock;
    return *lock;
}

// Never destroyed, as its lock.
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
