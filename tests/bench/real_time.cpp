// Benchmarks run on the desktop of plain memory, but in real time: these take the place of the
// functions that set its manual clock.

#include "platform/headless/headless.h"

namespace vistel::platform {

void headless::setMicroseconds(uint64_t) {}
void headless::advanceMilliseconds(uint64_t) {}

}  // namespace vistel::platform
