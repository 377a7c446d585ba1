#pragma once

#include <chrono>
#include <cstdint>

namespace vl {

// The system log's per-process rate quota: a token bucket that refills at `ratePerSecond`
// records a second up to `burst`. Not locked: its owner serialises the calls.
class LogRateQuota {
public:
    using Clock = std::chrono::steady_clock;

    LogRateQuota(double ratePerSecond, double burst);

    // True when a record may be written at `now` (and takes its token); false counts a drop.
    bool admit(Clock::time_point now);
    // The records dropped since the last call; resets the count.
    uint64_t takeDropped();
    uint64_t dropped() const { return dropped_; }

private:
    void refill(Clock::time_point now);

    const double ratePerSecond_;
    const double burst_;
    double tokens_;
    Clock::time_point last_{};
    bool started_ = false;
    uint64_t dropped_ = 0;
};

}  // namespace vl
