#include "viewer/picture/picture_view.h"

#include <algorithm>
#include <limits>

#include "viewer/viewer_fixture.h"

namespace vistel {

class PictureViewTest : public ViewerTest {};

TEST_F(PictureViewTest, ThePlainPictureIsTheStoredOneItself) {
    showImage(planesFrame(1, 8, 6));
    EXPECT_EQ(displayedPixels(viewerState), viewerState.shown->colour.data());
    key('X');
    EXPECT_NE(displayedPixels(viewerState), viewerState.shown->colour.data());
    key('X');
    EXPECT_EQ(displayedPixels(viewerState), viewerState.shown->colour.data());
}

TEST_F(PictureViewTest, AViewIsBuiltOnceUntilSomethingChanges) {
    showImage(planesFrame(1, 8, 6));
    key('R');
    const uint32_t* view = displayedPixels(viewerState);
    const uint32_t before = view[0];
    viewerState.shown->colour.data()[0] ^= 0xFF;
    EXPECT_EQ(displayedPixels(viewerState), view);
    EXPECT_EQ(view[0], before);
    viewChanged(viewerState);
    EXPECT_EQ(displayedPixels(viewerState), view);  // the same buffer
    EXPECT_NE(view[0], before);
}

TEST_F(PictureViewTest, TheBuffersGrowWithTheFrames) {
    showAnimation(1, 3, 1, 16, 16);
    keepFrame(viewerState, 2, testFrame(2, 128, 100));
    key('G');
    key('X');
    for (const int number : {1, 2, 3, 2, 1}) {
        viewerState.currentFrame = number;
        showFrame(viewerState, FrameSource::kept);
        expectPicture([](int, int row) { return (255 - uint32_t(row)) * 0x010101u; });
    }
}

TEST_F(PictureViewTest, FramesShowWhatTheyHave) {
    struct Row {
        const char* name;
        uint32_t flags;
        ChannelMode mode;
    };
    const Row rows[] = {
        {"colour", imageColour, ChannelMode::all},
        {"grey", 0, ChannelMode::all},
        {"colour and all else", imageColour | imageMask | imageZ, ChannelMode::all},
        {"mask only", imageBlack | imageMask, ChannelMode::matte},
        {"mask and depth", imageBlack | imageMask | imageZ, ChannelMode::matte},
        {"depth only", imageBlack | imageZ, ChannelMode::zBuffer},
    };
    for (const Row& row : rows) {
        showImage(planesFrame(1, 8, 6, row.flags));
        EXPECT_EQ(viewerState.mode, row.mode) << row.name;
    }
}

TEST_F(PictureViewTest, DepthsThatAreNoNumbersAreBlackAndEqualOnesWhite) {
    FrameStore frame = planesFrame(1, 4, 1);
    const float rows[] = {5, 5, std::numeric_limits<float>::infinity(),
                          std::numeric_limits<float>::quiet_NaN()};
    std::copy(std::begin(rows), std::end(rows), frame.z.data());
    showImage(std::move(frame));
    for (const unsigned held : {none, shift}) {
        key('Z', held);
        expectPicture([](int column, int) { return column < 2 ? 0xFFFFFFu : 0u; });
    }
}

TEST_F(PictureViewTest, TheDepthsGreyGoesThroughTheTablesOfTheColours) {
    FrameStore frame = planesFrame(1, 256, 1);
    for (int i = 0; i < 256; ++i) frame.z.data()[i] = float(255 - i);  // grey i
    showImage(std::move(frame));
    key('Z');
    expectPicture([](int column, int) { return uint32_t(column) * 0x010101u; });
    key(keyF1);  // red
    key('X');
    expectPicture(
        [](int column, int) { return uint32_t(column) * 0x010100u | uint32_t(255 - column); });
    key(characterKey('\\'), shift);  // the offset of red
    for (const char* const view : {"C", "Z"}) key(view[0]);
    expectPicture([](int column, int) {
        return uint32_t(column) * 0x010100u | lutEntry(viewerState.lut.controls, 2, column);
    });
    // A relief of it has the heights that are stored.
    key('N');
    displayedPixels(viewerState);
    for (int column = 0; column < 256; ++column)
        ASSERT_EQ(viewerState.views.heights[column] & 0xFFFFFF, uint32_t(column) * 0x010101u);
}

TEST_F(PictureViewTest, AnUnknownDepthScaleIsNotTakenFromAFrameWithoutDepth) {
    showImage(planesFrame(1, 400, 200, imageColour));
    EXPECT_FALSE(key('Z', shift));
    EXPECT_EQ(viewerState.chosen, ChannelMode::all);
}

TEST_F(PictureViewTest, ReleasingTheBuffersForgetsTheView) {
    showImage(planesFrame(1, 8, 6));
    key('R');
    displayedPixels(viewerState);
    viewerState.views = {};
    expectPicture([](int x, int y) { return (stored(x, y) & 255) * 0x010101u; });
}

}  // namespace vistel
