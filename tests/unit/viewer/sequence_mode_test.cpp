// Sequence mode: a source is shown for so long, then the next one in the same window.
#include <map>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "viewer/commands/queued_input.h"
#include "viewer/frame_folder.h"
#include "viewer/playback/load_animation.h"
#include "viewer/show_source.h"
#include "viewer/viewer_fixture.h"

namespace vistel {

namespace headless = platform::headless;

class SequenceModeTest : public ViewerTest {
 protected:
    void SetUp() override {
        ViewerTest::SetUp();
        viewerState.sequenceMode = 1;
        viewerState.sequenceDelay = 2;
        headless::whenIdle([] {
            headless::advanceMilliseconds(100);
            postEvent(EV_TIMER, 1);
        });
    }
    void TearDown() override { clearViewerSession(viewerState); }
    static void begin() {
        viewerState.currentZoom = viewerState.magnify;
        viewerState.quitRequested = 0;
        forgetClosedWindow();
    }
    // A source's first frame arrives, as the file walk lets it.
    static void source(FrameStore&& frame) {
        begin();
        viewerState.animation = 0;
        viewerState.firstFrame = viewerState.playFirst = viewerState.currentFrame = 1;
        viewerState.lastFrame = viewerState.playLast = viewerState.frameStep = 1;
        showSource(viewerState, std::move(frame));
    }
    static void animationSource(const std::string& name, int first, int last) {
        begin();
        FrameFolder::animation(name, first, last);
        FrameStore frame;
        ASSERT_EQ(readCurrent(frame), 0);
        showSource(viewerState, std::move(frame));
    }
};

TEST_F(SequenceModeTest, TheLoopEndsAtTheFirstEventAfterTheDelay) {
    source(testFrame(1, 400, 300));
    EXPECT_EQ(platform::tickMilliseconds(), 2100u);  // 2000 are not more than the delay
    source(testFrame(2, 400, 300));                  // the time counts from its own start
    EXPECT_EQ(platform::tickMilliseconds(), 4200u);
}

TEST_F(SequenceModeTest, WithoutADelayEachEventGoesOn) {
    viewerState.sequenceDelay = 0;
    source(testFrame(1, 400, 300));
    EXPECT_EQ(platform::tickMilliseconds(), 100u);
}

TEST_F(SequenceModeTest, PlayingIsAsGoodAsAnEvent) {
    headless::whenIdle(headless::close);
    showAnimation(1, 5);
    viewerState.frameRate = 25;
    runViewerLoop(viewerState);
    EXPECT_TRUE(headless::windowOpen());
    EXPECT_NEAR(platform::tickMilliseconds(), 2020, 25);
}

TEST_F(SequenceModeTest, WithoutSequenceModeTheDelayMeansNothing) {
    viewerState.sequenceMode = 0;
    int idle = 0;
    headless::whenIdle([&] {
        headless::advanceMilliseconds(1000);
        if (++idle < 50) return postEvent(EV_TIMER, 1), void();
        headless::close();
    });
    source(testFrame(1, 400, 300));
    EXPECT_EQ(idle, 50);
}

TEST_F(SequenceModeTest, NothingIsFreedAndTheWindowStays) {
    source(testFrame(1, 400, 300));
    EXPECT_TRUE(headless::windowOpen());
    EXPECT_EQ(viewerState.quitRequested, 0);
    EXPECT_EQ(windowContext().viewerRunning, 0);
    EXPECT_EQ(viewerState.slots.count(), 1u);
    ASSERT_NE(viewerState.shown, nullptr);
    expectPicture([](int x, int y) { return testPixel(1, x, y); });
}

TEST_F(SequenceModeTest, TheNextSourceIsShownInTheSameWindowAndTheFirstIsFreed) {
    std::vector<int> seen;
    for (const int number : {1, 2, 1, 3}) {
        source(testFrame(number, 400, 300));
        seen.push_back(visibleFrame());
        EXPECT_EQ(viewerState.slots.count(), 1u);
        EXPECT_EQ(viewerState.shown, viewerState.slots.find(1));
    }
    EXPECT_EQ(seen, (std::vector{1, 2, 1, 3}));
    EXPECT_EQ(headless::windowsOpened(), 1);
    source(testFrame(4, 500, 200));  // of another size: the window follows
    EXPECT_EQ(headless::windowsOpened(), 1);
    EXPECT_EQ(headless::windowRect().width(), 500);
    EXPECT_EQ(headless::windowRect().height(), 200);
    expectPicture([](int x, int y) { return testPixel(4, x, y); });
}

TEST_F(SequenceModeTest, ColoursAndViewStayFromSourceToSource) {
    headless::script([] { headless::type('X'); });
    headless::script([] { headless::type('G'); });
    source(testFrame(1, 400, 300));
    source(testFrame(2, 400, 300));
    expectPicture([](int, int row) { return (255 - uint32_t(row & 255)) * 0x010101u; });
}

TEST_F(SequenceModeTest, TheUserEndsItAtAnySource) {
    source(testFrame(1, 400, 300));
    headless::whenIdle(headless::close);
    source(testFrame(2, 400, 300));
    EXPECT_FALSE(headless::windowOpen());
    EXPECT_EQ(viewerState.quitRequested, 1);
    EXPECT_EQ(viewerState.slots.count(), 0u);
}

TEST_F(SequenceModeTest, AWindowClosedWhileTheNextSourceIsReadEndsIt) {
    source(testFrame(1, 400, 300));
    begin();
    headless::script(headless::close);
    EXPECT_FALSE(keepReading(viewerState));
    EXPECT_EQ(viewerState.quitRequested, 1);
    FrameStore frame = testFrame(2, 400, 300);  // it was complete all the same
    showSource(viewerState, std::move(frame));
    EXPECT_FALSE(headless::windowOpen());
    EXPECT_EQ(headless::windowsOpened(), 1);
}

TEST_F(SequenceModeTest, TheTimerTicksTenTimesASecond) {
    source(testFrame(1, 400, 300));
    EXPECT_EQ(headless::timerPeriod(), 100u);
}

TEST_F(SequenceModeTest, AnimationsOfDifferentRangesFollowEachOther) {
    const FrameFolder folder;
    viewerState.sequenceDelay = 1;
    viewerState.frameRate = 25;
    std::map<int, int> shown;  // red of the picture: how often
    headless::whenPresented([&] {
        const PictureLayout& layout = viewerState.layout;
        ++shown[int(headless::visibleImage().at(layout.marginX, layout.marginY) & 255)];
    });
    const auto reds = [&] {
        std::vector<int> numbers;
        for (const auto& [red, count] : std::exchange(shown, {}))
            if (count > 1) numbers.push_back(red / 10);  // not the picture that was there before
        return numbers;
    };
    for (int round = 0; round < 2; ++round) {
        animationSource("shot", 1, 4);
        EXPECT_EQ(reds(), (std::vector{1, 2, 3, 4}));
        EXPECT_EQ(viewerState.slots.count(), 4u);
        animationSource("clip", 7, 9);
        EXPECT_EQ(reds(), (std::vector{7, 8, 9}));
        EXPECT_EQ(viewerState.slots.count(), 3u);
        source(testFrame(1, 400, 300));
        EXPECT_EQ(viewerState.slots.count(), 1u);
        expectPicture([](int x, int y) { return testPixel(1, x, y); });
        shown.clear();
    }
    EXPECT_EQ(headless::windowsOpened(), 1);
}

// --- Escape during a load ------------------------------------------------------------------------

class EscapeTest : public SequenceModeTest {
 protected:
    // Loads an animation without files in full screen while the user does something.
    void load(std::function<void()> during) {
        viewerState.fullScreen = 1;
        showAnimation(1, 1, 1, 400, 300);
        windowContext().drawPass = [] { drawPass(viewerState); };
        viewerState.animation = 1;
        viewerState.lastFrame = viewerState.playLast = 9;
        viewerState.fileName = "no such file";
        headless::script(std::move(during));
        testing::internal::CaptureStderr();
        loadRemainingFrames(viewerState);
        testing::internal::GetCapturedStderr();
        viewerState.lastFrame = viewerState.playLast = 1;
        viewerState.sequenceMode = 0;
    }
    // Whether full screen was left in the loop.
    static bool leavesFullScreen(std::function<void()> later) {
        headless::script([] { headless::type(keySpace); });
        headless::script(std::move(later));
        bool left = false;
        headless::whenIdle([&] {
            left = !viewerState.fullScreen;
            headless::close();
        });
        runViewerLoop(viewerState);
        return left;
    }
};

TEST_F(EscapeTest, PressedAndReleasedDuringALoadItDoesNotSwallowTheNextOne) {
    load([] { headless::type(keyEscape); });
    EXPECT_TRUE(leavesFullScreen([] { headless::type(keyEscape); }));
}

TEST_F(EscapeTest, ReleasedAfterTheLoadItMeansNothingAndTheNextOneDoes) {
    load([] { headless::press(keyEscape); });
    EXPECT_FALSE(leavesFullScreen([] { headless::release(keyEscape); }));
    SetUp();
    load([] { headless::press(keyEscape); });
    EXPECT_TRUE(leavesFullScreen([] {
        headless::release(keyEscape);
        headless::type(keyEscape);
    }));
}

TEST_F(EscapeTest, ALoadThatItEndedDoesNotCountForTheNextSource) {
    load([] { headless::press(keyEscape); });
    ASSERT_TRUE(viewerState.escapeTaken);
    viewerState.sequenceMode = 1;
    runViewerLoop(viewerState);  // until its time is over; the key is held
    viewerState.sequenceMode = 0;
    bool left = false;
    headless::script([] { headless::release(keyEscape); });
    headless::whenIdle([&] {
        left = !viewerState.fullScreen;
        headless::close();
    });
    source(testFrame(2, 400, 300));
    EXPECT_TRUE(left);
}

}  // namespace vistel
