#include "analysis/plane_views.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace vistel {

constexpr float infinity = std::numeric_limits<float>::infinity();

std::vector<int> greys(const std::vector<float>& z, ZScale scale = ZScale::wholeRange) {
    std::vector<uint32_t> view(z.size());
    buildZView(z.data(), z.size(), scale, view.data());
    std::vector<int> values;
    for (const uint32_t pixel : view) {
        const int value = pixel & 255;
        EXPECT_EQ(pixel, 0xFF000000u | value * 0x010101u);
        values.push_back(value);
    }
    return values;
}

TEST(PlaneViews, EachPlaneIsItsByteOfTheStoredPixel) {
    const uint32_t stored[] = {0x04030201, 0xFFEEDDCC};  // mask, blue, green, red from the top
    const uint32_t expected[4][2] = {{0xFF040404, 0xFFFFFFFF},
                                     {0xFF030303, 0xFFEEEEEE},
                                     {0xFF020202, 0xFFDDDDDD},
                                     {0xFF010101, 0xFFCCCCCC}};
    for (int plane = 0; plane < 4; ++plane) {
        uint32_t view[2];
        buildPlaneView(ChannelMode{plane}, false, stored, 2, view);
        EXPECT_EQ(view[0], expected[plane][0]) << plane;
        EXPECT_EQ(view[1], expected[plane][1]) << plane;
    }
}

TEST(PlaneViews, AnInvertedMaskIs255LessTheByte) {
    const uint32_t stored[] = {0x00FFFFFF, 0xFF000000, 0x30000000};
    uint32_t view[3];
    buildPlaneView(ChannelMode::matte, true, stored, 3, view);
    EXPECT_EQ(view[0], 0xFFFFFFFFu);
    EXPECT_EQ(view[1], 0xFF000000u);
    EXPECT_EQ(view[2], 0xFFCFCFCFu);
}

TEST(PlaneViews, MaskInversionLeavesTheOtherPlanesAlone) {
    const uint32_t stored[] = {0x04030201};
    for (int plane = 1; plane < 4; ++plane) {
        uint32_t plain[1], inverted[1];
        buildPlaneView(ChannelMode{plane}, false, stored, 1, plain);
        buildPlaneView(ChannelMode{plane}, true, stored, 1, inverted);
        EXPECT_EQ(plain[0], inverted[0]) << plane;
    }
}

TEST(PlaneViews, EveryPixelOfAPlaneIsDoneWhateverTheirNumber) {
    for (size_t pixels = 0; pixels < 40; ++pixels) {
        std::vector<uint32_t> view(pixels + 1, 0xA7A7A7A7);
        const std::vector<uint32_t> stored(pixels, 0x04030201);
        buildPlaneView(ChannelMode::blue, false, stored.data(), pixels, view.data());
        for (size_t i = 0; i < pixels; ++i) ASSERT_EQ(view[i], 0xFF030303u) << pixels;
        EXPECT_EQ(view[pixels], 0xA7A7A7A7u);
    }
}

TEST(PlaneViews, LuminanceWeighsTheMiddleByteTwice) {
    const struct {
        uint32_t stored;
        int grey;
    } rows[] = {
        {0x00000000, 0},  {0xFF000000, 0},   {0x00FFFFFF, 255}, {0xFFFFFFFF, 255},
        {0x000000FF, 63}, {0x0000FF00, 127}, {0x00FF0000, 63},  {0x00000003, 0},
        {0x00000004, 1},  {0x00010101, 1},   {0x00FE0101, 64},  {0x00FFFFFE, 254},
    };
    for (const auto& row : rows) {
        const std::vector<uint32_t> stored(4, row.stored);
        std::vector<uint32_t> view(4);
        buildLuminanceView(stored.data(), 4, view.data());
        for (const uint32_t pixel : view)
            EXPECT_EQ(pixel, 0xFF000000u | row.grey * 0x010101u) << std::hex << row.stored;
    }
}

TEST(PlaneViews, TheLastPixelsOfALuminanceViewThatMakeNoFourAreZero) {
    for (size_t pixels = 0; pixels < 40; ++pixels) {
        std::vector<uint32_t> view(pixels + 1, 0xA7A7A7A7);
        const std::vector<uint32_t> stored(pixels, 0xFFFFFFFF);
        buildLuminanceView(stored.data(), pixels, view.data());
        for (size_t i = 0; i < pixels; ++i)
            ASSERT_EQ(view[i], i < pixels / 4 * 4 ? 0xFFFFFFFFu : 0u) << pixels << " " << i;
        EXPECT_EQ(view[pixels], 0xA7A7A7A7u);
    }
}

TEST(PlaneViews, AnImageOf10PixelsHasItsLast2BlackInLuminance) {
    const std::vector<uint32_t> stored(10, 0x00808080);
    std::vector<uint32_t> view(10);
    buildLuminanceView(stored.data(), 10, view.data());
    EXPECT_EQ(view[7], 0xFF808080u);
    EXPECT_EQ(view[8], 0u);
    EXPECT_EQ(view[9], 0u);
}

TEST(PlaneViews, AViewMayReplaceItsSource) {
    std::vector<uint32_t> pixels(11, 0x40302010);
    buildPlaneView(ChannelMode::red, false, pixels.data(), 11, pixels.data());
    EXPECT_EQ(pixels, std::vector<uint32_t>(11, 0xFF101010));
    buildLuminanceView(pixels.data(), 8, pixels.data());
    EXPECT_EQ(pixels, std::vector<uint32_t>(11, 0xFF101010));
}

TEST(PlaneViews, TheNearestDepthIsWhiteTheFarthestBlack) {
    EXPECT_EQ(greys({1, 2, 3, 5}), (std::vector<int>{255, 191, 128, 0}));
    EXPECT_EQ(greys({-1, 0, 1}), (std::vector<int>{255, 128, 0}));
}

TEST(PlaneViews, SamplesThatAreNotFiniteAreBlackAndDoNotCount) {
    EXPECT_EQ(greys({1, infinity, 2, std::nanf(""), -infinity}),
              (std::vector<int>{255, 0, 0, 0, 0}));
    EXPECT_EQ(greys({infinity, infinity}), (std::vector<int>{0, 0}));
    EXPECT_EQ(greys({}), (std::vector<int>{}));
}

TEST(PlaneViews, TheRangeOfADepthPlaneIsThatOfItsFiniteSamples) {
    const float infinite = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const struct {
        std::vector<float> z;
        float nearest, farthest;
    } rows[] = {
        {{3, -2, 7}, -2, 7}, {{infinite, 5, nan, -infinite, 6}, 5, 6},
        {{nan, -4}, -4, -4}, {{infinite, nan}, 0, 0},
        {{}, 0, 0},
    };
    for (const auto& row : rows) {
        const DepthRange range = finiteRange(row.z.data(), row.z.size());
        EXPECT_EQ(range.nearest, row.nearest);
        EXPECT_EQ(range.farthest, row.farthest);
    }
}

TEST(PlaneViews, EqualDepthsAreWhite) {
    EXPECT_EQ(greys({7, 7, 7}), (std::vector<int>{255, 255, 255}));
}

TEST(PlaneViews, TheWholeRangeOfFloatsDoesNotOverflow) {
    const float largest = std::numeric_limits<float>::max();
    EXPECT_EQ(greys({-largest, 0, largest}), (std::vector<int>{255, 128, 0}));
}

TEST(PlaneViews, PercentilesLeaveAnOutlierOut) {
    std::vector<float> z;
    for (int i = 0; i < 100; ++i) z.push_back(float(i));
    z.push_back(1e9f);
    const std::vector<int> whole = greys(z), percentiles = greys(z, ZScale::percentiles);
    EXPECT_EQ(whole[50], 255);
    EXPECT_EQ(percentiles[0], 255);
    EXPECT_EQ(percentiles[2], 255);
    EXPECT_EQ(percentiles[50], 128);
    EXPECT_EQ(percentiles[98], 0);
    EXPECT_EQ(percentiles[100], 0);
}

TEST(PlaneViews, PercentilesOrderNegativeSamplesAndLeaveThoseThatAreNotFiniteOut) {
    // -50 to 49 in no order, and outliers on both sides.
    std::vector<float> z = {-1e30f, 1e30f, -0.0f, INFINITY, -INFINITY, NAN};
    for (int i = 0; i < 100; ++i) z.push_back(float(i * 37 % 100 - 50));
    // Of 103 finite samples the 2nd percentile is place 2, the 98th place 99.
    const double low = -49, high = 47;  // 0 is there twice
    const std::vector<int> percentiles = greys(z, ZScale::percentiles);
    for (size_t i = 0; i < z.size(); ++i) {
        const double nearness = std::clamp((high - double{z[i]}) / (high - low), 0.0, 1.0);
        EXPECT_EQ(percentiles[i], std::isfinite(z[i]) ? int(nearness * 255 + 0.5) : 0) << z[i];
    }
}

}  // namespace vistel
