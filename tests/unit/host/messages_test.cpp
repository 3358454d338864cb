#include "host/messages.h"

#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <string>

#include "golden.h"

namespace vistel {
namespace {

// The id under which the catalogue has the message; empty when it has none.
const char* idOf(Message message) {
    for (const CatalogueEntry& entry : messageCatalogue())
        if (entry.message == message) return entry.id;
    return "";
}

TEST(Messages, EveryMessageFindsItsText) {
    ASSERT_GT(messageCatalogue().size(), 100u);
    for (const CatalogueEntry& entry : messageCatalogue())
        EXPECT_EQ(messageText(entry.message), entry.text) << entry.id;
}

// Read here once more, without the program that makes the table.
TEST(Messages, TheCatalogueIsTheFilesLines) {
    std::set<std::string> written, listed;
    std::ifstream file(fileOfTree("resources/messages.txt"));
    for (std::string line; std::getline(file, line);)
        if (line.starts_with("s_")) written.insert(line.substr(0, line.find(" =")));
    for (const CatalogueEntry& entry : messageCatalogue()) listed.insert(entry.id);
    EXPECT_EQ(listed, written);
    EXPECT_EQ(listed.size(), messageCatalogue().size());
}

TEST(Messages, AnEnumeratorIsItsIdsOwn) {
    EXPECT_STREQ(idOf(Message::rVTNoZBuffer), "s_VistelStrings.rVTNoZBuffer");
    EXPECT_EQ(messageText(Message::rVTNoZBuffer), "This image has no depth plane.");
    EXPECT_STREQ(idOf(Message::rVTOff), "s_VistelStrings.rVTOff");
    EXPECT_EQ(messageText(Message::rVTOff), "off");
}

TEST(Messages, NoneHasNeitherIdNorText) {
    EXPECT_STREQ(idOf(Message::none), "");
    EXPECT_EQ(messageText(Message::none), "");
    EXPECT_EQ(formatMessage(Message::none, {"a"}), "");
}

TEST(Messages, ATextIsFilledWithItsArguments) {
    EXPECT_EQ(formatMessage(Message::rVTFileName, {"shot.iff"}), "File: shot.iff\n");
}

TEST(Messages, BlanksAtTheEndOfATextAreKept) {
    EXPECT_EQ(messageText(Message::rVTVistelVersionForWin), "version ");
}

}  // namespace
}  // namespace vistel
