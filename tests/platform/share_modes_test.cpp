// Share modes: between the handles of a process, and between processes.

#include "platform/posix/files/share_modes.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "platform/posix/text/host_text.h"
#include "support/child_process.h"
#include "support/drive_files.h"

namespace {

namespace fs = std::filesystem;

constexpr char kHolder[] = BREVIK_TEST_BINARY_FOLDER "/file_holder";

constexpr DWORD kReadWrite = GENERIC_READ | GENERIC_WRITE;
constexpr DWORD kAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

struct Mode {
    DWORD access;
    DWORD share;
};

std::vector<Mode> AllModes() {
    std::vector<Mode> modes;
    for (const DWORD access : {DWORD{0}, GENERIC_READ, GENERIC_WRITE, kReadWrite, DELETE}) {
        for (DWORD share = 0; share <= kAll; ++share) {
            modes.push_back({access, share});
        }
    }
    return modes;
}

// What of the access the share mode leaves uncovered.
bool Exceeds(DWORD access, DWORD share) {
    return ((access & GENERIC_READ) != 0 && (share & FILE_SHARE_READ) == 0) ||
           ((access & GENERIC_WRITE) != 0 && (share & FILE_SHARE_WRITE) == 0) ||
           ((access & DELETE) != 0 && (share & FILE_SHARE_DELETE) == 0);
}

DWORD ExpectedError(Mode first, Mode second) {
    const bool both = first.access != 0 && second.access != 0;
    const bool conflict =
        Exceeds(first.access, second.share) || Exceeds(second.access, first.share);
    return both && conflict ? 32 : 0;
}

std::string Describe(Mode first, Mode second) {
    std::ostringstream text;
    text << std::hex << first.access << '/' << first.share << " then " << second.access << '/'
         << second.share;
    return text.str();
}

class ShareModes : public testing::Test {
  protected:
    void SetUp() override {
        folder_ = NewFolder("Share");
        WriteHostFile(folder_ / "file");
    }

    DWORD TryToOpen(Mode mode) {
        const OpenedFile file(path_, mode.access, mode.share);
        return file.IsOpen() ? 0 : file.Error();
    }

    // What the program answers to having the file opened; -1 when it is gone.
    static int OpenIn(ChildProcess& holder, Mode mode,
                      const std::string& path = "C:\\Share\\file") {
        std::ostringstream line;
        line << std::hex << mode.access << ' ' << mode.share << ' ' << path;
        holder.WriteLine(line.str());
        const std::string answer = holder.ReadLine();
        return answer.empty() ? -1 : std::stoi(answer);
    }

    fs::path folder_;
    const std::u16string path_ = u"C:\\Share\\file";
};

TEST_F(ShareModes, HoldForEveryPairOfHandles) {
    for (const Mode first : AllModes()) {
        const OpenedFile holder(path_, first.access, first.share);
        ASSERT_TRUE(holder.IsOpen());
        for (const Mode second : AllModes()) {
            EXPECT_EQ(TryToOpen(second), ExpectedError(first, second)) << Describe(first, second);
        }
        const DWORD expected = ExpectedError(first, {DELETE, kAll});
        EXPECT_EQ(ErrorOf(MoveFileW(path_.c_str(), u"C:\\Share\\moved")), expected);
        EXPECT_EQ(ErrorOf(DeleteFileW(expected == 0 ? u"C:\\Share\\moved" : path_.c_str())),
                  expected);
        WriteHostFile(folder_ / "file");
    }
}

TEST_F(ShareModes, HoldAgainstAnyOfSeveralHolders) {
    OpenedFile reader(path_, GENERIC_READ, kAll);
    OpenedFile denier(path_, GENERIC_READ, FILE_SHARE_READ);
    OpenedFile anotherFile(u"C:\\Share\\other", kReadWrite, 0, CREATE_NEW);
    ASSERT_TRUE(reader.IsOpen() && denier.IsOpen() && anotherFile.IsOpen());
    EXPECT_EQ(TryToOpen({GENERIC_WRITE, kAll}), 32u);
    EXPECT_EQ(TryToOpen({GENERIC_READ, FILE_SHARE_READ}), 0u);
    denier.Close();
    EXPECT_EQ(TryToOpen({GENERIC_WRITE, kAll}), 0u);
    EXPECT_EQ(TryToOpen({GENERIC_WRITE, FILE_SHARE_WRITE}), 32u);
}

TEST_F(ShareModes, FollowTheFileAndNotItsName) {
    fs::create_hard_link(folder_ / "file", folder_ / "second-name");
    const OpenedFile holder(u"C:\\Share\\second-name", kReadWrite, FILE_SHARE_DELETE);
    EXPECT_EQ(TryToOpen({GENERIC_READ, kAll}), 32u);
    ASSERT_TRUE(MoveFileW(u"C:\\Share\\second-name", u"C:\\Share\\third-name"));
    EXPECT_EQ(TryToOpen({GENERIC_READ, kAll}), 32u);

    // A file that takes the place of one which is still open is another file.
    ASSERT_TRUE(DeleteFileW(path_.c_str()));
    WriteHostFile(folder_ / "file");
    EXPECT_EQ(TryToOpen({kReadWrite, 0}), 0u);
}

TEST_F(ShareModes, VanishWithAKilledProcess) {
    ChildProcess holder({kHolder});
    ASSERT_EQ(OpenIn(holder, {kReadWrite, 0}), 0);
    EXPECT_EQ(TryToOpen({GENERIC_READ, kAll}), 32u);
    EXPECT_EQ(ErrorOf(DeleteFileW(path_.c_str())), 32u);
    holder.Signal(SIGKILL);
    EXPECT_EQ(holder.Wait(), 128 + SIGKILL);
    EXPECT_EQ(TryToOpen({kReadWrite, 0}), 0u);
    EXPECT_TRUE(DeleteFileW(path_.c_str()));
}

// Of several that open a file at the same moment one comes in, and not none either.
TEST_F(ShareModes, LetOneOfManyThreadsIn) {
    constexpr int kThreads = 2;
    constexpr int kRounds = 1000;
    std::atomic<int> inside = 0;
    std::atomic<int> wrongRounds = 0;
    // Without sleeping: who has to be woken comes too late for the moment in question.
    std::atomic<int> arrivals = 0;
    const auto meet = [&] {
        const int meeting = arrivals++ / kThreads + 1;
        for (int turns = 0; arrivals < meeting * kThreads; ++turns) {
            if (turns > 10'000) {
                std::this_thread::yield();
            }
        }
    };
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&, thread] {
            for (int round = 0; round < kRounds; ++round) {
                meet();
                OpenedFile file(path_, kReadWrite, 0);
                inside += file.IsOpen();
                meet();
                if (thread == 0) {
                    wrongRounds += inside.exchange(0) != 1;
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrongRounds, 0);
}

// A child made by fork has copies of everything. It can neither end the share mode of its parent
// nor keep it up after the parent has closed the file.
TEST_F(ShareModes, BelongToTheProcessThatOpened) {
    OpenedFile holder(path_, kReadWrite, 0);
    int done[2];
    int go[2];
    ASSERT_EQ(pipe(done), 0);
    ASSERT_EQ(pipe(go), 0);
    const pid_t child = fork();
    if (child == 0) {
        char byte = CloseHandle(holder.Get()) ? 'y' : 'n';
        const bool told = write(done[1], &byte, 1) == 1 && read(go[0], &byte, 1) == 1;
        _exit(told ? 0 : 1);
    }
    char byte = 0;
    ASSERT_EQ(read(done[0], &byte, 1), 1);
    EXPECT_EQ(byte, 'y');
    EXPECT_EQ(TryToOpen({GENERIC_READ, kAll}), 32u);

    OpenedFile inherited(u"C:\\Share\\inherited", kReadWrite, 0, CREATE_NEW);
    const pid_t idle = fork();
    if (idle == 0) {
        _exit(read(go[0], &byte, 1) == 1 ? 0 : 1);
    }
    inherited.Close();
    EXPECT_TRUE(OpenedFile(u"C:\\Share\\inherited", kReadWrite).IsOpen());
    ASSERT_EQ(write(go[1], "gg", 2), 2);
    for (const pid_t id : {child, idle}) {
        int status = 0;
        EXPECT_EQ(waitpid(id, &status, 0), id);
        EXPECT_EQ(status, 0);
    }
}

// Somebody who stays where two openings exclude each other keeps no one waiting for ever, and gives
// way when he ends.
TEST_F(ShareModes, DoNotHangOnAProcessThatIsStopped) {
    struct stat status = {};
    ASSERT_EQ(stat((folder_ / "file").c_str(), &status), 0);
    ShareMode stopped;
    ASSERT_EQ(stopped.EnterToDelete(status), 0u);
    EXPECT_EQ(TryToOpen({GENERIC_READ, kAll}), 32u);
    EXPECT_EQ(TryToOpen({0, 0}), 0u);
    stopped.Leave();
    EXPECT_EQ(TryToOpen({GENERIC_READ, kAll}), 0u);
}

TEST_F(ShareModes, LeaveTheFileFreeForOtherPrograms) {
    const OpenedFile holder(path_, kReadWrite, 0);
    const ScopedDescriptor file(open((folder_ / "file").c_str(), O_RDWR | O_CLOEXEC));
    struct flock whole = {};
    whole.l_type = F_WRLCK;
    whole.l_whence = SEEK_SET;
    EXPECT_EQ(fcntl(file.Get(), F_OFD_SETLK, &whole), 0);
    EXPECT_TRUE(OpenedFile(path_, 0).IsOpen());
}

// Without a lock file there is nothing to enforce them with, and files open all the same.
TEST_F(ShareModes, AreNotEnforcedWithoutAPlaceForLocks) {
    const fs::path locks = fs::path(Machine::Current().Folder()) / "locks";
    fs::remove_all(locks);
    EXPECT_TRUE(OpenedFile(path_, kReadWrite).IsOpen());
    EXPECT_FALSE(fs::is_empty(locks));
    fs::remove_all(locks);
    WriteHostFile(locks);
    const OpenedFile first(path_, kReadWrite);
    EXPECT_TRUE(first.IsOpen());
    EXPECT_TRUE(OpenedFile(path_, kReadWrite).IsOpen());
    fs::remove(locks);
}

TEST_F(ShareModes, KeepAFolderWithOpenFilesInItsPlace) {
    fs::create_directories(folder_ / "A/B");
    fs::create_directories(folder_ / "C");
    WriteHostFile(folder_ / "A/B/file");
    ChildProcess holder({kHolder});
    ASSERT_EQ(OpenIn(holder, {GENERIC_READ, FILE_SHARE_READ}, "C:\\Share\\A\\B\\file"), 0);
    EXPECT_EQ(ErrorOf(MoveFileW(u"C:\\Share\\A", u"C:\\Share\\D")), 5u);
    EXPECT_TRUE(MoveFileW(u"C:\\Share\\C", u"C:\\Share\\D"));
    holder.WriteLine("close");
    ASSERT_EQ(holder.ReadLine(), "0");
    {
        const OpenedFile sharing(u"C:\\Share\\A\\B\\file", GENERIC_READ, kAll);
        EXPECT_TRUE(MoveFileW(u"C:\\Share\\A", u"C:\\Share\\E"));
    }
    {
        const OpenedFile folder(u"C:\\Share\\E", GENERIC_WRITE, 0, OPEN_EXISTING,
                                FILE_FLAG_BACKUP_SEMANTICS);
        ASSERT_TRUE(folder.IsOpen());
        EXPECT_EQ(ErrorOf(MoveFileW(u"C:\\Share\\E", u"C:\\Share\\F")), 32u);
        EXPECT_EQ(ErrorOf(RemoveDirectoryW(u"C:\\Share\\E")), 32u);
    }
    EXPECT_TRUE(MoveFileW(u"C:\\Share\\E", u"C:\\Share\\F"));
}

TEST_F(ShareModes, FindTheOpenFilesBelowAFolder) {
    fs::create_directories(folder_ / "A/B/C");
    fs::create_directory_symlink(folder_, folder_ / "A/up");
    WriteHostFile(folder_ / "A/B/C/deep");
    const std::string below = folder_ / "A";
    EXPECT_FALSE(AnyOpenBelow(below, OpenFiles::kAll));
    // Many open files elsewhere, so that the one in question is among others.
    std::vector<std::unique_ptr<OpenedFile>> others;
    for (int i = 0; i < 40; ++i) {
        others.push_back(std::make_unique<OpenedFile>(
            u"C:\\Share\\other" + WideFromUtf8(std::to_string(i)), kReadWrite, i % 8, CREATE_NEW));
        ASSERT_TRUE(others.back()->IsOpen());
    }
    EXPECT_FALSE(AnyOpenBelow(below, OpenFiles::kAll));
    const OpenedFile deep(u"C:\\Share\\A\\B\\C\\deep", GENERIC_READ, kAll);
    EXPECT_TRUE(AnyOpenBelow(below, OpenFiles::kAll));
    EXPECT_FALSE(AnyOpenBelow(below, OpenFiles::kDenyingDeletion));
    const OpenedFile denying(u"C:\\Share\\A\\B\\C\\deep", GENERIC_READ, FILE_SHARE_READ);
    EXPECT_TRUE(AnyOpenBelow(below, OpenFiles::kDenyingDeletion));
    EXPECT_FALSE(AnyOpenBelow(folder_ / "A/B/C/deep", OpenFiles::kAll));
}

// Numbers that differ only in bits which a lock's offset has no room for are different files.
TEST_F(ShareModes, KeepFilesWithLargeNumbersApart) {
    struct stat file = {};
    file.st_dev = makedev(0, 4000);
    std::vector<ShareMode> held(4);
    const ino_t numbers[] = {1, ino_t{1} << 60 | 1, ino_t{15} << 60 | 1, ~ino_t{0}};
    for (std::size_t i = 0; i < held.size(); ++i) {
        file.st_ino = numbers[i];
        EXPECT_EQ(held[i].Enter(file, kReadWrite, 0), 0u) << numbers[i];
        ShareMode second;
        EXPECT_EQ(second.Enter(file, GENERIC_READ, kAll), 32u) << numbers[i];
    }
    held[2].Leave();
    file.st_ino = numbers[2];
    EXPECT_EQ(held[2].Enter(file, kReadWrite, 0), 0u);
}

}  // namespace
