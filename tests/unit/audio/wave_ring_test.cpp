#include "audio/wave_ring.h"

#include "audio/sound_fixture.h"

namespace vistel::test {
namespace {

// Unsigned bytes at 1000 a second: a ring of 1000 bytes.
struct WaveRingTest : SoundTest {
    WaveRingTest() { headless::resetWaves({.playsAtOnce = false, .noRing = false}); }
    static std::unique_ptr<WaveRing> open() {
        WaveConversion conversion;
        conversion.format = {1, 1000, 8};
        conversion.sourceBytes = 1;
        conversion.silence = 128;
        return WaveRing::open(conversion);
    }
    static std::vector<uint8_t> counting(size_t count, uint8_t from) {
        std::vector<uint8_t> bytes(count);
        for (uint8_t& byte : bytes) byte = from++;
        return bytes;
    }
};

TEST_F(WaveRingTest, PlaysWhatIsWrittenWithSilenceBehindIt) {
    const auto ring = open();
    const auto bytes = counting(100, 1);
    EXPECT_EQ(ring->freeSamples(), 750);
    ASSERT_TRUE(ring->write(bytes.data(), bytes.size()));
    EXPECT_TRUE(headless::recordedWaves().ringPlays);
    EXPECT_EQ(ring->pendingBytes(), 100);
    EXPECT_EQ(ring->freeSamples(), 650);
    headless::playWaves(200);
    auto expected = bytes;
    expected.resize(200, 128);
    EXPECT_EQ(headless::recordedWaves().heard, expected);
    EXPECT_EQ(ring->pendingBytes(), 0);
}

TEST_F(WaveRingTest, NothingCanBeWritten) {
    const auto ring = open();
    const auto bytes = counting(100, 1);
    ASSERT_TRUE(ring->write(bytes.data(), 0));
    EXPECT_EQ(ring->pendingBytes(), 0);
}

TEST_F(WaveRingTest, GoesRoundWithoutAGap) {
    const auto ring = open();
    std::vector<uint8_t> all;
    for (int i = 0; i < 40; ++i) {
        const auto bytes = counting(100, static_cast<uint8_t>(i * 7));
        ASSERT_TRUE(ring->write(bytes.data(), bytes.size()));
        all.insert(all.end(), bytes.begin(), bytes.end());
        if (i >= 4) headless::playWaves(100);
        ring->pendingBytes();
    }
    headless::playWaves(400);
    EXPECT_EQ(headless::recordedWaves().heard, all);
}

TEST_F(WaveRingTest, TheTimerStopsARingThatHasNothingLeft) {
    const auto ring = open();
    const auto bytes = counting(100, 1);
    ASSERT_TRUE(ring->write(bytes.data(), bytes.size()));
    headless::playWaves(50);
    headless::fireWaveTimer();
    EXPECT_TRUE(headless::recordedWaves().ringPlays);
    headless::playWaves(70);
    headless::fireWaveTimer();
    EXPECT_FALSE(headless::recordedWaves().ringPlays);
    ASSERT_TRUE(ring->write(bytes.data(), bytes.size()));  // it goes on
    EXPECT_TRUE(headless::recordedWaves().ringPlays);
    headless::playWaves(100);
    const auto heard = headless::recordedWaves().heard;
    EXPECT_EQ(std::vector<uint8_t>(heard.end() - 100, heard.end()), bytes);
}

TEST_F(WaveRingTest, ALostRingIsRestoredOnce) {
    headless::setWaveFaults({.playsAtOnce = false, .noRing = false, .ringLost = true});
    const auto ring = open();
    const auto bytes = counting(10, 1);
    EXPECT_TRUE(ring->write(bytes.data(), bytes.size()));
    EXPECT_EQ(headless::recordedWaves().restored, 1);
    headless::playWaves(10);
    EXPECT_EQ(headless::recordedWaves().heard, bytes);
}

TEST_F(WaveRingTest, MoreThanTheRingHoldsIsLeftOut) {
    const auto ring = open();
    const auto bytes = counting(3000, 1);
    ASSERT_TRUE(ring->write(bytes.data(), bytes.size()));
    EXPECT_EQ(ring->pendingBytes(), 1000);
    ASSERT_TRUE(ring->write(bytes.data(), bytes.size()));
    EXPECT_EQ(ring->pendingBytes(), 1000);
    headless::playWaves(1000);
    EXPECT_EQ(headless::recordedWaves().heard, counting(1000, 1));
}

TEST_F(WaveRingTest, ADeviceThatHasGoneTakesNothing) {
    const auto ring = open();
    headless::setWaveFaults({.absent = true, .noRing = false});
    EXPECT_FALSE(ring->write("abc", 3));
    EXPECT_EQ(ring->pendingBytes(), 0);
}

}  // namespace
}  // namespace vistel::test
