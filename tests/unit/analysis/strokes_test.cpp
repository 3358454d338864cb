#include "analysis/strokes.h"

#include <gtest/gtest.h>

namespace vistel {
namespace {

FrameStore blank(int width, int height, bool depth) {
    FrameStore frame;
    frame.width = width;
    frame.height = height;
    EXPECT_TRUE(frame.colour.allocate(width, height) && frame.colour.complete());
    EXPECT_TRUE(!depth || (frame.z.allocate(width, height) && frame.z.complete()));
    return frame;
}

// "#" for each painted pixel, the bottom row first.
std::string painted(const FrameStore& frame) {
    std::string text;
    for (int y = 0; y < frame.height; ++y) {
        for (int x = 0; x < frame.width; ++x) text += frame.colour.row(y)[x] ? '#' : '.';
        text += '\n';
    }
    return text;
}

TEST(Strokes, AreLinesWithBothTheirEnds) {
    FrameStore frame = blank(5, 3, false);
    paintStroke({0, 0, 4, 2, 0xFF, 0xFF, {}}, frame, 1);
    EXPECT_EQ(painted(frame), "##...\n..##.\n....#\n");
}

TEST(Strokes, ChangeTheirBitsOnlyAndTheDepthWhereTheyHaveOne) {
    FrameStore frame = blank(2, 1, true);
    frame.colour.row(0)[0] = 0x11223344;
    paintStroke({0, 0, 0, 0, 0xFF00, 0x5500, 7.5f}, frame, 1);
    EXPECT_EQ(frame.colour.row(0)[0], 0x11225544u);
    EXPECT_EQ(frame.z.row(0)[0], 7.5f);
    EXPECT_EQ(frame.z.row(0)[1], 0.0f);
    paintStroke({0, 0, 1, 0, 0, 0, {}}, frame, 1);
    EXPECT_EQ(frame.z.row(0)[0], 7.5f);
}

TEST(Strokes, AreBlocksInALargerFrameAndEndAtItsEdge) {
    FrameStore frame = blank(7, 5, false);
    paintStroke({1, 1, 2, 1, 0xFF, 0xFF, {}}, frame, 2);
    EXPECT_EQ(painted(frame), ".......\n.......\n..####.\n..####.\n.......\n");
    paintStroke({3, 2, 3, 2, 0xFF, 0xFF, {}}, frame, 2);
    EXPECT_EQ(painted(frame), ".......\n.......\n..####.\n..####.\n......#\n");
}

}  // namespace
}  // namespace vistel
