// What is read from the text form of the registry, and written again.

#include <gtest/gtest.h>

#include <string>

#include "brevikctl/registry/registry_writer.h"
#include "platform/posix/registry/registry_text.h"
#include "platform/posix/text/host_text.h"
#include "support/registry_machine.h"

namespace {

using namespace std::string_literals;

constexpr const char* kKey = "[HKEY_USERS\\k]\n";

// The text as it is written again; its fault where it has one.
std::string Rewritten(const std::string& text) {
    RegistryTree tree;
    RegistryFault fault;
    return MergeRegistryText(text, &tree, &fault) ? WriteRegistryText(tree) : fault.Text();
}

// The one value of a text, as it is written.
std::string RewrittenValue(const std::string& head, const std::string& value) {
    const std::string text = Rewritten(head + "\n" + kKey + value);
    const std::string before = kRegistryHead + ""s + kKey;
    return text.starts_with(before) ? text.substr(before.size()) : text;
}

std::string Utf16(const std::string& text) {
    return "\xFF\xFE" + BytesOfUtf16(WideFromUtf8(text));
}

TEST(RegistryText, ValuesOfEveryForm) {
    const std::string version5 = "Windows Registry Editor Version 5.00";
    const std::string version4 = "REGEDIT4";
    const struct {
        std::string head;
        std::string read;
        std::string written;
    } cases[] = {
        {version5, "@=\"\"", "@=\"\"\n"},
        {version5, "\"\"=\"default\"", "@=\"default\"\n"},
        {version5, R"("q\"b\\"="C:\\x \"y\"; no comment")",
         R"("q\"b\\"="C:\\x \"y\"; no comment")"
         "\n"},
        {version5, " \"a\" = \"1\" ; comment", "\"a\"=\"1\"\n"},
        {version5, "\"a\"=dword:1A", "\"a\"=dword:0000001a\n"},
        {version5, "\"a\"=hex(4):01,02,03,04", "\"a\"=dword:04030201\n"},
        {version5, "\"a\"=hex(4):01,02", "\"a\"=hex(4):01,02\n"},
        {version5, "\"a\"=hex(5):01,02,03,04", "\"a\"=hex(5):01,02,03,04\n"},
        {version5, "\"a\"=hex(b):01,02,03,04,05,06,07,08",
         "\"a\"=hex(b):01,02,03,04,05,06,07,08\n"},
        {version5, "\"a\"=hex(FFff1234):", "\"a\"=hex(ffff1234):\n"},
        {version5, "\"a\"=hex(0):1,FF", "\"a\"=hex(0):01,ff\n"},
        {version5, "\"a\"=hex(3):01", "\"a\"=hex:01\n"},
        {version5, "\"a\"=hex:", "\"a\"=hex:\n"},
        {version5, "\"a\"=hex: 01 , 02,\\\r\n\t03,\\ ; comment\n04\r\n", "\"a\"=hex:01,02,03,04\n"},
        {version5, "\"a\"=hex:\\\n  01", "\"a\"=hex:01\n"},
        // A text that quotes cannot tell stays in bytes: no NUL, two, a line end, half a pair.
        {version5, "\"a\"=hex(1):41,00,00,00", "\"a\"=\"A\"\n"},
        {version5, "\"a\"=hex(1):41,00", "\"a\"=hex(1):41,00\n"},
        {version5, "\"a\"=hex(1):41,00,00,00,00,00", "\"a\"=hex(1):41,00,00,00,00,00\n"},
        {version5, "\"a\"=hex(1):0a,00,00,00", "\"a\"=hex(1):0a,00,00,00\n"},
        {version5, "\"a\"=hex(1):00,d8,00,00", "\"a\"=hex(1):00,d8,00,00\n"},
        {version5, "\"a\"=hex(1):41", "\"a\"=hex(1):41\n"},
        {version5, "\"a\"=hex(2):41,00,00,00", "\"a\"=hex(2):41,00,00,00\n"},
        {version4, "\"a\"=hex(2):c3,a9,00", "\"a\"=hex(2):e9,00,00,00\n"},
        {version4, "\"a\"=hex(7):41,00,42,00,00", "\"a\"=hex(7):41,00,00,00,42,00,00,00,00,00\n"},
        {version4, "\"a\"=hex:41,00", "\"a\"=hex:41,00\n"},
        {version4, "\"a\"=\"\xC3\xA9\"", "\"a\"=\"\xC3\xA9\"\n"},
        // Later lines go on with what the earlier ones left.
        {version5, "\"Name\"=\"1\"\n\"NAME\"=dword:2", "\"Name\"=dword:00000002\n"},
        {version5, "\"a\"=\"1\"\n\"b\"=\"2\"\n\"A\"=-\n\"none\"=- ; gone", "\"b\"=\"2\"\n"},
    };
    for (const auto& [head, read, written] : cases) {
        EXPECT_EQ(RewrittenValue(head, read), written) << head << "\n" << read;
        EXPECT_EQ(RewrittenValue(version5, written), written);
    }
}

TEST(RegistryText, LongBytesAreBrokenAt80Columns) {
    std::string bytes;
    for (int index = 0; index < 60; ++index) {
        bytes += index == 0 ? "aa" : ",aa";
    }
    const std::string written = RewrittenValue("REGEDIT4", "\"name\"=hex:" + bytes);
    EXPECT_EQ(written, "\"name\"=hex:" + bytes.substr(0, 22 * 3) + "\\\n  " +
                           bytes.substr(22 * 3, 25 * 3) + "\\\n  " + bytes.substr(47 * 3) + "\n");
    // A last byte goes to the very edge.
    for (std::size_t count = 1; count < 60; ++count) {
        std::string text = RewrittenValue("REGEDIT4", "@=hex:" + bytes.substr(0, count * 3 - 1));
        for (std::size_t end = text.find('\n'); end != text.npos; end = text.find('\n')) {
            EXPECT_LE(end, 80u) << count;
            text.erase(0, end + 1);
        }
    }
}

TEST(RegistryText, KeysAndTheirOrder) {
    const std::string text =
        std::string(kRegistryHead) +
        "; about this file\n;second\n"
        "[HKEY_LOCAL_MACHINE\\SOFTWARE\\b]\n; not at the head\n"
        "[hkey_local_machine\\Software\\A\\x[1]]\n\"z\"=\"1\"\n\"Y\"=\"2\"\n"
        "[HKEY_CLASSES_ROOT\\.Ext]\n@=\"e\"\n"
        "[HKEY_USERS]\n\"of the root\"=\"1\"\n"
        "[-HKEY_USERS\\none]\n"
        "[HKEY_CURRENT_USER\\gone\\deeper]\n@=\"1\"\n[-HKEY_current_user\\GONE]\n"
        "[HKEY_CURRENT_USER\\\xC3\xA4 b ]\n";
    const std::string written =
        std::string(kRegistryHead) +
        "; about this file\n;second\n"
        "\n[HKEY_CURRENT_USER\\\xC3\xA4 b ]\n"
        "\n[HKEY_LOCAL_MACHINE\\SOFTWARE]\n"
        "\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\A]\n"
        "\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\A\\x[1]]\n\"Y\"=\"2\"\n\"z\"=\"1\"\n"
        "\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\b]\n"
        "\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes]\n"
        "\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes\\.Ext]\n@=\"e\"\n"
        "\n[HKEY_USERS]\n\"of the root\"=\"1\"\n";
    std::string windowsLines;
    for (const char byte : text) {
        windowsLines += byte == '\n' ? "\r\n" : std::string(1, byte);
    }
    for (const std::string& form :
         {text, windowsLines, "\xEF\xBB\xBF" + text, Utf16(text), Utf16(windowsLines),
          text.substr(0, text.size() - 1), written}) {
        EXPECT_EQ(Rewritten(form), written);
    }
}

TEST(RegistryText, ExportOfAKeyHasItsPathAsItWasMade) {
    RegistryTree tree;
    RegistryFault fault;
    ASSERT_TRUE(MergeRegistryText(kRegistryHead +
                                      "; head\n[HKEY_USERS\\Key]\n@=\"1\"\n"
                                      "[HKEY_USERS\\Key\\Sub]\n@=\"2\"\n[HKEY_USERS\\Other]\n"s,
                                  &tree, &fault));
    EXPECT_EQ(WriteRegistryText(tree, u"hkey_users\\KEY\\sub"),
              kRegistryHead + "[HKEY_USERS\\Key\\Sub]\n@=\"2\"\n"s);
    EXPECT_EQ(WriteRegistryText(tree, u"HKEY_USERS\\key"),
              kRegistryHead + "[HKEY_USERS\\Key]\n@=\"1\"\n\n[HKEY_USERS\\Key\\Sub]\n@=\"2\"\n"s);
    EXPECT_EQ(WriteRegistryText(tree, u"HKEY_USERS\\none"), "");
}

}  // namespace
