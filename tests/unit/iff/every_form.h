// A file that holds every kind of group and chunk, every form of size and every compression, small
// enough to be cut and bent at every byte.
#pragma once

#include <algorithm>
#include <string_view>

#include "iff/image_sample.h"

namespace vistel::test {

// A group with its pad bytes for the group around it.
inline Bytes nested(std::string_view kind, std::string_view type, const Bytes& body,
                    size_t alignment) {
    Bytes group;
    group.group(kind, type, body);
    return group.fill((alignment - group.size() % alignment) % alignment);
}

// One byte plane after the other, each of one value.
inline Bytes flatPlanes(unsigned pixels, std::initializer_list<unsigned> values) {
    Bytes data;
    for (const unsigned value : values) data.u8(127 + pixels).u8(value);
    return data;
}

// No size is known: groups closed by their end chunk, a chunk closed by its marker, a stray marker.
inline Bytes openForm(uint32_t size) {
    const TileRect rect{0, 0, 3, 1};
    Bytes pixels = flatPlanes(8, {7});
    pixels.u8(0x83).u8(1).u8(2).u8(3);        // a row of one colour
    pixels.u8(3).add(Bytes("abcdefghijkl"));  // and one of four
    Bytes tiles = tile("RGBA", rect, pixels);
    tiles.add(tile("ZBUF", rect, flatPlanes(8, {0x40, 0x48, 0xF5, 0xC3})));
    Bytes body;
    body.chunk("TBHD", headerBody(header(4, 2, imageColour | imageMask | imageZ, compressQrl)));
    body.streamedChunk("ANNO", "of unknown size.");
    body.header("EOVC", 0x80000000);
    body.openGroup("FOR4", "TBMP", tiles, 0x80000002, 0);
    return Bytes().openGroup("FOR4", "CIMG", body, size);
}

// 16-bit channels with a second colour, and a sound whose compression has a name.
inline Bytes wideForm() {
    const TileRect rect{0, 0, 3, 1};
    Bytes sound = soundFormatBody().add("NONE").u8(14).add("not compressed").u8(0);
    Bytes further;
    further.chunk("COMM", sound).chunk("SSND", Bytes().fill(16));
    const Bytes planes = flatPlanes(8, {1, 2, 3, 4, 5, 6});
    return imageForm(header(4, 2, imageColour | imageTwelveBit, compressRle, 1),
                     tile("RGBA", rect, planes).add(tile("RGB2", rect, planes)), further);
}

// Grey, stored whole, on two-byte boundaries.
inline Bytes smallStepForm() {
    Bytes body;
    body.chunk("TBHD", headerBody(header(3, 1, 0, compressNone)), 2);
    body.chunk("NAME", "odd", 2);
    body.add(nested("FORM", "TBMP", Bytes().chunk("RGBA", tileBody({0, 0, 2, 0}, "xyz"), 2), 2));
    return Bytes().group("FORM", "CIMG", body);
}

// A mask only, on eight-byte boundaries.
inline Bytes largeStepForm() {
    Bytes body;
    body.chunk("TBHD", headerBody(header(8, 1, imageBlack | imageMask)), 8);
    const Bytes mask = Bytes().chunk("RGBA", tileBody({0, 0, 7, 0}, flatPlanes(8, {9})), 8);
    body.add(nested("FOR8", "TBMP", mask, 8));
    return nested("FOR8", "CIMG", body, 8);
}

// Tiles that no decoder knows.
inline Bytes strangeForm() {
    return imageForm(header(4, 2, imageColour, compressQr4),
                     tile("RGBA", {0, 0, 3, 1}, "as it stands"));
}

constexpr int imagesOfEveryForm = 7;

inline Bytes everyForm() {
    const auto list = [](const char* list, const char* property, const char* sequence, size_t step,
                         const Bytes& images) {
        Bytes body = nested(property, "CIMG", Bytes().chunk("NAME", "all", step), step);
        body.add(nested(sequence, "CIMG", images, step));
        return nested(list, "CIMG", body, step);
    };
    return everyChunk()
        .add(openForm(0x80000002))
        .add(list("LIS4", "PRO4", "CAT4", 4, wideForm().add(strangeForm())))
        .add(list("LIST", "PROP", "CAT ", 2, smallStepForm()))
        .add(list("LIS8", "PRO8", "CAT8", 8, largeStepForm()))
        .add(openForm(0x80000000));
}

// The same with a group at its end that cannot be read.
inline Bytes everyFormAnd(std::string_view reserved) {
    return everyForm().group("CAT4", "CIMG", Bytes().header(reserved, 4).add("CIMG"));
}

inline bool listed(int code) {
    const auto texts = resultTexts();
    return std::any_of(texts.begin(), texts.end(),
                       [=](const ResultText& text) { return text.code == code; });
}

}  // namespace vistel::test
