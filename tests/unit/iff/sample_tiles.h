// Images of one tile, and the sample picture in tiles of any size.
#pragma once

#include <algorithm>
#include <string_view>
#include <vector>

#include "iff/image_bytes.h"

namespace vistel::test {

// A one-tile image of one value, different for each `value`.
inline Bytes flatImage(unsigned value, uint32_t width = 4, uint32_t height = 4,
                       std::string_view kind = "FOR4") {
    const ImageHeader head = header(width, height, imageColour | imageMask);
    Bytes data;
    for (uint32_t i = 0; i < width * height; ++i) data.u8(9).u8(3).u8(2).u8(value);
    const TileRect all{0, 0, static_cast<uint16_t>(width - 1), static_cast<uint16_t>(height - 1)};
    Bytes body;
    body.chunk("TBHD", headerBody(head));
    body.add(tileGroup(tile("RGBA", all, data)));
    if (kind == "FOR8") body.fill((8 - body.size() % 8) % 8);  // its chunks end on 8 bytes
    return Bytes().group(kind, "CIMG", body);
}
inline uint32_t flatPixel(unsigned value) { return planePixel({value, 2, 3, 9}); }

// The sample picture cut into tiles of the given size, in any order.
inline Bytes sampleTiles(const ImageHeader& head, uint16_t tileWidth, uint16_t tileHeight,
                         bool lastFirst = false, bool withDepth = false) {
    std::vector<Bytes> tiles;
    for (uint32_t y = 0; y < head.height; y += tileHeight)
        for (uint32_t x = 0; x < head.width; x += tileWidth) {
            TileRect rect;
            rect.x1 = static_cast<uint16_t>(x);
            rect.y1 = static_cast<uint16_t>(y);
            rect.x2 = static_cast<uint16_t>(std::min(x + tileWidth, head.width) - 1);
            rect.y2 = static_cast<uint16_t>(std::min(y + tileHeight, head.height) - 1);
            const Bytes whole = wholeTileData(head, rect);
            const Bytes packed = packedPlanes(whole, size_t(head.bytesPerPixel()));
            tiles.push_back(tile("RGBA", rect, packed.size() < whole.size() ? packed : whole));
            if (withDepth) tiles.back().add(tile("ZBUF", rect, wholeDepthData(rect)));
        }
    if (lastFirst) std::reverse(tiles.begin(), tiles.end());
    Bytes all;
    for (const Bytes& one : tiles) all.add(one);
    return all;
}

}  // namespace vistel::test
