#include "filesystem/FileSpec.h"

#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <thread>

#include "filesystem/Volume_IF.h"
#include "filesystem/dates/DateTime.h"
#include "support/faulty_api.h"
#include "support/file_library.h"

namespace {

namespace fs = std::filesystem;

using FileSpecTest = FileLibrary;

FileSpec_IF& ImplOf(const FileSpec& file) {
    return *FileSpec_Impl(file).Get();
}

TEST_F(FileSpecTest, NullObject) {
    const FileSpec null;
    const FileSpec file = Child("a");
    const Failure failure = FailureOf([&] { null.Delete(); });
    EXPECT_EQ(failure.message, InternalError(".\\Private\\FileSpec", 87));
    EXPECT_EQ(failure.inner, failure.message);
    EXPECT_EQ(failure.path, "");
    EXPECT_EQ(MessageOf([&] { file.Rename(null); }), InternalError(".\\Private\\FileSpec", 224));
    EXPECT_TRUE(null.GetPath().IsEmpty() && null.GetName().IsEmpty());
    EXPECT_TRUE(null.GetExtension().IsEmpty() && null.GetNativePath().empty());
    EXPECT_FALSE(null.IsAlias() || null.IsFile() || null.IsFolder() || null.IsPresent() ||
                 null.IsRoot());
    EXPECT_TRUE(null.IsEqual(FileSpec()));
    EXPECT_FALSE(null.IsEqual(file));
    EXPECT_FALSE(file.IsEqual(null));
}

TEST_F(FileSpecTest, MissingOnes) {
    const FileSpec file = Child("missing");
    EXPECT_FALSE(file.IsPresent());
    EXPECT_EQ(MessageOf([&] { file.Delete(); }), "");
    EXPECT_EQ(MessageOf([&] { file.IsFolder(); }), "file not found");
    EXPECT_EQ(MessageOf([&] { file.GetFileSize(); }), "file not found");
    const Failure failure = FailureOf([&] { file.MakeChild("b").IsFile(); });
    EXPECT_EQ(failure.message, "file path not found");
    EXPECT_EQ(failure.path, "C:\\work\\missing\\b");
}

TEST_F(FileSpecTest, CreatesFilesAndFolders) {
    const FileSpec file = Child("file");
    ImplOf(file).Create();
    EXPECT_TRUE(file.IsFile());
    EXPECT_EQ(file.GetFileSize(), 0u);
    WriteHostFile(folder / "file", "kept");
    EXPECT_EQ(MessageOf([&] { ImplOf(file).Create(); }), "file exists");
    EXPECT_EQ(MessageOf([&] { file.CreateFolder(); }), "file exists");
    EXPECT_EQ(ReadHostFile(folder / "file"), "kept");

    const FileSpec sub = Child("sub");
    EXPECT_EQ(MessageOf([&] { sub.MakeChild("x").CreateFolder(); }), "file path not found");
    sub.CreateFolder();
    EXPECT_TRUE(sub.IsFolder());
    ImplOf(sub.MakeChild("x")).Create();
    EXPECT_EQ(MessageOf([&] { sub.Delete(); }), "folder not empty");
    sub.MakeChild("x").Delete();
    sub.Delete();
    EXPECT_FALSE(fs::exists(folder / "sub"));
}

TEST_F(FileSpecTest, DeletesReadOnlyOnesAtTheSecondAttempt) {
    FaultyApi api;
    const FileSpec file = Child("file");
    ImplOf(file).Create();
    file.SetAttributes(FileAttributes::kReadOnly);
    file.Delete();
    EXPECT_FALSE(file.IsPresent());
    EXPECT_EQ(api.Calls("DeleteFileW"), 2);

    ImplOf(file).Create();
    file.SetAttributes(FileAttributes::kReadOnly);
    api.Break("DeleteFileW", 19, 1);  // the first attempt is the platform's own
    EXPECT_EQ(MessageOf([&] { file.Delete(); }), "volume locked");
    EXPECT_EQ(api.Calls("DeleteFileW"), 4);
    file.SetAttributes(FileAttributes::kReadOnly);
    api.Break("SetFileAttributesW", 112);
    EXPECT_EQ(MessageOf([&] { file.Delete(); }), "volume full");
    api.Break("SetFileAttributesW", 0);
    file.SetAttributes(0);
    api.Break("DeleteFileW", 32);
    EXPECT_EQ(MessageOf([&] { file.Delete(); }), "access denied");
    EXPECT_EQ(api.Calls("DeleteFileW"), 6);
}

TEST_F(FileSpecTest, AttributesOneByOneAndTogether) {
    const FileSpec file = Child("file");
    ImplOf(file).Create();
    for (std::uint32_t word = 0; word < 16; ++word) {
        file.SetAttributes(word);
        EXPECT_EQ(file.GetAttributes(), word);
    }
    const DWORD bits[] = {FILE_ATTRIBUTE_ARCHIVE, FILE_ATTRIBUTE_HIDDEN, FILE_ATTRIBUTE_READONLY,
                          FILE_ATTRIBUTE_SYSTEM};
    for (std::uint32_t i = 0; i < 4; ++i) {
        file.SetAttributes(1u << i);
        EXPECT_EQ(AttributesAt(u"C:\\work\\file"), bits[i]);
    }
    Child("sub").CreateFolder();
    Child("sub").SetAttributes(FileAttributes::kHidden);
    EXPECT_EQ(AttributesAt(u"C:\\work\\sub"), FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_DIRECTORY);
}

TEST_F(FileSpecTest, EachTimeIsSetByItself) {
    ImplOf(Child("file")).Create();
    Child("sub").CreateFolder();
    const DateTime first(TimeOfDay(1, 2, 3), Date(4, 5, 2001), TimeZone::GetLocal());
    const DateTime second(TimeOfDay(4, 5, 6), Date(7, 8, 2009), TimeZone::GetLocal());
    for (const char* name : {"file", "sub"}) {
        const FileSpec file = Child(name);
        file.SetModificationTime(first);
        ImplOf(file).SetAccessTime(second);
        EXPECT_TRUE(file.GetModificationTime() == first) << name;
        EXPECT_TRUE(ImplOf(file).GetAccessTime() == second) << name;
    }
}

TEST_F(FileSpecTest, SizesBeyondFourGigabytes) {
    const FileSpec file = Child("file");
    ImplOf(file).Create();
    for (const std::uint64_t size : {0x123456789ull, 0xFFFFFFFFull, 0x1FFFFFFFFull, 5ull}) {
        ImplOf(file).SetFileSize(size);
        EXPECT_EQ(file.GetFileSize(), size);
        EXPECT_EQ(fs::file_size(folder / "file"), size);
    }
}

TEST_F(FileSpecTest, RenamesOntoFreePathsAlone) {
    WriteHostFile(folder / "a", "a");
    WriteHostFile(folder / "b", "b");
    EXPECT_EQ(MessageOf([&] { Child("a").Rename(Child("b")); }), "file exists");
    EXPECT_EQ(MessageOf([&] { Child("c").Rename(Child("d")); }), "file not found");
    Child("a").Rename(Child("A"));
    EXPECT_TRUE(fs::exists(folder / "A"));
    Child("a").Rename(Child("c"));
    EXPECT_EQ(ReadHostFile(folder / "c"), "a");
    EXPECT_EQ(ReadHostFile(folder / "b"), "b");
}

TEST_F(FileSpecTest, ShortcutsByTheirName) {
    EXPECT_TRUE(File("c:\\x.lnk").IsAlias());
    EXPECT_TRUE(File("c:\\x.LnK").IsAlias());
    EXPECT_FALSE(File("c:\\x.lnk.txt").IsAlias());
    EXPECT_FALSE(File("c:\\lnk").IsAlias());
}

// Every operation that fails tells the kind of its error, with the path, and closes what it opened.
TEST_F(FileSpecTest, PlatformFailures) {
    FaultyApi api;
    WriteHostFile(folder / "file");
    const FileSpec file = Child("file");
    const DateTime time(TimeOfDay(1, 2, 3), Date(4, 5, 2001), TimeZone::GetLocal());
    const struct {
        const char* broken;
        std::function<void()> operation;
    } cases[] = {
        {"CreateFileW", [&] { ImplOf(file).Create(); }},
        {"CreateDirectoryW", [&] { file.CreateFolder(); }},
        {"DeleteFileW", [&] { file.Delete(); }},
        {"RemoveDirectoryW", [&] { work.Delete(); }},
        {"GetFileAttributesExW", [&] { ImplOf(file).GetAccessTime(); }},
        {"GetFileAttributesExW", [&] { ImplOf(file).GetCreationTime(); }},
        {"GetFileAttributesExW", [&] { file.GetModificationTime(); }},
        {"GetFileAttributesExW", [&] { file.GetAttributes(); }},
        {"GetFileAttributesExW", [&] { file.SetAttributes(0); }},
        {"SetFileAttributesW", [&] { file.SetAttributes(0); }},
        {"CreateFileW", [&] { file.GetFileSize(); }},
        {"GetFileSizeEx", [&] { file.GetFileSize(); }},
        {"CreateFileW", [&] { ImplOf(file).SetFileSize(1); }},
        {"SetFilePointerEx", [&] { ImplOf(file).SetFileSize(1); }},
        {"MoveFileW", [&] { file.Rename(Child("target")); }},
        {"CreateFileW", [&] { file.SetModificationTime(time); }},
        {"CreateFileW", [&] { ImplOf(file).SetCreationTime(time); }},
        {"CreateFileW", [&] { ImplOf(file).SetAccessTime(time); }},
        {"FindFirstFileW", [&] { work.MakeIterator(); }},
        {"FindFirstFileW", [&] { work.DeleteTree(); }},
        {"DeleteFileW", [&] { work.DeleteTree(); }},
        {"CreateFileW", [&] { file.MakeFileChannel(FileChannelMode::kRead); }},
    };
    const std::ptrdiff_t open = OpenFileCount();
    for (const auto& each : cases) {
        api.Break(each.broken, 1112);
        const Failure failure = FailureOf(each.operation);
        EXPECT_EQ(failure.message, "media not found") << each.broken;
        EXPECT_TRUE(failure.path == "C:\\work" || failure.path == "C:\\work\\file");
        EXPECT_EQ(OpenFileCount(), open) << each.broken;
        api.Break(each.broken, 0);
    }
    EXPECT_EQ(ReadHostFile(folder / "file"), "text");
}

// Takes the calling thread the right to pass over permissions, which root has.
void ObeyPermissions() {
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct data[_LINUX_CAPABILITY_U32S_3] = {};
    ASSERT_EQ(syscall(SYS_capget, &header, data), 0);
    data[0].effective &= ~(1u << CAP_DAC_OVERRIDE);
    ASSERT_EQ(syscall(SYS_capset, &header, data), 0);
}

TEST_F(FileSpecTest, FolderThatTakesNoChanges) {
    WriteHostFile(folder / "file");
    fs::permissions(folder, fs::perms::owner_read | fs::perms::owner_exec);
    std::thread([&] {
        ObeyPermissions();
        EXPECT_EQ(MessageOf([&] { ImplOf(Child("new")).Create(); }), "access denied");
        EXPECT_EQ(MessageOf([&] { Child("sub").CreateFolder(); }), "access denied");
        EXPECT_EQ(MessageOf([&] { Child("file").Rename(Child("other")); }), "access denied");
        EXPECT_EQ(MessageOf([&] { Child("file").Delete(); }), "access denied");
    }).join();
    fs::permissions(folder, fs::perms::owner_all);
    EXPECT_TRUE(Child("file").IsPresent());
}

}  // namespace
