// The library's own language provider.

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/files.h"
#include "platform/never_destroyed.h"
#include "text/StringFile.h"
#include "text/VelmarText.h"

namespace {

constexpr std::array<LanguageInfo, 17> kLanguages = {{
    {"CHS", "Chinese (Simplified)"},
    {"CHT", "Chinese (Traditional)"},
    {"DAN", "Danish"},
    {"NLD", "Dutch"},
    {"ENU", "English"},
    {"FIN", "Finnish"},
    {"FRA", "French"},
    {"DEU", "German"},
    {"ITA", "Italian"},
    {"JPN", "Japanese"},
    {"KOR", "Korean"},
    {"NOR", "Norweigian"},
    {"PTG", "Portuguese"},
    {"PTB", "Portuguese (Brazil)"},
    {"ESN", "Spanish"},
    {"SVE", "Swedish"},
    {"ENU", "Default (Embedded English)"},
}};

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using ScopedFile = std::unique_ptr<std::FILE, CloseFile>;

ScopedFile OpenForReading(const WideString& path) {
    return ScopedFile(IsWin9x() ? std::fopen(WideToNarrow(path).c_str(), "rb")
                                : _wfopen(path.c_str(), WIDE("rb")));
}

std::optional<std::string> ReadWholeFile(const WideString& path) {
    const ScopedFile file = OpenForReading(path);
    if (file == nullptr) {
        return std::nullopt;
    }
    std::string bytes;
    char block[4096];
    for (std::size_t count; (count = std::fread(block, 1, sizeof block, file.get())) > 0;) {
        bytes.append(block, count);
    }
    return bytes;
}

}  // namespace

VelmarText::LanguageImpl& VelmarText::LanguageImpl::Instance() {
    static NeverDestroyed<LanguageImpl> instance;
    return *instance;
}

const LanguageInfo* VelmarText::LanguageImpl::GetLanguageInfo(int index) {
    const auto row = static_cast<std::size_t>(index);
    return row < kLanguages.size() ? &kLanguages[row] : nullptr;
}

Utf8String VelmarText::LanguageImpl::GetString(long id) {
    const auto found = strings_.find(id);
    return found != strings_.end() ? found->second : Utf8String();
}

void VelmarText::LanguageImpl::LoadLanguage(int index, const Utf8String& folder) {
    if (index == language_) {
        return;
    }
    strings_.clear();
    language_ = kEmbeddedEnglish;
    const LanguageInfo* row = GetLanguageInfo(index);
    if (row == nullptr || index == kEmbeddedEnglish) {
        return;
    }
    const WideString path =
        Utf8ToWide(folder) + WIDE("\\") + NarrowToWide(std::string(row->code) + ".txt");
    const std::optional<std::string> bytes = ReadWholeFile(path);
    if (bytes) {
        strings_ = ParseStringFile(DecodeStringFile(*bytes));
        language_ = index;
    }
}
