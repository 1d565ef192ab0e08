// A file object that is none of the platform's: what copies to or from it is copied block by block.
#pragma once

#include <memory>

#include "filesystem/FileChannel.h"
#include "filesystem/FileSpec.h"
#include "filesystem/FileSpec_IF.h"
#include "filesystem/Volume_IF.h"
#include "filesystem/dates/DateTime.h"

// Does everything through the file object that it stands for.
class ForwardingFile : public FileSpec_IF {
  public:
    static FileSpec Make(const FileSpec& file) {
        return FileSpec(SharedHandle<FileSpec_IF>(std::make_shared<ForwardingFile>(file)));
    }
    explicit ForwardingFile(const FileSpec& file) : file_(file) {}

    void Create() override { file_.Get()->Create(); }
    void CreateFolder() override { file_.Get()->CreateFolder(); }
    void Delete() override { file_.Get()->Delete(); }
    DateTime GetAccessTime() const override { return file_.Get()->GetAccessTime(); }
    std::uint32_t GetAttributes() const override { return file_.Get()->GetAttributes(); }
    FilePath GetBaseName() const override { return file_.Get()->GetBaseName(); }
    FilePath GetCanonicalPath() const override { return file_.Get()->GetCanonicalPath(); }
    DateTime GetCreationTime() const override { return file_.Get()->GetCreationTime(); }
    FilePath GetExtension() const override { return file_.Get()->GetExtension(); }
    std::uint64_t GetFileSize() const override { return file_.Get()->GetFileSize(); }
    DateTime GetModificationTime() const override { return file_.Get()->GetModificationTime(); }
    FilePath GetName() const override { return file_.Get()->GetName(); }
    WideString GetNativePath() const override { return file_.Get()->GetNativePath(); }
    FilePath GetPath() const override { return file_.Get()->GetPath(); }
    SharedHandle<Volume_IF> GetVolume() const override { return file_.Get()->GetVolume(); }
    bool IsAlias() const override { return file_.Get()->IsAlias(); }
    bool IsEqual(const FileSpec& other) const override { return file_.Get()->IsEqual(other); }
    bool IsFile() const override { return file_.Get()->IsFile(); }
    bool IsFolder() const override { return file_.Get()->IsFolder(); }
    bool IsPresent() const override { return file_.Get()->IsPresent(); }
    bool IsRoot() const override { return file_.Get()->IsRoot(); }
    FileSpec MakeChild(const FilePath& name) const override { return file_.MakeChild(name); }
    FileChannel MakeFileChannel(std::uint32_t mode) override {
        return file_.Get()->MakeFileChannel(mode);
    }
    FileSpec MakeParent() const override { return file_.MakeParent(); }
    void Rename(const FileSpec& target) override { file_.Get()->Rename(target); }
    FileSpec RootFolder() const override { return file_.Get()->RootFolder(); }
    void SetAccessTime(const DateTime& time) override { file_.Get()->SetAccessTime(time); }
    void SetAttributes(std::uint32_t bits) override { file_.Get()->SetAttributes(bits); }
    void SetCreationTime(const DateTime& time) override { file_.Get()->SetCreationTime(time); }
    void SetFileSize(std::uint64_t size) override { file_.Get()->SetFileSize(size); }
    void SetModificationTime(const DateTime& time) override {
        file_.Get()->SetModificationTime(time);
    }

  private:
    FileSpec_Impl file_;
};
