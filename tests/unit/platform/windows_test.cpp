// What every system's windows promise, on the desktop of plain memory; tests/e2e/test_windows.py
// asks the same of the real ones.
#include "platform/window.h"

#include <gtest/gtest.h>

#include <vector>

#include "platform/headless/headless.h"
#include "platform/menu.h"
#include "platform/surface.h"

namespace vistel {

namespace headless = platform::headless;
using platform::Window;

namespace {

// Whose window it is, and what it has heard.
struct Listener {
    std::vector<int> events, commands;
    int begun = 0, ended = 0, painted = 0, resized = 0;
    Window* closes = nullptr;  // by its commands
};

Listener& listener(void* owner) { return *static_cast<Listener*>(owner); }

platform::WindowSink sinkOf(Listener& owner) {
    return {.owner = &owner,
            .postEvent = [](void* o, int code, unsigned) { listener(o).events.push_back(code); },
            .command =
                [](void* o, int id) {
                    listener(o).commands.push_back(id);
                    platform::closeWindow(listener(o).closes);
                },
            .commandStarts = [](void* o) { ++listener(o).begun; },
            .commandEnds = [](void* o) { ++listener(o).ended; },
            .paint = [](void* o) { ++listener(o).painted; },
            .resized = [](void* o) { ++listener(o).resized; }};
}

class WindowsTest : public testing::Test {
 protected:
    void SetUp() override {
        headless::reset();
        a = platform::openWindow({"a", {10, 20, 110, 70}, true}, sinkOf(ofA));
        b = platform::openWindow({"b", {300, 200, 340, 230}, false}, sinkOf(ofB));
        ASSERT_TRUE(platform::windowExists(a) && platform::windowExists(b));
        ASSERT_TRUE(platform::createSurface(a) && platform::createSurface(b));
    }
    void TearDown() override {
        platform::releaseWindow(a);
        platform::releaseWindow(b);
    }

    static std::vector<uint32_t> pixelsOf(Window* window) {
        int width, height;
        platform::clientArea(window, width, height);
        std::vector<uint32_t> pixels(size_t(width) * height);
        platform::readPixels(window, 0, 0, width, height, pixels.data());
        return pixels;
    }

    Listener ofA, ofB;
    Window *a = nullptr, *b = nullptr;
};

}  // namespace

TEST_F(WindowsTest, each_has_its_own_title_place_and_timer) {
    platform::setWindowTitle(a, "new");
    platform::startTimer(b, 40);
    int width, height, x, y;
    platform::clientArea(a, width, height);
    platform::clientScreenPosition(a, x, y);
    EXPECT_EQ((std::vector{width, height, x, y}), (std::vector{100, 50, 10, 20}));
    platform::clientArea(b, width, height);
    platform::clientScreenPosition(b, x, y);
    EXPECT_EQ((std::vector{width, height, x, y}), (std::vector{40, 30, 300, 200}));
    EXPECT_EQ(headless::title(), "b");
    EXPECT_EQ(headless::timerPeriod(), 40u);
    headless::use(a);
    EXPECT_EQ(headless::title(), "new");
    EXPECT_EQ(headless::timerPeriod(), 0u);
}

TEST_F(WindowsTest, messages_go_to_the_owner_of_the_window_they_are_for) {
    headless::press('B');
    headless::use(a);
    headless::press('A');
    headless::choose(40008);
    headless::uncover();
    platform::placeWindow(a, {0, 0, 64, 64}, true);
    EXPECT_EQ(ofA.events, std::vector{int('A')});
    EXPECT_EQ(ofA.commands, std::vector{40008});
    EXPECT_EQ((std::vector{ofA.begun, ofA.ended, ofA.painted, ofA.resized}),
              (std::vector{1, 1, 1, 2}));
    EXPECT_EQ(ofB.events, std::vector{int('B')});
    EXPECT_TRUE(ofB.commands.empty());
    EXPECT_EQ((std::vector{ofB.begun, ofB.ended, ofB.painted, ofB.resized}),
              (std::vector{0, 0, 0, 1}));
}

TEST_F(WindowsTest, each_has_its_own_picture_and_drawing_state) {
    platform::setColour(a, 255, 0, 0, 255);
    platform::setColour(b, 0, 0, 255, 255);
    platform::setScissorTest(b, true);
    platform::setScissor(b, 0, 0, 10, 10);
    platform::clearSurface(a);
    platform::clearSurface(b);
    EXPECT_EQ(pixelsOf(a), std::vector<uint32_t>(100 * 50, 0xFF0000FF));
    const std::vector<uint32_t> ofB = pixelsOf(b);
    EXPECT_EQ(ofB[9 * 40 + 9], 0xFFFF0000u);
    EXPECT_EQ(ofB[9 * 40 + 10], 0u);
    EXPECT_EQ(ofB[10 * 40 + 9], 0u);
}

TEST_F(WindowsTest, each_has_a_menu_of_its_own) {
    platform::checkMenuItem(a, 40028, true);
    platform::enableMenuItem(a, 40023, true);
    EXPECT_FALSE(headless::menuChecked(40028) || headless::menuEnabled(40023));
    headless::use(a);
    EXPECT_TRUE(headless::menuChecked(40028) && headless::menuEnabled(40023));
}

TEST_F(WindowsTest, closing_one_leaves_the_other_working) {
    platform::closeWindow(a);
    EXPECT_FALSE(platform::windowExists(a) || platform::surfaceExists(a));
    EXPECT_TRUE(platform::windowExists(b) && platform::surfaceExists(b));
    headless::press('B');
    platform::setColour(b, 1, 2, 3, 255);
    platform::clearSurface(b);
    EXPECT_EQ(ofB.events, std::vector{int('B')});
    EXPECT_EQ(pixelsOf(b), std::vector<uint32_t>(40 * 30, 0xFF030201));
}

TEST_F(WindowsTest, waiting_does_not_block_when_a_window_was_just_closed) {
    int waits = 0;
    headless::whenIdle([&] { ++waits; });
    platform::closeWindow(a);
    platform::waitMessage();
    EXPECT_EQ(waits, 0);
    platform::pumpMessages();
    platform::waitMessage();
    EXPECT_EQ(waits, 1);
}

TEST_F(WindowsTest, a_command_may_close_its_own_window) {
    ofB.closes = b;
    headless::choose(40008);
    EXPECT_FALSE(platform::windowExists(b));
    EXPECT_EQ(ofB.ended, 1);
}

// A window that was closed, and none at all.
TEST_F(WindowsTest, calls_on_a_window_that_is_not_there_do_nothing) {
    platform::closeWindow(b);
    const size_t titles = headless::titles().size();
    const int presents = headless::presents();
    for (Window* window : {b, static_cast<Window*>(nullptr)}) {
        int width = -1, height = -1, x = -1, y = -1;
        platform::clientArea(window, width, height);
        platform::clientScreenPosition(window, x, y);
        EXPECT_EQ((std::vector{width, height, x, y}), (std::vector{0, 0, 0, 0}));
        EXPECT_FALSE(platform::windowExists(window) || platform::surfaceExists(window));
        EXPECT_FALSE(platform::createSurface(window));
        platform::setWindowTitle(window, "late");
        platform::placeWindow(window, {0, 0, 9, 9}, true);
        platform::startTimer(window, 1);
        platform::setCursor(window, true);
        platform::checkMenuItem(window, 40028, true);
        platform::enableMenuItem(window, 40028, false);
        platform::setDoubleBuffered(window, true);
        platform::setScissorTest(window, true);
        platform::setScissor(window, 0, 0, 1, 1);
        platform::setColour(window, 1, 1, 1, 1);
        platform::clearSurface(window);
        platform::fillRectangle(window, 0, 0, 1, 1);
        platform::drawLine(window, 0, 0, 1, 1);
        platform::flushSurface(window);
        platform::swapBuffers(window);
        platform::closeWindow(window);
    }
    EXPECT_EQ(headless::titles().size(), titles);
    EXPECT_EQ(headless::presents(), presents);
    EXPECT_EQ(ofB.resized, 1);
    EXPECT_FALSE(headless::menuChecked(40028));
}

TEST_F(WindowsTest, a_refused_window_is_null_and_the_next_one_is_not) {
    headless::refuseWindow();
    EXPECT_EQ(platform::openWindow({"no", {}, true}, sinkOf(ofA)), nullptr);
    Window* const third = platform::openWindow({"yes", {0, 0, 8, 8}, true}, sinkOf(ofA));
    EXPECT_TRUE(platform::windowExists(third));
    platform::releaseWindow(third);
}

}  // namespace vistel
