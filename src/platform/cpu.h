// Which instruction sets the processor has, and the choice between versions of one kernel. Kernels
// for a set beyond the baseline carry its attribute, so that one program holds all of them.
#pragma once

#include <initializer_list>

#define VISTEL_AVX2 __attribute__((target("avx2")))
#define VISTEL_VBMI __attribute__((target("avx2,avx512f,avx512bw,avx512vbmi")))

namespace vistel::platform {

// Whether the processor has, and the system keeps the registers of, what the attributes name.
bool cpuHasAvx2();
bool cpuHasVbmi();

// Whether the environment variable VISTEL_SCALAR=1 forces the scalar references.
bool scalarKernelsForced();

// The first version that is there, the fastest being listed first; else, or where it is forced, the
// scalar reference. Each of `fast` returns null where this processor has not got the instructions.
template <class Kernels>
const Kernels& fastestKernels(const Kernels& scalar,
                              std::initializer_list<const Kernels* (*)()> fast) {
    if (scalarKernelsForced()) return scalar;
    for (const auto find : fast)
        if (const Kernels* found = find()) return *found;
    return scalar;
}

}  // namespace vistel::platform
