#include "viewer/commands/report_commands.h"

#include <string>

#include "viewer/viewer_fixture.h"

namespace vistel {

class ReportCommandsTest : public ViewerTest {
 protected:
    static std::string report() {
        testing::internal::CaptureStderr();
        EXPECT_FALSE(key('P'));
        return testing::internal::GetCapturedStderr();
    }
};

TEST_F(ReportCommandsTest, PTellsTheControlsFromRedToBlue) {
    showImage(testFrame(1, 40, 30));
    const std::string expected =
        "\nDisplay controls: red, green, blue\n"
        "Luminance:   1, 1, 1\n"
        "Gamma:       1, 1, 1\n"
        "Saturation:  1, 1, 1\n"
        "Offset:      0, 0, 0\n"
        "Relief slope: 0.1\n"
        "Relief colour: 0 %\n"
        "Negative:    off, off, off\n"
        "Exposure curve: off\n"
        "Logarithmic film data: off\n";
    EXPECT_EQ(report(), expected);
    showAnimation(1, 3);
    viewerState.frameRate = 30;
    EXPECT_EQ(report(), expected + "Frames per second: 30\n");
}

TEST_F(ReportCommandsTest, EachControlHasItsPlace) {
    showImage(testFrame(1, 40, 30));
    LutControls& controls = viewerState.lut.controls;
    controls.gain = {0.1f, 0.2f, 0.3f};
    controls.gamma = {1.1f, 1.2f, 1.3f};
    controls.saturation = {2.1f, 2.2f, 2.3f};
    controls.offset = {-1, 20, 3.7f};
    controls.negate = {true, false, false};
    viewerState.reliefDepth = 0.25f;
    viewerState.reliefAmount = 100;
    controls.cineonLog = true;
    EXPECT_EQ(report(),
              "\nDisplay controls: red, green, blue\n"
              "Luminance:   0.3, 0.2, 0.1\n"
              "Gamma:       1.3, 1.2, 1.1\n"
              "Saturation:  2.3, 2.2, 2.1\n"
              "Offset:      3, 20, -1\n"
              "Relief slope: -0.25\n"
              "Relief colour: 39.0625 %\n"
              "Negative:    off, off, on\n"
              "Exposure curve: off\n"
              "Logarithmic film data: on\n");
    toggleExposureCurve(controls);
    EXPECT_NE(report().find("Exposure curve: on\nLogarithmic film data: off\n"), std::string::npos);
}

TEST_F(ReportCommandsTest, WhilePlayingPTellsTheValuesOnDisplay) {
    showAnimation(7, 9);
    viewerState.playMode = PlayMode::forward;
    // Red is the column, green the row, blue the frame, the mask is full.
    EXPECT_EQ(report(), "Mask, blue, green: smallest 255, 7, 0, largest 255, 7, 47\n");
    viewerState.paused = 1;
    EXPECT_NE(report().find("Display controls"), std::string::npos);
    viewerState.paused = 0;
    toggleNegation(viewerState.lut.controls, {});
    displayLutChanged(viewerState);
    EXPECT_EQ(report(), "Mask, blue, green: smallest 255, 248, 208, largest 255, 248, 255\n");
}

}  // namespace vistel
