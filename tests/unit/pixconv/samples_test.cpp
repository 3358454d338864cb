#include "samples.h"

#include "codec_files.h"

using namespace vistel;

namespace {

TEST(Samples, WidenedCodesReachBothEndsAndKeepTheirOrder) {
    for (uint32_t bits = 9; bits <= 16; ++bits) {
        const uint32_t most = (1u << bits) - 1;
        EXPECT_EQ(widenedCode(0, bits), 0) << bits;
        EXPECT_EQ(widenedCode(most, bits), 65535) << bits;
        for (uint32_t code = 1; code <= most; ++code) {
            ASSERT_LT(widenedCode(code - 1, bits), widenedCode(code, bits)) << bits << " " << code;
            ASSERT_EQ(widenedCode(code, bits) >> (16 - bits), code) << bits;
        }
    }
}

TEST(Samples, RescaledSamplesAreTheNearestOfTheNewScale) {
    const struct {
        uint32_t sample, most, full, expected;
    } rows[] = {{0, 15, 255, 0},      {15, 15, 255, 255},   {16, 15, 255, 255},
                {1, 2, 255, 128},     {1, 3, 255, 85},      {1, 1000, 255, 0},
                {2, 1000, 255, 1},    {1, 1, 65535, 65535}, {65535, 65535, 255, 255},
                {32767, 65535, 1, 0}, {32768, 65535, 1, 1}, {65535, 65535, 65535, 65535}};
    for (const auto& row : rows)
        EXPECT_EQ(rescaled(row.sample, row.most, row.full), row.expected)
            << row.sample << " of " << row.most;
}

TEST(Samples, TheUsualOrderIsGreyOrColourThenMask) {
    const struct {
        bool colour, mask;
        std::vector<int> places;
    } rows[] = {{false, false, {0}},
                {false, true, {0, 3}},
                {true, false, {0, 1, 2}},
                {true, true, {0, 1, 2, 3}}};
    for (const auto& row : rows) {
        const ChannelOrder order = usualOrder(row.colour, row.mask);
        EXPECT_EQ(std::vector<int>(order.place, order.place + order.channels), row.places);
    }
}

TEST(Samples, ARowIsCompletedWithWhatItsFileDoesNotHold) {
    for (const bool wide : {false, true})
        for (const bool colour : {false, true})
            for (const bool mask : {false, true}) {
                Picture picture;
                ASSERT_FALSE(picture.allocate(1, 2, wide));
                picture.colour = colour;
                picture.mask = mask;
                for (size_t i = 0; i < 8; ++i) {
                    if (wide)
                        picture.wideSamples[i] = uint16_t(i + 1);
                    else
                        picture.samples[i] = uint8_t(i + 1);
                }
                completeRow(picture, 1);
                const auto at = [&](size_t i) {
                    return wide ? int(picture.wideSamples[i]) : int(picture.samples[i]);
                };
                for (size_t i = 0; i < 4; ++i) EXPECT_EQ(at(i), int(i + 1));  // another row
                EXPECT_EQ(at(4), 5);
                EXPECT_EQ(at(5), colour ? 6 : 5);
                EXPECT_EQ(at(6), colour ? 7 : 5);
                EXPECT_EQ(at(7), mask ? 8 : wide ? 65535 : 255);
            }
}

TEST(Samples, OfEitherWidthAreWordsAndLight) {
    Picture narrow, wide;
    ASSERT_FALSE(narrow.allocate(1, 1, false));
    ASSERT_FALSE(wide.allocate(1, 1, true));
    narrow.samples[0] = 255;
    narrow.samples[1] = 3;
    wide.wideSamples[0] = 65535;
    wide.wideSamples[1] = 3 * 257;
    for (const Picture* picture : {&narrow, &wide}) {
        EXPECT_EQ(wordSample(*picture, 0, 0), 65535);
        EXPECT_EQ(wordSample(*picture, 0, 1), 771);
        EXPECT_EQ(wordSample(*picture, 0, 2), 0);
        EXPECT_FLOAT_EQ(lightOfSample(*picture, 0, 0), 1);
        EXPECT_FLOAT_EQ(lightOfSample(*picture, 0, 2), 0);
    }
    EXPECT_FLOAT_EQ(lightOfSample(narrow, 0, 1), lightOfSample(wide, 0, 1));
}

}  // namespace
