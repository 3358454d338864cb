// A source after another one begins anew.
#include "viewer/show_source.h"

#include "viewer/viewer_fixture.h"

namespace vistel {

namespace headless = platform::headless;

class ShowSourceTest : public ViewerTest {
 protected:
    void TearDown() override { clearViewerSession(viewerState); }
};

TEST_F(ShowSourceTest, TheFirstFrameHasNotTheSourceMarkOfTheSourceBefore) {
    for (const SourceMark before : {SourceMark::unknown, SourceMark::disk}) {
        viewerState.animation = 1;
        viewerState.firstFrame = viewerState.playFirst = viewerState.currentFrame = 1;
        viewerState.lastFrame = viewerState.playLast = 1;
        viewerState.frameStep = 1;
        viewerState.mark = before;
        std::string first;
        headless::whenPresented([&] {
            if (first.empty()) first = shownText();
        });
        headless::script([] { headless::close(); });
        showSource(viewerState, testFrame(1, 40, 30));
        EXPECT_NE(first.find(" Mem"), std::string::npos) << first;
        windowContext().quit = false;
        viewerState.windowId = -1;
    }
}

}  // namespace vistel
