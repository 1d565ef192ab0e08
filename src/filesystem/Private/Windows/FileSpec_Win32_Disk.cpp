// What a file object does on disk.

#include "filesystem/FileSpec.h"
#include "filesystem/Private/Windows/API.h"
#include "filesystem/Private/Windows/FileSpec_Win32.h"
#include "filesystem/dates/DateTime.h"
#include "platform/handles.h"

namespace {

using FileSystem_Win32::GetApi;

struct AttributeBit {
    std::uint32_t portable;
    DWORD platform;
};

constexpr AttributeBit kAttributeBits[] = {
    {FileAttributes::kArchive, FILE_ATTRIBUTE_ARCHIVE},
    {FileAttributes::kHidden, FILE_ATTRIBUTE_HIDDEN},
    {FileAttributes::kReadOnly, FILE_ATTRIBUTE_READONLY},
    {FileAttributes::kSystem, FILE_ATTRIBUTE_SYSTEM},
};

}  // namespace

void FileSpec_Win32::Create() {
    const ScopedHandle file(GetApi()->CreateFileW(GetLongPath().c_str(), 0, 0, nullptr, CREATE_NEW,
                                                  FILE_ATTRIBUTE_NORMAL, nullptr));
    Require(static_cast<bool>(file));
}

void FileSpec_Win32::CreateFolder() {
    Require(GetApi()->CreateDirectoryW(GetLongPath().c_str(), nullptr));
}

void FileSpec_Win32::Delete() {
    WIN32_FILE_ATTRIBUTE_DATA found;
    if (!GetApi()->GetFileAttributesExW(GetLongPath().c_str(), GetFileExInfoStandard, &found)) {
        return;
    }
    DeletePresent((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0);
}

void FileSpec_Win32::DeletePresent(bool isFolder) const {
    const WideString longPath = GetLongPath();
    for (bool isFirst = true;; isFirst = false) {
        const BOOL isDeleted = isFolder ? GetApi()->RemoveDirectoryW(longPath.c_str())
                                        : GetApi()->DeleteFileW(longPath.c_str());
        if (isDeleted) {
            return;
        }
        const DWORD error = GetLastError();
        const DWORD attributes = GetPlatformAttributes().dwFileAttributes;
        if ((attributes & FILE_ATTRIBUTE_READONLY) == 0 || !isFirst) {
            Fail(error);
        }
        Require(GetApi()->SetFileAttributesW(
            longPath.c_str(), attributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY)));
    }
}

DateTime FileSpec_Win32::GetAccessTime() const {
    return DateTime::FromFileTime(GetPlatformAttributes().ftLastAccessTime);
}

DateTime FileSpec_Win32::GetCreationTime() const {
    return DateTime::FromFileTime(GetPlatformAttributes().ftCreationTime);
}

DateTime FileSpec_Win32::GetModificationTime() const {
    return DateTime::FromFileTime(GetPlatformAttributes().ftLastWriteTime);
}

std::uint32_t FileSpec_Win32::GetAttributes() const {
    const DWORD attributes = GetPlatformAttributes().dwFileAttributes;
    std::uint32_t word = 0;
    for (const AttributeBit& bit : kAttributeBits) {
        word |= (attributes & bit.platform) != 0 ? bit.portable : 0;
    }
    return word;
}

void FileSpec_Win32::SetAttributes(std::uint32_t attributes) {
    DWORD word = GetPlatformAttributes().dwFileAttributes;
    for (const AttributeBit& bit : kAttributeBits) {
        word = (attributes & bit.portable) != 0 ? word | bit.platform : word & ~bit.platform;
    }
    Require(GetApi()->SetFileAttributesW(GetLongPath().c_str(), word));
}

std::uint64_t FileSpec_Win32::GetFileSize() const {
    const ScopedHandle file(Open(0, 0));
    LARGE_INTEGER size = {};
    Require(GetApi()->GetFileSizeEx(file.Get(), &size));
    return static_cast<std::uint64_t>(size.QuadPart);
}

void FileSpec_Win32::SetFileSize(std::uint64_t size) {
    const ScopedHandle file(Open(GENERIC_WRITE, 0));
    LARGE_INTEGER position = {};
    position.QuadPart = static_cast<LONGLONG>(size);
    if (!GetApi()->SetFilePointerEx(file.Get(), position, nullptr, FILE_BEGIN) ||
        !SetEndOfFile(file.Get())) {
        Fail(GetLastError());
    }
}

bool FileSpec_Win32::IsFolder() const {
    return (GetPlatformAttributes().dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool FileSpec_Win32::IsPresent() const {
    WIN32_FILE_ATTRIBUTE_DATA data;
    return GetApi()->GetFileAttributesExW(GetLongPath().c_str(), GetFileExInfoStandard, &data) != 0;
}

void FileSpec_Win32::Rename(const FileSpec& target) {
    Require(GetApi()->MoveFileW(GetLongPath().c_str(), target.GetPath().ToWide().c_str()));
}

void FileSpec_Win32::SetAccessTime(const DateTime& time) {
    const FILETIME fileTime = time.ToFileTime();
    SetTimes(nullptr, &fileTime, nullptr);
}

void FileSpec_Win32::SetCreationTime(const DateTime& time) {
    const FILETIME fileTime = time.ToFileTime();
    SetTimes(&fileTime, nullptr, nullptr);
}

void FileSpec_Win32::SetModificationTime(const DateTime& time) {
    const FILETIME fileTime = time.ToFileTime();
    SetTimes(nullptr, nullptr, &fileTime);
}

WIN32_FILE_ATTRIBUTE_DATA FileSpec_Win32::GetPlatformAttributes() const {
    WIN32_FILE_ATTRIBUTE_DATA data;
    Require(GetApi()->GetFileAttributesExW(GetLongPath().c_str(), GetFileExInfoStandard, &data));
    return data;
}

HANDLE FileSpec_Win32::Open(DWORD access, DWORD flags) const {
    const HANDLE file =
        GetApi()->CreateFileW(GetLongPath().c_str(), access, 0, nullptr, OPEN_EXISTING,
                              FILE_ATTRIBUTE_NORMAL | flags, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        Fail(GetLastError());
    }
    return file;
}

void FileSpec_Win32::SetTimes(const FILETIME* creation, const FILETIME* access,
                              const FILETIME* write) const {
    const ScopedHandle file(Open(GENERIC_WRITE, IsFolder() ? FILE_FLAG_BACKUP_SEMANTICS : 0));
    Require(SetFileTime(file.Get(), creation, access, write));
}
