#include "sequence/image_source.h"

#include <cerrno>
#include <cstring>
#include <utility>
#include <vector>

#include "host/messages.h"
#include "iff/result_codes.h"
#include "sequence/frame_loader.h"
#include "sequence/frame_sequence.h"
#include "sequence_fixture.h"

namespace vistel {
namespace {

int redOf(FrameStore& frame) {
    return frame.colour.empty() ? -1 : static_cast<int>(frame.colour.data()[0] & 0xFF);
}

// What the viewer would have got.
struct Viewer {
    std::vector<int> reds;                     // of the frames handed over
    std::vector<int> numbers;                  // currentFrame at each
    std::vector<int> reread;                   // numbers to read again at the first hand-over
    std::vector<std::pair<int, int>> results;  // code and red value of each
    int answer = iffParsingComplete;
} viewer;

int frameLoaded(FrameStore& frame) {
    viewer.reds.push_back(redOf(frame));
    viewer.numbers.push_back(viewerState.currentFrame);
    for (const int number : std::exchange(viewer.reread, {})) {
        viewerState.currentFrame = number;
        FrameStore again;
        const int code = readFrameAgain(again);
        viewer.results.emplace_back(code, redOf(again));
    }
    return viewer.answer;
}

using Reds = std::vector<int>;
using Results = std::vector<std::pair<int, int>>;

class Source : public SequenceTest {
 protected:
    void SetUp() override {
        SequenceTest::SetUp();
        viewer = Viewer{};
        loaderHooks.frameLoaded = frameLoaded;
        viewerState.currentFrame = viewerState.firstFrame = viewerState.lastFrame = 1;
        viewerState.frameStep = 1;
    }
    void setRange(int first, int last, int step) {
        viewerState.animation = 1;
        viewerState.currentFrame = viewerState.firstFrame = first;
        viewerState.lastFrame = last;
        viewerState.frameStep = step;
    }
    // Opens and keeps what was printed.
    int open(const Tstring& name) {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const int result = openImageSource(name);
        errors_ = testing::internal::GetCapturedStderr();
        output_ = testing::internal::GetCapturedStdout();
        return result;
    }
    static std::string notFound(const char* pattern, const char* tried, int error) {
        return formatMessage(Message::rVTAnimationNotFound,
                             {pattern, tried, std::strerror(error)}) +
               "\n";
    }
    std::string errors_, output_;
};

// --- single files --------------------------------------------------------------------------------

TEST_F(Source, AFileIsShown) {
    write("a.iff", imageForm(7));
    EXPECT_EQ(open("a.iff"), 0);
    EXPECT_EQ(viewer.reds, Reds{7});
    EXPECT_EQ(viewerState.sourceName, "a.iff");
    EXPECT_EQ(viewerState.sourceOpened, 1);
    EXPECT_EQ(viewerState.sourceIsPipe, 0);
    EXPECT_EQ(errors_, "");
    EXPECT_EQ(output_, "");
}

TEST_F(Source, AFilesFolderBecomesTheCurrentAndTheLastOne) {
    write("deep/er/a.iff", imageForm(7));
    EXPECT_EQ(open("deep/er/a.iff"), 0);
    EXPECT_EQ(fs::current_path().filename(), "er");
    EXPECT_TRUE(viewerState.lastFolder.ends_with("er"));
    EXPECT_EQ(viewerState.sourceName, "deep/er/a.iff");
}

TEST_F(Source, ARelativeNameOpensAgainFromItsOwnFolder) {
    write("deep/a.iff", imageForm(7));
    viewer.reread = {1};
    EXPECT_EQ(open("deep/a.iff"), 0);
    EXPECT_EQ(viewer.results, (Results{{0, 7}}));
    EXPECT_EQ(fs::current_path().filename(), "deep");
    EXPECT_EQ(open("deep/a.iff"), 0);
}

TEST_F(Source, AFileWithoutFolderLeavesTheCurrentOne) {
    write("a.iff", imageForm(7));
    const fs::path before = fs::current_path();
    EXPECT_EQ(open("a.iff"), 0);
    EXPECT_EQ(fs::current_path(), before);
}

TEST_F(Source, AMissingFileIsReportedByItsBaseName) {
    EXPECT_EQ(open("deep/none.iff"), iffNotIff);
    EXPECT_TRUE(errors_.starts_with("none.iff: ")) << errors_;
    EXPECT_EQ(viewerState.sourceOpened, 0);
    EXPECT_TRUE(viewer.reds.empty());
}

TEST_F(Source, AFolderIsNoFile) {
    fs::create_directories(folder_ / "folder.iff");
    EXPECT_EQ(open("folder.iff"), iffNotIff);
    EXPECT_TRUE(errors_.starts_with("folder.iff: ")) << errors_;
}

TEST_F(Source, AFolderIsNamedWithItsSlash) {
    fs::create_directories(folder_ / "folder");
    EXPECT_EQ(open("folder/"), iffNotIff);
    EXPECT_TRUE(errors_.starts_with("folder/: ")) << errors_;
}

TEST_F(Source, ANameOfTenThousandDigitsIsReported) {
    EXPECT_EQ(open(std::string(10000, '7')), iffNotIff);
    EXPECT_NE(errors_, "");
}

TEST_F(Source, AFileOfNoBytesIsReported) {
    write("empty.iff", "");
    EXPECT_EQ(open("empty.iff"), iffNotIff);
    const std::string file = fromStartDirectory("empty.iff");
    EXPECT_EQ(errors_, file + ": " + messageText(Message::rVTNoImage) + "\n");
    EXPECT_TRUE(viewer.reds.empty());
}

TEST_F(Source, AContainerWithoutImageIsReported) {
    write("sound.iff", chunk("FORM", "AIFF"));
    EXPECT_EQ(open("sound.iff"), iffNotIff);
    EXPECT_TRUE(contains(errors_, "sound.iff")) << errors_;
}

TEST_F(Source, ADamagedFileIsReportedWithItsNameOnce) {
    write("cut.iff", imageForm(7).substr(0, 80));
    const int result = open("cut.iff");
    EXPECT_LT(result, 0);
    EXPECT_EQ(errors_.find("cut.iff: " + errorText(result)), 0u) << errors_;
    EXPECT_EQ(errors_.find("cut.iff", 1), std::string::npos) << errors_;
}

TEST_F(Source, AVerboseReportEndsWithALineEnd) {
    write("a.iff", imageForm(7));
    viewerState.verbose = 1;
    EXPECT_EQ(open("a.iff"), 0);
    EXPECT_TRUE(output_.ends_with("\n"));
}

bool refuse() { return false; }

TEST_F(Source, ALoadThatTheUserLeftIsNoError) {
    write("a.iff", imageForm(7));
    loaderHooks.keepGoing = refuse;
    EXPECT_EQ(open("a.iff"), iffAborted);
    EXPECT_EQ(errors_, "");
    EXPECT_TRUE(viewer.reds.empty());
}

TEST_F(Source, EveryImageOfAFileIsHandedOverWhileTheViewerGoesOn) {
    write("two.iff", imageForm(7) + imageForm(8));
    viewer.answer = 0;
    EXPECT_EQ(open("two.iff"), 0);
    EXPECT_GE(viewer.reds.size(), 1u);
    EXPECT_EQ(viewer.reds[0], 7);
}

TEST_F(Source, APercentSignInANameIsNoFormat) {
    write("50%s%n%d.iff", imageForm(7));
    EXPECT_EQ(open("50%s%n%d.iff"), 0);
    viewerState.sourceOpened = 0;
    EXPECT_EQ(open("none%s%n%d.iff"), iffNotIff);
    EXPECT_TRUE(contains(errors_, "none%s%n%d.iff")) << errors_;
}

// --- animations ----------------------------------------------------------------------------------

TEST_F(Source, AnAnimationShowsItsFirstFrameAndReadsTheOthersAgain) {
    for (int i = 1; i <= 3; ++i) write("shot." + std::to_string(i), imageForm(10 + i));
    setRange(1, 3, 1);
    viewer.reread = {2, 3, 1};
    EXPECT_EQ(open("shot"), 0);
    EXPECT_EQ(viewer.reds, Reds{11});
    EXPECT_EQ(viewer.results, (Results{{0, 12}, {0, 13}, {0, 11}}));
    EXPECT_EQ(errors_, "");
    EXPECT_EQ(viewerState.rereading, 0);
    EXPECT_EQ(viewerState.oneFileStream, nullptr);
}

TEST_F(Source, FramesAreLookedForUnderTheirNumberedNames) {
    const struct {
        const char *pattern, *file;
        int padWidth, padNum;
    } rows[] = {{"h.#.iff", "h.0007.iff", 0, 0},
                {"i.#.iff", "i.07.iff", 2, 0},
                {"at.@@.iff", "at.07.iff", 0, 0},
                {"p", "p.0007", 0, 1},
                {"q", "q.7", 0, 0},
                {"r", "r.007", 3, 0}};
    for (const auto& row : rows) {
        write(row.file, imageForm(7));
        setRange(7, 7, 1);
        viewerState.padWidth = row.padWidth;
        viewerState.padNum = row.padNum;
        EXPECT_EQ(open(row.pattern), 0) << row.pattern;
    }
    EXPECT_EQ(viewer.reds.size(), std::size(rows));
}

TEST_F(Source, MarksInAFoldersNameDoNotHideItsFrames) {
    write("ann@studio/shot.7", imageForm(7));
    write("c#/shot.0007.iff", imageForm(8));
    setRange(7, 7, 1);
    EXPECT_EQ(open("ann@studio/shot"), 0);
    viewerState.padWidth = viewerState.sourceOpened = 0;
    EXPECT_EQ(open("c#/shot.#.iff"), 0);
    EXPECT_EQ(viewer.reds, (Reds{7, 8}));
}

TEST_F(Source, AMissingFrameInTheMiddleIsToldByItsNameAndReason) {
    write("shot.1", imageForm(11));
    write("shot.3", imageForm(13).substr(0, 80));
    write("shot.4", imageForm(14));
    setRange(1, 4, 1);
    viewer.reread = {2};
    EXPECT_EQ(open("shot"), 0);
    ASSERT_EQ(viewer.results, (Results{{iffNotIff, -1}}));
    EXPECT_EQ(lastFrameName(), "shot.2");
    EXPECT_NE(lastFrameReason(), "");
    EXPECT_EQ(errors_, "");

    viewerState.sourceOpened = 0;
    viewerState.currentFrame = 1;
    viewer.reread = {3};
    EXPECT_EQ(open("shot"), 0);
    EXPECT_LT(viewer.results.back().first, 0);
    EXPECT_EQ(lastFrameName(), "shot.3");
    EXPECT_EQ(lastFrameReason(), errorText(viewer.results.back().first));

    viewerState.sourceOpened = 0;
    viewerState.currentFrame = 1;
    viewer.reread = {4};
    EXPECT_EQ(open("shot"), 0);
    EXPECT_EQ(viewer.results.back(), std::make_pair(0, 14));
    EXPECT_EQ(lastFrameReason(), "");
}

TEST_F(Source, AMissingFirstFrameIsAnAnimationNotFound) {
    write("shot.2", imageForm(12));
    setRange(1, 2, 1);
    EXPECT_EQ(open("shot"), iffNotIff);
    EXPECT_EQ(errors_,
              notFound("shot", "shot.1", ENOENT) + messageText(Message::rVTFindFirstHint) + "\n");
    EXPECT_TRUE(viewer.reds.empty());
}

TEST_F(Source, AnAnimationNotFoundTellsTheNameAndTheSystemsReason) {
    fs::create_directories(folder_ / "shot.0001.iff");
    fs::create_directories(folder_ / "ann@s");
    setRange(1, 2, 1);
    EXPECT_EQ(open("shot.#.iff"), iffNotIff);
    EXPECT_TRUE(errors_.starts_with(notFound("shot.#.iff", "shot.0001.iff", EISDIR))) << errors_;
    EXPECT_EQ(open("ann@s/shot"), iffNotIff);
    EXPECT_TRUE(errors_.starts_with(notFound("ann@s/shot", "ann@s/shot.1", ENOENT))) << errors_;
}

TEST_F(Source, AnAtSignInAFolderDoesNotSpoilThePadding) {
    write("x@y/shot.01.iff", imageForm(7));
    write("x@y/shot.02.iff", imageForm(8));
    setRange(1, 2, 1);
    viewer.reread = {2};
    EXPECT_EQ(open("x@y/shot.@@.iff"), 0);
    EXPECT_EQ(viewer.results, (Results{{0, 8}}));
    EXPECT_EQ(viewerState.padWidth, 2);

    write("ann@s/shot.0001", imageForm(9));
    viewerState.padWidth = viewerState.sourceOpened = 0;
    viewerState.padNum = 1;
    setRange(1, 1, 1);
    EXPECT_EQ(open("ann@s/shot"), 0);
    EXPECT_EQ(viewer.reds, (Reds{7, 9}));
}

int questionsLeft = 0;
bool answerUntilTired() { return --questionsLeft > 0; }

TEST_F(Source, FindFirstOverAHugeRangeEndsWhenTheUserLeaves) {
    setRange(1, INT32_MAX, 1);
    viewerState.findFirst = 1;
    questionsLeft = 3;
    loaderHooks.keepGoing = answerUntilTired;
    EXPECT_EQ(open("shot"), iffNotIff);
    EXPECT_EQ(viewerState.currentFrame, 2001);  // asked before the names 0, 1000 and 2000
}

TEST_F(Source, FindFirstStepsOnToTheFirstFrameThatExists) {
    for (int i = 5; i <= 9; ++i) write("shot." + std::to_string(i), imageForm(i));
    setRange(1, 9, 1);
    viewerState.findFirst = 1;
    viewerState.padWidth = 4;  // the names tried are unpadded all the same
    viewer.reread = {6};
    EXPECT_EQ(open("shot"), 0);
    EXPECT_EQ(viewer.numbers, Reds{5});
    EXPECT_EQ(viewer.reds, Reds{5});
    EXPECT_EQ(viewer.results, (Results{{0, 6}}));
}

TEST_F(Source, FindFirstTriesOneNamePastTheLastFrame) {
    write("shot.10", imageForm(10));
    setRange(1, 9, 3);
    viewerState.findFirst = 1;
    EXPECT_EQ(open("shot"), 0);
    EXPECT_EQ(viewer.numbers, Reds{10});
}

TEST_F(Source, FindFirstThatFindsNothingIsReportedByTheBaseName) {
    setRange(1, 9, 1);
    viewerState.findFirst = 1;
    EXPECT_EQ(open("deep/shot"), iffNotIff);
    EXPECT_TRUE(errors_.starts_with("shot: ")) << errors_;
}

TEST_F(Source, FindFirstEndsAtTheLargestNumber) {
    setRange(INT32_MAX - 1, INT32_MAX, 1);
    viewerState.findFirst = 1;
    EXPECT_EQ(open("shot"), iffNotIff);
    EXPECT_EQ(viewerState.currentFrame, INT32_MAX);
}

TEST_F(Source, OneFileHoldsAllFrames) {
    write("all.iff", imageForm(11) + imageForm(12) + imageForm(13));
    setRange(1, 4, 1);
    viewerState.oneFile = 1;
    viewer.reread = {2, 3, 1, 4, 0};
    viewer.answer = 0;
    EXPECT_EQ(open("all.iff"), 0);
    EXPECT_EQ(viewer.reds, Reds{11});
    EXPECT_EQ(viewer.results,
              (Results{{0, 12}, {0, 13}, {0, 11}, {iffNotIff, -1}, {iffNotIff, -1}}));
    EXPECT_EQ(viewerState.oneFileStream, nullptr);
}

TEST_F(Source, OneFilePassesOverTheFormsBeforeItsFirstFrame) {
    write("all.iff", imageForm(11) + imageForm(12) + imageForm(13));
    setRange(3, 3, 1);
    viewerState.oneFile = 1;
    viewer.reread = {2};
    EXPECT_EQ(open("all.iff"), 0);
    EXPECT_EQ(viewer.reds, Reds{13});
    EXPECT_EQ(viewer.results, (Results{{0, 12}}));
}

TEST_F(Source, AMissingOneFileIsAnAnimationNotFoundEvenWithFindFirst) {
    setRange(1, 3, 1);
    viewerState.oneFile = viewerState.findFirst = 1;
    EXPECT_EQ(open("all.iff"), iffNotIff);
    EXPECT_EQ(errors_, notFound("all.iff", "all.iff", ENOENT));
    EXPECT_EQ(viewerState.currentFrame, 1);
}

// --- commands ------------------------------------------------------------------------------------

TEST_F(Source, ACommandShowsItsOutput) {
    write("shot.1", imageForm(21));
    const std::string program = childProgram(ChildRole::printFile);
    const Tstring name = "pipe:" + platform::quotedCommand(program, path("shot.1"), "stdout");
    EXPECT_EQ(open(name), 0);
    EXPECT_EQ(viewer.reds, Reds{21});
    EXPECT_EQ(viewerState.sourceName, name);
    EXPECT_EQ(viewerState.sourceIsPipe, 1);
}

TEST_F(Source, ACommandRunsOncePerFrameWithItsNumber) {
    for (int i = 1; i <= 3; ++i) write("shot." + std::to_string(i), imageForm(20 + i));
    const std::string program = childProgram(ChildRole::printFrameFile);
    setRange(1, 4, 1);
    viewer.reread = {2, 3, 4};
    EXPECT_EQ(open("pipe:" + platform::quotedCommand(program, path("shot"), "stdout")), 0);
    EXPECT_EQ(viewer.reds, Reds{21});
    EXPECT_EQ(viewer.results, (Results{{0, 22}, {0, 23}, {iffNotIff, -1}}));
}

TEST_F(Source, ACommandThatFailsIsReported) {
    EXPECT_EQ(open("pipe:no_such_command_here"), iffNotIff);
    const std::string text = messageText(Message::rVTNoImage);
    EXPECT_TRUE(contains(errors_, "pipe:no_such_command_here: " + text)) << errors_;
}

TEST_F(Source, ACommandThatWritesNothingHoldsNoImage) {
    write("nothing", "");
    const std::string program = childProgram(ChildRole::printFile);
    const Tstring name = "pipe:" + platform::quotedCommand(program, path("nothing"), "stdout");
    EXPECT_EQ(open(name), iffNotIff);
    EXPECT_EQ(errors_, name + ": " + messageText(Message::rVTNoImage) + "\n");
}

TEST_F(Source, AnEmptyCommandIsRefused) {
    for (const char* name : {"pipe:", "pipe:  "}) {
        EXPECT_EQ(open(name), iffNotIff);
        EXPECT_EQ(errors_, formatMessage(Message::rVTEmptyCommand, {name}) + "\n");
    }
}

TEST_F(Source, ACommandRunsWhereTheProgramWasStarted) {
    write("a.iff", imageForm(21));
    fs::create_directories(folder_ / "sub");
    fs::current_path(folder_ / "sub");
    const std::string program = childProgram(ChildRole::printFile);
    EXPECT_EQ(open("pipe:" + platform::quotedCommand(program, "a.iff", "stdout")), 0);
    EXPECT_EQ(viewer.reds, Reds{21});
    EXPECT_EQ(platform::currentDirectory(), viewerState.startDirectory);
}

TEST_F(Source, TestModeShowsTheOutputOfTheTestCommand) {
    write("test.iff", imageForm(31));
    const std::string program = childProgram(ChildRole::printFile);
    platform::setEnvironmentVariable("VTTEST",
                                     platform::quotedCommand(program, path("test.iff"), "stdout"));
    viewerState.testMode = 1;
    EXPECT_EQ(open("Pipe"), 0);
    EXPECT_EQ(viewer.reds, Reds{31});
    EXPECT_EQ(viewerState.sourceIsPipe, 1);
    EXPECT_EQ(viewerState.sourceName, messageText(Message::rVTPipedCmd));
}

// --- opened from the menus -----------------------------------------------------------------------

TEST_F(Source, ReopeningASequenceTakesItsRange) {
    for (int i = 4; i <= 8; i += 2) write("shot." + std::to_string(i), imageForm(i));
    viewerState.kmem = 90;
    viewerState.loadZ = 1;
    viewerState.pendingZoom = 0;
    viewerState.pendingShrink = 2;
    viewerState.pendingOpen = "shot.";
    viewerState.windowId = 3;
    EXPECT_EQ(reopenSource(viewerState.pendingOpen, 0, 0, 0), 0);
    EXPECT_EQ(viewer.reds, Reds{4});
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

struct DuringOpen {
    int32_t loadZ, magnify, currentZoom, animationShown;
    float kmem;
} duringOpen;

int noteState(FrameStore&) {
    duringOpen = {viewerState.loadZ, viewerState.magnify, viewerState.currentZoom,
                  viewerState.animationShown, viewerState.kmem};
    return iffParsingComplete;
}

TEST_F(Source, ReopeningWithAStepOrdersTheRange) {
    write("s0003.iff", imageForm(3));
    loaderHooks.frameLoaded = noteState;
    viewerState.pendingZoom = 4;
    EXPECT_EQ(reopenSource("s#.iff", 9, 3, -2), 0);
    EXPECT_EQ(viewerState.firstFrame, 3);
    EXPECT_EQ(viewerState.lastFrame, 9);
    EXPECT_EQ(viewerState.frameStep, 2);
    EXPECT_EQ(viewerState.currentFrame, 3);
    EXPECT_EQ(duringOpen.loadZ, 0);
    EXPECT_EQ(duringOpen.animationShown, 1);
    EXPECT_EQ(duringOpen.magnify, 4);
    EXPECT_EQ(duringOpen.currentZoom, 4);
}

TEST_F(Source, ReopeningASingleImageForgetsTheAnimation) {
    write("a.iff", imageForm(7));
    setRange(5, 9, 2);
    viewerState.sourceOpened = 1;
    viewerState.kmem = 0;
    loaderHooks.frameLoaded = noteState;
    EXPECT_EQ(reopenSource("a.iff", 0, 0, 0), 0);
    EXPECT_EQ(viewerState.animation, 0);
    EXPECT_EQ(viewerState.firstFrame, 1);
    EXPECT_EQ(viewerState.lastFrame, 1);
    EXPECT_EQ(viewerState.frameStep, 1);
    EXPECT_EQ(viewerState.playLast, 1);
    EXPECT_EQ(duringOpen.kmem, 0.9f);
    EXPECT_EQ(viewerState.kmem, 0);
}

int sourcesBegun, imagesForgotten;

TEST_F(Source, ReopeningForgetsHowTheImageBeforeWasLookedAt) {
    write("a.iff", imageForm(7));
    write("shot.1", imageForm(8));
    struct Row {
        const char* name;
        int step, sequenceMode, forgotten;
    };
    const Row rows[] = {{"a.iff", 0, 0, 1}, {"shot", 1, 0, 0}, {"a.iff", 0, 1, 0}};
    loaderHooks.sourceBegins = [] { ++sourcesBegun; };
    loaderHooks.clearImageState = [] { ++imagesForgotten; };
    for (const Row& row : rows) {
        sourcesBegun = imagesForgotten = 0;
        viewerState.sequenceMode = row.sequenceMode;
        viewerState.quitRequested = 1;  // the window was closed
        EXPECT_EQ(reopenSource(row.name, 1, 1, row.step), 0);
        EXPECT_EQ(sourcesBegun, 1);
        EXPECT_EQ(imagesForgotten, row.forgotten) << row.name << row.sequenceMode;
        EXPECT_EQ(viewerState.quitRequested, 0);
    }
}

TEST_F(Source, ReopeningInSequenceModeKeepsTheWindow) {
    write("a.iff", imageForm(7));
    viewerState.sequenceMode = 1;
    viewerState.windowId = 3;
    EXPECT_EQ(reopenSource("a.iff", 0, 0, 0), 0);
    EXPECT_EQ(viewerState.windowId, 3);
}

TEST_F(Source, ReopeningAMissingFileReportsItAfresh) {
    viewerState.sourceOpened = viewerState.rereading = 1;
    testing::internal::CaptureStderr();
    EXPECT_EQ(reopenSource("none.iff", 0, 0, 0), iffNotIff);
    EXPECT_TRUE(testing::internal::GetCapturedStderr().starts_with("none.iff: "));
}

TEST_F(Source, ASmallestStepDoesNotOverflow) {
    write("shot.1", imageForm(1));
    EXPECT_EQ(reopenSource("shot", 1, 5, INT32_MIN), 0);
    EXPECT_EQ(viewerState.frameStep, INT32_MAX);
}

}  // namespace
}  // namespace vistel
