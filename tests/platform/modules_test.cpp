// Loading libraries by name, their functions, and their files.

#include "platform/modules.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "platform/folders.h"
#include "platform/posix/machine/programs.h"
#include "platform/posix/paths/paths.h"
#include "platform/posix/text/host_text.h"
#include "support/drive_files.h"
#include "support/test_machine.h"

namespace {

namespace fs = std::filesystem;

const fs::path kPlain = BREVIK_TEST_BINARY_FOLDER "/plain_library.so";
const fs::path kDependent = BREVIK_TEST_BINARY_FOLDER "/dependent_library.so";

void Install(const fs::path& library, const fs::path& target) {
    fs::create_directories(target.parent_path());
    fs::copy_file(library, target, fs::copy_options::overwrite_existing);
}

int Call(HMODULE module, const char* name) {
    const FARPROC function = GetProcAddress(module, name);
    return function != nullptr
               ? reinterpret_cast<int (*)()>(reinterpret_cast<void (*)()>(function))()
               : -1;
}

std::string FileOf(HMODULE module) {
    WCHAR path[1024];
    return Utf8FromWide({path, GetModuleFileNameW(module, path, 1024)});
}

// The error of a loading that must fail.
DWORD LoadError(const WCHAR* name) {
    SetLastError(0);
    EXPECT_EQ(LoadLibraryExW(name, nullptr, LOAD_WITH_ALTERED_SEARCH_PATH), nullptr);
    return GetLastError();
}

TEST(Modules, AreFoundInTheOrderOfTheSystem) {
    const fs::path host = fs::read_symlink("/proc/self/exe").parent_path();
    const fs::path current = TestMachine::ScratchFolder() / "current";
    const fs::path listed = TestMachine::ScratchFolder() / "listed";
    const fs::path last = TestMachine::ScratchFolder() / "last";
    fs::create_directories(current);
    fs::current_path(current);
    setenv("PATH",
           ("::relative:" + (listed / "missing").string() + ":" + listed.string() + ":" +
            listed.string() + ":" + last.string())
               .c_str(),
           1);
    // From the last place to the first: each one hides those before it.
    const fs::path places[] = {
        last, listed, current, DriveC() / "Windows", DriveC() / "Windows/System32", host};
    EXPECT_EQ(LoadError(u"order-test.dll"), 126u);
    for (const fs::path& place : places) {
        Install(kPlain, place / "Order-Test.dll");
        WCHAR path[1024];
        ASSERT_NE(SearchPathW(nullptr, u"order-test.dll", nullptr, 1024, path, nullptr), 0u)
            << place;
        HMODULE module = LoadLibraryExW(u"ORDER-TEST", nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
        ASSERT_NE(module, nullptr) << place;
        EXPECT_EQ(FileOf(module), Utf8FromWide(path));
        EXPECT_TRUE(fs::equivalent(FindFile(path).path, place / "Order-Test.dll"));
        EXPECT_EQ(Call(module, "PlainAnswer"), 41);
        EXPECT_TRUE(FreeLibrary(module));
    }
    fs::remove(host / "Order-Test.dll");
}

TEST(Modules, AreTakenFromPlacesThatNoOtherUserCanPutThemIn) {
    constexpr uid_t kUser = 7;
    const struct {
        uid_t owner;
        mode_t mode;
        bool privileged;
        bool currentFolder;
        bool parentsFolder;
    } cases[] = {
        {0, 0755, false, true, true},      {kUser, 0700, false, true, true},
        {8, 0755, false, false, false},    {kUser, 0775, false, false, true},
        {0, 01777, false, false, true},    {0, 0755, true, false, false},
        {kUser, 0700, true, false, false},
    };
    for (const auto& row : cases) {
        struct stat status = {};
        status.st_uid = row.owner;
        status.st_mode = row.mode;
        const ProcessRights rights = {kUser, row.privileged};
        EXPECT_EQ(MayHoldLibraries(rights, status), row.currentFolder) << row.owner << row.mode;
        EXPECT_EQ(MayLendItsFolder(rights, status), row.parentsFolder) << row.owner << row.mode;
    }
    const fs::path folder = TestMachine::ScratchFolder() / "current";
    Install(kPlain, folder / "planted.dll");
    fs::current_path(folder);
    setenv("PATH", folder.c_str(), 1);
    fs::permissions(folder, fs::perms(01777));
    EXPECT_EQ(LoadError(u"planted.dll"), 126u);
    fs::permissions(folder, fs::perms(0700));
    EXPECT_NE(LoadLibraryW(u"planted.dll"), nullptr);
}

TEST(Modules, AreCounted) {
    Install(kPlain, DriveC() / "Windows/Counted.dll");
    HMODULE module = LoadLibraryW(u"counted.dll");
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(LoadLibraryW(u"COUNTED"), module);
    EXPECT_EQ(LoadLibraryW(u"C:\\windows\\counted.dll"), module);
    EXPECT_EQ(GetModuleHandleW(u"Counted.DLL"), module);
    EXPECT_EQ(GetModuleHandleW(u"c:\\WINDOWS\\counted.dll"), module);

    // By its bare name it is found while it is loaded, wherever its file went.
    fs::remove(DriveC() / "Windows/Counted.dll");
    EXPECT_EQ(LoadLibraryW(u"counted.dll"), module);
    for (int time = 0; time < 4; ++time) {
        EXPECT_EQ(Call(module, "PlainAnswer"), 41) << time;
        EXPECT_TRUE(FreeLibrary(module)) << time;
    }
    EXPECT_FALSE(FreeLibrary(module));
    EXPECT_EQ(GetLastError(), 126u);
    EXPECT_EQ(GetProcAddress(module, "PlainAnswer"), nullptr);
    EXPECT_EQ(GetModuleHandleW(u"counted.dll"), nullptr);
    EXPECT_EQ(LoadError(u"counted.dll"), 126u);
    WCHAR path[8];
    EXPECT_EQ(GetModuleFileNameW(module, path, 8), 0u);
}

TEST(Modules, ThatAreNoneTellWhy) {
    const fs::path folder = DriveC() / "Wrong";
    fs::create_directories(folder / "Folder.dll");
    std::ofstream(folder / "Text.dll") << "no library";
    std::ofstream(folder / "Empty.dll");
    ASSERT_EQ(mkfifo((folder / "Pipe.dll").c_str(), 0600), 0);
    Install(kDependent, folder / "Alone.dll");
    const struct {
        const WCHAR* name;
        DWORD error;
    } cases[] = {
        {u"C:\\Wrong\\Text.dll", 193},
        {u"C:\\Wrong\\Empty", 193},
        {u"C:\\Wrong\\Missing.dll", 126},
        {u"C:\\Missing\\Text.dll", 126},
        {u"Q:\\Text.dll", 126},
        {u"C:\\Wrong\\Folder.dll", 126},
        {u"C:\\Wrong\\Pipe.dll", 126},
        {u"C:\\Wrong\\Alone.dll", 126},
        {u"..\\no*name", 126},
        {u"no*name", 126},
        {u"", 126},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(LoadError(row.name), row.error) << Utf8FromWide(row.name);
    }
}

TEST(Modules, TellOnlyTheirOwnFunctions) {
    Install(kDependent, DriveC() / "Pair/Dependent.dll");
    Install(kPlain, DriveC() / "Pair/plain_library.so");
    HMODULE module = LoadLibraryW(u"C:\\PAIR\\dependent");
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(Call(module, "DependentAnswer"), 42);
    EXPECT_EQ(GetProcAddress(module, "PlainAnswer"), nullptr);
    EXPECT_EQ(GetLastError(), 127u);
    EXPECT_EQ(FileOf(module), "C:\\Pair\\Dependent.dll");
    EXPECT_TRUE(FreeLibrary(module));
}

TEST(Modules, TellTheHostsFile) {
    HMODULE host = GetModuleHandleW(nullptr);
    ASSERT_NE(host, nullptr);
    const std::string file = FileOf(host);
    EXPECT_EQ(file, FileOf(nullptr));
    EXPECT_TRUE(file.starts_with("Z:\\") &&
                file.ends_with("\\" + fs::read_symlink("/proc/self/exe").filename().string()))
        << file;

    // Too small a buffer holds the beginning; one that fits exactly all of it.
    WCHAR path[1024] = u"??????";
    EXPECT_EQ(GetModuleFileNameW(host, path, 5), 5u);
    EXPECT_EQ(GetLastError(), 122u);
    EXPECT_EQ(Utf8FromWide(path), file.substr(0, 4));
    const auto length = static_cast<DWORD>(file.size());
    EXPECT_EQ(GetModuleFileNameW(host, path, length), length);
    EXPECT_EQ(Utf8FromWide(path), file.substr(0, length - 1));
    EXPECT_EQ(GetModuleFileNameW(host, path, length + 1), length);
    EXPECT_EQ(Utf8FromWide(path), file);
}

}  // namespace
