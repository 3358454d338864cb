#include "viewer/playback/load_animation.h"

#include <cerrno>
#include <cstring>

#include "host/messages.h"
#include "viewer/frame_folder.h"
#include "viewer/viewer_fixture.h"

namespace vistel {

class LoadAnimationTest : public ViewerTest {
 protected:
    // What is told while the frames behind the first one are loaded.
    std::string load(int last, int step) {
        viewerState.animation = 1;
        viewerState.fileName = viewerState.openedName = "s";
        viewerState.firstFrame = viewerState.playFirst = viewerState.currentFrame = 1;
        viewerState.lastFrame = viewerState.playLast = last;
        viewerState.frameStep = step;
        testing::internal::CaptureStderr();
        loadRemainingFrames(viewerState);
        return testing::internal::GetCapturedStderr();
    }
    static std::string leftOut(int first, int last) {
        return formatMessage(Message::rVTFramesMissing,
                             {first, last, "s." + std::to_string(last), std::strerror(ENOENT)}) +
               "\n";
    }
    FrameFolder folder_;
};

TEST_F(LoadAnimationTest, AHugeGapIsPassedByTheListing) {
    for (const int number : {1, 500'000'001, 500'000'002, 1'999'999'999})
        FrameFolder::write("s." + std::to_string(number), 7);
    EXPECT_EQ(load(2'000'000'000, 1),
              leftOut(2, 500'000'000) + leftOut(500'000'003, 1'999'999'998) +
                  formatMessage(Message::rVTFrameMissing,
                                {2'000'000'000, "s.2000000000", std::strerror(ENOENT)}) +
                  "\n");
    EXPECT_TRUE(viewerState.slots.find(500'000'001));
    EXPECT_TRUE(viewerState.slots.find(500'000'002));
    EXPECT_TRUE(viewerState.slots.find(1'999'999'999));
}

TEST_F(LoadAnimationTest, AGapKeepsTheStepsOfTheRange) {
    for (const int number : {1, 50'000, 50'002})
        FrameFolder::write("s." + std::to_string(number), 7);
    EXPECT_EQ(load(100'000, 3), leftOut(4, 49'999) + leftOut(50'005, 100'000));
    EXPECT_FALSE(viewerState.slots.find(50'000));
    EXPECT_TRUE(viewerState.slots.find(50'002));
}

TEST_F(LoadAnimationTest, FilesThatDoNotFitArePassedToo) {
    for (int number = 900; number < 1300; ++number)  // listed in the gap, from its thousandth on
        FrameFolder::write("s.0" + std::to_string(number), 7);
    EXPECT_EQ(load(2'000'000'000, 1), leftOut(2, 2'000'000'000));
}

}  // namespace vistel
