#include "viewer/picture/empty_window.h"

#include "viewer/viewer_fixture.h"

namespace vistel {

namespace headless = platform::headless;

class EmptyWindowTest : public ViewerTest {};

TEST_F(EmptyWindowTest, SaysHowAPictureGetsIntoIt) {
    drawEmptyWindow();  // no window yet
    std::vector<std::string> presented;
    headless::whenPresented([&] {
        std::string all;
        for (const headless::DrawnText& text : headless::visibleTexts()) all += text.text + "|";
        presented.push_back(all);
    });
    headless::script([] { headless::close(); });
    runEmptyWindow(viewerState);
    ASSERT_FALSE(presented.empty());
    for (const char* words : {"Nothing is open", "Open Image", "drop a file", "vistel shot.1"})
        EXPECT_NE(presented.back().find(words), std::string::npos) << words;
}

}  // namespace vistel
