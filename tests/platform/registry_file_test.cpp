// Changing the registry file, alone and several at once.

#include "platform/posix/registry_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <thread>
#include <vector>

#include "support/registry_machine.h"
#include "support/test_machine.h"

namespace {

using namespace std::string_literals;

class RegistryFiles : public RegistryMachine {
  protected:
    const RegistryFile file = RegistryFile::OfMachine();
    RegistryFault fault;
};

RegistryPath Path(const WCHAR* text) {
    RegistryPath path;
    std::string reason;
    EXPECT_TRUE(ParseRegistryPath(text, &path, &reason)) << reason;
    return path;
}

RegistryValue Text(const WCHAR* name, const std::string& text) {
    std::string data;
    for (const char unit : text + '\0') {
        data += {unit, '\0'};
    }
    return {name, REG_SZ, data};
}

TEST_F(RegistryFiles, AChangeIsSeenByReadersAndByOtherUsers) {
    umask(0077);
    const TestKey none(u"SOFTWARE\\Key");
    EXPECT_EQ(none.error, 2);
    EXPECT_EQ(
        file.SetValue(Path(u"HKEY_LOCAL_MACHINE\\SOFTWARE\\Key"), Text(u"Name", "one"), &fault), 0);
    EXPECT_EQ(TextAt(u"software\\key", u"name"), "one");
    EXPECT_EQ(
        file.SetValue(Path(u"HKEY_LOCAL_MACHINE\\software\\KEY"), Text(u"NAME", "two"), &fault), 0);
    EXPECT_EQ(TextAt(u"software\\key", u"name"), "two");
    EXPECT_EQ(ReadRegistry(), kRegistryHead +
                                  "[HKEY_LOCAL_MACHINE\\SOFTWARE]\n\n"
                                  "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Key]\n\"Name\"=\"two\"\n"s);
    const auto readable = std::filesystem::perms(0644);
    EXPECT_EQ(std::filesystem::status(RegistryFilePath()).permissions(), readable);

    const RegistryPath key = Path(u"HKEY_LOCAL_MACHINE\\Software\\Key");
    EXPECT_EQ(file.DeleteValue(key, u"none", &fault), 2);
    EXPECT_EQ(file.DeleteValue(Path(u"HKEY_USERS\\none"), u"name", &fault), 2);
    EXPECT_EQ(file.DeleteValue(key, u"name", &fault), 0);
    EXPECT_EQ(TextAt(u"SOFTWARE\\Key", u"name"), "error 2");
    EXPECT_EQ(file.DeleteKey(Path(u"HKEY_USERS\\none"), &fault), 2);
    EXPECT_EQ(file.DeleteKey(Path(u"HKEY_LOCAL_MACHINE\\none\\deeper"), &fault), 2);
    EXPECT_EQ(file.DeleteKey(Path(u"HKEY_LOCAL_MACHINE"), &fault), 87);
    EXPECT_EQ(file.SetValue(key, Text(u"two\nlines", ""), &fault), 87);
    EXPECT_EQ(file.DeleteKey(Path(u"HKEY_LOCAL_MACHINE\\SOFTWARE"), &fault), 0);
    EXPECT_EQ(ReadRegistry(), "Windows Registry Editor Version 5.00\n");
}

TEST_F(RegistryFiles, WhatOthersWroteIsKept) {
    WriteRawRegistry(
        "REGEDIT4\r\n; by hand\r\n\r\n[HKEY_USERS\\theirs]\r\n"
        "\"bytes\"=hex(2):41,00\r\n");
    EXPECT_EQ(file.SetValue(Path(u"HKEY_USERS\\ours"), Text(u"", "x"), &fault), 0);
    EXPECT_EQ(ReadRegistry(), kRegistryHead +
                                  "; by hand\n\n[HKEY_USERS\\ours]\n@=\"x\"\n\n"
                                  "[HKEY_USERS\\theirs]\n\"bytes\"=hex(2):41,00,00,00\n"s);
}

TEST_F(RegistryFiles, AMalformedFileIsNotTouched) {
    WriteRegistry("[HKEY_USERS\\k]\n\"a\"=b\n");
    const std::string before = ReadRegistry();
    const RegistryPath key = Path(u"HKEY_USERS\\k");
    RegistryTree tree;
    std::string text;
    EXPECT_EQ(file.SetValue(key, Text(u"a", "b"), &fault), 13);
    EXPECT_EQ(fault.Text(), RegistryFilePath() + ":4: data of an unknown form");
    EXPECT_EQ(file.DeleteKey(key, &fault), 13);
    EXPECT_EQ(file.Read(&tree, &fault), 13);
    EXPECT_EQ(file.Export(&key, &text, &fault), 13);
    EXPECT_EQ(ReadRegistry(), before);
}

TEST_F(RegistryFiles, ImportMergesAndExportTakesOut) {
    const std::string import = (TestMachine::ScratchFolder() / "import.reg").string();
    WriteRegistry(
        "; ours\n[HKEY_USERS\\k]\n\"keep\"=\"1\"\n\"drop\"=\"1\"\n\"change\"=\"1\"\n"
        "[HKEY_USERS\\drop\\deeper]\n");
    const auto writeImport = [&](const std::string& text) {
        std::ofstream(import, std::ios::binary | std::ios::trunc) << kRegistryHead << text;
    };
    writeImport(
        "; theirs\n[HKEY_USERS\\K]\n\"drop\"=-\n\"change\"=\"2\"\n[-HKEY_USERS\\Drop]\n"
        "[HKEY_USERS\\new]\n");
    EXPECT_EQ(file.Import(import, &fault), 0);
    const std::string merged =
        "[HKEY_USERS\\k]\n\"change\"=\"2\"\n\"keep\"=\"1\"\n\n[HKEY_USERS\\new]\n";
    EXPECT_EQ(ReadRegistry(), kRegistryHead + "; ours\n\n"s + merged);

    // Half an import is none.
    writeImport("[HKEY_USERS\\k]\n\"keep\"=-\nnonsense\n");
    EXPECT_EQ(file.Import(import, &fault), 13);
    EXPECT_EQ(fault.Text(), import + ":5: neither a key nor a value nor a comment");
    EXPECT_EQ(file.Import(import + ".none", &fault), 2);
    EXPECT_EQ(ReadRegistry(), kRegistryHead + "; ours\n\n"s + merged);

    const RegistryPath key = Path(u"HKEY_USERS\\K");
    std::string text;
    EXPECT_EQ(file.Export(&key, &text, &fault), 0);
    EXPECT_EQ(text, kRegistryHead + merged.substr(0, merged.find("\n\n") + 1));
    EXPECT_EQ(file.Export(nullptr, &text, &fault), 0);
    EXPECT_EQ(text, ReadRegistry());
    const RegistryPath none = Path(u"HKEY_USERS\\none");
    EXPECT_EQ(file.Export(&none, &text, &fault), 2);
}

TEST_F(RegistryFiles, WhatCouldNotBeReadAgainIsNotWritten) {
    WriteRegistry("[HKEY_USERS\\k]\n");
    const std::string before = ReadRegistry();
    RegistryValue value{u"large", REG_BINARY, std::string(22u << 20, '\x11')};
    EXPECT_EQ(file.SetValue(Path(u"HKEY_USERS\\k"), value, &fault), 13);
    EXPECT_EQ(fault.Text(), RegistryFilePath() + ": larger than 64 MiB");
    EXPECT_EQ(ReadRegistry(), before);
}

TEST_F(RegistryFiles, ALinkedFileIsReplacedWhereItLies) {
    const std::filesystem::path target = TestMachine::ScratchFolder() / "linked.reg";
    std::ofstream(target) << kRegistryHead << "[HKEY_USERS\\k]\n";
    std::filesystem::create_symlink(target, RegistryFilePath());
    EXPECT_EQ(file.SetValue(Path(u"HKEY_LOCAL_MACHINE\\k"), Text(u"", "x"), &fault), 0);
    EXPECT_TRUE(std::filesystem::is_symlink(RegistryFilePath()));
    EXPECT_EQ(TextAt(u"k", u""), "x");
}

// Writers in threads of several processes: every value of each is there in the end, and a reader
// never meets a state without one that it has seen.
TEST_F(RegistryFiles, WritersLoseNothing) {
    constexpr int kProcesses = 3;
    constexpr int kThreads = 2;
    constexpr int kWrites = 20;
    std::vector<pid_t> children;
    for (int process = 0; process < kProcesses; ++process) {
        const pid_t id = fork();
        if (id == 0) {
            std::vector<std::thread> threads;
            for (int thread = 0; thread < kThreads; ++thread) {
                threads.emplace_back([&, thread] {
                    RegistryFault ownFault;
                    for (int write = 0; write < kWrites; ++write) {
                        const std::string name = std::to_string(process) + "-" +
                                                 std::to_string(thread) + "-" +
                                                 std::to_string(write);
                        file.SetValue(Path(u"HKEY_LOCAL_MACHINE\\k"),
                                      Text(WideFromUtf8(name).c_str(), name), &ownFault);
                    }
                });
            }
            for (std::thread& thread : threads) {
                thread.join();
            }
            _exit(0);
        }
        children.push_back(id);
    }
    int newest = -1;
    int lost = 0;
    for (std::size_t running = children.size(); running > 0;) {
        const auto isThere = [](int write) {
            const std::string name = "0-0-" + std::to_string(write);
            return TextAt(u"k", WideFromUtf8(name).c_str()) == name;
        };
        lost += newest >= 0 && !isThere(newest) ? 1 : 0;
        newest += isThere(newest + 1) ? 1 : 0;
        running -= waitpid(-1, nullptr, WNOHANG) > 0 ? 1 : 0;
    }
    EXPECT_EQ(lost, 0);
    RegistryTree tree;
    ASSERT_EQ(file.Read(&tree, &fault), 0) << fault.Text();
    EXPECT_EQ(tree.Find(Path(u"HKEY_LOCAL_MACHINE\\k"))->AllValues().size(),
              std::size_t{kProcesses * kThreads * kWrites});
}

}  // namespace
