#include "viewer/playback/frame_display.h"

#include "iff/result_codes.h"
#include "viewer/frame_folder.h"
#include "viewer/playback/load_animation.h"
#include "viewer/viewer_fixture.h"

namespace vistel {

namespace headless = platform::headless;

namespace {

// A frame of 4 x 8 pixels in two tiles, of which a cut file has the first.
std::string tallForm(int red) {
    const std::string header = bigEndian(4, 4) + bigEndian(8, 4) + bigEndian(1, 2) +
                               bigEndian(1, 2) + bigEndian(1, 4) + bigEndian(0, 2) +
                               bigEndian(2, 2) + bigEndian(0, 4);
    std::string tiles;
    for (const int row : {0, 4}) {
        std::string tile =
            bigEndian(0, 2) + bigEndian(row, 2) + bigEndian(3, 2) + bigEndian(row + 3, 2);
        for (int i = 0; i < 16; ++i) tile += std::string("\0\0", 2) + char(red);
        tiles += chunk("RGBA", tile);
    }
    return chunk("FOR4", "CIMG" + chunk("TBHD", header) + chunk("FOR4", "TBMP" + tiles));
}

void writeFile(const std::string& name, const std::string& bytes) {
    std::ofstream(name, std::ios::binary) << bytes;
}

int redAt(int row) { return int(viewerState.shown->colour.row(size_t(row))[0] & 0xFF); }

}  // namespace

class FrameDisplayTest : public ViewerTest {
 protected:
    // Frames 1 to 3, all in memory, of which the second is cut; frame 1 is on display.
    void showCutAnimation() {
        FrameFolder::animation("shot", 1, 3);
        writeFile("shot.2", cut(20));
        FrameStore first;
        ASSERT_EQ(readCurrent(first), iffOk);
        beginDisplay(viewerState, keepFrame(viewerState, 1, std::move(first)));
        loadRemainingFrames(viewerState);
    }
    static std::string cut(int red) {
        const std::string whole = tallForm(red);
        return whole.substr(0, whole.size() - 10);
    }
    static void show(int frame) {
        viewerState.currentFrame = frame;
        showFrame(viewerState);
    }

    const FrameFolder folder_;
};

TEST_F(FrameDisplayTest, AFrameThatWasHalfWrittenIsReadAgainWhenItsFileHasChanged) {
    testing::internal::CaptureStderr();
    showCutAnimation();
    const std::string told = testing::internal::GetCapturedStderr();
    EXPECT_EQ(told, "shot.2: frame 2 could not be read: " + errorText(iffPartialIo) + "\n");
    testing::internal::CaptureStderr();
    show(2);
    EXPECT_EQ(redAt(0), 20);
    EXPECT_EQ(redAt(7), 0);
    writeFile("shot.2", cut(21));
    show(1);
    show(2);
    EXPECT_EQ(redAt(0), 21);
    EXPECT_EQ(redAt(7), 0);
    writeFile("shot.2", tallForm(22));
    show(3);
    show(2);
    EXPECT_EQ(redAt(0), 22);
    EXPECT_EQ(redAt(7), 22);
    writeFile("shot.2", tallForm(23));  // it is whole: it is read once
    show(1);
    show(2);
    EXPECT_EQ(redAt(0), 22);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(FrameDisplayTest, AFrameThatWasHalfWrittenStaysWhenItsFileHasGone) {
    testing::internal::CaptureStderr();
    showCutAnimation();
    testing::internal::GetCapturedStderr();
    fs::remove("shot.2");
    show(2);
    EXPECT_EQ(redAt(0), 20);
    writeFile("shot.2", "no frame");
    show(1);
    show(2);
    EXPECT_EQ(viewerState.shown, viewerState.slots.find(2));
    EXPECT_EQ(redAt(0), 20);
}

TEST_F(FrameDisplayTest, ABadFrameIsToldOnceForEachReason) {
    FrameFolder::animation("shot", 1, 2);
    writeFile("shot.2", cut(20));
    showAnimation(1, 2);
    viewerState.slots.clear();
    viewerState.kmem = 0;  // each frame is read whenever it is shown
    testing::internal::CaptureStderr();
    for (const int frame : {2, 1, 2, 1, 2}) show(frame);
    showFrame(viewerState, FrameSource::file);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "shot.2: frame 2 could not be read: " + errorText(iffPartialIo) + "\n");
    std::string tiles = tallForm(20);
    tiles[tiles.find("RGBA") + 9] = 100;  // a tile outside the picture
    writeFile("shot.2", tiles);
    testing::internal::CaptureStderr();
    for (const int frame : {1, 2, 1, 2}) show(frame);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "shot.2: frame 2 could not be read: " + errorText(iffBadTiling) + "\n");
}

// Nobody wants the frame any more when the window was closed, or Ctrl+C has ended its converter.
TEST_F(FrameDisplayTest, WhatFailsWhenTheProgramEndsIsNotTold) {
    FrameFolder::animation("shot", 1, 3);
    for (const char* const bytes : {"no frame", ""}) {
        writeFile("shot.2", *bytes ? std::string(bytes) : cut(20));
        showAnimation(1, 3);
        bool reading = false;
        viewerState.goOn = [&] { return !std::exchange(reading, true); };
        testing::internal::CaptureStderr();
        loadRemainingFrames(viewerState);
        EXPECT_TRUE(reading);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    }
}

}  // namespace vistel
