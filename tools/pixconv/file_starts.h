// The first bytes of types of which there are two implementations.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>

namespace vistel {

inline constexpr uint8_t pngStart[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
inline constexpr uint8_t jpegStart[3] = {0xFF, 0xD8, 0xFF};
inline constexpr uint8_t exrStart[4] = {0x76, 0x2F, 0x31, 0x01};

template <size_t size>
bool startsWith(std::span<const uint8_t> start, const uint8_t (&mark)[size]) {
    return start.size() >= size && std::equal(mark, mark + size, start.begin());
}

inline bool isPng(std::span<const uint8_t> start) { return startsWith(start, pngStart); }
inline bool isJpeg(std::span<const uint8_t> start) { return startsWith(start, jpegStart); }
inline bool isExr(std::span<const uint8_t> start) { return startsWith(start, exrStart); }

}  // namespace vistel
