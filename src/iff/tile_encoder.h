// Packs tiles for writing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "iff/tile_format.h"

namespace vistel {

// Packs a tile whose pixels lie whole in `raw` (file order), with the format's compression. Returns
// the packed size, `packed` then holds the data; or 0 when packing would not make it smaller (and
// for compressNone): the raw bytes are to be written.
size_t encodeTile(const TileFormat& format, const TileRect& rect, const uint8_t* raw,
                  std::vector<uint8_t>& packed);

// Appends `count` values, `stride` bytes apart, as run-length packets.
void appendRle(const uint8_t* values, size_t count, size_t stride, std::vector<uint8_t>& packed);

}  // namespace vistel
