// A share of the progress of a long operation.
//
// The operation counts from 0.0 to 1.0, which the tickler maps into its own range of the sink.
// Without a sink every report does nothing. Copies share the sink, which is not owned. One thread
// at a time.
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

    virtual ~Tickler() = default;

    // Whether the sink wants the operation to stop; false without one.
    bool IsCancelled() const { return impl_ != nullptr && impl_->IsCancelled(); }
    void SetMessage(const VelmarText& message) const {
        if (impl_ != nullptr) {
            impl_->SetMessage(message);
        }
    }

    // `share` is how much of this tickler's own range is done.
    void SetProgress(double share) const {
        if (impl_ != nullptr) {
            impl_->SetProgress(base_ + scale_ * share);
        }
    }
    void Tickle() const {
        if (impl_ != nullptr) {
            impl_->Tickle();
        }
    }

    // So many steps follow, and the first has begun.
    void BeginSteps(std::uint32_t count) const {
        if (impl_ != nullptr) {
            impl_->SetStepCount(count);
            impl_->SetStep(1);
        }
    }
    void NextStep() const {
        if (impl_ != nullptr) {
            impl_->SetStep(impl_->GetStep() + 1);
        }
    }
    void SetStep(std::uint32_t step) const {
        if (impl_ != nullptr) {
            impl_->SetStep(step);
        }
    }

    // 0 without a sink.
    std::uint32_t GetStepCount() const { return impl_ != nullptr ? impl_->GetStepCount() : 0; }

    double GetBase() const { return base_; }
    void SetBase(double base) { base_ = base; }
    double GetScale() const { return scale_; }
    void SetScale(double scale) { scale_ = scale; }

    // Ticklers that share out this range in order: in `count` equal parts, or by weight. Empty for
    // weights whose sum is not above 0.0.
    std::vector<Tickler> Split(std::uint32_t count) const {
        return Split(std::vector<double>(count, 1.0));
    }
    std::vector<Tickler> Split(const std::vector<double>& weights) const;

  private:
    TickleImplBase* impl_ = nullptr;
    double base_ = 1.0;
    double scale_ = 0.0;
};
