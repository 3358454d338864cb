#include "audio/sample_kernels.h"

namespace vistel {
namespace {

// Every length around a vector's, at every place in it, with guard bytes on either side.
TEST(SampleKernels, TheFastOnesDoWhatTheReferencesDo) {
    const SampleKernels* fast = avx2SampleKernels();
    if (!fast) GTEST_SKIP() << "this processor has no AVX2";
    std::mt19937 random(7);
    for (size_t samples = 0; samples < 100; ++samples)
        for (size_t place = 0; place < 5; ++place) {
            std::vector<uint8_t> bytes(place + 3 * samples);  // no byte more than they may read
            for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random());
            const uint8_t* from = bytes.data() + place;

            std::vector<uint8_t> swapped(2 * samples + 16, 0xEE), expected = swapped;
            fast->swap16(from, samples, swapped.data() + 8);
            scalarSampleKernels.swap16(from, samples, expected.data() + 8);
            ASSERT_EQ(swapped, expected) << samples;

            std::vector<int32_t> wide(samples + 2, 0x5A5A5A5A), expectedWide = wide;
            fast->widen24(from, samples, wide.data() + 1);
            scalarSampleKernels.widen24(from, samples, expectedWide.data() + 1);
            ASSERT_EQ(wide, expectedWide) << samples;
        }
}

TEST(SampleKernels, SwapInPlace) {
    for (const SampleKernels* kernels : {&scalarSampleKernels, &sampleKernels()}) {
        std::vector<uint8_t> bytes(70), expected(70);
        for (size_t i = 0; i < bytes.size(); ++i) {
            bytes[i] = static_cast<uint8_t>(i);
            expected[i ^ 1] = static_cast<uint8_t>(i);
        }
        kernels->swap16(bytes.data(), 35, bytes.data());
        EXPECT_EQ(bytes, expected) << kernels->name;
    }
}

TEST(SampleKernels, WidenKeepsTheSign) {
    const uint8_t bytes[] = {0x7F, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x80, 0, 0, 0, 0, 1};
    int32_t wide[4];
    scalarSampleKernels.widen24(bytes, 4, wide);
    EXPECT_EQ(wide[0], 8388607);
    EXPECT_EQ(wide[1], -1);
    EXPECT_EQ(wide[2], -8388608);
    EXPECT_EQ(wide[3], 1);
}

}  // namespace
}  // namespace vistel
