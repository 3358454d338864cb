#include "sequence/frame_pattern.h"

#include <gtest/gtest.h>

#include <climits>

namespace vistel {
namespace {

TEST(FramePatternTest, ReadsWhereTheNumberStands) {
    struct Row {
        const char *name, *before, *after;
        int width;
        bool anyWidth;
        int first = INT_MIN, last = INT_MAX;
    };
    const Row rows[] = {
        {"shot.#.png", "shot.", ".png", 4, true},
        {"a#b#.png", "a", ".png", 4, true},
        {"shot.@@@.png", "shot.", ".png", 3, false},
        {"s@.#", "s@.", "", 4, true},
        {"c#/d@e/shot.@@", "c#/d@e/shot.", "", 2, false},
        {"shot.%04d.png", "shot.", ".png", 4, false},
        {"50%.%d", "50%.", "", 0, false},
        {"shot.0001-0100.png", "shot.", ".png", 4, true, 1, 100},
        {"a-b/2-3x.7-5", "a-b/2-3x.", "", 1, true, 5, 7},
        {"1-2", "", "", 1, true, 1, 2},
        {"a1-2-b", "a", "-b", 1, true, 1, 2},
    };
    for (const Row& row : rows) {
        const auto pattern = readFramePattern(row.name);
        ASSERT_TRUE(pattern) << row.name;
        EXPECT_EQ(pattern->parts.before, row.before) << row.name;
        EXPECT_EQ(pattern->parts.after, row.after) << row.name;
        EXPECT_EQ(pattern->width, row.width) << row.name;
        EXPECT_EQ(pattern->anyWidth, row.anyWidth) << row.name;
        EXPECT_EQ(pattern->first, row.first) << row.name;
        EXPECT_EQ(pattern->last, row.last) << row.name;
    }
}

TEST(FramePatternTest, OtherNamesAreNone) {
    for (const char* name : {"", "shot.", "shot.7.png", "c#/shot", "1-2/shot", "50%", "%s", "%4d",
                             "%04", "a%x", "-", "-1", "1-", "a-b", "1-99999999999"})
        EXPECT_FALSE(readFramePattern(name)) << name;
}

TEST(FramePatternTest, AnyWidthCanBeWritten) {
    EXPECT_EQ(writtenPattern({"shot.", ".png"}, 4), "shot.#.png");
    EXPECT_EQ(writtenPattern({"shot.", ""}, 3), "shot.@@@");
    EXPECT_EQ(writtenPattern({"c#/shot.", ""}, 0), "c#/shot.@");
    EXPECT_EQ(writtenPattern({"a#.", ""}, 4), "");
    EXPECT_EQ(writtenPattern({"a.", "@"}, 4), "");
}

}  // namespace
}  // namespace vistel
