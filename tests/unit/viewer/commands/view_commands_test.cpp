#include "viewer/commands/view_commands.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "viewer/picture/picture_view.h"
#include "viewer/stored_pixels.h"
#include "viewer/viewer_fixture.h"

namespace vistel {

namespace headless = platform::headless;

namespace {

using test::asGrey;
using test::planeByte;

constexpr int width = 13, height = 9;  // 117 pixels: one more than a multiple of four

uint32_t luminance(uint32_t pixel) {
    return (planeByte(pixel, 3) + 2 * planeByte(pixel, 2) + planeByte(pixel, 1)) / 4;
}

// The last (pixels mod 4) of the luminance view are black.
uint32_t luminanceAt(const FrameStore& frame, int column, int row) {
    const int place = row * frame.width + column, pixels = frame.width * frame.height;
    return place < pixels / 4 * 4 ? luminance(frame.colour.row(size_t(row))[column]) : 0;
}

uint32_t shade(double slope, int dx, int dy) {
    const double k = slope * -0.25;
    const double light = 255 / std::sqrt(2.36);
    const double value =
        (dx * k + 0.6 + dy * k) * light / std::sqrt(dy * k * dy * k + 1 + dx * k * dx * k);
    return uint32_t(std::clamp(value, 0.0, 255.0));
}

using Heights = std::function<int(int column, int row)>;

uint32_t shadeAt(const Heights& heights, double slope, int column, int row) {
    const int here = heights(column, row);
    const int dx = column > 0 ? here - heights(column - 1, row) : 0;
    const int dy = row > 0 ? here - heights(column, row - 1) : 0;
    return shade(slope, dx, dy);
}

}  // namespace

class ViewCommandsTest : public ViewerTest {
 protected:
    // Every pixel of the picture is the relief of the heights, within 1: the formula is computed in
    // single precision.
    static void expectRelief(const Heights& heights, double slope) {
        const headless::Image& image = redraw();
        const PictureLayout& layout = viewerState.layout;
        for (int row = 0; row < layout.height; ++row) {
            for (int column = 0; column < layout.width; ++column) {
                const uint32_t pixel = image.at(layout.marginX + column, layout.marginY + row);
                const int expected = int(shadeAt(heights, slope, column, row));
                ASSERT_NEAR(int(pixel & 255), expected, 1) << column << "," << row;
                ASSERT_EQ(pixel & 0xFFFFFF, asGrey(pixel & 255));
            }
        }
    }
    static const FrameStore& frame() { return *viewerState.shown; }
    static Heights luminanceHeights() {
        return [](int column, int row) { return int(luminanceAt(frame(), column, row)); };
    }
};

// --- plain views --------------------------------------------------------------------------------

TEST_F(ViewCommandsTest, ALetterShowsAPlaneAsGrey) {
    showImage(planesFrame(1, width, height));
    const std::pair<int, int> rows[] = {{'A', 0}, {'M', 0}, {'B', 1}, {'G', 2}, {'R', 3}};
    for (const auto& [letter, plane] : rows) {
        EXPECT_TRUE(key(letter));
        EXPECT_EQ(int(viewerState.mode), plane);
        expectPicture([&](int x, int y) { return asGrey(planeByte(stored(x, y), plane)); });
    }
    EXPECT_TRUE(key('C'));
    EXPECT_EQ(viewerState.mode, ChannelMode::all);
    expectPicture(stored);
}

TEST_F(ViewCommandsTest, LettersActRegardlessOfShift) {
    showImage(planesFrame(1, width, height));
    key('R', shift);
    EXPECT_EQ(viewerState.mode, ChannelMode::red);
}

TEST_F(ViewCommandsTest, LuminanceHasItsLastPixelsBlack) {
    showImage(planesFrame(1, width, height));
    EXPECT_TRUE(key('L'));
    EXPECT_EQ(viewerState.mode, ChannelMode::luminance);
    expectPicture([](int x, int y) { return asGrey(luminanceAt(frame(), x, y)); });
    EXPECT_EQ(displayedPixels(viewerState)[width * height - 1] & 0xFFFFFF, 0u);
}

TEST_F(ViewCommandsTest, LuminanceWithShiftTogglesLinesInstead) {
    showImage(planesFrame(1, width, height));
    EXPECT_TRUE(viewerState.painting.lines);
    EXPECT_FALSE(key('L', shift));
    EXPECT_FALSE(viewerState.painting.lines);
    EXPECT_EQ(viewerState.mode, ChannelMode::all);
    EXPECT_FALSE(key('L', shift));
    EXPECT_TRUE(viewerState.painting.lines);
}

TEST_F(ViewCommandsTest, DepthIsWhiteAtItsSmallestAndBlackAtItsLargestSample) {
    showImage(planesFrame(1, width, height));
    const float* z = frame().z.data();
    const auto [low, high] = std::minmax_element(z, z + width * height);
    EXPECT_TRUE(key('Z'));
    EXPECT_EQ(viewerState.mode, ChannelMode::zBuffer);
    expectPicture([&, low = double{*low}, high = double{*high}](int x, int y) {
        return asGrey(uint32_t((high - z[y * width + x]) / (high - low) * 255 + 0.5));
    });
}

TEST_F(ViewCommandsTest, AModifierLeavesTheOutliersOfTheDepthOut) {
    for (const unsigned held : {shift, control, alt}) {
        FrameStore image = planesFrame(1, 20, 10);
        for (int i = 0; i < 200; ++i) image.z.data()[i] = float(i);
        image.z.data()[199] = 1e9f;  // one outlier
        showImage(std::move(image));
        EXPECT_TRUE(key('Z', held));
        // 2 % of 199 places is place 3, 98 % is place 195.
        expectPicture([](int x, int y) {
            const double nearness = (195.0 - (y * 20 + x)) / (195 - 3);
            return asGrey(uint32_t(std::clamp(nearness, 0.0, 1.0) * 255 + 0.5));
        });
        EXPECT_TRUE(key('Z'));
        EXPECT_EQ(displayedPixels(viewerState)[0] & 255, 255u);
        EXPECT_EQ(displayedPixels(viewerState)[198] & 255, 255u);  // flattened by the outlier
    }
}

// --- planes that are missing --------------------------------------------------------------------

TEST_F(ViewCommandsTest, AMissingPlaneLeavesTheViewAndSaysSo) {
    struct Row {
        const char* name;
        uint32_t flags;
        bool depthLoaded;
        int letter;
        const char* message;
    };
    const Row rows[] = {
        {"no mask", imageColour, false, 'A', "This image has no mask."},
        {"no mask, other key", imageColour, false, 'M', "This image has no mask."},
        {"no depth", imageColour | imageMask, false, 'Z', "This image has no depth plane."},
        {"depth left out", imageColour | imageZ, false, 'Z',
         "The depth plane was not loaded (options -z, -Z)."},
        {"matte only: red", imageBlack | imageMask, false, 'R', "This image has no colour."},
        {"matte only: green", imageBlack | imageMask, false, 'G', "This image has no colour."},
        {"matte only: blue", imageBlack | imageMask, false, 'B', "This image has no colour."},
        {"matte only: all", imageBlack | imageMask, false, 'C', "This image has no colour."},
        {"matte only: luminance", imageBlack | imageMask, false, 'L', "This image has no colour."},
        {"depth only: red", imageBlack | imageZ, true, 'R', "This image has no colour."},
        {"depth only: mask", imageBlack | imageZ, true, 'A', "This image has no mask."},
    };
    for (const Row& row : rows) {
        clearViewerSession(viewerState);
        viewerState.windowId = -1;
        FrameStore image = planesFrame(1, 400, 200, row.flags);
        if (!row.depthLoaded) image.z.free();
        showImage(std::move(image));
        const ChannelMode before = viewerState.mode;
        const headless::Image picture = headless::visibleImage();
        EXPECT_FALSE(key(row.letter)) << row.name;
        EXPECT_EQ(viewerState.mode, before) << row.name;
        EXPECT_EQ(headless::visibleTexts().back().text, row.message) << row.name;
        // The band: 20 rows from the window's lower edge; the picture stays above it.
        const headless::Image& image2 = headless::visibleImage();
        EXPECT_EQ(image2.at(399, 0), 0xFF000000u) << row.name;
        EXPECT_EQ(image2.at(399, 19), 0xFF000000u) << row.name;
        EXPECT_TRUE(std::equal(picture.pixels.begin() + 20 * 400, picture.pixels.end(),
                               image2.pixels.begin() + 20 * 400))
            << row.name;
        EXPECT_TRUE(viewerState.bandShown) << row.name;
        restoreFrontImage();
        EXPECT_EQ(headless::visibleImage().pixels, picture.pixels) << row.name;
    }
}

TEST_F(ViewCommandsTest, TheBandGoesWhenTheKeyIsReleased) {
    showImage(planesFrame(1, 400, 200, imageColour));
    const headless::Image picture = headless::visibleImage();
    int idle = 0, presents = 0;
    headless::whenIdle([&] {
        if (++idle == 1) return headless::press('A');
        if (idle == 2) {
            EXPECT_EQ(shownText(), "This image has no mask.");
            presents = headless::presents();
            return headless::release('A');
        }
        EXPECT_EQ(headless::visibleImage().pixels, picture.pixels);
        EXPECT_EQ(headless::presents(), presents + 1);  // restored, not drawn again
        headless::close();
    });
    runViewerLoop(viewerState);
    EXPECT_EQ(idle, 3);
}

TEST_F(ViewCommandsTest, AKeyThatShowsNoBandTakesNoneAway) {
    showImage(planesFrame(1, 400, 200));
    int idle = 0, presents = 0;
    headless::whenIdle([&] {
        if (++idle == 1) {
            presents = headless::presents();
            return headless::type('H');
        }
        EXPECT_EQ(headless::presents(), presents);
        headless::close();
    });
    runViewerLoop(viewerState);
    EXPECT_EQ(idle, 2);
}

// --- kept over frames ---------------------------------------------------------------------------

TEST_F(ViewCommandsTest, TheViewStaysFromFrameToFrameAndOverAReload) {
    showAnimation(1, 3);
    key('G');
    for (const int frame : {2, 3, 1}) {
        viewerState.currentFrame = frame;
        EXPECT_TRUE(showFrame(viewerState, FrameSource::kept));
        EXPECT_EQ(viewerState.mode, ChannelMode::green);
        expectPicture([](int, int row) { return asGrey(uint32_t(row)); });
    }
    setUpDisplay(viewerState, *viewerState.shown, Refit::fitWindow);  // what a reload does
    EXPECT_EQ(viewerState.mode, ChannelMode::green);
}

TEST_F(ViewCommandsTest, AFrameWithoutThePlaneIsShownPlainAndTheNextOneInTheViewAgain) {
    showAnimation(1, 3);
    keepFrame(viewerState, 2, planesFrame(2, 64, 48, imageColour));  // no mask
    key('A');
    const std::pair<int, ChannelMode> rows[] = {
        {2, ChannelMode::all}, {3, ChannelMode::matte}, {2, ChannelMode::all}};
    for (const auto& [frame, mode] : rows) {
        viewerState.currentFrame = frame;
        showFrame(viewerState, FrameSource::kept);
        EXPECT_EQ(viewerState.mode, mode) << frame;
    }
}

TEST_F(ViewCommandsTest, TheReliefIsMadeFromTheChosenViewWhereverTheFrameHasIt) {
    showAnimation(1, 3);
    for (const int number : {1, 3}) keepFrame(viewerState, number, planesFrame(number, 64, 48));
    keepFrame(viewerState, 2, planesFrame(2, 64, 48, imageBlack | imageMask));  // only a mask
    viewerState.currentFrame = 1;
    showFrame(viewerState, FrameSource::kept);
    key('R');
    key('N');
    const std::pair<int, int> rows[] = {{2, 0}, {3, 3}, {2, 0}, {1, 3}};
    for (const auto& [number, source] : rows) {
        viewerState.currentFrame = number;
        showFrame(viewerState, FrameSource::kept);
        EXPECT_EQ(viewerState.mode, ChannelMode::bump);
        EXPECT_EQ(viewerState.bumpSource, ChannelMode{source}) << number;
        key('I');
        key('N');           // turning it
        key(keyDownArrow);  // and a change of depth leave the source alone
        EXPECT_EQ(viewerState.bumpSource, ChannelMode{source}) << number;
        const double slope = double{viewerState.reliefDepth};
        expectRelief(
            [&, plane = source](int x, int y) { return int(planeByte(stored(x, y), plane)); },
            slope);
    }
}

// --- relief -------------------------------------------------------------------------------------

TEST_F(ViewCommandsTest, TheReliefOfTheWholePictureIsThatOfItsLuminance) {
    showImage(planesFrame(1, width, height));
    EXPECT_TRUE(key('N'));
    EXPECT_EQ(viewerState.mode, ChannelMode::bump);
    expectRelief(luminanceHeights(), -0.1);
    EXPECT_TRUE(key('I'));
    EXPECT_EQ(viewerState.mode, ChannelMode::invertedBump);
    expectRelief(luminanceHeights(), 0.1);
    EXPECT_TRUE(key('N'));
    EXPECT_EQ(viewerState.mode, ChannelMode::bump);
}

TEST_F(ViewCommandsTest, TheReliefOfAPlaneOfTheDepthAndOfTheLuminance) {
    showImage(planesFrame(1, width, height));
    for (const auto& [letter, plane] : {std::pair{'A', 0}, {'B', 1}, {'G', 2}, {'R', 3}}) {
        key(letter);
        key('N');
        EXPECT_EQ(viewerState.bumpSource, ChannelMode{plane});
        expectRelief([&, p = plane](int x, int y) { return int(planeByte(stored(x, y), p)); },
                     -0.1);
    }
    key('L');
    key('N');
    EXPECT_EQ(viewerState.bumpSource, ChannelMode::luminance);
    expectRelief(luminanceHeights(), -0.1);
    key('Z');
    std::vector<uint32_t> depth(displayedPixels(viewerState),
                                displayedPixels(viewerState) + width * height);
    key('I');
    EXPECT_EQ(viewerState.bumpSource, ChannelMode::zBuffer);
    expectRelief([&](int x, int y) { return int(depth[size_t(y * width + x)] & 255); }, 0.1);
}

TEST_F(ViewCommandsTest, AFlatPlaneIs99Everywhere) {
    FrameStore image = planesFrame(1, width, height);
    std::fill_n(image.colour.data(), width * height, 0xFF204060u);
    showImage(std::move(image));
    key('R');
    key('N');
    expectPicture([](int, int) { return asGrey(99); });
}

TEST_F(ViewCommandsTest, ArrowKeysChangeTheDepthOfTheRelief) {
    struct Row {
        int code;
        unsigned held;
        float expected;  // from 0.5
    };
    const Row rows[] = {
        {keyUpArrow, none, 0.495f},
        {keyDownArrow, none, 0.505f},
        {keyUpArrow, shift, 0.45f},
        {keyDownArrow, shift, 0.55f},
        {keyUpArrow, alt, 0.4f},
        {keyDownArrow, alt, 0.6f},
        {keyUpArrow, control, -0.1f},
        {keyDownArrow, control, -0.1f},
        {keyUpArrow, control | shift, -0.1f},
    };
    showImage(planesFrame(1, width, height));
    for (const Row& row : rows) {
        key('C');
        viewerState.reliefDepth = 0.5f;
        EXPECT_FALSE(key(row.code, row.held));  // no relief on screen
        EXPECT_FLOAT_EQ(viewerState.reliefDepth, row.expected);
        key('N');
        viewerState.reliefDepth = 0.5f;
        EXPECT_TRUE(key(row.code, row.held));
        EXPECT_FLOAT_EQ(viewerState.reliefDepth, row.expected);
        expectRelief(luminanceHeights(), double{row.expected});
    }
}

TEST_F(ViewCommandsTest, TheReliefViewFollowsTheSignOfItsSlope) {
    showImage(planesFrame(1, width, height));
    key('N');
    EXPECT_EQ(viewerState.mode, ChannelMode::bump);
    key(keyDownArrow, alt);  // -0.1 to 0: not above 0
    EXPECT_EQ(viewerState.mode, ChannelMode::bump);
    key(keyDownArrow);
    EXPECT_EQ(viewerState.mode, ChannelMode::invertedBump);
    key(keyUpArrow, alt);
    EXPECT_EQ(viewerState.mode, ChannelMode::bump);
}

TEST_F(ViewCommandsTest, KeypadKeysChangeTheReliefsAmountOfColour) {
    struct Row {
        int code;
        unsigned held;
        int from, expected;
    };
    const Row rows[] = {
        {keyPadMultiply, none, 100, 101},    {keyPadDivide, none, 100, 99},
        {keyPadMultiply, shift, 100, 105},   {keyPadDivide, shift, 100, 95},
        {keyPadMultiply, alt, 100, 110},     {keyPadDivide, alt, 100, 90},
        {keyPadMultiply, control, 100, 256}, {keyPadDivide, control, 100, 0},
        {keyPadMultiply, alt, 250, 256},     {keyPadDivide, alt, 5, 0},
        {keyPadMultiply, none, 256, 256},    {keyPadDivide, none, 0, 0},
    };
    showImage(planesFrame(1, width, height));
    key('N');
    for (const Row& row : rows) {
        viewerState.reliefAmount = row.from;
        EXPECT_TRUE(key(row.code, row.held));
        EXPECT_EQ(viewerState.reliefAmount, row.expected);
    }
    key('C');
    EXPECT_FALSE(key(keyPadMultiply));
    EXPECT_EQ(viewerState.reliefAmount, 1);
}

TEST_F(ViewCommandsTest, AReliefWithColourMultipliesThemWithItsShade) {
    showImage(planesFrame(1, width, height));
    key('N');
    expectRelief(luminanceHeights(), -0.1);
    const std::vector<uint32_t> shades(displayedPixels(viewerState),
                                       displayedPixels(viewerState) + width * height);
    for (const uint32_t amount : {1u, 128u, 255u, 256u}) {
        viewerState.reliefAmount = int(amount);
        EXPECT_TRUE(key(keyUpArrow, control));  // the depth as it is
        const auto factor = uint32_t(amount / (0.6 / std::sqrt(2.36)));
        expectPicture([&](int x, int y) {
            const uint32_t s = shades[size_t(y * width + x)] & 255;
            const auto lit = [&](int plane) {
                const uint32_t c = planeByte(stored(x, y), plane) * factor;
                const uint32_t base = amount == 256 ? 0 : (256 - amount) * 256;
                return std::min((c + base) * s >> 16, 255u);
            };
            return lit(1) << 16 | lit(2) << 8 | lit(3);
        });
    }
}

TEST_F(ViewCommandsTest, AReliefOfADepthOnlyFrameIsGreyWhateverTheAmount) {
    showImage(planesFrame(1, width, height, imageBlack | imageZ));
    EXPECT_EQ(viewerState.mode, ChannelMode::zBuffer);
    std::vector<uint32_t> depth(displayedPixels(viewerState),
                                displayedPixels(viewerState) + width * height);
    key('N');
    viewerState.reliefAmount = 255;
    key(keyPadMultiply);
    expectRelief([&](int x, int y) { return int(depth[size_t(y * width + x)] & 255); }, -0.1);
}

TEST_F(ViewCommandsTest, ShiftDrawsProfileLinesOverEveryEighthRow) {
    FrameStore image = planesFrame(1, 400, 200);
    std::fill_n(image.colour.data(), 400 * 200, 0xFF000000u);
    showImage(std::move(image));
    key('R');
    key('N', shift);
    const auto isLine = [](int, int y) { return y % 8 == 0; };  // heights of 0
    const uint32_t red = 0x000080;
    expectPicture([&](int x, int y) { return isLine(x, y) ? red : asGrey(99); });
    key('N');
    expectPicture([](int, int) { return asGrey(99); });
}

// --- control channel ----------------------------------------------------------------------------

TEST_F(ViewCommandsTest, FunctionKeysChooseTheControlChannelAndTheLabelNamesIt) {
    struct Row {
        int number;
        unsigned held;
        int channel;
        bool complement;
        const char* label;
    };
    const Row rows[] = {
        {1, none, 3, false, "[R]"}, {2, none, 2, false, "[G]"}, {3, none, 1, false, "[B]"},
        {1, shift, 3, true, "[C]"}, {2, shift, 2, true, "[M]"}, {3, shift, 1, true, "[Y]"},
        {4, none, 0, false, ""},
    };
    showImage(planesFrame(1, width, height));
    for (const Row& row : rows) {
        EXPECT_TRUE(key(keyF1 + row.number - 1, row.held));
        EXPECT_EQ(viewerState.controlChannel, row.channel);
        EXPECT_EQ(viewerState.controlComplement, row.complement);
        redraw();
        EXPECT_EQ(shownText(), row.label);
    }
    key('G');
    key(keyF1);
    redraw();
    EXPECT_EQ(shownText(), "Green [R]");
}

// --- labels on screen ---------------------------------------------------------------------------

TEST_F(ViewCommandsTest, TheLabelOfASingleImageIsAtTheTop) {
    for (const bool bar : {false, true}) {
        windowContext().controlBarWanted = bar;
        viewerState.windowId = -1;
        showImage(planesFrame(1, 64, 48));
        key('R');
        const headless::Image& image = redraw();
        int clientWidth, clientHeight;
        clientSize(clientWidth, clientHeight);
        EXPECT_EQ(clientHeight, 144);
        ASSERT_EQ(headless::visibleTexts().size(), 1u);
        const headless::DrawnText& text = headless::visibleTexts()[0];
        EXPECT_EQ(text.text, "Red");
        EXPECT_EQ(text.x, (320 - 3 * 6) / 2);
        EXPECT_EQ(text.y, 144 - (bar ? 40 - 29 : 15));
        EXPECT_EQ(image.at(0, 144 - 17), 0xFF202020u);
        EXPECT_EQ(image.at(text.x, text.y), 0xFF0000FFu);  // red
    }
}

TEST_F(ViewCommandsTest, TheLabelOfAnAnimationIsAtTheFoot) {
    showAnimation(1, 2, 1, 400, 300);
    key('R');
    const headless::Image& image = redraw();
    ASSERT_EQ(headless::visibleTexts().size(), 2u);
    const headless::DrawnText& label = headless::visibleTexts()[0];
    EXPECT_EQ(label.text, "Red");
    EXPECT_EQ(label.x, (440 - 3 * 6) / 2);
    EXPECT_EQ(label.y, 5);
    for (const int y : {0, 15}) EXPECT_EQ(image.at(1, y), 0xFF202020u);
}

TEST_F(ViewCommandsTest, APictureWithoutMarginsHasItsLabelToo) {
    showImage(planesFrame(1, 400, 200));
    redraw();
    EXPECT_TRUE(headless::visibleTexts().empty());
    key('R');
    redraw();
    ASSERT_EQ(headless::visibleTexts().size(), 1u);
    EXPECT_EQ(shownText(), "Red");
}

}  // namespace vistel
