#include "platform/posix/files/shortcut_file.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "platform/posix/text/host_text.h"

namespace brevik::platform {
namespace {

constexpr std::size_t kHeaderSize = 0x4C;

// The size of the header, and the number of the class that reads the file.
constexpr std::string_view kSignature("\x4C\0\0\0\x01\x14\x02\0\0\0\0\0\xC0\0\0\0\0\0\0\x46", 20);

// What follows the header, in this order.
constexpr std::uint32_t kHasItemList = 0x1;
constexpr std::uint32_t kHasLinkInfo = 0x2;
constexpr std::uint32_t kHasName = 0x4;
constexpr std::uint32_t kHasRelativePath = 0x8;
constexpr std::uint32_t kHasWorkingFolder = 0x10;

constexpr std::uint32_t kIsWide = 0x80;
constexpr std::uint32_t kIgnoreLinkInfo = 0x100;

// Places in the link information and in the part of it about the share.
constexpr std::size_t kLinkInfoSize = 0x1C;
constexpr std::size_t kWideLinkInfoSize = 0x24;
constexpr std::size_t kShareSize = 0x14;
constexpr std::uint32_t kHasLocalPath = 0x1;
constexpr std::uint32_t kHasShare = 0x2;

// Bytes 0x80 to 0x9F of the narrow code page that most of these files were written under.
constexpr char16_t kWestern[] =
    u"\u20AC\u0081\u201A\u0192\u201E\u2026\u2020\u2021\u02C6\u2030\u0160\u2039\u0152\u008D\u017D"
    u"\u008F\u0090\u2018\u2019\u201C\u201D\u2022\u2013\u2014\u02DC\u2122\u0161\u203A\u0153\u009D"
    u"\u017E\u0178";

// Nothing in the file names the code page of a narrow text: UTF-8 where it can be that.
std::u16string DecodeNarrow(std::string_view text) {
    std::u16string wide = WideFromUtf8(text);
    if (Utf8FromWide(wide) == text) {
        return wide;
    }
    wide.resize(text.size());
    std::transform(text.begin(), text.end(), wide.begin(), [](char byte) {
        const auto unit = static_cast<unsigned char>(byte);
        return unit >= 0x80 && unit < 0xA0 ? kWestern[unit - 0x80] : static_cast<char16_t>(unit);
    });
    return wide;
}

// Bytes with places in them. What lies beyond their end reads as zeros and empty texts, and marks
// the block as broken.
class Block {
  public:
    explicit Block(std::string_view bytes) : bytes_(bytes) {}

    bool IsBroken() const { return broken_; }

    std::string_view Part(std::size_t place, std::size_t size) {
        if (place > bytes_.size() || size > bytes_.size() - place) {
            broken_ = true;
            return {};
        }
        return bytes_.substr(place, size);
    }

    std::uint32_t Word(std::size_t place) { return NumberOfBytes(Part(place, 2)); }
    std::uint32_t DoubleWord(std::size_t place) { return NumberOfBytes(Part(place, 4)); }

    // The text at a place, which ends in a NUL.
    std::u16string NarrowText(std::size_t place) {
        const std::size_t end = bytes_.find('\0', place);
        return DecodeNarrow(Part(place, end == bytes_.npos ? end : end - place));
    }
    std::u16string WideText(std::size_t place) {
        std::size_t end = place;
        while (!broken_ && Word(end) != 0) {
            end += 2;
        }
        return broken_ ? std::u16string() : Utf16OfBytes(Part(place, end - place));
    }

    // A text that may be there in two forms, each by its place. The wide one is the text itself,
    // but not every file has it: `widePlace` is 0 then.
    std::u16string Text(std::size_t narrowPlace, std::size_t widePlace) {
        if (widePlace != 0 && DoubleWord(widePlace) != 0) {
            return WideText(DoubleWord(widePlace));
        }
        const std::uint32_t narrow = DoubleWord(narrowPlace);
        return narrow == 0 ? std::u16string() : NarrowText(narrow);
    }

  private:
    std::string_view bytes_;
    bool broken_ = false;
};

std::u16string Join(std::u16string base, std::u16string_view suffix) {
    if (!base.empty() && !suffix.empty() && base.back() != u'\\' && suffix.front() != u'\\') {
        base += u'\\';
    }
    return base.append(suffix);
}

// The name of the share, from the part of the link information about it. Nothing for a broken one.
std::optional<std::u16string> ReadShareName(std::string_view bytes) {
    Block share(bytes);
    const bool wide = share.DoubleWord(0x8) > kShareSize;
    std::u16string name = share.Text(0x8, wide ? 0x14 : 0);
    return share.IsBroken() || bytes.size() < kShareSize ? std::nullopt
                                                         : std::optional(std::move(name));
}

// False for a broken one.
bool ReadLinkInfo(std::string_view bytes, Shortcut* shortcut) {
    Block info(bytes);
    const std::uint32_t headerSize = info.DoubleWord(0x4);
    const std::uint32_t flags = info.DoubleWord(0x8);
    if (headerSize < kLinkInfoSize || headerSize > bytes.size()) {
        return false;
    }
    const bool wide = headerSize >= kWideLinkInfoSize;
    const std::u16string suffix = info.Text(0x18, wide ? 0x20 : 0);
    if ((flags & kHasLocalPath) != 0) {
        shortcut->localPath = Join(info.Text(0x10, wide ? 0x1C : 0), suffix);
    }
    if ((flags & kHasShare) != 0) {
        const std::uint32_t place = info.DoubleWord(0x14);
        const auto name = ReadShareName(info.Part(place, info.DoubleWord(place)));
        if (place < headerSize || !name) {
            return false;
        }
        shortcut->sharePath = Join(*name, suffix);
    }
    return !info.IsBroken();
}

// Reads the parts of a file one after the other.
class ShortcutReader {
  public:
    explicit ShortcutReader(std::string_view bytes) : file_(bytes) {}

    // False for a broken file.
    bool Read(Shortcut* shortcut) {
        if (file_.Part(0, kSignature.size()) != kSignature) {
            return false;
        }
        const std::uint32_t flags = file_.DoubleWord(0x14);
        next_ = kHeaderSize;
        if ((flags & kHasItemList) != 0) {
            next_ += 2 + file_.Word(next_);
        }
        if ((flags & kHasLinkInfo) != 0) {
            const std::uint32_t size = file_.DoubleWord(next_);
            const std::string_view info = file_.Part(next_, size);
            next_ += size;
            if ((flags & kIgnoreLinkInfo) == 0 && !ReadLinkInfo(info, shortcut)) {
                return false;
            }
        }
        ReadText(flags, kHasName);
        shortcut->relativePath = ReadText(flags, kHasRelativePath);
        shortcut->workingFolder = ReadText(flags, kHasWorkingFolder);
        file_.Part(next_, 0);
        return !file_.IsBroken();
    }

  private:
    // A counted text, if the file has it.
    std::u16string ReadText(std::uint32_t flags, std::uint32_t which) {
        if ((flags & which) == 0) {
            return {};
        }
        const bool wide = (flags & kIsWide) != 0;
        const std::size_t size = file_.Word(next_) * (wide ? std::size_t{2} : std::size_t{1});
        const std::string_view text = file_.Part(next_ + 2, size);
        next_ += 2 + size;
        const std::u16string decoded = wide ? Utf16OfBytes(text) : DecodeNarrow(text);
        return decoded.substr(0, decoded.find(u'\0'));
    }

    Block file_;
    std::size_t next_ = 0;
};

}  // namespace

std::optional<Shortcut> ParseShortcut(std::string_view bytes) {
    Shortcut shortcut;
    if (!ShortcutReader(bytes).Read(&shortcut)) {
        return std::nullopt;
    }
    return shortcut;
}

}  // namespace brevik::platform
