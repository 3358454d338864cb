#include "viewer/commands/tool_commands.h"

#include <string>

#include "platform/surface.h"
#include "resources/command_ids.h"
#include "viewer/commands/menu_commands.h"
#include "viewer/viewer_fixture.h"

namespace vistel {

namespace headless = platform::headless;

class ToolCommandsTest : public ViewerTest {
 protected:
    // What a key prints on standard error.
    static std::string printed(int code) {
        testing::internal::CaptureStderr();
        EXPECT_FALSE(key(code));
        return testing::internal::GetCapturedStderr();
    }
};

// --- console switches ---------------------------------------------------------------------------

TEST_F(ToolCommandsTest, F11SaysWhatItHasSwitched) {
    showImage(testFrame(1, 40, 30));
    EXPECT_EQ(printed(keyF1 + 10), "Overwrite the source files: on\n");
    EXPECT_EQ(viewerState.overwriteMode, 1);
    EXPECT_EQ(printed(keyF1 + 10), "Overwrite the source files: off\n");
    EXPECT_EQ(viewerState.overwriteMode, 0);
}

// --- how the window draws -----------------------------------------------------------------------

TEST_F(ToolCommandsTest, EAndQSwitchDithering) {
    showImage(testFrame(1, 40, 30));
    EXPECT_FALSE(headless::dithering());
    for (const auto& [letter, on] :
         {std::pair{'E', true}, {'E', true}, {'Q', false}, {'Q', false}}) {
        EXPECT_TRUE(key(letter));
        EXPECT_EQ(headless::dithering(), on);
    }
}

TEST_F(ToolCommandsTest, FTogglesDoubleBufferingAndThePictureStaysRight) {
    showImage(testFrame(1, 64, 48));
    EXPECT_TRUE(headless::doubleBuffered());
    const headless::Image before = redraw();
    for (const bool on : {false, true}) {
        EXPECT_TRUE(key('F'));
        EXPECT_EQ(headless::doubleBuffered(), on);
        EXPECT_EQ(windowContext().doubleBuffer, on);
        for (int i = 0; i < 2; ++i) EXPECT_EQ(redraw().pixels, before.pixels);  // margins too
    }
}

TEST_F(ToolCommandsTest, WithoutDoubleBufferingBandsComeAndGoAsWell) {
    showImage(planesFrame(1, 400, 200, imageColour));
    key('F');
    const headless::Image before = redraw();
    key('A');  // no mask
    EXPECT_EQ(headless::visibleImage().at(399, 0), 0xFF000000u);
    restoreFrontImage();
    EXPECT_EQ(headless::visibleImage().pixels, before.pixels);
}

// --- outlines -----------------------------------------------------------------------------------

TEST_F(ToolCommandsTest, F12OutlinesTheTilesInWhiteUntilItIsReleased) {
    FrameStore frame = testFrame(1, 400, 300);
    frame.tiles = {{0, 0, 127, 99}, {128, 0, 399, 99}, {0, 100, 399, 299}};
    showImage(std::move(frame));
    const headless::Image before = redraw();
    EXPECT_FALSE(key(keyF1 + 11));
    const headless::Image& outlined = headless::visibleImage();
    const auto onEdge = [](int x, int y) {
        for (const TileRect& tile : viewerState.shown->tiles) {
            if (x < tile.x1 || x > tile.x2 || y < tile.y1 || y > tile.y2) continue;
            if (x == tile.x1 || x == tile.x2 || y == tile.y1 || y == tile.y2) return true;
        }
        return false;
    };
    for (int y = 0; y < 300; ++y)
        for (int x = 0; x < 400; ++x)
            ASSERT_EQ(outlined.at(x, y), onEdge(x, y) ? 0xFFFFFFFFu : before.at(x, y))
                << x << "," << y;
    EXPECT_FALSE(released(keyF1 + 11));
    EXPECT_EQ(headless::visibleImage().pixels, before.pixels);
}

TEST_F(ToolCommandsTest, OutlinesFollowZoomPanAndShrinking) {
    FrameStore frame = testFrame(1, 200, 150);
    frame.shrink = 2;  // of an image of 400 x 300
    frame.tiles = {{100, 80, 199, 139}};
    showImage(std::move(frame));
    key(keyPadDecimal);  // zoom 2
    viewerState.layout.panX = 40;
    viewerState.layout.panY = 30;
    const headless::Image before = redraw();
    key(keyF1 + 11);
    // Columns 50 to 99 and rows 40 to 69 of the display, two window pixels each.
    const PictureLayout& layout = viewerState.layout;
    const int left = layout.marginX + (50 - 40) * 2, right = layout.marginX + (100 - 40) * 2 - 1;
    const int foot = layout.marginY + (40 - 30) * 2, top = layout.marginY + (70 - 30) * 2 - 1;
    const headless::Image& image = headless::visibleImage();
    for (int y = 0; y < image.height; ++y) {
        for (int x = 0; x < image.width; ++x) {
            const bool inside = x >= left && x <= right && y >= foot && y <= top;
            const bool edge = inside && (x == left || x == right || y == foot || y == top);
            ASSERT_EQ(image.at(x, y), edge ? 0xFFFFFFFFu : before.at(x, y)) << x << "," << y;
        }
    }
}

TEST_F(ToolCommandsTest, OutlinesStayInsideThePicture) {
    FrameStore frame = testFrame(1, 64, 48);
    frame.tiles = {{0, 0, 63, 47}};
    showImage(std::move(frame));
    for (int i = 0; i < 2; ++i) key(keyPadDecimal);
    const headless::Image before = redraw();
    key(keyF1 + 11);
    const PictureLayout& layout = viewerState.layout;
    const headless::Image& image = headless::visibleImage();
    for (int x = 0; x < layout.marginX; ++x)
        for (int y = 0; y < image.height; ++y) ASSERT_EQ(image.at(x, y), before.at(x, y));
}

TEST_F(ToolCommandsTest, F12DoesNothingWithoutTiles) {
    showImage(testFrame(1, 64, 48));
    const int presents = headless::presents();
    EXPECT_FALSE(key(keyF1 + 11));
    EXPECT_EQ(headless::presents(), presents);
}

// --- Escape -------------------------------------------------------------------------------------

TEST_F(ToolCommandsTest, EscapeOnlyLeavesFullScreen) {
    viewerState.fullScreen = 1;
    showImage(testFrame(1, 400, 300));
    EXPECT_FALSE(key(keyEscape));  // pressed: nothing yet
    EXPECT_EQ(viewerState.fullScreen, 1);
    EXPECT_TRUE(released(keyEscape));
    EXPECT_EQ(viewerState.fullScreen, 0);
    EXPECT_EQ(headless::windowRect().width(), 400);
    EXPECT_EQ(headless::windowRect().height(), 300);
    expectPicture([](int x, int y) { return testPixel(1, x, y); });
    EXPECT_FALSE(released(keyEscape));
}

TEST_F(ToolCommandsTest, EscapeTakesABandAway) {
    showImage(planesFrame(1, 400, 200, imageColour));
    const headless::Image before = headless::visibleImage();
    key('A');
    released(keyEscape);
    EXPECT_EQ(headless::visibleImage().pixels, before.pixels);
}

TEST_F(ToolCommandsTest, FullScreenKeepsZoomPanAndView) {
    showImage(testFrame(1, 400, 300));
    key('G');
    key(keyPadDecimal);
    viewerState.layout.panX = 30;
    viewerState.layout.panY = 20;
    runMenuCommand(viewerState, COMMAND_FULL_SCREEN);
    EXPECT_EQ(viewerState.layout.marginX, (1280 - 2 * 400) / 2);
    redraw();
    expectPicture([](int, int row) { return uint32_t(row & 255) * 0x010101u; });
    released(keyEscape);
    expectPicture([](int, int row) { return uint32_t(row & 255) * 0x010101u; });
    EXPECT_EQ(viewerState.layout.zoom, 2);
    EXPECT_FLOAT_EQ(viewerState.layout.panX, 30);
    EXPECT_FLOAT_EQ(viewerState.layout.panY, 20);
}

}  // namespace vistel
