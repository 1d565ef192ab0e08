// A file or folder by its path: the value that the rest of the library works with.
//
// Copies share one file object, which never changes. The operations are described in FileSpec_IF;
// the null object is legal, and raises a FileException with an empty path where stated. Any thread,
// once FileSystem_Start has run.
#pragma once

#include <cstdint>

#include "filesystem/FileChannel.h"
#include "filesystem/FileException.h"
#include "filesystem/FilePath.h"
#include "filesystem/FileSpec_IF.h"
#include "filesystem/dates/DateTime.h"
#include "text/SharedHandle.h"

class FileSpec {
  public:
    // The null object.
    FileSpec() = default;

    // The object of a path in any form, relative ones resolved against the current folder; null for
    // the empty path. Raises for one that does not parse or whose volume cannot be reached.
    explicit FileSpec(const FilePath& path);

    explicit FileSpec(const SharedHandle<FileSpec_IF>& object) : impl(object) {}
    virtual ~FileSpec() = default;

    bool IsNull() const { return impl == nullptr; }

    // For the null object each of these raises; for a null target Rename does too.
    void CreateFolder() const { Get(81).CreateFolder(); }
    void Delete() const { Get(87).Delete(); }
    std::uint32_t GetAttributes() const { return Get(99).GetAttributes(); }
    std::uint64_t GetFileSize() const { return Get(126).GetFileSize(); }
    DateTime GetModificationTime() const { return Get(132).GetModificationTime(); }
    SharedHandle<Volume_IF> GetVolume() const { return Get(153).GetVolume(); }
    FileSpec MakeChild(const FilePath& name) const { return Get(203).MakeChild(name); }
    FileChannel MakeFileChannel(std::uint32_t mode) const { return Get(210).MakeFileChannel(mode); }
    FileSpec MakeParent() const { return Get(216).MakeParent(); }
    void Rename(const FileSpec& target) const {
        FileSpec_IF& source = Get(223);
        target.Get(224);
        source.Rename(target);
    }
    void SetAttributes(std::uint32_t attributes) const { Get(244).SetAttributes(attributes); }
    void SetModificationTime(const DateTime& time) const { Get(258).SetModificationTime(time); }

    // For the null object each of these is empty or false.
    FilePath GetExtension() const { return IsNull() ? FilePath() : impl->GetExtension(); }
    FilePath GetName() const { return IsNull() ? FilePath() : impl->GetName(); }
    WideString GetNativePath() const { return IsNull() ? WideString() : impl->GetNativePath(); }
    FilePath GetPath() const { return IsNull() ? FilePath() : impl->GetPath(); }
    bool IsAlias() const { return !IsNull() && impl->IsAlias(); }
    bool IsFile() const { return !IsNull() && impl->IsFile(); }
    bool IsFolder() const { return !IsNull() && impl->IsFolder(); }
    bool IsPresent() const { return !IsNull() && impl->IsPresent(); }
    bool IsRoot() const { return !IsNull() && impl->IsRoot(); }

    // Two null objects are equal; objects of different classes are not.
    bool IsEqual(const FileSpec& other) const;

  protected:
    const SharedHandle<FileSpec_IF>& GetImpl() const { return impl; }

  private:
    FileSpec_IF& Get(int line) const { return Existing(impl, ".\\Private\\FileSpec", line); }

    SharedHandle<FileSpec_IF> impl;
};

// Opens a file object up to its implementation, for its class or an operation of it alone.
class FileSpec_Impl : public FileSpec {
  public:
    explicit FileSpec_Impl(const FileSpec& file) : FileSpec(file) {}

    // Null for the null object; lives as long as any file object that shares it.
    FileSpec_IF* Get() const { return GetImpl().get(); }
};
