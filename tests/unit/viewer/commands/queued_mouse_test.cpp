// The mouse in the loop: what is queued together, where no move led to, what a load leaves behind.
#include <set>
#include <utility>
#include <vector>

#include "viewer/playback/load_animation.h"
#include "viewer/viewer_fixture.h"

namespace vistel {

namespace headless = platform::headless;

class QueuedMouseTest : public ViewerTest {
 protected:
    static PictureLayout& layout() { return viewerState.layout; }
    static void atOnce(std::function<void()> events) { headless::script(std::move(events)); }

    // A paused animation, a step of which is 20 pixels of travel; on frame 5.
    void showPausedAnimation() {
        showAnimation(1, 9);
        headless::script([] { headless::type(keySpace); });
        headless::script([] { viewerState.currentFrame = 5; });
    }
    // An image of which the middle is seen at zoom 2.
    void showZoomedImage() {
        showImage(testFrame(1, 400, 300));
        key(keyPadDecimal);
        layout().panX = 100;
        layout().panY = 80;
        redraw();
    }
    static void runUntilIdle() {
        headless::whenIdle(headless::close);
        runViewerLoop(viewerState);
    }
    // What was found when nothing was left to do; the loop's end forgets it.
    template <class Found>
    static auto found(Found find) {
        decltype(find()) result{};
        headless::whenIdle([&] {
            result = find();
            headless::close();
        });
        runViewerLoop(viewerState);
        return result;
    }
    static std::pair<float, float> pan() { return {layout().panX, layout().panY}; }
};

// --- released where ------------------------------------------------------------------------------

TEST_F(QueuedMouseTest, AScrubEndsWhereTheButtonWasReleasedWhateverMovesFollow) {
    showPausedAnimation();
    atOnce([] { headless::moveMouse(500, 500); });
    atOnce([] { headless::press(EV_LEFTMOUSE); });
    atOnce([] {
        headless::moveMouse(500 + 20, 500);
        headless::moveMouse(500 + 60, 500);
        headless::release(EV_LEFTMOUSE);
        headless::moveMouse(500 - 60, 500);
        headless::moveMouse(500 + 10, 500);
    });
    EXPECT_EQ(found([] { return viewerState.currentFrame; }), 8);
}

TEST_F(QueuedMouseTest, AWholeScrubThatIsQueuedTogetherMovesByItsOwnTravel) {
    showPausedAnimation();
    atOnce([] {
        headless::moveMouse(500, 500);
        headless::press(EV_LEFTMOUSE);
        headless::moveMouse(500 - 40, 500);
        headless::release(EV_LEFTMOUSE);
        headless::moveMouse(500 + 60, 500);
    });
    EXPECT_EQ(found([] { return viewerState.currentFrame; }), 3);
}

TEST_F(QueuedMouseTest, ADragEndsWhereTheButtonWasReleasedWhateverMovesFollow) {
    showZoomedImage();
    atOnce([] { headless::moveMouse(500, 500); });
    atOnce([] { headless::press(EV_LEFTMOUSE); });
    atOnce([] {
        headless::moveMouse(490, 500);
        headless::moveMouse(480, 510);  // left and down
        headless::release(EV_LEFTMOUSE);
        headless::moveMouse(300, 300);
    });
    EXPECT_EQ(found(pan), (std::pair{110.0f, 85.0f}));
}

TEST_F(QueuedMouseTest, AWholeDragThatIsQueuedTogetherMovesByItsOwnTravel) {
    showZoomedImage();
    atOnce([] {
        headless::moveMouse(500, 500);
        headless::press(EV_LEFTMOUSE);
        headless::moveMouse(480, 510);
        headless::release(EV_LEFTMOUSE);
        headless::moveMouse(300, 300);
    });
    EXPECT_EQ(found(pan), (std::pair{110.0f, 85.0f}));
}

TEST_F(QueuedMouseTest, PaintingEndsWhereTheButtonWasReleased) {
    FrameStore black = testFrame(1, 400, 300);
    std::fill_n(black.colour.data(), 400 * 300, 0xFF000000u);
    showImage(std::move(black));
    const platform::PixelRect window = headless::windowRect();
    const auto moveTo = [&](int column, int row) {
        headless::moveMouse(window.left + column, window.bottom - 1 - row);
    };
    atOnce([&] {
        moveTo(10, 20);
        headless::press(EV_RIGHTMOUSE);
        moveTo(12, 20);
        moveTo(12, 22);  // each move is painted, not only the last
        headless::release(EV_RIGHTMOUSE);
        moveTo(100, 100);
    });
    using Points = std::set<std::pair<int, int>>;
    const auto painted = [] {
        Points points;
        for (int y = 0; y < 300; ++y)
            for (int x = 0; x < 400; ++x)
                if (stored(x, y) & 0xFFFFFF) points.emplace(x, y);
        return points;
    };
    EXPECT_EQ(found(painted), (Points{{10, 20}, {11, 20}, {12, 20}, {12, 21}, {12, 22}}));
}

// --- pressed where no move led to ----------------------------------------------------------------

TEST_F(QueuedMouseTest, AScrubIsAnchoredWhereTheCursorWasAlready) {
    headless::moveMouse(500, 500);  // before there is a window
    showPausedAnimation();
    atOnce([] { headless::press(EV_LEFTMOUSE); });
    atOnce([] { headless::moveMouse(540, 500); });
    EXPECT_EQ(found([] { return viewerState.currentFrame; }), 7);
}

TEST_F(QueuedMouseTest, ADragIsAnchoredWhereTheCursorWasAlready) {
    for (const bool together : {false, true}) {
        SetUp();
        headless::moveMouse(500, 500);
        showZoomedImage();
        if (together) {
            atOnce([] {});  // the loop has begun
            atOnce([] {
                headless::press(EV_LEFTMOUSE);
                headless::moveMouse(480, 510);
            });
        } else {
            atOnce([] { headless::press(EV_LEFTMOUSE); });
            atOnce([] { headless::moveMouse(480, 510); });
        }
        EXPECT_EQ(found(pan), (std::pair{110.0f, 85.0f})) << together;
    }
}

TEST_F(QueuedMouseTest, TheFirstPointIsPaintedWhereTheCursorWasAlready) {
    headless::moveMouse(500, 500);
    FrameStore black = testFrame(1, 400, 300);
    std::fill_n(black.colour.data(), 400 * 300, 0xFF000000u);
    showImage(std::move(black));
    const platform::PixelRect window = headless::windowRect();
    atOnce([] { headless::press(EV_RIGHTMOUSE); });
    const int column = 500 - window.left, row = window.bottom - 1 - 500;
    EXPECT_EQ(found([&] { return stored(column, row); }), 0xFFFFFFFFu);
}

TEST_F(QueuedMouseTest, AScrubIsAnchoredUnderTheCursorAfterTheWindowHasMoved) {
    showPausedAnimation();
    atOnce([] { headless::moveMouse(500, 500); });
    for (int i = 0; i < 3; ++i) atOnce([] {});
    atOnce([] {
        viewerState.fullScreen = 1;
        setUpDisplay(viewerState, *viewerState.shown, Refit::fitWindow);
        headless::press(EV_LEFTMOUSE);
    });
    for (int i = 0; i < 3; ++i) atOnce([] {});  // the press is seen before the move
    atOnce([] { headless::moveMouse(540, 500); });
    EXPECT_EQ(found([] { return viewerState.currentFrame; }), 7);
}

TEST_F(QueuedMouseTest, APressIsWhereTheLastMoveLedToThoughTheCursorHasLeftIt) {
    showPausedAnimation();
    atOnce([] { headless::moveMouse(500, 500); });
    for (int i = 0; i < 3; ++i) atOnce([] {});
    atOnce([] {
        headless::press(EV_LEFTMOUSE);
        headless::moveMouseUnseen(540, 500);
    });
    for (int i = 0; i < 3; ++i) atOnce([] {});
    atOnce([] { headless::moveMouse(540, 500); });
    EXPECT_EQ(found([] { return viewerState.currentFrame; }), 7);
}

TEST_F(QueuedMouseTest, APressAfterMovesIsWhereTheyLedTo) {
    showZoomedImage();
    atOnce([] {
        headless::moveMouse(500, 500);
        headless::press(EV_LEFTMOUSE);
        headless::moveMouse(480, 510);  // the cursor is here when the press is looked at
    });
    EXPECT_EQ(found(pan), (std::pair{110.0f, 85.0f}));
}

// --- left of the window and below it -------------------------------------------------------------

TEST_F(QueuedMouseTest, ADragGoesOnLeftOfTheWindowAndBelowIt) {
    showZoomedImage();
    const platform::PixelRect window = headless::windowRect();
    const auto moveTo = [&](int x, int y) {  // client pixels, the row from 1 at the foot
        headless::moveMouse(window.left + x, window.bottom - y);
    };
    atOnce([&] { moveTo(10, 12); });
    atOnce([] { headless::press(EV_LEFTMOUSE); });
    std::vector<std::pair<int, int>> cursor;
    for (const auto& [x, y] : {std::pair{-4, 6}, {-30, -8}}) {
        atOnce([&moveTo, x = x, y = y] { moveTo(x, y); });
        atOnce([&] { cursor.emplace_back(windowContext().cursor.x, windowContext().cursor.y); });
        atOnce([] { postEvent(EV_TIMER, 1); });
    }
    EXPECT_EQ(found(pan), (std::pair{100 + 40 / 2.0f, 80 + 20 / 2.0f}));
    EXPECT_EQ(cursor.back(), (std::pair{-30, -8}));
}

TEST_F(QueuedMouseTest, AScrubGoesOnLeftOfTheWindow) {
    showPausedAnimation();
    const int left = headless::windowRect().left;
    atOnce([=] { headless::moveMouse(left + 10, 500); });
    atOnce([] { headless::press(EV_LEFTMOUSE); });
    atOnce([=] { headless::moveMouse(left - 30, 500); });
    EXPECT_EQ(found([] { return viewerState.currentFrame; }), 3);
}

// --- moved during a load -------------------------------------------------------------------------

TEST_F(QueuedMouseTest, MovesDuringALoadAreNotLost) {
    showAnimation(1, 1);
    viewerState.animation = 1;
    viewerState.lastFrame = viewerState.playLast = 40;
    viewerState.fileName = "no such file";
    const platform::PixelRect window = headless::windowRect();
    for (int i = 0; i < 30; ++i)
        headless::script([=] { headless::moveMouse(window.left + i, window.bottom - 2 * i); });
    testing::internal::CaptureStderr();
    loadRemainingFrames(viewerState);
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(windowContext().cursor.x, 29);
    EXPECT_EQ(windowContext().cursor.y, 58);
}

}  // namespace vistel
