#include "stb_memory.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

using namespace vistel;

namespace {

TEST(StbMemory, NoMoreIsTakenThanTheCeilingAllows) {
    StbMemory memory(1000);
    void* first = stbAllocate(600);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(stbAllocate(401), nullptr);
    EXPECT_TRUE(memory.refused());
    stbFree(first);
    EXPECT_NE(stbAllocate(1000), nullptr);
    EXPECT_EQ(stbAllocate(SIZE_MAX), nullptr);
}

TEST(StbMemory, ABlockKeepsItsContentWhenItGrows) {
    StbMemory memory(1000);
    auto* block = static_cast<char*>(stbReallocate(nullptr, 5));
    std::memcpy(block, "abcd", 5);
    stbAllocate(10);
    block = static_cast<char*>(stbReallocate(block, 200));
    EXPECT_STREQ(block, "abcd");
    EXPECT_EQ(stbReallocate(block, 2000), nullptr);
    EXPECT_STREQ(block, "abcd");
}

TEST(StbMemory, ABlockOfItsOwnOutlivesNothing) {
    void* plain = stbAllocate(10);
    ASSERT_NE(plain, nullptr);
    {
        StbMemory memory(100);
        EXPECT_NE(stbAllocate(100), nullptr);  // freed with the memory
        stbFree(plain);
    }
    stbFree(nullptr);
}

}  // namespace
