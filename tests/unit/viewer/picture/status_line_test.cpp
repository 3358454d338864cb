#include "viewer/picture/status_line.h"

#include "viewer/playback/playback_status.h"

#include "viewer/viewer_fixture.h"

namespace vistel {

class StatusLineTest : public ViewerTest {};

TEST_F(StatusLineTest, TheMinuteFieldCountsTheFramesOfTheWholeMinutes) {
    struct Row {
        int frame, rate, minutes, seconds, frames;
    };
    const Row rows[] = {{1, 24, 0, 0, 0},       {24, 24, 0, 0, 23},
                        {25, 24, 0, 1, 0},      {1440, 24, 0, 59, 23},
                        {1441, 24, 1440, 0, 0}, {1500, 24, 1440, 2, 11},
                        {1, 1, 0, 0, 0},        {0, 24, 0, 0, -1},
                        {-24, 24, 0, -1, -1},   {100000, 300, 90000, 33, 99}};
    for (const Row& row : rows) {
        const TimeFields time = timeFields(row.frame, row.rate);
        EXPECT_EQ(time.minutes, row.minutes) << row.frame;
        EXPECT_EQ(time.seconds, row.seconds) << row.frame;
        EXPECT_EQ(time.frames, row.frames) << row.frame;
    }
}

// The line for the state as it is.
std::string_view shownStatus() { return statusLine(playbackStatus(viewerState)); }

TEST_F(StatusLineTest, NamesFrameModeSourceRangeAndRate) {
    viewerState.firstFrame = viewerState.playFirst = 1;
    viewerState.lastFrame = viewerState.playLast = 2000;
    viewerState.currentFrame = 1441;
    EXPECT_EQ(shownStatus(), "1440:00:00 - 1441  Mem 0.00FPS");
    viewerState.playMode = PlayMode::forward;
    viewerState.frameSkip = 1;
    EXPECT_EQ(shownStatus(), "1440:00:00 - 1441 TF Mem 0.00FPS");
    viewerState.playMode = PlayMode::backward;
    viewerState.pingPong = 1;
    viewerState.playFirst = 30;
    viewerState.mark = SourceMark::disk;
    EXPECT_EQ(shownStatus(), "1440:00:00 - 1441 TBS Dsk - [30,2000] 0.00FPS");
    viewerState.paused = 1;
    viewerState.mark = SourceMark::unknown;
    EXPECT_EQ(shownStatus(), "1440:00:00 - 1441 T ??? - [30,2000] 0.00FPS");
}

TEST_F(StatusLineTest, ARateOfNothingCountsAsOne) {
    viewerState.frameRate = 0;
    viewerState.currentFrame = 62;
    EXPECT_EQ(shownStatus().substr(0, 8), "60:01:00");
}

TEST_F(StatusLineTest, TheLabelNamesViewReliefAndControlChannel) {
    struct Row {
        ChannelMode mode;
        std::optional<ChannelMode> bumpSource;
        int control;
        bool complement;
        const char* expected;
    };
    const Row rows[] = {
        {ChannelMode::all, {}, 0, false, ""},
        {ChannelMode::matte, {}, 0, false, "Mask"},
        {ChannelMode::blue, {}, 0, false, "Blue"},
        {ChannelMode::zBuffer, {}, 0, false, "Z Buffer"},
        {ChannelMode::luminance, {}, 0, false, "Luminance"},
        {ChannelMode::bump, ChannelMode::zBuffer, 0, false, "Z Relief"},
        {ChannelMode::bump, ChannelMode::all, 0, false, ""},
        {ChannelMode::bump, {}, 0, false, ""},
        {ChannelMode::invertedBump, ChannelMode::all, 0, false, ""},
        {ChannelMode::invertedBump, ChannelMode::red, 0, false, "Red Relief (inverted)"},
        {ChannelMode::all, {}, 1, false, "[B]"},
        {ChannelMode::all, {}, 3, true, "[C]"},
        {ChannelMode::green, {}, 2, false, "Green [G]"},
        {ChannelMode::green, {}, 2, true, "Green [M]"},
    };
    for (const Row& row : rows) {
        viewerState.mode = row.mode;
        viewerState.bumpSource = row.bumpSource;
        viewerState.controlChannel = row.control;
        viewerState.controlComplement = row.complement;
        EXPECT_EQ(channelLabel(viewerState), row.expected);
    }
}

}  // namespace vistel
