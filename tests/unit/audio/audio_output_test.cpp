#include "audio/audio_output.h"

#include "audio/sound_fixture.h"

namespace vistel::test {
namespace {

using AudioOutputTest = SoundTest;

std::unique_ptr<AudioOutput> openFor(const Bytes& bytes) {
    const TemporaryFile file(bytes);
    const auto track = SoundTrack::open(file.name());
    return track ? AudioOutput::open(*track, WaveInterface::waveOutput) : nullptr;
}

Bytes waveOf(unsigned channels, unsigned width, uint32_t rate) {
    const unsigned alignment = channels * ((width + 7) / 8);
    Bytes format = little16(1).add(little16(channels)).add(little32(rate));
    format.add(little32(rate * alignment)).add(little16(alignment)).add(little16(width));
    return wave(waveChunk("fmt ", format).add(waveChunk("data", Bytes().fill(48))));
}

TEST_F(AudioOutputTest, HoldsThreeTwentiethsOfASecondWithinLimits) {
    struct Row {
        unsigned channels;
        uint32_t rate;
        int64_t samples, chunk;
    };
    const Row rows[] = {
        {1, 44100, 6615, 4410},      {2, 44100, 13230, 4410}, {4, 48000, 28800, 4800},
        {1, 1000, 1019, 679},        {2, 1000, 510, 170},     {1, 2000000, 262139, 174759},
        {2, 2000000, 131069, 43689},
    };
    for (const Row& row : rows) {
        const auto output = openFor(waveOf(row.channels, 16, row.rate));
        ASSERT_TRUE(output);
        EXPECT_EQ(output->bufferSamples(), row.samples);
        EXPECT_EQ(output->chunkFrames(), row.chunk);
        EXPECT_EQ(output->freeFrames(), row.samples / row.channels);
    }
}

TEST_F(AudioOutputTest, TheDeviceGetsBytesOrSixteenBits) {
    struct Row {
        unsigned width;
        int32_t bits;
    };
    for (const Row& row : {Row{8, 8}, Row{12, 16}, Row{16, 16}, Row{20, 16}, Row{24, 16}}) {
        const auto output = openFor(waveOf(2, row.width, 32000));
        const auto recorded = headless::recordedWaves();
        EXPECT_EQ(recorded.bits, row.bits);
        EXPECT_EQ(recorded.channels, 2);
        EXPECT_EQ(recorded.rate, 32000);
    }
}

TEST_F(AudioOutputTest, ConvertsWhatTheDeviceDoesNotTake) {
    const auto signedBytes = openFor(aiff(common(1, 4, 8).add(sound(Bytes().fill(4)))));
    ASSERT_TRUE(signedBytes->write("\x00\x7F\x80\xFF", 4));
    EXPECT_EQ(headless::recordedWaves().heard, (std::vector<uint8_t>{0x80, 0xFF, 0x00, 0x7F}));
    headless::resetWaves({});
    const auto unsignedBytes = openFor(waveOf(1, 8, 8000));
    ASSERT_TRUE(unsignedBytes->write("\x00\x7F\x80\xFF", 4));
    EXPECT_EQ(headless::recordedWaves().heard, (std::vector<uint8_t>{0x00, 0x7F, 0x80, 0xFF}));
    headless::resetWaves({});
    const auto wide = openFor(aiff(common(1, 3, 24).add(sound(Bytes().fill(9)))));
    const int32_t samples[] = {8388607, -1, -8388608};
    ASSERT_TRUE(wide->write(samples, 3));
    EXPECT_EQ(headless::recordedWaves().heard,
              (std::vector<uint8_t>{0xFF, 0x7F, 0xFF, 0xFF, 0x00, 0x80}));
}

TEST_F(AudioOutputTest, CountsWhatWasNotPlayedYet) {
    headless::resetWaves({.playsAtOnce = false});
    const auto output = openFor(waveOf(2, 16, 44100));
    const std::vector<uint8_t> frames(400);
    ASSERT_TRUE(output->write(frames.data(), 100));
    ASSERT_TRUE(output->write(frames.data(), 50));
    EXPECT_EQ(output->pendingSamples(), 300);
    EXPECT_EQ(output->freeFrames(), (13230 - 300) / 2);
    headless::playWaves(399);  // a block counts until its end
    EXPECT_EQ(output->pendingSamples(), 300);
    headless::playWaves(1);
    EXPECT_EQ(output->pendingSamples(), 100);
    headless::playWaves(10000);
    EXPECT_EQ(output->pendingSamples(), 0);
}

TEST_F(AudioOutputTest, UsesBlocksAgain) {
    const auto output = openFor(waveOf(1, 16, 44100));
    const std::vector<uint8_t> frames(2000);
    for (int i = 0; i < 100; ++i) ASSERT_TRUE(output->write(frames.data(), 100 + i % 3));
    const auto recorded = headless::recordedWaves();
    EXPECT_EQ(recorded.blocks, 100);
    EXPECT_GE(recorded.takenBack, 90);  // all but a pool's worth
}

TEST_F(AudioOutputTest, WithoutADeviceThereIsNone) {
    headless::resetWaves({.absent = true});
    EXPECT_FALSE(openFor(waveOf(1, 16, 44100)));
}

TEST_F(AudioOutputTest, ADeviceThatHasGoneTakesNothing) {
    headless::resetWaves({.playsAtOnce = false, .blocksToTake = 1});
    const auto output = openFor(waveOf(1, 16, 44100));
    const std::vector<uint8_t> frames(200);
    EXPECT_TRUE(output->write(frames.data(), 100));
    EXPECT_FALSE(output->write(frames.data(), 100));
    EXPECT_EQ(output->pendingSamples(), 100);
}

TEST_F(AudioOutputTest, DrainingEndsWithTheSoundOrWithItsPatience) {
    using Clock = std::chrono::steady_clock;
    headless::resetWaves({.playsAtOnce = false});
    const auto output = openFor(waveOf(1, 16, 44100));
    const std::vector<uint8_t> frames(2000);
    ASSERT_TRUE(output->write(frames.data(), 1000));
    std::thread player([] {
        for (int i = 0; i < 20; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
            headless::playWaves(100);
        }
    });
    output->drain();
    EXPECT_EQ(output->pendingSamples(), 0);
    player.join();
    ASSERT_TRUE(output->write(frames.data(), 1000));
    const auto start = Clock::now();
    output->drain();  // nobody plays
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(250));
    EXPECT_EQ(output->pendingSamples(), 1000);
}

TEST_F(AudioOutputTest, TheRingIsTakenWhenItIsAskedForAndThere) {
    headless::resetWaves({.noRing = false});
    const char* const variable = "TAVO_USE_DIRECTSOUND";
    if (!platform::environmentVariable(variable)) {
        EXPECT_EQ(chooseWaveInterface(), WaveInterface::waveOutput);
    }
    platform::setEnvironmentVariable(variable, "1");
    EXPECT_EQ(chooseWaveInterface(), WaveInterface::ring);
    headless::resetWaves({.noRing = true});
    EXPECT_EQ(chooseWaveInterface(), WaveInterface::waveOutput);
}

}  // namespace
}  // namespace vistel::test
