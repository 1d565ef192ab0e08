#include "cookie.h"

#include <unistd.h>

#include <cstdio>
#include <ctime>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "brevikconfig.h"
#include "cookies/CookieValues.h"
#include "platform/posix/cookie_file.h"
#include "platform/posix/host_text.h"
#include "platform/posix/machine.h"
#include "platform/posix/shared_text_file.h"
#include "terminal.h"
#include "text_argument.h"
#include "text_table.h"

namespace {

struct Options {
    std::string domain;
    std::string cookie = CookieValues::kSuiteCookie;
    std::string key;
    std::string value;
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
    CoTaskMemFree(block);
    if (result != 0) {
        throw std::runtime_error("reading " + Place(options) + " failed with result " +
                                 std::to_string(result) + "; brevikctl trace shows why");
    }
    if (value == kMissing) {
        throw std::runtime_error("no value " + Quoted(options.key) + " " + Place(options) +
                                 "\nTry: brevikctl cookie list --domain " +
                                 SafeText(options.domain));
    }
    PrintLine(value);
}

// Throws where the machine has no place for the user's cookies.
std::string StorePath() {
    const std::string path = CookieFilePath();
    if (path.empty()) {
        const std::string folder = Quoted(Machine::Current().Folder());
        throw std::runtime_error("the machine folder " + folder +
                                 " has no place for your cookies: its folder users/LOGIN "
                                 "is missing and cannot be made"
                                 "\nLet yourself write to " +
                                 folder + ", or name another folder in BREVIK_MACHINE.");
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
    throw std::runtime_error("the value " + Quoted(options.key) + " was not stored " +
                             Place(options) + "\n" + hint +
                             "\nbrevikctl trace in another window shows more.");
}

std::string Time(std::int64_t seconds) {
    const std::time_t time = seconds;
    std::tm date;
    char text[64];
    if (gmtime_r(&time, &date) == nullptr ||
        std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &date) == 0) {
        return "never";
    }
    return text;
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
                         row.expires == 0 ? "session" : Time(row.expires), row.name,
                         row.isHttpOnly ? "(hidden)" : row.value});
    }
    PrintTable(table);
}

std::string ToJson(const CookieRow& row) {
    const auto flag = [](bool value) { return value ? "true" : "false"; };
    std::string json = "{\"domain\":" + JsonString(row.domain);
    json += std::string(",\"includesSubdomains\":") + flag(row.includesSubdomains);
    json += ",\"path\":" + JsonString(row.path);
    json += std::string(",\"secure\":") + flag(row.isSecure);
    json += std::string(",\"httpOnly\":") + flag(row.isHttpOnly);
    json += ",\"expires\":" + (row.expires == 0 ? "null" : std::to_string(row.expires));
    json += ",\"name\":" + JsonString(row.name);
    json += ",\"value\":" + (row.isHttpOnly ? "null" : JsonString(row.value));
    return json + "}";
}

void List(const Options& options) {
    const std::string path = StorePath();
    std::string text;
    if (const DWORD error = SharedTextFile(path).Read(&text); error != NO_ERROR) {
        throw std::runtime_error("the cookie store " + Quoted(path) +
                                 " cannot be read: " + Reason(error, path));
    }
    std::vector<CookieRow> rows = CookieFile(text).Rows();
    const std::string host = LowerAscii(options.domain);
    std::erase_if(rows, [&host](const CookieRow& row) {
        return !host.empty() &&
               !(row.includesSubdomains ? IsHostWithin(host, row.domain) : host == row.domain);
    });
    if (options.json) {
        for (const CookieRow& row : rows) {
            std::printf("%s\n", ToJson(row).c_str());
        }
    } else if (!rows.empty()) {
        PrintCookies(rows);
    } else {
        std::fprintf(stderr, "brevikctl: no cookies in %s\n", SafeText(path).c_str());
    }
}

// Adds a command with options of its own.
CLI::App* AddCommand(CLI::App* parent, const char* name, const char* description,
                     void (*run)(const Options&), const std::shared_ptr<Options>& options) {
    CLI::App* command = parent->add_subcommand(name, description);
    command->callback([run, options] { run(*options); });
    return command;
}

void AddValueOptions(CLI::App* command, const std::shared_ptr<Options>& options) {
    options->domain = CookieValues::kSuiteDomain;
    command->add_option("--domain", options->domain, "Host name of the cookie")
        ->capture_default_str();
    command->add_option("--cookie", options->cookie, "Name of the cookie")->capture_default_str();
    command->add_option("KEY", options->key, "Name of the value in the cookie")->required();
}

}  // namespace

void AddCookieCommands(CLI::App& app) {
    CLI::App* cookie = app.add_subcommand("cookie", "Values in the user's web cookies");
    cookie->require_subcommand(1);

    const auto get = std::make_shared<Options>();
    AddValueOptions(AddCommand(cookie, "get", "Print a value", Get, get), get);

    const auto set = std::make_shared<Options>();
    CLI::App* setCommand = AddCommand(cookie, "set", "Store a value for half a year", Set, set);
    AddValueOptions(setCommand, set);
    setCommand->add_option("VALUE", set->value, "The value; behind -- where it begins with a dash")
        ->required();

    const auto list = std::make_shared<Options>();
    CLI::App* listCommand = AddCommand(cookie, "list", "Show the cookies of the store", List, list);
    listCommand->add_option("--domain", list->domain, "Only those that are sent to this host");
    listCommand->add_flag("--json", list->json, "One JSON object a line");
}
