// Deleting, making, removing and moving files and folders.

#include "platform/files.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "platform/folders.h"
#include "platform/posix/text/host_text.h"
#include "support/drive_files.h"
#include "support/test_machine.h"

namespace {

namespace fs = std::filesystem;

class Files : public testing::Test {
  protected:
    void SetUp() override {
        folder_ = NewFolder("Files");
        WriteHostFile(folder_ / "File.txt");
        WriteHostFile(folder_ / "read-only");
        fs::permissions(folder_ / "read-only", fs::perms::owner_read);
        fs::create_directory(folder_ / "Empty");
        fs::create_directories(folder_ / "Full/Inner");
        WriteHostFile(folder_ / "Full/Inner/file");
        ASSERT_TRUE(SetCurrentDirectoryW(u"C:\\"));
    }

    fs::path folder_;
};

TEST_F(Files, AreDeletedAsTheSystemDoes) {
    const struct {
        const WCHAR* path;
        DWORD error;
    } cases[] = {
        {u"C:\\Files\\missing", 2},   {u"C:\\Files\\missing\\file", 3}, {u"C:\\Files\\Empty", 5},
        {u"C:\\Files\\read-only", 5}, {u"C:\\Files\\*", 123},           {u"C:\\Files\\FILE.TXT", 0},
        {u"C:\\Files\\File.txt", 2},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(ErrorOf(DeleteFileW(row.path)), row.error) << Utf8FromWide(row.path);
    }
    EXPECT_FALSE(fs::exists(folder_ / "File.txt"));
    EXPECT_TRUE(fs::exists(folder_ / "read-only"));
}

TEST_F(Files, OfLinksTheLinkIsDeleted) {
    fs::create_symlink("File.txt", folder_ / "link");
    EXPECT_TRUE(DeleteFileW(u"C:\\Files\\link"));
    EXPECT_FALSE(fs::exists(fs::symlink_status(folder_ / "link")));
    EXPECT_TRUE(fs::exists(folder_ / "File.txt"));

    // What stands against deleting the target does not stand against deleting the link.
    fs::create_symlink("read-only", folder_ / "link");
    EXPECT_TRUE(DeleteFileW(u"C:\\Files\\link"));
    fs::create_symlink("File.txt", folder_ / "link");
    const OpenedFile used(u"C:\\Files\\File.txt", GENERIC_READ);
    ASSERT_TRUE(used.IsOpen());
    EXPECT_TRUE(DeleteFileW(u"C:\\Files\\link"));
    ASSERT_TRUE(SetFileAttributesW(u"C:\\Files\\Empty", FILE_ATTRIBUTE_READONLY));
    fs::create_directory_symlink("Empty", folder_ / "link");
    EXPECT_TRUE(RemoveDirectoryW(u"C:\\Files\\link"));
    EXPECT_FALSE(fs::exists(fs::symlink_status(folder_ / "link")));
    EXPECT_EQ(AttributesAt(u"C:\\Files\\Empty"), FILE_ATTRIBUTE_DIRECTORY | 1u);
}

TEST_F(Files, BrokenLinksAreThereAndHoldNothing) {
    const struct {
        const char* target;
        DWORD openError;
    } cases[] = {{"nowhere", 2}, {"link", 3}, {"File.txt/x", 2}};
    for (const auto& row : cases) {
        SCOPED_TRACE(row.target);
        fs::create_symlink(row.target, folder_ / "link");
        EXPECT_EQ(AttributesAt(u"C:\\Files\\LINK"),
                  FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_ARCHIVE);
        EXPECT_EQ(OpenedFile(u"C:\\Files\\link", GENERIC_READ).Error(), row.openError);
        EXPECT_EQ(ErrorOf(CreateDirectoryW(u"C:\\Files\\link", nullptr)),
                  row.openError == 2 ? 183 : row.openError);
        EXPECT_EQ(ErrorOf(RemoveDirectoryW(u"C:\\Files\\link")), 267u);
        EXPECT_EQ(ErrorOf(MoveFileW(u"C:\\Files\\File.txt", u"C:\\Files\\link")),
                  row.openError == 2 ? 183 : row.openError);
        EXPECT_TRUE(MoveFileW(u"C:\\Files\\LINK", u"C:\\Files\\moved"));
        EXPECT_EQ(fs::read_symlink(folder_ / "moved"), row.target);
        EXPECT_TRUE(DeleteFileW(u"C:\\Files\\Moved"));
        EXPECT_FALSE(fs::exists(fs::symlink_status(folder_ / "moved")));
    }
    // A drive that leads nowhere is none, and not to be deleted.
    fs::create_symlink("nowhere", DriveC().parent_path() / "q");
    EXPECT_EQ(AttributesAt(u"Q:\\"), 0xFFFFFFFF);
    EXPECT_NE(ErrorOf(DeleteFileW(u"\\\\?\\Q:\\")), 0u);
    EXPECT_TRUE(fs::is_symlink(DriveC().parent_path() / "q"));
}

TEST_F(Files, FoldersAreRemovedAsTheSystemDoes) {
    fs::create_directories(folder_ / "Current");
    fs::create_directories(folder_ / "Kept");
    fs::create_directory_symlink("Full", folder_ / "link");
    ASSERT_TRUE(SetFileAttributesW(u"C:\\Files\\Kept", FILE_ATTRIBUTE_READONLY));
    ASSERT_TRUE(SetCurrentDirectoryW(u"C:\\Files\\Current"));
    const struct {
        const WCHAR* path;
        DWORD error;
    } cases[] = {
        {u"C:\\Files\\missing", 2},
        {u"C:\\Files\\File.txt", 267},
        {u"C:\\Files\\Full", 145},
        {u"C:\\Files\\Kept", 5},
        {u"C:\\Files\\Current", 32},
        {u"C:\\", 5},
        {u"Z:\\", 5},
        {u"C:\\Files\\empty\\", 0},
        {u"C:\\Files\\link", 0},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(ErrorOf(RemoveDirectoryW(row.path)), row.error) << Utf8FromWide(row.path);
    }
    EXPECT_FALSE(fs::exists(folder_ / "Empty"));
    EXPECT_FALSE(fs::exists(fs::symlink_status(folder_ / "link")));
    EXPECT_TRUE(fs::exists(folder_ / "Full/Inner/file"));
    EXPECT_TRUE(fs::exists(DriveC().parent_path() / "z"));
    ASSERT_TRUE(SetCurrentDirectoryW(u"C:\\"));

    ASSERT_TRUE(SetFileAttributesW(u"C:\\Files\\Kept", FILE_ATTRIBUTE_NORMAL));
    EXPECT_TRUE(RemoveDirectoryW(u"C:\\Files\\Kept"));
}

TEST_F(Files, FoldersAreMadeAsTheSystemDoes) {
    const struct {
        const WCHAR* path;
        DWORD error;
    } cases[] = {
        {u"C:\\Files\\EMPTY", 183},    {u"C:\\Files\\file.txt", 183},
        {u"C:\\Files\\a\\b", 3},       {u"C:\\Files\\File.txt\\a", 3},
        {u"C:\\Files\\a?", 123},       {u"Q:\\a", 3},
        {u"C:\\Files\\Trailing\\", 0}, {u"C:\\", 183},
        {u"C:\\files\\Dots...", 0},    {u"\\\\?\\C:\\files\\Dots...", 0},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(ErrorOf(CreateDirectoryW(row.path, nullptr)), row.error)
            << Utf8FromWide(row.path);
    }
    for (const char* made : {"Trailing", "Dots", "Dots..."}) {
        EXPECT_TRUE(fs::is_directory(folder_ / made)) << made;
    }
}

TEST_F(Files, AreMovedAsTheSystemDoes) {
    WriteHostFile(folder_ / "other");
    const struct {
        const WCHAR* from;
        const WCHAR* to;
        DWORD error;
        const char* result;
    } cases[] = {
        {u"C:\\Files\\missing", u"C:\\Files\\x", 2, nullptr},
        {u"C:\\Files\\File.txt", u"C:\\Files\\OTHER", 183, "File.txt"},
        {u"C:\\Files\\File.txt", u"C:\\Files\\Empty", 183, "File.txt"},
        {u"C:\\Files\\Full", u"C:\\Files\\Empty", 183, "Full/Inner"},
        {u"C:\\Files\\File.txt", u"C:\\Files\\missing\\a", 3, "File.txt"},
        {u"C:\\Files\\file.txt", u"C:\\Files\\FILE.txt", 0, "FILE.txt"},
        {u"C:\\Files\\file.TXT", u"C:\\Files\\FILE.txt", 0, "FILE.txt"},
        {u"C:\\Files\\FILE.txt", u"C:\\Files\\file.txt.", 0, "file.txt"},
        {u"C:\\Files\\full", u"C:\\files\\full", 0, "full/Inner"},
        {u"C:\\Files\\full", u"C:\\Files\\FULL\\a", 32, "full/Inner"},
        {u"C:\\Files\\full", u"C:\\Files\\full\\inner\\deeper", 32, "full/Inner"},
        {u"C:\\Files\\full", u"C:\\Files\\fuller\\", 0, "fuller/Inner/file"},
        {u"C:\\Files\\read-only", u"C:\\Files\\EMPTY\\Moved", 0, "Empty/Moved"},
        {u"C:\\", u"C:\\Files\\x", 5, nullptr},
        {u"Z:\\", u"C:\\Files\\x", 5, nullptr},
    };
    for (const auto& row : cases) {
        const std::string what = Utf8FromWide(row.from) + " to " + Utf8FromWide(row.to);
        EXPECT_EQ(ErrorOf(MoveFileW(row.from, row.to)), row.error) << what;
        EXPECT_TRUE(row.result == nullptr || fs::exists(folder_ / row.result)) << what;
    }
    EXPECT_FALSE(fs::exists(folder_ / "read-only"));
    EXPECT_EQ(ReadHostFile(folder_ / "other"), "text");
    EXPECT_EQ(AttributesAt(u"C:\\Files\\Empty\\Moved"), 0x21u);
}

TEST_F(Files, AreMovedToAnotherVolumeWhereTheHostCanRename) {
    const fs::path media = TestMachine::ScratchFolder() / "media";
    fs::create_directories(media);
    WriteHostFile(media / "taken", "other");
    fs::create_directory_symlink(media, DriveC().parent_path() / "m");
    EXPECT_EQ(ErrorOf(MoveFileW(u"C:\\Files\\Full", u"M:\\Full")), 17u);
    EXPECT_EQ(ErrorOf(MoveFileW(u"C:\\Files\\File.txt", u"M:\\Taken")), 183u);
    EXPECT_TRUE(MoveFileW(u"C:\\Files\\read-only", u"M:\\Moved"));
    EXPECT_TRUE(fs::exists(media / "Moved") && !fs::exists(folder_ / "read-only"));
    std::error_code error;
    const fs::path memory = "/dev/shm";
    if (fs::exists(memory, error)) {
        fs::create_directory_symlink(memory, DriveC().parent_path() / "n");
        EXPECT_EQ(ErrorOf(MoveFileW(u"C:\\Files\\File.txt", u"N:\\brevik-never-made")), 17u);
        EXPECT_TRUE(fs::exists(folder_ / "File.txt"));
    }
}

// Of several that want a name one gets it.
TEST_F(Files, OneOfManyMakesAFile) {
    for (int round = 0; round < 20; ++round) {
        const std::u16string name =
            u"C:\\Files\\one" + std::u16string(1, static_cast<char16_t>(u'a' + round));
        std::atomic<int> made = 0;
        std::atomic<int> moved = 0;
        std::vector<std::thread> threads;
        for (int thread = 0; thread < 4; ++thread) {
            threads.emplace_back([&, thread] {
                const std::u16string own = name + static_cast<char16_t>(u'0' + thread);
                made += OpenedFile(name, 0, 0, CREATE_NEW).IsOpen();
                EXPECT_TRUE(CreateDirectoryW(own.c_str(), nullptr));
                moved += MoveFileW(own.c_str(), (name + u"-moved").c_str());
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        EXPECT_EQ(made, 1);
        EXPECT_EQ(moved, 1);
    }
}

}  // namespace
