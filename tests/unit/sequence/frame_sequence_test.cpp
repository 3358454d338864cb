#include "sequence/frame_sequence.h"

#include <cerrno>

#include "host/messages.h"
#include "sequence_fixture.h"

namespace vistel {
namespace {

using Discovery = SequenceTest;
using Listing = SequenceTest;
using PickedFrame = SequenceTest;
using Lookup = SequenceTest;

void expectRange(int first, int last, int step) {
    EXPECT_EQ(viewerState.firstFrame, first);
    EXPECT_EQ(viewerState.lastFrame, last);
    EXPECT_EQ(viewerState.frameStep, step);
    EXPECT_EQ(viewerState.animation, 1);
}

// --- a stem that ends with a dot -----------------------------------------------------------------

TEST_F(Discovery, TakesTheStepFromTheTwoSmallestNumbers) {
    touch({"shot.1", "shot.3", "shot.5", "shot.9"});
    EXPECT_EQ(discoverNumberedFiles("shot."), 1);
    expectRange(1, 9, 2);
    EXPECT_EQ(viewerState.padWidth, 0);
}

TEST_F(Discovery, TakesTheWidthOfPaddedNumbers) {
    for (int i = 1; i <= 10; ++i)
        write("shot.00" + std::string(i < 10 ? "0" : "") + std::to_string(i), "x");
    EXPECT_EQ(discoverNumberedFiles("shot."), 1);
    expectRange(1, 10, 1);
    EXPECT_EQ(viewerState.padWidth, 4);
}

TEST_F(Discovery, ForgetsTheWidthOfTheSequenceBefore) {
    touch({"a.0001", "b.1", "b.2"});
    EXPECT_EQ(discoverNumberedFiles("a."), 1);
    EXPECT_EQ(viewerState.padWidth, 4);
    EXPECT_EQ(discoverNumberedFiles("b."), 1);
    EXPECT_EQ(viewerState.padWidth, 0);
}

TEST_F(Discovery, GivesASingleFileStepOne) {
    touch({"shot.7"});
    EXPECT_EQ(discoverNumberedFiles("shot."), 1);
    expectRange(7, 7, 1);
}

TEST_F(Discovery, SortsNumbersAsNumbers) {
    touch({"shot.10", "shot.9", "shot.2", "shot.-4"});
    EXPECT_EQ(discoverNumberedFiles("shot."), 1);
    expectRange(-4, 10, 6);
}

TEST_F(Discovery, KeepsAStepOfAtLeastOneForTwoFilesOfOneNumber) {
    touch({"shot.1.iff", "shot.1.bak", "shot.3.iff"});
    EXPECT_EQ(discoverNumberedFiles("shot."), 1);
    expectRange(1, 3, 1);
}

TEST_F(Discovery, ClampsNumbersBeyondThirtyTwoBits) {
    touch({"shot.99999999999", "shot.-99999999999"});
    EXPECT_EQ(discoverNumberedFiles("shot."), 1);
    expectRange(INT32_MIN, INT32_MAX, INT32_MAX);
}

TEST_F(Discovery, FindsNothingWithoutNumberedFiles) {
    touch({"shots.1", "sho.1", "shot"});
    viewerState.animation = 1;
    EXPECT_EQ(discoverNumberedFiles("shot."), 0);
    EXPECT_EQ(viewerState.animation, 0);
}

TEST_F(Discovery, FindsNothingForAFolderOfDots) {
    touch({".5", "..6", ".hidden", "sub/.7"});
    for (const char* stem : {".", "..", "./.", "sub/.", "sub/..", "..."}) {
        EXPECT_EQ(discoverNumberedFiles(stem), 0) << stem;
        EXPECT_EQ(viewerState.animation, 0) << stem;
    }
}

TEST_F(Discovery, StopsAtTheFirstFolderThatHasNumbers) {
    touch({"work/tex/project/shot.5", "work/image/shot.9"});
    EXPECT_EQ(discoverNumberedFiles("shot."), 1);
    expectRange(5, 5, 1);
}

TEST_F(Discovery, DoesNotUseTheSixthFolder) {
    touch({"work/tex/shot.5"});
    EXPECT_EQ(discoverNumberedFiles("shot."), 0);
}

TEST_F(Discovery, FollowsTheFolderOfTheStem) {
    touch({"deep/er/shot.5", "deep/er/shot.6", "shot.1"});
    EXPECT_EQ(discoverNumberedFiles("deep/er/shot."), 1);
    expectRange(5, 6, 1);
    EXPECT_EQ(discoverNumberedFiles(path("deep/er/shot.")), 1);
    expectRange(5, 6, 1);
}

TEST_F(Discovery, CountsFromTheFolderOfTheArgument) {
    touch({"sub/shot.5", "elsewhere/x", "work/image/far.3"});
    fs::current_path(folder_ / "elsewhere");
    EXPECT_EQ(discoverNumberedFiles("sub/shot."), 1);
    expectRange(5, 5, 1);
    EXPECT_EQ(discoverNumberedFiles("far."), 1);
    expectRange(3, 3, 1);
}

TEST_F(Discovery, TakesAnUnreadableFolderForAnEmptyOne) {
    touch({"file"});
    EXPECT_EQ(discoverNumberedFiles("file/shot."), 0);
    EXPECT_EQ(discoverNumberedFiles("nowhere/shot."), 0);
}

// --- the listing of one folder -------------------------------------------------------------------

TEST_F(Listing, CountsEveryFileThatBeginsWithTheBasePart) {
    touch({"shot.bak", "shot.0012.iff", "other.3"});
    std::vector<int> numbers;
    EXPECT_EQ(listNumberedFiles("", "shot.", numbers), 2);
    std::sort(numbers.begin(), numbers.end());
    EXPECT_EQ(numbers, (std::vector<int>{0, 12}));
}

TEST_F(Listing, KeepsAWidthThatIsKnown) {
    touch({"shot.0012"});
    std::vector<int> numbers;
    viewerState.padWidth = 2;
    listNumberedFiles("", "shot.", numbers);
    EXPECT_EQ(viewerState.padWidth, 2);
}

TEST_F(Listing, StopsAt4095NumbersAndTellsWhenThereAreMore) {
    for (int i = 1; i <= 4095; ++i) std::ofstream(folder_ / ("n." + std::to_string(i)));
    std::vector<int> numbers;
    testing::internal::CaptureStderr();
    EXPECT_EQ(listNumberedFiles("", "n.", numbers), 4095);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");

    touch({"n.4096"});
    testing::internal::CaptureStderr();
    EXPECT_EQ(discoverNumberedFiles("n."), 1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              formatMessage(Message::rVTTooManyFiles, {"n.", 4095}) + "\n");
    EXPECT_GE(viewerState.firstFrame, 1);
    EXPECT_LE(viewerState.lastFrame, 4096);
    EXPECT_GE(viewerState.lastFrame - viewerState.firstFrame, 4094);
    EXPECT_EQ(viewerState.animation, 1);
}

// --- the frame picked in the dialog --------------------------------------------------------------

TEST_F(PickedFrame, GivesThePatternTheStepAndTheUnbrokenRun) {
    touch(
        {"take2_0010.iff", "take2_0012.iff", "take2_0014.iff", "take2_0015.iff", "take2_0018.iff"});
    Tstring name = path("take2_0010.iff");
    patternFromFirstFrame(name);
    EXPECT_EQ(name, path("take2_#.iff"));
    EXPECT_EQ(viewerState.padWidth, 4);
    EXPECT_EQ(viewerState.pendingRange.start, 10);
    EXPECT_EQ(viewerState.pendingRange.step, 2);
    EXPECT_EQ(viewerState.pendingRange.end, 14);
    EXPECT_EQ(frameName(name, 0), path("take2_0010.iff"));
    EXPECT_EQ(frameName(name, 2), path("take2_0014.iff"));
    EXPECT_EQ(frameName(name, 3), "");
    EXPECT_EQ(frameName(name, -1), path("take2_0014.iff"));
}

TEST_F(PickedFrame, ReadsANegativeNumber) {
    touch({"a-5.iff", "a-4.iff"});
    Tstring name = "a-5.iff";
    patternFromFirstFrame(name);
    EXPECT_EQ(name, "a#.iff");
    EXPECT_EQ(viewerState.pendingRange.start, -5);
    EXPECT_EQ(viewerState.pendingRange.step, 1);
    EXPECT_EQ(viewerState.pendingRange.end, -4);
}

TEST_F(PickedFrame, KeepsAnEndThatTheUserEntered) {
    touch({"s1", "s2", "s3"});
    viewerState.pendingRange.end = 2;
    Tstring name = "s1";
    patternFromFirstFrame(name);
    EXPECT_EQ(viewerState.pendingRange.end, 2);
    EXPECT_EQ(viewerState.pendingRange.step, 1);
}

TEST_F(PickedFrame, LooksDownwardsTowardsAnEndBelowIt) {
    touch({"s9", "s6", "s3", "s10"});
    viewerState.pendingRange.end = 3;
    Tstring name = "s9";
    patternFromFirstFrame(name);
    EXPECT_EQ(viewerState.pendingRange.step, 3);
    EXPECT_EQ(frameName(name, -1), "s3");
}

TEST_F(PickedFrame, LooksNoFurtherThanNineFrames) {
    touch({"s1", "s11"});
    Tstring name = "s1";
    patternFromFirstFrame(name);
    EXPECT_EQ(viewerState.pendingRange.step, 1);
    EXPECT_EQ(viewerState.pendingRange.end, 1);
    touch({"s10"});
    viewerState.pendingRange = {};
    name = "s1";
    patternFromFirstFrame(name);
    EXPECT_EQ(viewerState.pendingRange.step, 9);
    EXPECT_EQ(viewerState.pendingRange.end, 10);
}

TEST_F(PickedFrame, KeepsStepOneWhenTheEndComesFirst) {
    touch({"s1", "s4"});
    viewerState.pendingRange.end = 3;
    Tstring name = "s1";
    patternFromFirstFrame(name);
    EXPECT_EQ(viewerState.pendingRange.step, 1);
}

TEST_F(PickedFrame, WithoutADigitIsASingleImage) {
    viewerState.pendingRange = {3, 4, 5};
    viewerState.padWidth = 4;
    Tstring name = "d2/still.iff";
    patternFromFirstFrame(name);
    EXPECT_EQ(name, "d2/still.iff");
    EXPECT_EQ(viewerState.padWidth, 1);
    EXPECT_EQ(viewerState.pendingRange.start, 0);
    EXPECT_EQ(viewerState.pendingRange.end, 0);
    EXPECT_EQ(viewerState.pendingRange.step, 0);
    EXPECT_EQ(frameName(name, 0), "");
}

TEST_F(PickedFrame, FindsItsRunInAFolderThatHasAHash) {
    touch({"c#/s1", "c#/s2"});
    Tstring name = path("c#/s1");
    patternFromFirstFrame(name);
    EXPECT_EQ(viewerState.pendingRange.end, 2);
    EXPECT_EQ(frameName(name, 1), path("c#/s2"));
}

// --- lookup along the search directories ---------------------------------------------------------

Tstring located(const Tstring& name) {
    Tstring place;
    const platform::FilePtr file(locateFrameFile(name, place));
    return file ? place : Tstring("none");
}

TEST_F(Lookup, MovesTheFolderOfAFrameToTheFront) {
    touch({"work/tex/shot.1"});
    EXPECT_TRUE(located("shot.1").ends_with("work/tex/shot.1"));
    EXPECT_EQ(viewerState.searchDirs[0], "work/tex/");
    EXPECT_EQ(viewerState.searchDirs[5], "");
    EXPECT_EQ(viewerState.searchDirs[1], "./");
}

TEST_F(Lookup, LeavesTheOrderWhenTheFirstFolderHasIt) {
    touch({"shot.1", "work/tex/shot.1"});
    EXPECT_TRUE(located("shot.1").ends_with("/shot.1"));
    EXPECT_EQ(viewerState.searchDirs[0], "");
}

TEST_F(Lookup, TakesBackslashesForSlashes) {
    touch({"sub/shot.1"});
    EXPECT_TRUE(located("sub\\shot.1").ends_with("sub/shot.1"));
}

TEST_F(Lookup, CountsFromTheFolderOfTheArgument) {
    touch({"sub/shot.1", "work/image/far.1"});
    fs::current_path(folder_ / "sub");
    EXPECT_TRUE(located("sub/shot.1").ends_with("sub/shot.1"));
    EXPECT_TRUE(located("far.1").ends_with("work/image/far.1"));
    EXPECT_EQ(located("shot.1"), "none");
}

TEST_F(Lookup, TakesAbsoluteNames) {
    touch({"sub/shot.1"});
    EXPECT_EQ(located(path("sub/shot.1")), path("sub/shot.1"));
}

TEST_F(Lookup, TakesBackslashesForSlashesInAbsoluteNames) {
    touch({"sub/shot.1"});
    const Tstring name = path("sub/shot.1");
    EXPECT_EQ(located(name.replacingAll('/', '\\')), name);
}

// Wherever the program was started: on a drive, a share, or a system that has neither.
TEST_F(Lookup, AsksTheSystemWhichNamesAreAbsolute) {
    for (const char* start : {"/start", "c:/start", "//server/share"})
        for (const char* name : {"c:/shot.1", "\\shot.1", "/shot.1", "shot.1"}) {
            viewerState.startDirectory = start;
            const Tstring relative = Tstring(start) + "/" + name;
            EXPECT_EQ(fromStartDirectory(name),
                      platform::isAbsolutePath(name) ? Tstring(name) : relative);
        }
}

TEST_F(Lookup, TellsWhyThereIsNone) {
    EXPECT_EQ(located("shot.1"), "none");
    EXPECT_EQ(errno, ENOENT);
    fs::create_directories(folder_ / "shot.2");
    EXPECT_EQ(located("shot.2"), "none");
    EXPECT_EQ(errno, EISDIR);
    EXPECT_EQ(located(std::string(10000, '1')), "none");
}

TEST_F(Lookup, FindsAFrameWhereAFolderOfItsNameIsInTheWay) {
    touch({"work/image/shot.2"});
    fs::create_directories(folder_ / "shot.2");
    EXPECT_TRUE(located("shot.2").ends_with("work/image/shot.2"));
}

TEST_F(Lookup, SetsTheWidthOfAtSignsOnce) {
    takePadWidthFromAtSigns("shot.1");
    takePadWidthFromAtSigns("x@y/shot");
    takePadWidthFromAtSigns("shot.#.@@");
    EXPECT_EQ(viewerState.padWidth, 0);
    takePadWidthFromAtSigns("x@y/shot.@@");
    EXPECT_EQ(viewerState.padWidth, 2);
    viewerState.padWidth = 0;
    EXPECT_EQ(viewerState.padWidth, 0);
    takePadWidthFromAtSigns("shot.@@@");
    EXPECT_EQ(viewerState.padWidth, 3);
    takePadWidthFromAtSigns("shot.@@@@@");
    EXPECT_EQ(viewerState.padWidth, 3);
}

}  // namespace
}  // namespace vistel
