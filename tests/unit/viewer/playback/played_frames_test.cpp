// While frames are played from memory nothing is allocated, no file is touched and nothing is read
// back from the driver.
#include <optional>

#include "platform/clock.h"
#include "platform/files.h"
#include "viewer/counted_calls.h"
#include "viewer/picture/picture_view.h"
#include "viewer/viewer_fixture.h"

namespace vistel {

namespace headless = platform::headless;

namespace {

struct Counts {
    size_t allocations = test::allocations();
    size_t fileAccesses = test::fileAccesses();
    int readBacks = headless::readBacks();
};

}  // namespace

class PlayedFramesTest : public ViewerTest {
 protected:
    static constexpr int frames = 10;

    void SetUp() override {
        ViewerTest::SetUp();
        showAnimation(1, frames, 1, 100, 60);
        for (int number = 1; number <= frames; ++number)
            keepFrame(viewerState, number, planesFrame(number, 100, 60));
        viewerState.currentFrame = 1;
        beginDisplay(viewerState, *viewerState.slots.find(1));
        viewerState.fileName = "no such file";
        viewerState.frameRate = 300;
        headless::setMicroseconds(5'000'000);
    }

    // Plays with the keys pressed first; counts what is asked for while 200 frames are shown, after
    // a first round.
    void expectNothingAskedFor(const char* name, const std::function<void()>& pressKeys) {
        constexpr int warmUp = 2 * frames + 5, counted = 200;
        int first = 0;
        std::optional<Counts> before, after;
        int shownFrames = 0, views = 0;
        const uint32_t* pixels = nullptr;
        const auto look = [&] {
            const int shown = headless::presents() - first;
            if (shown < warmUp) return;
            if (!before) {
                pixels = displayedPixels(viewerState);
                before.emplace();
            }
            if (shown < warmUp + counted || after) return;
            after.emplace();
            shownFrames = shown - warmUp;
            views = pixels == displayedPixels(viewerState);
        };
        first = headless::presents();
        pressKeys();
        constexpr int pumps = 1500;
        for (int i = 0; i < pumps; ++i) headless::script([&] { look(); });
        headless::script([] {
            EXPECT_TRUE(playing(viewerState));
            EXPECT_EQ(viewerState.readStarted, 0u);  // no frame was read from its file
            EXPECT_EQ(viewerState.mark, SourceMark::memory);
            EXPECT_NE(shownText(viewerState.mode == ChannelMode::all ? 0 : 1).find(" Mem"),
                      std::string::npos);
            postEvent(EV_QUIT, 1);
        });
        runViewerLoop(viewerState);
        ASSERT_TRUE(after) << name;
        EXPECT_GE(shownFrames, counted) << name;
        EXPECT_EQ(after->allocations, before->allocations) << name;
        EXPECT_EQ(after->fileAccesses, before->fileAccesses) << name;
        EXPECT_EQ(after->readBacks, before->readBacks) << name;
        if (views == 0 && displayIsBuilt_) ADD_FAILURE() << name << ": another display buffer";
    }
    bool displayIsBuilt_ = true;  // not the stored pixels themselves
};

TEST_F(PlayedFramesTest, TheCountersCount) {
    const Counts before;
    ::operator delete(::operator new(5));
    ::operator delete[](::operator new[](5, std::nothrow));
    EXPECT_EQ(test::allocations() - before.allocations, 2u);
    EXPECT_FALSE(platform::fileExists("no such file"));
    EXPECT_FALSE(platform::isRegularFile("no such file"));
    EXPECT_EQ(platform::openFile("no such file", "r"), nullptr);
    EXPECT_TRUE(platform::listFolder("", "no such folder").empty());
    EXPECT_EQ(test::fileAccesses() - before.fileAccesses, 4u);
    windowContext().drawPass = [] { drawPass(viewerState); };
    saveFrontImage();
    EXPECT_EQ(headless::readBacks() - before.readBacks, 1);
}

// The counters see the viewer's own calls: a reload looks for the file and shows a band.
TEST_F(PlayedFramesTest, AReloadIsCounted) {
    windowContext().drawPass = [] { drawPass(viewerState); };
    const Counts before;
    showFrame(viewerState, FrameSource::file);
    EXPECT_GT(test::fileAccesses(), before.fileAccesses);
    EXPECT_GT(test::allocations(), before.allocations);
    EXPECT_GT(headless::readBacks(), before.readBacks);
}

TEST_F(PlayedFramesTest, ThePictureAllocatesNothing) {
    displayIsBuilt_ = false;
    expectNothingAskedFor("picture", [] {});
}

TEST_F(PlayedFramesTest, APlaneAndItsLabelAllocateNothing) {
    expectNothingAskedFor("red", [] { key('R'); });
}

TEST_F(PlayedFramesTest, TheLuminanceThroughTheLookUpTableAllocatesNothing) {
    expectNothingAskedFor("luminance", [] {
        key('L');
        key(characterKey(']'), shift);
        key(keyF1);
    });
}

TEST_F(PlayedFramesTest, TheNegativePictureAllocatesNothing) {
    expectNothingAskedFor("negative", [] { key('X'); });
}

TEST_F(PlayedFramesTest, TheDepthAllocatesNothing) {
    expectNothingAskedFor("depth", [] { key('Z'); });
}

TEST_F(PlayedFramesTest, TheDepthWithoutItsOutliersAllocatesNothing) {
    expectNothingAskedFor("depth, percentiles", [] { key('Z', shift); });
}

TEST_F(PlayedFramesTest, AReliefWithProfilesAllocatesNothing) {
    expectNothingAskedFor("relief", [] {
        key('R');
        key('N', shift);
        key(keyPadMultiply, alt);
    });
}

TEST_F(PlayedFramesTest, PingPongSkippingAndANarrowedRangeAllocateNothing) {
    expectNothingAskedFor("ping-pong", [] {
        key('R');
        key('S');
        viewerState.frameSkip = 1;
        viewerState.playFirst = 2;
        viewerState.playLast = 8;
    });
}

}  // namespace vistel
