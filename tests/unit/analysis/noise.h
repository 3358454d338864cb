// Pixels without any order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

namespace vistel::test {

inline std::vector<uint32_t> noise(size_t count, unsigned seed) {
    std::mt19937 random(seed);
    std::vector<uint32_t> pixels(count);
    for (uint32_t& pixel : pixels) pixel = static_cast<uint32_t>(random());
    return pixels;
}

}  // namespace vistel::test
