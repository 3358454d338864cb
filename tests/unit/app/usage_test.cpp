#include "app/usage.h"

#include <gtest/gtest.h>

#include <set>

#include "app/option_table.h"
#include "golden.h"
#include "host/messages.h"

namespace vistel {
namespace {

bool contains(const Tstring& text, const std::string& part) {
    return text.find(part) != Tstring::npos;
}

std::string bothNames(const OptionRow& row) {
    return std::string("-") + row.shortName + ", --" + row.longName;
}

TEST(OptionTable, NoNameIsThereTwice) {
    std::set<char> shortNames;
    std::set<std::string> longNames;
    for (const OptionRow& row : optionTable()) {
        EXPECT_TRUE(shortNames.insert(row.shortName).second) << row.shortName;
        EXPECT_TRUE(longNames.insert(row.longName).second) << row.longName;
    }
    EXPECT_EQ(optionTable().size(), 32u);
}

TEST(OptionTable, TheOptionsAreDeclaredInTheirOrder) {
    std::string order;
    for (const OptionRow& row : optionTable()) order += row.shortName;
    EXPECT_EQ(order, "GBDCKSTfFRradehpcvzZwgksmlWPtNnu");
}

TEST(OptionTable, EveryOptionHasAText) {
    for (const OptionRow& row : optionTable()) EXPECT_NE(messageText(row.textId), "");
}

TEST(Usage, ListsEveryOption) {
    const Tstring usage = usageText("vistel");
    for (const OptionRow& row : optionTable()) {
        EXPECT_TRUE(contains(usage, "  " + bothNames(row) + " ")) << row.longName;
        EXPECT_TRUE(contains(usage, messageText(row.textId) + "\n")) << row.longName;
        EXPECT_TRUE(contains(usage, row.argumentNames)) << row.longName;
    }
}

TEST(Usage, TheManualListsTheOptionsAsTheyAre) {
    expectGolden(
        "# Options\n\nGenerated from the program's own table "
        "(`src/app/option_table.cpp`).\n\n```\n" +
            optionList() + "```\n",
        fileOfTree("docs/options.md"));
}

TEST(Usage, BeginsWithTheBannerAndNamesTheProgram) {
    for (const char* path : {"vistel", "/opt/bin/vistel", "C:\\Tavo\\bin\\vistel"}) {
        const Tstring usage = usageText(path);
        EXPECT_TRUE(
            usage.starts_with("VisTel version 8.5, image viewer and flipbook player\n"
                              "Usage: vistel [options] [file ...]\n"))
            << usage;
        EXPECT_TRUE(contains(usage, "\"vistel --help\""));
        EXPECT_TRUE(usage.ends_with("\n"));
        EXPECT_FALSE(contains(usage, "^"));
    }
}

TEST(Help, IsTheSixTextsOneBehindTheOther) {
    EXPECT_EQ(helpText(), messageText(Message::rVTHelp1) + messageText(Message::rVTHelp2) +
                              messageText(Message::rVTHelp3) + messageText(Message::rVTHelp4) +
                              messageText(Message::rVTHelp5) + messageText(Message::rVTHelp6));
}

TEST(Help, NamesEveryOptionWithItsArguments) {
    const Tstring help = helpText();
    for (const OptionRow& row : optionTable()) {
        std::string entry = "    " + bothNames(row);
        if (*row.argumentNames) entry += std::string(" ") + row.argumentNames;
        const size_t at = help.find(entry);
        ASSERT_NE(at, Tstring::npos) << entry;
        const char next = help[at + entry.size()];
        EXPECT_TRUE(next == ' ' || next == '\n') << entry;
    }
}

TEST(Help, FitsIntoEightyColumns) {
    const Tstring help = helpText();
    for (size_t start = 0; start < help.size();) {
        const size_t end = help.find('\n', start);
        ASSERT_NE(end, Tstring::npos);
        EXPECT_LE(end - start, 80u) << help.substr(start, end - start);
        start = end + 1;
    }
}

}  // namespace
}  // namespace vistel
