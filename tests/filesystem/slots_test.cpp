// The order of the virtual operations, which other programs of the suite are built against.

#include <gtest/gtest.h>

#include <cstring>

#include "filesystem/AliasSpec_IF.h"
#include "filesystem/ClassFactory_IF.h"
#include "filesystem/FileChannel_IF.h"
#include "filesystem/FileException.h"
#include "filesystem/FolderSpec_IF.h"
#include "filesystem/Private/Windows/API.h"
#include "filesystem/Private/Windows/FileSpec_Win32.h"
#include "filesystem/Volume_IF.h"

namespace {

// Where a virtual operation stands in its class's table: a pointer to it begins with the offset in
// bytes, plus 1.
template <typename Member>
std::size_t SlotOf(Member member) {
    static_assert(sizeof member >= sizeof(std::size_t));
    std::size_t word;
    std::memcpy(&word, &member, sizeof word);
    return (word - 1) / sizeof(void*);
}

template <auto... members>
void ExpectInOrder(std::size_t first) {
    for (const std::size_t slot : {SlotOf(members)...}) {
        EXPECT_EQ(slot, first++);
    }
}

// A destructor takes two places.
TEST(Slots, FileObjects) {
    using I = FileSpec_IF;
    ExpectInOrder<&I::Create, &I::CreateFolder, &I::Delete, &I::GetAccessTime, &I::GetAttributes,
                  &I::GetBaseName, &I::GetCanonicalPath, &I::GetCreationTime, &I::GetExtension,
                  &I::GetFileSize, &I::GetModificationTime, &I::GetName, &I::GetNativePath,
                  &I::GetPath, &I::GetVolume, &I::IsAlias, &I::IsEqual, &I::IsFile, &I::IsFolder,
                  &I::IsPresent, &I::IsRoot, &I::MakeChild, &I::MakeFileChannel, &I::MakeParent,
                  &I::Rename, &I::RootFolder, &I::SetAccessTime, &I::SetAttributes,
                  &I::SetCreationTime, &I::SetFileSize, &I::SetModificationTime,
                  &FileSpec_Win32::GetLongPath>(2);
    ExpectInOrder<&AliasSpec_IF::ResolveAlias>(2);
    using F = FolderSpec_IF;
    ExpectInOrder<&F::DeleteTree, &F::DeleteContents, &F::MakeIterator>(2);
    ExpectInOrder<&FolderSpec_Iterator::Next>(2);
}

TEST(Slots, ChannelsVolumesAndTheirFactory) {
    using C = FileChannel_IF;
    ExpectInOrder<&C::Close, &C::Flush, &C::GetSize, &C::GetFileSpec, &C::GetPosition, &C::IsOpen,
                  &C::Read, &C::ReleaseToStream, &C::SetSize, &C::SetPosition, &C::Write>(2);
    using V = Volume_IF;
    ExpectInOrder<&V::GetRootFolder, &V::GetCapacity, &V::GetFreeSpace, &V::GetMaximumFileSize,
                  &V::GetMaximumNameLength, &V::GetName, &V::IsCaseSensitive, &V::IsEqual,
                  &V::IsMounted, &V::IsNetwork, &V::IsRemovable, &V::IsValid, &V::Unmount>(2);
    using Make = void (ClassFactory_IF::*)(const FilePath&, const SharedHandle<Volume_IF>&,
                                           SharedHandle<FileSpec_IF>&);
    ExpectInOrder<static_cast<Make>(&ClassFactory_IF::MakeFileSpec)>(0);
    // Behind what() and the six operations of its base.
    ExpectInOrder<&FileException::GetPath, &FileException::GetInner>(9);
}

TEST(Slots, PlatformTable) {
    using A = FileSystem_Win32::API;
    ExpectInOrder<&A::CopyFileExW, &A::CreateDirectoryW, &A::CreateFileW, &A::DeleteFileW,
                  &A::FindFirstFileW, &A::FindNextFileW, &A::GetCurrentDirectoryW,
                  &A::GetDiskFreeSpaceExW, &A::GetDriveTypeW, &A::GetFileAttributesExW,
                  &A::GetFileSizeEx, &A::GetFullPathNameW, &A::GetTempPathW,
                  &A::GetVolumeInformationW, &A::MoveFileW, &A::RemoveDirectoryW,
                  &A::SetCurrentDirectoryW, &A::SetFileAttributesW, &A::SetFilePointerEx>(0);
}

}  // namespace
