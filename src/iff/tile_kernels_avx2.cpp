// The tile kernels with AVX2. Vectors in memory are never assumed to be aligned, but for pixels
// that are streamed: Windows keeps the stack aligned to 16 bytes, so a 32-byte register that is
// spilled there must be moved unaligned (the assembler is told so).

#include <immintrin.h>

#include "iff/tile_kernels_x86.h"
#include "platform/cpu.h"

namespace vistel {

VISTEL_AVX2 static inline __m256i load32(const uint8_t* bytes) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes));
}

VISTEL_AVX2 static inline void store32(uint8_t* bytes, __m256i block) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(bytes), block);
}

// Eight pixels; streaming, they must be aligned.
template <bool streaming>
VISTEL_AVX2 static inline void store8Pixels(uint32_t* pixels, __m256i block) {
    auto* const out = reinterpret_cast<__m256i*>(pixels);
    if (streaming)
        _mm256_stream_si256(out, block);
    else
        _mm256_storeu_si256(out, block);
}

VISTEL_AVX2 static void storeRun(uint8_t* values, uint8_t value, size_t length) {
    const __m256i run = _mm256_set1_epi8(static_cast<char>(value));
    for (size_t i = 0; i < length; i += 32) store32(values + i, run);
}

// 32 bytes of a packet: those that follow where the bytes of `literal` are all ones, else its
// value.
VISTEL_AVX2 static inline void storePacket(uint8_t* values, const uint8_t* data, __m256i value,
                                           __m256i literal) {
    store32(values, _mm256_blendv_epi8(value, load32(data), literal));
}

// Unpacks while there is safe data and `out` lies before `stop`. Unless `checked`, no packet that
// starts there can run past `end`.
//
// Every packet takes the same way without a branch, as if it were as long as packets can be: to
// foresee wrongly which packet comes next costs more than the stores.
template <bool checked>
VISTEL_AVX2 static void unpackSafe(const uint8_t*& source, const uint8_t* lastSafe,
                                   uint8_t*& values, const uint8_t* stop, const uint8_t* end) {
    const __m256i first = _mm256_setzero_si256(), second = _mm256_set1_epi8(1);
    const __m256i minusOne = _mm256_set1_epi8(-1);
    const uint8_t* data = source;
    uint8_t* out = values;
    size_t control = *data;
    while (out < stop && data <= lastSafe) {
        const size_t length = (control & 127) + 1;
        if (checked && length > static_cast<size_t>(end - out)) break;
        const __m256i packet = _mm256_broadcastsi128_si256(load16(data));
        const __m256i literal = _mm256_cmpgt_epi8(_mm256_shuffle_epi8(packet, first), minusOne);
        const __m256i value = _mm256_shuffle_epi8(packet, second);
        storePacket(out, data + 1, value, literal);
        storePacket(out + 32, data + 33, value, literal);
        storePacket(out + 64, data + 65, value, literal);
        storePacket(out + 96, data + 97, value, literal);
        data = nextPacket(data, control);
        control = *data;
        out += length;
    }
    source = data;
    values = out;
}

constexpr auto unpackRleAvx2 = unpackInBlocks<unpackSafe<false>, unpackSafe<true>, storeRun>;

// Pixels [x, x + 32) of a row.
template <bool streaming>
VISTEL_AVX2 static inline void interleave32(uint32_t* row, const BytePlanes& from, size_t x) {
    const __m256i b0 = load32(from.b0 + x), b1 = load32(from.b1 + x);
    const __m256i b2 = load32(from.b2 + x), b3 = load32(from.b3 + x);
    const __m256i low01 = _mm256_unpacklo_epi8(b0, b1), high01 = _mm256_unpackhi_epi8(b0, b1);
    const __m256i low23 = _mm256_unpacklo_epi8(b2, b3), high23 = _mm256_unpackhi_epi8(b2, b3);
    // Pixels 0-3 and 16-19, 4-7 and 20-23, 8-11 and 24-27, 12-15 and 28-31.
    const __m256i p0 = _mm256_unpacklo_epi16(low01, low23);
    const __m256i p1 = _mm256_unpackhi_epi16(low01, low23);
    const __m256i p2 = _mm256_unpacklo_epi16(high01, high23);
    const __m256i p3 = _mm256_unpackhi_epi16(high01, high23);
    store8Pixels<streaming>(row + x, _mm256_permute2x128_si256(p0, p1, 0x20));
    store8Pixels<streaming>(row + x + 8, _mm256_permute2x128_si256(p2, p3, 0x20));
    store8Pixels<streaming>(row + x + 16, _mm256_permute2x128_si256(p0, p1, 0x31));
    store8Pixels<streaming>(row + x + 24, _mm256_permute2x128_si256(p2, p3, 0x31));
}

template <bool streaming>
VISTEL_AVX2 static void interleaveArea(const PixelArea& area, const uint8_t* const bytes[4],
                                       const size_t rowBytes[4]) {
    BytePlanes from(bytes);
    for (size_t y = 0; y < area.rows; ++y, from.advance(rowBytes)) {
        uint32_t* const row = area.pixels + y * area.rowPixels;
        size_t x = streaming ? pixelsBeforeLine(row, area.columns) : 0;
        interleaveRow(row, from, 0, x);
        for (; x + 32 <= area.columns; x += 32) interleave32<streaming>(row, from, x);
        for (; x + 16 <= area.columns; x += 16) interleave16<streaming>(row, from, x);
        interleaveRow(row, from, x, area.columns);
    }
}

VISTEL_AVX2 static void interleaveAvx2(const PixelArea& area, const uint8_t* const bytes[4],
                                       const size_t rowBytes[4]) {
    (area.streaming ? interleaveArea<true> : interleaveArea<false>)(area, bytes, rowBytes);
}

template <bool streaming>
VISTEL_AVX2 static void reverse4Area(const PixelArea& area, const uint8_t* source) {
    const __m256i order = _mm256_setr_epi8(3, 2, 1, 0, 7, 6, 5, 4, 11, 10, 9, 8, 15, 14, 13, 12,  //
                                           3, 2, 1, 0, 7, 6, 5, 4, 11, 10, 9, 8, 15, 14, 13, 12);
    for (size_t y = 0; y < area.rows; ++y, source += 4 * area.columns) {
        uint32_t* const row = area.pixels + y * area.rowPixels;
        size_t x = streaming ? pixelsBeforeLine(row, area.columns) : 0;
        reverse4Row(row, source, 0, x);
        for (; x + 16 <= area.columns; x += 16) {
            const uint8_t* const from = source + 4 * x;
            store8Pixels<streaming>(row + x, _mm256_shuffle_epi8(load32(from), order));
            store8Pixels<streaming>(row + x + 8, _mm256_shuffle_epi8(load32(from + 32), order));
        }
        reverse4Row(row, source, x, area.columns);
    }
}

VISTEL_AVX2 static void reverse4Avx2(const PixelArea& area, const uint8_t* source) {
    (area.streaming ? reverse4Area<true> : reverse4Area<false>)(area, source);
}

// Sixteen pixels are 48 bytes: the last load starts 4 bytes early so as not to reach behind them.
template <bool streaming>
VISTEL_AVX2 static void reverse3Area(const PixelArea& area, const uint8_t* source) {
    const __m128i order = _mm_setr_epi8(2, 1, 0, -1, 5, 4, 3, -1, 8, 7, 6, -1, 11, 10, 9, -1);
    const __m128i late = _mm_setr_epi8(6, 5, 4, -1, 9, 8, 7, -1, 12, 11, 10, -1, 15, 14, 13, -1);
    const __m128i opaque = _mm_set1_epi32(static_cast<int>(0xFF000000u));
    for (size_t y = 0; y < area.rows; ++y, source += 3 * area.columns) {
        uint32_t* const row = area.pixels + y * area.rowPixels;
        size_t x = streaming ? pixelsBeforeLine(row, area.columns) : 0;
        reverse3Row(row, source, 0, x);
        for (; x + 16 <= area.columns; x += 16) {
            const uint8_t* const from = source + 3 * x;
            const __m128i p0 = _mm_shuffle_epi8(load16(from), order);
            const __m128i p1 = _mm_shuffle_epi8(load16(from + 12), order);
            const __m128i p2 = _mm_shuffle_epi8(load16(from + 24), order);
            const __m128i p3 = _mm_shuffle_epi8(load16(from + 32), late);
            store4Pixels<streaming>(row + x, _mm_or_si128(p0, opaque));
            store4Pixels<streaming>(row + x + 4, _mm_or_si128(p1, opaque));
            store4Pixels<streaming>(row + x + 8, _mm_or_si128(p2, opaque));
            store4Pixels<streaming>(row + x + 12, _mm_or_si128(p3, opaque));
        }
        reverse3Row(row, source, x, area.columns);
    }
}

VISTEL_AVX2 static void reverse3Avx2(const PixelArea& area, const uint8_t* source) {
    (area.streaming ? reverse3Area<true> : reverse3Area<false>)(area, source);
}

const TileKernels* avx2TileKernels() {
    static const TileKernels kernels{
        "AVX2",       unpackRleAvx2, sse2TileKernels()->unpackQrl, interleaveAvx2,
        reverse4Avx2, reverse3Avx2,  sse2TileKernels()->separate,  sse2TileKernels()->settle};
    return platform::cpuHasAvx2() ? &kernels : nullptr;
}

}  // namespace vistel
