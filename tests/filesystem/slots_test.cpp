// The order of the virtual operations, which other programs of the suite are built against.

#include <gtest/gtest.h>

#include <cstring>
#include <initializer_list>

#include "filesystem/AliasSpec_IF.h"
#include "filesystem/ClassFactory_IF.h"
#include "filesystem/FileChannel_IF.h"
#include "filesystem/FileException.h"
#include "filesystem/FolderSpec_IF.h"
#include "filesystem/Private/Windows/API.h"
#include "filesystem/Private/Windows/FileSpec_Win32.h"
#include "filesystem/Volume_IF.h"

namespace {

// The place of an operation in its class's table: a pointer to a virtual member begins with the
// place's offset in bytes, plus 1.
template <typename Member>
std::size_t Slot(Member member) {
    static_assert(sizeof member >= sizeof(std::size_t));
    std::size_t word;
    std::memcpy(&word, &member, sizeof word);
    return (word - 1) / sizeof(void*);
}

void ExpectInOrder(std::size_t first, std::initializer_list<std::size_t> slots) {
    for (const std::size_t slot : slots) {
        EXPECT_EQ(slot, first);
        ++first;
    }
}

// A destructor takes two places.
TEST(Slots, FileObjects) {
    using I = FileSpec_IF;
    ExpectInOrder(2, {Slot(&I::Create),
                      Slot(&I::CreateFolder),
                      Slot(&I::Delete),
                      Slot(&I::GetAccessTime),
                      Slot(&I::GetAttributes),
                      Slot(&I::GetBaseName),
                      Slot(&I::GetCanonicalPath),
                      Slot(&I::GetCreationTime),
                      Slot(&I::GetExtension),
                      Slot(&I::GetFileSize),
                      Slot(&I::GetModificationTime),
                      Slot(&I::GetName),
                      Slot(&I::GetNativePath),
                      Slot(&I::GetPath),
                      Slot(&I::GetVolume),
                      Slot(&I::IsAlias),
                      Slot(&I::IsEqual),
                      Slot(&I::IsFile),
                      Slot(&I::IsFolder),
                      Slot(&I::IsPresent),
                      Slot(&I::IsRoot),
                      Slot(&I::MakeChild),
                      Slot(&I::MakeFileChannel),
                      Slot(&I::MakeParent),
                      Slot(&I::Rename),
                      Slot(&I::RootFolder),
                      Slot(&I::SetAccessTime),
                      Slot(&I::SetAttributes),
                      Slot(&I::SetCreationTime),
                      Slot(&I::SetFileSize),
                      Slot(&I::SetModificationTime),
                      Slot(&FileSpec_Win32::GetLongPath)});
    ExpectInOrder(2, {Slot(&AliasSpec_IF::ResolveAlias)});
    ExpectInOrder(2, {Slot(&FolderSpec_IF::DeleteTree), Slot(&FolderSpec_IF::DeleteContents),
                      Slot(&FolderSpec_IF::MakeIterator)});
    ExpectInOrder(2, {Slot(&FolderSpec_Iterator::Next)});
}

TEST(Slots, ChannelsVolumesAndTheirFactory) {
    using C = FileChannel_IF;
    ExpectInOrder(
        2, {Slot(&C::Close), Slot(&C::Flush), Slot(&C::GetSize), Slot(&C::GetFileSpec),
            Slot(&C::GetPosition), Slot(&C::IsOpen), Slot(&C::Read), Slot(&C::ReleaseToStream),
            Slot(&C::SetSize), Slot(&C::SetPosition), Slot(&C::Write)});
    using V = Volume_IF;
    ExpectInOrder(
        2, {Slot(&V::GetRootFolder), Slot(&V::GetCapacity), Slot(&V::GetFreeSpace),
            Slot(&V::GetMaximumFileSize), Slot(&V::GetMaximumNameLength), Slot(&V::GetName),
            Slot(&V::IsCaseSensitive), Slot(&V::IsEqual), Slot(&V::IsMounted), Slot(&V::IsNetwork),
            Slot(&V::IsRemovable), Slot(&V::IsValid), Slot(&V::Unmount)});
    using Make = void (ClassFactory_IF::*)(const FilePath&, const SharedHandle<Volume_IF>&,
                                           SharedHandle<FileSpec_IF>&);
    ExpectInOrder(0, {Slot(static_cast<Make>(&ClassFactory_IF::MakeFileSpec))});
    // The destructor's two places, then what() and the six operations of its base.
    ExpectInOrder(9, {Slot(&FileException::GetPath), Slot(&FileException::GetInner)});
}

TEST(Slots, PlatformTable) {
    using A = FileSystem_Win32::API;
    ExpectInOrder(
        0, {Slot(&A::CopyFileExW), Slot(&A::CreateDirectoryW), Slot(&A::CreateFileW),
            Slot(&A::DeleteFileW), Slot(&A::FindFirstFileW), Slot(&A::FindNextFileW),
            Slot(&A::GetCurrentDirectoryW), Slot(&A::GetDiskFreeSpaceExW), Slot(&A::GetDriveTypeW),
            Slot(&A::GetFileAttributesExW), Slot(&A::GetFileSizeEx), Slot(&A::GetFullPathNameW),
            Slot(&A::GetTempPathW), Slot(&A::GetVolumeInformationW), Slot(&A::MoveFileW),
            Slot(&A::RemoveDirectoryW), Slot(&A::SetCurrentDirectoryW),
            Slot(&A::SetFileAttributesW), Slot(&A::SetFilePointerEx)});
}

}  // namespace
