#include "audio/sample_kernels.h"

#include <immintrin.h>

#include "platform/cpu.h"

namespace vistel {

static void swap16Scalar(const uint8_t* from, size_t samples, uint8_t* to) {
    for (size_t i = 0; i < samples; ++i) {
        const uint8_t first = from[2 * i], second = from[2 * i + 1];
        to[2 * i] = second;
        to[2 * i + 1] = first;
    }
}

static void widen24Scalar(const uint8_t* from, size_t samples, int32_t* to) {
    for (size_t i = 0; i < samples; ++i, from += 3)
        to[i] = static_cast<int32_t>(uint32_t{from[0]} << 24 | uint32_t{from[1]} << 16 |
                                     uint32_t{from[2]} << 8) >>
                8;
}

const SampleKernels scalarSampleKernels = {"scalar", swap16Scalar, widen24Scalar};

// Vectors are loaded and stored unaligned, and 256 bits of them as two halves where a shuffle works
// within halves only.

VISTEL_AVX2 static void swap16Avx2(const uint8_t* from, size_t samples, uint8_t* to) {
    const __m256i order = _mm256_setr_epi8(1, 0, 3, 2, 5, 4, 7, 6, 9, 8, 11, 10, 13, 12, 15, 14,  //
                                           1, 0, 3, 2, 5, 4, 7, 6, 9, 8, 11, 10, 13, 12, 15, 14);
    size_t i = 0;
    for (; i + 16 <= samples; i += 16) {
        const __m256i block = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from + 2 * i));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(to + 2 * i),
                            _mm256_shuffle_epi8(block, order));
    }
    swap16Scalar(from + 2 * i, samples - i, to + 2 * i);
}

// The bytes of each sample go to the top three of its 32 bits, from where the shift brings the
// sign. A load takes 16 bytes for the 12 of four samples: the last ones are left to the reference.
VISTEL_AVX2 static void widen24Avx2(const uint8_t* from, size_t samples, int32_t* to) {
    const __m256i order = _mm256_setr_epi8(-1, 2, 1, 0, -1, 5, 4, 3, -1, 8, 7, 6, -1, 11, 10, 9,  //
                                           -1, 2, 1, 0, -1, 5, 4, 3, -1, 8, 7, 6, -1, 11, 10, 9);
    size_t i = 0;
    for (; i + 10 <= samples; i += 8) {
        const auto* bytes = reinterpret_cast<const __m128i*>(from + 3 * i);
        const auto* further = reinterpret_cast<const __m128i*>(from + 3 * i + 12);
        const __m256i block = _mm256_inserti128_si256(
            _mm256_castsi128_si256(_mm_loadu_si128(bytes)), _mm_loadu_si128(further), 1);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(to + i),
                            _mm256_srai_epi32(_mm256_shuffle_epi8(block, order), 8));
    }
    widen24Scalar(from + 3 * i, samples - i, to + i);
}

const SampleKernels* avx2SampleKernels() {
    static const SampleKernels kernels = {"avx2", swap16Avx2, widen24Avx2};
    return platform::cpuHasAvx2() ? &kernels : nullptr;
}

const SampleKernels& sampleKernels() {
    static const SampleKernels& chosen =
        platform::fastestKernels(scalarSampleKernels, {avx2SampleKernels});
    return chosen;
}

}  // namespace vistel
