#include "filesystem/Volume_IF.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "filesystem/FileChannel.h"
#include "support/file_library.h"
#include "support/volume_api.h"

namespace {

namespace fs = std::filesystem;

using VolumeTest = FileLibrary;

SharedHandle<Volume_IF> VolumeOf(const char* path) {
    return File(path).GetVolume();
}

TEST_F(VolumeTest, LimitsByFileSystem) {
    VolumeApi api;
    const struct {
        const WCHAR* name;
        std::uint64_t limit;
    } cases[] = {
        {u"FAT16", 0xFFFFFFFF},       {u"FAT32", 0xFFFFFFFF},        {u"NTFS", 0xFFFFFFFFFFFF0000},
        {u"FAT", 0xFFFFFFFFFFFFFFFF}, {u"ntfs", 0xFFFFFFFFFFFFFFFF}, {u"", 0xFFFFFFFFFFFFFFFF},
    };
    for (const auto& each : cases) {
        api.fileSystem = each.name;
        ++api.serial;
        const SharedHandle<Volume_IF> volume = VolumeOf("L:\\");
        EXPECT_EQ(volume->GetMaximumFileSize(), each.limit);
        EXPECT_FALSE(volume->IsCaseSensitive());
        EXPECT_EQ(Text(volume->GetName()), "DISC");
        EXPECT_EQ(volume->GetMaximumNameLength(), 255u);
    }
}

TEST_F(VolumeTest, KindsAndWhetherTheMediumIsThere) {
    VolumeApi api;
    const SharedHandle<Volume_IF> volume = VolumeOf("X:\\");
    const struct {
        UINT kind;
        bool isNetwork;
        bool isRemovable;
    } kinds[] = {{DRIVE_UNKNOWN, false, false},  {DRIVE_NO_ROOT_DIR, false, false},
                 {DRIVE_REMOVABLE, false, true}, {DRIVE_FIXED, false, false},
                 {DRIVE_REMOTE, true, false},    {DRIVE_CDROM, false, true}};
    for (const auto& each : kinds) {
        api.kind = each.kind;
        EXPECT_EQ(volume->IsNetwork(), each.isNetwork) << each.kind;
        EXPECT_EQ(volume->IsRemovable(), each.isRemovable) << each.kind;
        EXPECT_TRUE(volume->IsMounted()) << each.kind;
        api.Break("GetVolumeInformationW", 21);
        EXPECT_EQ(volume->IsMounted(), !each.isRemovable) << each.kind;
        EXPECT_EQ(volume->IsValid(), !each.isRemovable) << each.kind;
        api.Break("GetVolumeInformationW", 0);
    }
    api.kind = DRIVE_CDROM;
    api.label = u"OTHER";
    EXPECT_FALSE(volume->IsMounted());
    api.label = u"DISC";
    EXPECT_TRUE(volume->IsMounted());
}

TEST_F(VolumeTest, ValuesCompareByIdentity) {
    const Volume none;
    EXPECT_TRUE(none.IsEqual(Volume()));
    EXPECT_FALSE(none.IsEqual(VolumeOf("C:\\")));
    EXPECT_FALSE(Volume(VolumeOf("C:\\")).IsEqual(none));
    EXPECT_TRUE(Volume(VolumeOf("C:\\a")).IsEqual(VolumeOf("c:\\b")));
    EXPECT_FALSE(Volume(VolumeOf("C:\\")).IsEqual(VolumeOf("Z:\\")));
    EXPECT_EQ(MessageOf([&] { none.IsCaseSensitive(); }), InternalError(".\\Private\\Volume", 84));
    const SharedHandle<Volume_IF> volume = VolumeOf("C:\\a");
    EXPECT_EQ(Text(volume->GetRootFolder(volume)->GetPath()), "c:\\");
}

TEST_F(VolumeTest, SpaceOfTheHost) {
    const fs::space_info space = fs::space(folder);
    const SharedHandle<Volume_IF> volume = work.GetVolume();
    EXPECT_EQ(volume->GetCapacity(), space.capacity);
    // Others use the disk meanwhile.
    EXPECT_LE(volume->GetFreeSpace(), space.capacity);
    EXPECT_GT(volume->GetFreeSpace(), space.available / 2);

    FaultyApi api;
    api.Break("GetDiskFreeSpaceExW", 1231);
    for (const Failure& failure :
         {FailureOf([&] { volume->GetCapacity(); }), FailureOf([&] { volume->GetFreeSpace(); })}) {
        EXPECT_EQ(failure.message, "media not found");
        EXPECT_EQ(failure.path, "c:\\");
    }
}

TEST_F(VolumeTest, UnmountTakesRemovableDrivesAlone) {
    const std::string refused = InternalError(".\\Private\\Windows\\FileSystem_Volume_Win32", 145);
    VolumeApi api;
    const SharedHandle<Volume_IF> drive = VolumeOf("X:\\");
    const SharedHandle<Volume_IF> share = VolumeOf("\\\\s\\share");
    EXPECT_EQ(MessageOf([&] { drive->Unmount(); }), refused);
    api.kind = DRIVE_CDROM;
    EXPECT_EQ(MessageOf([&] { share->Unmount(); }), refused);

    api.Break("CreateFileW", 32);
    const Failure failure = FailureOf([&] { drive->Unmount(); });
    EXPECT_EQ(failure.message, "access denied");
    EXPECT_EQ(failure.path, "x:\\");
    EXPECT_EQ(api.lastOpened, u"\\\\.\\x:");
    EXPECT_EQ(api.lastAccess, GENERIC_READ);
    api.kind = DRIVE_REMOVABLE;
    EXPECT_EQ(MessageOf([&] { drive->Unmount(); }), "access denied");
    EXPECT_EQ(api.lastAccess, GENERIC_READ | GENERIC_WRITE);
}

// A drive of the machine whose medium the registry tells of.
class MediumTest : public FileLibrary {
  protected:
    void SetUp() override {
        FileLibrary::SetUp();
        fs::create_directories(fs::path(Machine::Current().Folder()) / "drives/m");
        Insert("\"Label\"=\"ONE\"\n");
    }

    static void Insert(const std::string& medium) {
        const fs::path file = fs::path(Machine::Current().Folder()) / "registry.reg";
        std::ofstream(file.string() + ".new")
            << "Windows Registry Editor Version 5.00\n\n"
            << "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Brevik\\Volumes\\M]\n\"Kind\"=\"removable\"\n"
            << medium << "\n";
        fs::rename(file.string() + ".new", file);
    }
};

TEST_F(MediumTest, SwappedUnderAFileObject) {
    const FileSpec file = File("M:\\a");
    EXPECT_TRUE(file.GetVolume()->IsMounted());
    Insert("\"Label\"=\"TWO\"\n");
    EXPECT_FALSE(file.GetVolume()->IsMounted());
    EXPECT_NE(File("M:\\a").GetVolume(), file.GetVolume());
    Insert("\"Empty\"=dword:00000001\n");
    EXPECT_FALSE(file.GetVolume()->IsMounted());
    EXPECT_EQ(MessageOf([] { File("M:\\a"); }), "media not found");
    Insert("\"Label\"=\"ONE\"\n");
    EXPECT_TRUE(file.GetVolume()->IsMounted());
}

TEST_F(MediumTest, UnmountedWhenNoFileIsOpen) {
    const FileSpec file = File("M:\\a");
    const SharedHandle<Volume_IF> volume = file.GetVolume();
    const std::ptrdiff_t open = OpenFileCount();
    {
        const FileChannel channel =
            file.MakeFileChannel(FileChannelMode::kWrite | FileChannelMode::kCreate);
        EXPECT_EQ(MessageOf([&] { volume->Unmount(); }), "access denied");
    }
    EXPECT_EQ(MessageOf([&] { volume->Unmount(); }), "");
    EXPECT_EQ(OpenFileCount(), open);
}

}  // namespace
