#include "host/tstring.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace vistel {
namespace {

TEST(Tstring, ReadsDecimalIntegersAndClampsThem) {
    struct Row {
        const char* text;
        int32_t value;
    };
    constexpr Row rows[] = {
        {"", 0},
        {"0", 0},
        {"12", 12},
        {"-5", -5},
        {"+7", 7},
        {"  42", 42},
        {"\t-3 x", -3},
        {"12abc", 12},
        {"abc", 0},
        {"- 5", 0},
        {"--5", 0},
        {"0x10", 0},
        {"1.9", 1},
        {"007", 7},
        {"2147483647", INT32_MAX},
        {"2147483648", INT32_MAX},
        {"-2147483648", INT32_MIN},
        {"-2147483649", INT32_MIN},
        {"99999999999999999999999999", INT32_MAX},
        {"-99999999999999999999999999", INT32_MIN},
    };
    for (const Row& row : rows) EXPECT_EQ(Tstring(row.text).asInt32(), row.value) << row.text;
}

TEST(Tstring, ReadsUnsignedIntegersAndClampsThem) {
    struct Row {
        const char* text;
        uint32_t value;
    };
    constexpr Row rows[] = {
        {"", 0},   {"3", 3}, {"4294967280", 0xFFFFFFF0u}, {"4294967295", 0xFFFFFFFFu},
        {"-1", 0}, {"x", 0}, {"4294967296", 0xFFFFFFFFu}, {"99999999999999999999", 0xFFFFFFFFu},
    };
    for (const Row& row : rows) EXPECT_EQ(Tstring(row.text).asUInt32(), row.value) << row.text;
}

TEST(Tstring, ReadsRealsWithADecimalPointAndClampsThem) {
    constexpr double largest = std::numeric_limits<double>::max();
    struct Row {
        const char* text;
        double value;
    };
    constexpr Row rows[] = {
        {"", 0},
        {"1", 1},
        {"1.01", 1.01},
        {".5", 0.5},
        {"-2.25", -2.25},
        {"+2.25", 2.25},
        {" 1e2", 100},
        {"1.5x", 1.5},
        {"1,5", 1},
        {"abc", 0},
        {"inf", 0},
        {"nan", 0},
        {"-", 0},
        {"-nan", 0},
        {"1e400", largest},
        {"-1e400", -largest},
        {"1e-400", 0},
        {"0.00001e-400", 0},
        {"0.0000000001e400", largest},
        {"1000000e-400", 0},
        {"1e99999999999999999999", largest},
    };
    for (const Row& row : rows) EXPECT_EQ(Tstring(row.text).asDouble(), row.value) << row.text;
}

TEST(Tstring, ReadsFloatsInSinglePrecision) {
    EXPECT_EQ(Tstring("1.01").asFloat(), 1.01f);
    EXPECT_EQ(Tstring("1e40").asFloat(), std::numeric_limits<float>::max());
    EXPECT_EQ(Tstring("-1e40").asFloat(), -std::numeric_limits<float>::max());
    EXPECT_EQ(Tstring("1e-60").asFloat(), 0.0f);
}

TEST(Tstring, IsAnIntegerOnlyWhenTheWholeTextIsOne) {
    for (const char* text : {"0", "12", "-12", "+12", "2147483647", "-2147483648", "0007"})
        EXPECT_TRUE(Tstring(text).isInt32()) << text;
    for (const char* text : {"", "-", "+", " 1", "1 ", "1.0", "0x1", "a", "1a", "2147483648",
                             "-2147483649", "99999999999999999999", "+-1"})
        EXPECT_FALSE(Tstring(text).isInt32()) << text;
}

TEST(Tstring, ComparesIgnoringTheCaseOfLatinLetters) {
    EXPECT_TRUE(Tstring("StdIn").equalsIgnoringCase("stdin"));
    EXPECT_TRUE(Tstring("").equalsIgnoringCase(""));
    EXPECT_FALSE(Tstring("stdin").equalsIgnoringCase("stdin2"));
    EXPECT_FALSE(Tstring("@").equalsIgnoringCase("`"));
}

TEST(Tstring, ReplacesEveryCharacterOfAKind) {
    EXPECT_EQ(Tstring("/a/b//").replacingAll('/', '\\'), "\\a\\b\\\\");
}

TEST(FormatPositional, FillsPlaceholdersInAnyOrder) {
    EXPECT_EQ(formatPositional("^1s/image/^2s/", {"work", "film"}), "work/image/film/");
    EXPECT_EQ(formatPositional("^2d of ^3d: ^1s", {"x", 4, 10}), "4 of 10: x");
    EXPECT_EQ(formatPositional("^1s^1s", {"ab"}), "abab");
    EXPECT_EQ(formatPositional("^1f", {2.2}), "2.2");
    EXPECT_EQ(formatPositional("^1f", {0.1f}), "0.1");
    EXPECT_EQ(formatPositional("^1f", {1.0}), "1");
    EXPECT_EQ(formatPositional("^10s", {"1", "2", "3", "4", "5", "6", "7", "8", "9", "ten"}),
              "ten");
}

TEST(FormatPositional, LeavesWhatIsNoPlaceholderAsItIs) {
    EXPECT_EQ(formatPositional("a^^b", {"x"}), "a^b");
    EXPECT_EQ(formatPositional("^^1s", {"x"}), "^1s");
    for (const char* text :
         {"^", "^s", "^1", "^0s", "^2s", "^1q", "^x", "100 ^", "^99999999999999999999s"})
        EXPECT_EQ(formatPositional(text, {"x"}), text) << text;
}

TEST(FormatPositional, DoesNotReadTheArgumentsAsFormats) {
    EXPECT_EQ(formatPositional("^1s^2s", {"^2s", "%s"}), "^2s%s");
}

TEST(FormatPrintf, FormatsTextOfAnyLength) {
    EXPECT_EQ(formatPrintf("%s.%04d", "shot", 7), "shot.0007");
    EXPECT_EQ(formatPrintf("%s", ""), "");
    const std::string longText(5000, 'x');
    EXPECT_EQ(formatPrintf("%s!", longText.c_str()), longText + "!");
}

TEST(TstringTest, WholeTextsAreToldFromThoseThatBeginWithANumber) {
    for (const char* text : {"0", "007", "4294967295"})
        EXPECT_TRUE(Tstring(text).isUInt32()) << text;
    for (const char* text : {"", "-1", "+1", "1x", " 1", "4294967296", "99999999999999999999"})
        EXPECT_FALSE(Tstring(text).isUInt32()) << text;
    for (const char* text : {"0", "-1", "+2.5", ".5", "3.", "1e3", "1e999"})
        EXPECT_TRUE(Tstring(text).isReal()) << text;
    for (const char* text : {"", "-", "x", "1x", "2,2", " 1", "inf", "nan", "+-1", "1e3e"})
        EXPECT_FALSE(Tstring(text).isReal()) << text;
}

TEST(TstringTest, ControlCharactersArePrintedAsEscapes) {
    EXPECT_EQ(printable("a\x1b[2Jb\r\n\t\x7f"), "a\\x1b[2Jb\\x0d\\x0a\\x09\\x7f");
    EXPECT_EQ(printable("\xc2\x9b"
                        "31m \xc2\xa0 \xc3\x9b C:\\x"),
              "\\x9b31m \xc2\xa0 \xc3\x9b C:\\x");
    EXPECT_EQ(printable(std::string_view("\0", 1)), "\\x00");
    EXPECT_EQ(printable(""), "");
}

}  // namespace
}  // namespace vistel
