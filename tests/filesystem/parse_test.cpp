// From the text of a path to a file object, and the volume that it lies on.

#include <gtest/gtest.h>

#include <filesystem>

#include "filesystem/Private/Windows/FileSpec_Win32.h"
#include "support/faulty_api.h"
#include "support/file_library.h"
#include "support/volume_api.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* kInvalid = "invalid file path";

class Parse : public FileLibrary {
  protected:
    void SetUp() override {
        FileLibrary::SetUp();
        fs::create_directories(fs::path(Machine::Current().Folder()) / "shares/server/share");
        ASSERT_TRUE(SetCurrentDirectoryW(u"C:\\work"));
    }
};

TEST_F(Parse, StoredPaths) {
    const struct {
        const char* text;
        const char* path;
    } cases[] = {
        {"C:\\a", "C:\\a"},
        {"C:/a/", "C:\\a"},
        {"\\\\?\\C:\\a", "C:\\a"},
        {"\\\\?\\UNC\\server\\share\\a", "\\\\server\\share\\a"},
        {"//?/C:/a", "C:\\a"},
        {"C:\\", "C:\\"},
        {"c:\\A\\.\\x\\..\\b", "c:\\A\\b"},
        {"C:\\..\\..", "C:\\"},
        {"C:a", "C:\\work\\a"},
        {"a\\b", "C:\\work\\a\\b"},
        {"\\a", "C:\\a"},
        {".", "C:\\work"},
        {"\\\\server\\share", "\\\\server\\share\\"},
        {"\\\\server\\share\\", "\\\\server\\share\\"},
        {"\\\\server\\share\\..\\a\\", "\\\\server\\share\\a"},
        {"C:\\\x7F\xC3\xA4", "C:\\\x7F\xC3\xA4"},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(PathOf(File(each.text)), each.path) << each.text;
    }
    EXPECT_TRUE(File("").IsNull());
    EXPECT_TRUE(File("C:\\").IsRoot());
    EXPECT_TRUE(File("\\\\server\\share").IsRoot());
    EXPECT_FALSE(File("C:\\a").IsRoot());
}

TEST_F(Parse, RefusedPaths) {
    const char* const cases[] = {
        "c:/temp//x", "C:\\a\\\\b", "1:\\x",   "\\\\server", "\\\\.\\X:", "C:\\a ",
        "C:\\a:b",    "ab:c",       "C:\\a*",  "C:\\a?",     "C:\\\"a",   "C:\\a<",
        "C:\\a>",     "C:\\a|",     "C:\\\ta", "\\\\?\\",    "x\\?",      "\\\\?\\1:\\x",
    };
    for (const char* each : cases) {
        EXPECT_EQ(MessageOf([&] { File(each); }), kInvalid) << each;
    }
    const Failure failure = FailureOf([] { File("//?/C:/a*"); });
    EXPECT_EQ(failure.path, "C:\\a*");
}

TEST_F(Parse, VolumesOutOfReach) {
    const Failure drive = FailureOf([] { File("Q:\\a\\b"); });
    EXPECT_EQ(drive.message, "file path not found");
    EXPECT_EQ(drive.path, "q:\\");
    const Failure share = FailureOf([] { File("\\\\nobody\\share\\a"); });
    EXPECT_EQ(share.message, "file path not found");
    EXPECT_EQ(share.path, "\\\\nobody\\share\\");
}

TEST_F(Parse, NamesUpToTheVolumesLimit) {
    VolumeApi api;
    api.nameLength = 5;
    for (const char* path :
         {"X:\\12345", "X:\\12345\\1", "X:\\\xF0\x9F\x98\x80\xC3\xA4\xC3\xA4\xC3\xA4", "X:\\"}) {
        EXPECT_EQ(MessageOf([&] { File(path); }), "") << path;
    }
    for (const char* path : {"X:\\123456", "X:\\1\\123456\\1", "X:\\1\\123456"}) {
        EXPECT_EQ(MessageOf([&] { File(path); }), kInvalid) << path;
    }
}

TEST_F(Parse, OneVolumeForOneMedium) {
    VolumeApi api;
    const FileSpec file = File("X:\\a");
    EXPECT_EQ(api.lastRoot, u"x:\\");
    EXPECT_EQ(file.GetVolume(), File("x:\\b\\c").GetVolume());
    EXPECT_NE(file.GetVolume(), File("Y:\\a").GetVolume());
    EXPECT_TRUE(file.IsEqual(File("x:/A")));
    EXPECT_FALSE(file.IsEqual(File("Y:\\a")));

    // Another medium: its files are others, and what was made before does not reach over to them.
    api.serial = 8;
    const FileSpec other = File("X:\\a");
    EXPECT_NE(file.GetVolume(), other.GetVolume());
    EXPECT_FALSE(file.IsEqual(other));
    const Failure failure = FailureOf([&] { file.MakeChild("b"); });
    EXPECT_EQ(failure.message,
              InternalError(".\\Private\\Windows\\FileSystem_FileSpec_Win32", 608));
    EXPECT_FALSE(failure.isFile);
    EXPECT_EQ(MessageOf([&] { file.MakeParent(); }), failure.message);
    api.serial = 7;
    EXPECT_EQ(file.MakeChild("b").GetVolume(), file.GetVolume());
}

TEST_F(Parse, ParentsAndChildren) {
    const FileSpec root = File("C:\\");
    EXPECT_EQ(PathOf(root.MakeChild("a")), "C:\\a");
    EXPECT_EQ(PathOf(root.MakeChild("a\\../b/c")), "C:\\b\\c");
    EXPECT_EQ(PathOf(File("C:\\a").MakeChild("b.txt")), "C:\\a\\b.txt");
    EXPECT_EQ(PathOf(File("C:\\a\\b").MakeParent()), "C:\\a");
    EXPECT_EQ(PathOf(File("C:\\a").MakeParent()), "C:\\");
    EXPECT_TRUE(root.MakeParent().IsNull());
    EXPECT_EQ(PathOf(File("\\\\server\\share\\a").MakeParent()), "\\\\server\\share\\");
    EXPECT_TRUE(File("\\\\server\\share").MakeParent().IsNull());
    EXPECT_EQ(PathOf(FileSpec_Impl(File("C:\\a\\b")).Get()->RootFolder()), "C:\\");
}

TEST_F(Parse, PlatformFormHasThePrefixAndTheOlderVariantHasNot) {
    EXPECT_EQ(File("C:\\a").GetNativePath(), u"\\\\?\\C:\\a");
    EXPECT_EQ(File("\\\\server\\share\\a").GetNativePath(), u"\\\\?\\UNC\\server\\share\\a");

    const FileSpec older{std::make_shared<FileSpec_Win9X>(FilePath("C:\\a"), nullptr)};
    EXPECT_EQ(older.GetNativePath(), u"C:\\a");
    EXPECT_EQ(older.MakeChild("b").GetNativePath(), u"C:\\a\\b");
    EXPECT_EQ(older.MakeParent().GetNativePath(), u"C:\\");
    EXPECT_FALSE(older.IsEqual(File("C:\\a")));
    EXPECT_TRUE(older.MakeChild("b").MakeParent().IsEqual(older));
}

TEST_F(Parse, PlatformFailures) {
    FaultyApi api;
    api.Break("GetFullPathNameW", 5);
    const Failure full = FailureOf([] { File("C:\\a"); });
    EXPECT_EQ(full.message, "access denied");
    EXPECT_EQ(full.path, "C:\\a");
    api.Break("GetFullPathNameW", 5, 1);
    EXPECT_EQ(MessageOf([] { File("C:\\a"); }), "access denied");
    api.Break("GetFullPathNameW", 0);
    api.Break("GetVolumeInformationW", 21);
    EXPECT_EQ(MessageOf([] { File("C:\\a"); }), "media not found");
}

}  // namespace
