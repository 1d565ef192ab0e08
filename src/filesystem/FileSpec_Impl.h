// A file object opened up to its implementation, for the few that ask for its class or for an
// operation that the value class does not offer.
#pragma once

#include "filesystem/FileSpec.h"

class FileSpec_Impl : public FileSpec {
  public:
    explicit FileSpec_Impl(const FileSpec& file) : FileSpec(file) {}

    // Null for the null object; lives as long as any file object that shares it.
    FileSpec_IF* Get() const { return GetImpl().get(); }
};
