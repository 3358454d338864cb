#include "analysis/view_kernels.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <utility>

#include "platform/cpu.h"

namespace vistel {

namespace {

// ---- look-up table: one loop for each set of planes ----

// The tables of two neighbouring planes as one, which halves the look-ups.
struct PairTable {
    uint16_t pair[65536];

    void build(const uint8_t* low, const uint8_t* high) {
        for (unsigned i = 0; i < 256; ++i)
            for (unsigned k = 0; k < 256; ++k)
                pair[i * 256 + k] = static_cast<uint16_t>(high[i] << 8 | low[k]);
    }
};

// The upper (0) and lower (1) half of a pixel: planes 0 and 1, 2 and 3.
constexpr unsigned planesOfHalf(unsigned planes, int half) { return planes >> 2 * half & 3; }

struct LookUpTables {
    const ByteTables* bytes;
    PairTable pairs[2];  // of the halves
};

// A set of planes, and whether the tables of pairs are filled for the halves that have both.
template <unsigned planes, bool pairs>
struct LookUp {
    template <int half>
    static uint16_t found(const LookUpTables& tables, uint16_t stored) {
        constexpr unsigned wanted = planesOfHalf(planes, half);
        if constexpr (pairs && wanted == 3) return tables.pairs[half].pair[stored];
        uint16_t found = 0;
        if constexpr (wanted & 1)
            found = static_cast<uint16_t>(tables.bytes->plane[2 * half][stored >> 8] << 8);
        if constexpr (wanted & 2) found |= tables.bytes->plane[2 * half + 1][stored & 255];
        return found;
    }

    // Stores the bytes of the planes alone, so that nothing need be read to keep the others.
    template <int half>
    static void store(uint16_t found, uint8_t* place) {
        constexpr unsigned wanted = planesOfHalf(planes, half);
        if constexpr (wanted == 3) std::memcpy(place, &found, sizeof found);
        if constexpr (wanted == 1) place[1] = static_cast<uint8_t>(found >> 8);
        if constexpr (wanted == 2) place[0] = static_cast<uint8_t>(found);
    }

    template <size_t count>
    static void block(const LookUpTables& tables, const uint32_t* stored, uint32_t* display) {
        uint16_t lower[count], upper[count];
#pragma GCC unroll 4
        for (size_t k = 0; k < count; ++k) {
            lower[k] = found<1>(tables, static_cast<uint16_t>(stored[k]));
            upper[k] = found<0>(tables, static_cast<uint16_t>(stored[k] >> 16));
        }
        auto* bytes = reinterpret_cast<uint8_t*>(display);
#pragma GCC unroll 4
        for (size_t k = 0; k < count; ++k) {
            store<1>(lower[k], bytes + 4 * k);
            store<0>(upper[k], bytes + 4 * k + 2);
        }
    }

    static void run(const LookUpTables& tables, const uint32_t* stored, size_t pixels,
                    uint32_t* display) {
        size_t i = 0;
        for (; i + 4 <= pixels; i += 4) block<4>(tables, stored + i, display + i);
        for (; i < pixels; ++i) block<1>(tables, stored + i, display + i);
    }
};

using LookUpLoop = void (*)(const LookUpTables&, const uint32_t*, size_t, uint32_t*);

template <bool pairs, unsigned... planes>
constexpr std::array<LookUpLoop, 16> lookUpLoops(std::integer_sequence<unsigned, planes...>) {
    return {LookUp<planes, pairs>::run...};
}

// Filling a table of pairs takes longer than it saves for fewer pixels.
constexpr size_t pairsPay = size_t{1} << 18;

void lookUpScalar(const ByteTables& tables, unsigned planes, const uint32_t* stored, size_t pixels,
                  uint32_t* display) {
    static constexpr auto sets = std::make_integer_sequence<unsigned, 16>();
    static constexpr auto byteLoops = lookUpLoops<false>(sets), pairLoops = lookUpLoops<true>(sets);
    static thread_local LookUpTables all;
    all.bytes = &tables;
    if (pixels < pairsPay) return byteLoops[planes & 15](all, stored, pixels, display);
    for (const int half : {0, 1})
        if (planesOfHalf(planes, half) == 3)
            all.pairs[half].build(tables.plane[2 * half + 1], tables.plane[2 * half]);
    pairLoops[planes & 15](all, stored, pixels, display);
}

// ---- grey views ----

void greyPlaneScalar(int plane, uint8_t flip, const uint32_t* stored, size_t pixels,
                     uint32_t* view) {
    const int shift = planeShift(plane);
    for (size_t i = 0; i < pixels; ++i) view[i] = greyPixel((stored[i] >> shift & 255) ^ flip);
}

void luminanceScalar(const uint32_t* stored, size_t pixels, uint32_t* view) {
    for (size_t i = 0; i < pixels; ++i) {
        const uint32_t pixel = stored[i];
        view[i] = greyPixel(((pixel & 255) + 2 * (pixel >> 8 & 255) + (pixel >> 16 & 255)) >> 2);
    }
}

void greyBytesScalar(const uint8_t* bytes, size_t pixels, uint32_t* view) {
    for (size_t i = 0; i < pixels; ++i) view[i] = greyPixel(bytes[i]);
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
        view[i] = opaquePixel | blended(pixel >> 16, s) << 16 | blended(pixel >> 8, s) << 8 |
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
    static const ViewKernels& chosen = platform::fastestKernels(
        scalarViewKernels(), {vbmiViewKernels, avx2ViewKernels, sse2ViewKernels});
    return chosen;
}

}  // namespace vistel
