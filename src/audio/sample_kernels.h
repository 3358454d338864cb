// The inner loops of reading and writing samples. Each exists as a scalar reference, which says
// what it does, and as a faster version with the same results; the processor decides at run time
// which is used, and VISTEL_SCALAR=1 forces the reference.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vistel {

struct SampleKernels {
    const char* name;

    // Exchanges the two bytes of each sample; `to` may be `from`.
    void (*swap16)(const uint8_t* from, size_t samples, uint8_t* to);
    // Three bytes, the most significant first, become a sign-extended 32-bit integer.
    void (*widen24)(const uint8_t* from, size_t samples, int32_t* to);
};

extern const SampleKernels scalarSampleKernels;
const SampleKernels* avx2SampleKernels();  // null where the processor has not got it
const SampleKernels& sampleKernels();

}  // namespace vistel
