// A file or folder by its path: the value that the rest of the library works with.
//
// Copies share one file object, which never changes. The null object is legal; what each operation
// does for it is documented here, the rest in FileSpec_IF. "Raises" for a null object means a
// FileException with an empty path. Any thread, once FileSystem_Start has run.
#pragma once

#include <cstdint>

#include "filesystem/FilePath.h"
#include "filesystem/FileSpec_IF.h"
#include "text/SharedHandle.h"

class FileSpec {
  public:
    // The null object.
    FileSpec() = default;

    // The object of a path in any form, relative ones resolved against the process's current
    // folder; null for the empty path. A path that breaks the rules of paths raises, and so does
    // one whose volume cannot be reached.
    explicit FileSpec(const FilePath& path);

    explicit FileSpec(const SharedHandle<FileSpec_IF>& object) : impl(object) {}
    FileSpec(const FileSpec&) = default;
    FileSpec& operator=(const FileSpec&) = default;
    virtual ~FileSpec() = default;

    bool IsNull() const { return impl == nullptr; }

    // For the null object each of these raises.
    void CreateFolder() const;
    void Delete() const;
    std::uint32_t GetAttributes() const;
    std::uint64_t GetFileSize() const;
    DateTime GetModificationTime() const;
    SharedHandle<Volume_IF> GetVolume() const;
    FileSpec MakeChild(const FilePath& name) const;
    FileChannel MakeFileChannel(std::uint32_t mode) const;
    FileSpec MakeParent() const;
    void Rename(const FileSpec& target) const;  // for a null target too
    void SetAttributes(std::uint32_t attributes) const;
    void SetModificationTime(const DateTime& time) const;

    // For the null object each of these is empty.
    FilePath GetExtension() const;
    FilePath GetName() const;
    WideString GetNativePath() const;
    FilePath GetPath() const;

    // For the null object each of these is false.
    bool IsAlias() const;
    bool IsFile() const;
    bool IsFolder() const;
    bool IsPresent() const;
    bool IsRoot() const;

    // Two null objects are equal; objects of different classes are not.
    bool IsEqual(const FileSpec& other) const;

  protected:
    const SharedHandle<FileSpec_IF>& GetImpl() const { return impl; }

  private:
    SharedHandle<FileSpec_IF> impl;
};
