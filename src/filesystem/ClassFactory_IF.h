// The one place that decides which class a new file object gets.
#pragma once

#include "filesystem/FilePath.h"
#include "text/SharedHandle.h"

class FileSpec_IF;
class Volume_IF;

class ClassFactory_IF {
  public:
    // Stores the process's factory. The first one stays: later calls do nothing. Any thread.
    static void SetFactory(const SharedHandle<ClassFactory_IF>& factory);

    // A file object from the process's factory: of a path in any form, on the volume given or, with
    // a null handle, on whichever the path lies. Null for the empty path. Raises for a path that
    // does not parse, and a VelmarException when no factory is set. Any thread.
    static SharedHandle<FileSpec_IF> MakeFileSpec(const FilePath& path,
                                                  const SharedHandle<Volume_IF>& volume);

    // What a factory decides: the new object, which parses the path; null for the empty path.
    virtual void MakeFileSpec(const FilePath& path, const SharedHandle<Volume_IF>& volume,
                              SharedHandle<FileSpec_IF>& file) = 0;

    virtual ~ClassFactory_IF() = default;
};
