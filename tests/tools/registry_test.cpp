// brevikctl registry and machine.

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <string>
#include <thread>
#include <vector>

#include "support/registry_machine.h"
#include "support/test_machine.h"
#include "support/tool.h"

namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

class BrevikctlRegistry : public RegistryMachine, protected Tool {
  protected:
    BrevikctlRegistry() : Tool({"registry"}) {}
};

TEST_F(BrevikctlRegistry, StoresAndPrintsEachType) {
    constexpr const char* kQuoted = "\"C:\\\\a \\\"b\\\" \xC3\xA4\"";
    const struct {
        const char* type;
        std::vector<std::string> data;
        std::string json;  // of the data
        std::string stored;
    } cases[] = {
        {"sz", {"C:\\a \"b\" \xC3\xA4"}, kQuoted, kQuoted},
        {"dword", {"0x1A"}, "26", "dword:0000001a"},
        {"dword", {"4294967295"}, "4294967295", "dword:ffffffff"},
        {"multi", {"a", "b"}, "[\"a\",\"b\"]", "hex(7):61,00,00,00,62,00,00,00,00,00"},
        {"expand", {"%T%"}, "\"%T%\"", "hex(2):25,00,54,00,25,00,00,00"},
        {"binary", {"00 ff,1A"}, "\"00 ff 1a\"", "hex:00,ff,1a"},
    };
    const std::vector<std::string> outputs = {
        "C:\\a \"b\" \xC3\xA4\n", "26\n", "4294967295\n", "a\nb\n", "%T%\n", "00 ff 1a\n"};
    for (std::size_t index = 0; index < outputs.size(); ++index) {
        const auto& row = cases[index];
        std::vector<std::string> command = {
            "set", "hklm\\Software\\Test", "Value", "--type", row.type, "--"};
        command.insert(command.end(), row.data.begin(), row.data.end());
        OutputOf(command);
        EXPECT_THAT(ReadRegistry(), HasSubstr("\n\"Value\"=" + row.stored + "\n"));
        EXPECT_EQ(OutputOf({"get", "HKEY_LOCAL_MACHINE\\software\\test\\", "VALUE"}),
                  outputs[index]);
        EXPECT_EQ(OutputOf({"get", "HKLM\\software\\test", "value", "--json"}),
                  "{\"name\":\"Value\",\"type\":\"" + std::string(row.type) +
                      "\",\"data\":" + row.json + "}\n");
    }
}

TEST_F(BrevikctlRegistry, ShowsAndDeletesKeys) {
    OutputOf({"set", "HKCR\\CLSID\\Sub", "@", "server"});
    OutputOf({"set", "HKCR\\CLSID", "List", "--type", "multi", "a", "b"});
    OutputOf({"set", "HKCR\\CLSID", "Number", "--type", "dword", "7"});
    EXPECT_EQ(OutputOf({"get", "HKLM\\SOFTWARE\\Classes\\CLSID"}),
              "Sub\\\nList  multi  'a' 'b'\nNumber  dword  7\n");
    EXPECT_EQ(OutputOf({"get", "HKCR\\CLSID\\Sub", "--json"}),
              "{\"keys\":[],\"values\":[{\"name\":\"\",\"type\":\"sz\",\"data\":\"server\"}]}\n");
    EXPECT_EQ(OutputOf({"get", "HKCR\\CLSID\\Sub", "@"}), "server\n");

    EXPECT_THAT(ErrorOf({"delete", "HKCR\\CLSID"}), HasSubstr("--recursive"));
    EXPECT_THAT(ErrorOf({"delete", "HKCR\\CLSID", "None"}), HasSubstr("no such key, value"));
    EXPECT_THAT(ErrorOf({"delete", "HKCR\\None"}), HasSubstr("no key"));
    EXPECT_THAT(ErrorOf({"delete", "HKLM", "-r"}), HasSubstr("is a root"));
    OutputOf({"delete", "HKCR\\CLSID", "LIST"});
    OutputOf({"delete", "HKCR\\CLSID\\Sub"});
    EXPECT_EQ(OutputOf({"get", "HKCR\\CLSID"}), "Number  dword  7\n");
    OutputOf({"delete", "HKLM\\SOFTWARE", "-r"});
    EXPECT_EQ(OutputOf({"get", "HKLM"}), "");
}

TEST_F(BrevikctlRegistry, RefusesWhatCannotBe) {
    const struct {
        std::vector<std::string> command;
        const char* error;
    } cases[] = {
        {{"get", "HKLM\\None"}, "no key 'HKEY_LOCAL_MACHINE\\None'"},
        {{"get", "HKLM", "None"}, "no value 'None'"},
        {{"get", "HKXX\\a"}, "HKLM, HKCU, HKU and HKCR"},
        {{"set", "HKLM\\\\a", "v", "d"}, "a key has no name"},
        {{"set", "HKLM\\a", "v", "--type", "dword", "4294967296"}, "is no number"},
        {{"set", "HKLM\\a", "v", "--type", "dword", "1x"}, "is no number"},
        {{"set", "HKLM\\a", "v", "--type", "binary", "0"}, "is no row of bytes"},
        {{"set", "HKLM\\a", "v", "--type", "binary", "0g"}, "is no row of bytes"},
        {{"set", "HKLM\\a", "v", "--type", "multi", "a", ""}, "an empty text"},
        {{"set", "HKLM\\a", "v", "a", "b"}, "takes one DATA"},
        {{"set", "HKLM\\a", "v", "\xFF"}, "no UTF-8"},
        {{"set", "HKLM\\a", "two\nlines", "d"}, "no value can have this name"},
        {{"import", "C:\\none.reg"}, "no file"},
        {{"export", "HKLM\\None"}, "no key"},
    };
    for (const auto& row : cases) {
        EXPECT_THAT(ErrorOf(row.command), HasSubstr(row.error));
    }
    EXPECT_EQ(RunTool({"set", "HKLM\\a", "v", "d", "--type", "none"}).exitCode, 2);
}

TEST_F(BrevikctlRegistry, ImportsAFileWholeOrNotAtAll) {
    const fs::path file = TestMachine::ScratchFolder() / "import.reg";
    const auto write = [&](const std::string& keys) {
        std::ofstream(file, std::ios::trunc) << kRegistryHead << keys;
    };
    OutputOf({"set", "HKLM\\Kept", "Old", "1"});
    write("[HKEY_LOCAL_MACHINE\\New]\n\"a\"=\"1\"\n[HKEY_LOCAL_MACHINE\\Kept]\n\"Old\"=-\n");
    OutputOf({"import", file.string()});
    EXPECT_EQ(OutputOf({"get", "HKLM\\New"}), "a  sz  1\n");
    EXPECT_EQ(OutputOf({"get", "HKLM\\Kept"}), "");

    write("[HKEY_LOCAL_MACHINE\\Half]\n\"a\"=\"1\"\n\"b\"=nonsense\n");
    EXPECT_THAT(ErrorOf({"import", file.string()}),
                AllOf(HasSubstr("import.reg:5: "), HasSubstr("Nothing was changed")));

    const fs::path copy = TestMachine::ScratchFolder() / "export.reg";
    OutputOf({"export", "-o", copy.string()});
    const std::string printed = OutputOf({"export", "hklm\\new"});
    EXPECT_EQ(printed, std::string(kRegistryHead) + "[HKEY_LOCAL_MACHINE\\New]\n\"a\"=\"1\"\n");
    const std::string whole = ReadRegistry();
    OutputOf({"delete", "HKLM\\New"});
    OutputOf({"import", copy.string()});
    EXPECT_EQ(ReadRegistry(), whole);

    WriteRawRegistry("nonsense");
    EXPECT_THAT(ErrorOf({"get", "HKLM"}), HasSubstr("registry.reg:1: "));
    EXPECT_THAT(ErrorOf({"set", "HKLM\\a", "v", "d"}), HasSubstr("registry.reg:1: "));
}

// What others wrote stays, in the form that the tool writes, and every user may read it.
TEST_F(BrevikctlRegistry, WhatOthersWroteIsKept) {
    umask(0077);
    WriteRawRegistry(
        "REGEDIT4\r\n; by hand\r\n\r\n[HKEY_USERS\\theirs]\r\n"
        "\"bytes\"=hex(2):41,00\r\n");
    const fs::path import = TestMachine::ScratchFolder() / "comments.reg";
    std::ofstream(import) << kRegistryHead << "; not ours\n[HKEY_USERS\\Ours]\n\"Name\"=\"1\"\n";
    OutputOf({"import", import.string()});
    OutputOf({"set", "HKU\\OURS", "NAME", "2"});
    EXPECT_EQ(ReadRegistry(), std::string(kRegistryHead) +
                                  "; by hand\n\n[HKEY_USERS\\Ours]\n\"Name\"=\"2\"\n\n"
                                  "[HKEY_USERS\\theirs]\n\"bytes\"=hex(2):41,00,00,00\n");
    EXPECT_EQ(fs::status(RegistryFilePath()).permissions(), fs::perms(0644));
}

TEST_F(BrevikctlRegistry, ALinkedFileIsReplacedWhereItLies) {
    const fs::path target = TestMachine::ScratchFolder() / "linked.reg";
    std::ofstream(target) << kRegistryHead;
    fs::create_symlink(target, RegistryFilePath());
    OutputOf({"set", "HKLM\\k", "@", "x"});
    EXPECT_TRUE(fs::is_symlink(RegistryFilePath()));
    EXPECT_EQ(TextAt(u"k", u""), "x");
}

// Deep keys, whose paths take more room when each is written out.
TEST_F(BrevikctlRegistry, WhatCouldNotBeReadAgainIsNotWritten) {
    std::string keys;
    for (int index = 100; index < 240; ++index) {
        keys += "[HKEY_USERS\\" + std::to_string(index);
        for (int depth = 1; depth < 512; ++depth) {
            keys += "\\\xE2\x82\xAC";
        }
        keys += "]\n";
    }
    WriteRegistry(keys);
    EXPECT_THAT(ErrorOf({"set", "HKU\\k", "v", "d"}),
                HasSubstr("registry.reg: larger than 64 MiB"));
}

// Commands that change the registry at the same time: every value is there in the end.
TEST_F(BrevikctlRegistry, WritersLoseNothing) {
    constexpr int kWriters = 3;
    constexpr int kWrites = 10;
    const auto nameOf = [](int writer, int write) {
        return std::to_string(writer) + "-" + std::to_string(write);
    };
    std::vector<std::thread> writers;
    for (int writer = 0; writer < kWriters; ++writer) {
        writers.emplace_back([&, writer] {
            for (int write = 0; write < kWrites; ++write) {
                OutputOf({"set", "HKLM\\k", nameOf(writer, write), "x"});
            }
        });
    }
    for (std::thread& writer : writers) {
        writer.join();
    }
    for (int value = 0; value < kWriters * kWrites; ++value) {
        const std::string name = nameOf(value / kWrites, value % kWrites);
        EXPECT_EQ(TextAt(u"k", WideFromUtf8(name).c_str()), "x") << name;
    }
}

class BrevikctlMachine : public RegistryMachine, protected Tool {
  protected:
    BrevikctlMachine() : Tool({"machine"}) {}
};

TEST_F(BrevikctlMachine, RegistersTheReaderAndIsShown) {
    const fs::path absent = TestMachine::ScratchFolder() / "absent";
    const ChildResult looked = RunTool({"show"}, {{"BREVIK_MACHINE", absent.string()}});
    EXPECT_EQ(looked.exitCode, 1);
    EXPECT_THAT(looked.errors, HasSubstr("brevikctl machine create makes it"));
    EXPECT_FALSE(fs::exists(absent));

    EXPECT_THAT(RunTool({"show"}).output, HasSubstr("not registered"));
    EXPECT_TRUE(fs::is_empty(TestMachine::Folder() / "drives/c/ProgramData"));
    for (int count = 0; count < 2; ++count) {
        const ChildResult made = RunTool({"create"});
        EXPECT_EQ(made.exitCode, 0) << made.errors;
        EXPECT_THAT(made.output, HasSubstr("brevikcertificatereader"));
    }
    fs::create_directories(TestMachine::Folder() / "shares/srv/music");
    const std::string shown = RunTool({"show"}).output;
    EXPECT_THAT(shown,
                AllOf(HasSubstr("\nreaderState    works\n"), HasSubstr("\nZ:             /\n"),
                      HasSubstr("\n\\\\srv\\music    " + TestMachine::Folder().string()),
                      HasSubstr("\ndatabase       C:\\ProgramData\\Velmar\\")));
    EXPECT_THAT(RunTool({"show", "--json"}).output,
                AllOf(StartsWith("{\"folder\":\"" + TestMachine::Folder().string() + "\","),
                      HasSubstr("\"readerState\":\"works\""), HasSubstr("\"Z:\":\"/\""),
                      HasSubstr("\"users\":{}}\n")));

    // What is no reader is refused, and the one before stays.
    const std::string before = ReadRegistry();
    for (const std::string& reader : {std::string("C:\\none.so"), std::string(BREVIK_TEST_TOOL)}) {
        const ChildResult refused = RunTool({"create", "--reader", reader});
        EXPECT_EQ(refused.exitCode, 1);
        EXPECT_THAT(refused.errors, HasSubstr("is no certificate reader component"));
    }
    EXPECT_EQ(ReadRegistry(), before);
    WriteRegistry("nonsense");
    EXPECT_THAT(RunTool({"show"}).output, HasSubstr("registryState  malformed: "));
    EXPECT_EQ(RunTool({"show"}, {{"BREVIK_MACHINE", "/dev/null/machine"}}).exitCode, 1);
}

}  // namespace
