#include "platform/cpu.h"

#include "platform/process.h"

namespace vistel::platform {

bool cpuHasAvx2() { return __builtin_cpu_supports("avx2"); }

bool cpuHasVbmi() {
    return cpuHasAvx2() && __builtin_cpu_supports("avx512f") &&
           __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vbmi");
}

bool scalarKernelsForced() { return environmentVariable("VISTEL_SCALAR").value_or("") == "1"; }

}  // namespace vistel::platform
