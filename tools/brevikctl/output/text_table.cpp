#include "brevikctl/output/text_table.h"

#include <algorithm>
#include <cstdio>

#include "brevikctl/output/terminal.h"

namespace {

// A terminal counts characters, and a byte that continues one takes no place of its own.
std::size_t Width(const std::string& text) {
    return static_cast<std::size_t>(
        std::ranges::count_if(text, [](char byte) { return (byte & 0xC0) != 0x80; }));
}

}  // namespace

void PrintTable(const TextTable& rows) {
    TextTable safe = rows;
    std::vector<std::size_t> widths(rows.front().size());
    for (std::vector<std::string>& row : safe) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            row[i] = SafeText(row[i]);
            widths[i] = std::max(widths[i], Width(row[i]));
        }
    }
    for (const std::vector<std::string>& row : safe) {
        std::string text;
        for (std::size_t i = 0; i + 1 < row.size(); ++i) {
            text += row[i] + std::string(widths[i] - Width(row[i]) + 2, ' ');
        }
        text += row.back();
        text.resize(text.find_last_not_of(' ') + 1);
        std::printf("%s\n", text.c_str());
    }
}
