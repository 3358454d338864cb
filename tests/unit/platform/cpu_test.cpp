#include "platform/cpu.h"

#include <cpuid.h>
#include <gtest/gtest.h>

#include <cstdint>

#include "platform/process.h"

using namespace vistel::platform;

namespace {

// The bits of CPUID leaf 7: register b and c.
struct ExtendedFeatures {
    unsigned b = 0, c = 0;
};

ExtendedFeatures extendedFeatures() {
    unsigned a = 0, d = 0;
    ExtendedFeatures found;
    __get_cpuid_count(7, 0, &a, &found.b, &found.c, &d);
    return found;
}

// The register states that the system keeps: bit 1 SSE, 2 AVX, 5 to 7 AVX-512.
uint32_t keptStates() {
    unsigned a = 0, b = 0, c = 0, d = 0;
    if (!__get_cpuid(1, &a, &b, &c, &d) || !(c & bit_OSXSAVE)) return 0;
    uint32_t low = 0, high = 0;
    asm volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return low;
}

bool keeps(uint32_t states) { return (keptStates() & states) == states; }

struct Kernels {
    const char* name;
};
constexpr Kernels scalar{"scalar"}, middle{"middle"}, fastest{"fastest"};
const Kernels* absent() { return nullptr; }
const Kernels* findMiddle() { return &middle; }
const Kernels* findFastest() { return &fastest; }

// VISTEL_SCALAR as long as it lives.
class ScalarVariable {
 public:
    explicit ScalarVariable(const char* text) { setEnvironmentVariable("VISTEL_SCALAR", text); }
    ~ScalarVariable() { setEnvironmentVariable("VISTEL_SCALAR", before_); }

 private:
    std::string before_ = environmentVariable("VISTEL_SCALAR").value_or("");
};

}  // namespace

TEST(Cpu, HasWhatTheProcessorTellsAndTheSystemKeeps) {
    const auto [b, c] = extendedFeatures();
    EXPECT_EQ(cpuHasAvx2(), (b & bit_AVX2) && keeps(0x06));
    const bool avx512 = (b & bit_AVX512F) && (b & bit_AVX512BW) && (c & bit_AVX512VBMI);
    EXPECT_EQ(cpuHasVbmi(), cpuHasAvx2() && avx512 && keeps(0xE6));
}

TEST(Cpu, TheScalarKernelsAreForcedByAOneOnly) {
    const struct {
        const char* text;
        bool forced;
    } rows[] = {{"1", true}, {"", false}, {"0", false}, {"11", false}, {"yes", false}};
    for (const auto& row : rows) {
        const ScalarVariable variable(row.text);
        EXPECT_EQ(scalarKernelsForced(), row.forced) << row.text;
    }
}

TEST(Cpu, TheFirstKernelsThatAreThereAreTaken) {
    const ScalarVariable variable("");
    EXPECT_STREQ(fastestKernels(scalar, {findFastest, findMiddle}).name, "fastest");
    EXPECT_STREQ(fastestKernels(scalar, {absent, findMiddle, findFastest}).name, "middle");
    EXPECT_STREQ(fastestKernels(scalar, {absent, absent}).name, "scalar");
    EXPECT_STREQ(fastestKernels(scalar, {}).name, "scalar");
}

TEST(Cpu, ForcedScalarKernelsGoBeforeAllOthers) {
    const ScalarVariable variable("1");
    EXPECT_STREQ(fastestKernels(scalar, {findFastest, findMiddle}).name, "scalar");
}
