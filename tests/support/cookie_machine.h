// The cookie file of the test's machine.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "platform/cookie_store.h"
#include "platform/posix/cookies/cookie_file.h"

inline std::string ReadCookieFile() {
    std::ifstream file(CookieFilePath(), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline void WriteCookieFile(const std::string& text) {
    std::ofstream(CookieFilePath(), std::ios::binary | std::ios::trunc) << text;
}

inline std::vector<CookieRow> CookieRows() {
    return CookieFile(ReadCookieFile()).Rows();
}

// What a program is told for the URL; empty without a cookie.
inline std::string VisibleCookies(const char* url) {
    DWORD size = 0;
    if (!InternetGetCookieA(url, nullptr, nullptr, &size)) {
        return {};
    }
    std::string cookies(size, '\0');
    EXPECT_TRUE(InternetGetCookieA(url, nullptr, cookies.data(), &size));
    cookies.resize(size - 1);
    return cookies;
}

// Each test begins with an empty store.
class CookieMachine : public testing::Test {
  protected:
    void SetUp() override {
        for (const char* suffix : {"", ".lock", ".new"}) {
            std::filesystem::remove_all(CookieFilePath() + suffix);
        }
    }
};
