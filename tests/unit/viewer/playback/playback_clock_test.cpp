#include "viewer/playback/playback_clock.h"

#include "viewer/viewer_fixture.h"

namespace vistel {

using platform::headless::advanceMilliseconds;
using platform::headless::setMicroseconds;

class PlaybackClockTest : public ViewerTest {};

TEST_F(PlaybackClockTest, IsAheadByTheFramesThatAreDue) {
    PlaybackClock clock;
    clock.reset();
    clock.step(3);
    EXPECT_FLOAT_EQ(clock.timeAhead(25), 120.0f);
    advanceMilliseconds(100);
    EXPECT_FLOAT_EQ(clock.timeAhead(25), 20.0f);
    advanceMilliseconds(100);
    EXPECT_FLOAT_EQ(clock.timeAhead(25), -80.0f);
}

TEST_F(PlaybackClockTest, SurvivesTheWrapOfTheTickCounter) {
    setMicroseconds((uint64_t{0xFFFFFFFF} - 10) * 1000);
    PlaybackClock clock;
    clock.reset();
    clock.step(1);
    advanceMilliseconds(20);
    EXPECT_FLOAT_EQ(clock.timeAhead(20), 30.0f);
}

// Ten frames of ten milliseconds have been shown, the eleventh step led beyond the range's end.
TEST_F(PlaybackClockTest, AWrapKeepsTheMillisecondsThatTheNextFrameIsEarlyOrLate) {
    const struct {
        int elapsed, longestLag;
        float ahead;
    } rows[] = {
        {100, 10, 10.0f},  // the last frame was in time: the first one comes a frame later
        {99, 10, 11.0f},   // 1 ms early
        {90, 10, 12.0f},   // never more than 2
        {104, 10, 6.0f},   // drawing the last frame took 4 ms
        {500, 10, 0.0f},   // a lag is forgotten but for a frame
        {160, 250, -50.0f},
    };
    for (const auto& row : rows) {
        PlaybackClock clock;
        clock.reset();
        clock.step(11);
        advanceMilliseconds(row.elapsed);
        clock.resetAtWrap(100, 1, row.longestLag);
        EXPECT_EQ(clock.framesDue(), 1);
        EXPECT_FLOAT_EQ(clock.timeAhead(100), row.ahead) << row.elapsed;
    }
}

TEST_F(PlaybackClockTest, TheLargestStepsAreCounted) {
    PlaybackClock clock;
    clock.reset();
    clock.step(INT32_MAX);
    clock.step(INT32_MAX);
    EXPECT_EQ(clock.framesDue(), 2 * int64_t{INT32_MAX});
    EXPECT_FLOAT_EQ(clock.timeAhead(1000), 2.0f * float(INT32_MAX));
}

TEST_F(PlaybackClockTest, TheMeterShowsTheAverageOfEachTwentyPasses) {
    FpsMeter meter;
    meter.count();
    for (int pass = 1; pass < 19; ++pass) {
        advanceMilliseconds(40);
        meter.count();
        EXPECT_FLOAT_EQ(meter.shown(), 0.0f) << pass;
    }
    advanceMilliseconds(40);
    meter.count();  // 20 passes, 19 of them with a time
    EXPECT_NEAR(meter.shown(), 1000.0f / (19 * 40 / 20.0f), 0.001f);
    for (int pass = 0; pass < 20; ++pass) {
        advanceMilliseconds(20);
        meter.count();
    }
    EXPECT_NEAR(meter.shown(), 50.0f, 0.001f);
}

}  // namespace vistel
