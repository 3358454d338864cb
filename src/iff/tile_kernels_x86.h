// What the SSE2 and the AVX2 kernels have in common. Internal to them.
#pragma once

#include <emmintrin.h>

#include "iff/tile_kernel_rows.h"
#include "iff/tile_kernels.h"

namespace vistel {

// While this much data is left, the longest packet and the control byte behind it can be read
// without asking.
constexpr ptrdiff_t safeData = 1 + longestPacket + 1;

// Where the packet behind this one starts. No branch: of which kind a packet is cannot be foretold.
inline const uint8_t* nextPacket(const uint8_t* data, size_t control) {
    const uint8_t* const behindRun = data + 2;
    const bool literal = __builtin_expect_with_probability(control < 128, 1, 0.5);
    return literal ? behindRun + control : behindRun;
}

// Unpacks packets while there is safe data behind `source` and `values` lies before `stop`.
using UnpackSafe = void (*)(const uint8_t*& source, const uint8_t* lastSafe, uint8_t*& values,
                            const uint8_t* stop, const uint8_t* end);

// TileKernels::unpackRle: without asking where no packet can run past the values, then asking, then
// packet by packet at the end of the data.
template <UnpackSafe unasked, UnpackSafe asked, void (*storeRun)(uint8_t*, uint8_t, size_t)>
size_t unpackInBlocks(const uint8_t*& source, const uint8_t* end, uint8_t* values, size_t count,
                      size_t enough) {
    uint8_t* out = values;
    const uint8_t* const outEnd = values + count;
    const uint8_t* const stop = values + enough;
    if (end - source >= safeData) {
        const uint8_t* const lastSafe = end - safeData;
        if (count > 127) unasked(source, lastSafe, out, std::min(stop, outEnd - 127), outEnd);
        if (source <= lastSafe) asked(source, lastSafe, out, stop, outEnd);
    }
    const size_t done = static_cast<size_t>(out - values);
    return done +
           unpackPackets<storeRun>(source, end, out, count - done, enough - std::min(done, enough));
}

inline __m128i load16(const uint8_t* bytes) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
}

inline void store16(uint8_t* bytes, __m128i block) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), block);
}

// Four pixels; streaming, they must be aligned.
template <bool streaming>
inline void store4Pixels(uint32_t* pixels, __m128i block) {
    auto* const out = reinterpret_cast<__m128i*>(pixels);
    if (streaming)
        _mm_stream_si128(out, block);
    else
        _mm_storeu_si128(out, block);
}

// Pixels [x, x + 16) of a row.
template <bool streaming>
inline void interleave16(uint32_t* row, const BytePlanes& from, size_t x) {
    const __m128i b0 = load16(from.b0 + x), b1 = load16(from.b1 + x);
    const __m128i b2 = load16(from.b2 + x), b3 = load16(from.b3 + x);
    const __m128i low01 = _mm_unpacklo_epi8(b0, b1), high01 = _mm_unpackhi_epi8(b0, b1);
    const __m128i low23 = _mm_unpacklo_epi8(b2, b3), high23 = _mm_unpackhi_epi8(b2, b3);
    store4Pixels<streaming>(row + x, _mm_unpacklo_epi16(low01, low23));
    store4Pixels<streaming>(row + x + 4, _mm_unpackhi_epi16(low01, low23));
    store4Pixels<streaming>(row + x + 8, _mm_unpacklo_epi16(high01, high23));
    store4Pixels<streaming>(row + x + 12, _mm_unpackhi_epi16(high01, high23));
}

}  // namespace vistel
