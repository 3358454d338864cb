#include "sequence/frame_name.h"

#include <gtest/gtest.h>

#include <climits>

namespace vistel {
namespace {

TEST(PaddedNumber, IsWrittenAsPrintfWritesIt) {
    const struct {
        int number, width;
        const char* text;
    } rows[] = {{7, 4, "0007"},
                {7, 1, "7"},
                {7, 0, "7"},
                {12345, 4, "12345"},
                {-5, 4, "-005"},
                {-5, 1, "-5"},
                {-5, 2, "-5"},
                {0, 0, "0"},
                {0, 3, "000"},
                {7, -3, "7"},
                {INT_MIN, 0, "-2147483648"},
                {INT_MAX, 12, "002147483647"}};
    for (const auto& row : rows) EXPECT_EQ(paddedNumber(row.number, row.width), row.text);
}

TEST(PaddedNumber, HasAWidestForm) {
    EXPECT_EQ(paddedNumber(1, INT_MAX).size(), size_t{widestNumber});
}

TEST(NumberedName, FollowsThePattern) {
    const struct {
        const char* pattern;
        int number;
        NumberStyle style;
        const char* name;
    } rows[] = {
        // Hash: four digits when the width is not known.
        {"shot.#.iff", 7, {0, false}, "shot.0007.iff"},
        {"shot.#.iff", 7, {2, false}, "shot.07.iff"},
        {"shot.#.iff", 7, {1, false}, "shot.7.iff"},
        {"shot.###.iff", 7, {0, false}, "shot.0007.iff"},
        {"a#b#.iff", 7, {3, false}, "a007.iff"},
        {"shot.#.iff", -7, {4, false}, "shot.-007.iff"},
        {"#", 1, {0, false}, "0001"},
        // At sign: as wide as its run.
        {"shot.@@.iff", 7, {0, false}, "shot.07.iff"},
        {"shot.@.iff", 7, {0, false}, "shot.7.iff"},
        {"shot.@@.iff", 7, {3, false}, "shot.007.iff"},
        {"shot.@@.iff", 123, {0, false}, "shot.123.iff"},
        {"a@b@.iff", 7, {0, false}, "a007.iff"},
        // The hash goes before the at sign.
        {"a@b#.iff", 7, {2, false}, "a@b07.iff"},
        // A stem.
        {"shot", 7, {0, false}, "shot.7"},
        {"shot", 7, {0, true}, "shot.0007"},
        {"shot", 7, {2, true}, "shot.07"},
        {"shot", 7, {3, false}, "shot.007"},
        {"shot", -7, {0, false}, "shot.-7"},
        {"", 7, {0, false}, ".7"},
        // A pattern is no format.
        {"100%d%s%n.#.iff", 7, {1, false}, "100%d%s%n.7.iff"},
        {"50%", 7, {0, false}, "50%.7"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(numberedName(row.pattern, row.number, row.style), row.name) << row.pattern;
    }
}

TEST(NumberedName, InItsFolderCountsOnlyMarksOfTheBaseName) {
    EXPECT_EQ(numberedNameInFolder("/home/ann@studio/shot.#.iff", 7, {2, false}),
              "/home/ann@studio/shot.07.iff");
    EXPECT_EQ(numberedNameInFolder("c#/shot", 7, {0, false}), "c#/shot.7");
    EXPECT_EQ(numberedNameInFolder("c#\\shot.@@", 7, {0, false}), "c#\\shot.07");
    EXPECT_EQ(numberedNameInFolder("c/shot.#", 7, {0, false}), std::nullopt);
    EXPECT_EQ(numberedNameInFolder("shot", 7, {0, false}), std::nullopt);
}

TEST(AtSignWidth, GoesFromTheFirstToTheLast) {
    EXPECT_EQ(atSignWidth("shot.@@@.iff"), 3);
    EXPECT_EQ(atSignWidth("a@bc@.iff"), 4);
    EXPECT_EQ(atSignWidth("shot.1.iff"), 0);
}

TEST(UnpaddedName, TakesNoNoticeOfMarks) {
    EXPECT_EQ(unpaddedName("shot.#.iff", 5), "shot.#.iff.5");
    EXPECT_EQ(unpaddedName("shot", 5), "shot.5");
}

TEST(HashReplaced, TakesTheLastRun) {
    EXPECT_EQ(hashReplaced("take2_#.iff", 12, 4), "take2_0012.iff");
    EXPECT_EQ(hashReplaced("c#/take_#.iff", 12, 1), "c#/take_12.iff");
    EXPECT_EQ(hashReplaced("###", 12, 1), "12");
    EXPECT_EQ(hashReplaced("take2.iff", 12, 4), "");
}

TEST(FrameNumber, LiesWithinTheRange) {
    const struct {
        FrameRange range;
        int k;
        std::optional<int> number;
    } rows[] = {
        {{10, 14, 2}, 0, 10},
        {{10, 14, 2}, 2, 14},
        {{10, 14, 2}, 3, std::nullopt},
        {{10, 14, 2}, -1, 14},
        {{10, 15, 2}, -1, 14},
        {{14, 10, 2}, 1, 12},  // descending
        {{14, 10, 2}, -1, 10},
        {{14, 10, 2}, 3, std::nullopt},
        {{10, 0, 1}, 1000, 1010},  // an end below 1 is no bound
        {{-5, 0, 1}, 2, -3},
        {{10, -3, 2}, 1, 12},
        {{5, 5, 0}, -1, 5},  // no step
        {{5, 9, 0}, -1, 5},
        {{INT_MAX, 0, 1}, 1, std::nullopt},
        {{INT_MIN, INT_MAX, 1}, -1, INT_MAX},
        {{INT_MIN, INT_MAX, INT_MIN}, -1, std::nullopt},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(frameNumberAt(row.range, row.k), row.number)
            << row.range.start << ".." << row.range.end << " k " << row.k;
    }
}

TEST(PickedName, IsSplitAtItsLastRunOfDigits) {
    const std::string longNumber = std::string(9999, '0') + "1";
    const struct {
        std::string name, before;
        int number;
        const char* after;
        int padWidth;
    } rows[] = {
        {"take2_0010.iff", "take2_", 10, ".iff", 4},
        {"shot.10.iff", "shot.", 10, ".iff", 1},
        {"a-5.iff", "a", -5, ".iff", 1},
        {"a-0005.iff", "a", -5, ".iff", 5},
        {"shot.0.iff", "shot.", 0, ".iff", 1},
        {"-3", "", -3, "", 1},
        {"d1/shot.7", "d1/shot.", 7, "", 1},
        {"d1\\shot.7", "d1\\shot.", 7, "", 1},
        {"d-1/5", "d-1/", 5, "", 1},
        {"d-/5", "d-/", 5, "", 1},
        {"a" + longNumber, "a", 1, "", 10000},
    };
    for (const auto& row : rows) {
        const std::optional<PickedName> picked = splitPickedName(row.name);
        ASSERT_TRUE(picked) << row.name;
        EXPECT_EQ(picked->before, row.before);
        EXPECT_EQ(picked->number, row.number) << row.name;
        EXPECT_EQ(picked->after, row.after);
        EXPECT_EQ(picked->padWidth, row.padWidth) << row.name;
    }
}

TEST(PickedName, NeedsADigitInItsBaseName) {
    for (const char* name : {"", "shot.iff", "take2/shot.iff", "a-", "7/"}) {
        EXPECT_FALSE(splitPickedName(name)) << name;
    }
}

TEST(PickedName, NeedsANumberThatFits) {
    EXPECT_EQ(splitPickedName("s2147483647")->number, INT_MAX);
    EXPECT_EQ(splitPickedName("s-2147483648")->number, INT_MIN);
    EXPECT_EQ(splitPickedName("s000000000000007")->number, 7);
    for (const char* name : {"s2147483648", "s-2147483649", "20250131235959999.iff"}) {
        EXPECT_FALSE(splitPickedName(name)) << name;
    }
}

TEST(CommandName, BeginsWithItsPrefix) {
    EXPECT_TRUE(namesCommand("pipe:cat a/b"));
    EXPECT_FALSE(namesCommand("a/pipe:cat"));
    EXPECT_FALSE(namesCommand("Pipe"));
}

TEST(Stem, IsSplitAtItsLastSlashOrElseBackslash) {
    const struct {
        const char *stem, *folder, *base;
    } rows[] = {{"shot.", "", "shot."},
                {"a/b/shot.", "a/b", "shot."},
                {"a\\b\\shot.", "a\\b", "shot."},
                {"a/b\\shot.", "a", "b\\shot."},
                {"/shot.", "/", "shot."},
                {"C:\\shot.", "C:\\", "shot."},
                {"a/", "a", ""}};
    for (const auto& row : rows) {
        EXPECT_EQ(splitStem(row.stem).folder, row.folder) << row.stem;
        EXPECT_EQ(splitStem(row.stem).base, row.base) << row.stem;
    }
}

TEST(NumberedFile, HasTheNumberThatFollowsTheBasePart) {
    const struct {
        const char* name;
        int number, zeroWidth;
    } rows[] = {{"shot.7", 7, 0},
                {"shot.0012.iff", 12, 4},
                {"shot.bak", 0, 0},
                {"shot.", 0, 0},
                {"shot.0", 0, 1},
                {"shot.-5", -5, 0},
                {"shot. 5", 5, 0},
                {"shot.4294967296", INT_MAX, 0},
                {"shot.-99999999999", INT_MIN, 0}};
    for (const auto& row : rows) {
        const std::optional<NumberedFile> file = readNumberedFile(row.name, "shot.");
        ASSERT_TRUE(file) << row.name;
        EXPECT_EQ(file->number, row.number) << row.name;
        EXPECT_EQ(file->zeroWidth, row.zeroWidth) << row.name;
    }
    EXPECT_FALSE(readNumberedFile("shot", "shot."));
    EXPECT_FALSE(readNumberedFile("ashot.7", "shot."));
    EXPECT_EQ(readNumberedFile("shot." + std::string(10000, '9'), "shot.")->number, INT_MAX);
    EXPECT_EQ(readNumberedFile("shot." + std::string(10000, '0'), "shot.")->zeroWidth, 10000);
}

}  // namespace
}  // namespace vistel
