// Attributes and times of files, and what other programs on the host see of them.

#include "platform/posix/files/file_attributes.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <chrono>
#include <string>

#include "platform/posix/text/host_text.h"
#include "platform/posix/time/host_times.h"
#include "support/drive_files.h"
#include "support/test_machine.h"

namespace {

namespace fs = std::filesystem;

constexpr char kStored[] = "user.DOSATTRIB";

class FileAttributes : public testing::Test {
  protected:
    void SetUp() override {
        folder_ = NewFolder("Attributes");
        host_ = folder_ / "File.txt";
        WriteHostFile(host_);
        fs::create_directory(folder_ / "Folder");
        keeps_ = setxattr(folder_.c_str(), "user.test", "x", 1, 0) == 0;
    }

    std::string Stored(const fs::path& path) const {
        char value[64];
        const ssize_t size = getxattr(path.c_str(), kStored, value, sizeof value);
        return size < 0 ? "none" : std::string(value, static_cast<std::size_t>(size));
    }

    fs::path folder_;
    fs::path host_;
    bool keeps_ = false;  // whether the file system here keeps extended attributes
    const std::u16string path_ = u"C:\\Attributes\\File.txt";
};

TEST_F(FileAttributes, AreReadAsTheSystemDoes) {
    WriteHostFile(folder_ / ".hidden-by-name");
    const struct {
        std::u16string path;
        DWORD attributes;
        DWORD error;
    } cases[] = {
        {u"C:\\Attributes\\missing", 0, 2},
        {u"C:\\", 0x10, 0},
        {u"C:\\attributes\\folder\\", 0x10, 0},
        {u"C:\\attributes\\Folder", 0x10, 0},
        {u"C:\\Attributes\\.hidden-by-name", 0x20, 0},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(Utf8FromWide(row.path));
        WIN32_FILE_ATTRIBUTE_DATA data = {};
        EXPECT_EQ(ErrorOf(GetFileAttributesExW(row.path.c_str(), GetFileExInfoStandard, &data)),
                  row.error);
        EXPECT_EQ(data.dwFileAttributes, row.attributes);
    }
    EXPECT_EQ(ErrorOf(SetFileAttributesW(u"C:\\Attributes\\missing", 0x20)), 2u);
}

TEST_F(FileAttributes, AreSetAsTheSystemDoes) {
    if (!keeps_) {
        GTEST_SKIP() << "the file system keeps no extended attributes";
    }
    const struct {
        DWORD set;
        DWORD file;
        DWORD folder;
    } cases[] = {
        {0x00, 0x80, 0x10}, {0x01, 0x01, 0x11}, {0x02, 0x02, 0x12}, {0x80, 0x80, 0x10},
        {0x04, 0x04, 0x14}, {0x20, 0x20, 0x30}, {0x27, 0x27, 0x37}, {0x21, 0x21, 0x31},
        {0x10, 0x80, 0x10}, {0x23, 0x23, 0x33}, {0x20, 0x20, 0x30},
    };
    for (const auto& row : cases) {
        EXPECT_TRUE(SetFileAttributesW(path_.c_str(), row.set)) << row.set;
        EXPECT_EQ(AttributesAt(path_), row.file) << row.set;
        EXPECT_TRUE(SetFileAttributesW(u"C:\\Attributes\\Folder", row.set)) << row.set;
        EXPECT_EQ(AttributesAt(u"C:\\Attributes\\Folder"), row.folder) << row.set;
    }
}

TEST_F(FileAttributes, AreWhatTheHostSees) {
    struct stat status = {};
    EXPECT_EQ(chmod(host_.c_str(), 0464), 0);
    EXPECT_EQ(AttributesAt(path_), 0x21u);
    EXPECT_TRUE(SetFileAttributesW(path_.c_str(), 0x20));
    EXPECT_EQ(stat(host_.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777u, 0664u);
    EXPECT_TRUE(SetFileAttributesW(path_.c_str(), 0x21));
    EXPECT_EQ(stat(host_.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777u, 0464u);
    EXPECT_EQ(Stored(host_), "none") << "nothing that the host does not know was set";
    EXPECT_TRUE(SetFileAttributesW(path_.c_str(), 0x20));

    // A read-only folder takes files all the same.
    EXPECT_EQ(stat((folder_ / "Folder").c_str(), &status), 0);
    const mode_t before = status.st_mode;
    if (keeps_) {
        EXPECT_TRUE(SetFileAttributesW(u"C:\\Attributes\\Folder", FILE_ATTRIBUTE_READONLY));
        EXPECT_EQ(stat((folder_ / "Folder").c_str(), &status), 0);
        EXPECT_EQ(status.st_mode, before);
        EXPECT_EQ(Stored(folder_ / "Folder"), "0x11");
        EXPECT_TRUE(SetFileAttributesW(path_.c_str(), FILE_ATTRIBUTE_HIDDEN));
        EXPECT_EQ(Stored(host_), "0x2");
    }
    EXPECT_EQ(chmod((folder_ / "Folder").c_str(), 0555), 0);
    EXPECT_EQ(AttributesAt(u"C:\\Attributes\\Folder"), 0x11u);
    EXPECT_TRUE(SetFileAttributesW(u"C:\\Attributes\\Folder", 0));
    EXPECT_EQ(AttributesAt(u"C:\\Attributes\\Folder"), 0x10u);
}

TEST_F(FileAttributes, OfOtherProgramsAreUnderstood) {
    if (!keeps_) {
        GTEST_SKIP() << "the file system keeps no extended attributes";
    }
    using namespace std::string_literals;
    const std::string binary = "\0\0\3\0\3\0\0\0\x11\0\0\0\x22\0\0\0"s + "\0\0\0\0\0\0\0\0"s;
    std::string withoutField = binary;
    withoutField[8] = '\x10';
    std::string unknownVersion = binary;
    unknownVersion[2] = unknownVersion[4] = '\x63';
    const struct {
        std::string value;
        DWORD attributes;
    } cases[] = {
        {"0x22", 0x22},
        {"0x2\0"s, 0x02},
        {"0X26", 0x26},
        {"0x22\0\0\3\0\3\0"s, 0x22},
        {"0x2027", 0x26},  // an attribute that is unknown here; read-only is the host's to tell
        {binary, 0x22},
        {withoutField, 0x20},
        {unknownVersion, 0x20},
        {binary.substr(0, 15), 0x20},
        {"", 0x20},
        {"\0"s, 0x20},
        {"0x", 0x20},
        {"22", 0x20},
        {"0x2g", 0x20},
        {"0x123456789", 0x20},
        {std::string(300, '0'), 0x20},
    };
    for (const auto& row : cases) {
        ASSERT_EQ(setxattr(host_.c_str(), kStored, row.value.data(), row.value.size(), 0), 0);
        EXPECT_EQ(AttributesAt(path_), row.attributes) << testing::PrintToString(row.value);
    }
    // What is unknown here stays.
    ASSERT_EQ(setxattr(host_.c_str(), kStored, "0x2022", 6, 0), 0);
    EXPECT_TRUE(SetFileAttributesW(path_.c_str(), FILE_ATTRIBUTE_SYSTEM));
    EXPECT_EQ(Stored(host_), "0x2004");
}

// The host lets nobody but its administrator store anything with a read-only file.
TEST_F(FileAttributes, OfAReadOnlyFileCanBeChangedByItsOwner) {
    constexpr uid_t kNobody = 65534;
    const bool administrator = geteuid() == 0;
    if (!keeps_) {
        GTEST_SKIP() << "the file system keeps no extended attributes";
    }
    ASSERT_TRUE(SetFileAttributesW(path_.c_str(), 0x21));
    if (administrator) {
        ASSERT_EQ(chmod(TestMachine::Folder().parent_path().c_str(), 0711), 0);
        ASSERT_EQ(chown(host_.c_str(), kNobody, kNobody), 0);
        ASSERT_EQ(seteuid(kNobody), 0);
    }
    EXPECT_TRUE(SetFileAttributesW(path_.c_str(), 0x23));
    EXPECT_EQ(AttributesAt(path_), 0x23u);
    EXPECT_TRUE(SetFileAttributesW(path_.c_str(), 0x24));
    EXPECT_EQ(AttributesAt(path_), 0x24u);
    EXPECT_TRUE(SetFileAttributesW(path_.c_str(), 0x03));
    EXPECT_EQ(AttributesAt(path_), 0x03u);
    if (administrator) {
        EXPECT_EQ(ErrorOf(SetFileAttributesW(u"C:\\Attributes\\Folder", 0x12)), 5u);
        EXPECT_EQ(ErrorOf(DeleteFileW(u"C:\\Attributes\\File.txt")), 5u);
        EXPECT_EQ(OpenedFile(u"C:\\Attributes\\new", GENERIC_WRITE, 0, CREATE_NEW).Error(), 5u);
        ASSERT_EQ(seteuid(0), 0);
    }
}

// What the platform tells of the file's times.
struct Times {
    std::uint64_t creation;
    std::uint64_t access;
    std::uint64_t write;

    explicit Times(const std::u16string& path) {
        WIN32_FILE_ATTRIBUTE_DATA data = {};
        EXPECT_TRUE(GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data));
        creation = CountOf(data.ftCreationTime);
        access = CountOf(data.ftLastAccessTime);
        write = CountOf(data.ftLastWriteTime);
    }
};

BOOL SetTimes(const std::u16string& path, const FILETIME* creation, const FILETIME* access,
              const FILETIME* write) {
    const OpenedFile file(path, GENERIC_WRITE, 0, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
    return SetFileTime(file.Get(), creation, access, write);
}

TEST_F(FileAttributes, TellTheTimesOfTheHost) {
    const timespec times[] = {{-1, 123'456'789}, {1'000'000'000, 987'654'321}};
    ASSERT_EQ(utimensat(AT_FDCWD, host_.c_str(), times, 0), 0);
    const Times told(path_);
    EXPECT_EQ(told.access, 116'444'736'000'000'000u - 10'000'000 + 1'234'567);
    EXPECT_EQ(told.write, 126'444'736'000'000'000u + 9'876'543);
    // Made within the test, whatever its other times say, where the host knows.
    struct statx status = {};
    ASSERT_EQ(statx(AT_FDCWD, host_.c_str(), 0, STATX_BTIME, &status), 0);
    if ((status.stx_mask & STATX_BTIME) != 0) {
        const auto hour = std::uint64_t{3600} * 10'000'000;
        timespec now;
        clock_gettime(CLOCK_REALTIME, &now);
        EXPECT_LT(CountOf(FileTimeFromHost(now)) - told.creation, hour);
    }
}

TEST_F(FileAttributes, SetEachTimeAlone) {
    constexpr FILETIME kTime = {0x12345678, 0x01C00000};
    constexpr FILETIME kNone = {};
    for (const std::u16string& path : {path_, std::u16string(u"C:\\Attributes\\Folder")}) {
        SCOPED_TRACE(Utf8FromWide(path));
        const Times before(path);
        EXPECT_TRUE(SetTimes(path, nullptr, nullptr, &kTime));
        EXPECT_EQ(Times(path).write, CountOf(kTime));
        EXPECT_EQ(Times(path).access, before.access);
        EXPECT_TRUE(SetTimes(path, nullptr, &kTime, &kNone));
        EXPECT_EQ(Times(path).access, CountOf(kTime));
        EXPECT_EQ(Times(path).write, CountOf(kTime));
        EXPECT_EQ(Times(path).creation, before.creation);
        if (keeps_) {
            EXPECT_TRUE(SetTimes(path, &kTime, nullptr, nullptr));
            EXPECT_EQ(Times(path).creation, CountOf(kTime));
        }
    }
    const FILETIME beyond = {0, 0x80000000};
    EXPECT_FALSE(SetTimes(path_, nullptr, nullptr, &beyond));
    EXPECT_EQ(GetLastError(), 87u);
}

}  // namespace
