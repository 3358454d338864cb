#include "platform/clock.h"

#include "platform/headless/headless.h"

namespace vistel::platform {

static uint64_t now = 0;  // microseconds

uint32_t tickMilliseconds() { return static_cast<uint32_t>(now / 1000); }
uint64_t tickMicroseconds() { return now; }
void sleepMilliseconds(unsigned milliseconds) { now += uint64_t{milliseconds} * 1000; }

void headless::setMicroseconds(uint64_t microseconds) { now = microseconds; }
void headless::advanceMilliseconds(uint64_t milliseconds) { now += milliseconds * 1000; }

}  // namespace vistel::platform
