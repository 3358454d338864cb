#include "platform/memory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

using namespace vistel::platform;

namespace {

constexpr size_t megabyte = size_t{1} << 20;

struct Reservation {
    explicit Reservation(size_t count) : bytes(count) {
        start = static_cast<unsigned char*>(reserveMemory(bytes));
    }
    ~Reservation() { releaseMemory(start, bytes); }
    size_t bytes;
    unsigned char* start;
};

}  // namespace

TEST(Memory, MoreThanTheMachineHasCanBeReserved) {
    const Reservation memory(std::max(2 * physicalMemory(), 4096 * megabyte));
    ASSERT_TRUE(memory.start);
    unsigned char* const last = memory.start + memory.bytes - megabyte;
    ASSERT_TRUE(commitMemory(last, megabyte));
    last[megabyte - 1] = 7;
    EXPECT_EQ(last[megabyte - 1], 7);
}

TEST(Memory, CommittedMemoryIsZeroAndUsable) {
    const Reservation memory(16 * megabyte);
    ASSERT_TRUE(memory.start);
    unsigned char* const part = memory.start + 3 * megabyte;
    ASSERT_TRUE(commitMemory(part, megabyte));
    EXPECT_EQ(std::count(part, part + megabyte, 0), std::ptrdiff_t{megabyte});
    std::memset(part, 0xA5, megabyte);
    EXPECT_EQ(std::count(part, part + megabyte, 0xA5), std::ptrdiff_t{megabyte});
}

TEST(Memory, CommittingTwiceKeepsTheContents) {
    const Reservation memory(16 * megabyte);
    ASSERT_TRUE(memory.start);
    ASSERT_TRUE(commitMemory(memory.start, megabyte));
    std::memset(memory.start, 0x5A, megabyte);
    ASSERT_TRUE(commitMemory(memory.start, 2 * megabyte));
    EXPECT_EQ(std::count(memory.start, memory.start + megabyte, 0x5A), std::ptrdiff_t{megabyte});
    EXPECT_EQ(std::count(memory.start + megabyte, memory.start + 2 * megabyte, 0),
              std::ptrdiff_t{megabyte});
}

TEST(Memory, PartsOfAPageCanBeCommitted) {
    const Reservation memory(megabyte);
    ASSERT_TRUE(memory.start);
    ASSERT_TRUE(commitMemory(memory.start + 100, 5000));
    memory.start[100] = 1;
    memory.start[5099] = 2;
    EXPECT_EQ(memory.start[100] + memory.start[5099], 3);
    EXPECT_TRUE(commitMemory(memory.start, 0));
}

TEST(Memory, ABlockGrowsByAtMostASixtyFourthForTheSystemsSake) {
    for (const size_t bytes : {size_t{1}, size_t{5000}, 1920 * 1080 * size_t{4}, 127 * megabyte}) {
        EXPECT_GE(efficientSize(bytes), bytes);
        EXPECT_LE(efficientSize(bytes), bytes + bytes / 64);
    }
    EXPECT_EQ(efficientSize(~size_t{0}), ~size_t{0});
}

TEST(Memory, AnAbsurdSizeIsRefused) { EXPECT_EQ(reserveMemory(~size_t{0} / 2), nullptr); }

TEST(Memory, ReleasingNothingIsHarmless) { releaseMemory(nullptr, 0); }

TEST(Memory, TheMachineHasSome) { EXPECT_GT(physicalMemory(), 64 * megabyte); }
