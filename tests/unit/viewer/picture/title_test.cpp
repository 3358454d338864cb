#include "viewer/picture/title.h"

#include "viewer/viewer_fixture.h"

namespace vistel {

namespace headless = platform::headless;

class TitleTest : public ViewerTest {
 protected:
    static std::string suffix() {
        return windowTitle(viewerState).substr(sizeof("VisTel: shot") - 1);
    }
};

TEST_F(TitleTest, APictureThatTellsAllItselfHasNoSuffix) {
    showImage(planesFrame(1, 64, 48));
    EXPECT_EQ(windowTitle(viewerState), "VisTel: shot");
}

TEST_F(TitleTest, ShrinkAndZoomAreToldWhenTheyAreNotOne) {
    FrameStore frame = testFrame(1, 64, 48);
    frame.shrink = 2;
    showImage(std::move(frame));
    EXPECT_EQ(suffix(), " 1/2");
    key(keyPadDecimal);
    key(keyPadDecimal);
    EXPECT_EQ(suffix(), " 1/2 x3");
    viewerState.shown->shrink = 1;
    EXPECT_EQ(suffix(), " x3");
}

TEST_F(TitleTest, TheViewAndTheCorrectionOfASingleImageAreTold) {
    showImage(planesFrame(1, 64, 48));
    key('R');
    EXPECT_EQ(suffix(), ", Red");
    key('X');
    EXPECT_EQ(suffix(), ", Red, corrected colours");
    key('C');
    EXPECT_EQ(suffix(), ", corrected colours");
    key('X');
    EXPECT_EQ(suffix(), "");
}

TEST_F(TitleTest, AnAnimationTellsItsZoomOnly) {
    showAnimation(1, 3);
    key('R');
    key('X');
    key(keyPadDecimal);
    EXPECT_EQ(suffix(), " x2");
}

TEST_F(TitleTest, OneOfSeveralFilesIsTold) {
    showImage(planesFrame(1, 64, 48));
    viewerState.fileNumber = viewerState.fileCount = 1;
    EXPECT_EQ(suffix(), "");
    viewerState.fileNumber = 2;
    viewerState.fileCount = 3;
    EXPECT_EQ(suffix(), " (file 2 of 3)");
    key(keyPadDecimal);
    key('L');
    EXPECT_EQ(suffix(), " x2, Luminance (file 2 of 3)");
}

TEST_F(TitleTest, TheWindowsTitleFollowsTheKeys) {
    showImage(planesFrame(1, 64, 48));
    std::vector<std::string> seen;
    const int keys[] = {'R', keyPadDecimal, 'C', keyPad0};
    size_t next = 0;
    headless::whenIdle([&] {
        seen.push_back(headless::title());
        if (next == std::size(keys)) return headless::close();
        headless::type(keys[next++]);
    });
    runViewerLoop(viewerState);
    EXPECT_EQ(seen,
              (std::vector<std::string>{"VisTel: shot", "VisTel: shot, Red", "VisTel: shot x2, Red",
                                        "VisTel: shot x2", "VisTel: shot"}));
}

TEST_F(TitleTest, WhilePlayingTheTitleStays) {
    showAnimation(1, 5);
    std::string playing;
    for (int i = 0; i < 50; ++i) headless::script([] {});
    headless::script([] { headless::type(keyPadDecimal); });
    for (int i = 0; i < 50; ++i) headless::script([] {});
    headless::script([&] { playing = headless::title(); });
    headless::script([] { headless::type(keySpace); });
    headless::whenIdle([] {
        EXPECT_EQ(headless::title(), "VisTel: shot x2");
        headless::close();
    });
    runViewerLoop(viewerState);
    EXPECT_EQ(playing, "VisTel: shot");
}

}  // namespace vistel
