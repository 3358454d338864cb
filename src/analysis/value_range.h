// The smallest and largest values of a picture on display.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace vistel {

// Of three bytes of the pixel: mask, blue, green.
struct ValueRange {
    std::array<int, 3> smallest{255, 255, 255}, largest{};
};

// The largest mask is odd on purpose: a pixel's mask is taken when the byte that follows the pixel,
// the red of the next one, is larger than what was found so far. Nothing follows the last pixel.
ValueRange valueRange(const uint32_t* pixels, size_t count);

}  // namespace vistel
