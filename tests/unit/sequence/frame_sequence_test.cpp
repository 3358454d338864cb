#include "sequence/frame_sequence.h"

#include <algorithm>
#include <cerrno>
#include <vector>

#include "host/messages.h"
#include "sequence/frame_listing.h"
#include "sequence_fixture.h"

namespace vistel {
namespace {

// --- a stem that ends with a dot -----------------------------------------------------------------

class Discovery : public SequenceTest {
 protected:
    int discover(const Tstring& stem) { return discoverNumberedFiles(state_, stem, state_); }
    void expectRange(int first, int last, int step) {
        EXPECT_EQ(state_.firstFrame, first);
        EXPECT_EQ(state_.lastFrame, last);
        EXPECT_EQ(state_.frameStep, step);
        EXPECT_EQ(state_.animation, 1);
    }
};

TEST_F(Discovery, TakesTheStepFromTheTwoSmallestNumbers) {
    touch({"shot.1", "shot.3", "shot.5", "shot.9"});
    EXPECT_EQ(discover("shot."), 1);
    expectRange(1, 9, 2);
    EXPECT_EQ(state_.padWidth, 0);
}

TEST_F(Discovery, TakesTheWidthOfPaddedNumbers) {
    for (int i = 1; i <= 10; ++i)
        write("shot.00" + std::string(i < 10 ? "0" : "") + std::to_string(i), "x");
    EXPECT_EQ(discover("shot."), 1);
    expectRange(1, 10, 1);
    EXPECT_EQ(state_.padWidth, 4);
}

TEST_F(Discovery, ForgetsTheWidthOfTheSequenceBefore) {
    touch({"a.0001", "b.1", "b.2"});
    EXPECT_EQ(discover("a."), 1);
    EXPECT_EQ(state_.padWidth, 4);
    EXPECT_EQ(discover("b."), 1);
    EXPECT_EQ(state_.padWidth, 0);
}

TEST_F(Discovery, GivesASingleFileStepOne) {
    touch({"shot.7"});
    EXPECT_EQ(discover("shot."), 1);
    expectRange(7, 7, 1);
}

TEST_F(Discovery, SortsNumbersAsNumbers) {
    touch({"shot.10", "shot.9", "shot.2", "shot.-4"});
    EXPECT_EQ(discover("shot."), 1);
    expectRange(-4, 10, 6);
}

TEST_F(Discovery, KeepsAStepOfAtLeastOneForTwoFilesOfOneNumber) {
    touch({"shot.1.iff", "shot.1.bak", "shot.3.iff"});
    EXPECT_EQ(discover("shot."), 1);
    expectRange(1, 3, 1);
}

TEST_F(Discovery, ClampsNumbersBeyondThirtyTwoBits) {
    touch({"shot.99999999999", "shot.-99999999999"});
    EXPECT_EQ(discover("shot."), 1);
    expectRange(INT32_MIN, INT32_MAX, INT32_MAX);
}

TEST_F(Discovery, FindsNothingWithoutNumberedFiles) {
    touch({"shots.1", "sho.1", "shot"});
    state_.animation = 1;
    EXPECT_EQ(discover("shot."), 0);
    EXPECT_EQ(state_.animation, 0);
}

TEST_F(Discovery, FindsNothingForAFolderOfDots) {
    touch({".5", "..6", ".hidden", "sub/.7"});
    for (const char* stem : {".", "..", "./.", "sub/.", "sub/..", "..."}) {
        EXPECT_EQ(discover(stem), 0) << stem;
        EXPECT_EQ(state_.animation, 0) << stem;
    }
}

TEST_F(Discovery, StopsAtTheFirstFolderThatHasNumbers) {
    touch({"work/tex/project/shot.5", "work/image/shot.9"});
    EXPECT_EQ(discover("shot."), 1);
    expectRange(5, 5, 1);
}

TEST_F(Discovery, DoesNotUseTheSixthFolder) {
    touch({"work/tex/shot.5"});
    EXPECT_EQ(discover("shot."), 0);
}

TEST_F(Discovery, FollowsTheFolderOfTheStem) {
    touch({"deep/er/shot.5", "deep/er/shot.6", "shot.1"});
    EXPECT_EQ(discover("deep/er/shot."), 1);
    expectRange(5, 6, 1);
    EXPECT_EQ(discover(path("deep/er/shot.")), 1);
    expectRange(5, 6, 1);
}

TEST_F(Discovery, CountsFromTheFolderOfTheArgument) {
    touch({"sub/shot.5", "elsewhere/x", "work/image/far.3"});
    fs::current_path(folder_ / "elsewhere");
    EXPECT_EQ(discover("sub/shot."), 1);
    expectRange(5, 5, 1);
    EXPECT_EQ(discover("far."), 1);
    expectRange(3, 3, 1);
}

TEST_F(Discovery, TakesAnUnreadableFolderForAnEmptyOne) {
    touch({"file"});
    EXPECT_EQ(discover("file/shot."), 0);
    EXPECT_EQ(discover("nowhere/shot."), 0);
}

TEST_F(Discovery, TellsOfMoreThan4095Files) {
    for (int i = 1; i <= 4096; ++i) std::ofstream(folder_ / ("n." + std::to_string(i)));
    testing::internal::CaptureStderr();
    EXPECT_EQ(discover("n."), 1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              formatMessage(Message::rVTTooManyFiles, {"n.", 4095}) + "\n");
    EXPECT_GE(state_.firstFrame, 1);
    EXPECT_LE(state_.lastFrame, 4096);
    EXPECT_GE(state_.lastFrame - state_.firstFrame, 4094);
    EXPECT_EQ(state_.animation, 1);
}

// --- names with a number in them -----------------------------------------------------------------

class NameTaken : public Discovery {
 protected:
    // What is told of a name without a range; the frames are in state_.
    std::string take(const Tstring& name) {
        state_.animation = 0;
        state_.nameParts.reset();
        testing::internal::CaptureStderr();
        found_ = discoverFrames(state_, name, state_);
        return testing::internal::GetCapturedStderr();
    }
    // "before|after width"; empty: the name itself tells.
    std::string parts() const {
        if (!state_.nameParts) return {};
        return state_.nameParts->before + "|" + state_.nameParts->after + " " +
               std::to_string(state_.padWidth);
    }
    int found_ = -1;
};

TEST_F(NameTaken, TheSuffixThatAllFilesOfAStemShareBelongsToTheirNames) {
    touch({"shot.0001.png", "shot.0002.png", "a b#.7"});
    EXPECT_EQ(take("shot."), "");
    EXPECT_EQ(parts(), "shot.|.png 4");
    expectRange(1, 2, 1);
    EXPECT_EQ(take("a b#."), "");
    EXPECT_EQ(parts(), "a b#.| 0");
}

TEST_F(NameTaken, FilesWithoutASuffixComeFirstAndTheOthersAreTold) {
    touch({"shot.1", "shot.2", "shot.2.png", "shot.4.png"});
    EXPECT_EQ(take("shot."),
              formatMessage(Message::rVTSuffixLeftOut, {"shot.", "shot.@.png"}) + "\n");
    EXPECT_EQ(parts(), "shot.| 0");
}

TEST_F(NameTaken, DifferentSuffixesBelongToNoName) {
    touch({"shot.1.png", "shot.2.iff"});
    EXPECT_EQ(take("shot."), "");
    EXPECT_EQ(parts(), "shot.| 0");
}

TEST_F(NameTaken, AFileWithoutANumberCountsAsFrameZeroAndIsTold) {
    touch({"t.bak", "t.12.iff"});
    EXPECT_EQ(take("t."), formatMessage(Message::rVTStrayFile, {"t.bak", "t."}) + "\n");
    EXPECT_EQ(parts(), "t.| 0");
    expectRange(0, 12, 12);
    touch({"t.0"});
    EXPECT_EQ(take("t.").find(formatMessage(Message::rVTStrayFile, {"t.bak", "t."})),
              std::string::npos);
}

TEST_F(NameTaken, APatternStandsForTheFilesThatFitIt) {
    touch({"h.0003.png", "h.0005.png", "h.0009.png", "h.0004.iff", "h.04.png", "u.8.png",
           "u.10.png", "w@x/s.#/f.01.i"});
    struct Row {
        const char *name, *parts;
        int first, last, step;
    };
    const Row rows[] = {
        {"h.#.png", "h.|.png 4", 3, 9, 2},
        {"h.####.png", "h.|.png 4", 3, 9, 2},
        {"h.%04d.png", "h.|.png 4", 3, 9, 2},
        {"h.@@.png", "h.|.png 2", 4, 4, 1},
        {"h.0001-0005.png", "h.|.png 4", 3, 5, 2},
        {"h.5-1.png", "h.|.png 4", 3, 5, 2},
        {"u.#.png", "u.|.png 1", 8, 10, 2},
        {"u.@.png", "u.|.png 1", 8, 10, 2},
        {"u.%d.png", "u.|.png 0", 8, 10, 2},
        {"u.8-10.png", "u.|.png 1", 8, 10, 2},
        {"w@x/s.#/f.#.i", "w@x/s.#/f.|.i 2", 1, 1, 1},
    };
    for (const Row& row : rows) {
        take(row.name);
        EXPECT_EQ(found_, 1) << row.name;
        EXPECT_EQ(parts(), row.parts) << row.name;
        expectRange(row.first, row.last, row.step);
    }
}

TEST_F(NameTaken, WhatNoFileFitsStandsForItself) {
    touch({"h.0003.png", "plain.iff"});
    for (const char* name : {"h.@.png", "h.%d.png", "h.%3d.png", "h.#.iff", "h.0004-0009.png",
                             "h.0003.png", "plain.iff", "none.#", "h-.png", "pipe:a#"}) {
        EXPECT_EQ(take(name), "") << name;
        EXPECT_EQ(found_, 0) << name;
        EXPECT_EQ(state_.animation, 0) << name;
        EXPECT_EQ(parts(), "") << name;
    }
}

TEST_F(NameTaken, AFileOfThatNameComesFirstAndTheFramesAreTold) {
    touch({"h.#.png", "h.0003.png", "h.0005.png", "r.1-2.png", "r.1.png"});
    EXPECT_EQ(take("h.#.png"),
              formatMessage(Message::rVTFileTaken, {"h.#.png", 3, 5, 2, "h.#.png"}) + "\n");
    EXPECT_EQ(found_, 0);
    EXPECT_EQ(take("r.1-2.png"),
              formatMessage(Message::rVTFileTaken, {"r.1-2.png", 1, 1, 1, "r.@.png"}) + "\n");
    EXPECT_EQ(found_, 0);
}

TEST_F(NameTaken, ARangeOfWhichLessIsThereIsTold) {
    touch({"h.0003.png", "h.0005.png"});
    EXPECT_EQ(take("h.0001-0009.png"),
              formatMessage(Message::rVTRangeFound, {"h.0001-0009.png", 3, 5}) + "\n");
    EXPECT_EQ(take("h.0003-0005.png"), "");
}

TEST_F(NameTaken, WithARangePercentSignsAreAMarkWhereOnlyThatFindsAFrame) {
    touch({"h.0003.png", "h.0003.%02d"});
    const auto takeWithRange = [&](const Tstring& name) {
        state_.nameParts.reset();
        setRange(3, 5, 1);
        return discoverFrames(state_, name, state_);
    };
    EXPECT_EQ(takeWithRange("h.%04d.png"), 1);
    EXPECT_EQ(parts(), "h.|.png 4");
    expectRange(3, 5, 1);
    EXPECT_EQ(takeWithRange("h.#.png"), 0);
    EXPECT_EQ(takeWithRange("h.%03d.png"), 0);
    touch({"h.%04d.png.3"});
    EXPECT_EQ(takeWithRange("h.%04d.png"), 0);
    EXPECT_EQ(parts(), "");
}

// --- the frame picked in the dialog --------------------------------------------------------------

class Picked : public SequenceTest {
 protected:
    void pick(Tstring& name) {
        patternFromFirstFrame(state_.startDirectory, name, range_, state_.padWidth);
    }
    Tstring frameAt(const Tstring& pattern, int k) const {
        return frameName(pattern, range_, k, state_.padWidth);
    }
    FrameRange range_;
};

TEST_F(Picked, GivesThePatternTheStepAndTheUnbrokenRun) {
    touch(
        {"take2_0010.iff", "take2_0012.iff", "take2_0014.iff", "take2_0015.iff", "take2_0018.iff"});
    Tstring name = path("take2_0010.iff");
    pick(name);
    EXPECT_EQ(name, path("take2_#.iff"));
    EXPECT_EQ(state_.padWidth, 4);
    EXPECT_EQ(range_.start, 10);
    EXPECT_EQ(range_.step, 2);
    EXPECT_EQ(range_.end, 14);
    EXPECT_EQ(frameAt(name, 0), path("take2_0010.iff"));
    EXPECT_EQ(frameAt(name, 2), path("take2_0014.iff"));
    EXPECT_EQ(frameAt(name, 3), "");
    EXPECT_EQ(frameAt(name, -1), path("take2_0014.iff"));
}

TEST_F(Picked, ReadsANegativeNumber) {
    touch({"a-5.iff", "a-4.iff"});
    Tstring name = "a-5.iff";
    pick(name);
    EXPECT_EQ(name, "a#.iff");
    EXPECT_EQ(range_.start, -5);
    EXPECT_EQ(range_.step, 1);
    EXPECT_EQ(range_.end, -4);
}

TEST_F(Picked, KeepsAnEndThatTheUserEntered) {
    touch({"s1", "s2", "s3"});
    range_.end = 2;
    Tstring name = "s1";
    pick(name);
    EXPECT_EQ(range_.end, 2);
    EXPECT_EQ(range_.step, 1);
}

TEST_F(Picked, LooksDownwardsTowardsAnEndBelowIt) {
    touch({"s9", "s6", "s3", "s10"});
    range_.end = 3;
    Tstring name = "s9";
    pick(name);
    EXPECT_EQ(range_.step, 3);
    EXPECT_EQ(frameAt(name, -1), "s3");
}

TEST_F(Picked, LooksNoFurtherThanNineFrames) {
    touch({"s1", "s11"});
    Tstring name = "s1";
    pick(name);
    EXPECT_EQ(range_.step, 1);
    EXPECT_EQ(range_.end, 1);
    touch({"s10"});
    range_ = {};
    name = "s1";
    pick(name);
    EXPECT_EQ(range_.step, 9);
    EXPECT_EQ(range_.end, 10);
}

TEST_F(Picked, KeepsStepOneWhenTheEndComesFirst) {
    touch({"s1", "s4"});
    range_.end = 3;
    Tstring name = "s1";
    pick(name);
    EXPECT_EQ(range_.step, 1);
}

TEST_F(Picked, WithoutADigitIsASingleImage) {
    range_ = {3, 4, 5};
    state_.padWidth = 4;
    Tstring name = "d2/still.iff";
    pick(name);
    EXPECT_EQ(name, "d2/still.iff");
    EXPECT_EQ(state_.padWidth, 1);
    EXPECT_EQ(range_.start, 0);
    EXPECT_EQ(range_.end, 0);
    EXPECT_EQ(range_.step, 0);
    EXPECT_EQ(frameAt(name, 0), "");
}

TEST_F(Picked, FindsItsRunInAFolderThatHasAHash) {
    touch({"c#/s1", "c#/s2"});
    Tstring name = path("c#/s1");
    pick(name);
    EXPECT_EQ(range_.end, 2);
    EXPECT_EQ(frameAt(name, 1), path("c#/s2"));
}

// --- lookup along the search directories ---------------------------------------------------------

class Lookup : public SequenceTest {
 protected:
    Tstring located(const Tstring& name) {
        Tstring place;
        const platform::FilePtr file(locateFrameFile(state_, name, place));
        return file ? place : Tstring("none");
    }
    void takePadWidth(const Tstring& name) { takePadWidthFromAtSigns(name, state_.padWidth); }
};

TEST_F(Lookup, MovesTheFolderOfAFrameToTheFront) {
    touch({"work/tex/shot.1"});
    EXPECT_TRUE(located("shot.1").ends_with("work/tex/shot.1"));
    EXPECT_EQ(state_.searchDirs[0], "work/tex/");
    EXPECT_EQ(state_.searchDirs[5], "");
    EXPECT_EQ(state_.searchDirs[1], "./");
}

TEST_F(Lookup, LeavesTheOrderWhenTheFirstFolderHasIt) {
    touch({"shot.1", "work/tex/shot.1"});
    EXPECT_TRUE(located("shot.1").ends_with("/shot.1"));
    EXPECT_EQ(state_.searchDirs[0], "");
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
            const Tstring relative = Tstring(start) + "/" + name;
            EXPECT_EQ(fromStartDirectory(start, name),
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
    takePadWidth("shot.1");
    takePadWidth("x@y/shot");
    takePadWidth("shot.#.@@");
    EXPECT_EQ(state_.padWidth, 0);
    takePadWidth("x@y/shot.@@");
    EXPECT_EQ(state_.padWidth, 2);
    state_.padWidth = 0;
    takePadWidth("shot.@@@");
    EXPECT_EQ(state_.padWidth, 3);
    takePadWidth("shot.@@@@@");
    EXPECT_EQ(state_.padWidth, 3);
}

}  // namespace
}  // namespace vistel
