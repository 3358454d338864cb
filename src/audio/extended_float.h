// The sample rate of AIFF files: an 80-bit number of IEEE 754, the most significant byte first.
#pragma once

#include <array>
#include <cstdint>

namespace vistel {

// A sign, 15 bits of exponent, 64 bits of mantissa. The largest exponent reads as plus or minus
// infinity (HUGE_VAL), whatever the mantissa.
double doubleFromExtended(const uint8_t bytes[10]);

// Exact for every double but what is no number, which becomes infinity; so do the infinities.
std::array<uint8_t, 10> extendedFromDouble(double value);

}  // namespace vistel
