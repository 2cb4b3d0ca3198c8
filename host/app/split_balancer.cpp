// Learning the split of a frame between two drivers.
#include "host/app/split_balancer.h"

#include <algorithm>
#include <cmath>

namespace {

// Neither half gets less than an eighth of the rows.
std::int32_t Clamped(double row, std::int32_t rows) {
    const std::int32_t least = std::max(1, rows / 8), most = std::min(rows - 1, rows - rows / 8);
    return std::clamp(static_cast<std::int32_t>(std::lround(row)), least, most);
}

} // namespace

std::int32_t SplitBalancer::Split(std::int32_t rows) const {
    return Clamped(share_ * rows, rows);
}

void SplitBalancer::Observe(std::int32_t split, std::int32_t rows, double topMs,
                            double bottomMs) {
    if (rows < 2) return;
    const double share = static_cast<double>(split) / rows;
    const double difference = topMs - bottomMs;
    double next = split;
    if (!(topMs + bottomMs > 0.0)) {
        // Nothing measured: stay.
    } else if (last_ && last_->share != share && (last_->difference < 0) != (difference < 0)) {
        // The times crossed between the last two splits: they meet between them, taken as on
        // the line through both. Work bunched in a few rows makes the estimate below swing
        // from one side of that band to the other.
        const double lastRow = last_->share * rows;
        next = split + (lastRow - split) * difference / (difference - last_->difference);
    } else {
        // Each half's time per row, taken as even within the half: the split moves to where
        // the estimated times meet, by half of the way, so one odd frame does not throw it far.
        const double topRate = topMs / std::max(split, 1),
                     bottomRate = bottomMs / std::max(rows - split, 1);
        const double meet = bottomRate * rows / (topRate + bottomRate);
        next = split + 0.5 * (meet - split);
    }
    last_ = Observation{share, difference};
    share_ = static_cast<double>(Clamped(next, rows)) / rows;
}
