#include "host/environment_number.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "platform/process.h"

namespace vistel {
namespace {

// The number of threads between 1 and 64 that a variable of this name and text sets, else 7.
struct Read {
    uint64_t number = 0;
    std::string said;
};

Read read(const char* name, const char* text) {
    platform::setEnvironmentVariable(name, text);
    testing::internal::CaptureStderr();
    const uint64_t number = environmentNumber({name, 1, 64, Message::rVTThreads}, 7);
    platform::setEnvironmentVariable(name, "");
    return {number, testing::internal::GetCapturedStderr()};
}

TEST(WholeNumber, IsTheWholeTextAndInItsRange) {
    constexpr uint64_t largest = std::numeric_limits<uint64_t>::max();
    const struct {
        const char* text;
        uint64_t least, most;
        std::optional<uint64_t> number;
    } rows[] = {
        {"0", 0, 64, 0},
        {"12", 0, 64, 12},
        {"0012", 0, 64, 12},
        {"64", 0, 64, 64},
        {"65", 0, 64, {}},
        {"3", 4, 64, {}},
        {"4", 4, 64, 4},
        {"18446744073709551615", 0, largest, largest},
        {"18446744073709551616", 0, largest, {}},
        {"99999999999999999999", 0, largest, {}},
        {"", 0, 64, {}},
        {"4x", 0, 64, {}},
        {"x4", 0, 64, {}},
        {"12 ", 0, 64, {}},
        {" 12", 0, 64, {}},
        {"-5", 0, 64, {}},
        {"+5", 0, 64, {}},
        {"1.5", 0, 64, {}},
        {"0x10", 0, 64, {}},
        {"many", 0, 64, {}},
    };
    for (const auto& row : rows)
        EXPECT_EQ(wholeNumberBetween(row.least, row.most, row.text), row.number) << row.text;
}

TEST(EnvironmentNumber, IsTheVariables) {
    const Read one = read("VISTEL_TEST_RIGHT", "12");
    EXPECT_EQ(one.number, 12u);
    EXPECT_EQ(one.said, "");
}

TEST(EnvironmentNumber, WithoutTheVariableIsTheOther) {
    EXPECT_EQ(environmentNumber({"VISTEL_TEST_NONE", 1, 64, Message::rVTThreads}, 7), 7u);
    const Read empty = read("VISTEL_TEST_EMPTY", "");
    EXPECT_EQ(empty.number, 7u);
    EXPECT_EQ(empty.said, "");
}

TEST(EnvironmentNumber, WhatIsNoneIsToldOfWithWhatIsUsed) {
    for (const char* text : {"4x", "0", "65", "-3"}) {
        const Read wrong = read("VISTEL_TEST_WRONG", text);
        EXPECT_EQ(wrong.number, 7u) << text;
        EXPECT_EQ(wrong.said, "VISTEL_TEST_WRONG: \"" + std::string(text) +
                                  "\" is no number of threads from 1 to 64; 7 is used\n");
    }
}

TEST(EnvironmentNumber, IsToldOfOnce) {
    EXPECT_NE(read("VISTEL_TEST_TWICE", "no").said, "");
    const Read again = read("VISTEL_TEST_TWICE", "no");
    EXPECT_EQ(again.number, 7u);
    EXPECT_EQ(again.said, "");
    EXPECT_NE(read("VISTEL_TEST_OTHER", "no").said, "");
}

}  // namespace
}  // namespace vistel
