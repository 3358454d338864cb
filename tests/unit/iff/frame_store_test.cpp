// Planes and display size.

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "iff/frame_store.h"
#include "iff/plane_pool.h"

namespace vistel {
namespace {

TEST(Plane, IsZeroFilledAndRowsFollowEachOther) {
    Plane<uint32_t> plane;
    ASSERT_TRUE(plane.allocate(7, 5));
    ASSERT_TRUE(plane.complete());
    EXPECT_TRUE(std::all_of(plane.data(), plane.data() + 35, [](uint32_t p) { return p == 0; }));
    EXPECT_EQ(plane.row(3), plane.data() + 21);
}

TEST(Plane, KeepsWhatWasWrittenWhenMoreRowsBecomeUsable) {
    Plane<uint32_t> plane;
    ASSERT_TRUE(plane.allocate(1000, 3000));
    ASSERT_TRUE(plane.commitRows(1500, 1500));
    std::fill_n(plane.row(1500), 1000, 0x12345678u);
    plane.markWritten(0, 1500, 1000, 1);
    ASSERT_TRUE(plane.commitRows(0, 10));
    plane.row(10)[999] = 1;
    plane.markWritten(999, 10, 1, 1);
    ASSERT_TRUE(plane.commitRows(1499, 1501));
    ASSERT_TRUE(plane.complete());
    EXPECT_EQ(plane.row(1500)[999], 0x12345678u);
    EXPECT_EQ(plane.row(10)[999], 1u);
    EXPECT_EQ(plane.row(2999)[999], 0u);
}

TEST(Plane, APromiseOfPixelsCostsNothingUntilRowsAreUsed) {
    Plane<float> plane;
    ASSERT_TRUE(plane.allocate(60000, 60000));  // 14 GB of address space
    ASSERT_TRUE(plane.commitRows(59999, 59999));
    plane.row(59999)[59999] = 1.5f;
    EXPECT_EQ(plane.row(59999)[59999], 1.5f);
}

TEST(Plane, KeepsBlocksUsableThatLieFarApart) {
    Plane<float> plane;
    ASSERT_TRUE(plane.allocate(60000, 60000));
    const size_t rows[] = {59999, 0, 30000, 59999, 0};
    for (size_t y : rows) {
        ASSERT_TRUE(plane.commitRows(y, y));
        plane.row(y)[y / 2] += 1.5f;
    }
    EXPECT_EQ(plane.row(59999)[29999], 3.0f);
    EXPECT_EQ(plane.row(0)[0], 3.0f);
    EXPECT_EQ(plane.row(30000)[15000], 1.5f);
}

TEST(Plane, RefusesSizesThatDoNotFitMemory) {
    Plane<uint32_t> plane;
    EXPECT_FALSE(plane.allocate(SIZE_MAX, SIZE_MAX));
    EXPECT_FALSE(plane.allocate(UINT32_MAX, UINT32_MAX));
    EXPECT_FALSE(plane.allocate(0, 5));
    EXPECT_TRUE(plane.empty());
    EXPECT_FALSE(plane.complete());
    EXPECT_FALSE(plane.commitRows(0, 0));
}

TEST(Plane, RefusesRowsOutsideIt) {
    Plane<float> plane;
    ASSERT_TRUE(plane.allocate(4, 4));
    EXPECT_FALSE(plane.commitRows(0, 4));
    EXPECT_FALSE(plane.commitRows(3, 2));
    EXPECT_TRUE(plane.commitRows(3, 3));
}

TEST(Plane, MovesWithItsPixels) {
    Plane<uint32_t> from;
    ASSERT_TRUE(from.allocate(2, 2));
    ASSERT_TRUE(from.complete());
    from.row(1)[1] = 9;
    Plane<uint32_t> to = std::move(from);
    EXPECT_TRUE(from.empty());
    EXPECT_EQ(to.row(1)[1], 9u);
}

// --- memory that is used again -------------------------------------------------------------------

// Leaves the memory of a plane of this size, full of old pixels, to the next one.
void leaveOldPixels(size_t width, size_t height) {
    Plane<uint32_t> old;
    ASSERT_TRUE(old.allocate(width, height) && old.complete());
    std::fill_n(old.data(), width * height, 0xDEADBEEFu);
}

TEST(Plane, OfTheSizeOfAFreedOneTakesItsMemory) {
    emptyPlanePool();
    Plane<uint32_t> plane;
    ASSERT_TRUE(plane.allocate(50, 40));
    EXPECT_FALSE(plane.touched());
    leaveOldPixels(50, 40);
    Plane<uint32_t> other;
    ASSERT_TRUE(other.allocate(51, 40));
    EXPECT_FALSE(other.touched());
    ASSERT_TRUE(plane.allocate(50, 40));
    EXPECT_TRUE(plane.touched());
}

TEST(Plane, NeverShowsOldPixels) {
    leaveOldPixels(50, 40);
    Plane<uint32_t> plane;
    ASSERT_TRUE(plane.allocate(50, 40));
    ASSERT_TRUE(plane.commitRows(3, 3));
    plane.row(3)[7] = 1;
    plane.markWritten(7, 3, 1, 1);
    ASSERT_TRUE(plane.complete());
    EXPECT_EQ(plane.row(3)[7], 1u);
    plane.row(3)[7] = 0;
    EXPECT_EQ(std::count(plane.data(), plane.data() + 2000, 0u), 2000);
}

TEST(Plane, KeepsWhatWasWrittenInAnyOrderAndIsZeroElsewhere) {
    const unsigned seed = std::random_device{}();
    std::mt19937 random(seed);
    constexpr size_t width = 37, height = 23;
    for (int round = 0; round < 300; ++round) {
        leaveOldPixels(width, height);
        Plane<uint32_t> plane;
        ASSERT_TRUE(plane.allocate(width, height));
        ASSERT_TRUE(plane.touched());
        std::vector<uint32_t> expected(width * height);
        for (uint32_t mark = 1; mark <= random() % 8; ++mark) {
            const size_t x = random() % width, y = random() % height;
            const size_t columns = random() % (width - x + 1), rows = random() % (height - y + 1);
            if (rows > 0) {
                ASSERT_TRUE(plane.commitRows(y, y + rows - 1));
            }
            for (size_t row = y; row < y + rows; ++row) {
                std::fill_n(plane.row(row) + x, columns, mark);
                std::fill_n(expected.begin() + row * width + x, columns, mark);
            }
            plane.markWritten(x, y, columns, rows);
        }
        ASSERT_TRUE(plane.complete());
        ASSERT_TRUE(std::equal(expected.begin(), expected.end(), plane.data())) << "seed " << seed;
    }
}

TEST(FrameStore, ClearingForgetsPlanesAndGeometry) {
    FrameStore frame;
    ASSERT_TRUE(frame.colour.allocate(2, 2));
    frame.width = frame.height = 2;
    frame.header.width = 2;
    frame.tiles.push_back({});
    frame.clear();
    EXPECT_FALSE(frame.hasPicture());
    EXPECT_EQ(frame.width, 0);
    EXPECT_EQ(frame.header.width, 0u);
    EXPECT_TRUE(frame.tiles.empty());
}

TEST(DisplaySize, IsTheImageDividedByTheShrinkFactor) {
    const struct {
        uint32_t width, height;
        DisplayFit fit;
        uint32_t shrink, displayWidth, displayHeight;
    } rows[] = {
        {640, 480, {}, 1, 640, 480},
        {640, 480, {3, 1, UINT32_MAX, UINT32_MAX}, 3, 213, 160},
        {640, 480, {0, 1, UINT32_MAX, UINT32_MAX}, 1, 640, 480},  // raised to 1
        {640, 480, {1, 0, UINT32_MAX, UINT32_MAX}, 1, 640, 480},
        {2, 2, {5, 1, UINT32_MAX, UINT32_MAX}, 5, 1, 1},  // at least 1
        {1280, 1024, {1, 1, 1280, 995}, 2, 640, 512},     // 29 rows too high
        {1280, 995, {1, 1, 1280, 995}, 1, 1280, 995},
        {1281, 995, {1, 1, 1280, 995}, 2, 640, 497},
        {640, 480, {1, 2, 1280, 995}, 1, 640, 480},
        {640, 498, {1, 2, 1280, 995}, 2, 320, 249},
        {640, 480, {1, 4, 1280, 995}, 2, 320, 240},
        {100, 100, {1, 1, 0, 0}, 101, 1, 1},  // nothing fits a screen without size
        {UINT32_MAX, 1, {1, 1, 1000, 1000}, 4290677, 1000, 1},
        {UINT32_MAX, UINT32_MAX, {1, 1, 0, 0}, UINT32_MAX, 1, 1},
    };
    for (const auto& row : rows) {
        const DisplaySize size = displaySize(row.width, row.height, row.fit);
        SCOPED_TRACE(testing::Message() << row.width << "x" << row.height << " fit "
                                        << row.fit.shrink << " " << row.fit.magnify);
        EXPECT_EQ(size.shrink, row.shrink);
        EXPECT_EQ(size.width, row.displayWidth);
        EXPECT_EQ(size.height, row.displayHeight);
    }
}

TEST(DisplaySize, IsWhatSteppingByOneFinds) {
    const unsigned seed = std::random_device{}();
    std::mt19937 random(seed);
    for (int round = 0; round < 5000; ++round) {
        const uint32_t width = random() % 5000 + 1, height = random() % 5000 + 1;
        const DisplayFit fit{
            static_cast<uint32_t>(random() % 4), static_cast<uint32_t>(random() % 5),
            static_cast<uint32_t>(random() % 3000), static_cast<uint32_t>(random() % 3000)};
        uint32_t shrink = std::max<uint32_t>(fit.shrink, 1);
        const uint32_t magnify = std::max<uint32_t>(fit.magnify, 1);
        while (width / shrink * magnify > fit.maxWidth || height / shrink * magnify > fit.maxHeight)
            ++shrink;
        ASSERT_EQ(displaySize(width, height, fit).shrink, shrink) << "seed " << seed;
    }
}

}  // namespace
}  // namespace vistel
