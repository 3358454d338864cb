#include "platform/clock.h"

#include "platform/win32/windows_api.h"
// After <windows.h>, whose types it needs.
#include <timeapi.h>

namespace vistel::platform {

namespace {

// The system's timer period is 1 ms from the first use of a clock to the end of the process;
// without it a sleep of 1 ms takes up to 16.
class FineTimerPeriod {
 public:
    FineTimerPeriod() { timeBeginPeriod(1); }
    ~FineTimerPeriod() { timeEndPeriod(1); }
};

void askForFineTimer() { static const FineTimerPeriod period; }

uint64_t counterFrequency() {
    static const uint64_t frequency = [] {
        LARGE_INTEGER perSecond;
        QueryPerformanceFrequency(&perSecond);
        return static_cast<uint64_t>(perSecond.QuadPart);
    }();
    return frequency;
}

}  // namespace

uint64_t tickMicroseconds() {
    askForFineTimer();
    LARGE_INTEGER now;
    QueryPerformanceCounter(&now);
    const uint64_t count = static_cast<uint64_t>(now.QuadPart);
    const uint64_t frequency = counterFrequency();
    // Whole seconds apart from the rest: the product of the count with 10^6 would not fit.
    return count / frequency * 1000000 + count % frequency * 1000000 / frequency;
}

uint32_t tickMilliseconds() { return static_cast<uint32_t>(tickMicroseconds() / 1000); }

void sleepMilliseconds(unsigned milliseconds) {
    askForFineTimer();
    const uint64_t end = tickMicroseconds() + uint64_t{milliseconds} * 1000;
    Sleep(milliseconds);
    // The system may wake a sleeper up to one timer period early.
    while (tickMicroseconds() < end) Sleep(1);
}

}  // namespace vistel::platform
