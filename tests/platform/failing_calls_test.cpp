// What a call of the host that fails for a moment leaves behind. Some of them fail here on demand:
// this program's functions go before those of the C library, for the libraries that it uses too.

#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <new>
#include <thread>

#include "platform/files.h"
#include "platform/folders.h"
#include "platform/modules.h"
#include "platform/posix/base/host_errors.h"
#include "platform/posix/base/scoped_descriptor.h"
#include "platform/posix/base/shared_text_file.h"
#include "platform/posix/machine/machine.h"
#include "support/test_machine.h"

extern thread_local int allocations_left;  // see processes_test.cpp

namespace {

int link_error = 0;
int user_error = 0;

}  // namespace

extern "C" [[gnu::visibility("default")]] ssize_t readlink(const char* path, char* target,
                                                           size_t size) noexcept {
    errno = link_error;
    return link_error != 0 ? -1 : syscall(SYS_readlinkat, AT_FDCWD, path, target, size);
}
extern "C" [[gnu::visibility("default")]] int getpwuid_r(uid_t user, passwd* row, char* buffer,
                                                         size_t size, passwd** found) {
    *found = nullptr;
    const auto next = reinterpret_cast<decltype(&getpwuid_r)>(dlsym(RTLD_NEXT, "getpwuid_r"));
    return user_error != 0 ? user_error : next(user, row, buffer, size, found);
}

namespace {

namespace fs = std::filesystem;

TEST(FailingCalls, LeaveALinkInItsPlace) {
    const fs::path link = TestMachine::ScratchFolder() / "link";
    fs::create_symlink("target", link);
    const auto append = [](std::string* text) {
        *text += 'x';
        return DWORD{NO_ERROR};
    };
    link_error = EIO;
    EXPECT_EQ(SharedTextFile(link).Update(append), ERROR_GEN_FAILURE);
    link_error = 0;
    EXPECT_EQ(SharedTextFile(link).Update(append), NO_ERROR);
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(fs::file_size(link), 1u);
}

// An answer from it would part the user's cookies.
TEST(FailingCalls, AreNoAnswerOfTheUserDatabase) {
    for (const int error : {EPERM, EBADF, EIO}) {
        user_error = error;
        EXPECT_EQ(Machine::Current().UserFolder(), "") << error;
    }
    user_error = 0;
    EXPECT_NE(Machine::Current().UserFolder(), "");
}

// What is absent is forgotten, and with it what was read from it.
TEST(FailingCalls, AreNotTakenForAbsence) {
    EXPECT_EQ(ErrorFromHost(ESTALE), ERROR_GEN_FAILURE);
}

TEST(FailingCalls, LeaveTheCurrentFolder) {
    const fs::path before = fs::current_path();
    ASSERT_TRUE(SetCurrentDirectoryW(u"C:\\Windows"));  // what is kept for good is there then
    fs::current_path(before);
    bool isChanged = false;
    for (int left = 0; !isChanged; ++left) {
        try {
            allocations_left = left;
            isChanged = SetCurrentDirectoryW(u"C:\\Windows") != FALSE;
        } catch (const std::bad_alloc&) {
        }
        allocations_left = -1;
        EXPECT_EQ(fs::current_path() != before, isChanged) << left;
    }
    fs::current_path(before);
}

TEST(FailingCalls, DoNotKeepALibraryLoaded) {
    fs::copy_file(BREVIK_TEST_BINARY_FOLDER "/plain_library.so",
                  fs::path(Machine::Current().Folder()) / "drives/c/Windows/plain.dll");
    HMODULE const module = LoadLibraryW(u"plain.dll");
    allocations_left = 0;
    EXPECT_TRUE(FreeLibrary(module));
    allocations_left = -1;
}

TEST(FailingCalls, AreMadeAgainAfterASignal) {
    const fs::path pipe = TestMachine::ScratchFolder() / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    struct sigaction action = {};
    action.sa_handler = [](int) {};
    sigaction(SIGUSR1, &action, nullptr);
    const pthread_t writer = pthread_self();
    std::thread reader([&] {
        constexpr std::chrono::milliseconds kPause{50};
        std::this_thread::sleep_for(kPause);
        pthread_kill(writer, SIGUSR1);
        std::this_thread::sleep_for(kPause);
        close(open(pipe.c_str(), O_RDONLY | O_NONBLOCK));
    });
    EXPECT_TRUE(OpenDescriptor(pipe, O_WRONLY));
    reader.join();
}

// There is no moment at which what the host prints could go to the file.
TEST(FailingCalls, OfTakingAStandardStreamsPlaceMakeNoFile) {
    const fs::path path = TestMachine::ScratchFolder() / "file";
    const pid_t child = fork();
    if (child == 0) {
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
            close(stream);
        }
        const rlimit streamsAlone = {3, 3};
        setrlimit(RLIMIT_NOFILE, &streamsAlone);
        _exit(OpenDescriptor(path, O_WRONLY | O_CREAT, 0600) ? 1 : 0);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_FALSE(fs::exists(path));
}

}  // namespace
