#include "turned.h"

#include "codec_files.h"

using namespace vistel;

namespace {

// Three columns and two rows: pixel n (1 to 6) holds n, n + 10, n + 20, n + 30 in its channels.
Picture numbered(bool wide) {
    Picture picture;
    if (picture.allocate(3, 2, wide)) ADD_FAILURE();
    picture.mask = true;
    for (int i = 0; i < 24; ++i) {
        const int value = i / 4 + 1 + i % 4 * 10;
        if (wide)
            picture.wideSamples[size_t(i)] = uint16_t(value);
        else
            picture.samples[size_t(i)] = uint8_t(value);
    }
    return picture;
}

std::vector<int> firstChannel(const Picture& picture) {
    std::vector<int> values;
    for (size_t i = 0; i < 24; i += 4)
        values.push_back(picture.wide ? picture.wideSamples[i] : picture.samples[i]);
    return values;
}

TEST(Turned, EveryOrientationPutsTheFirstRowAndColumnWhereTheyBelong) {
    const struct {
        int orientation;
        uint32_t width;
        std::vector<int> upright;
    } rows[] = {
        {1, 3, {1, 2, 3, 4, 5, 6}}, {2, 3, {3, 2, 1, 6, 5, 4}}, {3, 3, {6, 5, 4, 3, 2, 1}},
        {4, 3, {4, 5, 6, 1, 2, 3}}, {5, 2, {1, 4, 2, 5, 3, 6}}, {6, 2, {4, 1, 5, 2, 6, 3}},
        {7, 2, {6, 3, 5, 2, 4, 1}}, {8, 2, {3, 6, 2, 5, 1, 4}},
    };
    for (const auto& row : rows)
        for (const bool wide : {false, true}) {
            Picture picture = numbered(wide);
            ASSERT_FALSE(turnUpright(picture, row.orientation));
            EXPECT_EQ(picture.width, row.width) << row.orientation;
            EXPECT_EQ(picture.height, 6 / row.width) << row.orientation;
            EXPECT_EQ(firstChannel(picture), row.upright) << row.orientation;
            EXPECT_EQ(picture.wide, wide);
            EXPECT_TRUE(picture.mask);
        }
}

TEST(Turned, ThePixelsChannelsStayTogether) {
    Picture picture = numbered(false);
    ASSERT_FALSE(turnUpright(picture, 6));
    for (size_t i = 0; i < 24; ++i)
        EXPECT_EQ(picture.samples[i], picture.samples[i / 4 * 4] + i % 4 * 10);
}

TEST(Turned, AnOrientationThatThereIsNotLeavesThePicture) {
    for (const int orientation : {-1, 0, 9, 1000}) {
        Picture picture = numbered(false);
        ASSERT_FALSE(turnUpright(picture, orientation));
        EXPECT_EQ(firstChannel(picture), firstChannel(numbered(false)));
    }
}

}  // namespace
