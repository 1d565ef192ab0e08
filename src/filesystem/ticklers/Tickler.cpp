#include "filesystem/ticklers/Tickler.h"

#include <numeric>

bool Tickler::IsCancelled() const {
    return impl_ != nullptr && impl_->IsCancelled();
}

void Tickler::SetMessage(const VelmarText& message) const {
    if (impl_ != nullptr) {
        impl_->SetMessage(message);
    }
}

void Tickler::SetProgress(double share) const {
    if (impl_ != nullptr) {
        impl_->SetProgress(base_ + scale_ * share);
    }
}

void Tickler::Tickle() const {
    if (impl_ != nullptr) {
        impl_->Tickle();
    }
}

void Tickler::BeginSteps(std::uint32_t count) const {
    if (impl_ != nullptr) {
        impl_->SetStepCount(count);
        impl_->SetStep(1);
    }
}

void Tickler::NextStep() const {
    if (impl_ != nullptr) {
        impl_->SetStep(impl_->GetStep() + 1);
    }
}

void Tickler::SetStep(std::uint32_t step) const {
    if (impl_ != nullptr) {
        impl_->SetStep(step);
    }
}

std::uint32_t Tickler::GetStepCount() const {
    return impl_ != nullptr ? impl_->GetStepCount() : 0;
}

std::vector<Tickler> Tickler::Split(std::uint32_t count) const {
    std::vector<Tickler> parts;
    parts.reserve(count);
    double start = base_;
    for (std::uint32_t i = 0; i < count; ++i) {
        const double width = scale_ / count;
        parts.emplace_back(impl_, start, width);
        start += width;
    }
    return parts;
}

std::vector<Tickler> Tickler::Split(const std::vector<double>& weights) const {
    const double sum = std::accumulate(weights.begin(), weights.end(), 0.0);
    std::vector<Tickler> parts;
    if (!(sum > 0.0)) {
        return parts;
    }
    double start = base_;
    for (const double weight : weights) {
        const double width = scale_ * weight / sum;
        parts.emplace_back(impl_, start, width);
        start += width;
    }
    return parts;
}
