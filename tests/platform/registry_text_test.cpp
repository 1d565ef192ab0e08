// What is refused as a text of the registry; what is read from one is tested together with what is
// written.

#include "platform/posix/registry/registry_text.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/posix/text/host_text.h"
#include "support/registry_machine.h"

namespace {

using namespace std::string_literals;

constexpr const char* kKey = "[HKEY_USERS\\k]\n";

// What is wrong with a text: "LINE: REASON", or nothing.
std::string FaultOf(const std::string& text) {
    RegistryTree tree;
    RegistryFault fault;
    return MergeRegistryText(text, &tree, &fault)
               ? ""
               : std::to_string(fault.line) + ": " + fault.reason;
}

std::string Utf16(const std::string& text) {
    return "\xFF\xFE" + BytesOfUtf16(WideFromUtf8(text));
}

TEST(RegistryText, WhatIsMalformed) {
    const std::string key = std::string(kRegistryHead) + kKey;  // the first value is on line 4
    const std::string long255(255, 'n');
    const std::string long16383(16383, 'n');
    std::string deep512;
    for (int depth = 0; depth < 512; ++depth) {
        deep512 += "\\d";
    }
    const struct {
        std::string text;
        std::string fault;
    } cases[] = {
        {"", "0: the head line is missing"},
        {"\n" + key, "1: the head line is missing"},
        {"Windows Registry Editor Version 6.00\n", "1: the head line is missing"},
        {"\xFE\xFF", "0: UTF-16 in big-endian order"},
        {Utf16(key) + "x", "0: UTF-16 with half a unit at its end"},
        {Utf16(key) + "\x01\xD8\x0A\0"s, "4: ill-formed UTF-16"},
        {key + "; \xFF\n", "4: ill-formed UTF-8"},
        {key + "\"a\"=\"\0\""s, "4: a NUL character"},
        {key + "nonsense", "4: neither a key nor a value nor a comment"},
        {std::string(kRegistryHead) + "\"a\"=\"b\"", "3: a value without a key"},
        {key + "[-HKEY_USERS\\x]\n\"a\"=\"b\"", "5: a value without a key"},
        {key + "[HKEY_USERS\\x", "4: a key without its closing bracket"},
        {key + "[HKEY_USERS\\x] y", "4: a key without its closing bracket"},
        {key + "[HKLM\\x]", "4: no root of the registry has this name"},
        {key + "[]", "4: no root of the registry has this name"},
        {key + "[HKEY_USERS\\]", "4: a key has no name"},
        {key + "[HKEY_USERS\\a\\]", "4: a key has no name"},
        {key + "[HKEY_USERS\\\\a]", "4: a key has no name"},
        {key + "[-HKEY_USERS]", "4: a root cannot be removed"},
        {key + "[HKEY_USERS\\" + long255 + "n]", "4: the name of a key is too long"},
        {key + "[HKEY_USERS\\" + long255 + "]", ""},
        {key + "[HKEY_USERS\\d" + deep512 + "]", "4: a key lies too deep"},
        {key + "[HKEY_USERS" + deep512 + "]", ""},
        {key + "\"" + long16383 + "n\"=\"\"", "4: the name of a value is too long"},
        {key + "\"" + long16383 + "\"=\"\"", ""},
        {key + "\"a", "4: a text without its closing quote"},
        {key + "\"a\"=\"b\\\"", "4: a text without its closing quote"},
        {key + "\"a\"=\"b\\", "4: a backslash in front of neither a backslash nor a quote"},
        {key + "\"a\"=\"b\\n\"", "4: a backslash in front of neither a backslash nor a quote"},
        {key + "\"a\"", "4: a value without its equals sign"},
        {key + "\"a\"=", "4: data of an unknown form"},
        {key + "\"a\"=qword:1", "4: data of an unknown form"},
        {key + "\"a\"=\"b\"c", "4: something after the end of a value"},
        {key + "\"a\"=-1", "4: something after the end of a value"},
        {key + "\"a\"=dword:", "4: no hexadecimal number"},
        {key + "\"a\"=dword:123456789", "4: no hexadecimal number"},
        {key + "\"a\"=dword:1g", "4: something after the end of a value"},
        {key + "\"a\"=hex(:01", "4: no number of a type"},
        {key + "\"a\"=hex(123456789):01", "4: no number of a type"},
        {key + "\"a\"=hex 01", "4: data of an unknown form"},
        {key + "\"a\"=hex:001", "4: no hexadecimal byte"},
        {key + "\"a\"=hex:,01", "4: no hexadecimal byte"},
        {key + "\"a\"=hex:01 02", "4: a comma is missing"},
        {key + "\"a\"=hex:01\\\n,02", "4: a comma is missing"},
        {key + "\"a\"=hex:01,", "4: a byte is missing"},
        {key + "\"a\"=hex:01,\\\n\n", "5: a byte is missing"},
        {key + "\"a\"=hex:01,\\", "4: the text ends within a value"},
        {key + "\"a\"=hex:01,\\\n\xFF", "5: ill-formed UTF-8"},
        {key + "\"a\"=hex:01,\\x\n02", "4: something after the end of a value"},
        {"REGEDIT4\n\n" + std::string(kKey) + "\"a\"=hex(2):e9,00",
         "4: the bytes of a text are ill-formed UTF-8"},
        {key + std::string((64u << 20) - key.size(), ';'), ""},
        {key + std::string((64u << 20) + 1 - key.size(), ';'), "0: larger than 64 MiB"},
    };
    for (const auto& [text, fault] : cases) {
        EXPECT_EQ(FaultOf(text), fault) << text.substr(0, 200);
    }
}

TEST(RegistryText, KeysAndValuesAreBounded) {
    std::string values;
    for (int index = 0; index < 1'000'000; ++index) {
        values += "\"" + std::to_string(index) + "\"=\"\"\n";
    }
    EXPECT_EQ(FaultOf(kRegistryHead + "[HKEY_USERS\\a]\n"s + values),
              "1000003: more than a million keys and values");
    // Keys that lie deep, and whose paths take more than the text that makes them.
    std::string keys;
    for (int index = 0; index < 300; ++index) {
        keys += "[HKEY_USERS\\" + std::to_string(1000 + index);
        for (int depth = 1; depth < 512; ++depth) {
            keys += "\\d";
        }
        keys += "]\n";
    }
    EXPECT_EQ(FaultOf(kRegistryHead + keys + keys), "252: larger than 64 MiB");
}

}  // namespace
