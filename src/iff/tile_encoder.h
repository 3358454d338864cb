// Packs tiles for writing.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "iff/tile_format.h"
#include "iff/tile_kernels.h"

namespace vistel {

// What packets of `count` values take at most, and the room that packRle needs for them: it writes
// in whole words.
constexpr size_t mostPackedBytes(size_t count) { return count + count / longestPacket + 1; }
constexpr size_t roomForPackets(size_t count) { return mostPackedBytes(count) + 8; }

// Writes `count` values as run-length packets; returns the place behind them.
uint8_t* packRle(const uint8_t* values, size_t count, uint8_t* out);

// The pixels of a tile where they lie, as far apart as in the picture.
struct TileSource {
    const uint8_t* pixels = nullptr;  // the first one
    size_t pixelBytes = 0, rowBytes = 0;
    // Where in a pixel each byte lies that the file has of it, in the file's order; as many as
    // TileFormat::pixelBytes() says.
    std::array<uint8_t, 8> order{0, 1, 2, 3, 4, 5, 6, 7};
};

// Packs tiles one after the other.
class TileEncoder {
 public:
    // What is to be written of a tile: packed with the format's compression, or whole when that would
    // not make it smaller (and for compressNone). Valid until the next call. std::bad_alloc.
    std::span<const uint8_t> encode(const TileFormat& format, const TileRect& rect,
                                    const TileSource& source);

 private:
    uint8_t* room(size_t bytes);

    std::vector<uint8_t> room_;
};

}  // namespace vistel
