#include "analysis/display_buffer.h"

#include <gtest/gtest.h>

#include <limits>

namespace vistel {

TEST(DisplayBuffer, NewPixelsAreZeroAndOldOnesStay) {
    DisplayBuffer buffer;
    EXPECT_EQ(buffer.pixels(), nullptr);
    ASSERT_TRUE(buffer.grow(2));
    EXPECT_EQ(buffer.pixels()[0], 0u);
    buffer.pixels()[0] = 7;
    buffer.pixels()[1] = 8;
    ASSERT_TRUE(buffer.grow(100000));
    EXPECT_EQ(buffer.pixels()[0], 7u);
    EXPECT_EQ(buffer.pixels()[1], 8u);
    for (size_t i = 2; i < 100000; ++i) ASSERT_EQ(buffer.pixels()[i], 0u);
}

TEST(DisplayBuffer, NothingMovesWhileItIsLargeEnough) {
    DisplayBuffer buffer;
    ASSERT_TRUE(buffer.grow(1000));
    const uint32_t* place = buffer.pixels();
    for (const size_t pixels : {1000, 999, 1, 0}) {
        ASSERT_TRUE(buffer.grow(pixels));
        EXPECT_EQ(buffer.pixels(), place);
        EXPECT_EQ(buffer.capacity(), 1000u);
    }
}

TEST(DisplayBuffer, WithoutMemoryItStaysAsItWas) {
    DisplayBuffer buffer;
    ASSERT_TRUE(buffer.grow(10));
    buffer.pixels()[9] = 5;
    constexpr size_t most = std::numeric_limits<size_t>::max();
    for (const size_t pixels : {most, most / 4, most / 8, most / 8 + 1, most / 16}) {
        EXPECT_FALSE(buffer.grow(pixels)) << pixels;
        EXPECT_EQ(buffer.capacity(), 10u);
        EXPECT_EQ(buffer.pixels()[9], 5u);
    }
}

}  // namespace vistel
