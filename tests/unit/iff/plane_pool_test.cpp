#include <gtest/gtest.h>

#include "iff/frame_store.h"
#include "iff/plane_pool.h"
#include "platform/memory.h"

namespace vistel {
namespace {

TEST(PlanePool, KeepsOnlyWhatWasUsedCompletely) {
    emptyPlanePool();
    {
        Plane<uint32_t> plane;
        ASSERT_TRUE(plane.allocate(60, 60));
    }
    const PlaneMemory memory = takePlaneMemory(60 * 60 * 4);
    EXPECT_FALSE(memory.touched);
    givePlaneMemory(memory, 60 * 60 * 4);
}

TEST(PlanePool, GivesTheOldestBackBeyondItsLimit) {
    emptyPlanePool();
    constexpr size_t half = planePoolLimit / 2;
    for (const size_t bytes : {size_t{4096}, half, half - 4096, size_t{8192}, planePoolLimit + 1}) {
        const PlaneMemory memory = takePlaneMemory(bytes);
        ASSERT_TRUE(memory.start && platform::commitMemory(memory.start, bytes));
        givePlaneMemory({memory.start, true}, bytes);
    }
    // 4096 and both halves fill it; 8192 pushes out 4096 and then the first half.
    const struct {
        size_t bytes;
        bool kept;
    } rows[] = {{4096, false},
                {half, false},
                {half - 4096, true},
                {8192, true},
                {planePoolLimit + 1, false}};
    for (const auto& row : rows) {
        const PlaneMemory memory = takePlaneMemory(row.bytes);
        EXPECT_EQ(memory.touched, row.kept) << row.bytes;
        givePlaneMemory({memory.start, false}, row.bytes);
    }
}

}  // namespace
}  // namespace vistel
