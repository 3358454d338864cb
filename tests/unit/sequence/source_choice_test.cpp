#include "sequence/source_choice.h"

#include <cerrno>
#include <vector>

#include "source_fixture.h"

namespace vistel {
namespace {

using Choice = SourceTest;
using Reds = std::vector<int>;

// --- the current folder --------------------------------------------------------------------------

TEST_F(Choice, AFilesFolderBecomesTheCurrentOne) {
    write("deep/er/a.iff", imageForm(7));
    EXPECT_EQ(open("deep/er/a.iff"), 0);
    EXPECT_EQ(fs::current_path().filename(), "er");
    EXPECT_EQ(state_.sourceFolder, platform::currentDirectory());
    EXPECT_EQ(state_.sourceName, "deep/er/a.iff");
}

TEST_F(Choice, AFileWithoutFolderLeavesTheCurrentOne) {
    write("a.iff", imageForm(7));
    const fs::path before = fs::current_path();
    EXPECT_EQ(open("a.iff"), 0);
    EXPECT_EQ(fs::current_path(), before);
    EXPECT_EQ(state_.sourceFolder, platform::currentDirectory());
}

TEST_F(Choice, AMissingFilesFolderIsNotEntered) {
    fs::create_directories(folder_ / "deep");
    const fs::path before = fs::current_path();
    EXPECT_EQ(open("deep/none.iff"), iffNotIff);
    EXPECT_EQ(fs::current_path(), before);
    EXPECT_EQ(state_.sourceFolder, "");
}

TEST_F(Choice, ARelativeNameCountsFromTheFolderOfTheArgument) {
    write("deep/a.iff", imageForm(7));
    EXPECT_EQ(open("deep/a.iff"), 0);
    EXPECT_EQ(readAgain({1}), (Results{{0, 7}}));
    EXPECT_EQ(fs::current_path().filename(), "deep");
    EXPECT_EQ(open("deep/a.iff"), 0);
    EXPECT_EQ(red(), 7);
}

TEST_F(Choice, ReadingAgainEntersNoFolder) {
    write("deep/a.iff", imageForm(7));
    EXPECT_EQ(open("deep/a.iff"), 0);
    fs::current_path(folder_);
    state_.sourceFolder.clear();
    EXPECT_EQ(readAgain({1}), (Results{{0, 7}}));
    EXPECT_EQ(fs::current_path(), fs::canonical(folder_));
    EXPECT_EQ(state_.sourceFolder, "");
}

TEST_F(Choice, ACommandRunsWhereTheProgramWasStarted) {
    write("a.iff", imageForm(21));
    fs::create_directories(folder_ / "sub");
    fs::current_path(folder_ / "sub");
    EXPECT_EQ(open(printing("a.iff")), 0);
    EXPECT_EQ(red(), 21);
    EXPECT_EQ(platform::currentDirectory(), state_.startDirectory);
}

// --- names of frames -----------------------------------------------------------------------------

TEST_F(Choice, FramesAreLookedForUnderTheirNumberedNames) {
    const struct {
        const char *pattern, *file;
        int padWidth, padNum;
    } rows[] = {{"h.#.iff", "h.0007.iff", 0, 0},
                {"i.#.iff", "i.07.iff", 2, 0},
                {"at.@@.iff", "at.07.iff", 0, 0},
                {"p", "p.0007", 0, 1},
                {"q", "q.7", 0, 0},
                {"r", "r.007", 3, 0}};
    int number = 0;
    for (const auto& row : rows) {
        write(row.file, imageForm(++number));
        setRange(7, 7, 1);
        state_.padWidth = row.padWidth;
        state_.padNum = row.padNum;
        EXPECT_EQ(open(row.pattern), 0) << row.pattern;
        EXPECT_EQ(red(), number) << row.pattern;
    }
}

TEST_F(Choice, MarksInAFoldersNameDoNotHideItsFrames) {
    write("ann@studio/shot.7", imageForm(7));
    write("c#/shot.0007.iff", imageForm(8));
    setRange(7, 7, 1);
    EXPECT_EQ(open("ann@studio/shot"), 0);
    EXPECT_EQ(red(), 7);
    state_.padWidth = 0;
    EXPECT_EQ(open("c#/shot.#.iff"), 0);
    EXPECT_EQ(red(), 8);
}

TEST_F(Choice, AnAtSignInAFolderDoesNotSpoilThePadding) {
    write("x@y/shot.01.iff", imageForm(7));
    write("x@y/shot.02.iff", imageForm(8));
    setRange(1, 2, 1);
    EXPECT_EQ(open("x@y/shot.@@.iff"), 0);
    EXPECT_EQ(red(), 7);
    EXPECT_EQ(readAgain({2}), (Results{{0, 8}}));
    EXPECT_EQ(state_.padWidth, 2);

    write("ann@s/shot.0001", imageForm(9));
    state_.padWidth = 0;
    state_.padNum = 1;
    setRange(1, 1, 1);
    EXPECT_EQ(open("ann@s/shot"), 0);
    EXPECT_EQ(red(), 9);
}

// --- an animation that is not there --------------------------------------------------------------

TEST_F(Choice, AMissingFirstFrameIsAnAnimationNotFound) {
    write("shot.2", imageForm(12));
    setRange(1, 2, 1);
    EXPECT_EQ(open("shot"), iffNotIff);
    EXPECT_EQ(errors_, notFound("shot", "shot.1", ENOENT) + messageText(Message::rVTFindFirstHint) +
                           "\n" + formatMessage(Message::rVTFrameHint, {"shot.@", 2}) + "\n");
    EXPECT_FALSE(frame_.hasPicture());
}

TEST_F(Choice, FindFirstIsNamedOnlyWhereItHelps) {
    touch({"a.0002", "b.5", "c.4", "d.2.iff", "e.2"});
    const struct {
        const char* name;
        bool helps;
    } rows[] = {{"a", false}, {"b", false}, {"c", true}, {"d", false}, {"none", false}};
    for (const auto& row : rows) {
        setRange(1, 3, 3);  // tries 4 as well
        EXPECT_EQ(open(row.name), iffNotIff);
        EXPECT_EQ(errors_.find(messageText(Message::rVTFindFirstHint)) != std::string::npos,
                  row.helps)
            << row.name;
    }
}

TEST_F(Choice, WhatWouldWorkIsNamed) {
    touch({"shot.0001.png", "shot.0002.png"});
    const Tstring hint = formatMessage(Message::rVTFramesHint, {"shot.#.png", 1, 2}) + "\n";
    setRange(1, 2, 1);
    EXPECT_EQ(open("shot"), iffNotIff);
    EXPECT_EQ(errors_, notFound("shot", "shot.1", ENOENT) + hint);
    state_.animation = 0;
    EXPECT_EQ(open("shot"), iffNotIff);
    EXPECT_TRUE(errors_.starts_with("shot: ") && errors_.ends_with("\n" + hint)) << errors_;
    for (const char* folder : {".", "./"}) {
        EXPECT_EQ(open(folder), iffNotIff);
        EXPECT_TRUE(errors_.ends_with(
            "\n" + formatMessage(Message::rVTFramesHint, {"./shot.#.png", 1, 2}) + "\n"))
            << errors_;
    }
}

TEST_F(Choice, FramesAreFoundBetweenThePartsThatTheListingTold) {
    write("b c #d.07.iff", imageForm(7));
    setRange(7, 7, 1);
    state_.nameParts = NameParts{"b c #d.", ".iff"};
    state_.padWidth = 2;
    EXPECT_EQ(open("b c #d"), 0);
    EXPECT_EQ(red(), 7);
    EXPECT_EQ(readAgain({7}), (Results{{0, 7}}));
    EXPECT_TRUE(likelyFramePath(state_, 8).ends_with("b c #d.08.iff"));
}

TEST_F(Choice, TheNextFrameThatTheFoldersList) {
    touch({"shot.0004", "shot.9", "shot.12", "work/tex/shot.7", "shot.x"});
    setRange(1, 10, 3);
    state_.openedName = "shot";
    EXPECT_EQ(nextListedFrame(state_, 1), 4);
    EXPECT_EQ(nextListedFrame(state_, 4), 7);
    EXPECT_EQ(nextListedFrame(state_, 7), std::nullopt);
    state_.openedName = "none";
    EXPECT_EQ(nextListedFrame(state_, 1), std::nullopt);
}

TEST_F(Choice, AnAnimationNotFoundTellsTheNameAndTheSystemsReason) {
    fs::create_directories(folder_ / "shot.0001.iff");
    fs::create_directories(folder_ / "ann@s");
    setRange(1, 2, 1);
    EXPECT_EQ(open("shot.#.iff"), iffNotIff);
    EXPECT_TRUE(errors_.starts_with(notFound("shot.#.iff", "shot.0001.iff", EISDIR))) << errors_;
    EXPECT_EQ(open("ann@s/shot"), iffNotIff);
    EXPECT_TRUE(errors_.starts_with(notFound("ann@s/shot", "ann@s/shot.1", ENOENT))) << errors_;
}

TEST_F(Choice, AMissingOneFileIsAnAnimationNotFoundEvenWithFindFirst) {
    setRange(1, 3, 1);
    state_.oneFile = state_.findFirst = 1;
    EXPECT_EQ(open("all.iff"), iffNotIff);
    EXPECT_EQ(errors_, notFound("all.iff", "all.iff", ENOENT));
    EXPECT_EQ(state_.currentFrame, 1);
}

// --- the first frame that exists -----------------------------------------------------------------

TEST_F(Choice, FindFirstStepsOnToTheFirstFrameThatExists) {
    for (int i = 5; i <= 9; ++i) write("shot." + std::to_string(i), imageForm(i));
    setRange(1, 9, 1);
    state_.findFirst = 1;
    state_.padWidth = 4;  // the names tried are unpadded all the same
    EXPECT_EQ(open("shot"), 0);
    EXPECT_EQ(state_.currentFrame, 5);
    EXPECT_EQ(red(), 5);
    EXPECT_EQ(readAgain({6}), (Results{{0, 6}}));
}

TEST_F(Choice, FindFirstTriesOneNamePastTheLastFrame) {
    write("shot.10", imageForm(10));
    setRange(1, 9, 3);
    state_.findFirst = 1;
    EXPECT_EQ(open("shot"), 0);
    EXPECT_EQ(state_.currentFrame, 10);
    EXPECT_EQ(red(), 10);
}

TEST_F(Choice, FindFirstThatFindsNothingIsReportedByTheBaseName) {
    setRange(1, 9, 1);
    state_.findFirst = 1;
    EXPECT_EQ(open("deep/shot"), iffNotIff);
    EXPECT_TRUE(errors_.starts_with("shot: ")) << errors_;
}

TEST_F(Choice, FindFirstPassesAHugeGapByTheListing) {
    write("shot.2000000000", imageForm(10));
    write("shot.0007", imageForm(11));  // not the name of frame 7
    setRange(INT32_MIN, INT32_MAX, 1);
    state_.findFirst = 1;
    EXPECT_EQ(open("shot"), 0);
    EXPECT_EQ(state_.currentFrame, 2000000000);
    setRange(2000000000, INT32_MAX, 1);
    EXPECT_EQ(open("none"), iffNotIff);
    EXPECT_TRUE(errors_.starts_with("none: ")) << errors_;
}

// --- one file with all frames --------------------------------------------------------------------

TEST_F(Choice, OneFilePassesOverTheFormsBeforeItsFirstFrame) {
    write("all.iff", imageForm(11) + imageForm(12) + imageForm(13));
    setRange(3, 3, 1);
    state_.oneFile = 1;
    EXPECT_EQ(open("all.iff"), 0);
    EXPECT_EQ(red(), 13);
    EXPECT_EQ(readAgain({2}), (Results{{0, 12}}));
}

TEST_F(Choice, TheOpenOneFileIsHandedOverAtItsStart) {
    write("all.iff", imageForm(11) + imageForm(12));
    setRange(1, 2, 1);
    state_.oneFile = 1;
    EXPECT_EQ(open("all.iff"), 0);
    FILE* const kept = state_.oneFileStream.file();
    ASSERT_NE(kept, nullptr);
    OpenedSource source = chooseSource(state_, "all.iff", 2, Reading::again);
    EXPECT_EQ(source.stream.file(), kept);
    EXPECT_EQ(platform::streamPosition(kept), 0);
    EXPECT_TRUE(source.oneFile);
    EXPECT_FALSE(state_.oneFileStream);
    keepOneFileStream(state_, source);
    EXPECT_EQ(state_.oneFileStream.file(), kept);
}

// --- the path of another frame -------------------------------------------------------------------

TEST_F(Choice, TheLikelyPathOfAFrameIsThatOfItsName) {
    write("shot.3", imageForm(3));
    setRange(1, 4, 1);
    state_.openedName = "shot";
    EXPECT_EQ(likelyFramePath(state_, 3), chooseSource(state_, "shot", 3, Reading::again).located);
    EXPECT_TRUE(likelyFramePath(state_, 4).ends_with("shot.4"));
}

TEST_F(Choice, FramesWithoutFilesOfTheirOwnHaveNoLikelyPath) {
    setRange(1, 4, 1);
    state_.openedName = "pipe:command";
    EXPECT_EQ(likelyFramePath(state_, 1), "");
    state_.openedName = "shot";
    for (int32_t LoadOptions::*option : {&LoadOptions::oneFile, &LoadOptions::testMode}) {
        state_.*option = 1;
        EXPECT_EQ(likelyFramePath(state_, 1), "");
        state_.*option = 0;
    }
    EXPECT_NE(likelyFramePath(state_, 1), "");
    state_.animation = 0;
    EXPECT_EQ(likelyFramePath(state_, 1), "");
}

}  // namespace
}  // namespace vistel
