// The relief on screen: its profile lines to the pixel, the look-up table, memory that runs out.
#include <algorithm>
#include <cmath>
#include <vector>

#include "viewer/counted_calls.h"
#include "viewer/picture/picture_view.h"
#include "viewer/stored_pixels.h"
#include "viewer/viewer_fixture.h"

namespace vistel {

namespace headless = platform::headless;

namespace {

constexpr uint32_t colourBits = 0xFFFFFF;
constexpr uint32_t bandGrey = 0x202020;

using test::asGrey;
using test::planeByte;

using HeightAt = std::function<uint32_t(int column, int row)>;

struct Point {
    int x, y;
};

}  // namespace

class ReliefViewTest : public ViewerTest {
 protected:
    static PictureLayout& layout() { return viewerState.layout; }

    // Where a point of a profile lies in the window.
    static Point place(const HeightAt& heights, int column, int row) {
        const float risen = float(row) + float(heights(column, row)) * (32.0f / 255);
        const auto scaled = [](float pixel, float pan) {
            return int(std::floor((pixel - std::floor(pan)) * float(layout().zoom)));
        };
        return {layout().marginX + scaled(float(column), layout().panX),
                layout().marginY + scaled(risen, layout().panY)};
    }

    // The lines of all rows, drawn over the picture in full and cut off at its edges.
    static std::vector<uint32_t> withAllLines(const headless::Image& bare, const HeightAt& heights,
                                              uint32_t colour) {
        std::vector<uint32_t> pixels = bare.pixels;
        const PictureLayout& l = layout();
        const auto dot = [&](int x, int y) {
            const int column = x - l.marginX, row = y - l.marginY;
            if (column < 0 || column >= l.visibleWidth || row < 0 || row >= l.visibleHeight) return;
            pixels[size_t(y) * size_t(bare.width) + size_t(x)] = 0xFF000000u | colour;
        };
        for (int row = 0; row < l.height; row += 8) {
            for (int column = 0; column < l.width; ++column) {
                const Point to = place(heights, column, row);
                const Point from = column > 0 ? place(heights, column - 1, row) : to;
                const int steps = std::max({std::abs(to.x - from.x), std::abs(to.y - from.y), 1});
                for (int i = 0; i <= steps; ++i)
                    dot(from.x + (to.x - from.x) * i / steps, from.y + (to.y - from.y) * i / steps);
            }
        }
        return pixels;
    }

    // The picture with profile lines is the picture without them and all lines over it.
    static void expectLines(const HeightAt& heights, uint32_t colour, const std::string& what) {
        viewerState.profiles = false;
        const headless::Image bare = redraw();
        viewerState.profiles = true;
        const headless::Image& lined = redraw();
        const auto expected = withAllLines(bare, heights, colour);
        ASSERT_NE(expected, bare.pixels) << what;
        for (int y = 0; y < bare.height; ++y)
            for (int x = 0; x < bare.width; ++x)
                ASSERT_EQ(lined.at(x, y), underLabel(x, y)
                                              ? bare.at(x, y)
                                              : expected[size_t(y) * size_t(bare.width) + size_t(x)])
                    << what << ": window pixel " << x << "," << y;
    }
    static HeightAt planeHeights(int plane) {
        return [plane](int column, int row) { return planeByte(stored(column, row), plane); };
    }
};

// --- profile lines -------------------------------------------------------------------------------

TEST_F(ReliefViewTest, AProfileRises32RowsForAHeightOf255) {
    FrameStore image = testFrame(1, 400, 200);
    // Each eighth row has a height of its own: 0, 51, 102, 153, 204, 255.
    for (int y = 0; y < 200; ++y)
        std::fill_n(image.colour.row(size_t(y)), 400, 0xFF000000u | uint32_t(y / 8 % 6 * 51));
    showImage(std::move(image));
    key('R');
    key('N', shift);
    const headless::Image& lined = redraw();
    const double rise[] = {0, 6.4, 12.8, 19.2, 25.6, 32};
    const uint32_t red = 0x80;
    for (int y = 0; y < 200; ++y) {
        bool line = false;
        for (int row = 0; row < 200; row += 8) line |= int(row + rise[row / 8 % 6]) == y;
        for (const int x : {0, 1, 100, 399})
            ASSERT_EQ((lined.at(x, y) & colourBits) == red, line) << x << "," << y;
    }
}

TEST_F(ReliefViewTest, EachEighthRowHasItsOwnProfileAtEveryZoomAndPan) {
    struct Row {
        int zoom;
        float panX, panY;
    };
    const Row rows[] = {{1, 0, 0},         {2, 0, 0},     {2, 100, 75},
                        {2, 33.4f, 21.7f}, {2, 200, 150}, {3, 100.9f, 3},
                        {3, 0.2f, 99.1f},  {3, 266, 200}, {5, 311.5f, 40.5f}};
    showImage(planesFrame(1, 400, 300));
    key('R');
    key('N', shift);
    for (const Row& row : rows) {
        layout().zoom = row.zoom;
        layout().panX = row.panX;
        layout().panY = row.panY;
        expectLines(planeHeights(3), 0x80,
                    "zoom " + std::to_string(row.zoom) + " pan " + std::to_string(row.panX) + "," +
                        std::to_string(row.panY));
    }
}

TEST_F(ReliefViewTest, ProfilesStayInsideThePicture) {
    showImage(planesFrame(1, 64, 48));
    for (int i = 0; i < 2; ++i) key(keyPadDecimal);
    key('G');
    key('N', shift);
    redraw();  // the label is on screen
    expectLines(planeHeights(2), 0x8000, "with margins");
}

TEST_F(ReliefViewTest, AProfileHasTheColourOfItsView) {
    showImage(planesFrame(1, 400, 300));
    const std::pair<int, uint32_t> rows[] = {{'A', 0x808000}, {'B', 0x800000}, {'G', 0x008000},
                                             {'R', 0x000080}, {'Z', 0x008080}, {'L', 0x808080}};
    for (const auto& [letter, colour] : rows) {
        key(letter);
        const uint32_t* pixels = displayedPixels(viewerState);
        const std::vector<uint32_t> view(pixels, pixels + 400 * 300);
        key('N', shift);
        expectLines([&](int x, int y) { return view[size_t(y * 400 + x)] & 255; }, colour,
                    std::string(1, char(letter)));
    }
}

TEST_F(ReliefViewTest, TheReliefOfAllChannelsHasNoProfiles) {
    showImage(planesFrame(1, 400, 300));
    key('N');
    const headless::Image bare = redraw();
    key('N', shift);
    EXPECT_EQ(redraw().pixels, bare.pixels);
}

// --- look-up table -------------------------------------------------------------------------------

TEST_F(ReliefViewTest, TheHeightsAreThoseOfTheCorrectedPlane) {
    // The negative of a plane has the relief of the plane turned inside out.
    showImage(planesFrame(1, 40, 30));
    key('R');
    key('I');
    std::vector<uint32_t> inverted(displayedPixels(viewerState),
                                   displayedPixels(viewerState) + 40 * 30);
    key('N');
    const std::vector<uint32_t> plain(displayedPixels(viewerState),
                                      displayedPixels(viewerState) + 40 * 30);
    ASSERT_NE(plain, inverted);
    key('X');
    for (int i = 0; i < 40 * 30; ++i)
        ASSERT_EQ(displayedPixels(viewerState)[i] & colourBits, inverted[size_t(i)] & colourBits)
            << i;
    // And so the profiles.
    showImage(planesFrame(1, 400, 300));
    key('R');
    key('N', shift);
    expectLines([](int x, int y) { return 255 - planeByte(stored(x, y), 3); }, 0x80, "negative");
}

TEST_F(ReliefViewTest, TheColoursOfAReliefAreTheStoredOnes) {
    showImage(planesFrame(1, 40, 30));
    key('R');
    key('X');
    key(characterKey(']'), alt);  // and a gamma of 1.5
    ASSERT_TRUE(viewerState.lut.lutActive);
    key('N');
    const std::vector<uint32_t> shades(displayedPixels(viewerState),
                                       displayedPixels(viewerState) + 40 * 30);
    key(keyPadMultiply, control);
    ASSERT_EQ(viewerState.reliefAmount, 256);
    const auto factor = uint32_t(256 / (0.6 / std::sqrt(2.36)));
    expectPicture([&](int x, int y) {
        const uint32_t s = shades[size_t(y * 40 + x)] & 255;
        const auto lit = [&](int plane) {
            return std::min(planeByte(stored(x, y), plane) * factor * s >> 16, 255u);
        };
        return lit(1) << 16 | lit(2) << 8 | lit(3);
    });
}

TEST_F(ReliefViewTest, AMaskAloneIsNoColourPlane) {
    showImage(planesFrame(1, 40, 30, imageBlack | imageMask));
    ASSERT_EQ(viewerState.mode, ChannelMode::matte);
    key('N');
    ASSERT_FALSE(viewerState.shown->colour.empty());
    const std::vector<uint32_t> shades(displayedPixels(viewerState),
                                       displayedPixels(viewerState) + 40 * 30);
    key(keyPadMultiply, control);
    for (int i = 0; i < 40 * 30; ++i) {
        ASSERT_EQ(displayedPixels(viewerState)[i], shades[size_t(i)]);
        ASSERT_EQ(shades[size_t(i)] & colourBits, asGrey(shades[size_t(i)] & 255));
    }
}

// --- without memory ------------------------------------------------------------------------------

class ReliefMemoryTest : public ReliefViewTest {
 protected:
    static constexpr int width = 400, height = 300, pixels = width * height;

    // Presses a key while there is no memory of a kind, and draws.
    static const headless::Image& pressWithout(test::MemoryKind kind, int code,
                                               unsigned held = none) {
        const test::NoMemory none(kind, pixels);
        EXPECT_TRUE(key(code, held));
        const headless::Image& image = redraw();
        EXPECT_TRUE(none.happened());
        EXPECT_EQ(reliefHeights(viewerState), nullptr);
        return image;
    }
    static void expectEmpty(const headless::Image& image) {
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                if (underLabel(x, y)) continue;
                ASSERT_EQ(image.at(x, y) & colourBits, bandGrey);
            }
        }
    }
    // With memory again the relief is there, with its lines.
    static void expectRecovered() {
        EXPECT_TRUE(key('N', shift));
        redraw();
        EXPECT_NE(reliefHeights(viewerState), nullptr);
        expectLines(planeHeights(3), 0x80, "with memory again");
    }
};

TEST_F(ReliefMemoryTest, WithoutMemoryForTheReliefItsHeightsAreShownWithoutLines) {
    showImage(planesFrame(1, width, height));
    key('R');
    redraw();
    const headless::Image& image = pressWithout(test::MemoryKind::pages, 'N', shift);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            if (underLabel(x, y)) continue;
            ASSERT_EQ(image.at(x, y) & colourBits, asGrey(planeByte(stored(x, y), 3)));
        }
    }
    expectRecovered();
}

TEST_F(ReliefMemoryTest, WithoutMemoryForTheShadesNothingIsShownAndNoLine) {
    showImage(planesFrame(1, width, height));
    key('R');
    redraw();
    headless::exchangeBuffers();
    const headless::Image& image = pressWithout(test::MemoryKind::heap, 'N', shift);
    expectEmpty(image);
    expectRecovered();
}

TEST_F(ReliefMemoryTest, WithoutMemoryForTheHeightsNothingIsShownAndNoLine) {
    showImage(planesFrame(1, width, height));
    headless::exchangeBuffers();
    redraw();
    const headless::Image& image = pressWithout(test::MemoryKind::pages, 'N', shift);
    expectEmpty(image);
    key('R');
    expectRecovered();
}

TEST_F(ReliefMemoryTest, AViewWithoutMemoryIsEmptyAndComesBack) {
    showImage(planesFrame(1, width, height));
    headless::exchangeBuffers();
    redraw();
    const headless::Image& image = pressWithout(test::MemoryKind::pages, 'R');
    expectEmpty(image);
    EXPECT_TRUE(key('R'));
    expectPicture([](int x, int y) { return asGrey(planeByte(stored(x, y), 3)); });
}

}  // namespace vistel
