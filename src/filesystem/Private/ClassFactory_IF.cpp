#include "filesystem/ClassFactory_IF.h"

#include <atomic>
#include <memory>

#include "filesystem/FileSpec_IF.h"
#include "text/VelmarException.h"

namespace {

// Never destroyed.
constinit std::atomic<const SharedHandle<ClassFactory_IF>*> current_factory = nullptr;

}  // namespace

void ClassFactory_IF::SetFactory(const SharedHandle<ClassFactory_IF>& factory) {
    auto kept = std::make_unique<const SharedHandle<ClassFactory_IF>>(factory);
    const SharedHandle<ClassFactory_IF>* none = nullptr;
    if (factory != nullptr && current_factory.compare_exchange_strong(none, kept.get())) {
        kept.release();
    }
}

SharedHandle<FileSpec_IF> ClassFactory_IF::MakeFileSpec(const FilePath& path,
                                                        const SharedHandle<Volume_IF>& volume) {
    const SharedHandle<ClassFactory_IF>* const maker = current_factory;
    if (maker == nullptr) {
        throw VelmarException(".\\Private\\FileSystem_ClassFactory_IF", 35);
    }
    SharedHandle<FileSpec_IF> file;
    if (!path.IsEmpty()) {
        (*maker)->MakeFileSpec(path, volume, file);
    }
    return file;
}
