#include "viewer/commands/tracking_commands.h"

#include <string>

#include "viewer/frame_folder.h"
#include "viewer/picture/image_point.h"
#include "viewer/picture/title.h"
#include "viewer/viewer_fixture.h"

namespace vistel {

namespace headless = platform::headless;

constexpr int32_t keyF5 = keyF1 + 4, keyF6 = keyF1 + 5, keyF8 = keyF1 + 7;

class TrackingCommandsTest : public ViewerTest {
 protected:
    // What a key prints on standard error and on standard output.
    struct Printed {
        std::string told, written;
        bool redraw = false;
    };
    static Printed pressed(int code) {
        testing::internal::CaptureStderr();
        testing::internal::CaptureStdout();
        Printed printed;
        printed.redraw = key(code);
        printed.written = testing::internal::GetCapturedStdout();
        printed.told = testing::internal::GetCapturedStderr();
        return printed;
    }
    // The cursor over a window pixel, counted from the lower left corner of the picture.
    static void pointAt(int x, int y) {
        const PictureLayout& layout = viewerState.layout;
        windowContext().cursor = {layout.marginX + x, layout.marginY + y + 1, true};
    }
    static Printed pickAt(int x, int y) {
        pointAt(x, y);
        return pressed(EV_MIDDLEMOUSE);
    }
    static void go(int frame) {
        viewerState.currentFrame = frame;
        ASSERT_EQ(showCurrentFrame(viewerState, FrameSource::kept), FrameShown::yes);
    }
    void show(int first, int last, int step = 1) {
        showAnimation(first, last, step);
        windowContext().drawPass = [] { drawPass(viewerState); };
        redraw();
    }
    static std::string suffix() {
        return windowTitle(viewerState).substr(sizeof("VisTel: shot") - 1);
    }
};

// --- F5 -----------------------------------------------------------------------------------------

TEST_F(TrackingCommandsTest, F5SwitchesTrackingWithItsCursor) {
    show(1, 3);
    for (const bool on : {true, false, true}) {
        const Printed printed = pressed(keyF5);
        EXPECT_EQ(printed.told, on ? "Tracking: on\n" : "Tracking: off\n");
        EXPECT_EQ(printed.written, "");
        EXPECT_TRUE(printed.redraw);
        EXPECT_EQ(viewerState.tracking.on, on);
        EXPECT_EQ(headless::crossCursor(), on);
    }
    viewerState.playMode = PlayMode::forward;
    EXPECT_EQ(pressed(keyF5).told, "Tracking while playing: off\n");
    viewerState.paused = 1;
    EXPECT_EQ(pressed(keyF5).told, "Tracking: on\n");
}

TEST_F(TrackingCommandsTest, OneFrameIsNotTracked) {
    showImage(testFrame(1, 40, 30));
    for (const int code : {keyF5, keyF6}) {
        const Printed printed = pressed(code);
        EXPECT_EQ(printed.told + printed.written, "");
        EXPECT_FALSE(printed.redraw);
    }
    EXPECT_FALSE(viewerState.tracking.on);
    EXPECT_FALSE(headless::crossCursor());
}

TEST_F(TrackingCommandsTest, TheCursorIsThatOfLaterWindowsToo) {
    show(1, 3);
    pressed(keyF5);
    headless::close();
    clearViewerSession(viewerState);
    forgetClosedWindow();
    viewerState.windowId = -1;
    show(1, 2);
    EXPECT_TRUE(headless::crossCursor());
}

// --- the middle button --------------------------------------------------------------------------

TEST_F(TrackingCommandsTest, APickTellsItsPlace) {
    show(5, 7);
    const PictureLayout& layout = viewerState.layout;
    const auto window = [&](int x, int y) {
        return std::to_string(layout.marginX + x) + ", " + std::to_string(layout.marginY + y);
    };
    EXPECT_EQ(pickAt(12, 7).told, "Frame 5: image 12, 7; window " + window(12, 7) + "\n");
    EXPECT_EQ(pickAt(-3, 50).told, "Frame 5: image -3, 50; window " + window(-3, 50) + "\n");
    viewerState.tracking.origin = {100, 200};
    EXPECT_EQ(pickAt(12, 7).told, "Frame 5: image 112, 207; window " + window(12, 7) + "\n");
    EXPECT_EQ(pickAt(12, 7).written, "");
    EXPECT_TRUE(viewerState.tracking.picks.empty());  // tracking is off
}

TEST_F(TrackingCommandsTest, PicksAreImagePointsAtEveryZoomAndPan) {
    show(1, 3);
    pressed(keyF5);
    key(keyPadDecimal);
    key(keyPadDecimal);                // zoom 3
    viewerState.layout.panX = 20.75f;  // drawn from column 20 on
    viewerState.layout.panY = 10.25f;
    redraw();
    EXPECT_TRUE(pickAt(7, 4).redraw);
    const Pick* pick = viewerState.tracking.find(0);
    ASSERT_TRUE(pick);
    EXPECT_FLOAT_EQ(pick->x, 20 + 7 / 3.0f);
    EXPECT_FLOAT_EQ(pick->y, 10 + 4 / 3.0f);
    EXPECT_EQ(pressed(keyF6).written, "1 22.33 11.33\n");
}

TEST_F(TrackingCommandsTest, AnotherPickReplacesTheFirst) {
    show(1, 3);
    pressed(keyF5);
    pickAt(3, 4);
    pickAt(5, 6);
    EXPECT_EQ(pressed(keyF6).written, "1 5.00 6.00\n");
    pressed(keyF5);
    pickAt(7, 8);  // off: not kept
    pressed(keyF5);
    EXPECT_EQ(pressed(keyF6).written, "1 5.00 6.00\n");
}

TEST_F(TrackingCommandsTest, PicksOfAnotherSequenceStayInsideTheRangeOfTheFirst) {
    show(1, 3);
    pressed(keyF5);
    pickAt(1, 2);
    clearViewerSession(viewerState);
    show(100, 105);  // six frames, room for three
    go(102);
    EXPECT_EQ(pickAt(3, 4).told.find("not kept"), std::string::npos);
    go(103);
    const Printed refused = pickAt(5, 6);
    EXPECT_NE(
        refused.told.find("Frame 103: the point is not kept; tracking began with 3 frames.\n"),
        std::string::npos)
        << refused.told;
    EXPECT_EQ(pressed(keyF6).written, "100 1.00 2.00\n102 3.00 4.00\n");
    clearViewerSession(viewerState);
    show(7, 8);  // fewer
    EXPECT_EQ(pressed(keyF6).written, "7 1.00 2.00\n");
}

// --- what is seen of it -------------------------------------------------------------------------

// White pixels round a window pixel of the picture, none in the middle.
static bool marked(int x, int y) {
    const headless::Image& image = headless::visibleImage();
    const PictureLayout& layout = viewerState.layout;
    const int column = layout.marginX + x, row = layout.marginY + y;
    for (int away = 4; away <= 11; ++away)
        for (const auto& [across, up] : {std::pair{away, 0}, {-away, 0}, {0, away}, {0, -away}})
            if (image.at(column + across, row + up) != 0xFFFFFFFF) return false;
    return image.at(column, row) != 0xFFFFFFFF && image.at(column + 3, row) != 0xFFFFFFFF;
}

TEST_F(TrackingCommandsTest, TheMarkIsAtThePickOfTheShownFrame) {
    show(1, 3);
    const headless::Image before = redraw();
    pressed(keyF5);
    pickAt(20, 15);
    redraw();
    EXPECT_TRUE(marked(20, 15));
    go(2);
    EXPECT_NE(redraw().at(viewerState.layout.marginX + 20, viewerState.layout.marginY + 20),
              0xFFFFFFFFu);
    go(1);
    redraw();
    EXPECT_TRUE(marked(20, 15));
    pickAt(-5, 30);  // beside the picture
    redraw();
    EXPECT_TRUE(marked(-5, 30));
    EXPECT_FALSE(marked(20, 15));
    pressed(keyF5);
    EXPECT_EQ(redraw().pixels, before.pixels);
}

TEST_F(TrackingCommandsTest, TheMarkIsAtItsPointAtEveryZoomAndPan) {
    show(1, 3);
    pressed(keyF5);
    pickAt(40, 30);
    key(keyPadDecimal);
    key(keyPadDecimal);
    viewerState.layout.panX = 30.5f;
    viewerState.layout.panY = 25.5f;
    redraw();
    EXPECT_TRUE(marked(30, 15));
    pickAt(31, 16);
    redraw();
    EXPECT_TRUE(marked(31, 16));
}

TEST_F(TrackingCommandsTest, AMarkOutsideThePictureGoesWithoutDoubleBufferingToo) {
    show(1, 3);
    key('F');
    const headless::Image before = redraw();
    pressed(keyF5);
    pickAt(-8, 30);
    redraw();
    EXPECT_TRUE(marked(-8, 30));
    go(2);
    redraw();
    EXPECT_FALSE(marked(-8, 30));
    go(1);
    pressed(keyF5);
    EXPECT_EQ(redraw().pixels, before.pixels);
}

TEST_F(TrackingCommandsTest, APickThatIsNotKeptShowsUntilTheNextPicture) {
    show(1, 3);
    const headless::Image before = redraw();
    EXPECT_FALSE(pickAt(20, 15).redraw);
    EXPECT_TRUE(marked(20, 15));
    EXPECT_EQ(redraw().pixels, before.pixels);
    pressed(keyF8);
    pickAt(25, 18);
    EXPECT_TRUE(marked(25, 18));
    EXPECT_EQ(redraw().pixels, before.pixels);
}

TEST_F(TrackingCommandsTest, TheTitleTellsWhichFrameHasNoPoint) {
    show(1, 5, 2);
    EXPECT_EQ(suffix(), "");
    pressed(keyF5);
    EXPECT_EQ(suffix(), ", 0 of 3 frames tracked, next 1");
    pickAt(1, 1);
    EXPECT_EQ(suffix(), ", 1 of 3 frames tracked, next 3");
    go(5);
    EXPECT_EQ(suffix(), ", 1 of 3 frames tracked, next 5");
    pickAt(1, 1);
    EXPECT_EQ(suffix(), ", 2 of 3 frames tracked, next 3");
    go(3);
    pickAt(1, 1);
    EXPECT_EQ(suffix(), ", all 3 frames tracked");
    pressed(keyF5);
    EXPECT_EQ(suffix(), "");
}

// --- F6 -----------------------------------------------------------------------------------------

TEST_F(TrackingCommandsTest, F6WritesThePoints) {
    show(1, 8);
    EXPECT_EQ(pressed(keyF6).told, "");  // tracking was never on
    pressed(keyF5);
    EXPECT_EQ(pressed(keyF6).told, "Tracked points:\n");
    EXPECT_EQ(pressed(keyF6).written, "");
    viewerState.playMode = PlayMode::forward;
    EXPECT_EQ(pressed(keyF6).written, "PanX = Linear();\nPanY = Linear();\n");
    viewerState.playMode = PlayMode::stopped;
    for (const int frame : {7, 1, 2, 3, 4, 5}) {
        go(frame);
        pickAt(10 + frame, 20 + frame);
    }
    EXPECT_EQ(pressed(keyF6).written,
              "1 11.00 21.00\n2 12.00 22.00\n3 13.00 23.00\n4 14.00 24.00\n5 15.00 25.00\n"
              "7 17.00 27.00\n");
    pressed(keyF5);  // also while it is off
    viewerState.playMode = PlayMode::backward;
    EXPECT_EQ(pressed(keyF6).written,
              "PanX = Linear(11.00@1, 12.00@2, 13.00@3, 14.00@4, 15.00@5, \n"
              "              17.00@7);\n"
              "PanY = Linear(21.00@1, 22.00@2, 23.00@3, 24.00@4, 25.00@5, \n"
              "              27.00@7);\n");
}

// --- F8 -----------------------------------------------------------------------------------------

TEST_F(TrackingCommandsTest, F8SaysWhatItHasSwitched) {
    showImage(testFrame(1, 40, 30));
    EXPECT_EQ(pressed(keyF8).told, "Luminance curve: on\n");
    EXPECT_TRUE(viewerState.tracking.luminanceCurve);
    EXPECT_EQ(pressed(keyF8).told, "Luminance curve: off\n");
    EXPECT_FALSE(viewerState.tracking.luminanceCurve);
}

TEST_F(TrackingCommandsTest, ALuminanceCurveHasEachFrameAndKeepsNoPoint) {
    show(1, 3);
    pressed(keyF5);
    pressed(keyF8);
    const Printed printed = pickAt(10, 20);
    EXPECT_EQ(printed.told, "");
    // 77 x frame + 151 x 20 + 28 x 10, of 65280.
    EXPECT_EQ(printed.written, "Lum10_20 = Linear(\n    0.0517@1, 0.0529@2, 0.0541@3)\n");
    EXPECT_TRUE(viewerState.tracking.picks.empty());
    EXPECT_EQ(pickAt(-1, 20).written, "Lum-1_20 = Linear(\n    0.0000@1, 0.0000@2, 0.0000@3)\n");
}

TEST_F(TrackingCommandsTest, FramesThatTheStepLeavesOutHaveNoLuminance) {
    show(1, 5, 2);
    pressed(keyF8);
    EXPECT_EQ(pickAt(10, 20).written,
              "Lum10_20 = Linear(\n    0.0517@1, 0.0000@2, 0.0541@3, 0.0000@4, 0.0564@5)\n");
}

TEST_F(TrackingCommandsTest, OneFrameHasALuminanceToo) {
    showImage(testFrame(1, 40, 30));
    pressed(keyF8);
    EXPECT_EQ(pickAt(10, 20).written, "Lum10_20 = Linear(\n    0.0517@1)\n");
}

}  // namespace vistel
