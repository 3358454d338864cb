#include "viewer/window/window_layer.h"

#include "viewer/viewer_fixture.h"
#include "viewer/window/drawing.h"

namespace vistel {

namespace headless = platform::headless;

class WindowLayerTest : public ViewerTest {};

TEST_F(WindowLayerTest, OpensInTheMiddleOfTheWorkAreaByDefault) {
    ASSERT_TRUE(openViewerWindow("VisTel"));
    const platform::PixelRect rect = headless::windowRect();
    EXPECT_EQ(rect.left, (1280 - 320) / 2);
    EXPECT_EQ(rect.top, (1024 - 240) / 2);
    EXPECT_EQ(rect.width(), 320);
    EXPECT_EQ(rect.height(), 240);
    EXPECT_EQ(headless::title(), "VisTel");
    EXPECT_EQ(windowContext().pending, nullptr);
}

TEST_F(WindowLayerTest, WidensANarrowWindow) {
    setPreferredPosition(10, 110, 20, 220);
    ASSERT_TRUE(openViewerWindow("VisTel"));
    EXPECT_EQ(headless::windowRect().width(), 320);
    EXPECT_EQ(headless::windowRect().height(), 200);
}

TEST_F(WindowLayerTest, AnExistingWindowIsRetitledResizedAndItsQueueEmptied) {
    ASSERT_TRUE(openViewerWindow("first"));
    postEvent('A', 1);
    setPreferredPosition(0, 400, 0, 300);
    ASSERT_TRUE(openViewerWindow("second"));
    EXPECT_EQ(headless::title(), "second");
    EXPECT_EQ(headless::windowRect().width(), 400);
    EXPECT_EQ(peekEvent(), 0);
}

TEST_F(WindowLayerTest, TheControlBarTakesItsRows) {
    windowContext().controlBarWanted = true;
    setPreferredPosition(100, 500, 100, 400);
    ASSERT_TRUE(openViewerWindow("VisTel"));
    EXPECT_EQ(headless::windowRect().height(), 300 + 29);
    int width, height, x, y;
    clientSize(width, height);
    EXPECT_EQ(width, 400);
    EXPECT_EQ(height, 300);
    clientOrigin(x, y);
    EXPECT_EQ(x, 100);
    EXPECT_EQ(y, 1024 - (100 + 329) + 29);
    headless::moveMouse(150, 200);
    EXPECT_EQ(deviceValue(EV_MOUSEX), 150);
    EXPECT_EQ(deviceValue(EV_MOUSEY), 1024 - 200 + 29);
    InputEvent event = waitEvent();
    EXPECT_EQ(event.code, EV_MOUSEX);
    EXPECT_EQ(event.value, 50);
    event = waitEvent();
    EXPECT_EQ(event.code, EV_MOUSEY);
    EXPECT_EQ(event.value, 429 - 200);
}

TEST_F(WindowLayerTest, TheTimerHasThePeriodOfItsRate) {
    EXPECT_EQ(headless::timerPeriod(), 0u);
    ASSERT_TRUE(openViewerWindow("VisTel"));
    EXPECT_EQ(headless::timerPeriod(), 1000u);
    const std::pair<int, unsigned> rows[] = {{10, 100}, {3, 333}, {1, 1000}};
    for (const auto& [rate, period] : rows) {
        setTimerRate(rate);
        EXPECT_EQ(headless::timerPeriod(), period);
        setTimerRate(7);
        setTimerRate(rate);
        ASSERT_TRUE(openViewerWindow("again"));  // it is started anew, at the same rate
        EXPECT_EQ(headless::timerPeriod(), period);
    }
}

TEST_F(WindowLayerTest, ARateThatIsSetFirstIsThatOfTheWindow) {
    setTimerRate(10);
    EXPECT_EQ(headless::timerPeriod(), 0u);
    ASSERT_TRUE(openViewerWindow("VisTel"));
    EXPECT_EQ(headless::timerPeriod(), 100u);
}

TEST_F(WindowLayerTest, ThePlacementSaysWhetherThereIsABorder) {
    ASSERT_TRUE(openViewerWindow("VisTel"));
    EXPECT_TRUE(headless::windowHasBorder());
    clearPreferredPosition();
    applyPendingPlacement();
    EXPECT_FALSE(headless::windowHasBorder());
    ASSERT_TRUE(openViewerWindow("again"));
    EXPECT_TRUE(headless::windowHasBorder());
}

TEST_F(WindowLayerTest, DeviceValuesOfSeveralCodesAtOnce) {
    ASSERT_TRUE(openViewerWindow("VisTel"));
    headless::press('A');
    headless::moveMouse(7, 9);
    const int codes[] = {'A', 'B', EV_REDRAW, EV_MOUSEX, EV_MOUSEY, EV_TIMER};
    int values[6];
    deviceValues(6, codes, values);
    const int expected[] = {1, 0, 0, 7, 9, 0};
    for (int i = 0; i < 6; ++i) EXPECT_EQ(values[i], expected[i]) << codes[i];
}

TEST_F(WindowLayerTest, AReaderNeverWaitsAfterQuit) {
    ASSERT_TRUE(openViewerWindow("VisTel"));
    headless::close();
    EXPECT_EQ(waitEvent().code, EV_QUIT);
    EXPECT_EQ(waitEvent().code, EV_QUIT);
    EXPECT_EQ(peekEvent(), EV_QUIT);
}

TEST_F(WindowLayerTest, ScreenMetrics) {
    const std::pair<int, int> rows[] = {{1, 1280}, {2, 1024}, {3, 24}, {4, 24}, {0, 0}, {5, 0}};
    for (const auto& [which, expected] : rows) EXPECT_EQ(screenMetric(which), expected);
}

TEST_F(WindowLayerTest, PackedColoursHaveBlueBeforeGreen) {
    ASSERT_TRUE(openViewerWindow("VisTel"));
    ASSERT_TRUE(createDrawing());
    setDoubleBuffer(true);
    setColourPacked(0xFF030201);  // red 1, blue 2, green 3
    clearDrawing();
    swapDrawing();
    EXPECT_EQ(headless::visibleImage().at(0, 0), 0xFF020301u);
}

TEST_F(WindowLayerTest, ColourIndicesAreRedBlackWhite) {
    ASSERT_TRUE(openViewerWindow("VisTel"));
    ASSERT_TRUE(createDrawing());
    setDoubleBuffer(true);
    const std::pair<int, uint32_t> rows[] = {
        {1, 0xFF0000FF}, {2, 0xFF000000}, {3, 0xFFFFFFFF}, {4, 0xFFFFFFFF}, {0, 0xFFFFFFFF}};
    for (const auto& [index, expected] : rows) {
        setColourIndex(index);
        clearDrawing();
        swapDrawing();
        EXPECT_EQ(headless::visibleImage().at(5, 5), expected) << index;
    }
}

TEST_F(WindowLayerTest, APixelRectangleTakesItsRowsAtTheRowLength) {
    ASSERT_TRUE(openViewerWindow("VisTel"));
    ASSERT_TRUE(createDrawing());
    setDoubleBuffer(true);
    uint32_t pixels[6 * 4];
    for (uint32_t i = 0; i < 24; ++i) pixels[i] = 0xFF000000u | (i + 1);
    struct Row {
        int which, length;  // of the setter
        uint32_t expected[2][3];
    };
    const Row rows[] = {
        {1, 0, {{1, 2, 3}, {4, 5, 6}}},                                  // as wide as the rectangle
        {1, 6, {{1, 2, 3}, {7, 8, 9}}}, {2, 0, {{1, 2, 3}, {7, 8, 9}}},  // nothing set
        {1, 4, {{1, 2, 3}, {5, 6, 7}}}, {1, 0, {{1, 2, 3}, {4, 5, 6}}},
    };
    for (const Row& row : rows) {
        setColourIndex(2);
        clearDrawing();
        setUnpackRowLength(row.which, row.length);
        drawPixelRectangle(10, 20, 12, 21, pixels);
        swapDrawing();
        const headless::Image& image = headless::visibleImage();
        for (int y = 0; y < 2; ++y)
            for (int x = 0; x < 3; ++x)
                EXPECT_EQ(image.at(10 + x, 20 + y), 0xFF000000u | row.expected[y][x])
                    << row.length << ": " << x << "," << y;
        for (const auto& [x, y] : {std::pair{9, 20}, {13, 20}, {10, 19}, {10, 22}})
            EXPECT_EQ(image.at(x, y), 0xFF000000u);
    }
}

TEST_F(WindowLayerTest, ABandCoversThePictureAndGoesAwayAgain) {
    showAnimation(1, 1, 1, 400, 200);
    windowContext().drawPass = [] { drawPass(viewerState); };
    drawPass(viewerState);
    swapDrawing();
    const headless::Image before = headless::visibleImage();
    showMessageBand("hello");
    EXPECT_NE(headless::visibleImage().pixels, before.pixels);
    EXPECT_EQ(headless::visibleImage().at(399, 19), 0xFF000000u);
    EXPECT_EQ(headless::visibleImage().at(399, 20), before.at(399, 20));
    ASSERT_EQ(headless::visibleTexts().size(), 1u);
    EXPECT_EQ(headless::visibleTexts()[0].x, 6);
    restoreFrontImage();
    EXPECT_EQ(headless::visibleImage().pixels, before.pixels);
}

}  // namespace vistel
