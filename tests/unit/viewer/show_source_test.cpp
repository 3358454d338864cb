// A source after another one begins anew.
#include "viewer/show_source.h"

#include "settings/own_settings.h"
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

class RefusedWindowTest : public OwnSettings {};

TEST_F(RefusedWindowTest, TheFrameRateIsStoredBeforeTheProgramEnds) {
    viewerState = ViewerState{};
    installViewer(viewerState);
    viewerState.frameRate = 31;
    viewerState.filterIndex = 4;
    windowContext().calls.refused();
    SavedSettings stored;
    readSettings(stored);
    EXPECT_EQ(stored.savedFrameRate, 31);
    EXPECT_EQ(stored.filterIndex, 4);
}

}  // namespace vistel
