#include "viewer/playback/luminance_reading.h"

#include "iff/result_codes.h"
#include "viewer/frame_folder.h"
#include "viewer/viewer_fixture.h"

namespace vistel {

namespace headless = platform::headless;

// Frames of 4 x 4 pixels whose red is ten times their number: 28 x red of 65280.
class LuminanceReadingTest : public ViewerTest {
 protected:
    FrameFolder folder_;

    // Frames first to last are in files, those up to `kept` in memory; the first one is shown.
    void show(int first, int last, int kept) {
        FrameFolder::animation("shot", first, last);
        for (int number = first; number <= kept; ++number) {
            FrameStore frame;
            viewerState.currentFrame = number;
            ASSERT_EQ(readCurrent(frame), iffOk);
            keepFrame(viewerState, number, std::move(frame));
        }
        viewerState.currentFrame = first;
        ASSERT_EQ(showCurrentFrame(viewerState, FrameSource::kept), FrameShown::yes);
    }
    static void expectFrames(const std::optional<std::vector<float>>& values,
                             const std::vector<int>& frames) {
        ASSERT_TRUE(values);
        ASSERT_EQ(values->size(), frames.size());
        for (size_t i = 0; i < frames.size(); ++i)
            EXPECT_NEAR((*values)[i], 28 * 10 * frames[i] / 65280.0, 1e-6) << i;
    }
};

TEST_F(LuminanceReadingTest, FramesThatAreNotInMemoryAreReadFromTheirFilesAndNotKept) {
    show(1, 8, 3);
    expectFrames(readLuminance(viewerState, {1, 1}), {1, 2, 3, 4, 5, 6, 7, 8});
    EXPECT_EQ(viewerState.slots.count(), 3u);
    EXPECT_EQ(viewerState.currentFrame, 1);
    EXPECT_EQ(headless::title(), "VisTel: shot");
    EXPECT_FALSE(viewerState.loading.progress);
}

TEST_F(LuminanceReadingTest, FramesInMemoryAskNoFile) {
    show(1, 4, 4);
    for (const char* name : {"shot.1", "shot.2", "shot.3", "shot.4"}) fs::remove(name);
    const size_t titles = headless::titles().size();
    expectFrames(readLuminance(viewerState, {1, 1}), {1, 2, 3, 4});
    EXPECT_EQ(headless::titles().size(), titles);
}

TEST_F(LuminanceReadingTest, WithoutKeptFramesTheShownOneCounts) {
    viewerState.kmem = 0;
    show(1, 3, 0);
    fs::remove("shot.1");
    expectFrames(readLuminance(viewerState, {1, 1}), {1, 2, 3});
}

TEST_F(LuminanceReadingTest, FramesThatCannotBeReadCountAsZero) {
    show(1, 5, 2);
    fs::remove("shot.3");
    std::ofstream("shot.4", std::ios::binary) << imageForm(40).substr(0, 60);
    testing::internal::CaptureStderr();
    expectFrames(readLuminance(viewerState, {1, 1}), {1, 2, 0, 0, 5});
    EXPECT_NE(testing::internal::GetCapturedStderr().find("shot.4"), std::string::npos);
}

TEST_F(LuminanceReadingTest, TheStepSaysWhichFramesAreRead) {
    show(1, 6, 1);
    viewerState.frameStep = 3;
    expectFrames(readLuminance(viewerState, {1, 1}), {1, 0, 0, 4, 0, 0});
}

TEST_F(LuminanceReadingTest, EscapeEndsIt) {
    show(1, 8, 3);
    headless::script([] { headless::press(keyEscape); });
    EXPECT_FALSE(readLuminance(viewerState, {1, 1}));
    EXPECT_FALSE(viewerState.loading.progress);
    EXPECT_FALSE(viewerState.loading.stopped);
    EXPECT_EQ(headless::title(), "VisTel: shot");
}

}  // namespace vistel
