#include "filesystem/FileSpec.h"

#include <typeinfo>

#include "filesystem/ClassFactory_IF.h"
#include "filesystem/FileChannel.h"
#include "filesystem/FileException.h"
#include "filesystem/Volume_IF.h"
#include "filesystem/dates/DateTime.h"

namespace {

constexpr const char* kSource = ".\\Private\\FileSpec";

}  // namespace

FileSpec::FileSpec(const FilePath& path) : impl(ClassFactory_IF::MakeFileSpec(path, nullptr)) {}

void FileSpec::CreateFolder() const {
    Existing(impl, kSource, 81).CreateFolder();
}

void FileSpec::Delete() const {
    Existing(impl, kSource, 87).Delete();
}

std::uint32_t FileSpec::GetAttributes() const {
    return Existing(impl, kSource, 99).GetAttributes();
}

FilePath FileSpec::GetExtension() const {
    return impl == nullptr ? FilePath() : impl->GetExtension();
}

std::uint64_t FileSpec::GetFileSize() const {
    return Existing(impl, kSource, 126).GetFileSize();
}

DateTime FileSpec::GetModificationTime() const {
    return Existing(impl, kSource, 132).GetModificationTime();
}

FilePath FileSpec::GetName() const {
    return impl == nullptr ? FilePath() : impl->GetName();
}

WideString FileSpec::GetNativePath() const {
    return impl == nullptr ? WideString() : impl->GetNativePath();
}

FilePath FileSpec::GetPath() const {
    return impl == nullptr ? FilePath() : impl->GetPath();
}

SharedHandle<Volume_IF> FileSpec::GetVolume() const {
    return Existing(impl, kSource, 153).GetVolume();
}

bool FileSpec::IsAlias() const {
    return impl != nullptr && impl->IsAlias();
}

bool FileSpec::IsEqual(const FileSpec& other) const {
    if (impl == nullptr || other.impl == nullptr) {
        return impl == other.impl;
    }
    const FileSpec_IF& mine = *impl;
    const FileSpec_IF& theirs = *other.impl;
    return typeid(mine) == typeid(theirs) && mine.IsEqual(other);
}

bool FileSpec::IsFile() const {
    return impl != nullptr && impl->IsFile();
}

bool FileSpec::IsFolder() const {
    return impl != nullptr && impl->IsFolder();
}

bool FileSpec::IsPresent() const {
    return impl != nullptr && impl->IsPresent();
}

bool FileSpec::IsRoot() const {
    return impl != nullptr && impl->IsRoot();
}

FileSpec FileSpec::MakeChild(const FilePath& name) const {
    return Existing(impl, kSource, 203).MakeChild(name);
}

FileChannel FileSpec::MakeFileChannel(std::uint32_t mode) const {
    return Existing(impl, kSource, 210).MakeFileChannel(mode);
}

FileSpec FileSpec::MakeParent() const {
    return Existing(impl, kSource, 216).MakeParent();
}

void FileSpec::Rename(const FileSpec& target) const {
    FileSpec_IF& source = Existing(impl, kSource, 223);
    Existing(target.impl, kSource, 224);
    source.Rename(target);
}

void FileSpec::SetAttributes(std::uint32_t attributes) const {
    Existing(impl, kSource, 244).SetAttributes(attributes);
}

void FileSpec::SetModificationTime(const DateTime& time) const {
    Existing(impl, kSource, 258).SetModificationTime(time);
}
