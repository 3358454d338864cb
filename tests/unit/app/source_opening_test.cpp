// Sources as the walk over the files and the menus open them, with the real opening and a viewer
// that only notes what it is given.
#include "app/source_opening.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "iff/result_codes.h"
#include "sequence/frame_range.h"
#include "sequence/frame_sequence.h"
#include "sequence/image_source.h"
#include "sequence/sequence_fixture.h"
#include "viewer/viewer_state.h"

namespace vistel {
namespace {

// What the viewer was given, and the state at that moment.
struct Shown {
    std::vector<int> reds;
    int32_t loadZ = -1, magnify = -1, currentZoom = -1, animationShown = -1;
    float kmem = -1;
    std::string lastFolder;
    std::string printed;  // to standard error until then
} shown;

int sourcesBegun, imagesForgotten;

int openReally(const Tstring& name, FrameStore& frame) {
    return openImageSource(viewerState, name, {}, false, frame);
}

int discoverReally(const Tstring& name) { return discoverFrames(viewerState, name, viewerState); }

void note(FrameStore&& frame) {
    shown.reds.push_back(redOf(frame));
    shown.loadZ = viewerState.loadZ;
    shown.magnify = viewerState.magnify;
    shown.currentZoom = viewerState.currentZoom;
    shown.animationShown = viewerState.animationShown;
    shown.kmem = viewerState.kmem;
    shown.lastFolder = viewerState.lastFolder;
    shown.printed = testing::internal::GetCapturedStderr();
    testing::internal::CaptureStderr();
}

using Reds = std::vector<int>;

class SourceOpening : public SequenceTest {
 protected:
    void SetUp() override {
        SequenceTest::SetUp();
        viewerState = ViewerState{};
        viewerState.startDirectory = state_.startDirectory;
        viewerState.searchDirs = state_.searchDirs;
        viewerState.currentFrame = viewerState.firstFrame = viewerState.lastFrame = 1;
        viewerState.frameStep = 1;
        shown = Shown{};
        sourcesBegun = imagesForgotten = 0;
        services_.openSource = openReally;
        services_.discover = discoverReally;
        services_.showSource = note;
        services_.sourceBegins = [] { ++sourcesBegun; };
        services_.clearImageState = [] { ++imagesForgotten; };
    }
    void TearDown() override {
        viewerState = ViewerState{};
        SequenceTest::TearDown();
    }
    // What was printed behind the viewer is left in `behind_`.
    int openFile(const Tstring& name) {
        testing::internal::CaptureStderr();
        const int code = openAndShow(name, services_);
        behind_ = testing::internal::GetCapturedStderr();
        return code;
    }
    int reopen(const Tstring& name, const FrameRange& range) {
        testing::internal::CaptureStderr();
        const int code = reopenSource(name, range, services_);
        behind_ = testing::internal::GetCapturedStderr();
        return code;
    }

    StartUpServices services_;
    std::string behind_;
};

// --- opened and shown ----------------------------------------------------------------------------

TEST_F(SourceOpening, APictureIsShownAndItsFolderIsTheLastOne) {
    write("deep/er/a.iff", imageForm(7));
    EXPECT_EQ(openFile("deep/er/a.iff"), 0);
    EXPECT_EQ(shown.reds, Reds{7});
    EXPECT_TRUE(shown.lastFolder.ends_with("er")) << shown.lastFolder;
    EXPECT_EQ(shown.printed + behind_, "");
}

TEST_F(SourceOpening, WithoutAPictureNothingIsShown) {
    write("sound.iff", chunk("FORM", "AIFF"));
    viewerState.lastFolder = "/before";
    for (const char* name : {"none.iff", "deep/none.iff", "sound.iff"}) {
        viewerState.sourceOpened = 0;
        EXPECT_EQ(openFile(name), iffNotIff) << name;
        EXPECT_NE(behind_, "") << name;
    }
    EXPECT_EQ(shown.reds, Reds{});
}

TEST_F(SourceOpening, ASourceThatIsNotThereLeavesTheLastFolder) {
    viewerState.lastFolder = "/before";
    EXPECT_EQ(openFile("none.iff"), iffNotIff);
    EXPECT_EQ(viewerState.lastFolder, "/before");
}

// A picture whose end is missing, behind its whole tile.
TEST_F(SourceOpening, ADamagedPictureIsReportedBeforeItIsShown) {
    std::string bytes = imageForm(7);
    bytes.replace(bytes.find("CIMG") - 4, 4, bigEndian(0x200, 4));
    bytes.replace(bytes.find("TBMP") - 4, 4, bigEndian(0x100, 4));
    write("long.iff", bytes);
    const int code = openFile("long.iff");
    EXPECT_LT(code, 0);
    EXPECT_EQ(shown.reds, Reds{7});
    EXPECT_EQ(shown.printed, "long.iff: " + errorText(code) + "\n");
    EXPECT_EQ(behind_, "");
}

TEST_F(SourceOpening, WithoutServicesEverySourceFails) { EXPECT_LT(openAndShow("a.iff", {}), 0); }

// --- chosen in the window ------------------------------------------------------------------------

TEST_F(SourceOpening, ReopeningASequenceTakesItsRange) {
    for (int i = 4; i <= 8; i += 2) write("shot." + std::to_string(i), imageForm(i));
    viewerState.kmem = 90;
    viewerState.loadZ = 1;
    viewerState.pendingZoom = 0;
    viewerState.pendingShrink = 2;
    viewerState.pendingOpen = "shot.";
    viewerState.windowId = 3;
    EXPECT_EQ(reopen(viewerState.pendingOpen, {}), 0);
    EXPECT_EQ(shown.reds, Reds{4});
    EXPECT_EQ(viewerState.fileName, "shot");
    EXPECT_EQ(viewerState.pendingOpen, "");
    EXPECT_EQ(viewerState.firstFrame, 4);
    EXPECT_EQ(viewerState.lastFrame, 8);
    EXPECT_EQ(viewerState.frameStep, 2);
    EXPECT_EQ(viewerState.playFirst, 4);
    EXPECT_EQ(viewerState.playLast, 8);
    EXPECT_EQ(viewerState.windowId, -1);
    EXPECT_EQ(viewerState.magnify, 1);
    EXPECT_EQ(viewerState.rfact, 2);
    // What the file changed for itself is undone.
    EXPECT_EQ(viewerState.loadZ, 1);
    EXPECT_EQ(viewerState.kmem, 90);
    EXPECT_EQ(viewerState.animationShown, 0);
}

TEST_F(SourceOpening, ReopeningWithAStepOrdersTheRange) {
    write("s0003.iff", imageForm(3));
    viewerState.pendingZoom = 4;
    EXPECT_EQ(reopen("s#.iff", {9, 3, -2}), 0);
    EXPECT_EQ(shown.reds, Reds{3});
    EXPECT_EQ(viewerState.firstFrame, 3);
    EXPECT_EQ(viewerState.lastFrame, 9);
    EXPECT_EQ(viewerState.frameStep, 2);
    EXPECT_EQ(viewerState.currentFrame, 3);
    EXPECT_EQ(shown.loadZ, 0);
    EXPECT_EQ(shown.animationShown, 1);
    EXPECT_EQ(shown.magnify, 4);
    EXPECT_EQ(shown.currentZoom, 4);
}

TEST_F(SourceOpening, ForcedDepthPlanesStay) {
    write("s0003.iff", imageForm(3));
    viewerState.forceZ = 1;
    EXPECT_EQ(reopen("s#.iff", {3, 9, 1}), 0);
    EXPECT_EQ(shown.loadZ, 1);
}

TEST_F(SourceOpening, ReopeningASingleImageForgetsTheAnimation) {
    write("a.iff", imageForm(7));
    takeRange(viewerState, {5, 9, 2});
    viewerState.sourceOpened = 1;
    viewerState.kmem = 0;
    EXPECT_EQ(reopen("a.iff", {}), 0);
    EXPECT_EQ(shown.reds, Reds{7});
    EXPECT_EQ(viewerState.animation, 0);
    EXPECT_EQ(viewerState.firstFrame, 1);
    EXPECT_EQ(viewerState.lastFrame, 1);
    EXPECT_EQ(viewerState.frameStep, 1);
    EXPECT_EQ(viewerState.playLast, 1);
    EXPECT_EQ(shown.kmem, 0.9f);
    EXPECT_EQ(viewerState.kmem, 0);
}

TEST_F(SourceOpening, ReopeningForgetsHowTheImageBeforeWasLookedAt) {
    write("a.iff", imageForm(7));
    write("shot.1", imageForm(8));
    struct Row {
        const char* name;
        int step, sequenceMode, forgotten;
    };
    const Row rows[] = {{"a.iff", 0, 0, 1}, {"shot", 1, 0, 0}, {"a.iff", 0, 1, 0}};
    for (const Row& row : rows) {
        sourcesBegun = imagesForgotten = 0;
        viewerState.sequenceMode = row.sequenceMode;
        viewerState.quitRequested = 1;  // the window was closed
        EXPECT_EQ(reopen(row.name, {1, 1, row.step}), 0);
        EXPECT_EQ(sourcesBegun, 1);
        EXPECT_EQ(imagesForgotten, row.forgotten) << row.name << row.sequenceMode;
        EXPECT_EQ(viewerState.quitRequested, 0);
    }
}

TEST_F(SourceOpening, ReopeningInSequenceModeKeepsTheWindow) {
    write("a.iff", imageForm(7));
    viewerState.sequenceMode = 1;
    viewerState.windowId = 3;
    EXPECT_EQ(reopen("a.iff", {}), 0);
    EXPECT_EQ(viewerState.windowId, 3);
}

TEST_F(SourceOpening, ReopeningClosesTheOneFileOfTheSourceBefore) {
    write("all.iff", imageForm(7) + imageForm(8));
    write("a.iff", imageForm(9));
    viewerState.oneFile = 1;
    EXPECT_EQ(reopen("all.iff", {1, 2, 1}), 0);
    EXPECT_TRUE(viewerState.oneFileStream);
    EXPECT_EQ(reopen("a.iff", {}), 0);
    EXPECT_FALSE(viewerState.oneFileStream);
    EXPECT_EQ(shown.reds, (Reds{7, 9}));
}

TEST_F(SourceOpening, ReopeningAMissingFileReportsItAfresh) {
    viewerState.sourceOpened = 1;
    EXPECT_EQ(reopen("none.iff", {}), iffNotIff);
    EXPECT_TRUE(behind_.starts_with("none.iff: ")) << behind_;
    EXPECT_EQ(shown.reds, Reds{});
}

// The step of a sequence is asked for with a name that ends with a dot, but not of a command.
TEST_F(SourceOpening, ACommandThatEndsWithADotIsNoSequence) {
    services_.discover = [](const Tstring&) { return ++sourcesBegun; };
    services_.openSource = [](const Tstring&, FrameStore&) { return int{iffNotIff}; };
    EXPECT_EQ(reopen("pipe:show .", {}), iffNotIff);
    EXPECT_EQ(viewerState.fileName, "pipe:show .");
    EXPECT_EQ(sourcesBegun, 1);  // by the source itself
}

TEST_F(SourceOpening, ASmallestStepDoesNotOverflow) {
    write("shot.1", imageForm(1));
    EXPECT_EQ(reopen("shot", {1, 5, INT32_MIN}), 0);
    EXPECT_EQ(viewerState.frameStep, INT32_MAX);
}

}  // namespace
}  // namespace vistel
