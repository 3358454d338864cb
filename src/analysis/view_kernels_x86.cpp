// SSE2 and AVX2 versions of the view kernels. Vectors are only ever loaded and stored unaligned:
// Windows keeps the stack aligned to 16 bytes, so nothing here may need a spilled 32-byte register.

#include "analysis/view_kernels.h"

#include <immintrin.h>

#include "analysis/look_up_x86.h"
#include "platform/cpu.h"

namespace vistel {

namespace {

inline __m128i load4(const uint32_t* pixels) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(pixels));
}

inline void store4(uint32_t* pixels, __m128i four) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(pixels), four);
}

// Opaque grey of values 0..255.
inline __m128i grey4(__m128i value) {
    const __m128i twice = _mm_or_si128(value, _mm_slli_epi32(value, 8));
    const __m128i third = _mm_or_si128(_mm_slli_epi32(value, 16), _mm_set1_epi32(int(opaquePixel)));
    return _mm_or_si128(twice, third);
}

void greyPlaneSse2(int plane, uint8_t flip, const uint32_t* stored, size_t pixels, uint32_t* view) {
    const __m128i shift = _mm_cvtsi32_si128(planeShift(plane));
    const __m128i lowest = _mm_set1_epi32(255), flips = _mm_set1_epi32(flip);
    size_t i = 0;
    for (; i + 4 <= pixels; i += 4) {
        const __m128i value = _mm_and_si128(_mm_srl_epi32(load4(stored + i), shift), lowest);
        store4(view + i, grey4(_mm_xor_si128(value, flips)));
    }
    scalarViewKernels().greyPlane(plane, flip, stored + i, pixels - i, view + i);
}

void luminanceSse2(const uint32_t* stored, size_t pixels, uint32_t* view) {
    const __m128i outer = _mm_set1_epi32(0x00FF00FF), twiceGreen = _mm_set1_epi32(0x1FE);
    size_t i = 0;
    for (; i + 4 <= pixels; i += 4) {
        const __m128i pixel = load4(stored + i);
        const __m128i redBlue = _mm_and_si128(pixel, outer);
        const __m128i green = _mm_and_si128(_mm_srli_epi32(pixel, 7), twiceGreen);
        // The sum lies in the lower half; above it is blue once more.
        const __m128i sum =
            _mm_add_epi32(_mm_add_epi32(redBlue, _mm_srli_epi32(redBlue, 16)), green);
        store4(view + i, grey4(_mm_srli_epi32(_mm_slli_epi32(sum, 16), 18)));
    }
    scalarViewKernels().luminance(stored + i, pixels - i, view + i);
}

void greyBytesSse2(const uint8_t* bytes, size_t pixels, uint32_t* view) {
    const __m128i ones = _mm_set1_epi8(-1);
    size_t i = 0;
    for (; i + 16 <= pixels; i += 16) {
        const __m128i value = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + i));
        const __m128i lowTwice = _mm_unpacklo_epi8(value, value);
        const __m128i highTwice = _mm_unpackhi_epi8(value, value);
        const __m128i lowEnd = _mm_unpacklo_epi8(value, ones);
        const __m128i highEnd = _mm_unpackhi_epi8(value, ones);
        store4(view + i, _mm_unpacklo_epi16(lowTwice, lowEnd));
        store4(view + i + 4, _mm_unpackhi_epi16(lowTwice, lowEnd));
        store4(view + i + 8, _mm_unpacklo_epi16(highTwice, highEnd));
        store4(view + i + 12, _mm_unpackhi_epi16(highTwice, highEnd));
    }
    scalarViewKernels().greyBytes(bytes + i, pixels - i, view + i);
}

VISTEL_AVX2 inline __m256i load8(const uint32_t* pixels) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(pixels));
}

VISTEL_AVX2 inline void store8(uint32_t* pixels, __m256i eight) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(pixels), eight);
}

// A shuffle that puts byte `from` of each pixel into its three low bytes and 0 into the highest.
VISTEL_AVX2 inline __m256i greyFrom(int from) {
    const __m256i bytes = _mm256_setr_epi32(0, 4, 8, 12, 0, 4, 8, 12);  // first byte of each pixel
    const __m256i place = _mm256_add_epi32(bytes, _mm256_set1_epi32(from));
    const __m256i thrice = _mm256_or_si256(
        place, _mm256_or_si256(_mm256_slli_epi32(place, 8), _mm256_slli_epi32(place, 16)));
    return _mm256_or_si256(thrice, _mm256_set1_epi32(int(0x80000000)));
}

VISTEL_AVX2 void greyPlaneAvx2(int plane, uint8_t flip, const uint32_t* stored, size_t pixels,
                               uint32_t* view) {
    const __m256i spread = greyFrom(planeShift(plane) / 8);
    // The shuffle leaves 0 in the highest byte: the mask becomes opaque in the same operation.
    const __m256i flips = _mm256_set1_epi32(int(greyPixel(flip)));
    size_t i = 0;
    for (; i + 8 <= pixels; i += 8)
        store8(view + i, _mm256_xor_si256(_mm256_shuffle_epi8(load8(stored + i), spread), flips));
    scalarViewKernels().greyPlane(plane, flip, stored + i, pixels - i, view + i);
}

VISTEL_AVX2 void luminanceAvx2(const uint32_t* stored, size_t pixels, uint32_t* view) {
    const __m256i weights = _mm256_set1_epi32(0x00010201), pairs = _mm256_set1_epi16(1);
    const __m256i spread = greyFrom(0), mask = _mm256_set1_epi32(int(opaquePixel));
    size_t i = 0;
    for (; i + 8 <= pixels; i += 8) {
        const __m256i weighted = _mm256_maddubs_epi16(load8(stored + i), weights);
        const __m256i value = _mm256_srli_epi32(_mm256_madd_epi16(weighted, pairs), 2);
        store8(view + i, _mm256_or_si256(_mm256_shuffle_epi8(value, spread), mask));
    }
    scalarViewKernels().luminance(stored + i, pixels - i, view + i);
}

VISTEL_AVX2 inline __m256i height8(const uint32_t* pixels) {
    return _mm256_and_si256(_mm256_srli_epi32(load8(pixels), 16), _mm256_set1_epi32(255));
}

// shadeOf for eight differences: the same operations in the same order, so the same bytes.
VISTEL_AVX2 inline __m256i shade8(__m256i dx, __m256i dy, __m256 k) {
    const __m256 a = _mm256_mul_ps(_mm256_cvtepi32_ps(dx), k);
    const __m256 b = _mm256_mul_ps(_mm256_cvtepi32_ps(dy), k);
    const __m256 facing = _mm256_add_ps(_mm256_add_ps(a, b), _mm256_set1_ps(lightHeight));
    const __m256 squares = _mm256_add_ps(_mm256_mul_ps(a, a), _mm256_mul_ps(b, b));
    const __m256 length = _mm256_sqrt_ps(_mm256_add_ps(squares, _mm256_set1_ps(1)));
    __m256 light = _mm256_div_ps(_mm256_mul_ps(facing, _mm256_set1_ps(lightScale)), length);
    light = _mm256_max_ps(light, _mm256_setzero_ps());  // what is no number becomes 0
    return _mm256_cvttps_epi32(_mm256_min_ps(light, _mm256_set1_ps(255)));
}

VISTEL_AVX2 inline __m256i shadeAt(const uint32_t* row, const uint32_t* before, size_t i,
                                   __m256 k) {
    const __m256i here = height8(row + i);
    const __m256i dx = _mm256_sub_epi32(here, height8(row + i - 1));
    const __m256i dy =
        before ? _mm256_sub_epi32(here, height8(before + i)) : _mm256_setzero_si256();
    return shade8(dx, dy, k);
}

VISTEL_AVX2 void shadeRowAvx2(float k, const uint32_t* row, const uint32_t* before, size_t pixels,
                              uint8_t* shade) {
    if (pixels == 0) return;
    scalarViewKernels().shadeRow(k, row, before, 1, shade);
    const __m256 factor = _mm256_set1_ps(k);
    size_t i = 1;
    for (; i + 16 <= pixels; i += 16) {
        const __m256i first = shadeAt(row, before, i, factor);
        const __m256i second = shadeAt(row, before, i + 8, factor);
        const __m256i words = _mm256_permute4x64_epi64(_mm256_packs_epi32(first, second), 0xD8);
        const __m128i bytes =
            _mm_packus_epi16(_mm256_castsi256_si128(words), _mm256_extracti128_si256(words, 1));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(shade + i), bytes);
    }
    if (i == pixels) return;
    // The rest begins with the pixel before it, whose shade is known and comes out wrong there.
    const uint8_t known = shade[i - 1];
    scalarViewKernels().shadeRow(k, row + i - 1, before ? before + i - 1 : nullptr, pixels - i + 1,
                                 shade + i - 1);
    shade[i - 1] = known;
}

VISTEL_AVX2 void blendReliefAvx2(ReliefBlend blend, const uint8_t* shade, const uint32_t* stored,
                                 size_t pixels, uint32_t* view) {
    const __m256i factor = _mm256_set1_epi32(int(blend.factor));
    const __m256i base = _mm256_set1_epi32(int(blend.base));
    const __m256i largest = _mm256_set1_epi32(255);
    size_t i = 0;
    for (; i + 8 <= pixels; i += 8) {
        const __m256i pixel = load8(stored + i);
        const __m128i shades = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(shade + i));
        const __m256i s = _mm256_cvtepu8_epi32(shades);
        __m256i out = _mm256_set1_epi32(int(opaquePixel));
        for (int shift = 0; shift < 24; shift += 8) {
            const __m256i colour = _mm256_and_si256(_mm256_srli_epi32(pixel, shift), largest);
            const __m256i lit = _mm256_add_epi32(_mm256_madd_epi16(colour, factor), base);
            const __m256i blended = _mm256_srli_epi32(_mm256_mullo_epi32(lit, s), 16);
            out =
                _mm256_or_si256(out, _mm256_slli_epi32(_mm256_min_epi32(blended, largest), shift));
        }
        store8(view + i, out);
    }
    scalarViewKernels().blendRelief(blend, shade + i, stored + i, pixels - i, view + i);
}

}  // namespace

const ViewKernels* sse2ViewKernels() {
    static const ViewKernels kernels = [] {
        ViewKernels set = scalarViewKernels();
        set.name = "SSE2";
        set.greyPlane = greyPlaneSse2;
        set.luminance = luminanceSse2;
        set.greyBytes = greyBytesSse2;
        return set;
    }();
    return &kernels;
}

const ViewKernels* avx2ViewKernels() {
    static const ViewKernels kernels{"AVX2",        lookUpAvx2,   greyPlaneAvx2, luminanceAvx2,
                                     greyBytesSse2, shadeRowAvx2, true,          blendReliefAvx2};
    return platform::cpuHasAvx2() ? &kernels : nullptr;
}

const ViewKernels* vbmiViewKernels() {
    if (!platform::cpuHasVbmi()) return nullptr;
    static const ViewKernels kernels = [] {
        ViewKernels set = *avx2ViewKernels();
        set.name = "VBMI";
        set.lookUp = lookUpVbmi;
        return set;
    }();
    return &kernels;
}

}  // namespace vistel
