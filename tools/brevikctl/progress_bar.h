// The progress of a copy on a terminal, and its stop by Ctrl-C.
#pragma once

#include <signal.h>

#include <chrono>
#include <string>

#include "filesystem/ticklers/TickleImplBase.h"

// While it lives, the signals that ask a program to end stop the copy instead. At most one lives at
// a time. The bar is drawn on standard error, and only where that is a terminal.
class ProgressBar : public TickleImplBase {
  public:
    ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;
    ~ProgressBar() override;

    bool IsCancelled() override;
    void SetMessage(const VelmarText& message) override;
    void SetProgress(double position) override;
    void Tickle() override {}

    // Takes the bar off the terminal, until the next report.
    void Clear();

    // The signal that stopped the copy, or 0.
    static int GetSignal();

  private:
    // Draws at most some times a second, and nothing before the first message.
    void Draw();

    static constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};
    struct sigaction before_[3];
    bool isShown_;
    bool isDrawn_ = false;
    double position_ = 0.0;
    std::string message_;
    std::chrono::steady_clock::time_point nextDrawing_;
};
