// The menu's commands, as the user picks them.
#include "viewer/commands/menu_commands.h"

#include <set>
#include <utility>
#include <vector>

#include "golden.h"
#include "resources/command_ids.h"
#include "viewer/frame_folder.h"
#include "viewer/viewer_fixture.h"

namespace vistel {

namespace headless = platform::headless;

// They only need a page to open.
const std::set<int> helpItems = {COMMAND_HELP_KEYBOARD,      COMMAND_HELP_COMMAND_LINE,
                                 COMMAND_HELP_ANIMATION,     COMMAND_HELP_OPENING,
                                 COMMAND_HELP_MANIPULATIONS, COMMAND_HELP_MOUSE,
                                 COMMAND_HELP_SAVING};

class MenuCommandsTest : public ViewerTest {
 protected:
    static PictureLayout& layout() { return viewerState.layout; }

    // A frame of an image that its reader has shrunk.
    static FrameStore shrunkFrame(int number, int width, int height, int shrink) {
        FrameStore frame = testFrame(number, width, height);
        frame.header.width = width * shrink;
        frame.header.height = height * shrink;
        frame.shrink = shrink;
        return frame;
    }
    static std::vector<int> queuedCodes() {
        std::vector<int> codes;
        while (!windowContext().queue.empty()) codes.push_back(windowContext().queue.take().code);
        return codes;
    }
};

// --- full screen ---------------------------------------------------------------------------------

TEST_F(MenuCommandsTest, FullScreenChosenTwiceIsFullScreenChosenOnce) {
    showImage(testFrame(1, 400, 300));
    key(keyPadDecimal);
    layout().panX = 30;
    layout().panY = 20;
    headless::choose(COMMAND_FULL_SCREEN);
    EXPECT_EQ(viewerState.fullScreen, 1);
    EXPECT_EQ(headless::windowRect().width(), 1280);
    EXPECT_EQ(headless::windowRect().height(), 1024);
    EXPECT_EQ(queuedCodes(), std::vector<int>{EV_REDRAW});
    redraw();
    headless::choose(COMMAND_FULL_SCREEN);
    EXPECT_EQ(queuedCodes(), std::vector<int>{});
    released(keyEscape);
    EXPECT_EQ(viewerState.fullScreen, 0);
    EXPECT_EQ(headless::windowRect().width(), 400);
    EXPECT_EQ(layout().zoom, 2);
    EXPECT_FLOAT_EQ(layout().panX, 30);  // as before the first time
    EXPECT_FLOAT_EQ(layout().panY, 20);
    expectPicture([](int x, int y) { return testPixel(1, x, y); });
}

TEST_F(MenuCommandsTest, AfterFullScreenTheWindowIsWhereItWasBefore) {
    showImage(testFrame(1, 400, 300));
    platform::placeWindow(windowContext().window, {30, 100, 430, 400}, true);
    headless::choose(COMMAND_FULL_SCREEN);
    redraw();
    released(keyEscape);
    EXPECT_EQ(headless::windowRect().left, 30);
    EXPECT_EQ(headless::windowRect().top, 100);
}

TEST_F(MenuCommandsTest, AfterAnotherZoomInFullScreenThePanIsNotThatOfBefore) {
    showImage(testFrame(1, 400, 300));
    key(keyPadDecimal);
    layout().panX = 30;
    headless::choose(COMMAND_FULL_SCREEN);
    redraw();
    key(keyPadDecimal);
    redraw();
    released(keyEscape);
    redraw();
    EXPECT_EQ(layout().zoom, 3);
    EXPECT_NE(layout().panX, 30);
    expectPicture([](int x, int y) { return testPixel(1, x, y); });
}

TEST_F(MenuCommandsTest, FullScreenWithoutAPictureWaitsForOne) {
    openWindowOrExit(viewerState, "VisTel");
    headless::choose(COMMAND_FULL_SCREEN);
    EXPECT_EQ(viewerState.fullScreen, 1);
    showImage(testFrame(1, 400, 300));
    EXPECT_EQ(headless::windowRect().width(), 1280);
}

// Images of 1000 x 1010: the window, whose title takes rows of the screen, has them at half size.
TEST_F(MenuCommandsTest, FullScreenReadsAgainWhatOnlyTheWindowHadShrunk) {
    showAnimation(1, 4, 1, 400, 300);
    for (const int number : {1, 3})
        keepFrame(viewerState, number, shrunkFrame(number, 500, 505, 2));
    showFrame(viewerState, FrameSource::kept);
    queuedCodes();
    headless::choose(COMMAND_FULL_SCREEN);
    EXPECT_EQ(headless::windowRect().width(), 1280);
    EXPECT_EQ(queuedCodes(), (std::vector<int>{EV_REDRAW, 'U'}));
    EXPECT_NE(viewerState.slots.find(1), nullptr);  // on screen
    for (const int number : {2, 4}) EXPECT_NE(viewerState.slots.find(number), nullptr);
    EXPECT_EQ(viewerState.slots.find(3), nullptr);
}

TEST_F(MenuCommandsTest, EscapeReadsAgainWhatIsTooLargeForAWindow) {
    const FrameFolder folder;
    FrameFolder::animation("shot", 1, 3);  // by now of 4 x 4 pixels
    viewerState.fullScreen = 1;
    for (const int number : {1, 2}) keepFrame(viewerState, number, testFrame(number, 1000, 1010));
    keepFrame(viewerState, 3, testFrame(3, 400, 300));
    beginDisplay(viewerState, *viewerState.slots.find(1));
    windowContext().drawPass = [] { drawPass(viewerState); };
    released(keyEscape);
    EXPECT_EQ(viewerState.fullScreen, 0);
    EXPECT_EQ(viewerState.shown->width, 4);
    // The window is made for what was shown, which it would show at half its size.
    EXPECT_EQ(headless::windowRect().width(), 540);
    EXPECT_EQ(viewerState.slots.find(2), nullptr);
    EXPECT_NE(viewerState.slots.find(3), nullptr);
}

TEST_F(MenuCommandsTest, EscapeLeavesFullScreenThoughTheFileHasGone) {
    viewerState.fileName = "no such file";
    viewerState.fullScreen = 1;
    showImage(testFrame(1, 1000, 1010));
    released(keyEscape);
    EXPECT_EQ(viewerState.fullScreen, 0);
    EXPECT_EQ(headless::windowRect().width(), 1000);
    expectPicture([](int x, int y) { return testPixel(1, x, y); });
}

TEST_F(MenuCommandsTest, TheNextSourceDoesNotComeBackToThePlaceOfTheOneBefore) {
    viewerState.noRescale = 1;
    showImage(testFrame(1, 2000, 300));
    layout().panX = 100;
    headless::choose(COMMAND_FULL_SCREEN);
    releaseFrames(viewerState);
    showImage(testFrame(2, 2000, 300));
    released(keyEscape);
    redraw();
    EXPECT_FLOAT_EQ(layout().panX, (2000 - 1160) / 2.0f);  // its own middle
}

// --- full resolution -----------------------------------------------------------------------------

TEST_F(MenuCommandsTest, FullResolutionIsMarked) {
    showImage(testFrame(1, 400, 300));
    EXPECT_FALSE(headless::menuChecked(COMMAND_FULL_RESOLUTION));
    for (const bool on : {true, false, true}) {
        headless::choose(COMMAND_FULL_RESOLUTION);
        EXPECT_EQ(viewerState.noRescale, on);
        EXPECT_EQ(headless::menuChecked(COMMAND_FULL_RESOLUTION), on);
    }
}

TEST_F(MenuCommandsTest, TheOptionForFullResolutionIsMarkedFromTheStart) {
    viewerState.noRescale = 1;
    showImage(testFrame(1, 400, 300));
    EXPECT_TRUE(headless::menuChecked(COMMAND_FULL_RESOLUTION));
}

TEST_F(MenuCommandsTest, FullResolutionReadsAgainWhatWasShrunkAndKeepsWhatWasNot) {
    struct Row {
        const char* name;
        std::set<int> shrunk;  // frames of 1 to 4 whose images do not fit on the screen
        bool readAtOnce;       // the one on screen, frame 2
        std::vector<int> kept;
    };
    const Row rows[] = {
        {"none", {}, false, {1, 2, 3, 4}},
        {"all", {1, 2, 3, 4}, true, {2}},
        {"the one on screen", {2}, true, {1, 2, 3, 4}},
        {"others", {1, 4}, false, {2, 3}},
    };
    for (const Row& row : rows) {
        SetUp();
        showAnimation(1, 4, 1, 400, 300);
        for (const int number : row.shrunk)
            keepFrame(viewerState, number, shrunkFrame(number, 1000, 500, 2));
        viewerState.currentFrame = 2;
        showFrame(viewerState, FrameSource::kept);
        queuedCodes();
        headless::choose(COMMAND_FULL_RESOLUTION);
        std::vector<int> kept;
        for (int number = 1; number <= 4; ++number)
            if (viewerState.slots.find(number)) kept.push_back(number);
        EXPECT_EQ(kept, row.kept) << row.name;
        EXPECT_EQ(viewerState.slots.count(), row.kept.size()) << row.name;
        EXPECT_EQ(viewerState.shown, viewerState.slots.find(2)) << row.name;
        EXPECT_EQ(queuedCodes(), std::vector<int>{row.readAtOnce ? int{'U'} : int{EV_REDRAW}})
            << row.name;
    }
}

TEST_F(MenuCommandsTest, LeavingFullResolutionReadsAgainWhatDoesNotFit) {
    viewerState.noRescale = 1;
    showAnimation(1, 3, 1, 400, 300);
    keepFrame(viewerState, 3, testFrame(3, 2000, 300));
    headless::choose(COMMAND_FULL_RESOLUTION);
    EXPECT_NE(viewerState.slots.find(1), nullptr);
    EXPECT_EQ(viewerState.slots.find(3), nullptr);
}

TEST_F(MenuCommandsTest, DroppedFramesMakeRoom) {
    showAnimation(1, 3, 1, 400, 300);
    for (const int number : {1, 2, 3})
        keepFrame(viewerState, number, shrunkFrame(number, 400, 300, 4));
    viewerState.currentFrame = 1;
    showFrame(viewerState, FrameSource::kept);
    FrameSlots& slots = viewerState.slots;
    const FrameStore another = testFrame(4, 400, 300);
    slots.setLimit(3 * another.memoryBytes());
    ASSERT_FALSE(slots.hasRoomFor(4, another));
    headless::choose(COMMAND_FULL_RESOLUTION);  // shrink 1 now: two of the three go
    slots.keep(4, testFrame(4, 400, 300));
    EXPECT_TRUE(slots.hasRoomFor(5, another));
    slots.keep(5, testFrame(5, 400, 300));
    EXPECT_FALSE(slots.hasRoomFor(6, another));
}

// --- help ----------------------------------------------------------------------------------------

TEST_F(MenuCommandsTest, EachHelpItemShowsItsPage) {
    struct Row {
        int id;
        const char* page;
    };
    constexpr Row rows[] = {
        {COMMAND_HELP_OPENING, "VisTel13.html"},       {COMMAND_HELP_SAVING, "VisTel16.html"},
        {COMMAND_HELP_COMMAND_LINE, "VisTel20.html"},  {COMMAND_HELP_KEYBOARD, "VisTel21.html"},
        {COMMAND_HELP_MANIPULATIONS, "VisTel22.html"}, {COMMAND_HELP_ANIMATION, "VisTel23.html"},
        {COMMAND_HELP_MOUSE, "VisTel29.html"},
    };
    showImage(testFrame(1, 400, 300));
    viewerState.helpBase = "file:///opt/vistel/docs/ext/VisTel/";
    for (const Row& row : rows) {
        headless::choose(row.id);
        ASSERT_FALSE(headless::pagesShown().empty()) << row.page;
        EXPECT_EQ(headless::pagesShown().back(), viewerState.helpBase + row.page);
        EXPECT_TRUE(std::filesystem::is_regular_file(
            fileOfTree(std::string("docs/ext/VisTel/") + row.page)))
            << row.page;
    }
    EXPECT_EQ(headless::pagesShown().size(), std::size(rows));
    EXPECT_TRUE(headless::messageBoxes().empty());
}

TEST_F(MenuCommandsTest, WithoutABrowserABoxNamesThePage) {
    showImage(testFrame(1, 400, 300));
    viewerState.helpBase = "file:///opt/vistel/docs/ext/VisTel/";
    headless::removeBrowser();
    headless::choose(COMMAND_HELP_MOUSE);
    ASSERT_EQ(headless::messageBoxes().size(), 1u);
    EXPECT_TRUE(
        headless::messageBoxes()[0].ends_with("\nfile:///opt/vistel/docs/ext/VisTel/VisTel29.html"))
        << headless::messageBoxes()[0];
}

// --- the others ----------------------------------------------------------------------------------

TEST_F(MenuCommandsTest, ItemsAreGreyWhileTheirCommandHasNothingToActOn) {
    const std::set<int> always = {
        COMMAND_OPEN_IMAGE,  COMMAND_OPEN_ANIMATION,  COMMAND_EXIT, COMMAND_CONTROL_BAR,
        COMMAND_FULL_SCREEN, COMMAND_FULL_RESOLUTION, COMMAND_ABOUT};
    const std::set<int> colours = {COMMAND_RED_CHANNEL,  COMMAND_GREEN_CHANNEL,
                                   COMMAND_BLUE_CHANNEL, COMMAND_ALL_CHANNELS,
                                   COMMAND_LUMINANCE,    COMMAND_SAVE_IMAGE};
    const auto enabled = [] {
        std::set<int> items;
        for (int id = COMMAND_FIRST; id <= COMMAND_LAST; ++id)
            if (headless::menuEnabled(id) && !helpItems.count(id)) items.insert(id);
        return items;
    };
    const auto with = [](std::set<int> items, const std::set<int>& more) {
        items.insert(more.begin(), more.end());
        return items;
    };
    openWindowOrExit(viewerState, "VisTel");
    EXPECT_EQ(enabled(), always);

    showImage(planesFrame(1, 400, 300, imageColour));
    showMenuState(viewerState);
    EXPECT_EQ(enabled(), with(always, colours));  // standard input: there is no file to revert to

    viewerState.openedName = "a.iff";
    showImage(planesFrame(1, 400, 300));
    showMenuState(viewerState);
    EXPECT_EQ(enabled(), with(with(always, colours), {COMMAND_REVERT, COMMAND_ALPHA_CHANNEL}));

    showImage(planesFrame(1, 400, 300, imageBlack | imageMask));
    showMenuState(viewerState);
    EXPECT_EQ(enabled(), with(always, {COMMAND_REVERT, COMMAND_ALPHA_CHANNEL, COMMAND_SAVE_IMAGE}));

    releaseFrames(viewerState);
    showAnimation(1, 3);
    showMenuState(viewerState);
    EXPECT_TRUE(headless::menuEnabled(COMMAND_SAVE_ANIMATION));
    EXPECT_TRUE(headless::menuEnabled(COMMAND_IMPORT_SOUND));
    EXPECT_FALSE(headless::menuEnabled(COMMAND_TOGGLE_SOUND));  // none is loaded
    viewerState.soundLoaded = viewerState.soundOn = 1;
    showMenuState(viewerState);
    EXPECT_TRUE(headless::menuEnabled(COMMAND_TOGGLE_SOUND));
    EXPECT_FALSE(headless::menuChecked(COMMAND_TOGGLE_SOUND));
    viewerState.soundOn = 0;
    showMenuState(viewerState);
    EXPECT_TRUE(headless::menuChecked(COMMAND_TOGGLE_SOUND));  // muted
}

TEST_F(MenuCommandsTest, AGreyCommandDoesNothing) {
    openWindowOrExit(viewerState, "VisTel");
    windowContext().queue.clear();
    for (int id = COMMAND_FIRST - 1; id <= COMMAND_LAST + 1; ++id)
        if (!headless::menuEnabled(id) || id < COMMAND_FIRST || id > COMMAND_LAST)
            headless::choose(id);
    EXPECT_TRUE(windowContext().queue.empty());
    EXPECT_TRUE(headless::windowOpen());
}

TEST_F(MenuCommandsTest, TheMenuFollowsTheFrameOnScreen) {
    viewerState.animation = 1;
    viewerState.firstFrame = viewerState.playFirst = viewerState.currentFrame = 1;
    viewerState.lastFrame = viewerState.playLast = 2;
    viewerState.frameStep = 1;
    keepFrame(viewerState, 1, planesFrame(1, 64, 48));
    keepFrame(viewerState, 2, planesFrame(2, 64, 48, imageColour));
    beginDisplay(viewerState, *viewerState.slots.find(1));
    std::vector<bool> alpha;
    headless::script([] { headless::type(keySpace); });
    headless::script([] { headless::type(keyHome); });
    headless::whenIdle([&] {
        alpha.push_back(headless::menuEnabled(COMMAND_ALPHA_CHANNEL));
        if (alpha.size() > 3) return headless::close();
        headless::type(keyRightArrow);
    });
    runViewerLoop(viewerState);
    ASSERT_EQ(alpha.size(), 4u);
    EXPECT_NE(alpha[0], alpha[1]);
    EXPECT_NE(alpha[1], alpha[2]);
    EXPECT_NE(alpha[2], alpha[3]);
}

TEST_F(MenuCommandsTest, TheItemsOfAKeyPostThatKey) {
    viewerState.openedName = "a.iff";
    showImage(planesFrame(1, 64, 48));
    const std::pair<int, int> rows[] = {{COMMAND_REVERT, 'U'},        {COMMAND_RED_CHANNEL, 'R'},
                                        {COMMAND_GREEN_CHANNEL, 'G'}, {COMMAND_BLUE_CHANNEL, 'B'},
                                        {COMMAND_ALPHA_CHANNEL, 'A'}, {COMMAND_ALL_CHANNELS, 'C'},
                                        {COMMAND_LUMINANCE, 'L'}};
    for (const auto& [id, key] : rows) {
        windowContext().queue.clear();
        headless::choose(id);
        ASSERT_EQ(windowContext().queue.count(), 1) << id;
        const InputEvent event = windowContext().queue.take();
        EXPECT_EQ(event.code, key) << id;
        EXPECT_EQ(event.value, 1) << id;
    }
}

TEST_F(MenuCommandsTest, ExitClosesTheWindowAndQuits) {
    showAnimation(1, 3);
    headless::script([] { headless::choose(COMMAND_EXIT); });
    runViewerLoop(viewerState);
    EXPECT_FALSE(headless::windowOpen());
    EXPECT_EQ(viewerState.quitRequested, 1);
    EXPECT_EQ(viewerState.slots.count(), 0u);
}

}  // namespace vistel
