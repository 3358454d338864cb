// The result codes and their texts.

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <string>

#include "iff/result_codes.h"

namespace vistel {
namespace {

struct CodeRow {
    int code;
    const char* text;
};

// Written down a second time on purpose: numbers and texts are what users and scripts see.
constexpr CodeRow expectedTexts[] = {
    {0, "no error"},
    {-1, "end of group or file"},
    {-2, "parsing complete"},
    {-3, "IO error"},
    {-4, "not an IFF file"},
    {-5, "IO aborted"},
    {-6, "client error"},
    {-7, "bad block"},
    {-8, "block too short"},
    {-9, "bad IFF file"},
    {-10, "broken pipe"},
    {-11, "file incomplete"},
    {-12, "partial IO"},
    {-13, "function not yet implemented"},
    {-14, "block ignored"},
    {-15, "not a file"},
    {-16, "bad root block"},
    {-17, "IO past block boundary"},
    {-18, "unexpected block"},
    {-19, "no end marker"},
    {-20, "bad size"},
    {-21, "opening context not valid"},
    {-22, "closing context not valid"},
    {-23, "bad end marker"},
    {-24, "bad block end"},
    {-25, "invalid function on a fifo"},
    {-26, "bad pointer location"},
    {-27, "alignment error"},
    {-28, "compression error"},
    {-29, "no parent"},
    {-30, "file is read only"},
    {-31, "file is write only"},
    {-32, "file in use"},
    {-33, "list or concatenation not allowed"},
    {-80, "no memory"},
    {-97, "user error"},
    {-98, "internal error"},
    {-99, "debug marker"},
    {-100, "no image header"},
    {-101, "bad image header"},
    {-102, "bad image size"},
    {-103, "page IO in scanline mode"},
    {-104, "line IO in page mode"},
    {-105, "color IO on a black image"},
    {-106, "image has no Z plane"},
    {-107, "partial image IO"},
    {-108, "IO after image end"},
    {-109, "image has no mask"},
    {-110, "bad image tiling"},
    {-111, "image too large to be used as a map"},
    {-112, "unordered image can not be used as a map"},
    {-113, "image has no 16 bits channel"},
};

TEST(ResultCodes, TheTableHoldsEveryCodeWithItsText) {
    ASSERT_EQ(resultTexts().size(), std::size(expectedTexts));
    for (size_t i = 0; i < std::size(expectedTexts); ++i) {
        EXPECT_EQ(resultTexts()[i].code, expectedTexts[i].code);
        EXPECT_STREQ(resultTexts()[i].text, expectedTexts[i].text);
    }
}

TEST(ResultCodes, AListedCodeIsShownByItsMagnitudeAndText) {
    for (const CodeRow& row : expectedTexts) {
        if (row.code == -3) continue;
        EXPECT_EQ(errorText(row.code), "(" + std::to_string(-row.code) + ") " + row.text);
    }
}

TEST(ResultCodes, AnIoErrorCarriesTheSystemsText) {
    for (const int number : {ENOENT, ENOSPC, EACCES}) {
        errno = number;
        EXPECT_EQ(errorText(-3), std::string("(3) ") + std::strerror(number));
    }
}

TEST(ResultCodes, APositiveCodeIsInvalid) {
    EXPECT_EQ(errorText(5), "invalid error code");
    EXPECT_EQ(errorText(INT_MAX), "invalid error code");
}

TEST(ResultCodes, AnUnlistedCodeIsUnknown) {
    EXPECT_EQ(errorText(-50), "(50) unknown error code");
    EXPECT_EQ(errorText(-114), "(114) unknown error code");
    EXPECT_EQ(errorText(INT_MIN), "(2147483648) unknown error code");
}

TEST(ResultCodes, AReportIsTheTextAndALineEndOnStandardError) {
    testing::internal::CaptureStderr();
    reportError(-28);
    reportError(-50);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "(28) compression error\n(50) unknown error code\n");
}

}  // namespace
}  // namespace vistel
