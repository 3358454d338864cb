#include "viewer/playback/frame_rate.h"

#include "viewer/viewer_fixture.h"

namespace vistel {

class FrameRateTest : public ViewerTest {};

TEST_F(FrameRateTest, RateKeysChangeByOneTwoFiveOrTen) {
    struct Row {
        int rate, direction;
        bool shift, control, alt;
        int expected;
    };
    const Row rows[] = {
        {24, 1, false, false, false, 25},      {24, -1, false, false, false, 23},
        {24, 1, true, false, false, 26},       {24, 1, false, false, true, 29},
        {24, 1, true, false, true, 34},        {299, 1, false, false, true, 300},
        {3, -1, false, false, true, 1},        {100, 1, false, true, false, 48},
        {1, -1, false, false, false, 1},       {INT32_MAX, 1, false, false, false, 300},
        {INT32_MIN, -1, true, false, true, 1},
    };
    viewerState.startFrameRate = 48;
    for (const Row& row : rows) {
        viewerState.frameRate = row.rate;
        Modifiers held;
        held.leftShift = row.shift;
        held.leftControl = row.control;
        held.leftAlt = row.alt;
        EXPECT_EQ(rateAfterKey(viewerState, row.direction, held), row.expected) << row.rate;
    }
}

TEST_F(FrameRateTest, ATypedRateIsReadWithoutBlanksAndClamped) {
    const std::pair<const char*, int> rows[] = {{"4 5", 45},  {"0", 1},  {"1000", 300},
                                                {"300", 300}, {"-3", 1}, {"\t2\r\n5", 25},
                                                {"", 1},      {"abc", 1}};
    for (const auto& [text, expected] : rows) {
        viewerState.frameRate = 24;
        setTypedFrameRate(viewerState, text);
        EXPECT_EQ(viewerState.frameRate, expected) << text;
    }
}

TEST_F(FrameRateTest, TheSameTypedRateLeavesTheClockAlone) {
    viewerState.frameRate = 24;
    viewerState.clock.reset();
    viewerState.clock.step(7);
    setTypedFrameRate(viewerState, "24");
    EXPECT_EQ(viewerState.clock.framesDue(), 7);
    setTypedFrameRate(viewerState, "25");
    EXPECT_EQ(viewerState.clock.framesDue(), 0);
}

}  // namespace vistel
