#include <unistd.h>

#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

#include "brevikconfig.h"
#include "brevikctl/commands/command.h"
#include "brevikctl/commands/commands.h"
#include "brevikctl/output/facts.h"
#include "brevikctl/output/terminal.h"
#include "brevikctl/output/text_table.h"
#include "brevikctl/output/time_text.h"
#include "brevikctl/output/trouble.h"
#include "cookies/CookieValues.h"
#include "platform/posix/base/shared_text_file.h"
#include "platform/posix/cookies/cookie_file.h"
#include "platform/posix/machine/machine.h"
#include "platform/posix/text/host_text.h"

namespace {

struct Options {
    std::string domain = CookieValues::kSuiteDomain;
    std::string cookie = CookieValues::kSuiteCookie;
    std::string key;
    std::string value;
};

struct ListOptions {
    std::string domain;
    bool json = false;
};

// The library answers this where there is no value.
constexpr const char* kMissing = "-1";

std::string Place(const Options& options) {
    return "in the cookie " + Quoted(options.cookie) + " of " + Quoted(options.domain);
}

void Get(const Options& options) {
    bvkc_wchar* block = nullptr;
    const std::int32_t result = bvkc_VCM_ReadCookieValue(WideArgument(options.domain).c_str(),
                                                         WideArgument(options.cookie).c_str(),
                                                         WideArgument(options.key).c_str(), &block);
    const std::string value = block == nullptr ? "" : Utf8FromWide(block);
    ::CoTaskMemFree(block);
    if (result != 0) {
        Fail("reading " + Place(options) + " failed with result " + std::to_string(result) +
             "; brevikctl trace shows why");
    }
    if (value == kMissing) {
        Fail("no value " + Quoted(options.key) + " " + Place(options),
             "Try: brevikctl cookie list --domain " + SafeText(options.domain));
    }
    PrintLine(value);
}

// Throws where the machine has no place for the user's cookies.
std::string StorePath() {
    const std::string path = CookieFilePath();
    if (path.empty()) {
        const std::string folder = Quoted(Machine::Current().Folder());
        Fail("the machine folder " + folder +
                 " has no place for your cookies: its folder users/LOGIN is missing and cannot be "
                 "made",
             "Let yourself write to " + folder + ", or name another folder in BREVIK_MACHINE.");
    }
    return path;
}

std::string Reason(DWORD error, const std::string& path) {
    switch (error) {
        case ERROR_ACCESS_DENIED:
            return "it is no plain file, or not yours to use; see ls -l " + Quoted(path);
        case ERROR_INVALID_DATA:
            return "it is larger than 64 MiB";
        case ERROR_SHARING_VIOLATION:
            return "another program holds " + Quoted(path + ".lock") + "; see fuser on it";
        default:
            return "error " + std::to_string(error);
    }
}

// Why the store takes no cookie of the name and domain, whatever its value; empty where it does.
std::string StoreTrouble(const Options& options) {
    const std::string path = StorePath();
    CookieUrl url;
    CookieSetText order;
    order.domain = LowerAscii(options.domain);
    order.name = options.cookie;
    DWORD answer = ParseCookieUrl("http://" + options.domain, &url);
    const auto tryOut = [&](std::string* text) {
        answer =
            answer != NO_ERROR ? answer : CookieFile(*text).Store(url, order, std::time(nullptr));
        return DWORD{NO_ERROR};
    };
    if (const DWORD error = SharedTextFile(path).Update(tryOut); error != NO_ERROR) {
        return "the cookie store " + Quoted(path) + " cannot be written: " + Reason(error, path);
    }
    const std::filesystem::path folder = std::filesystem::weakly_canonical(path).parent_path();
    if (access(folder.c_str(), W_OK) != 0) {
        return "the folder " + Quoted(folder.string()) + " of the cookie store is not writable";
    }
    if (answer == ERROR_ACCESS_DENIED) {
        return "this cookie is marked HttpOnly or secure: its web server alone may change it";
    }
    return answer == NO_ERROR ? "" : Quoted(options.domain) + " is no host name";
}

void Set(const Options& options) {
    const std::int32_t result = bvkc_VCM_WriteCookieValue(
        WideArgument(options.domain).c_str(), WideArgument(options.cookie).c_str(),
        WideArgument(options.key).c_str(), WideArgument(options.value).c_str());
    if (result == 0) {
        return;
    }
    std::string hint = StoreTrouble(options);
    if (hint.empty()) {
        hint =
            "It may not be empty nor hold '&', ';' or a control character; a key may not hold '='.";
    }
    Fail("the value " + Quoted(options.key) + " was not stored " + Place(options),
         hint + "\nbrevikctl trace in another window shows more.");
}

std::string ExpiryText(std::int64_t seconds) {
    const std::string text = TimeText(seconds, gmtime_r, "%FT%TZ");
    return text.empty() ? "never" : text;
}

std::string Flags(const CookieRow& row) {
    std::string flags = row.includesSubdomains ? "" : "host-only ";
    flags += row.isSecure ? "secure " : "";
    flags += row.isHttpOnly ? "httponly " : "";
    flags += row.IsExpired(std::time(nullptr)) ? "expired " : "";
    return flags.empty() ? "-" : flags.substr(0, flags.size() - 1);
}

void PrintCookies(const std::vector<CookieRow>& rows) {
    TextTable table = {{"DOMAIN", "PATH", "FLAGS", "EXPIRES", "NAME", "VALUE"}};
    for (const CookieRow& row : rows) {
        table.push_back({row.domain, row.path, Flags(row),
                         row.expires == 0 ? "session" : ExpiryText(row.expires), row.name,
                         row.isHttpOnly ? "(hidden)" : row.value});
    }
    PrintTable(table);
}

Facts FactsOf(const CookieRow& row) {
    return {{"domain", row.domain},
            {"includesSubdomains", row.includesSubdomains},
            {"path", row.path},
            {"secure", row.isSecure},
            {"httpOnly", row.isHttpOnly},
            row.expires == 0 ? Fact::OfJson("expires", "null") : Fact("expires", row.expires),
            {"name", row.name},
            row.isHttpOnly ? Fact::OfJson("value", "null") : Fact("value", row.value)};
}

void List(const ListOptions& options) {
    const std::string path = StorePath();
    std::string text;
    if (const DWORD error = SharedTextFile(path).Read(&text); error != NO_ERROR) {
        Fail("the cookie store " + Quoted(path) + " cannot be read: " + Reason(error, path));
    }
    std::vector<CookieRow> rows = CookieFile(text).Rows();
    const std::string host = LowerAscii(options.domain);
    std::erase_if(rows, [&host](const CookieRow& row) {
        return !host.empty() &&
               !(row.includesSubdomains ? IsHostWithin(host, row.domain) : host == row.domain);
    });
    if (options.json) {
        for (const CookieRow& row : rows) {
            PrintFacts(FactsOf(row), true);
        }
    } else if (!rows.empty()) {
        PrintCookies(rows);
    } else {
        Say("no cookies in " + SafeText(path));
    }
}

void AddPlace(Command<Options>& command) {
    command.Add("--domain", &Options::domain, "Host name of the cookie")->capture_default_str();
    command.Add("--cookie", &Options::cookie, "Name of the cookie")->capture_default_str();
    command.Required("KEY", &Options::key, "Name of the value in the cookie");
}

}  // namespace

void AddCookieCommands(CLI::App& app) {
    CLI::App& cookie = AddGroup(app, "cookie", "Values in the user's web cookies");
    Command get(cookie, "get", "Print a value", Get);
    AddPlace(get);
    Command set(cookie, "set", "Store a value for half a year", Set);
    AddPlace(set);
    set.Required("VALUE", &Options::value, "The value; after -- where it begins with a dash");
    Command(cookie, "list", "Show the cookies of the store", List)
        .Option("--domain", &ListOptions::domain, "Only those that are sent to this host")
        .Json("One JSON object a line");
}
