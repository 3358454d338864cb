// The image header ("TBHD") and what follows from it.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vistel {

// Header flags.
enum ImageFlag : uint32_t {
    imageColour = 0x1,      // three colour channels; clear: one grey channel
    imageMask = 0x2,        // mask (alpha) channel
    imageZ = 0x4,           // "ZBUF" tiles
    imageA = 0x8,           // "ABUF" plane
    imageBlack = 0x10,      // no colour data at all
    imageColourMap = 0x1000,
    imageTwelveBit = 0x2000,  // second colour plane in "RGB2" tiles
    imageMap = 0x20000,
};

enum ImageCompression : uint32_t { compressNone = 0, compressRle = 1, compressQrl = 2, compressQr4 = 3 };

//  offset  width  field (big-endian)
//       0      4  width
//       4      4  height
//       8      2  pair, first   (written as 1)
//      10      2  pair, second  (written as 1)
//      12      4  flags
//      16      2  16-bit channels
//      18      2  number of tiles
//      20      4  compression
struct ImageHeader {
    static constexpr size_t encodedSize = 24;

    uint32_t width = 0, height = 0;  // pixels, at least 1 in a header that was accepted
    uint16_t pairFirst = 1, pairSecond = 1;
    uint32_t flags = 0;
    uint16_t wideChannels = 0;  // non-zero: two bytes per channel
    uint16_t tiles = 0;
    uint32_t compression = compressRle;

    bool has(ImageFlag flag) const { return (flags & flag) != 0; }
    // Bytes of one pixel of a colour tile: 0 for a black image without mask.
    int bytesPerPixel() const;
};

// Decodes 24 bytes. iffBadImageHeader for a zero width or height.
[[nodiscard]] int decodeImageHeader(const uint8_t* bytes, ImageHeader& header);
void encodeImageHeader(const ImageHeader& header, uint8_t* bytes);

}  // namespace vistel
