#include "audio/extended_float.h"

#include <cmath>
#include <limits>

namespace vistel {
namespace {

using Ten = std::array<uint8_t, 10>;

TEST(ExtendedFloat, ReadsRatesAndOddNumbers) {
    struct Row {
        Ten bytes;
        double value;
    };
    const Row rows[] = {
        {{0x40, 0x0E, 0xAC, 0x44}, 44100},
        {{0x40, 0x0E, 0xBB, 0x80}, 48000},
        {{0x40, 0x0B, 0xFA, 0x00}, 8000},
        {{0x3F, 0xFF, 0x80}, 1},
        {{0xBF, 0xFF, 0x80}, -1},
        {{0x40, 0x0E, 0xAC, 0x44, 0x80}, 44100.5},
        {{0x40, 0x3E, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}, 18446744073709551615.0},
        {{0x40, 0x1E, 0x80, 0, 0, 0, 0x80}, 2147483648.5},  // the low word counts
        {{0x7F, 0xFF, 0x80}, HUGE_VAL},
        {{0xFF, 0xFF, 0x00}, -HUGE_VAL},
        {{0x7F, 0xFE, 0x80}, HUGE_VAL},  // more than a double holds
        {{0, 1, 0x80}, 0},               // less
        {{}, 0},
    };
    for (const Row& row : rows) EXPECT_EQ(doubleFromExtended(row.bytes.data()), row.value);
    EXPECT_TRUE(std::signbit(doubleFromExtended(Ten{0x80}.data())));
}

TEST(ExtendedFloat, WritesWhatItReads) {
    EXPECT_EQ(extendedFromDouble(44100), (Ten{0x40, 0x0E, 0xAC, 0x44}));
    EXPECT_EQ(extendedFromDouble(-1), (Ten{0xBF, 0xFF, 0x80}));
    EXPECT_EQ(extendedFromDouble(std::nan("")), (Ten{0x7F, 0xFF}));
    for (const double value : {0.0, 1.0, 44100.0, 22254.545454545454, 0.1, 1e300, 5e-324, -96000.0,
                               std::numeric_limits<double>::max(), HUGE_VAL, -HUGE_VAL})
        EXPECT_EQ(doubleFromExtended(extendedFromDouble(value).data()), value);
}

}  // namespace
}  // namespace vistel
