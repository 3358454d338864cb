// Stored pixels as the views show them.
#pragma once

#include <cstdint>

namespace vistel::test {

inline uint32_t asGrey(uint32_t value) { return value * 0x010101u; }

// Byte of the stored pixel that holds a plane: 0 mask, 1 blue, 2 green, 3 red.
inline uint32_t planeByte(uint32_t pixel, int plane) {
    const int shifts[] = {24, 16, 8, 0};
    return pixel >> shifts[plane] & 255;
}

}  // namespace vistel::test
