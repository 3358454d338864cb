// The control bar: its place, what its controls do and show.
#include "viewer/commands/control_bar.h"

#include <tuple>
#include <vector>

#include "platform/bar_picture.h"
#include "resources/command_ids.h"
#include "viewer/viewer_fixture.h"

namespace vistel {

namespace headless = platform::headless;
using platform::BarIcon;

class ControlBarTest : public ViewerTest {
 protected:
    void SetUp() override {
        ViewerTest::SetUp();
        windowContext().controlBarWanted = true;
    }
    static std::vector<int> codesOfClick(int button) {
        showBarState(viewerState);
        windowContext().queue.clear();
        headless::click(button);
        std::vector<int> codes;
        while (!windowContext().queue.empty()) {
            const InputEvent event = windowContext().queue.take();
            EXPECT_EQ(event.value, 1);
            codes.push_back(event.code);
        }
        return codes;
    }
    static platform::BarButtonLook look(int button) {
        showBarState(viewerState);
        return headless::bar()->looks.at(button);
    }
};

// --- place --------------------------------------------------------------------------------------

TEST_F(ControlBarTest, IsOpenFromTheStartInRowsOfItsOwn) {
    showImage(testFrame(1, 400, 300));
    ASSERT_TRUE(headless::bar());
    EXPECT_TRUE(headless::menuChecked(COMMAND_CONTROL_BAR));
    EXPECT_EQ(headless::windowRect().height(), 300 + 29);
    expectPicture([](int x, int y) { return testPixel(1, x, y); });
}

TEST_F(ControlBarTest, OpensAndClosesAtTheUpperEdge) {
    showImage(testFrame(1, 400, 300));
    const platform::PixelRect open = headless::windowRect();
    headless::choose(COMMAND_CONTROL_BAR);
    EXPECT_FALSE(headless::bar());
    EXPECT_FALSE(headless::menuChecked(COMMAND_CONTROL_BAR));
    const platform::PixelRect closed = headless::windowRect();
    EXPECT_EQ(closed, (platform::PixelRect{open.left, open.top + 29, open.right, open.bottom}));
    expectPicture([](int x, int y) { return testPixel(1, x, y); });
    headless::choose(COMMAND_CONTROL_BAR);
    EXPECT_TRUE(headless::bar());
    EXPECT_TRUE(headless::menuChecked(COMMAND_CONTROL_BAR));
    EXPECT_EQ(headless::windowRect(), open);
}

TEST_F(ControlBarTest, StaysOnTheScreenWithItsWindow) {
    windowContext().controlBarWanted = false;
    viewerState.noRescale = 1;
    showImage(testFrame(1, 400, 300));
    platform::placeWindow(windowContext().window, {0, 10, 400, 310}, true);
    headless::choose(COMMAND_CONTROL_BAR);
    EXPECT_EQ(headless::windowRect(), (platform::PixelRect{0, 0, 400, 329}));
}

TEST_F(ControlBarTest, FullScreenClosesItAndEscapeOpensItAgainWhenItWasOpen) {
    for (const bool open : {true, false}) {
        SetUp();
        windowContext().controlBarWanted = open;
        showImage(testFrame(1, 400, 300));
        headless::choose(COMMAND_FULL_SCREEN);
        EXPECT_FALSE(headless::bar());
        EXPECT_EQ(headless::windowRect().height(), 1024);
        headless::choose(COMMAND_CONTROL_BAR);  // there is no room for it
        EXPECT_FALSE(headless::bar());
        released(keyEscape);
        EXPECT_EQ(headless::bar() != nullptr, open);
        EXPECT_EQ(headless::windowRect().height(), open ? 329 : 300);
    }
}

TEST_F(ControlBarTest, IsNotOpenWhenTheProgramStartsInFullScreen) {
    viewerState.fullScreen = 1;
    showImage(testFrame(1, 400, 300));
    EXPECT_FALSE(headless::bar());
    released(keyEscape);
    EXPECT_TRUE(headless::bar());
}

// --- buttons ------------------------------------------------------------------------------------

TEST_F(ControlBarTest, ButtonsPostTheKeysThatDoTheSame) {
    showAnimation(1, 5);
    keepFrame(viewerState, 1, planesFrame(1, 64, 48));
    showFrame(viewerState, FrameSource::kept);
    const std::tuple<int, int, bool, bool> rows[] = {
        // button, key, jumps, rests
        {BAR_TO_START, keyLeftArrow, true, false},
        {BAR_STEP_BACK, keyLeftArrow, false, false},
        {BAR_STEP_FORWARD, keyRightArrow, false, false},
        {BAR_TO_END, keyRightArrow, true, false},
        {BAR_ALL_CHANNELS, 'C', false, false},
        {BAR_MASK, 'A', false, true},
        {BAR_DEPTH, 'Z', false, true},
        {BAR_LUMINANCE, 'L', false, false},
        {BAR_PLAY_BACKWARD, characterKey(','), false, false},
        {BAR_PLAY_FORWARD, characterKey('.'), false, false},
    };
    for (const auto& [button, key, jumps, rests] : rows) {
        viewerState.jumpToEnds = viewerState.restRequested = false;
        EXPECT_EQ(codesOfClick(button), std::vector<int>{key}) << button;
        EXPECT_EQ(viewerState.jumpToEnds, jumps) << button;
        EXPECT_EQ(viewerState.restRequested, rests) << button;
    }
}

TEST_F(ControlBarTest, AClickOnTheDirectionInForcePausesAndGoesOn) {
    showAnimation(1, 5);
    const std::tuple<PlayMode, int> rows[] = {{PlayMode::backward, BAR_PLAY_BACKWARD},
                                              {PlayMode::forward, BAR_PLAY_FORWARD}};
    for (const auto& [mode, button] : rows) {
        viewerState.playMode = mode;
        for (const int paused : {0, 1}) {
            viewerState.paused = paused;
            EXPECT_EQ(codesOfClick(button), std::vector<int>{keySpace});
        }
    }
}

TEST_F(ControlBarTest, PlayButtonsShowTheStateOfPlaying) {
    showAnimation(1, 5);
    struct Row {
        PlayMode mode;
        int paused;
        BarIcon backward, forward;
        bool backwardActive, forwardActive;
    };
    const Row rows[] = {
        {PlayMode::stopped, 0, BarIcon::playBackward, BarIcon::playForward, false, false},
        {PlayMode::forward, 0, BarIcon::playBackward, BarIcon::pause, false, true},
        {PlayMode::forward, 1, BarIcon::playBackward, BarIcon::playForward, false, true},
        {PlayMode::backward, 0, BarIcon::pause, BarIcon::playForward, true, false},
        {PlayMode::backward, 1, BarIcon::playBackward, BarIcon::playForward, true, false},
    };
    for (const Row& row : rows) {
        viewerState.playMode = row.mode;
        viewerState.paused = row.paused;
        EXPECT_EQ(look(BAR_PLAY_BACKWARD).icon, row.backward);
        EXPECT_EQ(look(BAR_PLAY_FORWARD).icon, row.forward);
        EXPECT_EQ(look(BAR_PLAY_BACKWARD).active, row.backwardActive);
        EXPECT_EQ(look(BAR_PLAY_FORWARD).active, row.forwardActive);
    }
}

TEST_F(ControlBarTest, ThePlayStateIsShownAfterEachKey) {
    showAnimation(1, 5);
    std::vector<BarIcon> icons;
    headless::script([&] { headless::type(keySpace); });
    headless::whenIdle([&] {
        icons.push_back(headless::bar()->looks.at(BAR_PLAY_FORWARD).icon);
        headless::close();
    });
    runViewerLoop(viewerState);
    EXPECT_EQ(icons, std::vector<BarIcon>{BarIcon::playForward});  // paused: it would go on
}

TEST_F(ControlBarTest, NothingPlaysBackwardWithSoundAndAnImageDoesNotPlay) {
    showAnimation(1, 5);
    viewerState.soundOn = 1;  // wanted, but not to be had
    EXPECT_TRUE(look(BAR_PLAY_BACKWARD).enabled);
    viewerState.soundLoaded = 1;
    EXPECT_FALSE(look(BAR_PLAY_BACKWARD).enabled);
    EXPECT_EQ(codesOfClick(BAR_PLAY_BACKWARD), std::vector<int>{});
    EXPECT_TRUE(look(BAR_PLAY_FORWARD).enabled);
    viewerState.animation = 0;
    for (const int button : {BAR_TO_START, BAR_STEP_BACK, BAR_PLAY_BACKWARD, BAR_PLAY_FORWARD,
                             BAR_STEP_FORWARD, BAR_TO_END}) {
        EXPECT_FALSE(look(button).enabled) << button;
        runBarCommand(viewerState, button);
    }
    EXPECT_FALSE(viewerState.jumpToEnds);
}

TEST_F(ControlBarTest, EachControlHasATip) {
    showImage(testFrame(1, 400, 300));
    for (const int control :
         {BAR_TO_START, BAR_STEP_BACK, BAR_PLAY_BACKWARD, BAR_PLAY_FORWARD, BAR_STEP_FORWARD,
          BAR_TO_END, BAR_RATE, BAR_ALL_CHANNELS, BAR_MASK, BAR_DEPTH})
        EXPECT_NE(headless::bar()->tips.at(control).find('('), std::string::npos) << control;
}

// --- rate ---------------------------------------------------------------------------------------

TEST_F(ControlBarTest, TheFieldTakesRatesFrom1To300) {
    showAnimation(1, 5);
    const std::tuple<const char*, int> rows[] = {{"4 5", 45},  {"0", 1},     {"1000", 300},
                                                 {" 7\t", 7},  {"-3", 1},    {"abc", 1},
                                                 {"299", 299}, {"300", 300}, {"", 1}};
    for (const auto& [text, rate] : rows) {
        headless::typeRate(text);
        EXPECT_EQ(viewerState.frameRate, rate) << text;
        EXPECT_EQ(headless::bar()->rate, std::to_string(rate)) << text;
    }
}

TEST_F(ControlBarTest, TheFieldShowsTheRateThatKeysSet) {
    showAnimation(1, 5);
    EXPECT_EQ(headless::bar()->rate, "24");
    key(keyPadAdd, shift);
    showBarState(viewerState);
    EXPECT_EQ(headless::bar()->rate, "26");
}

TEST_F(ControlBarTest, TheSameRateTypedAgainDoesNotStartTheClockAnew) {
    showAnimation(1, 5);
    viewerState.clock.reset();
    headless::advanceMilliseconds(500);
    const float before = viewerState.clock.timeAhead(24);
    headless::typeRate(" 24");
    EXPECT_EQ(viewerState.clock.timeAhead(24), before);
    headless::typeRate("25");
    EXPECT_EQ(viewerState.clock.timeAhead(24), 0);
}

}  // namespace vistel
