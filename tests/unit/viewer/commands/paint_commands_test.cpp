#include "viewer/commands/paint_commands.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>
#include <utility>
#include <vector>

#include "viewer/picture/picture_view.h"
#include "viewer/viewer_fixture.h"

namespace vistel {

namespace headless = platform::headless;

namespace {

constexpr uint32_t grey = 0x40404040;  // every channel of the picture before it is painted

using Points = std::set<std::pair<int, int>>;  // column, row

}  // namespace

class PaintCommandsTest : public ViewerTest {
 protected:
    static PictureLayout& layout() { return viewerState.layout; }

    void showGrey(int width, int height) {
        FrameStore frame = planesFrame(1, width, height);
        std::fill_n(frame.colour.data(), width * height, grey);
        showImage(std::move(frame));
    }
    // The cursor over the middle of an image pixel as it lies in the window.
    static void pointAt(int column, int row) {
        const PictureLayout& l = layout();
        const auto place = [&](int pixel, int margin, float pan) {
            return margin + (pixel - int(pan)) * l.zoom + l.zoom / 2;
        };
        windowContext().cursor.x = place(column, l.marginX, l.panX);
        windowContext().cursor.y = place(row, l.marginY, l.panY) + 1;
    }
    static void paintAt(int column, int row, unsigned held = none) {
        pointAt(column, row);
        EXPECT_TRUE(key(EV_RIGHTMOUSE, held));
        EXPECT_FALSE(released(EV_RIGHTMOUSE, held));
    }
    static bool paintTo(int column, int row, unsigned held = none) {
        pointAt(column, row);
        return paint(viewerState, {.code = EV_MOUSEY, .modifiers = modifiersOf(held)});
    }
    static Points paintedPoints() {
        Points points;
        for (int y = 0; y < layout().height; ++y)
            for (int x = 0; x < layout().width; ++x)
                if (stored(x, y) != grey) points.emplace(x, y);
        return points;
    }
};

TEST_F(PaintCommandsTest, WhatIsPaintedDependsOnViewAndControlChannel) {
    struct Row {
        const char* name;
        int view, functionKey;
        unsigned functionHeld, held;
        uint32_t expected;
    };
    const Row rows[] = {
        {"white keeps the mask", 'C', 4, none, none, 0x40FFFFFF},
        {"red", 'C', 1, none, none, 0x404040FF},
        {"green", 'C', 2, none, none, 0x4040FF40},
        {"blue", 'C', 3, none, none, 0x40FF4040},
        {"cyan", 'C', 1, shift, none, 0x40FFFF00},
        {"magenta", 'C', 2, shift, none, 0x40FF00FF},
        {"yellow", 'C', 3, shift, none, 0x4000FFFF},
        {"white, Control or not", 'C', 4, none, control, 0x40FFFFFF},
        {"red, Control or not", 'C', 1, none, control, 0x404040FF},
        {"luminance view paints the control channel", 'L', 2, none, none, 0x4040FF40},
        {"luminance view paints white", 'L', 4, none, none, 0x40FFFFFF},
        {"relief paints the control channel", 'N', 3, none, none, 0x40FF4040},
        {"mask view", 'A', 4, none, none, 0xFF404040},
        {"mask view cleared", 'A', 4, none, control, 0x00404040},
        {"mask view, whatever the control channel", 'A', 1, none, none, 0xFF404040},
        {"blue view", 'B', 4, none, none, 0x40FF4040},
        {"blue view cleared", 'B', 4, none, control, 0x40004040},
        {"green view", 'G', 4, none, none, 0x4040FF40},
        {"green view cleared", 'G', 4, none, control, 0x40400040},
        {"red view", 'R', 4, none, none, 0x404040FF},
        {"red view cleared", 'R', 2, shift, control, 0x40404000},
    };
    for (const Row& row : rows) {
        showGrey(40, 30);
        key(row.view);
        key(keyF1 + row.functionKey - 1, row.functionHeld);
        paintAt(11, 7, row.held);
        EXPECT_EQ(stored(11, 7), row.expected) << row.name;
        EXPECT_EQ(paintedPoints(), (Points{{11, 7}})) << row.name;
    }
}

TEST_F(PaintCommandsTest, PaintedPixelsAreShownAtOnceThroughTheNegation) {
    showGrey(40, 30);
    key('X');
    paintAt(5, 6);
    expectPicture([](int x, int y) { return x == 5 && y == 6 ? 0x000000u : 0xBFBFBFu; });
    key('R');
    paintAt(8, 6);
    expectPicture(
        [](int x, int y) { return y == 6 && (x == 5 || x == 8) ? 0x000000u : 0xBFBFBFu; });
}

TEST_F(PaintCommandsTest, TheDepthIsPaintedInItsViewTogetherWithTheColours) {
    showGrey(20, 10);
    const std::vector<float> before(viewerState.shown->z.data(), viewerState.shown->z.data() + 200);
    const auto [low, high] = std::minmax_element(before.begin(), before.end());
    key('Z');
    paintAt(3, 4);
    EXPECT_EQ(viewerState.shown->z.row(4)[3], *low);
    EXPECT_EQ(displayedPixels(viewerState)[4 * 20 + 3] & 255, 255u);
    paintAt(3, 4, control);
    EXPECT_EQ(viewerState.shown->z.row(4)[3], *high);
    EXPECT_EQ(displayedPixels(viewerState)[4 * 20 + 3] & 255, 0u);
    EXPECT_EQ(paintedPoints(), (Points{{3, 4}}));
    key(keyF1);
    paintAt(5, 4);
    EXPECT_EQ(stored(5, 4) & 0xFFFFFF, (grey & 0xFFFF00) | 0xFF);
    EXPECT_EQ(viewerState.shown->z.row(4)[5], *low);
}

TEST_F(PaintCommandsTest, TheDepthStaysInTheOtherViews) {
    for (const int view : {'C', 'L', 'R', 'G', 'B', 'M', 'I', 'N'}) {
        showGrey(20, 10);
        const float before = viewerState.shown->z.row(4)[3];
        key(view);
        paintAt(3, 4);
        EXPECT_EQ(paintedPoints(), (Points{{3, 4}})) << char(view);
        EXPECT_EQ(viewerState.shown->z.row(4)[3], before) << char(view);
    }
}

TEST_F(PaintCommandsTest, ADepthWithoutAFiniteSampleIsPaintedZero) {
    const float infinite = std::numeric_limits<float>::infinity();
    for (const unsigned held : {none, control}) {
        FrameStore frame = planesFrame(1, 20, 10);
        std::fill_n(frame.z.data(), 200, infinite);
        frame.z.data()[7] = std::numeric_limits<float>::quiet_NaN();
        showImage(std::move(frame));
        key('Z');
        paintAt(3, 4, held);
        EXPECT_EQ(viewerState.shown->z.row(4)[3], 0.0f) << held;
        EXPECT_EQ(viewerState.shown->z.row(4)[4], infinite);
        EXPECT_EQ(displayedPixels(viewerState)[4 * 20 + 3] & 255, 255u);  // it shows
    }
}

TEST_F(PaintCommandsTest, SuccessivePointsAreJoined) {
    struct Row {
        const char* name;
        int x0, y0, x1, y1;
        Points expected;
    };
    const Row rows[] = {
        {"across", 2, 5, 6, 5, {{2, 5}, {3, 5}, {4, 5}, {5, 5}, {6, 5}}},
        {"back", 6, 5, 3, 5, {{3, 5}, {4, 5}, {5, 5}, {6, 5}}},
        {"up", 4, 1, 4, 4, {{4, 1}, {4, 2}, {4, 3}, {4, 4}}},
        {"diagonal", 1, 1, 4, 4, {{1, 1}, {2, 2}, {3, 3}, {4, 4}}},
        {"down left", 4, 4, 1, 1, {{1, 1}, {2, 2}, {3, 3}, {4, 4}}},
        {"nowhere", 7, 7, 7, 7, {{7, 7}}},
    };
    for (const Row& row : rows) {
        showGrey(40, 30);
        pointAt(row.x0, row.y0);
        key(EV_RIGHTMOUSE);
        EXPECT_TRUE(paintTo(row.x1, row.y1));
        released(EV_RIGHTMOUSE);
        EXPECT_EQ(paintedPoints(), row.expected) << row.name;
    }
}

TEST_F(PaintCommandsTest, AnObliqueLineHasOnePixelForEachColumnAndNoGaps) {
    showGrey(40, 30);
    pointAt(3, 2);
    key(EV_RIGHTMOUSE);
    paintTo(33, 13);
    const Points points = paintedPoints();
    ASSERT_EQ(points.size(), 31u);
    int before = 2;
    for (const auto& [x, y] : points) {  // in the order of their columns
        EXPECT_LE(std::abs(y - before), 1) << x;
        EXPECT_LE(std::abs(y - (2 + (x - 3) * 11 / 30.0)), 1.0) << x;
        before = y;
    }
    EXPECT_TRUE(points.count({33, 13}));
}

TEST_F(PaintCommandsTest, WithoutLinesOnlyThePointsArePainted) {
    showGrey(40, 30);
    key('L', shift);
    pointAt(3, 2);
    key(EV_RIGHTMOUSE);
    paintTo(9, 2);
    paintTo(12, 8);
    EXPECT_EQ(paintedPoints(), (Points{{3, 2}, {9, 2}, {12, 8}}));
    key('L', shift);  // lines again: from the last point
    paintTo(12, 10);
    EXPECT_EQ(paintedPoints(), (Points{{3, 2}, {9, 2}, {12, 8}, {12, 9}, {12, 10}}));
}

TEST_F(PaintCommandsTest, TheCursorIsFollowedWhenZoomedAndPanned) {
    showGrey(400, 300);
    for (int zoom = 2; zoom <= 4; ++zoom) key(keyPadDecimal);
    layout().panX = 120.6f;
    layout().panY = 70.3f;
    redraw();
    paintAt(120, 70);
    paintAt(219, 144);
    EXPECT_EQ(paintedPoints(), (Points{{120, 70}, {219, 144}}));
    const headless::Image& image = redraw();
    for (int y = 0; y < 300; ++y) {
        for (int x = 0; x < 400; ++x) {
            const bool first = x < 4 && y < 4, second = x >= 396 && y >= 296;
            ASSERT_EQ(image.at(x, y) & 0xFFFFFF, first || second ? 0xFFFFFFu : 0x404040u)
                << x << "," << y;
        }
    }
}

TEST_F(PaintCommandsTest, ACursorOutsideThePictureCountsAsTheNearestPixel) {
    struct Row {
        int cursorX, cursorY;  // events: the row counts from 1 at the foot of the window
        int column, row;
    };
    showGrey(40, 30);
    const int left = layout().marginX, foot = layout().marginY;
    const Row rows[] = {
        {0, 1, 0, 0},
        {-500, -500, 0, 0},
        {319, 144, 39, 29},
        {5000, 5000, 39, 29},
        {left, foot + 1, 0, 0},
        {left - 1, foot, 0, 0},
        {left + 1, foot + 1, 1, 0},
        {left, foot + 2, 0, 1},
        {left + 40, foot + 31, 39, 29},
    };
    for (const Row& row : rows) {
        std::fill_n(viewerState.shown->colour.data(), 40 * 30, grey);
        windowContext().cursor.x = row.cursorX;
        windowContext().cursor.y = row.cursorY;
        key(EV_RIGHTMOUSE);
        EXPECT_EQ(paintedPoints(), (Points{{row.column, row.row}}))
            << row.cursorX << "," << row.cursorY;
    }
}

TEST_F(PaintCommandsTest, ASmallerFrameIsPaintedInsideItsOwnBounds) {
    showAnimation(1, 2, 1, 400, 300);
    keepFrame(viewerState, 2, planesFrame(2, 20, 10));
    pointAt(390, 5);
    key(EV_RIGHTMOUSE);
    viewerState.currentFrame = 2;
    showFrame(viewerState, FrameSource::kept);  // not drawn yet: the layout is that of frame 1
    std::fill_n(viewerState.shown->colour.data(), 200, grey);
    paintTo(395, 5);
    redraw();
    EXPECT_EQ(paintedPoints(), (Points{{19, 5}}));
}

TEST_F(PaintCommandsTest, AFrameWithoutColoursIsPaintedInItsDepthOnly) {
    showImage(planesFrame(1, 20, 10, imageBlack | imageZ));
    key('N');  // the relief of the depth
    paintAt(3, 4);
    EXPECT_TRUE(viewerState.shown->colour.empty());
}

TEST_F(PaintCommandsTest, PaintingGoesOnInTheLoopUntilTheButtonIsReleased) {
    showGrey(40, 30);
    const auto moveTo = [](int column, int row) {
        const platform::PixelRect window = headless::windowRect();
        headless::moveMouse(window.left + layout().marginX + column,
                            window.bottom - 1 - layout().marginY - row);
    };
    headless::script([&] { moveTo(2, 3); });
    headless::script([] { headless::press(EV_RIGHTMOUSE); });
    headless::script([&] { moveTo(5, 3); });
    headless::script([&] { moveTo(5, 6); });
    headless::script([] { headless::release(EV_RIGHTMOUSE); });
    headless::script([&] { moveTo(20, 20); });
    bool looked = false;
    headless::whenIdle([&] {
        looked = true;
        EXPECT_EQ(paintedPoints(),
                  (Points{{2, 3}, {3, 3}, {4, 3}, {5, 3}, {5, 4}, {5, 5}, {5, 6}}));
        headless::close();
    });
    runViewerLoop(viewerState);
    EXPECT_TRUE(looked);
}

TEST_F(PaintCommandsTest, NothingIsPaintedWithoutAPicture) {
    EXPECT_FALSE(key(EV_RIGHTMOUSE));
    EXPECT_FALSE(viewerState.painting.active);
}

}  // namespace vistel
