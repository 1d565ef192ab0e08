// The library's own factory: file objects of the class that the running platform asks for.
#pragma once

#include "filesystem/ClassFactory_IF.h"

class ClassFactory : public ClassFactory_IF {
  public:
    using ClassFactory_IF::MakeFileSpec;

    void MakeFileSpec(const FilePath& path, const SharedHandle<Volume_IF>& volume,
                      SharedHandle<FileSpec_IF>& file) override;
};
