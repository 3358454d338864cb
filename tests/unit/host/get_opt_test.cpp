#include "host/get_opt.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vistel::qdOS {
namespace {

using Words = std::vector<const char*>;

enum Option { verbose, pad, zoom, range, sound, longOnlyFlag };

GetOpt parserOf(const Words& words) {
    GetOpt parser;
    parser.addOption("v|verbose", "");
    parser.addOption("p|padnum", "");
    parser.addOption("m|magnify", "int");
    parser.addOption("n|animation", "int int int");
    parser.addOption("u|audiofile", "string ? string");
    parser.addOption("z|zon", "");
    parser.initialize(static_cast<int>(words.size()), words.data());
    return parser;
}

// The option, and the group of flags that it stands in.
std::string named(const GetOpt::Result& result) {
    return result.option + (result.option == result.word ? "" : " in " + result.word);
}

// All that was found, one line: "index(argument,argument) ... | remaining words".
std::string trace(const Words& words) {
    GetOpt parser = parserOf(words);
    std::string line;
    while (const auto result = parser.getOpt()) {
        if (result->problem == GetOpt::Problem::unknownOption)
            return line + "unknown " + named(*result);
        if (result->problem == GetOpt::Problem::missingArgument)
            return line + "missing " + named(*result);
        if (result->problem == GetOpt::Problem::unexpectedArgument)
            return line + "unexpected " + named(*result);
        line += std::to_string(GetOpt::getResultIndex(*result)) + "(";
        for (int i = 0; i < GetOpt::getNumArguments(*result); ++i)
            line += (i ? "," : "") + GetOpt::getResultArg(*result, i);
        line += ") ";
    }
    line += "|";
    for (const Tstring& word : parser.remaining()) line += " " + word;
    return line;
}

TEST(GetOpt, GivesEachOptionTheIndexOfItsDeclaration) {
    GetOpt parser;
    EXPECT_EQ(parser.addOption("v|verbose", ""), 0);
    EXPECT_EQ(parser.addOption("n|animation", "int int int"), 1);
}

struct Row {
    Words words;
    const char* expected;
};

void expectTraces(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        std::string shown;
        for (const char* word : row.words) shown += std::string(word) + " ";
        EXPECT_EQ(trace(row.words), row.expected) << shown;
    }
}

TEST(GetOpt, ReadsShortLongAndGroupedOptions) {
    expectTraces({
        {{}, "|"},
        {{"-v"}, "0() |"},
        {{"--verbose", "a"}, "0() | a"},
        {{"-vp", "a", "b"}, "0() 1() | a b"},
        {{"-v", "-p"}, "0() 1() |"},
        {{"-vm3", "a"}, "0() 2(3) | a"},
        {{"-vm", "3", "a"}, "0() 2(3) | a"},
    });
}

TEST(GetOpt, TakesArgumentsAttachedOrFromTheNextWords) {
    expectTraces({
        {{"-m", "3"}, "2(3) |"},
        {{"-m3"}, "2(3) |"},
        {{"--magnify", "3"}, "2(3) |"},
        {{"--magnify=3"}, "2(3) |"},
        {{"--magnify="}, "2() |"},
        {{"-n", "5", "9", "1", "a"}, "3(5,9,1) | a"},
        {{"-n5", "9", "1", "a"}, "3(5,9,1) | a"},
        {{"--animation=5", "9", "1", "a"}, "3(5,9,1) | a"},
    });
}

TEST(GetOpt, TakesForANeededIntegerNoWordThatLooksLikeAnOption) {
    expectTraces({
        {{"-n", "10", "1", "-2", "a"}, "3(10,1,-2) | a"},
        {{"-m", "-5"}, "2(-5) |"},
        {{"-m", "x"}, "2(x) |"},
        {{"-m", "-"}, "2(-) |"},
        {{"-m", "-v"}, "missing -m"},
        {{"-m", "-5x"}, "missing -m"},
        {{"-m", "--"}, "missing -m"},
        {{"-n", "1", "2", "-z"}, "missing -n"},
        {{"--magnify=-v"}, "2(-v) |"},
    });
}

TEST(GetOpt, TakesForANeededTextNoWordThatIsAnOption) {
    expectTraces({
        {{"-u", "-x"}, "4(-x) |"},
        {{"-u", "-vp"}, "4(-vp) |"},
        {{"-u", "-5"}, "4(-5) |"},
        {{"-u", "--verb"}, "4(--verb) |"},
        {{"-u", "--"}, "4(--) |"},
        {{"-u", "-v"}, "missing -u"},
        {{"-u", "--zon"}, "missing -u"},
        {{"-u-v"}, "4(-v) |"},
    });
}

TEST(GetOpt, TakesAnOptionalArgumentUnlessItLooksLikeAnOption) {
    expectTraces({
        {{"-u", "s"}, "4(s) |"},
        {{"-u", "s", "10", "a"}, "4(s,10) | a"},
        {{"-u", "s", "a", "b"}, "4(s,a) | b"},
        {{"-u", "s", "-5", "a"}, "4(s,-5) | a"},
        {{"-u", "s", "-v", "a"}, "4(s) 0() | a"},
        {{"-u", "s", "-", "a"}, "4(s,-) | a"},
        {{"-u", "s", "--", "a"}, "4(s) | a"},
        {{"-us", "10"}, "4(s,10) |"},
    });
}

TEST(GetOpt, EndsTheOptionsAtTheFirstWordThatIsNone) {
    expectTraces({
        {{"a", "-v"}, "| a -v"},
        {{"-v", "a", "-p", "-n5"}, "0() | a -p -n5"},
        {{"-v", "-", "-p"}, "0() | - -p"},
        {{"--", "-v"}, "| -v"},
        {{"-v", "--", "-p", "--"}, "0() | -p --"},
        {{"-v", ""}, "0() | "},
    });
}

TEST(GetOpt, ReportsWhatItDoesNotKnow) {
    expectTraces({
        {{"-x"}, "unknown -x"},
        {{"-vx", "a"}, "0() unknown -x in -vx"},
        {{"--nosuch"}, "unknown --nosuch"},
        {{"--nosuch=3"}, "unknown --nosuch=3"},
        {{"--verb"}, "unknown --verb"},
        {{"--=3"}, "unknown --=3"},
        {{"-v-"}, "0() unknown -- in -v-"},
        {{"-v\xC3\xA9z"}, "0() unknown -\xC3\xA9 in -v\xC3\xA9z"},
        {{"-5"}, "unknown -5"},
    });
}

TEST(GetOpt, ReportsArgumentsThatAreMissingOrTooMany) {
    expectTraces({
        {{"-m"}, "missing -m"},
        {{"--magnify"}, "missing --magnify"},
        {{"-n", "1", "2"}, "missing -n"},
        {{"-vn5", "2"}, "0() missing -n in -vn5"},
        {{"-vm"}, "0() missing -m in -vm"},
        {{"-u"}, "missing -u"},
        {{"--verbose=1"}, "unexpected --verbose=1"},
    });
}

TEST(GetOpt, AResultWithAProblemMatchesNoOption) {
    for (const Words& words : {Words{"-x"}, Words{"-m"}, Words{"--verbose=1"}}) {
        const auto result = parserOf(words).getOpt();
        ASSERT_TRUE(result);
        EXPECT_EQ(GetOpt::getResultIndex(*result), GetOpt::noOption);
    }
}

TEST(GetOpt, AnAbsentArgumentIsEmpty) {
    const auto result = parserOf({"-m", "3"}).getOpt();
    ASSERT_TRUE(result);
    EXPECT_EQ(GetOpt::getResultArg(*result, 0), "3");
    EXPECT_EQ(GetOpt::getResultArg(*result, 1), "");
    EXPECT_EQ(GetOpt::getResultArg(*result, -1), "");
}

TEST(GetOpt, TellsTheWordsThatAreLeftAfterEachOption) {
    GetOpt parser = parserOf({"-v", "-m", "3", "--", "a"});
    EXPECT_EQ(parser.remaining().size(), 5u);
    ASSERT_TRUE(parser.getOpt());
    EXPECT_EQ(parser.remaining().size(), 4u);
    ASSERT_TRUE(parser.getOpt());
    EXPECT_EQ(parser.remaining().size(), 1u);
    EXPECT_FALSE(parser.getOpt());
    EXPECT_FALSE(parser.getOpt());
    EXPECT_EQ(parser.remaining().size(), 1u);
}

}  // namespace
}  // namespace vistel::qdOS
