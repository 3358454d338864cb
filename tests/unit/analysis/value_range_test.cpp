#include "analysis/value_range.h"

#include <gtest/gtest.h>

namespace vistel {
namespace {

struct Row {
    std::vector<uint32_t> pixels;
    std::array<int, 3> smallest, largest;
};

TEST(ValueRange, IsThatOfMaskBlueAndGreen) {
    const Row rows[] = {
        {{}, {255, 255, 255}, {0, 0, 0}},
        {{0x10203040}, {16, 32, 48}, {0, 32, 48}},
        {{0x10203040, 0x08FF0001, 0xFF01FE00}, {8, 1, 0}, {16, 255, 254}},
    };
    for (const Row& row : rows) {
        const ValueRange range = valueRange(row.pixels.data(), row.pixels.size());
        EXPECT_EQ(range.smallest, row.smallest);
        EXPECT_EQ(range.largest, row.largest);
    }
}

// Red is the lowest byte, the mask the highest.
TEST(ValueRange, TheLargestMaskIsTestedAgainstTheRedOfTheNextPixel) {
    const Row rows[] = {
        {{0xFF000000, 0x00000000}, {0, 0, 0}, {0, 0, 0}},              // no red: not found
        {{0x05000000, 0x00000032}, {0, 0, 0}, {5, 0, 0}},              // 50 > 0: takes 5
        {{0x64000000, 0x05000001, 0x000000C8}, {0, 0, 0}, {5, 0, 0}},  // and a smaller one later
        {{0x64000000, 0x05000001, 0x00000064}, {0, 0, 0}, {100, 0, 0}},
        {{0x000000FF, 0xFF0000FF}, {0, 0, 0}, {0, 0, 0}},  // nothing follows the last one
    };
    for (const Row& row : rows)
        EXPECT_EQ(valueRange(row.pixels.data(), row.pixels.size()).largest, row.largest);
}

}  // namespace
}  // namespace vistel
