// The progress of a copy on a terminal, and its stop by Ctrl-C.
#pragma once

#include <chrono>
#include <string>

#include "brevikctl/output/stop_signals.h"
#include "filesystem/ticklers/TickleImplBase.h"

// While it lives, the signals that ask a program to end stop the copy instead. The bar is drawn on
// standard error, and only where that is a terminal.
class ProgressBar : public TickleImplBase {
  public:
    ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;
    ~ProgressBar() override { Clear(); }

    bool IsCancelled() override { return StopSignals::Last() != 0; }
    void SetMessage(const VelmarText& message) override;
    void SetProgress(double position) override;
    void Tickle() override {}

    // Takes the bar off the terminal, until the next report.
    void Clear();

  private:
    // Draws at most some times a second, and nothing before the first message.
    void Draw();

    StopSignals signals_;
    bool isShown_;
    bool isDrawn_ = false;
    double position_ = 0.0;
    std::string message_;
    std::chrono::steady_clock::time_point nextDrawing_;
};
