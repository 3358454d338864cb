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
        buildPlaneView(plane, false, stored, 2, view);
        EXPECT_EQ(view[0], expected[plane][0]) << plane;
        EXPECT_EQ(view[1], expected[plane][1]) << plane;
    }
}

TEST(PlaneViews, AnInvertedMaskIs255LessTheByte) {
    const uint32_t stored[] = {0x00FFFFFF, 0xFF000000, 0x30000000};
    uint32_t view[3];
    buildPlaneView(0, true, stored, 3, view);
    EXPECT_EQ(view[0], 0xFFFFFFFFu);
    EXPECT_EQ(view[1], 0xFF000000u);
    EXPECT_EQ(view[2], 0xFFCFCFCFu);
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

}  // namespace vistel
