#include "iff/with_memory.h"

#include <gtest/gtest.h>

namespace vistel {
namespace {

TEST(WithMemory, TheStepsOwnResultPasses) {
    for (const int code : {int{iffOk}, int{iffBadTiling}, 7})
        EXPECT_EQ(withMemory([&] { return code; }), code);
}

TEST(WithMemory, AnAllocationThatFailsIsNoMemory) {
    EXPECT_EQ(withMemory([]() -> int { throw std::bad_alloc(); }), iffNoMemory);
}

TEST(WithMemory, NothingElseIsHidden) {
    EXPECT_THROW(static_cast<void>(withMemory([]() -> int { throw 5; })), int);
}

}  // namespace
}  // namespace vistel
