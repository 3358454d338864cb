#include "iff/tile_kernels.h"

#include <algorithm>
#include <cstring>

#include "iff/tile_kernel_rows.h"
#include "platform/cpu.h"

namespace vistel {

static void storeRunScalar(uint8_t* values, uint8_t value, size_t length) {
    std::memset(values, value, length);
}

static size_t unpackQrlScalar(const uint8_t*& data, const uint8_t* end, uint8_t* const planes[3],
                              size_t count) {
    size_t done = 0;
    while (done < count && end - data >= 4) {
        const size_t length = (data[0] & 127u) + 1;
        if (length > count - done) break;
        const bool repeat = data[0] >= 128;
        ++data;
        const size_t there = repeat ? length : std::min(length, size_t(end - data) / 3);
        for (size_t i = 0; i < there; ++i)
            for (size_t k = 0; k < 3; ++k) planes[k][done + i] = data[(repeat ? 0 : 3 * i) + k];
        data += repeat ? 3 : 3 * there;
        done += there;
        if (there < length) break;
    }
    return done;
}

static void interleaveScalar(const PixelArea& area, const uint8_t* const bytes[4],
                             const size_t rowBytes[4]) {
    BytePlanes from(bytes);
    for (size_t y = 0; y < area.rows; ++y, from.advance(rowBytes))
        interleaveRow(area.pixels + y * area.rowPixels, from, 0, area.columns);
}

static void reverse4Scalar(const PixelArea& area, const uint8_t* source) {
    for (size_t y = 0; y < area.rows; ++y, source += 4 * area.columns)
        reverse4Row(area.pixels + y * area.rowPixels, source, 0, area.columns);
}

static void reverse3Scalar(const PixelArea& area, const uint8_t* source) {
    for (size_t y = 0; y < area.rows; ++y, source += 3 * area.columns)
        reverse3Row(area.pixels + y * area.rowPixels, source, 0, area.columns);
}

static void separateScalar(const uint8_t* pixels, size_t count, uint8_t* const planes[4]) {
    separatePixels(pixels, 0, count, planes);
}

const TileKernels& scalarTileKernels() {
    static const TileKernels kernels{"scalar",        unpackPackets<storeRunScalar>,
                                     unpackQrlScalar, interleaveScalar,
                                     reverse4Scalar,  reverse3Scalar,
                                     separateScalar,  nullptr};
    return kernels;
}

const TileKernels& tileKernels() {
    static const TileKernels& chosen =
        platform::fastestKernels(scalarTileKernels(), {avx2TileKernels, sse2TileKernels});
    return chosen;
}

bool skipRle(const uint8_t*& data, const uint8_t* end, size_t count) {
    while (count > 0) {
        if (end - data < 2) return false;
        const size_t length = (data[0] & 127u) + 1;
        const size_t bytes = data[0] >= 128 ? 2 : 1 + length;
        if (length > count || bytes > static_cast<size_t>(end - data)) return false;
        data += bytes;
        count -= length;
    }
    return true;
}

void interleaveNearest(uint32_t* pixels, const uint8_t* const bytes[4], size_t count, size_t step) {
    for (size_t i = 0, x = 0; i < count; ++i, x += step)
        pixels[i] = packBytes(bytes[0][x], bytes[1][x], bytes[2][x], bytes[3][x]);
}

void gatherPixels(uint32_t* pixels, const uint8_t* source, size_t count, size_t stride,
                  const PixelRecipe& recipe) {
    // A fixed byte is read from the recipe itself, with a step of nothing.
    const uint8_t* from[4];
    size_t step[4];
    for (int k = 0; k < 4; ++k) {
        const bool moving = recipe.offset[k] >= 0;
        from[k] = moving ? source + recipe.offset[k] : &recipe.fixed[k];
        step[k] = moving ? stride : 0;
    }
    for (size_t i = 0; i < count; ++i)
        pixels[i] = packBytes(from[0][i * step[0]], from[1][i * step[1]], from[2][i * step[2]],
                              from[3][i * step[3]]);
}

}  // namespace vistel
