// How the registry follows its file.

#include "platform/posix/registry/registry_snapshot.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "support/debug_output.h"
#include "support/registry_machine.h"
#include "support/test_machine.h"

namespace {

using testing::HasSubstr;

class RegistrySnapshots : public RegistryMachine {};

std::string OneValue(const std::string& text) {
    return "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Key]\n\"v\"=\"" + text + "\"\n";
}

std::string Value() {
    return TextAt(u"SOFTWARE\\Key", u"v");
}

// Each text has the length of the one before: within one step of the clock nothing but the bytes
// may differ.
TEST_F(RegistrySnapshots, EveryChangeIsSeenAtOnce) {
    for (int round = 100; round < 400; ++round) {
        const std::string text = std::to_string(round);
        WriteRegistry(OneValue(text));
        ASSERT_EQ(Value(), text);
    }
    // A replaced file, with the time of the one before.
    const auto time = std::filesystem::last_write_time(RegistryFilePath());
    for (int round = 400; round < 500; ++round) {
        const std::string text = std::to_string(round);
        const std::filesystem::path next = RegistryFilePath() + ".next";
        std::ofstream(next, std::ios::binary) << kRegistryHead << OneValue(text);
        std::filesystem::last_write_time(next, time);
        std::filesystem::rename(next, RegistryFilePath());
        ASSERT_EQ(Value(), text);
    }
    std::filesystem::remove(RegistryFilePath());
    EXPECT_EQ(Value(), "error 2");
}

TEST_F(RegistrySnapshots, AnOpenKeyIsThatOfTheNewestFile) {
    WriteRegistry(OneValue("first") + "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Key\\a]\n");
    const TestKey key(u"SOFTWARE\\KEY");
    WriteRegistry("[HKEY_LOCAL_MACHINE\\Software\\key\\b]\n" + OneValue("second"));
    EXPECT_EQ(TextOf(key.Get(), u"v"), "second");
    EXPECT_THAT(SubKeysOf(key.Get()), testing::ElementsAre("b"));
    EXPECT_EQ(TestKey(u"a", KEY_READ, key.Get()).error, 2);

    WriteRegistry("[HKEY_LOCAL_MACHINE\\SOFTWARE]\n");
    WCHAR name[8];
    DWORD length = 8;
    EXPECT_EQ(TextOf(key.Get(), u"v"), "error 1018");
    EXPECT_EQ(RegEnumKeyExW(key.Get(), 0, name, &length, nullptr, nullptr, nullptr, nullptr), 1018);
    EXPECT_EQ(TestKey(u"b", KEY_READ, key.Get()).error, 1018);
    EXPECT_EQ(TestKey(u"", KEY_READ, key.Get()).error, 1018);

    WriteRegistry(OneValue("third"));
    EXPECT_EQ(TextOf(key.Get(), u"v"), "third");
}

TEST_F(RegistrySnapshots, AMalformedFileIsRefusedWholeAndToldOnce) {
    DebugOutput output;
    WriteRegistry(OneValue("first") + "nonsense\n");
    EXPECT_EQ(Value(), "error 2");
    EXPECT_EQ(Value(), "error 2");
    EXPECT_EQ(output.Take(), "Registry refused: " + RegistryFilePath() +
                                 ":5: neither a key nor a value nor a comment; the registry is "
                                 "empty\n");
    WriteRegistry(OneValue("second"));
    EXPECT_EQ(Value(), "second");
    WriteRegistry(OneValue("third") + "\"cut");
    EXPECT_EQ(Value(), "second");
    EXPECT_EQ(Value(), "second");
    EXPECT_EQ(output.Take(), "Registry refused: " + RegistryFilePath() +
                                 ":5: a text without its closing quote; what was read before "
                                 "stays in force\n");
    WriteRegistry(OneValue("third") + "\"cut2");
    EXPECT_EQ(Value(), "second");
    EXPECT_THAT(output.Take(), HasSubstr(":5: "));
    WriteRegistry(OneValue("fourth"));
    EXPECT_EQ(Value(), "fourth");
    EXPECT_EQ(output.Take(), "");
}

TEST_F(RegistrySnapshots, WhatCouldNeverBeReadIsAnErrorOfItsKeys) {
    std::filesystem::create_directory(RegistryFilePath());
    EXPECT_EQ(TestKey(u"SOFTWARE").error, 5);
    std::filesystem::remove(RegistryFilePath());
    EXPECT_EQ(TestKey(u"SOFTWARE").error, 2);
}

TEST_F(RegistrySnapshots, WhatCannotBeReadIsRefused) {
    DebugOutput output;
    WriteRegistry(OneValue("first"));
    EXPECT_EQ(Value(), "first");

    std::filesystem::remove(RegistryFilePath());
    std::filesystem::create_directory(RegistryFilePath());
    EXPECT_EQ(Value(), "first");
    EXPECT_EQ(Value(), "first");
    EXPECT_EQ(output.Take(), "Registry refused: " + RegistryFilePath() +
                                 ": cannot be read; what was read before stays in force\n");
    std::filesystem::remove(RegistryFilePath());
    ASSERT_EQ(mkfifo(RegistryFilePath().c_str(), 0600), 0);
    EXPECT_EQ(Value(), "first");

    std::filesystem::remove(RegistryFilePath());
    WriteRegistry(OneValue("second"));
    std::filesystem::resize_file(RegistryFilePath(), (64u << 20) + 1);
    EXPECT_EQ(Value(), "first");
    EXPECT_THAT(output.Take(), HasSubstr("registry.reg: larger than 64 MiB; "));

    // A symbolic link is followed.
    std::filesystem::remove(RegistryFilePath());
    const std::filesystem::path target = TestMachine::ScratchFolder() / "elsewhere.reg";
    std::ofstream(target) << kRegistryHead << OneValue("linked");
    std::filesystem::create_symlink(target, RegistryFilePath());
    EXPECT_EQ(Value(), "linked");
}

// Readers on several threads, while the file is replaced: each sees one whole state, and none that
// is older than one it has seen.
TEST_F(RegistrySnapshots, ReadersSeeWholeStatesInTheirOrder) {
    constexpr int kStates = 60;
    constexpr int kValues = 40;
    const auto replace = [](int state) {
        std::string keys;
        for (int value = 0; value < kValues; ++value) {
            keys += "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Key\\" + std::to_string(value) + "]\n@=\"" +
                    std::to_string(state) + "\"\n";
        }
        const std::string next = RegistryFilePath() + ".next";
        std::ofstream(next, std::ios::binary) << kRegistryHead << keys;
        std::filesystem::rename(next, RegistryFilePath());
    };
    replace(0);
    std::atomic<bool> isDone = false;
    std::atomic<int> faults = 0;
    std::atomic<int> looks = 0;
    const TestKey shared(u"SOFTWARE\\Key");
    const auto read = [&] {
        int newest = 0;
        while (!isDone || newest != kStates) {
            const std::size_t count = SubKeysOf(shared.Get()).size();
            const int first = std::atoi(TextAt(u"0", u"", KEY_READ, shared.Get()).c_str());
            const int last = std::atoi(TextAt(u"SOFTWARE\\Key\\39", u"").c_str());
            faults += count == kValues && first >= newest && last >= first ? 0 : 1;
            newest = last;
            ++looks;
        }
    };
    std::vector<std::thread> readers;
    for (int index = 0; index < 4; ++index) {
        readers.emplace_back(read);
    }
    for (int state = 1; state <= kStates; ++state) {
        for (const int seen = looks; looks == seen;) {
            std::this_thread::yield();
        }
        replace(state);
    }
    isDone = true;
    for (std::thread& reader : readers) {
        reader.join();
    }
    EXPECT_EQ(faults, 0);
}

}  // namespace
