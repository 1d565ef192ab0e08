#include "platform/posix/cookies/cookie_file.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <utility>

#include "platform/posix/machine/machine.h"

namespace brevik::platform {
namespace {

// Some programs refuse a file that does not begin so.
constexpr std::string_view kHeader = "# Netscape HTTP Cookie File\n";
constexpr std::string_view kHttpOnlyPrefix = "#HttpOnly_";

using Fields = std::array<std::string_view, 7>;

// The fields of a line; a line that ends after the name has an empty value. False for any other
// number of fields.
bool SplitFields(std::string_view line, Fields* fields) {
    std::size_t count = 0;
    for (std::size_t begin = 0; begin <= line.size(); ++count) {
        if (count == fields->size()) {
            return false;
        }
        const std::size_t end = std::min(line.find('\t', begin), line.size());
        (*fields)[count] = line.substr(begin, end - begin);
        begin = end + 1;
    }
    return count + 1 >= fields->size();
}

std::optional<bool> ParseFlag(std::string_view text) {
    const std::string lower = LowerAscii(text);
    if (lower == "true" || lower == "false") {
        return lower == "true";
    }
    return {};
}

// Whole seconds; a fraction is cut off, a number too large is far away, and no number is a session.
std::optional<std::int64_t> ParseExpiry(std::string_view text) {
    if (text.empty()) {
        return std::int64_t{0};
    }
    std::int64_t seconds = 0;
    const char* const textEnd = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), textEnd, seconds);
    if (error == std::errc::invalid_argument || (end != textEnd && *end != '.')) {
        return {};
    }
    if (error == std::errc::result_out_of_range) {
        return text.front() == '-' ? -1 : std::numeric_limits<std::int64_t>::max();
    }
    return seconds;
}

// Whether a cookie comes out of "name=value; name=value" as it went in.
bool CanBeShown(const CookieRow& row) {
    return !row.name.empty() && row.name.front() != ' ' &&
           row.name.find_first_of("=;") == std::string::npos &&
           row.value.find(';') == std::string::npos &&
           std::ranges::none_of(row.name, IsControlCharacter) &&
           std::ranges::none_of(row.value, IsControlCharacter);
}

std::optional<CookieRow> ParseRow(std::string_view line) {
    if (line.ends_with('\n')) {
        line.remove_suffix(1);
    }
    if (line.ends_with('\r')) {
        line.remove_suffix(1);
    }
    CookieRow row;
    row.isHttpOnly = line.starts_with(kHttpOnlyPrefix);
    line.remove_prefix(row.isHttpOnly ? kHttpOnlyPrefix.size() : 0);
    Fields fields;
    if (line.starts_with('#') || !SplitFields(line, &fields)) {
        return {};
    }
    const std::optional<bool> subdomains = ParseFlag(fields[1]);
    const std::optional<bool> secure = ParseFlag(fields[3]);
    const std::optional<std::int64_t> expires = ParseExpiry(fields[4]);
    row.domain = LowerAscii(fields[0].substr(fields[0].starts_with('.') ? 1 : 0));
    if (row.domain.empty() || !subdomains || !secure || !expires) {
        return {};
    }
    row.includesSubdomains = *subdomains;
    row.path = fields[2].empty() ? "/" : fields[2];
    row.isSecure = *secure;
    row.expires = *expires;
    row.name = fields[5];
    row.value = fields[6];
    return CanBeShown(row) ? std::optional(std::move(row)) : std::nullopt;
}

// A cookie for subdomains has a dot before its domain: some programs insist on it.
std::string FormatRow(const CookieRow& row) {
    const auto flag = [](bool value) { return value ? "\tTRUE\t" : "\tFALSE\t"; };
    std::string line(row.isHttpOnly ? kHttpOnlyPrefix : "");
    line += row.includesSubdomains ? "." : "";
    line += row.domain + flag(row.includesSubdomains) + row.path + flag(row.isSecure);
    return line + std::to_string(row.expires) + '\t' + row.name + '\t' + row.value + '\n';
}

// Whether a program that asks for the URL may see the cookie.
bool IsVisible(const CookieRow& row, const CookieUrl& url, std::int64_t now) {
    return !row.isHttpOnly && !row.isSecure && !row.IsExpired(now) &&
           (row.includesSubdomains ? IsHostWithin(url.host, row.domain) : url.host == row.domain) &&
           IsPathWithin(url.path, row.path);
}

bool IsProtected(const CookieRow& row, std::int64_t now) {
    return !row.IsExpired(now) && (row.isHttpOnly || row.isSecure);
}

// Whether a cookie of this domain may be stored for the host: one for a single label would be sent
// to all the world.
bool CanBeStored(const std::string& domain, const std::string& host) {
    return domain == host || (IsHostWithin(host, domain) && domain.find('.') != std::string::npos);
}

CookieRow NewRow(const CookieUrl& url, const CookieSetText& order) {
    CookieRow row;
    row.domain = order.domain.empty() ? url.host : order.domain;
    row.includesSubdomains = !IsIpAddress(row.domain);
    row.expires = order.expires.value_or(0);
    row.name = order.name;
    row.value = order.body;
    return row;
}

}  // namespace

CookieFile::CookieFile(std::string_view text) {
    while (!text.empty()) {
        const std::size_t newline = text.find('\n');
        const std::string_view line =
            text.substr(0, newline == text.npos ? text.size() : newline + 1);
        lines_.push_back({std::string(line), ParseRow(line)});
        text.remove_prefix(line.size());
    }
}

std::string CookieFile::Text() const {
    std::string text;
    for (const Line& line : lines_) {
        text += line.text;
    }
    return text;
}

std::string CookieFile::CookiesFor(const CookieUrl& url, std::int64_t now) const {
    std::string cookies;
    for (const Line& line : lines_) {
        if (line.row && IsVisible(*line.row, url, now)) {
            cookies += cookies.empty() ? "" : "; ";
            cookies += line.row->name + '=' + line.row->value;
        }
    }
    return cookies;
}

DWORD CookieFile::Store(const CookieUrl& url, const CookieSetText& order, std::int64_t now) {
    if (!order.domain.empty() && !CanBeStored(order.domain, url.host)) {
        return ERROR_INVALID_PARAMETER;
    }
    const CookieRow row = NewRow(url, order);
    const auto isReplaced = [&row](const Line& line) {
        return line.row && line.row->name == row.name && line.row->domain == row.domain &&
               line.row->path == row.path;
    };
    if (std::ranges::any_of(lines_, [&](const Line& line) {
            return isReplaced(line) && IsProtected(*line.row, now);
        })) {
        return ERROR_ACCESS_DENIED;
    }
    std::erase_if(lines_, isReplaced);
    if (!order.expires || *order.expires > now) {
        Append(row);
    }
    return NO_ERROR;
}

void CookieFile::Append(const CookieRow& row) {
    if (lines_.empty()) {
        lines_.push_back({std::string(kHeader), {}});
    } else if (!lines_.back().text.ends_with('\n')) {
        lines_.back().text += '\n';
    }
    lines_.push_back({FormatRow(row), row});
}

std::vector<CookieRow> CookieFile::Rows() const {
    std::vector<CookieRow> rows;
    for (const Line& line : lines_) {
        if (line.row) {
            rows.push_back(*line.row);
        }
    }
    return rows;
}

std::string CookieFilePath() {
    const std::string folder = Machine::Current().UserFolder();
    return folder.empty() ? std::string() : folder + "/cookies.txt";
}

}  // namespace brevik::platform
