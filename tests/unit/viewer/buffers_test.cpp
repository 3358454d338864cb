// What a pass and what lies over it leave on screen, with a single buffer and with two that a swap
// exchanges.
#include "platform/surface.h"
#include "resources/command_ids.h"
#include "viewer/viewer_fixture.h"

namespace vistel {

namespace headless = platform::headless;

class BuffersTest : public ViewerTest {
 protected:
    void SetUp() override {
        ViewerTest::SetUp();
        headless::exchangeBuffers();
    }
    static size_t garbagePixels() {
        size_t count = 0;
        for (const uint32_t pixel : headless::visibleImage().pixels)
            count += pixel == headless::garbage;
        return count;
    }
};

// --- single buffer -------------------------------------------------------------------------------

TEST_F(BuffersTest, WithASingleBufferALabelGoesWithItsControlChannel) {
    showImage(testFrame(1, 64, 48));
    key('F');
    ASSERT_FALSE(headless::doubleBuffered());
    const headless::Image without = redraw();
    for (const unsigned held : {none, shift}) {
        key(keyF1, held);
        EXPECT_NE(redraw().pixels, without.pixels);
        ASSERT_EQ(shownText(), held ? "[C]" : "[R]");
        key(keyF1 + 3);
        EXPECT_EQ(redraw().pixels, without.pixels);
    }
}

TEST_F(BuffersTest, WithASingleBufferALabelGoesWithItsView) {
    showImage(testFrame(1, 64, 48));
    key('F');
    const headless::Image without = redraw();
    key('L');
    redraw();
    ASSERT_EQ(shownText(), "Luminance");
    key('R');  // a shorter one
    redraw();
    const headless::Image red = redraw();
    key('C');
    EXPECT_EQ(redraw().pixels, without.pixels);
    key('R');
    EXPECT_EQ(redraw().pixels, red.pixels);
}

TEST_F(BuffersTest, WithASingleBufferABandOverTheMarginsGoesWithTheNextPass) {
    showImage(planesFrame(1, 64, 48, imageColour));
    key('F');
    const headless::Image before = redraw();
    key('A');  // there is no mask
    ASSERT_EQ(shownText(), "This image has no mask.");
    ASSERT_NE(headless::visibleImage().pixels, before.pixels);
    EXPECT_EQ(redraw().pixels, before.pixels);
    showMessageBand("over the whole window");
    ASSERT_EQ(headless::visibleImage().at(0, 0), 0xFF000000u);
    ASSERT_EQ(headless::visibleImage().at(319, 19), 0xFF000000u);
    EXPECT_EQ(redraw().pixels, before.pixels);
}

TEST_F(BuffersTest, WithASingleBufferMarginsAreClearedOnlyWhenTheyMustBe) {
    showImage(testFrame(1, 64, 48));
    key('F');
    redraw();
    windowContext().doubleBuffer = false;
    platform::headless::Image before = redraw();
    viewerState.layout.clearWanted = false;
    redraw();
    EXPECT_FALSE(viewerState.layout.clearWanted);
    EXPECT_EQ(headless::visibleImage().pixels, before.pixels);
}

// --- two buffers ---------------------------------------------------------------------------------

TEST_F(BuffersTest, APassLeavesNothingOfWhatTheBufferHeld) {
    struct Row {
        const char* name;
        int width, height, frames, letter;
    };
    const Row rows[] = {{"filling the window", 400, 300, 1, 'C'},
                        {"with margins", 64, 48, 1, 'C'},
                        {"with a label", 64, 48, 1, 'R'},
                        {"animation", 400, 300, 2, 'C'},
                        {"animation with a label", 64, 48, 2, 'G'},
                        {"margins above and below", 400, 100, 1, 'C'},
                        {"margins left and right", 100, 200, 1, 'B'}};
    for (const Row& row : rows) {
        SetUp();
        showAnimation(1, row.frames, 1, row.width, row.height);
        windowContext().drawPass = [] { drawPass(viewerState); };
        key(row.letter);
        for (int i = 0; i < 3; ++i) {
            redraw();
            EXPECT_EQ(garbagePixels(), 0u) << row.name;
        }
        const headless::Image picture = headless::visibleImage();
        showMessageBand("a band");
        EXPECT_EQ(garbagePixels(), 0u) << row.name;
        showMessageBand("another one");
        EXPECT_EQ(garbagePixels(), 0u) << row.name;
        restoreFrontImage();
        EXPECT_EQ(headless::visibleImage().pixels, picture.pixels) << row.name;
    }
}

TEST_F(BuffersTest, OutlinesLieOnTheWholePicture) {
    FrameStore frame = testFrame(1, 64, 48);
    frame.tiles = {{0, 0, 31, 47}, {32, 0, 63, 47}};
    showImage(std::move(frame));
    const headless::Image picture = redraw();
    key(keyF1 + 11);
    EXPECT_EQ(garbagePixels(), 0u);
    EXPECT_NE(headless::visibleImage().pixels, picture.pixels);
    released(keyF1 + 11);
    EXPECT_EQ(headless::visibleImage().pixels, picture.pixels);
}

// --- under a menu --------------------------------------------------------------------------------

TEST_F(BuffersTest, APaintWhileACommandIsInProgressRestoresThePicture) {
    showImage(testFrame(1, 400, 300));
    const headless::Image picture = redraw();
    windowContext().viewerRunning = 1;
    static int restored;
    restored = 0;
    windowContext().calls.command = [](int) {
        windowContext().queue.clear();
        const int presents = headless::presents();
        platform::setScissorTest(windowContext().window, false);
        platform::setColour(windowContext().window, 1, 2, 3, 255);
        platform::fillRectangle(windowContext().window, 0, 0, 399,
                                299);  // a hole that a dialog leaves
        platform::swapBuffers(windowContext().window);
        headless::uncover();
        restored = headless::presents() - presents - 1;
    };
    headless::choose(COMMAND_EXIT);
    EXPECT_EQ(restored, 1);
    EXPECT_EQ(headless::visibleImage().pixels, picture.pixels);
    EXPECT_EQ(peekEvent(), EV_REDRAW);
}

TEST_F(BuffersTest, APaintWithoutACommandOnlyAsksForAPass) {
    showImage(testFrame(1, 400, 300));
    windowContext().viewerRunning = 1;
    saveFrontImage();
    windowContext().queue.clear();
    const int presents = headless::presents();
    headless::uncover();
    headless::uncover();
    EXPECT_EQ(headless::presents(), presents);
    EXPECT_EQ(windowContext().queue.count(), 1);
    EXPECT_EQ(waitEvent().code, EV_REDRAW);
}

TEST_F(BuffersTest, APaintBeforeTheFirstPictureClearsTheWindow) {
    openWindowOrExit(viewerState, "VisTel");
    setColourIndex(2);
    headless::uncover();
    EXPECT_EQ(headless::visibleImage().at(7, 7), 0xFF000000u);
    EXPECT_EQ(peekEvent(), EV_REDRAW);
}

TEST_F(BuffersTest, ASavedImageIsOutOfDateAfterASwapAndAfterAResize) {
    showImage(testFrame(1, 400, 300));
    saveFrontImage();
    EXPECT_TRUE(windowContext().front.valid);
    const int readBacks = headless::readBacks();
    saveFrontImage();  // there is a valid one
    EXPECT_EQ(headless::readBacks(), readBacks);
    redraw();
    EXPECT_FALSE(windowContext().front.valid);
    saveFrontImage();
    setPreferredPosition(0, 500, 0, 350);
    applyPendingPlacement();
    EXPECT_FALSE(windowContext().front.valid);
    const int presents = headless::presents();
    restoreFrontImage();
    EXPECT_EQ(headless::presents(), presents);
}

}  // namespace vistel
