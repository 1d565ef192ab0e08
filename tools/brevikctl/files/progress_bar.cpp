#include "brevikctl/files/progress_bar.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "brevikctl/output/terminal.h"
#include "text/VelmarText.h"

namespace {

std::size_t TerminalWidth() {
    constexpr std::size_t kUsual = 80;
    winsize size = {};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col != 0 ? size.ws_col : kUsual;
}

// At most `width` characters of the text's end, which says more of a path than its beginning.
std::string EndOf(const std::string& text, std::size_t width) {
    std::size_t start = text.size();
    for (std::size_t shown = 0; start > 0 && shown < width; ++shown) {
        do {
            --start;
        } while (start > 0 && (text[start] & 0xC0) == 0x80);
    }
    return text.substr(start);
}

}  // namespace

ProgressBar::ProgressBar() : isShown_(isatty(STDERR_FILENO) == 1) {}

void ProgressBar::SetMessage(const VelmarText& message) {
    message_ = SafeText(Utf8ToNarrow(message.GetText()));
    Draw();
}

void ProgressBar::SetProgress(double position) {
    position_ = std::clamp(position, 0.0, 1.0);
    Draw();
}

void ProgressBar::Clear() {
    if (isDrawn_) {
        WriteText(STDERR_FILENO, "\r\x1b[K");
        isDrawn_ = false;
    }
}

void ProgressBar::Draw() {
    constexpr std::size_t kBarWidth = 20;
    constexpr std::size_t kAroundMessage = kBarWidth + 10;
    constexpr auto kBetweenDrawings = std::chrono::milliseconds(100);
    const auto now = std::chrono::steady_clock::now();
    if (!isShown_ || message_.empty() || now < nextDrawing_) {
        return;
    }
    nextDrawing_ = now + kBetweenDrawings;
    const auto done = static_cast<std::size_t>(std::lround(position_ * kBarWidth));
    char percent[8];
    std::snprintf(percent, sizeof percent, "%3.0f%%", position_ * 100);
    const std::size_t width = TerminalWidth();
    WriteText(STDERR_FILENO,
              "\r\x1b[K[" + std::string(done, '#') + std::string(kBarWidth - done, '.') + "] " +
                  percent + " " +
                  EndOf(message_, width > kAroundMessage ? width - kAroundMessage : 0));
    isDrawn_ = true;
}
