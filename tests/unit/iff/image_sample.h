// A frame file that holds every kind of chunk, small enough to be cut and bent at every byte.
#pragma once

#include "iff/image_bytes.h"

namespace vistel::test {

inline Bytes soundFormatBody() {
    return Bytes().u16(2).u32(44100).u16(16).u16(0x400E).u32(0xAC440000).u32(0);
}

inline Bytes everyChunk() {
    ImageHeader head = header(6, 4, imageColour | imageMask | imageZ);
    head.tiles = 2;
    Bytes further;
    for (const char* id : {"NAME", "DATE", "AUTH", "ANNO", "VERS", "HIST", "(c) "})
        further.chunk(id, Bytes("text of ").add(id));
    further.chunk("ZPLC", Bytes().u32(0x3FC00000).u32(0xC0200000));
    further.chunk("ICON", Bytes().u16(2).u16(1).fill(6, 0x77));
    further.chunk("USER", "anything");
    further.chunk("COMM", soundFormatBody());
    further.chunk("SSND", Bytes().fill(12));
    further.chunk("ABCD", "??");
    const TileRect left{0, 0, 2, 3}, right{3, 0, 5, 3};
    Bytes tiles;
    for (const TileRect& rect : {left, right}) {
        const Bytes whole = wholeTileData(head, rect);
        Bytes runs;
        for (unsigned value : {9u, 3u, 2u, 1u}) runs.u8(0x8B).u8(value);
        tiles.add(tile("RGBA", rect, rect.x1 == 0 ? whole : runs));
        tiles.add(tile("RGB2", rect, whole));
        tiles.add(tile("ZBUF", rect, wholeDepthData(rect)));
        tiles.add(tile("ABUF", rect, Bytes().u8(1)));
    }
    return imageForm(head, tiles, further);
}

}  // namespace vistel::test
