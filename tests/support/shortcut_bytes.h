// Shortcut files, made part by part.
#pragma once

#include <optional>
#include <string>
#include <string_view>

struct ShortcutParts {
    bool itemList = false;
    bool ignoreLinkInfo = false;
    bool wideTexts = true;

    // Link information is there when any of these is. The wide ones are there beside the narrow.
    std::optional<std::string> local = {};
    std::optional<std::u16string> localWide = {};
    std::optional<std::string> share = {};
    std::optional<std::u16string> shareWide = {};
    std::string suffix = {};

    std::optional<std::u16string> name = {};
    std::optional<std::u16string> relative = {};
    std::optional<std::u16string> workingFolder = {};
};

namespace shortcut_bytes {

inline std::string Number(std::size_t value, int size) {
    std::string bytes;
    for (int index = 0; index < size; ++index) {
        bytes += static_cast<char>(value >> 8 * index);
    }
    return bytes;
}

inline std::string Wide(std::u16string_view text) {
    std::string bytes;
    for (const char16_t unit : text) {
        bytes += Number(unit, 2);
    }
    return bytes;
}

inline std::string Share(const ShortcutParts& parts) {
    const bool wide = parts.shareWide.has_value();
    const std::size_t header = wide ? 0x1C : 0x14;
    const std::string name = *parts.share + '\0';
    std::string bytes = Number(2, 4) + Number(header, 4) + Number(0, 4) + Number(0x20000, 4);
    if (wide) {
        bytes += Number(header + name.size(), 4) + Number(0, 4);
    }
    bytes += name + (wide ? Wide(*parts.shareWide + u'\0') : "");
    return Number(bytes.size() + 4, 4) + bytes;
}

inline std::string LinkInfo(const ShortcutParts& parts) {
    const bool wide = parts.localWide.has_value();
    const std::size_t header = wide ? 0x24 : 0x1C;
    std::string body;
    const auto place = [&](bool there, const std::string& bytes) {
        const std::size_t at = there ? header + body.size() : 0;
        body += there ? bytes : "";
        return Number(at, 4);
    };
    const bool local = parts.local.has_value();
    std::string places = place(
        local, Number(0x11, 4) + Number(3, 4) + Number(0x12345678, 4) + Number(0x10, 4) + '\0');
    places += place(local, parts.local.value_or("") + '\0');
    places += place(parts.share.has_value(), parts.share ? Share(parts) : "");
    places += place(true, parts.suffix + '\0');
    if (wide) {
        places += place(true, Wide(*parts.localWide + u'\0'));
        places += place(false, "");
    }
    const std::size_t flags = (local ? 1u : 0u) | (parts.share ? 2u : 0u);
    const std::string bytes = Number(header, 4) + Number(flags, 4) + places + body;
    return Number(bytes.size() + 4, 4) + bytes;
}

inline std::string Text(const std::optional<std::u16string>& text, bool wide) {
    if (!text) {
        return {};
    }
    return Number(text->size(), 2) + (wide ? Wide(*text) : std::string(text->begin(), text->end()));
}

}  // namespace shortcut_bytes

inline std::string MakeShortcut(const ShortcutParts& parts) {
    using namespace shortcut_bytes;
    using namespace std::string_literals;
    const bool info = parts.local || parts.share;
    const std::size_t flags = (parts.itemList ? 0x1u : 0u) | (info ? 0x2u : 0u) |
                              (parts.name ? 0x4u : 0u) | (parts.relative ? 0x8u : 0u) |
                              (parts.workingFolder ? 0x10u : 0u) | (parts.wideTexts ? 0x80u : 0u) |
                              (parts.ignoreLinkInfo ? 0x100u : 0u);
    std::string bytes = Number(0x4C, 4) + "\x01\x14\x02\0\0\0\0\0\xC0\0\0\0\0\0\0\x46"s +
                        Number(flags, 4) + Number(0x20, 4) + std::string(24, '\x01') +
                        Number(1234, 4) + Number(0, 4) + Number(1, 4) + std::string(12, '\0');
    if (parts.itemList) {
        const std::string items = Number(6, 2) + "item" + Number(0, 2);
        bytes += Number(items.size(), 2) + items;
    }
    if (info) {
        bytes += LinkInfo(parts);
    }
    for (const auto* text : {&parts.name, &parts.relative, &parts.workingFolder}) {
        bytes += Text(*text, parts.wideTexts);
    }
    return bytes + Number(0, 4);
}
