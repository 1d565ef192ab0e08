// Whole texts between a code page and UTF-16, NULs inside them included.
#pragma once

#include <string>
#include <string_view>

#include "platform/text.h"

inline WideString WideFromCodePage(UINT codePage, std::string_view text) {
    if (text.empty()) {
        return {};  // the platform refuses a length of 0
    }
    const int length = static_cast<int>(text.size());
    const int size = MultiByteToWideChar(codePage, 0, text.data(), length, nullptr, 0);
    WideString wide(static_cast<std::size_t>(size), WCHAR{});
    MultiByteToWideChar(codePage, 0, text.data(), length, wide.data(), size);
    return wide;
}

// `Text` is a string of bytes of any type.
template <typename Text = std::string>
Text CodePageFromWide(UINT codePage, std::basic_string_view<WCHAR> wide) {
    if (wide.empty()) {
        return {};
    }
    const int length = static_cast<int>(wide.size());
    const int size =
        WideCharToMultiByte(codePage, 0, wide.data(), length, nullptr, 0, nullptr, nullptr);
    Text text(static_cast<std::size_t>(size), typename Text::value_type{});
    WideCharToMultiByte(codePage, 0, wide.data(), length, reinterpret_cast<char*>(text.data()),
                        size, nullptr, nullptr);
    return text;
}
