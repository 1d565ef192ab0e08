#include "filesystem/Private/Windows/FileSpec_Win32.h"

#include <algorithm>
#include <string_view>

#include "filesystem/ClassFactory_IF.h"
#include "filesystem/FileSpec.h"
#include "filesystem/Private/Windows/FileChannel_Win32.h"
#include "filesystem/Private/Windows/StoredPath.h"
#include "filesystem/Private/Windows/Volume_Win32.h"

FileSpec_Win32::FileSpec_Win32(const FilePath& filePath, const SharedHandle<Volume_IF>& onVolume)
    : FileSpec_Win32(filePath.ToWide(), onVolume) {}

FileSpec_Win32::FileSpec_Win32(WideString text, const SharedHandle<Volume_IF>& onVolume)
    : path(std::move(text)) {
    const DWORD failure = FileSystem_Win32::StoredPath::Parse(path, root, unc);
    if (failure != ERROR_SUCCESS) {
        Fail(failure);
    }
    const VolumeInfo info(root);
    if (FileSystem_Win32::StoredPath::HasLongerName(path, root, info.max_name_length)) {
        Fail(ERROR_BAD_PATHNAME);
    }
    volume = FileSystem_Win32::FindVolume(info, onVolume == nullptr);
    if (onVolume != nullptr && volume != onVolume) {
        throw VelmarException(".\\Private\\Windows\\FileSystem_FileSpec_Win32", 608);
    }
}

FilePath FileSpec_Win32::GetCanonicalPath() const {
    return FilePath(path).GetCanonical(volume->IsCaseSensitive());
}

FilePath FileSpec_Win32::GetName() const {
    return FilePath(path.substr(path.rfind(WIDE('\\')) + 1));
}

bool FileSpec_Win32::IsEqual(const FileSpec& other) const {
    const FileSpec_IF* theirs = FileSpec_Impl(other).Get();
    return theirs == this || (theirs != nullptr && theirs->GetVolume() == volume &&
                              theirs->GetCanonicalPath() == GetCanonicalPath());
}

SharedHandle<FileSpec_IF> FileSpec_Win32::MakeChildSpec(const WideString& name) const {
    WideString child;
    child.reserve(path.size() + 1 + name.size());
    child = path;
    if (!IsRoot()) {
        child += WIDE('\\');
    }
    child += name;
    return MakeVariant(std::move(child));
}

FileSpec FileSpec_Win32::MakeChild(const FilePath& name) const {
    return FileSpec(MakeChildSpec(name.ToWide()));
}

FileChannel FileSpec_Win32::MakeFileChannel(std::uint32_t mode) {
    return FileChannel(std::make_shared<FileChannel_Win32>(shared_from_this(), mode));
}

FileSpec FileSpec_Win32::MakeParent() const {
    if (IsRoot()) {
        return FileSpec();
    }
    return FileSpec(MakeVariant(path.substr(0, path.rfind(WIDE('\\')) + 1)));
}

FileSpec FileSpec_Win32::RootFolder() const {
    return FileSpec(ClassFactory_IF::MakeFileSpec(FilePath(root), volume));
}

WideString FileSpec_Win32::GetLongPath() const {
    using View = std::basic_string_view<WCHAR>;
    const View prefix = unc ? View(WIDE("\\\\?\\UNC\\")) : View(WIDE("\\\\?\\"));
    const View rest = View(path).substr(unc ? 2 : 0);
    WideString longPath;
    longPath.reserve(prefix.size() + rest.size());
    return longPath.append(prefix).append(rest);
}

void FileSpec_Win32::Fail(DWORD code) const {
    ThrowFileError(code, FilePath(path));
}

// A child and a parent are of this object's own class: what the platform can be
// asked with does not change on the way.
SharedHandle<FileSpec_IF> FileSpec_Win32::MakeVariant(WideString text) const {
    if (dynamic_cast<const FileSpec_Win9X*>(this) != nullptr) {
        return std::make_shared<FileSpec_Win9X>(std::move(text), volume);
    }
    return std::make_shared<FileSpec_Win32>(std::move(text), volume);
}
