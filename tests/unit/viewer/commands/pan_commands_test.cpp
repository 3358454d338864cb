#include "viewer/commands/pan_commands.h"

#include <vector>

#include "resources/command_ids.h"
#include "viewer/commands/menu_commands.h"
#include "viewer/viewer_fixture.h"

namespace vistel {

namespace headless = platform::headless;

class PanCommandsTest : public ViewerTest {
 protected:
    static PictureLayout& layout() { return viewerState.layout; }

    // The cursor over a window pixel, counted from the lower left.
    static void pointAt(int x, int y) {
        windowContext().cursor.x = x;
        windowContext().cursor.y = y + 1;
    }
    static void panTo(float x, float y) {
        layout().panX = x;
        layout().panY = y;
    }
    // The picture shows the test frame with its pixels in the right places.
    static void expectTestPicture(int number = 1) {
        expectPicture([&](int column, int row) { return testPixel(number, column, row); });
    }
};

// --- keypad -------------------------------------------------------------------------------------

TEST_F(PanCommandsTest, EachKeypadKeyMovesThePictureInItsDirection) {
    struct Row {
        int digit;
        float x, y;
    };
    const Row rows[] = {{1, 1, 1},  {2, 0, 1},  {3, -1, 1}, {4, 1, 0},
                        {6, -1, 0}, {7, 1, -1}, {8, 0, -1}, {9, -1, -1}};
    const std::pair<unsigned, float> increments[] = {
        {none, 1},    {shift, 5},           {alt, 10},         {shift | alt, 20},
        {control, 0}, {control | shift, 0}, {control | alt, 0}};
    showImage(testFrame(1, 400, 300));
    for (const auto& [held, increment] : increments) {
        for (const Row& row : rows) {
            panTo(50, 60);
            EXPECT_TRUE(key(keyPad0 + row.digit, held));
            EXPECT_FLOAT_EQ(layout().panX, 50 + row.x * increment) << row.digit << " " << held;
            EXPECT_FLOAT_EQ(layout().panY, 60 + row.y * increment) << row.digit << " " << held;
        }
    }
}

TEST_F(PanCommandsTest, ThePictureShowsWhatThePanSays) {
    showImage(testFrame(1, 400, 300));
    for (int i = 0; i < 3; ++i) key(keyPadDecimal);  // zoom 4: 100 x 75 pixels are visible
    redraw();
    for (const auto& [code, held] : {std::pair{keyPad0 + 4, unsigned{alt}},
                                     {keyPad0 + 2, shift},
                                     {keyPad0 + 9, shift | alt},
                                     {keyPad0 + 3, none}}) {
        key(code, held);
        expectTestPicture();
    }
}

TEST_F(PanCommandsTest, AFractionOfAPixelIsCutOff) {
    showImage(testFrame(1, 400, 300));
    key(keyPadDecimal);
    panTo(10.75f, 20.99f);
    redraw();
    const headless::Image& image = headless::visibleImage();
    EXPECT_EQ(image.at(0, 0) & 0xFFFFFF, testPixel(1, 10, 20) & 0xFFFFFF);
}

TEST_F(PanCommandsTest, PanIsClampedWhenThePictureIsDrawn) {
    struct Row {
        int zoom;
        float x, y, expectedX, expectedY;
    };
    const Row rows[] = {
        {1, 7, 7, 0, 0},       {1, -7, -7, 0, 0},
        {2, -1, -1, 0, 0},     {2, 1000, 1000, 200, 150},
        {2, 100, 50, 100, 50}, {3, 1000, 1000, 400 - 134, 200},  // a third of the last column shows
        {8, 1000, 0, 350, 0},
    };
    showImage(testFrame(1, 400, 300));
    for (const Row& row : rows) {
        layout().zoom = row.zoom;
        panTo(row.x, row.y);
        redraw();
        EXPECT_FLOAT_EQ(layout().panX, row.expectedX) << row.zoom;
        EXPECT_FLOAT_EQ(layout().panY, row.expectedY) << row.zoom;
        expectTestPicture();
    }
}

TEST_F(PanCommandsTest, KeypadFiveWithControlResetsPanAndZoom) {
    viewerState.currentZoom = 2;
    showImage(testFrame(1, 400, 300));
    for (int i = 0; i < 3; ++i) key(keyPadDecimal);
    panTo(33, 44);
    for (const unsigned held : {none, shift, alt}) {
        EXPECT_FALSE(key(keyPad0 + 5, held));
        EXPECT_EQ(layout().zoom, 5);
        EXPECT_FLOAT_EQ(layout().panX, 33);
    }
    EXPECT_TRUE(key(keyPad0 + 5, control));
    EXPECT_EQ(layout().zoom, 2);
    EXPECT_FLOAT_EQ(layout().panX, 0);
    EXPECT_FLOAT_EQ(layout().panY, 0);
}

TEST_F(PanCommandsTest, InFullScreenTheViewAsAtTheStartHasItsMarginsAgain) {
    showImage(testFrame(1, 400, 300));
    runMenuCommand(viewerState, COMMAND_FULL_SCREEN);
    const headless::Image before = redraw();
    for (int i = 0; i < 3; ++i) key(keyPadDecimal);
    redraw();
    EXPECT_EQ(layout().marginX, 0);
    EXPECT_TRUE(key(keyPad0 + 5, control));
    EXPECT_EQ(layout().marginX, 440);
    EXPECT_EQ(layout().marginY, 362);
    EXPECT_EQ(redraw().pixels, before.pixels);
}

// --- zoom ---------------------------------------------------------------------------------------

TEST_F(PanCommandsTest, ZoomingMovesThePanByTheRule) {
    showImage(testFrame(1, 400, 300));
    panTo(0, 0);
    float x = 0, y = 0;
    for (int zoom = 2; zoom <= 5; ++zoom) {
        EXPECT_TRUE(key(keyPadDecimal));
        EXPECT_EQ(layout().zoom, zoom);
        x += 400.0f / float((zoom - 1) * zoom) * 0.5f;
        y += 300.0f / float((zoom - 1) * zoom) * 0.5f;
        EXPECT_FLOAT_EQ(layout().panX, x) << zoom;
        EXPECT_FLOAT_EQ(layout().panY, y) << zoom;
    }
    for (int zoom = 5; zoom >= 2; --zoom) {
        EXPECT_TRUE(key(keyPad0));
        EXPECT_EQ(layout().zoom, zoom - 1);
        x -= 400.0f / float((zoom - 1) * zoom) * 0.5f;
        y -= 300.0f / float((zoom - 1) * zoom) * 0.5f;
        EXPECT_NEAR(layout().panX, x, 0.001) << zoom;
        EXPECT_NEAR(layout().panY, y, 0.001) << zoom;
    }
}

TEST_F(PanCommandsTest, ZoomingKeepsTheCentre) {
    showImage(testFrame(1, 400, 300));
    key(keyPadDecimal);
    panTo(120, 90);
    const auto centre = [] {
        const PictureLayout& l = layout();
        return std::pair{double{l.panX} + l.visibleWidth / 2.0 / l.zoom,
                         double{l.panY} + l.visibleHeight / 2.0 / l.zoom};
    };
    const auto before = centre();
    for (const int code :
         {int{keyPadDecimal}, int{keyPadDecimal}, int{keyPadDecimal}, int{keyPad0}, int{keyPad0}}) {
        key(code);
        EXPECT_NEAR(centre().first, before.first, 0.01);
        EXPECT_NEAR(centre().second, before.second, 0.01);
        expectTestPicture();
    }
}

TEST_F(PanCommandsTest, ZoomingOutStopsAtTheStartUpZoom) {
    viewerState.currentZoom = 3;
    showImage(testFrame(1, 100, 80));
    EXPECT_EQ(layout().zoom, 3);
    EXPECT_FALSE(key(keyPad0));
    EXPECT_EQ(layout().zoom, 3);
    key(keyPadDecimal);
    EXPECT_TRUE(key(keyPad0));
    EXPECT_FALSE(key(keyPad0));
    EXPECT_EQ(layout().zoom, 3);
    expectTestPicture();
}

TEST_F(PanCommandsTest, ZoomingInStopsWhereAPixelFillsTheScreen) {
    showImage(testFrame(1, 64, 48));
    layout().zoom = 1023;
    EXPECT_TRUE(key(keyPadDecimal));
    EXPECT_GE(layout().panX, 0);
    expectTestPicture();  // one pixel fills the window
    EXPECT_FALSE(key(keyPadDecimal));
    EXPECT_EQ(layout().zoom, 1024);
}

TEST_F(PanCommandsTest, InFullScreenThePictureGrowsIntoTheScreen) {
    showImage(testFrame(1, 400, 300));
    runMenuCommand(viewerState, COMMAND_FULL_SCREEN);
    EXPECT_EQ(layout().marginX, 440);
    EXPECT_EQ(layout().marginY, 362);
    const auto centre = [] {
        const PictureLayout& l = layout();
        return std::pair{double{l.panX} + l.visibleWidth / 2.0 / l.zoom,
                         double{l.panY} + l.visibleHeight / 2.0 / l.zoom};
    };
    struct Row {
        int code, marginX, marginY, visibleWidth, visibleHeight;
    };
    const Row rows[] = {{keyPadDecimal, 240, 212, 800, 600},
                        {keyPadDecimal, 40, 62, 1200, 900},
                        {keyPadDecimal, 0, 0, 1280, 1024},
                        {keyPad0, 40, 62, 1200, 900}};
    for (const Row& row : rows) {
        key(row.code);
        redraw();
        EXPECT_EQ(layout().marginX, row.marginX);
        EXPECT_EQ(layout().marginY, row.marginY);
        EXPECT_EQ(layout().visibleWidth, row.visibleWidth);
        EXPECT_EQ(layout().visibleHeight, row.visibleHeight);
        EXPECT_NEAR(centre().first, 200, 1);
        EXPECT_NEAR(centre().second, 150, 1);
        expectTestPicture();
    }
}

TEST_F(PanCommandsTest, ZoomAndPanSurviveAReloadAndAFrameChange) {
    showAnimation(1, 3, 1, 400, 300);
    key(keyPadDecimal);
    key(keyPadDecimal);
    panTo(30, 40);
    const platform::PixelRect window = headless::windowRect();
    setUpDisplay(viewerState, *viewerState.shown, Refit::fitWindow);  // a reload
    viewerState.currentFrame = 2;
    showFrame(viewerState, FrameSource::kept);
    EXPECT_EQ(layout().zoom, 3);
    EXPECT_EQ(headless::windowRect().width(), window.width());
    EXPECT_EQ(headless::windowRect().height(), window.height());
    expectTestPicture(2);
    EXPECT_FLOAT_EQ(layout().panX, 30);
    EXPECT_FLOAT_EQ(layout().panY, 40);
}

TEST_F(PanCommandsTest, ZoomAndPanAreKeptFromFileToFileInSequenceModeOnly) {
    for (const bool sequence : {false, true}) {
        viewerState.sequenceMode = sequence;
        showImage(testFrame(1, 400, 300));
        key(keyPadDecimal);
        panTo(30, 40);
        releaseFrames(viewerState);
        showImage(testFrame(2, 400, 300));
        EXPECT_EQ(layout().zoom, sequence ? 2 : 1);
        EXPECT_FLOAT_EQ(layout().panX, sequence ? 30 : 0);
        EXPECT_FLOAT_EQ(layout().panY, sequence ? 40 : 0);
        expectTestPicture(2);
    }
}

// --- frames of another size ----------------------------------------------------------------------

TEST_F(PanCommandsTest, AFrameOfAnotherSizeIsCentredInTheWindowThatIsThere) {
    struct Row {
        const char* name;
        bool fullResolution;
        int width, height, zoom;            // of the first frame
        int otherWidth, otherHeight;        // of the second
        int marginX, marginY, back, backY;  // around the second; around the first again
    };
    const Row rows[] = {
        {"smaller", false, 400, 300, 1, 300, 200, 70, 70, 20, 20},
        {"smaller, zoomed", false, 640, 480, 8, 64, 48, 84, 68, 20, 20},
        {"much smaller, zoomed", false, 640, 480, 8, 4, 4, 324, 244, 20, 20},
        {"hardly smaller, zoomed", false, 640, 480, 8, 600, 470, 20, 20, 20, 20},
        {"full resolution", true, 3000, 400, 1, 1000, 200, 100, 120, 20, 20},
        {"in a window wider than the frame", false, 100, 80, 2, 90, 70, 110, 80, 110, 80},
    };
    for (const Row& row : rows) {
        SetUp();
        viewerState.noRescale = row.fullResolution;
        showAnimation(1, 2, 1, row.width, row.height);
        keepFrame(viewerState, 2, testFrame(2, row.otherWidth, row.otherHeight));
        while (layout().zoom < row.zoom) key(keyPadDecimal);
        redraw();
        const platform::PixelRect window = headless::windowRect();
        for (const int frame : {2, 1, 2}) {
            viewerState.currentFrame = frame;
            showFrame(viewerState, FrameSource::kept);
            EXPECT_EQ(layout().marginX, frame == 2 ? row.marginX : row.back) << row.name;
            EXPECT_EQ(layout().marginY, frame == 2 ? row.marginY : row.backY) << row.name;
            expectTestPicture(frame);
            const int lastX = layout().marginX - 1;
            EXPECT_EQ(headless::visibleImage().at(lastX, window.height() / 2), 0xFF202020u)
                << row.name;
        }
        EXPECT_EQ(headless::windowRect(), window) << row.name;
    }
}

// Every way to a frame leads to a window that is large enough, and that stays so.
TEST_F(PanCommandsTest, ALargerFrameMakesTheWindowGrowForGood) {
    const std::pair<const char*, std::function<void()>> ways[] = {
        {"stepping", [] { key(keyRightArrow); }},
        {"playing",
         [] {
             viewerState.playMode = PlayMode::forward;
             runKey(viewerState, {.code = keyRightArrow, .synthetic = true, .modifiers = {}});
             viewerState.playMode = PlayMode::stopped;
         }},
        {"scrubbing",
         [] {
             pointAt(10, 10);
             key(EV_LEFTMOUSE);
             pointAt(40, 10);
             scrub(viewerState);
             released(EV_LEFTMOUSE);
         }},
    };
    for (const int zoom : {1, 3}) {
        for (const auto& [name, goOn] : ways) {
            SetUp();
            showAnimation(1, 2, 1, 100, 80);
            keepFrame(viewerState, 2, testFrame(2, 640, 480));
            while (layout().zoom < zoom) key(keyPadDecimal);
            goOn();
            ASSERT_EQ(viewerState.currentFrame, 2) << name;
            const platform::PixelRect window = headless::windowRect();
            EXPECT_EQ(window.width(), 680) << name;
            EXPECT_EQ(window.height(), 520) << name;
            EXPECT_EQ(layout().marginX, 20) << name;
            expectTestPicture(2);
            key(keyLeftArrow);
            EXPECT_EQ(headless::windowRect(), window) << name;
            EXPECT_EQ(layout().marginX, (680 - 100 * zoom) / 2) << name;
            EXPECT_EQ(layout().marginY, (520 - 80 * zoom) / 2) << name;
            expectTestPicture(1);
            setUpDisplay(viewerState, *viewerState.shown, Refit::fitWindow);  // a reload
            EXPECT_EQ(headless::windowRect(), window) << name;
            EXPECT_EQ(layout().marginX, (680 - 100 * zoom) / 2) << name;
            expectTestPicture(1);
        }
    }
}

TEST_F(PanCommandsTest, TheWindowHoldsTheWidestAndTheHighestFrame) {
    showAnimation(1, 3, 1, 400, 300);
    keepFrame(viewerState, 2, testFrame(2, 600, 200));
    keepFrame(viewerState, 3, testFrame(3, 350, 500));
    key(keyRightArrow);
    EXPECT_EQ(headless::windowRect().width(), 640);
    EXPECT_EQ(headless::windowRect().height(), 340);
    key(keyRightArrow);
    EXPECT_EQ(headless::windowRect().width(), 640);
    EXPECT_EQ(headless::windowRect().height(), 540);
    EXPECT_EQ(layout().marginX, 145);
    expectTestPicture(3);
}

TEST_F(PanCommandsTest, TheNextSourceHasAWindowOfItsOwn) {
    viewerState.sequenceMode = 1;  // in the window that is there
    showImage(testFrame(1, 640, 480));
    releaseFrames(viewerState);
    showImage(testFrame(2, 400, 300));
    EXPECT_EQ(headless::windowRect().width(), 400);
    EXPECT_EQ(headless::windowRect().height(), 300);
}

TEST_F(PanCommandsTest, ALargerFrameInFullScreenMakesTheWindowGrowThatComesBack) {
    showAnimation(1, 2, 1, 100, 80);
    keepFrame(viewerState, 2, testFrame(2, 640, 480));
    runMenuCommand(viewerState, COMMAND_FULL_SCREEN);
    key(keyRightArrow);
    EXPECT_EQ(headless::windowRect().width(), 1280);
    EXPECT_EQ(layout().marginX, 320);
    key(keyLeftArrow);
    released(keyEscape);
    EXPECT_EQ(headless::windowRect().width(), 680);
    EXPECT_EQ(headless::windowRect().height(), 520);
    EXPECT_EQ(layout().marginX, 290);
    expectTestPicture(1);
}

TEST_F(PanCommandsTest, ASmallerFrameStaysInTheMiddleWhenItIsZoomed) {
    showAnimation(1, 2, 1, 640, 480);
    keepFrame(viewerState, 2, testFrame(2, 64, 48));
    viewerState.currentFrame = 2;
    showFrame(viewerState, FrameSource::kept);
    redraw();
    EXPECT_EQ(layout().marginX, 308);
    const std::pair<int, int> rows[] = {{2, 276}, {3, 244}, {9, 52}, {10, 20}, {12, 20}};
    for (const auto& [zoom, margin] : rows) {
        while (layout().zoom < zoom) key(keyPadDecimal);
        EXPECT_EQ(layout().marginX, margin) << zoom;
        expectTestPicture(2);
    }
    while (key(keyPad0)) {
    }
    EXPECT_EQ(layout().marginX, 308);
    expectTestPicture(2);
}

TEST_F(PanCommandsTest, InFullScreenAFrameOfAnotherSizeIsCentredOnTheScreen) {
    showAnimation(1, 2, 1, 400, 300);
    keepFrame(viewerState, 2, testFrame(2, 200, 100));
    runMenuCommand(viewerState, COMMAND_FULL_SCREEN);
    key(keyPadDecimal);
    redraw();
    for (const auto& [frame, margin] : {std::pair{2, 440}, {1, 240}}) {
        viewerState.currentFrame = frame;
        showFrame(viewerState, FrameSource::kept);
        EXPECT_EQ(layout().marginX, margin);
        expectTestPicture(frame);
    }
}

// --- dragging -----------------------------------------------------------------------------------

TEST_F(PanCommandsTest, AnImageIsDraggedWithTheCursor) {
    showImage(testFrame(1, 400, 300));
    key(keyPadDecimal);
    panTo(100, 80);
    redraw();
    pointAt(200, 150);
    EXPECT_FALSE(key(EV_LEFTMOUSE));
    pointAt(190, 156);
    EXPECT_TRUE(dragPicture(viewerState, {.code = EV_MOUSEY, .modifiers = {}}));
    EXPECT_FLOAT_EQ(layout().panX, 105);
    EXPECT_FLOAT_EQ(layout().panY, 77);
    expectTestPicture();
    pointAt(191, 156);  // from the last place, not from the first
    EXPECT_TRUE(dragPicture(viewerState, {.code = EV_MOUSEY, .modifiers = {}}));
    EXPECT_FLOAT_EQ(layout().panX, 104.5f);
    EXPECT_FALSE(released(EV_LEFTMOUSE));
    EXPECT_FALSE(viewerState.dragging.pan);
}

TEST_F(PanCommandsTest, AltDragsWithoutTheZoom) {
    showImage(testFrame(1, 400, 300));
    key(keyPadDecimal);
    panTo(100, 80);
    pointAt(200, 150);
    key(EV_LEFTMOUSE, alt);
    pointAt(190, 156);
    dragPicture(viewerState, {.code = EV_MOUSEY, .modifiers = modifiersOf(alt)});
    EXPECT_FLOAT_EQ(layout().panX, 110);
    EXPECT_FLOAT_EQ(layout().panY, 74);
}

TEST_F(PanCommandsTest, AnAnimationIsDraggedWithAModifierAndScrubbedWithout) {
    for (const unsigned held : {none, shift, control, alt}) {
        showAnimation(1, 9);
        viewerState.playMode = PlayMode::forward;
        key(EV_LEFTMOUSE, held);
        EXPECT_EQ(viewerState.dragging.scrub, held == none);
        EXPECT_EQ(viewerState.dragging.pan, held != none);
        EXPECT_EQ(viewerState.playMode, held == none ? PlayMode::stopped : PlayMode::forward);
        released(EV_LEFTMOUSE);
        EXPECT_EQ(viewerState.playMode, PlayMode::forward);
    }
}

TEST_F(PanCommandsTest, ReleasingTheButtonResetsTheClock) {
    for (const unsigned held : {none, shift}) {
        showAnimation(1, 9);
        key(EV_LEFTMOUSE, held);
        viewerState.clock.step(5);
        released(EV_LEFTMOUSE);
        EXPECT_EQ(viewerState.clock.framesDue(), 0);
    }
}

// --- scrubbing ----------------------------------------------------------------------------------

TEST_F(PanCommandsTest, ScrubbingMovesAFrameByTheTravelThatTheRuleSays) {
    struct Row {
        const char* name;
        int first, last, step, current, width, marginX, travel, expected;
    };
    const Row rows[] = {
        // 1000 frames: clamped up to 2 pixels for each
        {"long, one pixel", 1, 1000, 1, 500, 320, 0, 1, 500},
        {"long, two pixels", 1, 1000, 1, 500, 320, 0, 2, 501},
        {"long, three back", 1, 1000, 1, 500, 320, 0, -3, 499},
        {"long, far", 1, 1000, 1, 500, 320, 0, 200, 600},
        // 10 frames: clamped down to 20
        {"short, 19 pixels", 1, 10, 1, 5, 320, 0, 19, 5},
        {"short, 20 pixels", 1, 10, 1, 5, 320, 0, 20, 6},
        {"short, 39 back", 1, 10, 1, 5, 320, 0, -39, 4},
        {"short, 40 back", 1, 10, 1, 5, 320, 0, -40, 3},
        // (308 - 8) x 1 / 30 = 10 pixels
        {"between, 9", 0, 30, 1, 10, 308, 0, 9, 10},
        {"between, 10", 0, 30, 1, 10, 308, 0, 10, 11},
        // the margins count: (108 - 8 + 2 x 100) / 30 = 10 pixels
        {"margins, 9", 0, 30, 1, 10, 108, 100, 9, 10},
        {"margins, 10", 0, 30, 1, 10, 108, 100, 10, 11},
        // steps of 3: (218 - 8) x 3 / 63 = 10 pixels for each step
        {"steps, 9", 1, 64, 3, 10, 218, 0, 9, 10},
        {"steps, 10", 1, 64, 3, 10, 218, 0, 10, 13},
        {"steps, 25 back", 1, 64, 3, 10, 218, 0, -25, 4},
        // the ends
        {"below the start", 1, 10, 1, 5, 320, 0, -1000, 1},
        {"above the end", 1, 10, 1, 5, 320, 0, 1000, 10},
        {"last reachable", 1, 10, 4, 5, 320, 0, 1000, 9},
    };
    showAnimation(1, 2, 1, 64, 48);
    for (const Row& row : rows) {
        viewerState.firstFrame = viewerState.playFirst = row.first;
        viewerState.lastFrame = viewerState.playLast = row.last;
        viewerState.frameStep = row.step;
        viewerState.currentFrame = row.current;
        layout().width = row.width;
        layout().marginX = row.marginX;
        keepFrame(viewerState, row.expected, testFrame(row.expected, 64, 48));
        pointAt(1000, 10);
        key(EV_LEFTMOUSE);
        pointAt(1000 + row.travel, 10);
        EXPECT_EQ(scrub(viewerState), row.expected != row.current) << row.name;
        EXPECT_EQ(viewerState.currentFrame, row.expected) << row.name;
        released(EV_LEFTMOUSE);
    }
}

TEST_F(PanCommandsTest, ScrubbingKeepsToThePlayRange) {
    showAnimation(1, 9);
    viewerState.playFirst = 3;
    viewerState.playLast = 7;
    viewerState.currentFrame = 5;
    for (const auto& [travel, expected] : {std::pair{-500, 3}, {500, 7}}) {
        pointAt(600, 10);
        key(EV_LEFTMOUSE);
        pointAt(600 + travel, 10);
        scrub(viewerState);
        EXPECT_EQ(viewerState.currentFrame, expected);
        released(EV_LEFTMOUSE);
    }
}

TEST_F(PanCommandsTest, AFrameNumberEqualToTheLastIsOnePixelOfTravel) {
    showAnimation(1, 2);
    viewerState.firstFrame = viewerState.lastFrame = 1;
    viewerState.playFirst = 1;
    viewerState.playLast = 2;
    pointAt(10, 10);
    key(EV_LEFTMOUSE);
    pointAt(11, 10);
    EXPECT_TRUE(scrub(viewerState));
    EXPECT_EQ(viewerState.currentFrame, 2);
}

TEST_F(PanCommandsTest, AChangeByScrubbingStopsPlaybackThatAKeyHasStarted) {
    showAnimation(1, 9);
    pointAt(100, 10);
    key(EV_LEFTMOUSE);
    key(characterKey('.'));
    EXPECT_EQ(viewerState.playMode, PlayMode::forward);
    pointAt(500, 10);
    EXPECT_TRUE(scrub(viewerState));
    EXPECT_EQ(viewerState.playMode, PlayMode::stopped);
}

// --- through the loop ---------------------------------------------------------------------------

TEST_F(PanCommandsTest, TheMouseScrubsInTheLoopAndPlayingGoesOnAfterwards) {
    showAnimation(1, 9);
    std::vector<int> frames;
    int idle = 0, passes = 0;
    headless::script([] { headless::moveMouse(500, 500); });
    headless::script([] { headless::press(EV_LEFTMOUSE); });
    headless::whenIdle([&] {
        frames.push_back(visibleFrame());
        EXPECT_EQ(viewerState.playMode, PlayMode::stopped);
        if (++idle == 1) return headless::moveMouse(500 + 60, 510);  // three frames
        if (idle == 2) {
            headless::moveMouse(500 + 80, 510);
            headless::moveMouse(500 + 20, 510);  // only the last of what is queued counts
            return;
        }
        headless::release(EV_LEFTMOUSE);
        for (int i = 0; i < 300; ++i) headless::script([&] { ++passes; });
        headless::script([&] {
            EXPECT_EQ(viewerState.playMode, PlayMode::forward);
            headless::close();
        });
    });
    runViewerLoop(viewerState);
    ASSERT_EQ(frames.size(), 3u);
    EXPECT_EQ(frames[1], frames[0] + 3);
    EXPECT_EQ(frames[2], frames[0] + 1);
    EXPECT_EQ(passes, 300);
}

TEST_F(PanCommandsTest, TheMouseDragsAnImageInTheLoop) {
    showImage(testFrame(1, 400, 300));
    key(keyPadDecimal);
    panTo(100, 80);
    redraw();
    int idle = 0;
    headless::script([] { headless::moveMouse(500, 500); });
    headless::script([] { headless::press(EV_LEFTMOUSE); });
    headless::whenIdle([&] {
        if (++idle == 1) return headless::moveMouse(480, 510);  // left and down
        if (idle == 2) return headless::release(EV_LEFTMOUSE);
        if (idle == 3) return headless::moveMouse(300, 300);
        EXPECT_FLOAT_EQ(layout().panX, 110);
        EXPECT_FLOAT_EQ(layout().panY, 85);
        EXPECT_EQ(headless::visibleImage().at(0, 0) & 0xFFFFFF, testPixel(1, 110, 85) & 0xFFFFFF);
        headless::close();
    });
    runViewerLoop(viewerState);
    EXPECT_EQ(idle, 4);
}

TEST_F(PanCommandsTest, TheLoopStartsWithoutADrag) {
    showAnimation(1, 9);
    viewerState.dragging.scrub = true;
    viewerState.painting.active = true;
    headless::script([] {
        EXPECT_FALSE(viewerState.dragging.scrub);
        EXPECT_FALSE(viewerState.painting.active);
        headless::close();
    });
    runViewerLoop(viewerState);
}

}  // namespace vistel
