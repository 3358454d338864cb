#include "host/messages.h"

#include <gtest/gtest.h>

#include <string>

namespace vistel {
namespace {

TEST(Messages, EveryIdOfTheCatalogueFindsItsText) {
    ASSERT_FALSE(allMessages().empty());
    for (const Message& message : allMessages()) EXPECT_EQ(messageText(message.id), message.text);
}

TEST(Messages, EveryIdIsAFullId) {
    for (const Message& message : allMessages())
        EXPECT_TRUE(std::string(message.id).starts_with("s_VistelStrings.rVT")) << message.id;
}

TEST(Messages, AnUnknownIdStandsForItself) {
    EXPECT_EQ(messageText("s_VistelStrings.rVTNoSuchText"), "s_VistelStrings.rVTNoSuchText");
    EXPECT_EQ(messageText(""), "");
}

TEST(Messages, ATextIsFilledWithItsArguments) {
    EXPECT_EQ(formatMessage("s_VistelStrings.rVTFileName", {"shot.iff"}), "File: shot.iff\n");
}

TEST(Messages, BlanksAtTheEndOfATextAreKept) {
    EXPECT_EQ(messageText("s_VistelStrings.rVTVistelVersionForWin"), "version ");
}

}  // namespace
}  // namespace vistel
