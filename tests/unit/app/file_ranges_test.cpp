#include "app/file_walk.h"

#include <gtest/gtest.h>

#include "app/walk_fixture.h"
#include "host/messages.h"

namespace vistel {
namespace {

using FileRanges = WalkTest;

TEST_F(FileRanges, TheRangeOptionAppliesToEveryFile) {
    walk({"-n", "1", "9", "2", "a", "b"});
    ASSERT_EQ(seen_.size(), 2u);
    for (const SeenState& s : seen_) EXPECT_EQ(range(s), "1..9 step 2 at 1, play 1..9");

    // Also when the first file left other bounds behind.
    recorder.showing = [] {
        viewerState.firstFrame = viewerState.playFirst = viewerState.currentFrame = 5;
        viewerState.animation = 0;
    };
    walk({"-n", "1", "9", "2", "a", "b"});
    EXPECT_EQ(range(seen_[1]), "1..9 step 2 at 1, play 1..9");
}

TEST_F(FileRanges, ARangeIsOrderedAndItsStepMadePositive) {
    struct Row {
        const char *start, *end, *step;
        const char* expected;
    };
    constexpr Row rows[] = {
        {"1", "10", "1", "1..10 step 1 at 1, play 1..10"},
        {"10", "1", "-2", "1..10 step 2 at 1, play 1..10"},
        {"10", "1", "2", "1..10 step 2 at 1, play 1..10"},
        {"1", "10", "0", "1..10 step 1 at 1, play 1..10"},
        {"-5", "-9", "1", "-9..-5 step 1 at -9, play -9..-5"},
        {"7", "7", "1", "7..7 step 1 at 7, play 7..7"},
        {"1", "2", "-2147483648", "1..2 step 2147483647 at 1, play 1..2"},
        {"x", "2", "1", "0..2 step 1 at 0, play 0..2"},
    };
    for (const Row& row : rows) {
        walk({"-n", row.start, row.end, row.step, "name"});
        ASSERT_EQ(seen_.size(), 1u);
        EXPECT_EQ(range(seen_[0]), row.expected);
        EXPECT_EQ(seen_[0].animationShown, 1);
        walk({"-n", row.start, row.end, row.step, "name"});
    }
}

TEST_F(FileRanges, ARangeMayStandBeforeAFile) {
    struct Row {
        Words words;
        int oneFile;
    };
    const Row rows[] = {
        {{"x", "-n5", "9", "1", "name"}, 0},       {{"x", "-n", "5", "9", "1", "name"}, 0},
        {{"x", "-N5", "9", "1", "name"}, 1},       {{"x", "-N", "5", "9", "1", "name"}, 1},
        {{"x", "-n5z", "9q", "1", "name"}, 0},     {{"-N", "x", "-n5", "9", "1", "name"}, 0},
        {{"-c", "x", "-n5", "9", "1", "name"}, 0},
    };
    for (const Row& row : rows) {
        const FileCounts counts = walk(row.words);
        EXPECT_EQ(opened(), "[x][name]");
        EXPECT_EQ(counts.processed, 2);
        ASSERT_EQ(seen_.size(), 2u);
        EXPECT_EQ(range(seen_[1]), "5..9 step 1 at 5, play 5..9");
        EXPECT_EQ(seen_[1].oneFile, row.oneFile);
        EXPECT_EQ(seen_[1].inter, 1);
    }
}

TEST_F(FileRanges, ARangeBeforeAFileIsOrderedToo) {
    walk({"x", "-n9", "5", "-2", "name"});
    EXPECT_EQ(range(seen_[1]), "5..9 step 2 at 5, play 5..9");
}

TEST_F(FileRanges, ARangeBeforeAFileWinsOverTheOption) {
    walk({"-n", "1", "3", "1", "a", "-n5", "9", "1", "b", "c"});
    ASSERT_EQ(seen_.size(), 3u);
    EXPECT_EQ(range(seen_[0]), "1..3 step 1 at 1, play 1..3");
    EXPECT_EQ(range(seen_[1]), "5..9 step 1 at 5, play 5..9");
    EXPECT_EQ(range(seen_[2]), "1..3 step 1 at 1, play 1..3");
}

TEST_F(FileRanges, ARangeBeforeAFileIsThatFilesOnly) {
    walk({"-c", "x", "-N5", "9", "1", "one", "after"});
    ASSERT_EQ(seen_.size(), 3u);
    EXPECT_EQ(seen_[1].oneFile, 1);
    EXPECT_EQ(seen_[1].inter, 1);
    EXPECT_EQ(range(seen_[2]), singleFrame);
    EXPECT_EQ(seen_[2].oneFile, 0);
    EXPECT_EQ(seen_[2].inter, 0);

    walk({"-N", "x", "-n5", "9", "1", "numbered", "after"});
    ASSERT_EQ(seen_.size(), 3u);
    EXPECT_EQ(seen_[1].oneFile, 0);
    EXPECT_EQ(seen_[2].oneFile, 1);
}

TEST_F(FileRanges, AnIncompleteRangeAsksForTheUsage) {
    for (const Words& words :
         {Words{"x", "-n5"}, Words{"x", "-n5", "9"}, Words{"x", "-n5", "9", "1"}, Words{"x", "-n"},
          Words{"x", "-n", "5", "9", "1"}, Words{"-S", "x", "-N5"}}) {
        walk(words);
        EXPECT_EQ(opened(), "[x]");
        EXPECT_EQ(line_.outcome, StartUpOutcome::usageWanted);
        EXPECT_NE(line_.complaint, "");
    }
}

TEST_F(FileRanges, ADotAtTheEndStandsForTheNumberedFilesWhenThereAreSome) {
    recorder.discovering = [](const Tstring& name) {
        if (name != "shot." && name != "shot.#") {
            viewerState.animation = 0;
            return 0;
        }
        viewerState.animation = 1;
        viewerState.firstFrame = 3;
        viewerState.lastFrame = 9;
        viewerState.frameStep = 2;
        return 1;
    };
    walk({"shot."});
    EXPECT_EQ(opened(), "[shot]");
    EXPECT_EQ(viewerState.fileName, "shot");
    EXPECT_EQ(range(seen_[0]), "3..9 step 2 at 3, play 3..9");

    walk({"none."});
    EXPECT_EQ(opened(), "[none.]");
    EXPECT_EQ(viewerState.fileName, "none.");
    EXPECT_EQ(range(seen_[0]), singleFrame);

    walk({"shot.#"});
    EXPECT_EQ(opened(), "[shot.#]");
    EXPECT_EQ(range(seen_[0]), "3..9 step 2 at 3, play 3..9");
}

TEST_F(FileRanges, AnimationsLoadNoDepthUnlessForcedTo) {
    walk({"-n", "1", "2", "1", "a"});
    EXPECT_EQ(seen_[0].loadZ, 0);
    EXPECT_EQ(viewerState.loadZ, 1);
    walk({"-Z", "-n", "1", "2", "1", "a"});
    EXPECT_EQ(seen_[0].loadZ, 1);
    walk({"-z", "-Z", "-n", "1", "2", "1", "a"});
    EXPECT_EQ(seen_[0].loadZ, 0);
}

TEST_F(FileRanges, ASingleImageIsOpenedWithItsOwnMemoryFactor) {
    walk({"-k", "100", "a", "-n1", "2", "1", "b"});
    EXPECT_EQ(seen_[0].kmem, 0.9f);
    EXPECT_EQ(seen_[1].kmem, 90.0f);
    EXPECT_EQ(viewerState.kmem, 90.0f);
    walk({"-k", "0", "-n", "1", "2", "1", "b"});
    EXPECT_EQ(seen_[0].kmem, 0.0f);
}

TEST_F(FileRanges, StandardInputCarriesOneImageOnly) {
    testing::internal::CaptureStderr();
    walk({"-n", "1", "9", "1", "stdin"});
    const std::string errors = testing::internal::GetCapturedStderr();
    EXPECT_EQ(errors, messageText(Message::rVTNoAnimPipeMode));
    EXPECT_EQ(opened(), "[]");
    EXPECT_EQ(range(seen_[0]), singleFrame);
    EXPECT_EQ(seen_[0].animationShown, 0);
}

TEST_F(FileRanges, StandardInputWithARangeIsLoadedAsASingleImage) {
    for (const Words& words : {Words{"-k", "5", "-n", "1", "9", "1", "stdin"},
                               Words{"-k", "5", "x", "-n1", "9", "1", "STDIN"}}) {
        testing::internal::CaptureStderr();
        walk(words);
        testing::internal::GetCapturedStderr();
        ASSERT_FALSE(seen_.empty());
        EXPECT_EQ(seen_.back().loadZ, 1);
        EXPECT_EQ(seen_.back().kmem, 0.9f);
        EXPECT_EQ(seen_.back().animation, 0);
        EXPECT_TRUE(recorder.calls.ends_with("clear image state\nopen \nshow \n"))
            << recorder.calls;
    }
}

TEST_F(FileRanges, TestModeShowsNoAnimation) {
    testing::internal::CaptureStderr();
    walk({"-t", "-n", "1", "9", "1"});
    EXPECT_EQ(testing::internal::GetCapturedStderr(), messageText(Message::rVTNoAnimTestMode));
    EXPECT_EQ(range(seen_[0]), singleFrame);
}

}  // namespace
}  // namespace vistel
