// A source after another one begins anew.
#include "viewer/viewer_hooks.h"

#include "iff/result_codes.h"
#include "sequence/frame_loader.h"
#include "viewer_fixture.h"

namespace vistel {

namespace headless = platform::headless;

class ViewerHooksTest : public ViewerTest {
 protected:
    void SetUp() override {
        ViewerTest::SetUp();
        installViewer();
    }
    void TearDown() override {
        clearViewerSession();
        loaderHooks = LoaderHooks{};
    }
};

TEST_F(ViewerHooksTest, TheFirstFrameHasNotTheSourceMarkOfTheSourceBefore) {
    for (const SourceMark before : {SourceMark::unknown, SourceMark::disk}) {
        viewerState.animation = 1;
        viewerState.firstFrame = viewerState.playFirst = viewerState.currentFrame = 1;
        viewerState.lastFrame = viewerState.playLast = 1;
        viewerState.frameStep = 1;
        viewerSession().mark = before;
        std::string first;
        headless::whenPresented([&] {
            if (first.empty()) first = shownText();
        });
        headless::script([] { headless::close(); });
        FrameStore frame = testFrame(1, 40, 30);
        EXPECT_EQ(loaderHooks.frameLoaded(frame), iffParsingComplete);
        EXPECT_NE(first.find(" Mem"), std::string::npos) << first;
        windowContext().quit = false;
        viewerState.windowId = -1;
    }
}

TEST_F(ViewerHooksTest, a_window_that_was_closed_ends_its_own_source_only) {
    showImage(testFrame(1, 40, 30));
    EXPECT_TRUE(loaderHooks.hasWindow());
    headless::close();
    pumpEvents();
    EXPECT_TRUE(windowContext().quit);
    EXPECT_FALSE(loaderHooks.hasWindow());

    loaderHooks.sourceBegins();
    pumpEvents();
    EXPECT_FALSE(windowContext().quit);
    EXPECT_TRUE(loaderHooks.keepGoing());
}

}  // namespace vistel
