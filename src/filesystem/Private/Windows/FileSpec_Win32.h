// A file object whose path is of the Windows grammar.
//
// The stored path is absolute, in the letter case in which it was given. It holds no prefix for
// long paths, and no trailing backslash unless it is a root: "C:\" or "\\server\share\".
#pragma once

#include <memory>

#include "filesystem/FileSpec_IF.h"
#include "filesystem/FolderSpec_IF.h"
#include "filesystem/Volume_IF.h"
#include "platform/files.h"
#include "platform/types.h"

class FileSpec_Win32 : public FileSpec_IF,
                       public AliasSpec_IF,
                       public FolderSpec_IF,
                       public std::enable_shared_from_this<FileSpec_Win32> {
  public:
    class Iterator;

    // Parses a path that is not empty. With a volume given, the path has to lie on that one. Made
    // through std::make_shared alone.
    FileSpec_Win32(const FilePath& filePath, const SharedHandle<Volume_IF>& onVolume);
    FileSpec_Win32(WideString text, const SharedHandle<Volume_IF>& onVolume);

    void Create() override;
    void CreateFolder() override;
    void Delete() override;
    DateTime GetAccessTime() const override;
    std::uint32_t GetAttributes() const override;
    FilePath GetBaseName() const override { return FilePath(path).GetBaseName(); }
    FilePath GetCanonicalPath() const override;
    DateTime GetCreationTime() const override;
    FilePath GetExtension() const override { return FilePath(path).GetExtension(); }
    std::uint64_t GetFileSize() const override;
    DateTime GetModificationTime() const override;
    FilePath GetName() const override;
    WideString GetNativePath() const override { return GetLongPath(); }
    FilePath GetPath() const override { return FilePath(path); }
    SharedHandle<Volume_IF> GetVolume() const override { return volume; }
    bool IsAlias() const override { return EqualNoCase(GetExtension(), "lnk"); }
    bool IsEqual(const FileSpec& other) const override;
    bool IsFile() const override { return !IsFolder(); }
    bool IsFolder() const override;
    bool IsPresent() const override;
    bool IsRoot() const override { return path == root; }
    FileSpec MakeChild(const FilePath& name) const override;
    FileChannel MakeFileChannel(std::uint32_t mode) override;
    FileSpec MakeParent() const override;
    void Rename(const FileSpec& target) override;
    FileSpec RootFolder() const override;
    void SetAccessTime(const DateTime& time) override;
    void SetAttributes(std::uint32_t attributes) override;
    void SetCreationTime(const DateTime& time) override;
    void SetFileSize(std::uint64_t size) override;
    void SetModificationTime(const DateTime& time) override;

    // The platform form: the stored path after the prefix that lifts the limit on its length.
    virtual WideString GetLongPath() const;

    SharedHandle<FileSpec_IF> ResolveAlias() override;

    void DeleteTree(const SharedHandle<FolderSpec_IF>& self) override;
    void DeleteContents(bool recursive, const SharedHandle<FolderSpec_IF>& self) override;
    SharedHandle<FolderSpec_Iterator> MakeIterator(
        const SharedHandle<FolderSpec_IF>& self) override;

    // Raises the failure that a code of the platform stands for, with this object's path.
    [[noreturn]] void Fail(DWORD code) const;

    // Raises the platform's last error unless a call of it succeeded.
    void Require(bool succeeded) const {
        if (!succeeded) {
            Fail(GetLastError());
        }
    }

  protected:
    const WideString& GetStoredPath() const { return path; }

  private:
    SharedHandle<FileSpec_IF> MakeChildSpec(const WideString& name) const;
    SharedHandle<FileSpec_IF> MakeVariant(WideString text) const;
    WIN32_FILE_ATTRIBUTE_DATA GetPlatformAttributes() const;

    // Deletes what was just found; raises also where it has gone since.
    void DeletePresent(bool isFolder) const;

    // Opens what exists, without sharing; raises on failure.
    HANDLE Open(DWORD access, DWORD flags) const;

    // A null time is left as it is.
    void SetTimes(const FILETIME* creation, const FILETIME* access, const FILETIME* write) const;

    WideString path;
    WideString root;
    bool unc = false;
    SharedHandle<Volume_IF> volume;
};

// The file object of the Windows 9x family, which knows no prefix for long paths.
class FileSpec_Win9X : public FileSpec_Win32 {
  public:
    using FileSpec_Win32::FileSpec_Win32;

    // The stored path as it is.
    WideString GetLongPath() const override { return GetStoredPath(); }
};
