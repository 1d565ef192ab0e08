#include "filesystem/ticklers/Tickler.h"

#include <numeric>

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
