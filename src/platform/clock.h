// The system's clocks. The headless build has a manual clock behind the same functions, so tests
// of pacing and waiting need no real time. Each system implements all of this (win32, linux,
// headless).
#pragma once

#include <cstdint>

namespace vistel::platform {

// Milliseconds since an arbitrary start, taken from the high-resolution counter rounded down;
// wraps after 2^32 ms.
uint32_t tickMilliseconds();

// Microseconds since an arbitrary start, never going back.
uint64_t tickMicroseconds();

// Sleeps for at least the given time; 1 ms sleeps are honoured to about 1 ms.
void sleepMilliseconds(unsigned milliseconds);

}  // namespace vistel::platform
