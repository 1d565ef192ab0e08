// The registry of the test's machine.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "platform/posix/registry/registry_snapshot.h"
#include "platform/posix/text/host_text.h"
#include "platform/registry.h"

inline constexpr const char* kRegistryHead = "Windows Registry Editor Version 5.00\n\n";

inline void WriteRawRegistry(const std::string& bytes) {
    std::ofstream(RegistryFilePath(), std::ios::binary | std::ios::trunc) << bytes;
}

// Keys and values behind the head line.
inline void WriteRegistry(const std::string& keys) {
    WriteRawRegistry(kRegistryHead + keys);
}

inline std::string ReadRegistry() {
    std::ifstream file(RegistryFilePath(), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// A key opened for a scope; `error` tells what the opening gave.
class TestKey {
  public:
    explicit TestKey(const WCHAR* path, REGSAM access = KEY_READ, HKEY parent = HKEY_LOCAL_MACHINE)
        : error(RegOpenKeyExW(parent, path, 0, access, &key_)) {}
    TestKey(const TestKey&) = delete;
    TestKey& operator=(const TestKey&) = delete;
    ~TestKey() {
        if (error == ERROR_SUCCESS) {
            RegCloseKey(key_);
        }
    }
    HKEY Get() const { return key_; }

  private:
    HKEY key_ = nullptr;

  public:
    const LONG error;  // behind the key: its making sets it
};

// The text of a value, up to its NUL; "error N" without one.
inline std::string TextOf(HKEY key, const WCHAR* name) {
    WCHAR text[1024] = {};
    DWORD size = sizeof text - sizeof *text;
    const LONG error =
        RegQueryValueExW(key, name, nullptr, nullptr, reinterpret_cast<BYTE*>(text), &size);
    return error == ERROR_SUCCESS ? Utf8FromWide(text) : "error " + std::to_string(error);
}

// The same of a key by its path.
inline std::string TextAt(const WCHAR* path, const WCHAR* name, REGSAM access = KEY_READ,
                          HKEY parent = HKEY_LOCAL_MACHINE) {
    const TestKey key(path, access, parent);
    return key.error == ERROR_SUCCESS ? TextOf(key.Get(), name)
                                      : "error " + std::to_string(key.error);
}

inline std::vector<std::string> SubKeysOf(HKEY key) {
    std::vector<std::string> names;
    for (DWORD index = 0;; ++index) {
        WCHAR name[256];
        DWORD length = 256;
        if (RegEnumKeyExW(key, index, name, &length, nullptr, nullptr, nullptr, nullptr) != 0) {
            return names;
        }
        names.push_back(Utf8FromWide({name, length}));
    }
}

// Each test begins without a registry file.
class RegistryMachine : public testing::Test {
  protected:
    void SetUp() override {
        for (const char* suffix : {"", ".lock", ".new"}) {
            std::filesystem::remove_all(RegistryFilePath() + suffix);
        }
    }
};
