#include "analysis/tracking.h"

#include <gtest/gtest.h>

namespace vistel {
namespace {

Tracking trackingOf(int64_t room, std::initializer_list<std::pair<const int64_t, Pick>> picks) {
    Tracking tracking;
    tracking.room = room;
    tracking.picks = picks;
    return tracking;
}

TEST(Tracking, KeepsTheLastPickOfEachFrame) {
    Tracking tracking = trackingOf(3, {});
    EXPECT_TRUE(tracking.keep(2, {1, 2}));
    EXPECT_TRUE(tracking.keep(2, {3, 4}));
    EXPECT_EQ(tracking.picks.size(), 1u);
    EXPECT_EQ(tracking.find(2)->x, 3);
    EXPECT_EQ(tracking.find(2)->y, 4);
    EXPECT_EQ(tracking.find(1), nullptr);
}

TEST(Tracking, KeepsNothingBeyondItsRoom) {
    Tracking tracking = trackingOf(3, {});
    for (const int64_t place : {int64_t{-1}, int64_t{3}, int64_t{1} << 40, -(int64_t{1} << 40)})
        EXPECT_FALSE(tracking.keep(place, {1, 2})) << place;
    EXPECT_TRUE(tracking.picks.empty());
    tracking.room.reset();
    EXPECT_FALSE(tracking.keep(0, {1, 2}));
}

TEST(TrackedFrames, AreCountedByTheStep) {
    struct Row {
        int32_t first, last, step, current;
        int64_t frames, picked;
        std::optional<int32_t> missing;
    };
    const Tracking tracking = trackingOf(100, {{0, {}}, {1, {}}, {2, {}}, {4, {}}, {50, {}}});
    const Row rows[] = {
        {1, 10, 1, 1, 10, 4, 4},
        {1, 10, 1, 4, 10, 4, 4},
        {1, 10, 1, 5, 10, 4, 6},
        {1, 6, 1, 5, 6, 4, 6},
        {1, 5, 1, 5, 5, 4, 4},  // round and round
        {1, 3, 1, 2, 3, 3, {}},
        {1, 5, 2, 1, 3, 3, {}},
        {-4, 5, 3, 5, 4, 1, 5},
        {1, 10, 2, 6, 5, 3, 7},  // between two steps
        {1, 10, 1, 99, 10, 4, 10},
        {1, 10, 1, -99, 10, 4, 4},
        {5, 1, 1, 3, 0, 0, {}},
        {INT32_MIN, INT32_MAX, 1, INT32_MIN, int64_t{1} << 32, 5, INT32_MIN + 3},
    };
    for (const Row& row : rows) {
        const TrackedFrames tracked =
            trackedFrames(tracking, row.first, row.last, row.step, row.current);
        SCOPED_TRACE(testing::Message() << row.first << " to " << row.last << ", " << row.current);
        EXPECT_EQ(tracked.frames, row.frames);
        EXPECT_EQ(tracked.picked, row.picked);
        EXPECT_EQ(tracked.missing, row.missing);
    }
}

std::string lines(const Tracking& tracking, int32_t first, int32_t last, int shrink = 1) {
    return trackingLines(trackedPoints(tracking, first, last, shrink));
}

TEST(TrackedPoints, AreALineEachInTheOrderOfTheirFrames) {
    Tracking tracking = trackingOf(9, {{5, {0.25f, 0.125f}}, {0, {12, 7.5f}}, {2, {-1, -0.004f}}});
    EXPECT_EQ(lines(tracking, 10, 18), "10 12.00 7.50\n12 -1.00 -0.00\n15 0.25 0.12\n");
    EXPECT_EQ(lines(tracking, -3, 5), "-3 12.00 7.50\n-1 -1.00 -0.00\n2 0.25 0.12\n");
    tracking.origin = {100, -20};
    EXPECT_EQ(lines(tracking, 10, 18), "10 112.00 -12.50\n12 99.00 -20.00\n15 100.25 -19.88\n");
}

TEST(TrackedPoints, OfAShorterSequenceAreThoseOfItsFrames) {
    const Tracking tracking = trackingOf(9, {{0, {1, 1}}, {2, {2, 2}}, {5, {3, 3}}});
    EXPECT_EQ(lines(tracking, 1, 3), "1 1.00 1.00\n3 2.00 2.00\n");
    EXPECT_EQ(lines(tracking, INT32_MAX - 2, INT32_MAX),
              "2147483645 1.00 1.00\n2147483647 2.00 2.00\n");
    EXPECT_EQ(lines(tracking, 3, 1), "");
}

TEST(TrackedPoints, AreInPixelsOfThePictureThatIsShown) {
    const Tracking tracking = trackingOf(9, {{0, {10, 20, 2}}, {1, {10, 20, 1}}});
    EXPECT_EQ(lines(tracking, 1, 9, 2), "1 10.00 20.00\n2 5.00 10.00\n");
    EXPECT_EQ(lines(tracking, 1, 9, 1), "1 20.00 40.00\n2 10.00 20.00\n");
}

TEST(PanCurves, HaveFiveValuesToALine) {
    std::vector<TrackedPoint> points;
    EXPECT_EQ(panCurves("PanX = Linear(", points), "PanX = Linear();\nPanY = Linear();\n");
    for (int i = 1; i <= 11; ++i) points.push_back({i, float(i) / 2, float(-i)});
    EXPECT_EQ(panCurves("Bewegung(", points),
              "Bewegung(0.50@1, 1.00@2, 1.50@3, 2.00@4, 2.50@5, \n"
              "              3.00@6, 3.50@7, 4.00@8, 4.50@9, 5.00@10, \n"
              "              5.50@11);\n"
              "PanY = Linear(-1.00@1, -2.00@2, -3.00@3, -4.00@4, -5.00@5, \n"
              "              -6.00@6, -7.00@7, -8.00@8, -9.00@9, -10.00@10, \n"
              "              -11.00@11);\n");
    points.resize(5);
    EXPECT_EQ(panCurves("PanX = Linear(", points),
              "PanX = Linear(0.50@1, 1.00@2, 1.50@3, 2.00@4, 2.50@5);\n"
              "PanY = Linear(-1.00@1, -2.00@2, -3.00@3, -4.00@4, -5.00@5);\n");
}

TEST(PixelLuminance, WeighsTheBytesOfTheStoredPixel) {
    FrameStore frame;
    frame.width = 3;
    frame.height = 2;
    ASSERT_TRUE(frame.colour.allocate(3, 2) && frame.colour.complete());
    const uint32_t pixels[] = {0xFFFFFFFF, 0x00FF0000, 0x0000FF00,
                               0x000000FF, 0xFF000000, 0x102030};
    std::copy(std::begin(pixels), std::end(pixels), frame.colour.data());
    const int expected[] = {10000, 3008, 5898, 1094, 0, 1135};  // ten thousandths
    for (int i = 0; i < 6; ++i)
        EXPECT_NEAR(pixelLuminance(frame, float(i % 3) + 0.9f, float(i / 3)) * 10000, expected[i],
                    0.5);
    EXPECT_NEAR(pixelLuminance(frame, -0.9f, -0.9f), 1, 1e-6);  // truncated
    for (const auto& [x, y] : {std::pair{-1, 0}, {3, 0}, {0, -1}, {0, 2}, {30000, 30000}})
        EXPECT_EQ(pixelLuminance(frame, float(x), float(y)), 0);
    EXPECT_EQ(pixelLuminance({}, 0, 0), 0);
}

TEST(LuminanceCurve, EndsALineAfterEachMultipleOfSix) {
    const std::vector<float> values{0, 0.25f, 1, 0.33333f, 0.5f, 0.00004f, 0.00006f, 1};
    EXPECT_EQ(luminanceCurve({12.75f, 7.5f}, {}, 5, values),
              "Lum12_7 = Linear(\n    0.0000@5, 0.2500@6,\n    1.0000@7, 0.3333@8, 0.5000@9, "
              "0.0000@10, 0.0001@11, 1.0000@12)\n");
    EXPECT_EQ(luminanceCurve({0, 0}, {}, -7, std::span(values).first(3)),
              "Lum0_0 = Linear(\n    0.0000@-7, 0.2500@-6,\n    1.0000@-5)\n");
    EXPECT_EQ(luminanceCurve({0, 0}, {}, 6, std::span(values).first(1)),
              "Lum0_0 = Linear(\n    0.0000@6)\n");
    EXPECT_EQ(luminanceCurve({1, 2}, {}, 6, {}), "Lum1_2 = Linear(\n    ");
}

// The column is truncated with the origin, the row without it.
TEST(LuminanceCurve, IsNamedAfterItsPixel) {
    EXPECT_EQ(luminanceCurve({-0.5f, -0.5f}, {10, 20}, 1, {}), "Lum9_20 = Linear(\n    ");
}

}  // namespace
}  // namespace vistel
