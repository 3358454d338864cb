#include "viewer/viewer_loop.h"

#include <map>
#include <vector>

#include "platform/clock.h"
#include "sequence/frame_reader.h"
#include "viewer/playback/load_animation.h"
#include "viewer/viewer_fixture.h"

namespace vistel {

namespace headless = platform::headless;

class ViewerLoopTest : public ViewerTest {
 protected:
    // Each step is run when the loop looks for messages; `seen` collects what was visible then.
    void atEachPump(int times, std::function<void()> step) {
        for (int i = 0; i < times; ++i) headless::script(step);
    }
};

TEST_F(ViewerLoopTest, PlaysForwardAtTheRateAndWraps) {
    showAnimation(1, 5);
    viewerState.frameRate = 25;
    std::vector<std::pair<int, uint64_t>> shown;  // frame, millisecond
    int presents = 0;
    atEachPump(4000, [&] {
        if (headless::presents() == presents) return;
        presents = headless::presents();
        shown.emplace_back(visibleFrame(), platform::tickMilliseconds());
    });
    headless::script(headless::close);
    runViewerLoop(viewerState);
    ASSERT_GT(shown.size(), 20u);
    for (size_t i = 0; i < 20; ++i) {
        EXPECT_EQ(shown[i].first, int(i % 5) + 1) << i;
        EXPECT_NEAR(double(shown[i].second), 40.0 * i, 3) << i;
    }
}

TEST_F(ViewerLoopTest, ShowsNoFrameTwiceAndLeavesNoneOutWhenTheMouseMoves) {
    showAnimation(1, 50);
    viewerState.frameRate = 100;
    std::vector<int> shown;
    int presents = 0, moves = 0;
    atEachPump(3000, [&] {
        headless::moveMouse(100 + ++moves % 50, 100);
        headless::advanceMilliseconds(1);
        if (headless::presents() == presents) return;
        presents = headless::presents();
        shown.push_back(visibleFrame());
    });
    headless::script(headless::close);
    runViewerLoop(viewerState);
    ASSERT_GT(shown.size(), 50u);
    for (size_t i = 0; i < 50; ++i) EXPECT_EQ(shown[i], int(i) + 1);
}

// A drag whose moves come in every pass, each of which changes the picture.
TEST_F(ViewerLoopTest, AFloodOfEventsThatChangeThePictureDoesNotHoldPlaybackUp) {
    showAnimation(1, 50);
    viewerState.frameRate = 25;
    std::vector<std::pair<int, uint32_t>> shown;  // frame, millisecond at which it came first
    int presents = 0;
    headless::whenPresented([&] {
        ++presents;
        if (shown.empty() || shown.back().first != visibleFrame())
            shown.emplace_back(visibleFrame(), platform::tickMilliseconds());
        headless::advanceMilliseconds(4);
        if (presents > 1) headless::moveMouse(100 + presents % 2, 100);
        if (presents == 400) postEvent(EV_QUIT, 1);
    });
    headless::script([] {
        viewerState.dragging.pan = true;
        headless::moveMouse(50, 50);
    });
    runViewerLoop(viewerState);
    ASSERT_GT(shown.size(), 20u);
    for (size_t i = 0; i < 20; ++i) {
        EXPECT_EQ(shown[i].first, int(i) + 1);
        EXPECT_NEAR(double(shown[i].second), 40.0 * double(i), 9) << i;
    }
    EXPECT_GT(presents, 2 * int(shown.size()));  // the drag is seen between the frames
}

TEST_F(ViewerLoopTest, SpacePausesAndTheArrowStepsOneFrame) {
    showAnimation(1, 9);
    std::vector<int> shown;
    headless::script([] { headless::type(keySpace); });
    headless::script([] {});
    headless::script([] { headless::type(keyRightArrow); });
    headless::whenIdle([&] {
        shown.push_back(visibleFrame());
        if (shown.size() == 1) headless::type(keyLeftArrow);
        if (shown.size() == 2) headless::close();
    });
    runViewerLoop(viewerState);
    ASSERT_EQ(shown.size(), 2u);
    EXPECT_EQ(shown[0], shown[1] % 9 + 1);
}

TEST_F(ViewerLoopTest, ASingleImageNeverShowsAStatusLine) {
    showAnimation(1, 1);
    headless::whenIdle([] {
        EXPECT_TRUE(headless::visibleTexts().empty());
        headless::close();
    });
    runViewerLoop(viewerState);
}

TEST_F(ViewerLoopTest, AnAnimationHasItsStatusLineAtTheTop) {
    showAnimation(1, 3);
    bool looked = false;
    headless::script([] { headless::type(keySpace); });
    headless::whenIdle([&] {
        looked = true;
        ASSERT_EQ(headless::visibleTexts().size(), 1u);
        const auto& text = headless::visibleTexts()[0];
        EXPECT_EQ(text.y, 240 - 15);
        EXPECT_EQ(text.x, (320 - int(text.text.size()) * 6) / 2);
        EXPECT_EQ(headless::visibleImage().at(0, 239), 0xFF202020u);
        EXPECT_EQ(headless::visibleImage().at(0, 0), 0xFF202020u);
        headless::close();
    });
    runViewerLoop(viewerState);
    EXPECT_TRUE(looked);
}

TEST_F(ViewerLoopTest, ThePictureIsExactAtItsMargins) {
    viewerState.currentZoom = 3;
    showAnimation(7, 7, 1, 64, 48);
    headless::whenIdle([] {
        const PictureLayout& layout = viewerState.layout;
        const headless::Image& image = headless::visibleImage();
        for (int y = 0; y < image.height; ++y) {
            for (int x = 0; x < image.width; ++x) {
                const int px = x - layout.marginX, py = y - layout.marginY;
                const bool inside = px >= 0 && py >= 0 && px < 192 && py < 144;
                const uint32_t expected =
                    inside ? 0xFF000000u | 7 << 16 | (py / 3) << 8 | px / 3 : 0xFF202020u;
                ASSERT_EQ(image.at(x, y), expected) << x << "," << y;
            }
        }
        headless::close();
    });
    runViewerLoop(viewerState);
}

TEST_F(ViewerLoopTest, AFrameOfAnotherSizeIsCentredOnTheSamePlace) {
    showAnimation(1, 2, 1, 400, 300);
    keepFrame(viewerState, 2, testFrame(2, 300, 200));
    headless::script([] { headless::type(keySpace); });
    headless::script([] {
        viewerState.currentFrame = 1;
        headless::type(keyRightArrow);
    });
    headless::whenIdle([] {
        EXPECT_EQ(viewerState.layout.marginX, 70);
        EXPECT_EQ(viewerState.layout.marginY, 70);
        EXPECT_EQ(visibleFrame(), 2);
        EXPECT_EQ(headless::visibleImage().at(69, 70), 0xFF202020u);
        EXPECT_EQ(headless::visibleImage().at(370, 100), 0xFF202020u);
        headless::close();
    });
    runViewerLoop(viewerState);
}

TEST_F(ViewerLoopTest, TheTimeLimitEndsTheLoopAndFreesNothing) {
    showAnimation(1, 1);
    viewerState.sequenceMode = 1;
    viewerState.sequenceDelay = 2;
    headless::whenIdle([] {
        headless::advanceMilliseconds(100);
        postEvent(EV_TIMER, 1);
    });
    runViewerLoop(viewerState);
    EXPECT_TRUE(headless::windowOpen());
    EXPECT_EQ(viewerState.slots.count(), 1u);
    EXPECT_EQ(viewerState.quitRequested, 0);
}

TEST_F(ViewerLoopTest, ClosingFreesTheFramesAndAsksToQuit) {
    showAnimation(1, 3);
    headless::script(headless::close);
    runViewerLoop(viewerState);
    EXPECT_EQ(viewerState.slots.count(), 0u);
    EXPECT_EQ(viewerState.quitRequested, 1);
}

TEST_F(ViewerLoopTest, AQuitEventOfTheMenuLeavesTheFileWithoutQuitting) {
    showAnimation(1, 1);
    headless::script([] { postEvent(EV_QUIT, 1); });
    runViewerLoop(viewerState);
    EXPECT_EQ(viewerState.quitRequested, 0);
    EXPECT_TRUE(headless::windowOpen());
}

TEST_F(ViewerLoopTest, RangeKeysNarrowTheRange) {
    showAnimation(1, 9);
    headless::script([] { headless::type(keySpace); });
    int idle = 0;
    headless::whenIdle([&] {
        const bool first = ++idle == 1;
        if (idle <= 2) {
            viewerState.currentFrame = first ? 3 : 6;
            headless::press(keyLeftShift);
            headless::type(characterKey(first ? ',' : '.'));
            return headless::release(keyLeftShift);
        }
        EXPECT_EQ(viewerState.playFirst, 3);
        EXPECT_EQ(viewerState.playLast, 6);
        EXPECT_NE(headless::visibleTexts()[0].text.find(" - [3,6]"), std::string::npos);
        headless::close();
    });
    runViewerLoop(viewerState);
}

TEST_F(ViewerLoopTest, EscapeLeavesFullScreen) {
    viewerState.fullScreen = 1;
    showAnimation(1, 1, 1, 400, 300);
    EXPECT_EQ(headless::windowRect().width(), 1280);
    headless::script([] { headless::type(keyEscape); });
    headless::whenIdle([] {
        EXPECT_EQ(viewerState.fullScreen, 0);
        EXPECT_EQ(headless::windowRect().width(), 400);
        headless::close();
    });
    runViewerLoop(viewerState);
}

TEST_F(ViewerLoopTest, AFrameThatCannotBeReadLeavesThePictureAndSaysSo) {
    showAnimation(1, 3);
    viewerState.lastFrame = viewerState.playLast = 4;  // frame 4 has no file
    viewerState.fileName = "no such file";
    viewerState.currentFrame = 3;
    int idle = 0;
    headless::script([] { headless::type(keySpace); });
    headless::whenIdle([&] {
        ++idle;
        if (idle == 1) {
            viewerState.currentFrame = 3;
            return headless::type(keyRightArrow);
        }
        EXPECT_NE(headless::visibleTexts()[0].text.find(" - 4  ???"), std::string::npos)
            << headless::visibleTexts()[0].text;
        headless::close();
    });
    runViewerLoop(viewerState);
    EXPECT_EQ(idle, 2);
}

TEST_F(ViewerLoopTest, ReloadingAVanishedFileShowsABandUntilTheKeyIsReleased) {
    showAnimation(1, 1, 1, 400, 300);
    viewerState.fileName = "no such file";
    windowContext().drawPass = [] { drawPass(viewerState); };
    int idle = 0;
    headless::whenIdle([&] {
        ++idle;
        if (idle == 1) return headless::press('U');
        if (idle == 2) {
            ASSERT_EQ(headless::visibleTexts().size(), 1u);
            EXPECT_EQ(headless::visibleImage().at(399, 0), 0xFF000000u);
            return headless::release('U');
        }
        EXPECT_NE(headless::visibleImage().at(399, 0), 0xFF000000u);
        headless::close();
    });
    runViewerLoop(viewerState);
    EXPECT_EQ(idle, 3);
}

TEST_F(ViewerLoopTest, HeldStepsDoNotPileUpWhileStopped) {
    showAnimation(1, 30);
    int idle = 0, from = 0;
    headless::script([] { headless::type(keySpace); });
    headless::whenIdle([&] {
        if (++idle == 1) {
            from = viewerState.currentFrame;
            for (int i = 0; i < 10; ++i) headless::press(keyRightArrow);
            return;
        }
        EXPECT_EQ(viewerState.currentFrame, from + 1);
        headless::close();
    });
    runViewerLoop(viewerState);
}

TEST_F(ViewerLoopTest, ATimerTickSeesModifiersThatWereReleasedElsewhere) {
    showAnimation(1, 3);
    viewerState.modifiers.leftAlt = true;
    headless::script([] { postEvent(EV_TIMER, 1); });
    headless::script([] {});
    headless::script([] { headless::type(keySpace); });
    headless::whenIdle([] {
        EXPECT_FALSE(viewerState.modifiers.any());
        headless::close();
    });
    runViewerLoop(viewerState);
}

TEST_F(ViewerLoopTest, ATimerTickLeavesAModifierWhoseReleaseIsStillQueued) {
    showAnimation(1, 9);
    headless::script([] { headless::type(keySpace); });
    headless::whenIdle([] {
        // All of it was typed before the loop came to look.
        headless::press(keyLeftShift);
        postEvent(EV_TIMER, 1);
        viewerState.currentFrame = 4;
        headless::type(characterKey(','));
        headless::release(keyLeftShift);
        for (int i = 0; i < 20; ++i) headless::script([] {});
        headless::script(headless::close);
    });
    runViewerLoop(viewerState);
    EXPECT_EQ(viewerState.playFirst, 4);  // Shift: the range's start
}

TEST_F(ViewerLoopTest, EscapeEndsALoadAndNothingElse) {
    viewerState.fullScreen = 1;
    showAnimation(1, 1, 1, 400, 300);
    viewerState.animation = 1;
    viewerState.lastFrame = viewerState.playLast = 9;
    viewerState.fileName = "no such file";
    headless::script([] { headless::press(keyEscape); });
    testing::internal::CaptureStderr();
    loadRemainingFrames(viewerState);
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(viewerState.currentFrame, 1);
    headless::script([] { headless::type(keySpace); });
    headless::script([] { headless::release(keyEscape); });
    headless::whenIdle(headless::close);
    runViewerLoop(viewerState);
    EXPECT_EQ(viewerState.fullScreen, 1);
}

TEST_F(ViewerLoopTest, ALongLoadKeepsOnlyTheKeysAndATick) {
    showAnimation(1, 1);
    viewerState.animation = 1;
    viewerState.lastFrame = viewerState.playLast = 40;
    viewerState.fileName = "no such file";
    for (int i = 0; i < 30; ++i)
        headless::script([i] {
            headless::moveMouse(i, i);
            postEvent(EV_TIMER, 1);
            if (i == 29) headless::press('S');
        });
    testing::internal::CaptureStderr();
    loadRemainingFrames(viewerState);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("Frames 2 to 40"), std::string::npos);
    EXPECT_EQ(windowContext().queue.count(), 2);
    EXPECT_EQ(waitEvent().code, EV_TIMER);
    EXPECT_EQ(waitEvent().code, 'S');
    EXPECT_EQ(headless::title(), "VisTel: loading no such file, frame 2 of 40");
}

TEST_F(ViewerLoopTest, StepsByHandAreShownAtOnce) {
    showAnimation(1, 9);
    viewerState.frameRate = 1;
    uint32_t paused = 0;
    int idle = 0;
    headless::script([] { headless::type(keySpace); });
    headless::whenIdle([&] {
        if (++idle == 1) paused = platform::tickMilliseconds();
        if (idle <= 3) return headless::type(keyRightArrow);
        EXPECT_EQ(visibleFrame(), viewerState.currentFrame);
        EXPECT_EQ(platform::tickMilliseconds(), paused);
        headless::close();
    });
    runViewerLoop(viewerState);
    EXPECT_EQ(idle, 4);
}

TEST_F(ViewerLoopTest, PanIsClampedToThePicture) {
    viewerState.noRescale = 1;
    showAnimation(1, 1, 1, 2000, 300);  // 1160 columns are visible
    PictureLayout& layout = viewerState.layout;
    const std::pair<float, float> rows[] = {{-5, 0}, {10, 10}, {840, 840}, {5000, 840}};
    for (const auto& [wanted, expected] : rows) {
        layout.panX = layout.panY = wanted;
        drawPass(viewerState);
        EXPECT_FLOAT_EQ(layout.panX, expected);
        EXPECT_FLOAT_EQ(layout.panY, 0);  // all rows are visible
    }
}

TEST_F(ViewerLoopTest, TheMarkOfAStepBackGoesWithThePassThatShowsIt) {
    showAnimation(1, 9);
    int idle = 0;
    headless::script([] { headless::type(keySpace); });
    headless::whenIdle([&] {
        EXPECT_FALSE(viewerState.wentBackward);
        if (++idle == 1) return headless::type(keyLeftArrow);
        headless::close();
    });
    bool marked = false;
    const auto whilePresented = [&] { marked |= viewerState.wentBackward; };
    headless::whenPresented(whilePresented);
    runViewerLoop(viewerState);
    EXPECT_TRUE(marked);
}

TEST_F(ViewerLoopTest, TheNextStepByKeyGoesToAnEndWhenThatIsAskedFor) {
    showAnimation(1, 9);
    viewerState.playFirst = 2;
    viewerState.playLast = 8;
    viewerState.currentFrame = 5;
    viewerState.jumpToEnds = true;
    viewerState.playMode = PlayMode::forward;
    runKey(viewerState,
           {.code = keyRightArrow, .synthetic = true, .modifiers = {}});  // playing goes on
    EXPECT_EQ(viewerState.currentFrame, 6);
    EXPECT_TRUE(viewerState.jumpToEnds);
    key(keyRightArrow);  // even while playing
    EXPECT_EQ(viewerState.currentFrame, 8);
    EXPECT_FALSE(viewerState.jumpToEnds);
    viewerState.playMode = PlayMode::stopped;
    key(keyLeftArrow);
    EXPECT_EQ(viewerState.currentFrame, 7);
    viewerState.jumpToEnds = true;
    key(keyLeftArrow);
    EXPECT_EQ(viewerState.currentFrame, 2);
}

TEST_F(ViewerLoopTest, AnAnimationRestsOnlyWhenItIsPaused) {
    showAnimation(1, 9);
    viewerState.frameRate = 25;
    uint32_t before = 0, paused = 0;
    int idle = 0;
    atEachPump(400, [&] { viewerState.restRequested = true; });
    headless::script([&] {
        before = platform::tickMilliseconds();
        EXPECT_TRUE(viewerState.restRequested);  // not while it plays
        headless::type(keySpace);
    });
    headless::whenIdle([&] {
        if (++idle == 1) {
            paused = platform::tickMilliseconds();
            return headless::moveMouse(3, 3);
        }
        EXPECT_FALSE(viewerState.restRequested);
        EXPECT_EQ(platform::tickMilliseconds(), paused);  // once
        headless::close();
    });
    runViewerLoop(viewerState);
    EXPECT_EQ(idle, 2);
    EXPECT_LT(before, 450u);  // a pump for each millisecond: no rest was made
    EXPECT_GE(paused - before, 100u);
    EXPECT_LE(paused - before, 141u);  // and the frame that was waited for
}

TEST_F(ViewerLoopTest, ARestIsATenthOfASecondOnce) {
    showAnimation(1, 1);
    viewerState.restRequested = true;
    headless::script([] { headless::moveMouse(1, 1); });
    uint32_t rested = 0;
    headless::whenIdle([&] {
        rested = platform::tickMilliseconds();
        headless::close();
    });
    runViewerLoop(viewerState);
    EXPECT_EQ(rested, 100u);
}

}  // namespace vistel
