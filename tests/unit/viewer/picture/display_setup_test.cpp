#include "viewer/picture/display_setup.h"

#include "viewer/picture/picture_view.h"
#include "viewer/picture/title.h"
#include "viewer/viewer_fixture.h"

namespace vistel {

namespace headless = platform::headless;

class DisplaySetupTest : public ViewerTest {};

TEST_F(DisplaySetupTest, MarginsOfEachCase) {
    struct Row {
        const char* name;
        bool animation, borderless, fullScreen, halfHeight;
        int zoom, width, height, marginX, marginY;
    };
    const Row rows[] = {
        {"large single", false, false, false, false, 1, 640, 480, 0, 0},
        {"small single", false, false, false, false, 1, 100, 80, 110, 32},
        {"odd single", false, false, false, false, 1, 101, 81, 110, 32},
        {"zoomed single", false, false, false, false, 3, 100, 40, 10, 12},
        {"low single", false, false, false, false, 1, 640, 100, 0, 22},
        {"large animation", true, false, false, false, 1, 640, 480, 20, 20},
        {"small animation", true, false, false, false, 1, 100, 80, 110, 80},
        {"nearly large animation", true, false, false, false, 1, 300, 230, 20, 20},
        {"borderless animation", true, true, false, false, 1, 640, 480, 0, 0},
        {"borderless small animation", true, true, false, false, 1, 100, 80, 110, 80},
        {"full screen", false, false, true, false, 1, 640, 480, 320, 272},
        {"full screen, too large", false, false, true, false, 3, 640, 480, 0, 0},
        {"half height", true, false, false, true, 1, 640, 240, 320, 185},
    };
    for (const Row& row : rows) {
        viewerState.animation = row.animation;
        viewerState.noWinBorder = row.borderless;
        viewerState.fullScreen = row.fullScreen;
        viewerState.halfHeight = row.halfHeight;
        const Surround surround = surroundOf(viewerState, row.width, row.height, row.zoom);
        EXPECT_EQ(surround.marginX, row.marginX) << row.name;
        EXPECT_EQ(surround.marginY, row.marginY) << row.name;
    }
}

TEST_F(DisplaySetupTest, TheWindowHoldsPictureAndMargins) {
    showAnimation(1, 3, 1, 640, 360);
    EXPECT_EQ(headless::windowRect().width(), 680);
    EXPECT_EQ(headless::windowRect().height(), 400);
    EXPECT_EQ(headless::windowRect().left, 300);
    EXPECT_EQ(headless::title(), "VisTel: shot");
}

TEST_F(DisplaySetupTest, OnlyAWindowThatIsMeantToHasABorder) {
    showAnimation(1, 1, 1, 640, 360);
    EXPECT_TRUE(headless::windowHasBorder());
    viewerState.fullScreen = 1;
    setUpDisplay(viewerState, *viewerState.shown, Refit::fitWindow);
    EXPECT_FALSE(headless::windowHasBorder());
    viewerState.fullScreen = 0;
    setUpDisplay(viewerState, *viewerState.shown, Refit::fitWindow);
    EXPECT_TRUE(headless::windowHasBorder());
    viewerState.noWinBorder = 1;
    setUpDisplay(viewerState, *viewerState.shown, Refit::fitWindow);
    EXPECT_FALSE(headless::windowHasBorder());
    EXPECT_EQ(headless::windowRect().width(), 640);
}

TEST_F(DisplaySetupTest, TheTitleIsSetForAFrameThatIsSteppedToAndNotWhilePlaying) {
    showAnimation(1, 3);
    size_t titles = headless::titles().size();
    const auto setAgain = [&] {
        return std::exchange(titles, headless::titles().size()) != titles;
    };
    const auto show = [](int frame) {
        viewerState.currentFrame = frame;
        showFrame(viewerState, FrameSource::kept);
    };
    show(2);
    EXPECT_TRUE(setAgain());
    for (const PlayMode mode : {PlayMode::forward, PlayMode::backward}) {
        viewerState.playMode = mode;
        viewerState.paused = 0;
        for (const int frame : {3, 1, 2}) show(frame);
        EXPECT_FALSE(setAgain());
        viewerState.paused = 1;
        show(3);
        EXPECT_TRUE(setAgain());
    }
    EXPECT_EQ(headless::title(), "VisTel: shot");
}

TEST_F(DisplaySetupTest, PlayingInTheLoopSetsNoTitle) {
    showAnimation(1, 5);
    size_t atStart = 0;
    int presents = 0;
    for (int i = 0; i < 500; ++i)
        headless::script([&] {
            if (atStart == 0) atStart = headless::titles().size();
            presents = headless::presents();
        });
    headless::script([] { postEvent(EV_QUIT, 1); });
    runViewerLoop(viewerState);
    EXPECT_GT(presents, 9);
    EXPECT_EQ(headless::titles().size(), atStart);
}

TEST_F(DisplaySetupTest, FullResolutionShowsTheMiddleOfALargePicture) {
    viewerState.noRescale = 1;
    showAnimation(1, 1, 1, 2000, 300);
    EXPECT_EQ(headless::windowRect().width(), 1280 - 120);
    EXPECT_EQ(headless::windowRect().height(), 300);
    EXPECT_FLOAT_EQ(viewerState.layout.panX, (2000 - 1160) / 2.0f);
    EXPECT_EQ(currentDisplayFit(viewerState).maxWidth, UINT32_MAX);
}

// With its frame of 4 pixels, its caption and menu of 46 rows.
TEST_F(DisplaySetupTest, AWindowThatDoesNotFitIsMadeSmallerAndPanningReachesTheRest) {
    headless::setFrame({4, 46, 4, 4});
    headless::setWorkArea({0, 30, 1280, 1000});
    showAnimation(1, 2, 1, 1270, 960);
    const platform::PixelRect window = headless::windowRect();
    EXPECT_EQ(window, (platform::PixelRect{4, 76, 1276, 996}));
    const PictureLayout& layout = viewerState.layout;
    EXPECT_EQ(layout.marginX, 20);
    EXPECT_EQ(layout.visibleWidth, 1272 - 40);
    EXPECT_EQ(layout.visibleHeight, 920 - 40);
    EXPECT_FLOAT_EQ(layout.panX, (1270 - 1232) / 2.0f);  // its middle shows first
    const auto picture = [](int column, int row) { return testPixel(1, column, row); };
    expectPicture(picture);
    for (const int corner : {keyPad0 + 7, keyPad0 + 9, keyPad0 + 3, keyPad0 + 1}) {
        for (int i = 0; i < 20; ++i) key(corner, shift | alt);
        expectPicture(picture);
        const bool right = corner == keyPad0 + 7 || corner == keyPad0 + 1;
        const bool top = corner == keyPad0 + 3 || corner == keyPad0 + 1;
        EXPECT_FLOAT_EQ(layout.panX, right ? 1270 - 1232 : 0) << corner;
        EXPECT_FLOAT_EQ(layout.panY, top ? 960 - 880 : 0) << corner;
    }
}

TEST_F(DisplaySetupTest, AWindowThatGrowsIsMovedIntoTheWorkArea) {
    headless::setFrame({4, 46, 4, 4});
    showAnimation(1, 2, 1, 400, 300);
    platform::placeWindow(windowContext().window, {800, 600, 1240, 940}, true);
    keepFrame(viewerState, 2, testFrame(2, 700, 500));
    key(keyRightArrow);
    EXPECT_EQ(headless::windowRect(), (platform::PixelRect{536, 480, 1276, 1020}));
    key(keyLeftArrow);
    EXPECT_EQ(headless::windowRect(), (platform::PixelRect{536, 480, 1276, 1020}));
}

TEST_F(DisplaySetupTest, AWindowThatKeepsItsSizeStaysWhereTheUserHasPutIt) {
    headless::setFrame({4, 46, 4, 4});
    showAnimation(1, 2, 1, 400, 300);
    const platform::PixelRect beyondTheEdge{1100, 900, 1540, 1240};
    platform::placeWindow(windowContext().window, beyondTheEdge, true);
    setUpDisplay(viewerState, *viewerState.shown, Refit::fitWindow);  // a reload
    EXPECT_EQ(headless::windowRect(), beyondTheEdge);
}

TEST_F(DisplaySetupTest, TheLoaderFitsFramesToTheScreenLessTheTitle) {
    viewerState.rfact = 2;
    viewerState.magnify = 3;
    EXPECT_EQ(currentDisplayFit(viewerState).shrink, 2u);
    EXPECT_EQ(currentDisplayFit(viewerState).magnify, 3u);
    EXPECT_EQ(currentDisplayFit(viewerState).maxWidth, 1280u);
    EXPECT_EQ(currentDisplayFit(viewerState).maxHeight, 1024u - 29);
    viewerState.fullScreen = 1;
    EXPECT_EQ(currentDisplayFit(viewerState).maxHeight, 1024u);
}

TEST_F(DisplaySetupTest, ChoosesTheBufferByWhatTheFrameHas) {
    FrameStore matte = testFrame(1, 4, 4);
    matte.header.flags = imageBlack | imageMask;
    setUpDisplay(viewerState, matte, Refit::fitWindow);
    EXPECT_EQ(viewerState.mode, ChannelMode::matte);
    EXPECT_EQ(displayedPixels(viewerState)[0], 0xFFFFFFFFu);

    FrameStore depth;
    depth.width = depth.height = 2;
    ASSERT_TRUE(depth.z.allocate(2, 2) && depth.z.complete());
    depth.z.data()[3] = 1.0f;
    setUpDisplay(viewerState, depth, Refit::fitWindow);
    EXPECT_EQ(viewerState.mode, ChannelMode::zBuffer);
    EXPECT_EQ(displayedPixels(viewerState)[0], 0xFFFFFFFFu);  // nearest is white
    EXPECT_EQ(displayedPixels(viewerState)[3], 0xFF000000u);

    FrameStore colour = testFrame(1, 4, 4);
    setUpDisplay(viewerState, colour, Refit::fitWindow);
    EXPECT_EQ(viewerState.mode, ChannelMode::all);
    EXPECT_EQ(displayedPixels(viewerState), colour.colour.data());
}

TEST_F(DisplaySetupTest, AWindowThatCannotBeOpenedEndsTheProgramWithOne) {
    FrameStore frame = testFrame(1, 4, 4);
    headless::refuseWindow();
    windowContext().calls.refused = nullptr;  // it would store the settings of whoever tests
    EXPECT_EXIT(setUpDisplay(viewerState, frame, Refit::fitWindow), testing::ExitedWithCode(1), "");
}

TEST_F(DisplaySetupTest, ThePipedCommandIsNotShownInTheTitle) {
    viewerState.fileName = "pipe:render 7";
    EXPECT_EQ(windowTitle(viewerState).find("render"), std::string::npos);
    viewerState.fileName = "";
    viewerState.sourceName = "standard input";
    EXPECT_EQ(windowTitle(viewerState), "VisTel: standard input");
}

}  // namespace vistel
