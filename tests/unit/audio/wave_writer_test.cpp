#include "audio/wave_writer.h"

#include "audio/written_file.h"

namespace vistel::test {
namespace {

Bytes writtenWave(unsigned channels, unsigned width, const Bytes& samples) {
    const auto bytes = static_cast<uint32_t>(samples.size());
    const unsigned alignment = channels * width / 8;
    Bytes file = Bytes("RIFF").add(little32(bytes + 48)).add("WAVE");
    file.add("fmt ").add(little32(20)).add(little16(1)).add(little16(channels));
    file.add(little32(44100)).add(little32(44100 * alignment)).add(little16(alignment));
    file.add(little16(width)).fill(4).add("data").add(little32(bytes));
    return file.add(samples);
}

TEST(WaveWriter, WritesAFormatOfTwentyBytesAndAWholeOfFortyEightMore) {
    WrittenFile file(setupOf(afWave, 2, 16));
    EXPECT_EQ(file.write<int16_t>({1, 2, 3, 4}), 2);
    EXPECT_EQ(file.write<int16_t>({5, 6}), 1);
    Bytes samples;
    for (unsigned i = 1; i <= 6; ++i) samples.add(little16(i));
    const Bytes written = file.closed();
    EXPECT_EQ(written, writtenWave(2, 16, samples));
    EXPECT_EQ(OpenedFile(written).samples<int16_t>(), (std::vector<int16_t>{1, 2, 3, 4, 5, 6}));
}

TEST(WaveWriter, WritesNoPadByte) {
    WrittenFile file(setupOf(afWave, 1, 8));
    EXPECT_EQ(file.write<uint8_t>({1, 2, 3}), 3);
    EXPECT_EQ(file.closed(), writtenWave(1, 8, Bytes().u8(1).u8(2).u8(3)));
}

TEST(WaveWriter, RatesThatTheFieldDoesNotHoldAreZero) {
    for (const double rate : {-1.0, 1e300, HUGE_VAL}) {
        AFfilesetup setup = setupOf(afWave, 1, 8);
        setup.rate = rate;
        EXPECT_EQ(OpenedFile(WrittenFile(setup).closed())->track().rate, 0.0);
    }
}

}  // namespace
}  // namespace vistel::test
