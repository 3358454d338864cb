// How a report waits for whoever reads it. The same on every system.
#pragma once

#include <chrono>
#include <optional>

#include "platform/go_on.h"

namespace vistel::platform {

// Whether `ready`, which waits up to about a millisecond, came true while `goOn` wanted, or soon
// after: a reader that is merely slow gets what there is.
template <class Ready>
bool awaitReportReader(const Ready& ready, const GoOn& goOn) {
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::milliseconds lastMoments{300};
    std::optional<Clock::time_point> end;
    while (!ready()) {
        if (mayGoOn(goOn)) continue;
        if (!end) end = Clock::now() + lastMoments;
        if (Clock::now() > *end) return false;
    }
    return true;
}

}  // namespace vistel::platform
