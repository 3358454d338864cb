#include "platform/file_address.h"

#include <gtest/gtest.h>

#include "platform/files.h"

using namespace vistel::platform;

TEST(FileAddress, HasThreeSlashesAndNoBlanks) {
    EXPECT_EQ(fileAddress("C:/Program Files/Tavo 8/docs/"),
              "file:///C:/Program%20Files/Tavo%208/docs/");
}

TEST(FileAddress, OfAPathThatBeginsWithASlashHasNoFourthOne) {
    if (!programPath().starts_with('/')) GTEST_SKIP() << "paths have no slash in front there";
    EXPECT_EQ(fileAddress("/opt/tavo/docs/"), "file:///opt/tavo/docs/");
    EXPECT_EQ(fileAddress("/50% #1?/\xc3\xa4"), "file:///50%25%20%231%3F/%C3%A4");
}
