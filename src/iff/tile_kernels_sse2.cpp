// The tile kernels with SSE2, which every processor this program runs on has.

#include "iff/tile_kernels_x86.h"

namespace vistel {

static void storeRun(uint8_t* values, uint8_t value, size_t length) {
    const __m128i run = _mm_set1_epi8(static_cast<char>(value));
    for (size_t i = 0; i < length; i += 16) store16(values + i, run);
}

// 64 bytes of a packet: `value` where `keep` is zero, the bytes that follow where it is all ones
// (there `value` is zero).
static inline void store64(uint8_t* values, const uint8_t* data, __m128i keep, __m128i value) {
    for (size_t i = 0; i < 64; i += 16)
        store16(values + i, _mm_or_si128(_mm_and_si128(load16(data + i), keep), value));
}

// Unpacks while there is safe data and `out` lies before `stop`. Unless `checked`, no packet that
// starts there can run past `end`.
//
// Both kinds of packet take the same way, only long ones a longer one: to foresee wrongly which
// packet comes next costs more than the stores.
template <bool checked>
static void unpackSafe(const uint8_t*& source, const uint8_t* lastSafe, uint8_t*& values,
                       const uint8_t* stop, const uint8_t* end) {
    const uint8_t* data = source;
    uint8_t* out = values;
    size_t control = *data;
    while (out < stop && data <= lastSafe) {
        const size_t length = (control & 127) + 1;
        if (checked && length > static_cast<size_t>(end - out)) break;
        const __m128i keep = _mm_set1_epi32(static_cast<int>(control >> 7) - 1);
        const __m128i run = _mm_set1_epi32(static_cast<int>(data[1] * 0x01010101u));
        const __m128i value = _mm_andnot_si128(keep, run);
        store64(out, data + 1, keep, value);
        if (length > 64) store64(out + 64, data + 65, keep, value);
        data = nextPacket(data, control);
        control = *data;
        out += length;
    }
    source = data;
    values = out;
}

constexpr auto unpackRleSse2 = unpackInBlocks<unpackSafe<false>, unpackSafe<true>, storeRun>;

static size_t unpackQrlSse2(const uint8_t*& source, const uint8_t* end, uint8_t* const planes[3],
                            size_t count) {
    const uint8_t* data = source;
    uint8_t* const red = planes[0];
    uint8_t* const green = planes[1];
    uint8_t* const blue = planes[2];
    size_t done = 0;
    while (done < count && end - data >= ptrdiff_t{1 + 3 * longestPacket}) {
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

template <bool streaming>
static void interleaveArea(const PixelArea& area, const uint8_t* const bytes[4],
                           const size_t rowBytes[4]) {
    BytePlanes from(bytes);
    for (size_t y = 0; y < area.rows; ++y, from.advance(rowBytes)) {
        uint32_t* const row = area.pixels + y * area.rowPixels;
        size_t x = streaming ? pixelsBeforeLine(row, area.columns) : 0;
        interleaveRow(row, from, 0, x);
        for (; x + 16 <= area.columns; x += 16) interleave16<streaming>(row, from, x);
        interleaveRow(row, from, x, area.columns);
    }
}

static void interleaveSse2(const PixelArea& area, const uint8_t* const bytes[4],
                           const size_t rowBytes[4]) {
    (area.streaming ? interleaveArea<true> : interleaveArea<false>)(area, bytes, rowBytes);
}

template <bool streaming>
static inline void reverse16(uint32_t* pixels, const uint8_t* source) {
    for (size_t i = 0; i < 16; i += 4) {
        __m128i block = load16(source + 4 * i);
        block = _mm_or_si128(_mm_slli_epi16(block, 8), _mm_srli_epi16(block, 8));
        block = _mm_shufflelo_epi16(block, _MM_SHUFFLE(2, 3, 0, 1));
        block = _mm_shufflehi_epi16(block, _MM_SHUFFLE(2, 3, 0, 1));
        store4Pixels<streaming>(pixels + i, block);
    }
}

template <bool streaming>
static void reverse4Area(const PixelArea& area, const uint8_t* source) {
    for (size_t y = 0; y < area.rows; ++y, source += 4 * area.columns) {
        uint32_t* const row = area.pixels + y * area.rowPixels;
        size_t x = streaming ? pixelsBeforeLine(row, area.columns) : 0;
        reverse4Row(row, source, 0, x);
        for (; x + 16 <= area.columns; x += 16) reverse16<streaming>(row + x, source + 4 * x);
        reverse4Row(row, source, x, area.columns);
    }
}

static void reverse4Sse2(const PixelArea& area, const uint8_t* source) {
    (area.streaming ? reverse4Area<true> : reverse4Area<false>)(area, source);
}

// The bytes at even places of both, the first's before the second's.
static inline __m128i evenBytes(__m128i first, __m128i second) {
    const __m128i low = _mm_set1_epi16(0xFF);
    return _mm_packus_epi16(_mm_and_si128(first, low), _mm_and_si128(second, low));
}

static inline __m128i oddBytes(__m128i first, __m128i second) {
    return _mm_packus_epi16(_mm_srli_epi16(first, 8), _mm_srli_epi16(second, 8));
}

static void separateSse2(const uint8_t* pixels, size_t count, uint8_t* const planes[4]) {
    size_t x = 0;
    for (; x + 16 <= count; x += 16) {
        const uint8_t* const from = pixels + 4 * x;
        const __m128i p0 = load16(from), p1 = load16(from + 16);
        const __m128i p2 = load16(from + 32), p3 = load16(from + 48);
        const __m128i even01 = evenBytes(p0, p1), even23 = evenBytes(p2, p3);
        const __m128i odd01 = oddBytes(p0, p1), odd23 = oddBytes(p2, p3);
        store16(planes[0] + x, evenBytes(even01, even23));
        store16(planes[1] + x, evenBytes(odd01, odd23));
        store16(planes[2] + x, oddBytes(even01, even23));
        store16(planes[3] + x, oddBytes(odd01, odd23));
    }
    separatePixels(pixels, x, count, planes);
}

static void settleSse2() { _mm_sfence(); }

const TileKernels* sse2TileKernels() {
    static const TileKernels kernels{"SSE2",         unpackRleSse2, unpackQrlSse2,
                                     interleaveSse2, reverse4Sse2,  scalarTileKernels().reverse3,
                                     separateSse2,   settleSse2};
    return &kernels;
}

}  // namespace vistel
