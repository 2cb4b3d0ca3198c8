// Where two drivers split a frame's rows between them. Any row gives the same pixels; a good
// one gives both threads the same time, and where the work of a scene lies changes little from
// one frame to the next, so the split is learnt from the halves' last times.
#pragma once

#include <cstdint>
#include <optional>

class SplitBalancer {
public:
    // The row that starts the bottom half of the next frame of `rows` rows (at least 2).
    std::int32_t Split(std::int32_t rows) const;
    // What each half took in a frame of `rows` rows split at `split`.
    void Observe(std::int32_t split, std::int32_t rows, double topMs, double bottomMs);

private:
    double share_ = 0.5; // of the rows, above the split
    struct Observation {
        double share;
        double difference; // top's time less the bottom's
    };
    std::optional<Observation> last_;
};
