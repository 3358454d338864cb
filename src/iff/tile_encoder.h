// Packs tiles for writing.
#pragma once

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

// Packs tiles one after the other.
class TileEncoder {
 public:
    // What is to be written of a tile whose pixels lie in file order, its rows `rowBytes` apart: packed
    // with the format's compression, or whole when that would not make it smaller (and for
    // compressNone). Valid until the next call, and as long as the pixels stay. std::bad_alloc.
    std::span<const uint8_t> encode(const TileFormat& format, const TileRect& rect,
                                    const uint8_t* pixels, size_t rowBytes);

 private:
    uint8_t* room(size_t bytes);
    std::span<const uint8_t> whole(size_t tileRowBytes, size_t height, const uint8_t* pixels,
                                   size_t rowBytes);

    std::vector<uint8_t> room_;
};

}  // namespace vistel
