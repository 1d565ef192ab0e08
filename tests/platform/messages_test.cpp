#include "platform/messages.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "platform/modules.h"
#include "support/test_machine.h"

namespace {

// With FORMAT_MESSAGE_ALLOCATE_BUFFER; empty where there is no text.
std::u16string Message(DWORD flags, DWORD code, HMODULE module = nullptr) {
    WCHAR* block = nullptr;
    const DWORD length = FormatMessageW(flags | FORMAT_MESSAGE_ALLOCATE_BUFFER, module, code, 0x400,
                                        reinterpret_cast<WCHAR*>(&block), 0, nullptr);
    if (block == nullptr) {
        EXPECT_EQ(length, 0u);
        return {};
    }
    std::u16string text(block);
    EXPECT_EQ(length, text.size());
    EXPECT_EQ(LocalFree(block), nullptr);
    return text;
}

constexpr DWORD kCodesWithText[] = {
    0,          2,          3,          4,          5,          6,          8,          13,
    17,         18,         19,         21,         31,         32,         50,         53,
    80,         87,         112,        122,        123,        126,        127,        131,
    145,        161,        183,        193,        234,        259,        267,        1112,
    1231,       1235,       1400,       1450,       1460,       1785,       12006,      0x80004001,
    0x80004002, 0x80004003, 0x80004005, 0x80010106, 0x80040110, 0x80040111, 0x80040154, 0x800401F0,
    0x80070005, 0x80070057, 0x8000FFFF,
};

TEST(SystemMessages, AreOneLineWithoutInserts) {
    for (const DWORD code : kCodesWithText) {
        const std::u16string text = Message(FORMAT_MESSAGE_FROM_SYSTEM, code);
        ASSERT_GT(text.size(), 2u) << code;
        EXPECT_EQ(text.find_first_of(u"\r\n"), text.size() - 2) << code;
        EXPECT_TRUE(text.ends_with(u"\r\n")) << code;
        EXPECT_EQ(text.find(u'%'), std::u16string::npos) << code;
    }
    EXPECT_EQ(Message(FORMAT_MESSAGE_FROM_SYSTEM, 0x80070005),
              Message(FORMAT_MESSAGE_FROM_SYSTEM, 5));
}

TEST(SystemMessages, AnUnknownNumberHasNone) {
    for (const DWORD code : {99999u, 0xFFFFFFFFu, 0x80040265u, 0x8007FFFFu, 0x00070005u}) {
        SetLastError(0);
        EXPECT_EQ(Message(FORMAT_MESSAGE_FROM_SYSTEM, code), u"") << code;
        EXPECT_EQ(GetLastError(), ERROR_MR_MID_NOT_FOUND) << code;
    }
}

TEST(MessageLibrary, HasItsOwnTexts) {
    const std::filesystem::path folder = TestMachine::Folder() / "drives/c/Windows/System32";
    std::filesystem::create_directories(folder);
    std::filesystem::copy_file(BREVIK_TEST_BINARY_FOLDER "/message_library.so",
                               folder / "messages.dll");
    const HMODULE module = LoadLibraryW(u"messages.dll");
    ASSERT_NE(module, nullptr) << GetLastError();
    constexpr DWORD kLibrary = FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_IGNORE_INSERTS;
    EXPECT_EQ(Message(kLibrary, 0x80040265, module), u"The graph can\u2019t be played.\r\n");
    EXPECT_EQ(Message(kLibrary, 6, module), u"\r\n");
    EXPECT_EQ(Message(kLibrary, 7, module), u"%1 is no certificate.\r\n");
    EXPECT_EQ(Message(kLibrary, 2, module), u"");
    EXPECT_EQ(GetLastError(), ERROR_MR_MID_NOT_FOUND);
    EXPECT_TRUE(FreeLibrary(module));
}

// This test program exports no table.
TEST(MessageLibrary, WithoutATableHasNoTexts) {
    EXPECT_EQ(Message(FORMAT_MESSAGE_FROM_HMODULE, 2, GetModuleHandleW(nullptr)), u"");
    EXPECT_EQ(GetLastError(), ERROR_MR_MID_NOT_FOUND);
}

TEST(RunTimeMessages, FitIntoTheBuffer) {
    char buffer[1024];
    EXPECT_EQ(strerror_s(buffer, sizeof buffer, ENOENT), 0);
    EXPECT_STREQ(buffer, "No such file or directory");
    EXPECT_EQ(strerror_s(buffer, 8, ENOENT), 0);
    EXPECT_STREQ(buffer, "No such");
    EXPECT_EQ(strerror_s(buffer, sizeof buffer, 123456), 0);
    EXPECT_STREQ(buffer, "Unknown error");
}

}  // namespace
