#include "sequence/frame_range.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace vistel {
namespace {

TEST(Range, ThatIsTakenIsAnAnimationAtItsStart) {
    FramePosition position;
    takeRange(position, {9, 3, -2});
    EXPECT_EQ(position.animation, 1);
    EXPECT_EQ(position.firstFrame, 9);
    EXPECT_EQ(position.lastFrame, 3);
    EXPECT_EQ(position.frameStep, -2);
    EXPECT_EQ(position.currentFrame, 9);
    EXPECT_EQ(position.playFirst, 9);
    EXPECT_EQ(position.playLast, 3);
    EXPECT_EQ(position.animationShown, 0);
}

TEST(Range, IsPutInOrderAtItsFirstFrame) {
    const struct {
        FrameRange range;
        int first, last, step;
    } rows[] = {{{3, 9, 2}, 3, 9, 2},
                {{9, 3, -2}, 3, 9, 2},
                {{9, 3, 2}, 3, 9, 2},
                {{5, 5, 0}, 5, 5, 1},
                {{-4, -9, 1}, -9, -4, 1},
                {{1, 5, INT32_MIN}, 1, 5, INT32_MAX},
                {{INT32_MAX, INT32_MIN, INT32_MAX}, INT32_MIN, INT32_MAX, INT32_MAX}};
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.range.start << " " << row.range.step);
        FramePosition position;
        takeRange(position, row.range);
        position.currentFrame = row.range.end;
        orderRange(position);
        EXPECT_EQ(position.firstFrame, row.first);
        EXPECT_EQ(position.lastFrame, row.last);
        EXPECT_EQ(position.frameStep, row.step);
        EXPECT_EQ(position.currentFrame, row.first);
        EXPECT_EQ(position.playFirst, row.first);
        EXPECT_EQ(position.playLast, row.last);
        EXPECT_EQ(position.animationShown, 1);
    }
}

TEST(Range, OfNoAnimationIsFrameOne) {
    FramePosition position;
    takeRange(position, {5, 9, 2});
    position.padWidth = 4;
    forgetAnimation(position);
    EXPECT_EQ(position.animation, 0);
    for (const int32_t field : {position.firstFrame, position.lastFrame, position.frameStep,
                                position.currentFrame, position.playFirst, position.playLast})
        EXPECT_EQ(field, 1);
    EXPECT_EQ(position.padWidth, 4);
}

}  // namespace
}  // namespace vistel
