// The inner loops of decoding and encoding tiles. Each exists as a scalar reference, which says what it does, and
// as a faster version with the same results; the processor decides at run time which is used.
// The environment variable VISTEL_SCALAR=1 forces the reference.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vistel {

// Bytes that a kernel may write behind the values it was asked for (never behind plane pixels).
constexpr size_t kernelSlack = 128;

// Values of the longest packet of run-length coding.
constexpr size_t longestPacket = 128;

// A rectangle of a plane.
struct PixelArea {
    uint32_t* pixels = nullptr;  // the first one
    size_t rowPixels = 0;        // from one row to the next
    size_t columns = 0, rows = 0;
    // Whole cache lines are to be stored past the cache. Only where the memory has been written
    // before, and with `settle` before another thread reads it.
    bool streaming = false;
};

// Where the four bytes of a plane pixel, lowest first, come from in a pixel that lies whole in the
// file: an offset from the pixel's first byte, or, where that is negative, a fixed value.
struct PixelRecipe {
    int offset[4] = {-1, -1, -1, -1};
    uint8_t fixed[4] = {};
};

struct TileKernels {
    const char* name;

    // Unpacks run-length packets into `values` (with kernelSlack bytes behind them) and moves
    // `data` forward. A control byte c stands for (c & 127) + 1 values: below 128 they follow, from
    // 128 on one value follows and is repeated. Returns how many of the `count` values were stored:
    // fewer when a packet would run past the count (nothing of it is stored) or the data ends (what
    // is there of a literal packet is stored); and fewer when it stops at the first packet behind
    // which `enough` values are there.
    size_t (*unpackRle)(const uint8_t*& data, const uint8_t* end, uint8_t* values, size_t count,
                        size_t enough);

    // The same packets with three-byte values red, green, blue, each into its own plane.
    size_t (*unpackQrl)(const uint8_t*& data, const uint8_t* end, uint8_t* const planes[3],
                        size_t count);

    // Pixel i of a row becomes bytes[0][i] | bytes[1][i] << 8 | bytes[2][i] << 16 |
    // bytes[3][i] << 24; each plane's next row lies rowBytes further.
    void (*interleave)(const PixelArea& area, const uint8_t* const bytes[4],
                       const size_t rowBytes[4]);

    // Pixels of four bytes, reversed: mask, blue, green, red becomes red, green, blue, mask, and a
    // big-endian value becomes one of ours. Rows lie one behind the other.
    void (*reverse4)(const PixelArea& area, const uint8_t* source);

    // The same with pixels of three bytes and an opaque mask.
    void (*reverse3)(const PixelArea& area, const uint8_t* source);

    // Pixels of four bytes, each byte into a plane of its own.
    void (*separate)(const uint8_t* pixels, size_t count, uint8_t* const planes[4]);

    // Waits for the stores past the cache. Null where there are none.
    void (*settle)();
};

const TileKernels& scalarTileKernels();
// Null when this processor has not got the instructions.
const TileKernels* sse2TileKernels();
const TileKernels* avx2TileKernels();
// The fastest ones, chosen on the first call.
const TileKernels& tileKernels();

// Walks over packets as unpackRle does without storing values; false where it would store fewer.
bool skipRle(const uint8_t*& data, const uint8_t* end, size_t count);

// Every step-th pixel of a row whose bytes lie in planes.
void interleaveNearest(uint32_t* pixels, const uint8_t* const bytes[4], size_t count, size_t step);

// Pixels `stride` bytes apart, their bytes picked by a recipe.
void gatherPixels(uint32_t* pixels, const uint8_t* source, size_t count, size_t stride,
                  const PixelRecipe& recipe);

}  // namespace vistel
