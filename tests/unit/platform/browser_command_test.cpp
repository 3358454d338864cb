#include "platform/browser_command.h"

#include <gtest/gtest.h>

using vistel::platform::browserCommand;

namespace {

constexpr const char* page = "file:///C:/a%20b/VisTel13.html";

struct Row {
    const char *registered, *beforeThePage;
};

}  // namespace

TEST(BrowserCommand, IsCutWhereThePageBelongs) {
    constexpr Row rows[] = {
        {R"("C:\Program Files\b.exe" "%1")", R"("C:\Program Files\b.exe" )"},
        {R"(C:\b.exe -url "%1" -new "%1")", R"(C:\b.exe -url )"},
        {R"(C:\b.exe %1 -again "%1")", R"(C:\b.exe %1 -again )"},  // the one between quotes first
        {R"(C:\b.exe %1)", R"(C:\b.exe )"},
        {R"(C:\b.exe -url %1 %1 -more)", R"(C:\b.exe -url )"},
        {R"(C:\b.exe "-url=%1")", R"(C:\b.exe "-url=)"},
        {R"(C:\b.exe -page)", R"(C:\b.exe -page)"},
        {R"("C:\b.exe" %)", R"("C:\b.exe" %)"},
        {R"("%1")", ""},
        {"", ""},
    };
    for (const Row& row : rows)
        EXPECT_EQ(browserCommand(row.registered, page), std::string(row.beforeThePage) + " " + page)
            << row.registered;
}

// The page's own %20 is none of the command's places.
TEST(BrowserCommand, TakesTheAddressAsItIs) {
    EXPECT_EQ(browserCommand("b.exe %1", "file:///%1/%20"), "b.exe  file:///%1/%20");
}

TEST(BrowserCommand, LeavesSomeBrowsersToTheSystem) {
    for (const char* registered : {R"("C:\N\NETSCP.EXE" "%1")", R"(C:\N\NETSCP6.EXE %1)",
                                   R"(C:\OPERA.EXE "%1")", R"(C:\MOZILLA.EXE -url "%1")"})
        EXPECT_EQ(browserCommand(registered, page), std::nullopt) << registered;
    // The names are compared as they are written.
    for (const char* registered : {R"(C:\opera.exe)", R"(C:\Mozilla.exe)", R"(C:\NETSCP7.EXE)"})
        EXPECT_EQ(browserCommand(registered, page), std::string(registered) + " " + page);
}
