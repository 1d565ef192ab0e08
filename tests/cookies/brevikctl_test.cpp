// brevikctl cookie.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "support/child_process.h"
#include "support/cookie_machine.h"

namespace {

class CookieCommand : public CookieMachine {};

ChildResult RunTool(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {BREVIK_TEST_TOOL, "cookie"});
    return RunChild(arguments);
}

TEST_F(CookieCommand, SetAndGet) {
    EXPECT_EQ(RunTool({"set", "theme", "dark \xC3\xA4"}).exitCode, 0);
    EXPECT_EQ(
        RunTool({"set", "--domain", "example.test", "--cookie", "c", "--", "k", "-5"}).exitCode, 0);
    EXPECT_EQ(RunTool({"get", "theme"}).output, "dark \xC3\xA4\n");
    EXPECT_EQ(RunTool({"get", "k", "--domain", "example.test", "--cookie", "c"}).output, "-5\n");
    EXPECT_EQ(VisibleCookies("http://www.ondrel.example"), "qdr_cookie=theme=dark \xC3\xA4");

    const ChildResult missing = RunTool({"get", "them\x1b[31me"});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_EQ(missing.output, "");
    EXPECT_THAT(missing.errors,
                testing::AllOf(testing::HasSubstr("'them\\x1B[31me'"),
                               testing::HasSubstr("brevikctl cookie list --domain")));
    for (const char* value : {"a;b", "", "\xFF"}) {
        const ChildResult refused = RunTool({"set", "theme", value});
        EXPECT_EQ(refused.exitCode, 1);
        EXPECT_THAT(refused.errors, testing::StartsWith("brevikctl: ")) << value;
    }
    EXPECT_EQ(RunTool({"get", "theme"}).output, "dark \xC3\xA4\n");
    EXPECT_EQ(RunTool({"get"}).exitCode, 2);
}

TEST_F(CookieCommand, List) {
    EXPECT_EQ(RunTool({"list"}).output, "");
    WriteCookieFile(
        ".example.test\tTRUE\t/\tTRUE\t1962090425\ta\t\xC2\x9B\xFF\"\n"
        "#HttpOnly_www.example.test\tFALSE\t/p\tFALSE\t0\tlogin\tsecret\n"
        "other.test\tFALSE\t/\tFALSE\t5\told\t1\n");
    EXPECT_EQ(RunTool({"list"}).output,
              "DOMAIN            PATH  FLAGS               EXPIRES               NAME   VALUE\n"
              "example.test      /     secure              2032-03-05T09:07:05Z  a      "
              "\\u009B\xEF\xBF\xBD\"\n"
              "www.example.test  /p    host-only httponly  session               login  (hidden)\n"
              "other.test        /     host-only expired   1970-01-01T00:00:05Z  old    1\n");
    EXPECT_EQ(RunTool({"list", "--json", "--domain", "WWW.example.test"}).output,
              "{\"domain\":\"example.test\",\"includesSubdomains\":true,\"path\":\"/\","
              "\"secure\":true,\"httpOnly\":false,\"expires\":1962090425,\"name\":\"a\","
              "\"value\":\"\\u009b\xEF\xBF\xBD\\\"\"}\n"
              "{\"domain\":\"www.example.test\",\"includesSubdomains\":false,\"path\":\"/p\","
              "\"secure\":false,\"httpOnly\":true,\"expires\":null,\"name\":\"login\","
              "\"value\":null}\n");
    std::filesystem::remove(CookieFilePath());
    std::filesystem::create_directory(CookieFilePath());
    const ChildResult unreadable = RunTool({"list"});
    EXPECT_EQ(unreadable.exitCode, 1);
    EXPECT_THAT(unreadable.errors, testing::HasSubstr("cannot be read: it is no plain file"));
}

TEST_F(CookieCommand, AStoreThatFailsIsToldApartFromARefusedValue) {
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{BREVIK_TEST_TOOL, "cookie", "list"},
          {BREVIK_TEST_TOOL, "cookie", "set", "k", "v"}}) {
        const ChildResult unusable = RunChild(command, {{"BREVIK_MACHINE", "/dev/null/machine"}});
        EXPECT_EQ(unusable.exitCode, 1);
        EXPECT_THAT(unusable.errors, testing::AllOf(testing::HasSubstr("'/dev/null/machine'"),
                                                    testing::HasSubstr("BREVIK_MACHINE")));
    }
    const auto errors = [](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "set");
        return RunTool(arguments).errors;
    };
    const auto blamesTheValue = testing::HasSubstr("It may not be empty");
    EXPECT_THAT(errors({"k", "a;b"}), blamesTheValue);
    EXPECT_THAT(errors({"--domain", "a/b", "k", "v"}), testing::HasSubstr("is no host name"));

    const std::string hidden = "#HttpOnly_.www.ondrel.example\tTRUE\t/\tFALSE\t0\tqdr_cookie\tx\n";
    WriteCookieFile(hidden);
    EXPECT_THAT(errors({"k", "v"}), testing::HasSubstr("marked HttpOnly or secure"));
    EXPECT_EQ(ReadCookieFile(), hidden);
    std::filesystem::remove(CookieFilePath());
    std::filesystem::create_directory(CookieFilePath());
    EXPECT_THAT(errors({"k", "v"}), testing::AllOf(testing::HasSubstr("cannot be written"),
                                                   testing::Not(blamesTheValue)));
}

}  // namespace
