#include "picture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace vistel;

namespace {

TEST(Picture, LightBecomesTheNearestByteOfTheCurve) {
    struct Row {
        float linear;
        int byte;
    };
    constexpr float nothing = std::numeric_limits<float>::quiet_NaN();
    constexpr float endless = std::numeric_limits<float>::infinity();
    const Row rows[] = {{0, 0},           {1, 255},       {0.5f, 188},   {0.18f, 118},
                        {0.0031308f, 10}, {-0.5f, 0},     {-0.0f, 0},    {7, 255},
                        {nothing, 0},     {endless, 255}, {-endless, 0}, {1e-30f, 0}};
    for (const Row& row : rows) EXPECT_EQ(byteFromLinear(row.linear), row.byte) << row.linear;
}

TEST(Picture, TheTableOfBytesAgreesWithTheFormulaEverywhere) {
    for (int i = 0; i <= 200000; ++i) {
        const float linear = static_cast<float>(i) / 200000;
        ASSERT_EQ(byteFromLinear(linear), std::lround(encodedFromLinear(linear) * 255)) << linear;
    }
}

TEST(Picture, EveryByteSurvivesTheWayToLightAndBack) {
    for (int i = 0; i < 256; ++i) {
        const float linear = linearFromEncoded(static_cast<float>(i) / 255);
        EXPECT_EQ(byteFromLinear(linear), i);
    }
}

TEST(Picture, AMaskIsLinear) {
    const float notANumber = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(byteFromMask(0.5f), 128);
    EXPECT_EQ(byteFromMask(-1), 0);
    EXPECT_EQ(byteFromMask(2), 255);
    EXPECT_EQ(byteFromMask(notANumber), 0);
    for (int i = 0; i < 256; ++i) EXPECT_EQ(byteFromMask(static_cast<float>(i) / 255), i);
}

TEST(Picture, EveryByteSurvivesTheWayTo16BitsAndBack) {
    for (int i = 0; i < 256; ++i) EXPECT_EQ(byteFromWord(wordFromByte(static_cast<uint8_t>(i))), i);
    EXPECT_EQ(byteFromWord(128), 0);
    EXPECT_EQ(byteFromWord(129), 1);
    EXPECT_EQ(byteFromWord(65535), 255);
}

TEST(Picture, SizesThatNoFrameCanHaveAreRefused) {
    struct Row {
        uint32_t width, height;
        bool wide, accepted;
    };
    const Row rows[] = {{0, 1, false, false},         {1, 0, false, false},
                        {65536, 1, false, false},     {1, 65536, true, false},
                        {65535, 1, true, true},       {1, 65535, false, true},
                        {65535, 65535, false, false}, {16384, 16384, false, true},
                        {16385, 16384, false, false}, {16384, 8192, true, true},
                        {16384, 8193, true, false},   {0xFFFFFFFF, 0xFFFFFFFF, true, false}};
    for (const Row& row : rows) {
        Picture picture;
        EXPECT_EQ(!picture.allocate(row.width, row.height, row.wide), row.accepted)
            << row.width << " x " << row.height;
    }
}

TEST(Picture, DepthCountsWithTheColour) {
    Picture picture;
    ASSERT_FALSE(picture.allocate(16384, 16384, false));
    EXPECT_TRUE(picture.allocateZ());
    ASSERT_FALSE(picture.allocate(16384, 8192, false));
    EXPECT_FALSE(picture.allocateZ());
    EXPECT_EQ(picture.z.size(), size_t{16384} * 8192);
}

TEST(Picture, ANewPictureIsZeroAndForgetsTheOldOne) {
    Picture picture;
    ASSERT_FALSE(picture.allocate(3, 2, false));
    ASSERT_FALSE(picture.allocateZ());
    picture.row(1)[5] = 9;
    picture.mask = true;
    ASSERT_FALSE(picture.allocate(3, 2, true));
    EXPECT_TRUE(picture.samples.empty() && picture.z.empty() && !picture.mask);
    EXPECT_EQ(picture.wideSamples, Samples<uint16_t>(24));
}

TEST(Picture, AByteRowOfAWidePictureIsRounded) {
    Picture picture;
    ASSERT_FALSE(picture.allocate(1, 2, true));
    const uint16_t words[4] = {0, 128, 129, 65535};
    std::copy(words, words + 4, picture.wideRow(1));
    std::vector<uint8_t> room;
    const uint8_t* row = picture.byteRow(1, room);
    EXPECT_EQ(std::vector<uint8_t>(row, row + 4), (std::vector<uint8_t>{0, 0, 1, 255}));
}

}  // namespace
