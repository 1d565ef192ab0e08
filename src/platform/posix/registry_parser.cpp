#include <algorithm>
#include <charconv>
#include <cstdint>

#include "platform/posix/host_text.h"
#include "platform/posix/registry_text.h"
#include "platform/posix/unicode.h"
#include "platform/registry.h"

namespace brevik::platform {
namespace {

constexpr std::string_view kHeadOfVersion5 = "Windows Registry Editor Version 5.00";
constexpr std::string_view kHeadOfVersion4 = "REGEDIT4";
constexpr std::string_view kBlanks = " \t";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kUtf16Mark = "\xFF\xFE";
constexpr std::string_view kSwappedUtf16Mark = "\xFE\xFF";

bool IsText(DWORD type) {
    return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ;
}

bool IsWellFormed(std::string_view text) {
    return FindIllFormed(text) == text.npos;
}

// Reads a text line by line. What it takes, it cuts off the front of `line_`.
class RegistryTextReader {
  public:
    RegistryTextReader(std::string_view text, RegistryTree* tree, RegistryFault* fault)
        : rest_(text), tree_(tree), fault_(fault) {}

    bool Read() {
        if (!NextLine() || !ReadHead()) {
            return fault_->reason.empty() ? Fail("the head line is missing") : false;
        }
        while (NextLine()) {
            if (!ReadLine()) {
                return false;
            }
        }
        return fault_->reason.empty();
    }

  private:
    bool Fail(const char* reason) {
        fault_->line = lineNumber_;
        fault_->reason = reason;
        return false;
    }

    // False at the end, and, with the fault set, for a line that is no text.
    bool NextLine() {
        if (rest_.empty()) {
            return false;
        }
        const std::size_t end = std::min(rest_.find('\n'), rest_.size());
        line_ = rest_.substr(0, end);
        rest_.remove_prefix(std::min(end + 1, rest_.size()));
        ++lineNumber_;
        if (line_.find('\0') != line_.npos) {
            return Fail("a NUL character");
        }
        if (!IsWellFormed(line_)) {
            return Fail("ill-formed UTF-8");
        }
        line_ = line_.substr(0, line_.find_last_not_of(" \t\r") + 1);
        SkipBlanks();
        return true;
    }

    bool ReadHead() {
        isNarrow_ = line_ == kHeadOfVersion4;
        return isNarrow_ || line_ == kHeadOfVersion5;
    }

    bool ReadLine() {
        if (line_.empty()) {
            return true;
        }
        switch (line_.front()) {
            case ';':
                if (!hasKeys_) {
                    tree_->HeadComments().emplace_back(line_);
                }
                return true;
            case '[':
                return ReadKey();
            case '"':
            case '@':
                return ReadValue();
            default:
                return Fail("neither a key nor a value nor a comment");
        }
    }

    // The last bracket of the line ends the key: a name may hold brackets too.
    bool ReadKey() {
        hasKeys_ = true;
        if (!line_.ends_with(']')) {
            return Fail("a key without its closing bracket");
        }
        std::string_view text = line_.substr(1, line_.size() - 2);
        const bool isRemoved = text.starts_with('-');
        text.remove_prefix(isRemoved ? 1 : 0);
        RegistryPath path;
        std::string reason;
        if (!ParseRegistryPath(WideFromUtf8(text), &path, &reason)) {
            return Fail(reason.c_str());
        }
        if (isRemoved && path.keys.empty()) {
            return Fail("a root cannot be removed");
        }
        key_ = nullptr;
        if (isRemoved) {
            tree_->Remove(path);
            return true;
        }
        key_ = tree_->Make(path);
        return IsWithinBounds();
    }

    bool IsWithinBounds() {
        return tree_->CountOfMade() + countOfValues_ <= kMostRegistryEntries ||
               Fail(kTooManyRegistryEntries);
    }

    bool ReadValue() {
        RegistryValue value;
        if (key_ == nullptr) {
            return Fail("a value without a key");
        }
        if (!ReadName(&value.name)) {
            return false;
        }
        SkipBlanks();
        if (!Take("=")) {
            return Fail("a value without its equals sign");
        }
        SkipBlanks();
        if (Take("-")) {
            key_->RemoveValue(FoldRegistryName(value.name));
            return ReadEnd();
        }
        if (!ReadData(&value) || !ReadEnd()) {
            return false;
        }
        key_->SetValue(std::move(value));
        ++countOfValues_;
        return IsWithinBounds();
    }

    bool ReadName(std::u16string* name) {
        if (Take("@")) {
            return true;
        }
        std::string text;
        if (!ReadQuoted(&text)) {
            return false;
        }
        *name = WideFromUtf8(text);
        return IsRegistryValueName(*name) || Fail("the name of a value is too long");
    }

    bool ReadData(RegistryValue* value) {
        if (line_.starts_with('"')) {
            std::string text;
            value->type = REG_SZ;
            if (!ReadQuoted(&text)) {
                return false;
            }
            value->data = BytesOfUtf16(WideFromUtf8(text) + u'\0');
            return true;
        }
        if (Take("dword:")) {
            std::uint32_t number = 0;
            if (!TakeHex(8, &number)) {
                return Fail("no hexadecimal number");
            }
            value->type = REG_DWORD;
            for (int shift = 0; shift < 32; shift += 8) {
                value->data += static_cast<char>(number >> shift & 0xFF);
            }
            return true;
        }
        return ReadHexData(value);
    }

    bool ReadHexData(RegistryValue* value) {
        if (!Take("hex")) {
            return Fail("data of an unknown form");
        }
        value->type = REG_BINARY;
        if (Take("(") && !(TakeHex(8, &value->type) && Take(")"))) {
            return Fail("no number of a type");
        }
        if (!Take(":")) {
            return Fail("data of an unknown form");
        }
        return ReadBytes(&value->data) && WidenNarrowText(value);
    }

    // Numbers of one byte with commas between. A backslash behind a comma, or in front of them all,
    // takes them on to the next line.
    bool ReadBytes(std::string* bytes) {
        bool needsByte = false;
        for (;;) {
            SkipBlanks();
            if (IsAtEnd()) {
                return !needsByte || Fail("a byte is missing");
            }
            if (Take("\\")) {
                if (!ReadEnd()) {
                    return false;
                }
                if (!NextLine()) {
                    return fault_->reason.empty() ? Fail("the text ends within a value") : false;
                }
                needsByte = true;
                continue;
            }
            std::uint32_t byte = 0;
            if (!TakeHex(2, &byte)) {
                return Fail("no hexadecimal byte");
            }
            *bytes += static_cast<char>(byte);
            SkipBlanks();
            needsByte = Take(",");
            if (!needsByte) {
                return IsAtEnd() || Fail("a comma is missing");
            }
        }
    }

    // In the older form the bytes of a text are narrow ones.
    bool WidenNarrowText(RegistryValue* value) {
        if (isNarrow_ && IsText(value->type)) {
            if (!IsWellFormed(value->data)) {
                return Fail("the bytes of a text are ill-formed UTF-8");
            }
            value->data = BytesOfUtf16(WideFromUtf8(value->data));
        }
        return true;
    }

    // A text in double quotes; a backslash stands in front of each backslash and quote within.
    bool ReadQuoted(std::string* text) {
        line_.remove_prefix(1);
        for (;;) {
            const std::size_t run = std::min(line_.find_first_of("\\\""), line_.size());
            text->append(line_.substr(0, run));
            line_.remove_prefix(run);
            if (Take("\"")) {
                return true;
            }
            if (line_.empty()) {
                return Fail("a text without its closing quote");
            }
            line_.remove_prefix(1);
            if (!line_.starts_with('\\') && !line_.starts_with('"')) {
                return Fail("a backslash in front of neither a backslash nor a quote");
            }
            *text += line_.front();
            line_.remove_prefix(1);
        }
    }

    bool ReadEnd() {
        SkipBlanks();
        return IsAtEnd() || Fail("something behind the end of a value");
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

    bool TakeHex(std::size_t mostDigits, std::uint32_t* number) {
        const std::string_view digits = line_.substr(
            0, std::min(line_.find_first_not_of("0123456789abcdefABCDEF"), line_.size()));
        if (digits.empty() || digits.size() > mostDigits) {
            return false;
        }
        std::from_chars(digits.data(), digits.data() + digits.size(), *number, 16);
        line_.remove_prefix(digits.size());
        return true;
    }

    std::string_view rest_;
    std::string_view line_;
    std::size_t lineNumber_ = 0;
    RegistryTree* tree_;
    RegistryFault* fault_;
    RegistryKey* key_ = nullptr;  // null behind a key that was removed
    std::size_t countOfValues_ = 0;
    bool isNarrow_ = false;
    bool hasKeys_ = false;
};

bool FailWhole(const char* reason, RegistryFault* fault) {
    fault->line = 0;
    fault->reason = reason;
    return false;
}

// Converts UTF-16 bytes without their mark.
bool NarrowUtf16(std::string_view bytes, std::string* text, RegistryFault* fault) {
    if (bytes.size() % 2 != 0) {
        return FailWhole("UTF-16 with half a unit at its end", fault);
    }
    const std::u16string units = Utf16OfBytes(bytes);
    const std::size_t illFormed = FindIllFormed(std::u16string_view(units));
    if (illFormed != units.npos) {
        const auto end = units.begin() + static_cast<std::ptrdiff_t>(illFormed);
        fault->line = 1 + static_cast<std::size_t>(std::count(units.begin(), end, u'\n'));
        fault->reason = "ill-formed UTF-16";
        return false;
    }
    *text = Utf8FromWide(units);
    return true;
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
    fault->line = 0;
    fault->reason.clear();
    if (text.size() > kLargestRegistryText) {
        return FailWhole(kTooLargeRegistryText, fault);
    }
    if (text.starts_with(kSwappedUtf16Mark)) {
        return FailWhole("UTF-16 in big-endian order", fault);
    }
    std::string converted;
    if (text.starts_with(kUtf16Mark)) {
        if (!NarrowUtf16(text.substr(kUtf16Mark.size()), &converted, fault)) {
            return false;
        }
        text = converted;
    } else if (text.starts_with(kUtf8Mark)) {
        text.remove_prefix(kUtf8Mark.size());
    }
    return RegistryTextReader(text, tree, fault).Read();
}

}  // namespace brevik::platform
