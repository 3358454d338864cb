// How often each byte value occurs in the compressed colour tiles of a frame file, and the picture
// that shows it. Data that packs well uses some values often; what looks like noise uses all alike.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "iff/iff_reader.h"

namespace vistel {

// Full counters stay full.
struct ByteHistogram {
    std::array<uint32_t, 256> counts{};  // by byte value
    uint32_t total = 0;                  // bytes, of chunks that could not be read too
};

// Reads a tile's chunk, of n bytes, and counts n - 8 of them when they could all be read: what
// stands behind the tile's rectangle up to the last 8 bytes, and for these 8 zeros. A chunk of up
// to 8 bytes, or of unknown size, counts nothing. The reader's result.
[[nodiscard]] int countTileBytes(IffReader& chunk, ByteHistogram& histogram);

// In pixels from the lower left, whole and inside the picture.
struct HistogramPicture {
    static constexpr int width = 532, height = 320;

    struct Bar {
        int left, bottom, right, top;  // all inclusive
    };
    struct Point {
        int x, y;
    };
    // One for each value that occurs, its height in proportion to the value that occurs most.
    std::vector<Bar> bars;
    // Through all values, in proportion to the total.
    std::array<Point, 256> line;
};
HistogramPicture histogramPicture(const ByteHistogram& histogram);

}  // namespace vistel
