#include "platform/log/LogRateQuota.h"

#include <algorithm>
#include <utility>

namespace vl {

LogRateQuota::LogRateQuota(double ratePerSecond, double burst)
    : ratePerSecond_(ratePerSecond), burst_(burst), tokens_(burst) {}

void LogRateQuota::refill(Clock::time_point now) {
    if (!started_) {
        started_ = true;
        last_ = now;
        return;
    }
    if (now <= last_) {
        return;
    }
    const double seconds = std::chrono::duration<double>(now - last_).count();
    tokens_ = std::min(burst_, tokens_ + seconds * ratePerSecond_);
    last_ = now;
}

bool LogRateQuota::admit(Clock::time_point now) {
    refill(now);
    if (tokens_ >= 1.0) {
        tokens_ -= 1.0;
        return true;
    }
    ++dropped_;
    return false;
}

uint64_t LogRateQuota::takeDropped() {
    return std::exchange(dropped_, 0);
}

}  // namespace vl
