#include "viewer/playback/save_frames.h"

#include "viewer/frame_folder.h"
#include "viewer/viewer_fixture.h"

namespace vistel {
namespace {

class SaveFramesTest : public ViewerTest {
 protected:
    void SetUp() override {
        ViewerTest::SetUp();
        folder_ = std::make_unique<FrameFolder>();
    }
    void TearDown() override {
        releaseFrames(viewerState);
        folder_.reset();
    }
    // What the saving printed.
    static std::vector<std::string> printed(void (*save)(Player&)) {
        testing::internal::CaptureStderr();
        save(viewerState);
        std::istringstream text(testing::internal::GetCapturedStderr());
        std::vector<std::string> lines;
        for (std::string line; std::getline(text, line);) lines.push_back(line);
        return lines;
    }
    static std::vector<std::string> written() {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator("."))
            names.push_back(entry.path().filename().string());
        std::ranges::sort(names);
        return names;
    }
    using Lines = std::vector<std::string>;

 private:
    std::unique_ptr<FrameFolder> folder_;
};

TEST_F(SaveFramesTest, OneFrameIsToldOfOnTheConsoleAndInABand) {
    showImage(testFrame(1, 300, 200));
    EXPECT_EQ(printed(saveShownFrame), (Lines{"Writing vistel.out.1 ...", "done"}));
    EXPECT_EQ(written(), (Lines{"vistel.out.1"}));
    EXPECT_EQ(shownText(platform::headless::visibleTexts().size() - 1), "Written: vistel.out.1");
    EXPECT_TRUE(viewerState.bandShown);
    EXPECT_FALSE(viewerState.loading.progress);
}

TEST_F(SaveFramesTest, WhatCannotBeWrittenIsToldInTheSameWay) {
    showImage(testFrame(1, 300, 200));
    fs::create_directory("vistel.out.1");
    const Lines lines = printed(saveShownFrame);
    ASSERT_EQ(lines.size(), 1u);  // as the system tells it
    EXPECT_TRUE(lines[0].starts_with("vistel.out.1: ")) << lines[0];
    EXPECT_TRUE(shownText(platform::headless::visibleTexts().size() - 1)
                    .starts_with("vistel.out.1: not written: "));
}

TEST_F(SaveFramesTest, WhatASourceLosesByBeingOverwrittenIsTold) {
    FrameFolder::write("one", 5);
    viewerState.openedName = "one";
    for (const bool depth : {false, true}) {
        showImage(planesFrame(1, 300, 200, imageColour | (depth ? uint32_t{imageZ} : 0u)));
        viewerState.overwriteMode = 1;
        const Lines lines = printed(saveShownFrame);
        ASSERT_EQ(lines.size(), depth ? 3u : 2u);
        EXPECT_EQ(lines.back().find("depth") != std::string::npos, depth) << lines.back();
        viewerState.overwriteMode = 0;
        EXPECT_EQ(printed(saveShownFrame).size(), 2u);  // nothing is lost
    }
}

TEST_F(SaveFramesTest, ARangeIsPlayedOnceAndStops) {
    showAnimation(1, 10, 3);
    viewerState.playFirst = 4;
    viewerState.paused = 1;
    viewerState.pingPong = 1;
    EXPECT_EQ(printed(saveRange).back(), "3 of 3 frames written");
    EXPECT_EQ(written(), (Lines{"vistel.out.10", "vistel.out.4", "vistel.out.7"}));
    EXPECT_EQ(viewerState.playMode, PlayMode::stopped);
    EXPECT_EQ(viewerState.currentFrame, 10);
    EXPECT_EQ(viewerState.paused, 0);
}

TEST_F(SaveFramesTest, EscapeEndsARangeWithTheFrameThatIsBeingWritten) {
    showAnimation(1, 10);
    postEvent(keyEscape, 1);
    EXPECT_EQ(printed(saveRange).back(), "1 of 10 frames written");
    EXPECT_EQ(written(), (Lines{"vistel.out.1"}));
    EXPECT_EQ(viewerState.currentFrame, 1);
    EXPECT_EQ(viewerState.playMode, PlayMode::stopped);
    EXPECT_TRUE(windowContext().queue.empty());
}

TEST_F(SaveFramesTest, OtherKeysWaitUntilARangeIsWritten) {
    showAnimation(1, 3);
    postEvent('G', 1);
    EXPECT_EQ(printed(saveRange).back(), "3 of 3 frames written");
    EXPECT_FALSE(windowContext().queue.empty());
}

TEST_F(SaveFramesTest, ARangeEndsWherePlaceIsTheReason) {
    showAnimation(1, 5);
    fs::create_directory("vistel.out.2");
    EXPECT_EQ(printed(saveRange).back(), "1 of 5 frames written; not written: 2");
    EXPECT_EQ(written(), (Lines{"vistel.out.1", "vistel.out.2"}));
}

TEST_F(SaveFramesTest, WKeysChooseAndTurnFrameSkippingOff) {
    showAnimation(1, 3);
    viewerState.frameSkip = 1;
    testing::internal::CaptureStderr();
    EXPECT_FALSE(key('W'));
    EXPECT_EQ(written().size(), 1u);
    EXPECT_EQ(viewerState.frameSkip, 0);
    viewerState.saveAll = 1;  // Save Animation was chosen
    EXPECT_FALSE(key('W'));
    EXPECT_EQ(written().size(), 3u);
    EXPECT_EQ(viewerState.saveAll, 0);
    viewerState.currentFrame = 1;
    EXPECT_FALSE(key('W', shift));
    EXPECT_EQ(viewerState.currentFrame, 3);
    testing::internal::GetCapturedStderr();
}

}  // namespace
}  // namespace vistel
