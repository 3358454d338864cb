#include "analysis/view_kernels.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "platform/process.h"

namespace vistel {

namespace {

constexpr uint32_t opaque = 0xFF000000;

constexpr uint32_t grey(uint32_t value) { return opaque | value * 0x010101u; }

// ---- look-up table: one loop for each set of planes ----

// The tables with every entry at its byte's place in the pixel.
struct PlacedTables {
    uint32_t plane[4][256];
};

template <unsigned planes>
uint32_t lookUpPixel(const PlacedTables& tables, uint32_t pixel) {
    uint32_t found = 0;
    if constexpr (planes & 1) found |= tables.plane[0][pixel >> 24];
    if constexpr (planes & 2) found |= tables.plane[1][pixel >> 16 & 255];
    if constexpr (planes & 4) found |= tables.plane[2][pixel >> 8 & 255];
    if constexpr (planes & 8) found |= tables.plane[3][pixel & 255];
    return found;
}

template <unsigned planes>
void lookUpPlanes(const ByteTables& tables, const uint32_t* stored, size_t pixels,
                  uint32_t* display) {
    PlacedTables placed;
    for (int plane = 0; plane < 4; ++plane)
        for (int i = 0; i < 256; ++i)
            placed.plane[plane][i] = uint32_t{tables.plane[plane][i]} << planeShift(plane);
    constexpr uint32_t kept = ~planeBits(planes);
    const auto one = [&](size_t i) {
        display[i] = (display[i] & kept) | lookUpPixel<planes>(placed, stored[i]);
    };
    size_t i = 0;
    for (; i + 8 <= pixels; i += 8) {
#pragma GCC unroll 8
        for (size_t k = 0; k < 8; ++k) one(i + k);
    }
    for (; i < pixels; ++i) one(i);
}

using LookUp = void (*)(const ByteTables&, const uint32_t*, size_t, uint32_t*);

template <size_t... planes>
constexpr std::array<LookUp, sizeof...(planes)> lookUpLoops(std::index_sequence<planes...>) {
    return {lookUpPlanes<planes>...};
}

void lookUpScalar(const ByteTables& tables, unsigned planes, const uint32_t* stored, size_t pixels,
                  uint32_t* display) {
    static constexpr auto loops = lookUpLoops(std::make_index_sequence<16>());
    loops[planes & 15](tables, stored, pixels, display);
}

// ---- grey views ----

void greyPlaneScalar(int plane, uint8_t flip, const uint32_t* stored, size_t pixels,
                     uint32_t* view) {
    const int shift = planeShift(plane);
    for (size_t i = 0; i < pixels; ++i) view[i] = grey((stored[i] >> shift & 255) ^ flip);
}

void luminanceScalar(const uint32_t* stored, size_t pixels, uint32_t* view) {
    for (size_t i = 0; i < pixels; ++i) {
        const uint32_t pixel = stored[i];
        view[i] = grey(((pixel & 255) + 2 * (pixel >> 8 & 255) + (pixel >> 16 & 255)) >> 2);
    }
}

void greyBytesScalar(const uint8_t* bytes, size_t pixels, uint32_t* view) {
    for (size_t i = 0; i < pixels; ++i) view[i] = grey(bytes[i]);
}

// ---- relief ----

void shadeRowScalar(float k, const uint32_t* row, const uint32_t* before, size_t pixels,
                    uint8_t* shade) {
    for (size_t i = 0; i < pixels; ++i) {
        const int here = reliefHeight(row[i]);
        const int dx = i > 0 ? here - reliefHeight(row[i - 1]) : 0;
        const int dy = before ? here - reliefHeight(before[i]) : 0;
        shade[i] = shadeOf(k, dx, dy);
    }
}

// Blue is held at 255 from 256 on, green and red from 255 on: the same for every value.
void blendReliefScalar(ReliefBlend blend, const uint8_t* shade, const uint32_t* stored,
                       size_t pixels, uint32_t* view) {
    const auto blended = [&](uint32_t colour, uint32_t s) {
        return std::min(((colour & 255) * blend.factor + blend.base) * s >> 16, 255u);
    };
    for (size_t i = 0; i < pixels; ++i) {
        const uint32_t pixel = stored[i], s = shade[i];
        view[i] = opaque | blended(pixel >> 16, s) << 16 | blended(pixel >> 8, s) << 8 |
                  blended(pixel, s);
    }
}

}  // namespace

uint8_t shadeOf(float k, int dx, int dy) {
    const float a = dx * k, b = dy * k;
    const float light = (a + b + lightHeight) * lightScale / std::sqrt(a * a + b * b + 1);
    if (!(light > 0)) return 0;
    return static_cast<uint8_t>(std::min(light, 255.0f));
}

const ViewKernels& scalarViewKernels() {
    static const ViewKernels kernels{"scalar",        lookUpScalar,     greyPlaneScalar,
                                     luminanceScalar, greyBytesScalar,  shadeRowScalar,
                                     false,           blendReliefScalar};
    return kernels;
}

const ViewKernels& viewKernels() {
    static const ViewKernels& chosen = []() -> const ViewKernels& {
        if (platform::environmentVariable("VISTEL_SCALAR").value_or("") == "1")
            return scalarViewKernels();
        for (auto* find : {vbmiViewKernels, avx2ViewKernels, sse2ViewKernels})
            if (const ViewKernels* fast = find()) return *fast;
        return scalarViewKernels();
    }();
    return chosen;
}

}  // namespace vistel
