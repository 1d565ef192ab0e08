// The cookie file and the text that a program sets: a store keeps every line that is not
// understood, keeps every hidden cookie, changes nothing when it fails, and leaves a file that
// reads as it was written. The input is the URL, the text and the file, with NULs between.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "platform/posix/cookies/cookie_file.h"

namespace {

constexpr std::int64_t kNow = 1700000000;

void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

std::string_view CutPart(std::string_view* rest) {
    const std::size_t end = std::min(rest->find('\0'), rest->size());
    const std::string_view part = rest->substr(0, end);
    rest->remove_prefix(std::min(end + 1, rest->size()));
    return part;
}

std::vector<std::string> HiddenCookies(const CookieFile& file) {
    std::vector<std::string> hidden;
    for (const CookieRow& row : file.Rows()) {
        if (row.isHttpOnly && !row.IsExpired(kNow)) {
            hidden.push_back(row.domain + '\n' + row.name + '\n' + row.value);
        }
    }
    return hidden;
}

// The lines that are no cookies, one after the other.
std::string Foreign(std::string_view text) {
    std::string foreign;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, std::min(text.find('\n'), text.size()));
        foreign += CookieFile(line).Rows().empty() ? std::string(line) + '\n' : "";
        text.remove_prefix(std::min(line.size() + 1, text.size()));
    }
    return foreign;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view text(reinterpret_cast<const char*>(data), size);
    const std::string_view url = CutPart(&text);
    const std::string_view setText = CutPart(&text);
    CookieUrl parts;
    CookieSetText order;
    CookieFile file(text);
    Require(file.Text() == text);
    if (ParseCookieUrl(url, &parts) != NO_ERROR ||
        ParseCookieSetText(setText, &order) != NO_ERROR) {
        return 0;
    }
    file.CookiesFor(parts, kNow);
    const std::vector<std::string> hidden = HiddenCookies(file);
    if (file.Store(parts, order, kNow) != NO_ERROR) {
        Require(file.Text() == text);
        return 0;
    }
    const std::string after = file.Text();
    const CookieFile again(after);
    Require(again.CookiesFor(parts, kNow) == file.CookiesFor(parts, kNow));
    Require(again.Rows().size() == file.Rows().size());
    Require(HiddenCookies(again) == hidden);
    Require(Foreign(after).ends_with(Foreign(text)));
    return 0;
}
