#include "http_client/settings.h"

#include <dlfcn.h>

#include <charconv>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string_view>

namespace HttpClient {
namespace {

constexpr long long kLongestDelay = 3'600'000;

struct AnswerName {
    std::string_view name;
    Answer Settings::*answer;
};
constexpr AnswerName kAnswers[] = {
    {"CreateInstance", &Settings::createInstance},
    {"RunUpdate", &Settings::runUpdate},
    {"CheckUpdateOrMessage", &Settings::checkUpdateOrMessage},
    {"RunUpdateInBackground", &Settings::runUpdateInBackground},
    {"SetLocale", &Settings::setLocale},
    {"SetParameter", &Settings::setParameter},
    {"GetProfileID", &Settings::getProfileId},
};

std::string_view Trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// A decimal number, with a minus sign where it is negative, or a hexadecimal one after
// "0x".
std::optional<long long> Number(std::string_view text) {
    const bool isHexadecimal = text.starts_with("0x") || text.starts_with("0X");
    const std::string_view digits = isHexadecimal ? text.substr(2) : text;
    long long number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number,
                                              isHexadecimal ? 16 : 10);
    const bool isWhole = error == std::errc() && end == digits.data() + digits.size();
    return isWhole ? std::optional(number) : std::nullopt;
}

bool SetAnswer(Answer& answer, std::string_view value) {
    if (value == "throw") {
        answer.throws = true;
        return true;
    }
    const std::optional<long long> number = Number(value);
    if (!number || *number < INT32_MIN || *number > UINT32_MAX) {
        return false;
    }
    answer = {static_cast<HRESULT>(*number), false};
    return true;
}

// Without quotes around it the text is the trimmed one, and an empty one is no text.
void SetProfile(Settings& settings, std::string_view value) {
    const bool isQuoted = value.size() >= 2 && value.front() == '"' && value.back() == '"';
    settings.profile.reset();
    if (isQuoted) {
        settings.profile = value.substr(1, value.size() - 2);
    } else if (!value.empty()) {
        settings.profile = value;
    }
}

bool Set(Settings& settings, std::string_view name, std::string_view value) {
    for (const AnswerName& answer : kAnswers) {
        if (answer.name == name) {
            return SetAnswer(settings.*answer.answer, value);
        }
    }
    if (name == "profile") {
        SetProfile(settings, value);
        return true;
    }
    const std::optional<long long> number = Number(value);
    if (name == "available" && number && *number >= INT16_MIN && *number <= UINT16_MAX) {
        settings.available = static_cast<VARIANT_BOOL>(*number);
        return true;
    }
    if (name == "delay" && number && *number >= 0 && *number <= kLongestDelay) {
        settings.delay = std::chrono::milliseconds(*number);
        return true;
    }
    return false;
}

}  // namespace

Settings ParseSettings(const std::string& text, std::vector<int>* misread) {
    Settings settings;
    std::istringstream lines(text);
    int number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        const std::string_view content = Trimmed(line);
        if (content.empty() || content.front() == '#') {
            continue;
        }
        const std::size_t sign = content.find('=');
        if (sign == std::string_view::npos ||
            !Set(settings, Trimmed(content.substr(0, sign)), Trimmed(content.substr(sign + 1)))) {
            misread->push_back(number);
        }
    }
    return settings;
}

std::string PathBeside(const char* extension) {
    static const char here = 0;
    Dl_info info = {};
    if (dladdr(&here, &info) == 0 || info.dli_fname == nullptr) {
        return {};
    }
    const std::string library = info.dli_fname;
    return library.substr(0, library.rfind('.')) + extension;
}

Settings ReadSettings(std::vector<int>* misread) {
    std::ifstream file(PathBeside(".settings"), std::ios::binary);
    return ParseSettings({std::istreambuf_iterator<char>(file), {}}, misread);
}

}  // namespace HttpClient
