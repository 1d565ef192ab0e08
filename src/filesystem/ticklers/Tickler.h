// A share of the progress of a long operation.
//
// The operation counts from 0.0 to 1.0 and need not know which part of the whole that is: the
// tickler maps it into its own range of the sink. Without a sink every report does nothing. A small
// value; copies share the sink, which is not owned. One thread at a time.
#pragma once

#include <cstdint>
#include <vector>

#include "filesystem/ticklers/TickleImplBase.h"

class Tickler {
  public:
    // Without a sink.
    Tickler() = default;

    // The whole range of a sink, which may be null.
    explicit Tickler(TickleImplBase* impl) : Tickler(impl, 0.0, 1.0) {}

    // The range of the sink that begins at `base` and is `scale` wide.
    Tickler(TickleImplBase* impl, double base, double scale)
        : impl_(impl), base_(base), scale_(scale) {}

    Tickler(const Tickler&) = default;
    Tickler& operator=(const Tickler&) = default;
    virtual ~Tickler() = default;

    // Whether the sink wants the operation to stop; false without one.
    bool IsCancelled() const;
    void SetMessage(const VelmarText& message) const;

    // `share` is how much of this tickler's own range is done.
    void SetProgress(double share) const;
    void Tickle() const;

    // Tells the sink that so many steps follow, and that the first has begun.
    void BeginSteps(std::uint32_t count) const;
    void NextStep() const;
    void SetStep(std::uint32_t step) const;

    // 0 without a sink.
    std::uint32_t GetStepCount() const;

    double GetBase() const { return base_; }
    void SetBase(double base) { base_ = base; }
    double GetScale() const { return scale_; }
    void SetScale(double scale) { scale_ = scale; }

    // Ticklers that share out this range in order: in `count` equal parts, or by weight. Empty for
    // weights whose sum is not above 0.0.
    std::vector<Tickler> Split(std::uint32_t count) const;
    std::vector<Tickler> Split(const std::vector<double>& weights) const;

  private:
    TickleImplBase* impl_ = nullptr;
    double base_ = 1.0;
    double scale_ = 0.0;
};
