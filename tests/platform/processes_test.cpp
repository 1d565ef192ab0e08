// The processes of the machine and their files.

#include "platform/processes.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <new>
#include <set>
#include <string>
#include <vector>

#include "platform/posix/text/host_text.h"
#include "support/child_process.h"
#include "support/test_machine.h"

// How many more allocations of this thread succeed; -1: all of them.
thread_local int allocations_left = -1;

[[gnu::noinline]] void* operator new(std::size_t size) {
    void* const block = allocations_left == 0 ? nullptr : std::malloc(size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    allocations_left -= allocations_left > 0 ? 1 : 0;
    return block;
}
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return std::malloc(size);
}
[[gnu::noinline]] void operator delete(void* block) noexcept {
    std::free(block);
}
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}

namespace {

namespace fs = std::filesystem;

const fs::path kProbe = BREVIK_TEST_BINARY_FOLDER "/platform_probe";

// The name, of a file of the host, as drive Z: shows it.
std::string OnDriveZ(const fs::path& path) {
    std::string text = "Z:" + path.string();
    for (char& unit : text) {
        unit = unit == '/' ? '\\' : unit;
    }
    return text;
}

TEST(Processes, ListThisOne) {
    PROCESSENTRY32W entry;
    HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    ASSERT_NE(snapshot, INVALID_HANDLE_VALUE);
    ASSERT_TRUE(Process32FirstW(snapshot, &entry));
    EXPECT_EQ(entry.th32ProcessID, GetCurrentProcessId());
    EXPECT_EQ(entry.th32ParentProcessID, static_cast<DWORD>(getppid()));
    EXPECT_FALSE(Process32NextW(snapshot, &entry));
    EXPECT_EQ(GetLastError(), 18u);
    EXPECT_TRUE(CloseHandle(snapshot));
}

TEST(Processes, TellTheFilesThatTheyRun) {
    const fs::path launcher = TestMachine::ScratchFolder() / "Launcher";
    fs::copy_file("/bin/sh", launcher);
    // The trailing command keeps the launcher from becoming the probe itself.
    const ChildResult result = RunChild({launcher, "-c", kProbe.string() + "; true"});
    EXPECT_NE(result.output.find(OnDriveZ(fs::canonical(kProbe)) + "\n" +
                                 OnDriveZ(fs::canonical(launcher)) + "\n"),
              std::string::npos)
        << result.output;

    // A parent whose file was replaced since its start is known by its path.
    const ChildResult replaced =
        RunChild({launcher, "-c", "rm '" + launcher.string() + "'; " + kProbe.string() + "; true"});
    EXPECT_TRUE(replaced.output.ends_with("\\Launcher\n")) << replaced.output;
}

TEST(Processes, ThatAreNoneCannotBeOpened) {
    ChildProcess child({"true"});
    const auto gone = static_cast<DWORD>(child.Id());
    child.Wait();
    for (const DWORD process : {DWORD{0}, gone, DWORD{0x80000000}, DWORD{0xFFFFFFFF}}) {
        SetLastError(0);
        EXPECT_EQ(OpenProcess(0x1F0FFF, FALSE, process), nullptr) << process;
        EXPECT_EQ(GetLastError(), 87u) << process;
    }
    const fs::path program = TestMachine::ScratchFolder() / "cat";
    fs::copy_file("/bin/cat", program);
    if (chown(program.c_str(), 12345, 12345) == 0) {
        ChildProcess foreign({program});
        foreign.WriteLine("started");
        EXPECT_EQ(foreign.ReadLine(), "started");
        EXPECT_EQ(OpenProcess(0x1F0FFF, FALSE, static_cast<DWORD>(foreign.Id())), nullptr);
        EXPECT_EQ(GetLastError(), 5u);
    }
}

TEST(Handles, AreKnownUntilTheyAreClosed) {
    HANDLE process = OpenProcess(0, FALSE, GetCurrentProcessId());
    PROCESSENTRY32W entry;
    EXPECT_FALSE(Process32FirstW(process, &entry)) << "a handle of another kind";
    EXPECT_EQ(GetLastError(), 6u);
    EXPECT_TRUE(CloseHandle(process));
    WCHAR path[1024];
    EXPECT_EQ(GetModuleFileNameExW(process, nullptr, path, 1024), 0u);
    EXPECT_EQ(GetLastError(), 6u);
    std::set<HANDLE> used;
    for (int time = 0; time < 100; ++time) {
        HANDLE handle = OpenProcess(0, FALSE, GetCurrentProcessId());
        EXPECT_TRUE(used.insert(handle).second) << "a closed handle came back at once";
        EXPECT_TRUE(CloseHandle(handle));
    }
    // One that no memory is left for is none, and takes no other one's place.
    std::vector<HANDLE> opened;
    opened.reserve(100);
    for (int left = 0; opened.size() < 100; left = (left + 1) % 4) {
        try {
            allocations_left = left;
            opened.push_back(OpenProcess(0, FALSE, GetCurrentProcessId()));
        } catch (const std::bad_alloc&) {
        }
        allocations_left = 0;
    }
    for (HANDLE handle : opened) {
        EXPECT_TRUE(CloseHandle(handle));
    }
    allocations_left = -1;
    int local = 0;
    for (HANDLE none : {HANDLE{nullptr}, INVALID_HANDLE_VALUE, process, HANDLE{&local}}) {
        SetLastError(0);
        EXPECT_FALSE(CloseHandle(none));
        EXPECT_EQ(GetLastError(), 6u);
    }
}

}  // namespace
