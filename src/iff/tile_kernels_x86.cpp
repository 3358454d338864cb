// SSE2 and AVX2 versions of the tile kernels. Vectors are only ever loaded and stored unaligned:
// Windows keeps the stack aligned to 16 bytes, so nothing here may need a spilled 32-byte register.

#include "iff/tile_kernels.h"

#include <immintrin.h>

#include <algorithm>
#include <cstring>

namespace vistel {

#define VISTEL_AVX2 __attribute__((target("avx2")))

static void storeRun(uint8_t* values, uint8_t value, size_t length) {
    const __m128i run = _mm_set1_epi8(static_cast<char>(value));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(values), run);
    for (size_t i = 16; i < length; i += 16)
        _mm_storeu_si128(reinterpret_cast<__m128i*>(values + i), run);
}

// Copies at least `length` bytes in whole blocks of 16.
static void copyBlocks(uint8_t* values, const uint8_t* data, size_t length) {
    size_t i = 0;
    do {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(data + i));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(values + i), block);
        i += 16;
    } while (i < length);
}

// A packet is at most 128 values: while this much data is left, blocks may be read without asking.
static constexpr ptrdiff_t safeData = 1 + 128 + 16;

static size_t unpackRleSse2(const uint8_t*& source, const uint8_t* end, uint8_t* values,
                            size_t count) {
    const uint8_t* data = source;
    size_t done = 0;
    while (done < count && end - data >= safeData) {
        const uint8_t control = data[0];
        const size_t length = (control & 127u) + 1;
        if (length > count - done) {
            source = data;
            return done;
        }
        if (control >= 128) {
            storeRun(values + done, data[1], length);
            data += 2;
        } else {
            copyBlocks(values + done, data + 1, length);
            data += 1 + length;
        }
        done += length;
    }
    source = data;
    if (done == count) return done;
    return done + scalarTileKernels().unpackRle(source, end, values + done, count - done);
}

static size_t unpackQrlSse2(const uint8_t*& source, const uint8_t* end, uint8_t* const planes[3],
                            size_t count) {
    const uint8_t* data = source;
    uint8_t* const red = planes[0];
    uint8_t* const green = planes[1];
    uint8_t* const blue = planes[2];
    size_t done = 0;
    while (done < count && end - data >= 1 + 3 * 128) {
        const uint8_t control = data[0];
        const size_t length = (control & 127u) + 1;
        if (length > count - done) {
            source = data;
            return done;
        }
        ++data;
        if (control >= 128) {
            storeRun(red + done, data[0], length);
            storeRun(green + done, data[1], length);
            storeRun(blue + done, data[2], length);
            data += 3;
        } else {
            for (size_t i = done; i < done + length; ++i, data += 3) {
                red[i] = data[0];
                green[i] = data[1];
                blue[i] = data[2];
            }
        }
        done += length;
    }
    source = data;
    if (done == count) return done;
    uint8_t* const rest[3] = {red + done, green + done, blue + done};
    return done + scalarTileKernels().unpackQrl(source, end, rest, count - done);
}

static __m128i load16(const uint8_t* bytes) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
}

static void interleaveSse2(uint32_t* pixels, const uint8_t* const bytes[4], size_t count) {
    size_t i = 0;
    for (; i + 16 <= count; i += 16) {
        const __m128i b0 = load16(bytes[0] + i), b1 = load16(bytes[1] + i);
        const __m128i b2 = load16(bytes[2] + i), b3 = load16(bytes[3] + i);
        const __m128i low01 = _mm_unpacklo_epi8(b0, b1), high01 = _mm_unpackhi_epi8(b0, b1);
        const __m128i low23 = _mm_unpacklo_epi8(b2, b3), high23 = _mm_unpackhi_epi8(b2, b3);
        auto* out = reinterpret_cast<__m128i*>(pixels + i);
        _mm_storeu_si128(out, _mm_unpacklo_epi16(low01, low23));
        _mm_storeu_si128(out + 1, _mm_unpackhi_epi16(low01, low23));
        _mm_storeu_si128(out + 2, _mm_unpacklo_epi16(high01, high23));
        _mm_storeu_si128(out + 3, _mm_unpackhi_epi16(high01, high23));
    }
    const uint8_t* const rest[4] = {bytes[0] + i, bytes[1] + i, bytes[2] + i, bytes[3] + i};
    scalarTileKernels().interleave(pixels + i, rest, count - i);
}

static void reverse4Sse2(uint32_t* pixels, const uint8_t* source, size_t count) {
    size_t i = 0;
    for (; i + 4 <= count; i += 4) {
        __m128i block = load16(source + 4 * i);
        block = _mm_or_si128(_mm_slli_epi16(block, 8), _mm_srli_epi16(block, 8));
        block = _mm_shufflelo_epi16(block, _MM_SHUFFLE(2, 3, 0, 1));
        block = _mm_shufflehi_epi16(block, _MM_SHUFFLE(2, 3, 0, 1));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(pixels + i), block);
    }
    scalarTileKernels().reverse4(pixels + i, source + 4 * i, count - i);
}

VISTEL_AVX2 static __m256i load32(const uint8_t* bytes) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes));
}

VISTEL_AVX2 static void interleaveAvx2(uint32_t* pixels, const uint8_t* const bytes[4],
                                       size_t count) {
    size_t i = 0;
    for (; i + 32 <= count; i += 32) {
        const __m256i b0 = load32(bytes[0] + i), b1 = load32(bytes[1] + i);
        const __m256i b2 = load32(bytes[2] + i), b3 = load32(bytes[3] + i);
        const __m256i low01 = _mm256_unpacklo_epi8(b0, b1), high01 = _mm256_unpackhi_epi8(b0, b1);
        const __m256i low23 = _mm256_unpacklo_epi8(b2, b3), high23 = _mm256_unpackhi_epi8(b2, b3);
        // Pixels 0-3 and 16-19, 4-7 and 20-23, 8-11 and 24-27, 12-15 and 28-31.
        const __m256i p0 = _mm256_unpacklo_epi16(low01, low23);
        const __m256i p1 = _mm256_unpackhi_epi16(low01, low23);
        const __m256i p2 = _mm256_unpacklo_epi16(high01, high23);
        const __m256i p3 = _mm256_unpackhi_epi16(high01, high23);
        auto* out = reinterpret_cast<__m256i*>(pixels + i);
        _mm256_storeu_si256(out, _mm256_permute2x128_si256(p0, p1, 0x20));
        _mm256_storeu_si256(out + 1, _mm256_permute2x128_si256(p2, p3, 0x20));
        _mm256_storeu_si256(out + 2, _mm256_permute2x128_si256(p0, p1, 0x31));
        _mm256_storeu_si256(out + 3, _mm256_permute2x128_si256(p2, p3, 0x31));
    }
    const uint8_t* const rest[4] = {bytes[0] + i, bytes[1] + i, bytes[2] + i, bytes[3] + i};
    interleaveSse2(pixels + i, rest, count - i);
}

VISTEL_AVX2 static void reverse4Avx2(uint32_t* pixels, const uint8_t* source, size_t count) {
    const __m256i order = _mm256_setr_epi8(3, 2, 1, 0, 7, 6, 5, 4, 11, 10, 9, 8, 15, 14, 13, 12,  //
                                           3, 2, 1, 0, 7, 6, 5, 4, 11, 10, 9, 8, 15, 14, 13, 12);
    size_t i = 0;
    for (; i + 8 <= count; i += 8)
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(pixels + i),
                            _mm256_shuffle_epi8(load32(source + 4 * i), order));
    scalarTileKernels().reverse4(pixels + i, source + 4 * i, count - i);
}

VISTEL_AVX2 static void reverse3Avx2(uint32_t* pixels, const uint8_t* source, size_t count) {
    const __m128i order = _mm_setr_epi8(2, 1, 0, -1, 5, 4, 3, -1, 8, 7, 6, -1, 11, 10, 9, -1);
    const __m128i opaque = _mm_set1_epi32(static_cast<int>(0xFF000000u));
    size_t i = 0;
    // A load takes 16 bytes of which 12 are used: two more pixels must follow.
    for (; i + 6 <= count; i += 4) {
        const __m128i four = _mm_shuffle_epi8(load16(source + 3 * i), order);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(pixels + i), _mm_or_si128(four, opaque));
    }
    scalarTileKernels().reverse3(pixels + i, source + 3 * i, count - i);
}

const TileKernels* sse2TileKernels() {
    static const TileKernels kernels{"SSE2",         unpackRleSse2, unpackQrlSse2,
                                     interleaveSse2, reverse4Sse2,  scalarTileKernels().reverse3};
    return &kernels;
}

const TileKernels* avx2TileKernels() {
    static const TileKernels kernels{"AVX2",         unpackRleSse2, unpackQrlSse2,
                                     interleaveAvx2, reverse4Avx2,  reverse3Avx2};
    return __builtin_cpu_supports("avx2") ? &kernels : nullptr;
}

}  // namespace vistel
