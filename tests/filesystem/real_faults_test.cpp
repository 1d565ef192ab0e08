// What the host itself can do to an operation: a disk that is full or takes no changes, and files
// that go while they are listed. See file_spec_test.cpp for a folder that takes no changes.

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <string>

#include "filesystem/dates/DateTime.h"
#include "filesystem/utilities/FileUtilities.h"
#include "support/faulty_api.h"
#include "support/file_library.h"
#include "support/forwarding_file.h"

namespace {

namespace fs = std::filesystem;

// A disk of its own at C:\work\disk, which no other process sees and which ends with this one.
class OwnDisk : public FileLibrary {
  protected:
    void SetUp() override {
        FileLibrary::SetUp();
        fs::create_directory(folder / "disk");
        if (unshare(CLONE_NEWNS) != 0 ||
            mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) ||
            mount("none", (folder / "disk").c_str(), "tmpfs", 0, "size=256k")) {
            GTEST_SKIP() << "no disk can be mounted here: error " << errno;
        }
    }

    FileSpec OnDisk(const char* name) const { return Child("disk").MakeChild(FilePath(name)); }
};

TEST_F(OwnDisk, ThatIsFullTakesNoMore) {
    WriteHostFile(folder / "source", std::string(1'000'000, 'x'));
    const FileSpec target = OnDisk("target");
    Failure failure = FailureOf([&] { FileSystem::CopyFile(target, Child("source"), tickler); });
    EXPECT_EQ(failure.message, "volume full");
    EXPECT_EQ(failure.path, "C:\\work\\source");
    EXPECT_FALSE(fs::exists(folder / "disk/target"));

    // Copied block by block it stays as far as it came, and nobody holds it open.
    const FileSpec blocks = ForwardingFile::Make(target);
    failure = FailureOf([&] { FileSystem::CopyFile(blocks, Child("source"), tickler); });
    EXPECT_EQ(failure.message, "volume full");
    EXPECT_EQ(failure.path, "C:\\work\\disk\\target");
    EXPECT_GT(target.GetFileSize(), 0u);
    EXPECT_EQ(MessageOf([&] { target.Delete(); }), "");

    failure = FailureOf([&] { FileSystem::Move(target, Child("source"), tickler); });
    EXPECT_EQ(failure.message, "volume full");
    EXPECT_EQ(fs::file_size(folder / "source"), 1'000'000u);
    EXPECT_FALSE(fs::exists(folder / "disk/target"));
}

TEST_F(OwnDisk, ThatTakesNoChangesIsLocked) {
    WriteHostFile(folder / "disk/file");
    fs::create_directory(folder / "disk/sub");
    WriteHostFile(folder / "source");
    ASSERT_EQ(mount("none", (folder / "disk").c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr),
              0);
    const FileSpec file = OnDisk("file");
    const std::function<void()> operations[] = {
        [&] { FileSpec_Impl(OnDisk("new")).Get()->Create(); },
        [&] { OnDisk("new").CreateFolder(); },
        [&] { file.Delete(); },
        [&] { OnDisk("sub").Delete(); },
        [&] { FolderSpec(Child("disk")).DeleteTree(); },
        [&] { file.Rename(OnDisk("other")); },
        [&] { file.SetAttributes(FileAttributes::kReadOnly); },
        [&] { file.SetModificationTime(DateTime::GetNow()); },
        [&] { FileSystem::CopyFile(OnDisk("new"), Child("source"), tickler); },
        [&] { file.MakeFileChannel(FileChannelMode::kWrite); },
    };
    for (const auto& operation : operations) {
        EXPECT_EQ(MessageOf(operation), "volume locked") << &operation - operations;
    }
    EXPECT_EQ(file.GetFileSize(), 4u);
}

// Takes a file away at the moment at which it is listed.
class VanishingApi : public FaultyApi {
  public:
    explicit VanishingApi(const fs::path& folder) : folder_(folder) {}

    BOOL FindNextFileW(HANDLE listing, WIN32_FIND_DATAW* data) override {
        const BOOL found = FaultyApi::FindNextFileW(listing, data);
        const fs::path path = folder_ / data->cFileName;
        if (found && gone.empty() && fs::is_regular_file(path)) {
            gone = path.filename().string();
            fs::remove(path);
        }
        return found;
    }

    std::string gone;

  private:
    fs::path folder_;
};

TEST_F(FileLibrary, AFileThatVanishesWhileItIsListed) {
    const std::ptrdiff_t open = OpenFileCount();
    const struct {
        std::function<void()> operation;
        const char* message;
    } cases[] = {
        {[&] { EXPECT_EQ(FileSystem::FindFiles(work, "*", true).size(), 3u); }, ""},
        {[&] { FileSystem::GetFolderSize(work, true); }, "file not found"},
        {[&] { FileSystem::CopyFolder(File("C:\\copy"), work, true, tickler); }, "file not found"},
        {[&] { work.DeleteTree(); }, "file not found"},
    };
    for (const auto& each : cases) {
        for (const char* name : {"a", "b", "c"}) {
            WriteHostFile(folder / name);
        }
        VanishingApi api(folder);
        const Failure failure = FailureOf(each.operation);
        ASSERT_FALSE(api.gone.empty());
        EXPECT_EQ(failure.message, each.message);
        EXPECT_EQ(failure.path, *each.message != '\0' ? "C:\\work\\" + api.gone : "");
        EXPECT_EQ(OpenFileCount(), open);
    }
    EXPECT_EQ(MessageOf([&] { work.DeleteTree(); }), "");
}

}  // namespace
