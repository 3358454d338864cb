// How the pixels of a tile lie in its chunk, and how many bytes they take.
#pragma once

#include <cstddef>
#include <cstdint>

#include "iff/frame_store.h"
#include "iff/image_header.h"

namespace vistel {

// File channels of a colour tile. A tile stores only those that its image has, in ascending order.
enum FileChannel { channelMask = 0, channelBlue = 1, channelGreen = 2, channelRed = 3 };

//  stored whole    each pixel's channels one after the other, values big-endian
//  run-length      one plane for each byte of a pixel, in the same order
struct TileFormat {
    int channelCount = 0;
    uint8_t channels[4] = {};  // FileChannel, ascending
    int valueBytes = 1;        // 1 or 2 for colour, 4 for depth (one channel, a big-endian float)
    uint32_t compression = compressRle;

    int pixelBytes() const { return channelCount * valueBytes; }
    // Position of a file channel among those stored, -1 when the tile has none.
    int indexOf(FileChannel channel) const;
    bool packsWholePixels() const {  // QRL proper; other QRL tiles are run-length coded
        return compression == compressQrl && valueBytes == 1 && indexOf(channelRed) >= 0;
    }
};

TileFormat colourTileFormat(const ImageHeader& header);
TileFormat depthTileFormat();

// Larger images cannot be tiled: the corners of a tile have 16 bits.
constexpr uint32_t longestTiledSide = 65535;

// Bytes of a tile that is stored whole.
inline uint64_t rawTileSize(const TileFormat& format, const TileRect& rect) {
    return uint64_t{rect.width()} * rect.height() * uint64_t(format.pixelBytes());
}

}  // namespace vistel
