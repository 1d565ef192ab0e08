// The sink of a long operation's progress, which the program derives and owns.
//
// It outlives every Tickler that points to it. Its operations are called on the thread of the
// operation that reports.
#pragma once

#include <cstdint>

class VelmarText;

class TickleImplBase {
  public:
    virtual ~TickleImplBase() = default;

    // Whether the operation is to stop. The base class returns `cancelled_`.
    virtual bool IsCancelled() { return cancelled_; }

    // What is being done at the moment; `message` need not outlive the call.
    virtual void SetMessage(const VelmarText& message) = 0;

    // How far the operation has come, from 0.0 to 1.0 unless the first Tickler had another range.
    virtual void SetProgress(double position) = 0;

    // A sign of life; none of the library's own operations gives it.
    virtual void Tickle() = 0;

    // The number of steps, and the one that is being done, from 1. Both are 1 at first.
    virtual std::uint32_t GetStepCount() { return stepCount_; }
    virtual std::uint32_t GetStep() { return step_; }
    virtual void SetStepCount(std::uint32_t count) { stepCount_ = count; }
    virtual void SetStep(std::uint32_t step) { step_ = step; }

  protected:
    bool cancelled_ = false;
    std::uint32_t stepCount_ = 1;
    std::uint32_t step_ = 1;
};
