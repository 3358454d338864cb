// The inner loops of the look-up table, the grey views and the relief. Each exists as a scalar
// reference, which says what it does, and as faster versions with the same results to the bit; the
// processor decides at run time which is used. The environment variable VISTEL_SCALAR=1 forces the
// reference. Sources and results may start at any address, and a result may be its own source
// unless said otherwise.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vistel {

// A table for each plane of the stored pixel: 0 mask (byte 3), 1 blue (byte 2), 2 green (byte 1),
// 3 red (byte 0, the lowest).
struct ByteTables {
    uint8_t plane[4][256];
};

// The lowest bit of a plane's byte in the stored pixel.
constexpr int planeShift(int plane) { return 8 * (3 - plane); }

// The mask byte of an opaque pixel, and an opaque pixel of one value in its colours.
constexpr uint32_t opaquePixel = 0xFF000000;
constexpr uint32_t greyPixel(uint32_t value) { return opaquePixel | value * 0x010101u; }

// The bytes of a pixel that belong to a set of planes (bit k stands for plane k), all ones.
constexpr uint32_t planeBits(unsigned planes) {
    uint32_t bits = 0;
    for (int plane = 0; plane < 4; ++plane)
        if (planes >> plane & 1) bits |= 0xFFu << planeShift(plane);
    return bits;
}

// How a relief is multiplied into a colour byte c under the shade s: ((c * factor + base) * s) >>
// 16, at most 255.
struct ReliefBlend {
    uint32_t factor;  // at most 655
    uint32_t base;    // at most 65280
};

struct ViewKernels {
    const char* name;

    // Byte k of `display` becomes the table entry of byte k of `stored` for the planes whose bit is
    // set in `planes`; other bytes keep what they held.
    void (*lookUp)(const ByteTables& tables, unsigned planes, const uint32_t* stored, size_t pixels,
                   uint32_t* display);

    // Grey of one plane's byte, exclusive-or `flip`.
    void (*greyPlane)(int plane, uint8_t flip, const uint32_t* stored, size_t pixels,
                      uint32_t* view);

    // Grey of (b0 + 2 b1 + b2) >> 2.
    void (*luminance)(const uint32_t* stored, size_t pixels, uint32_t* view);

    // Grey of bytes. `view` must not overlap `bytes`.
    void (*greyBytes)(const uint8_t* bytes, size_t pixels, uint32_t* view);

    // Relief shade of one row: shadeOf(k, dx, dy) of the differences of byte 2 to the pixel before
    // and to the row before, both 0 where there is none (`before` is null on the first row).
    void (*shadeRow)(float k, const uint32_t* row, const uint32_t* before, size_t pixels,
                     uint8_t* shade);
    bool shadesFasterThanATable;  // whether shadeRow is faster than looking the shades up

    // Relief and colour: every colour byte is blended with its pixel's shade, the mask is opaque.
    void (*blendRelief)(ReliefBlend blend, const uint8_t* shade, const uint32_t* stored,
                        size_t pixels, uint32_t* view);
};

// The height of a pixel of the relief: byte 2.
constexpr int reliefHeight(uint32_t pixel) { return static_cast<int>(pixel >> 16 & 255); }

// Light on a slope of dx to the right and dy upwards, times k: 0..255. The light comes from
// (1, 1, 0.6). The same for (dx, dy) and (dy, dx), to the bit.
uint8_t shadeOf(float k, int dx, int dy);
constexpr float lightHeight = 0.6f;
constexpr float lightScale =
    165.990862f;  // 255 over the length of the light's direction, sqrt(2.36)

const ViewKernels& scalarViewKernels();
// Null when this processor has not got the instructions.
const ViewKernels* sse2ViewKernels();
const ViewKernels* avx2ViewKernels();
const ViewKernels* vbmiViewKernels();
// The fastest ones, chosen on the first call.
const ViewKernels& viewKernels();

}  // namespace vistel
