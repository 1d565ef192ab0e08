// brevikctl cookie.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "support/cookie_machine.h"
#include "support/tool.h"

namespace {

using testing::AllOf;
using testing::HasSubstr;

class BrevikctlCookie : public CookieMachine, protected Tool {
  protected:
    BrevikctlCookie() : Tool({"cookie"}) {}
};

TEST_F(BrevikctlCookie, SetAndGet) {
    OutputOf({"set", "theme", "dark \xC3\xA4"});
    OutputOf({"set", "--domain", "example.test", "--cookie", "c", "--", "k", "-5"});
    EXPECT_EQ(OutputOf({"get", "theme"}), "dark \xC3\xA4\n");
    EXPECT_EQ(OutputOf({"get", "k", "--domain", "example.test", "--cookie", "c"}), "-5\n");
    EXPECT_EQ(VisibleCookies("http://www.ondrel.example"), "qdr_cookie=theme=dark \xC3\xA4");

    EXPECT_THAT(ErrorOf({"get", "them\x1b[31me"}),
                AllOf(HasSubstr("'them\\x1B[31me'"), HasSubstr("brevikctl cookie list --domain")));
    for (const char* value : {"a;b", "", "\xFF"}) {
        ErrorOf({"set", "theme", value});
    }
    EXPECT_EQ(OutputOf({"get", "theme"}), "dark \xC3\xA4\n");
    EXPECT_EQ(RunTool({"get"}).exitCode, 2);
}

TEST_F(BrevikctlCookie, List) {
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
    EXPECT_THAT(ErrorOf({"list"}), HasSubstr("cannot be read: it is no plain file"));
}

TEST_F(BrevikctlCookie, AStoreThatFailsIsNoRefusedValue) {
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{"list"}, {"set", "k", "v"}}) {
        const ChildResult unusable = RunTool(command, {{"BREVIK_MACHINE", "/dev/null/machine"}});
        EXPECT_EQ(unusable.exitCode, 1);
        EXPECT_THAT(unusable.errors,
                    AllOf(HasSubstr("'/dev/null/machine'"), HasSubstr("BREVIK_MACHINE")));
    }
    const auto blamesTheValue = HasSubstr("It may not be empty");
    EXPECT_THAT(ErrorOf({"set", "k", "a;b"}), blamesTheValue);
    EXPECT_THAT(ErrorOf({"set", "--domain", "a/b", "k", "v"}), HasSubstr("is no host name"));

    const std::string hidden = "#HttpOnly_.www.ondrel.example\tTRUE\t/\tFALSE\t0\tqdr_cookie\tx\n";
    WriteCookieFile(hidden);
    EXPECT_THAT(ErrorOf({"set", "k", "v"}), HasSubstr("marked HttpOnly or secure"));
    EXPECT_EQ(ReadCookieFile(), hidden);
    std::filesystem::remove(CookieFilePath());
    std::filesystem::create_directory(CookieFilePath());
    EXPECT_THAT(ErrorOf({"set", "k", "v"}),
                AllOf(HasSubstr("cannot be written"), testing::Not(blamesTheValue)));
}

}  // namespace
