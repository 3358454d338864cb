#include "viewer/entropy_window.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>

#include "host/messages.h"
#include "iff/sample_tiles.h"
#include "platform/headless/headless.h"
#include "platform/input_event.h"
#include "platform/window.h"
#include "sequence/read_ahead.h"
#include "viewer/window/window_context.h"

namespace vistel {

namespace headless = platform::headless;

namespace {

constexpr uint32_t grey = 0xFF202020, white = 0xFFFFFFFF, red = 0xFF0000FF;

int escapes = 0;

ByteHistogram sample() {
    ByteHistogram histogram;
    histogram.counts[0] = 200;
    histogram.counts[100] = 50;
    histogram.total = 600;
    return histogram;
}

class EntropyWindowTest : public testing::Test {
 protected:
    void SetUp() override {
        headless::reset();
        escapes = 0;
    }
    void TearDown() override { windows.waitUntilClosed(); }
    EntropyWindows windows{[] { ++escapes; }};
};

}  // namespace

TEST_F(EntropyWindowTest, LiesInTheMiddleOfTheScreenWithoutTheTitlesRows) {
    windows.open("1", sample(), "a title", false);
    EXPECT_EQ(headless::title(), "a title");
    EXPECT_EQ(headless::windowRect(), (platform::PixelRect{374, 337, 374 + 532, 337 + 320}));
    windows.open("2", sample(), "", true);
    EXPECT_EQ(headless::windowRect(), (platform::PixelRect{374, 352, 374 + 532, 352 + 320}));
}

TEST_F(EntropyWindowTest, ShowsBarsAndOverThemTheLine) {
    windows.open("1", sample(), "", false);
    for (int time = 0; time < 2; ++time) {
        const headless::Image& shown = headless::visibleImage();
        ASSERT_EQ(shown.width, 532);
        ASSERT_EQ(shown.height, 320);
        EXPECT_EQ(shown.at(9, 10), grey);
        EXPECT_EQ(shown.at(11, 310), white);
        EXPECT_EQ(shown.at(11, 311), grey);
        EXPECT_EQ(shown.at(10, 110), red);  // 200 of 600
        EXPECT_EQ(shown.at(10, 111), white);
        EXPECT_EQ(shown.at(210, 85), white);  // 50 of 200
        EXPECT_EQ(shown.at(210, 35), red);    // 50 of 600
        EXPECT_EQ(shown.at(520, 10), red);
        EXPECT_EQ(shown.at(521, 10), grey);
        headless::exchangeBuffers();
        headless::uncover();
    }
    EXPECT_EQ(headless::presents(), 3);
}

TEST_F(EntropyWindowTest, EscapeClosesItAndIsToldOnce) {
    windows.open("1", sample(), "", false);
    headless::type('A');
    headless::release(keyEscape);
    EXPECT_EQ(escapes, 0);
    EXPECT_TRUE(windows.anyOpen());
    headless::press(keyEscape);
    headless::press(keyEscape);
    EXPECT_EQ(escapes, 1);
    EXPECT_FALSE(windows.anyOpen());
}

TEST_F(EntropyWindowTest, EachIsClosedByItself) {
    windows.open("1", sample(), "first", false);
    platform::Window* const first = headless::window();
    windows.open("2", sample(), "second", false);
    platform::Window* const second = headless::window();
    EXPECT_NE(first, second);
    headless::script([&] { platform::closeWindow(first); });
    headless::script([&] {
        EXPECT_TRUE(windows.anyOpen());
        platform::closeWindow(second);
    });
    windows.waitUntilClosed();
    EXPECT_FALSE(windows.anyOpen());
    EXPECT_EQ(escapes, 0);
}

TEST_F(EntropyWindowTest, ASourceHasASecondOneOnlyWhenItsFirstWasClosed) {
    windows.open("1", sample(), "first", false);
    windows.open("1", sample(), "again", false);
    EXPECT_EQ(headless::windowsOpened(), 1);
    headless::close();
    windows.open("1", sample(), "again", false);
    EXPECT_EQ(headless::title(), "again");
    EXPECT_TRUE(windows.anyOpen());
}

TEST_F(EntropyWindowTest, WithoutOneNobodyWaits) {
    EXPECT_FALSE(windows.anyOpen());
    windows.waitUntilClosed();
}

TEST_F(EntropyWindowTest, WhereEveryThreadCanHaveWindowsNobodyServesIt) {
    headless::allowEveryThread();
    for (int time = 1; time <= 20; ++time) {
        windows.open("1", sample(), "", false);  // closed by the desktop, which has no script
        windows.waitUntilClosed();
        EXPECT_FALSE(windows.anyOpen());
        EXPECT_EQ(headless::windowsOpened(), time);
    }
}

// What the thread sanitizer is to look at.
TEST_F(EntropyWindowTest, ItsThreadSharesNothingWithTheReadingOfTheNextSource) {
    headless::allowEveryThread();
    const test::TemporaryFile file(test::flatImage(7, 64, 64));
    ImageLoadRequest request;
    request.decodeColour = false;
    for (int time = 1; time <= 20; ++time) {
        ReadAhead ahead(2, std::make_shared<ConvertedFiles>());
        std::optional<CountedFile> counted;
        for (int part = 0; part < 2; ++part) {
            const platform::FilePtr stream(platform::openFile(file.name(), "r"));
            request.stream = stream.get();
            request.countTile = countInto(counted);
            ahead.want(file.name(), request);
            FrameStore frame;
            ASSERT_EQ(loadImages(request, frame), iffOk);
            ASSERT_TRUE(counted);
            EXPECT_EQ(counted->histogram.counts[7], 64u * 64 - 2);
            if (part == 0) windows.open("1", counted->histogram, "a title", false);
            counted.reset();
        }
        windows.waitUntilClosed();
        EXPECT_EQ(headless::windowsOpened(), time);
    }
}

using EntropyWindowDeathTest = EntropyWindowTest;

TEST_F(EntropyWindowDeathTest, ARefusedWindowEndsTheProgramWithOneLine) {
    headless::refuseWindow();
    EXPECT_EXIT(windows.open("1", sample(), "", false), testing::ExitedWithCode(1),
                "vistel: no window");
}

TEST_F(EntropyWindowDeathTest, EscapeIsAnInterrupt) {
    const auto escape = [] {
        EntropyWindows inProgram;
        inProgram.open("1", sample(), "", false);
        inProgram.open("2", sample(), "", false);
        headless::script([] { headless::press(keyEscape); });
        inProgram.waitUntilClosed();
        std::exit(platform::interruptRequested() && !inProgram.anyOpen() ? 0 : 2);
    };
    EXPECT_EXIT(escape(), testing::ExitedWithCode(0), "");
}

// --- what is counted, and its title --------------------------------------------------------------

TEST(EntropyTitle, NamesTheFileWithoutItsFolderAndStandardInputByItsImage) {
    CurrentSource source;
    source.fileName = "sub/one.iff";
    source.sourceName = "sub/one.iff";
    CountedFile counted{{}, "in the file"};
    EXPECT_EQ(histogramTitle(source, counted), "VisTel: byte histogram of one.iff");
    for (const char* given : {"", "-", "stdin"}) {
        source.fileName = given;
        source.sourceName = messageText(Message::rVTStdin);
        EXPECT_EQ(histogramTitle(source, counted), "VisTel: byte histogram of in the file");
        EXPECT_EQ(histogramTitle(source, {}), "VisTel: byte histogram of stdin");
    }
    source.fileName = "pipe:cat one";
    source.sourceName = "pipe:cat one";
    EXPECT_EQ(histogramTitle(source, counted), "VisTel: byte histogram of piped command");
}

}  // namespace vistel
