#include <algorithm>
#include <charconv>
#include <cstdint>

#include "platform/posix/registry/registry_text.h"
#include "platform/posix/text/host_text.h"
#include "platform/posix/text/unicode.h"
#include "platform/registry.h"

namespace brevik::platform {
namespace {

constexpr std::string_view kHeadOfVersion5 = "Windows Registry Editor Version 5.00";
constexpr std::string_view kHeadOfVersion4 = "REGEDIT4";
constexpr std::string_view kBlanks = " \t";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kUtf16Mark = "\xFF\xFE";
constexpr std::string_view kSwappedUtf16Mark = "\xFE\xFF";

// Thrown at the first fault of a text.
struct Refusal {
    std::size_t line;
    const char* reason;
};

template <typename Unit>
std::size_t LineAt(std::basic_string_view<Unit> text, std::size_t position) {
    const auto lineEnds = std::ranges::count(text.substr(0, position), Unit{'\n'});
    return 1 + static_cast<std::size_t>(lineEnds);
}

template <typename Unit>
void RequireWellFormed(std::basic_string_view<Unit> text, const char* reason) {
    const std::size_t position = FindIllFormed(text);
    if (position != text.npos) {
        throw Refusal{LineAt(text, position), reason};
    }
}

// Reads a text line by line. What it takes, it cuts off the front of `line_`.
//
// REQUIRES: well-formed UTF-8 without a mark and without NULs.
class RegistryTextReader {
  public:
    RegistryTextReader(std::string_view text, RegistryTree* tree) : rest_(text), tree_(tree) {}

    void Read() {
        const bool hasLine = NextLine();
        isNarrow_ = line_ == kHeadOfVersion4;
        if (!hasLine || (!isNarrow_ && line_ != kHeadOfVersion5)) {
            Refuse("the head line is missing");
        }
        while (NextLine()) {
            ReadLine();
        }
    }

  private:
    [[noreturn]] void Refuse(const char* reason) const { throw Refusal{lineNumber_, reason}; }

    void Require(bool condition, const char* reason) const {
        if (!condition) {
            Refuse(reason);
        }
    }

    // False at the end of the text.
    bool NextLine() {
        if (rest_.empty()) {
            return false;
        }
        const std::size_t end = std::min(rest_.find('\n'), rest_.size());
        line_ = rest_.substr(0, end);
        rest_.remove_prefix(std::min(end + 1, rest_.size()));
        ++lineNumber_;
        line_ = line_.substr(0, line_.find_last_not_of(" \t\r") + 1);
        SkipBlanks();
        return true;
    }

    void ReadLine() {
        const char first = line_.empty() ? ';' : line_.front();
        if (first == '[') {
            ReadKey();
        } else if (first == '"' || first == '@') {
            ReadValue();
        } else if (first != ';') {
            Refuse("neither a key nor a value nor a comment");
        } else if (!hasKeys_ && !line_.empty()) {
            tree_->headComments.emplace_back(line_);
        }
    }

    // The last bracket of the line ends the key: a name may hold brackets too.
    void ReadKey() {
        hasKeys_ = true;
        Require(line_.ends_with(']'), "a key without its closing bracket");
        std::string_view text = line_.substr(1, line_.size() - 2);
        const bool isRemoved = text.starts_with('-');
        text.remove_prefix(isRemoved ? 1 : 0);
        std::u16string path;
        if (const char* fault = ParseRegistryPath(WideFromUtf8(text), &path); fault != nullptr) {
            Refuse(fault);
        }
        if (isRemoved) {
            Require(path.find(u'\\') != path.npos, "a root cannot be removed");
            tree_->Remove(path);
            key_ = nullptr;
        } else {
            key_ = tree_->Make(path);
            RequireBounds();
        }
    }

    void RequireBounds() const {
        Require(tree_->CountKeys() + countOfValues_ <= kMostRegistryEntries,
                kTooManyRegistryEntries);
        Require(tree_->LengthOfPaths() <= kLargestRegistryText, kTooLargeRegistryText);
    }

    void ReadValue() {
        Require(key_ != nullptr, "a value without a key");
        RegistryValue value;
        if (!Take("@")) {
            value.name = WideFromUtf8(ReadQuoted());
            Require(IsRegistryValueName(value.name), "the name of a value is too long");
        }
        SkipBlanks();
        Require(Take("="), "a value without its equals sign");
        SkipBlanks();
        const bool isRemoved = Take("-");
        if (!isRemoved) {
            ReadData(&value);
        }
        RequireEnd();
        if (isRemoved) {
            key_->RemoveValue(value.name);
            return;
        }
        key_->SetValue(std::move(value));
        ++countOfValues_;
        RequireBounds();
    }

    void ReadData(RegistryValue* value) {
        if (line_.starts_with('"')) {
            value->type = REG_SZ;
            value->data = BytesOfUtf16(WideFromUtf8(ReadQuoted()) + u'\0');
        } else if (Take("dword:")) {
            value->type = REG_DWORD;
            const std::uint32_t number = ReadHex(8, "no hexadecimal number");
            for (int shift = 0; shift < 32; shift += 8) {
                value->data += static_cast<char>(number >> shift & 0xFF);
            }
        } else {
            Require(Take("hex"), "data of an unknown form");
            ReadHexData(value);
        }
    }

    void ReadHexData(RegistryValue* value) {
        value->type = REG_BINARY;
        if (Take("(")) {
            value->type = ReadHex(8, "no number of a type");
            Require(Take(")"), "no number of a type");
        }
        Require(Take(":"), "data of an unknown form");
        value->data = ReadBytes();
        // In the older form the bytes of a text are UTF-8.
        if (isNarrow_ && value->IsText()) {
            Require(FindIllFormed(std::string_view(value->data)) == std::string::npos,
                    "the bytes of a text are ill-formed UTF-8");
            value->data = BytesOfUtf16(WideFromUtf8(value->data));
        }
    }

    // Numbers of one byte with commas between. A backslash after a comma, or before them all,
    // continues them on the next line.
    std::string ReadBytes() {
        std::string bytes;
        bool needsByte = false;
        for (;;) {
            SkipBlanks();
            if (IsAtEnd()) {
                Require(!needsByte, "a byte is missing");
                return bytes;
            }
            if (Take("\\")) {
                RequireEnd();
                Require(NextLine(), "the text ends within a value");
                needsByte = true;
                continue;
            }
            bytes += static_cast<char>(ReadHex(2, "no hexadecimal byte"));
            SkipBlanks();
            needsByte = Take(",");
            Require(needsByte || IsAtEnd(), "a comma is missing");
        }
    }

    // A text in double quotes; a backslash precedes each backslash and quote inside it.
    std::string ReadQuoted() {
        std::string text;
        line_.remove_prefix(1);
        for (;;) {
            const std::size_t run = std::min(line_.find_first_of("\\\""), line_.size());
            text.append(line_.substr(0, run));
            line_.remove_prefix(run);
            if (Take("\"")) {
                return text;
            }
            Require(Take("\\"), "a text without its closing quote");
            Require(line_.starts_with('\\') || line_.starts_with('"'),
                    "a backslash in front of neither a backslash nor a quote");
            text += line_.front();
            line_.remove_prefix(1);
        }
    }

    void RequireEnd() {
        SkipBlanks();
        Require(IsAtEnd(), "something after the end of a value");
    }

    bool IsAtEnd() const { return line_.empty() || line_.front() == ';'; }

    void SkipBlanks() {
        line_.remove_prefix(std::min(line_.find_first_not_of(kBlanks), line_.size()));
    }

    bool Take(std::string_view word) {
        const bool isThere = line_.starts_with(word);
        line_.remove_prefix(isThere ? word.size() : 0);
        return isThere;
    }

    // A number of at most this many hexadecimal digits.
    std::uint32_t ReadHex(std::size_t mostDigits, const char* reason) {
        const std::size_t digits =
            std::min(line_.find_first_not_of("0123456789abcdefABCDEF"), line_.size());
        Require(digits > 0 && digits <= mostDigits, reason);
        std::uint32_t number = 0;
        std::from_chars(line_.data(), line_.data() + digits, number, 16);
        line_.remove_prefix(digits);
        return number;
    }

    std::string_view rest_;
    std::string_view line_;
    std::size_t lineNumber_ = 0;
    RegistryTree* tree_;
    RegistryKey* key_ = nullptr;  // null before the first key, and after one that was removed
    std::size_t countOfValues_ = 0;
    bool isNarrow_ = false;
    bool hasKeys_ = false;
};

void ReadText(std::string_view text, RegistryTree* tree) {
    if (text.size() > kLargestRegistryText) {
        throw Refusal{0, kTooLargeRegistryText};
    }
    if (text.starts_with(kSwappedUtf16Mark)) {
        throw Refusal{0, "UTF-16 in big-endian order"};
    }
    std::string converted;
    if (text.starts_with(kUtf16Mark)) {
        if (text.size() % 2 != 0) {
            throw Refusal{0, "UTF-16 with half a unit at its end"};
        }
        const std::u16string units = Utf16OfBytes(text.substr(kUtf16Mark.size()));
        RequireWellFormed(std::u16string_view(units), "ill-formed UTF-16");
        converted = Utf8FromWide(units);
        text = converted;
    } else if (text.starts_with(kUtf8Mark)) {
        text.remove_prefix(kUtf8Mark.size());
    }
    RequireWellFormed(text, "ill-formed UTF-8");
    if (const std::size_t position = text.find('\0'); position != text.npos) {
        throw Refusal{LineAt(text, position), "a NUL character"};
    }
    RegistryTextReader(text, tree).Read();
    tree->ListSubKeys();
}

}  // namespace

std::string RegistryFault::Text() const {
    std::string text = file;
    if (line != 0) {
        text += (text.empty() ? "line " : ":") + std::to_string(line);
    }
    return text + (text.empty() ? "" : ": ") + reason;
}

bool MergeRegistryText(std::string_view text, RegistryTree* tree, RegistryFault* fault) {
    try {
        ReadText(text, tree);
        return true;
    } catch (const Refusal& refusal) {
        fault->line = refusal.line;
        fault->reason = refusal.reason;
        return false;
    }
}

}  // namespace brevik::platform
