// Table look-up in registers. Vectors are only ever loaded and stored unaligned: Windows keeps the
// stack aligned to 16 bytes, so nothing here may need a spilled wider register.

#include "analysis/look_up_x86.h"

#include <immintrin.h>

#include "platform/cpu.h"

namespace vistel {

namespace {

// AVX2's shuffle looks up 16 entries by the low four bits of each index byte, and gives 0 where its
// highest bit is set; so a table is 16 rows. Of each pair of rows the wrong one gives 0; then each
// higher bit, moved to the top of its byte, chooses between two results.
VISTEL_AVX2 inline __m256i lookUpRow(const uint8_t* row, __m256i index) {
    const __m128i entries = _mm_loadu_si128(reinterpret_cast<const __m128i*>(row));
    return _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(entries), index);
}

struct RowIndex {
    __m256i even, odd;   // of the rows whose number is even, odd
    __m256i choices[3];  // bits 5, 6 and 7
};

template <int bits>
VISTEL_AVX2 inline __m256i lookUpRows(const uint8_t* rows, const RowIndex& index) {
    if constexpr (bits == 1) {
        return _mm256_or_si256(lookUpRow(rows, index.even), lookUpRow(rows + 16, index.odd));
    } else {
        const __m256i clear = lookUpRows<bits - 1>(rows, index);
        const __m256i set = lookUpRows<bits - 1>(rows + (8 << bits), index);
        return _mm256_blendv_epi8(clear, set, index.choices[bits - 2]);
    }
}

VISTEL_AVX2 inline __m256i lookUp32(const uint8_t* table, __m256i bytes) {
    const __m256i five = _mm256_and_si256(bytes, _mm256_set1_epi8(31));
    const __m256i even = _mm256_add_epi8(five, _mm256_set1_epi8(0x70));  // bit 4 to the top
    const __m256i odd = _mm256_xor_si256(even, _mm256_set1_epi8(-128));
    return lookUpRows<4>(
        table, {even, odd, {_mm256_slli_epi16(bytes, 2), _mm256_slli_epi16(bytes, 1), bytes}});
}

VISTEL_AVX2 inline __m256i load(const uint32_t* pixels) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(pixels));
}

VISTEL_AVX2 inline void store(uint32_t* pixels, __m256i block) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(pixels), block);
}

}  // namespace

VISTEL_AVX2 void lookUpAvx2(const ByteTables& tables, unsigned planes, const uint32_t* stored,
                            size_t pixels, uint32_t* display) {
    // The four bytes of four pixels, gathered by byte; the same order puts them back.
    const __m256i byByte =
        _mm256_setr_epi8(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15,  //
                         0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
    const __m256i written = _mm256_set1_epi32(static_cast<int>(planeBits(planes)));
    const bool all = (planes & 15) == 15;
    size_t i = 0;
    for (; i + 32 <= pixels; i += 32) {
        const __m256i p0 = _mm256_shuffle_epi8(load(stored + i), byByte);
        const __m256i p1 = _mm256_shuffle_epi8(load(stored + i + 8), byByte);
        const __m256i p2 = _mm256_shuffle_epi8(load(stored + i + 16), byByte);
        const __m256i p3 = _mm256_shuffle_epi8(load(stored + i + 24), byByte);
        const __m256i low01 = _mm256_unpacklo_epi32(p0, p1), high01 = _mm256_unpackhi_epi32(p0, p1);
        const __m256i low23 = _mm256_unpacklo_epi32(p2, p3), high23 = _mm256_unpackhi_epi32(p2, p3);
        __m256i red = _mm256_unpacklo_epi64(low01, low23);
        __m256i green = _mm256_unpackhi_epi64(low01, low23);
        __m256i blue = _mm256_unpacklo_epi64(high01, high23);
        __m256i mask = _mm256_unpackhi_epi64(high01, high23);
        if (planes & 8) red = lookUp32(tables.plane[3], red);
        if (planes & 4) green = lookUp32(tables.plane[2], green);
        if (planes & 2) blue = lookUp32(tables.plane[1], blue);
        if (planes & 1) mask = lookUp32(tables.plane[0], mask);
        const __m256i lowRg = _mm256_unpacklo_epi8(red, green);
        const __m256i highRg = _mm256_unpackhi_epi8(red, green);
        const __m256i lowBm = _mm256_unpacklo_epi8(blue, mask);
        const __m256i highBm = _mm256_unpackhi_epi8(blue, mask);
        __m256i out[4] = {_mm256_unpacklo_epi16(lowRg, lowBm), _mm256_unpackhi_epi16(lowRg, lowBm),
                          _mm256_unpacklo_epi16(highRg, highBm),
                          _mm256_unpackhi_epi16(highRg, highBm)};
        for (int k = 0; k < 4; ++k) {
            uint32_t* place = display + i + 8 * k;
            if (!all) out[k] = _mm256_blendv_epi8(load(place), out[k], written);
            store(place, out[k]);
        }
    }
    scalarViewKernels().lookUp(tables, planes, stored + i, pixels - i, display + i);
}

namespace {

// With VBMI one instruction looks up 128 entries, so a table is two of them.
struct HalfTables {
    __m512i lower[2], upper[2];
};

VISTEL_VBMI inline HalfTables halfTables(const uint8_t* table) {
    return {{_mm512_loadu_si512(table), _mm512_loadu_si512(table + 64)},
            {_mm512_loadu_si512(table + 128), _mm512_loadu_si512(table + 192)}};
}

// Looks up the bytes under `bytes`, whose highest bits are `high`; the others stay.
VISTEL_VBMI inline __m512i lookUp64(const HalfTables& table, __mmask64 bytes, __mmask64 high,
                                    __m512i index) {
    const __m512i found = _mm512_mask2_permutex2var_epi8(
        table.lower[0], index, _kandn_mask64(high, bytes), table.lower[1]);
    return _mm512_mask2_permutex2var_epi8(table.upper[0], found, _kand_mask64(high, bytes),
                                          table.upper[1]);
}

// Four bytes of each pixel under masks of the planes' bytes; a mask of nothing skips its plane.
template <unsigned planes>
VISTEL_VBMI void lookUpPlanes(const ByteTables& tables, const uint32_t* stored, size_t pixels,
                              uint32_t* display) {
    constexpr __mmask64 red = 0x1111111111111111u, green = red << 1, blue = red << 2,
                        mask = red << 3;
    const HalfTables maskTable = halfTables(tables.plane[0]),
                     blueTable = halfTables(tables.plane[1]);
    const HalfTables greenTable = halfTables(tables.plane[2]),
                     redTable = halfTables(tables.plane[3]);
    const __m512i written = _mm512_set1_epi32(static_cast<int>(planeBits(planes)));
    for (size_t i = 0; i < pixels; i += 16) {
        const __m512i index = _mm512_loadu_si512(stored + i);
        const __mmask64 high = _mm512_movepi8_mask(index);
        __m512i out = index;
        if constexpr (planes & 8) out = lookUp64(redTable, red, high, out);
        if constexpr (planes & 4) out = lookUp64(greenTable, green, high, out);
        if constexpr (planes & 2) out = lookUp64(blueTable, blue, high, out);
        if constexpr (planes & 1) out = lookUp64(maskTable, mask, high, out);
        if constexpr (planes != 15) {
            const __m512i held = _mm512_loadu_si512(display + i);
            out = _mm512_ternarylogic_epi32(written, out, held, 0xCA);  // written ? out : held
        }
        _mm512_storeu_si512(display + i, out);
    }
}

}  // namespace

VISTEL_VBMI void lookUpVbmi(const ByteTables& tables, unsigned planes, const uint32_t* stored,
                            size_t pixels, uint32_t* display) {
    const size_t whole = pixels - pixels % 16;
    switch (planes & 15) {
        case 15:
            lookUpPlanes<15>(tables, stored, whole, display);
            break;
        case 14:
            lookUpPlanes<14>(tables, stored, whole, display);
            break;
        case 8:
            lookUpPlanes<8>(tables, stored, whole, display);
            break;
        case 4:
            lookUpPlanes<4>(tables, stored, whole, display);
            break;
        case 2:
            lookUpPlanes<2>(tables, stored, whole, display);
            break;
        case 1:
            lookUpPlanes<1>(tables, stored, whole, display);
            break;
        case 0:
            return;
        default:
            return lookUpAvx2(tables, planes, stored, pixels, display);  // no view shows these
    }
    scalarViewKernels().lookUp(tables, planes, stored + whole, pixels - whole, display + whole);
}

}  // namespace vistel
