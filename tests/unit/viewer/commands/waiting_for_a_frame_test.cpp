// Events that arrive while a frame is read in the loop: keys and buttons wait, what carries nothing
// does not take their room.
#include <utility>
#include <vector>

#include "viewer/commands/queued_input.h"
#include "viewer/viewer_fixture.h"

namespace vistel {

namespace headless = platform::headless;

class WaitingForAFrameTest : public ViewerTest {
 protected:
    void SetUp() override {
        ViewerTest::SetUp();
        showAnimation(1, 9);
        windowContext().queue.clear();
        windowContext().viewerRunning = 1;
        viewerState.playMode = PlayMode::stopped;
    }
    // The reader calls now and then; each time this has happened.
    static bool whileReading(int times, const std::function<void(int)>& happens) {
        bool goesOn = true;
        for (int i = 0; i < times && goesOn; ++i) {
            headless::script([&] { happens(i); });
            goesOn = keepReading(viewerState);
        }
        return goesOn;
    }
    static void moveTo(int x, int y) {  // client pixels, the row from the foot
        const platform::PixelRect window = headless::windowRect();
        headless::moveMouse(window.left + x, window.bottom - y);
    }
    static void moveAbout(int times) {
        whileReading(times, [](int i) { moveTo(10 + i, 20 + i); });
    }
    using Events = std::vector<std::pair<int, int>>;  // code, value
    static Events queued() {
        Events events;
        while (!windowContext().queue.empty()) {
            const InputEvent event = windowContext().queue.take();
            events.emplace_back(event.code, event.value);
        }
        return events;
    }
};

TEST_F(WaitingForAFrameTest, MovesAndTicksButOneGoAndKeysStay) {
    whileReading(120, [](int i) {
        postEvent(EV_TIMER, 1);
        moveTo(i, 2 * i);
        if (i == 100) headless::type('R');
        if (i == 110) headless::type('S');
    });
    EXPECT_EQ(queued(), (Events{{EV_TIMER, 1}, {'R', 1}, {'R', 0}, {'S', 1}, {'S', 0}}));
    EXPECT_EQ(windowContext().cursor.x, 119);
    EXPECT_EQ(windowContext().cursor.y, 238);
}

TEST_F(WaitingForAFrameTest, AKeyThatIsHeldIsQueuedOnce) {
    whileReading(120, [](int i) {
        headless::press(']');
        if (i == 60) headless::release(']');
    });
    headless::script([] { headless::release(']'); });
    keepReading(viewerState);
    EXPECT_EQ(queued(), (Events{{']', 1}, {']', 0}, {']', 1}, {']', 0}}));
}

TEST_F(WaitingForAFrameTest, AKeyEndsTheWaitAfterAnyNumberOfOtherEvents) {
    viewerState.sourceIsPipe = 1;
    EXPECT_TRUE(whileReading(60, [](int i) {
        postEvent(EV_TIMER, 1);
        moveTo(i, i);
        if (i == 59) headless::advanceMilliseconds(5000);
    }));
    EXPECT_FALSE(whileReading(1, [](int) { headless::press('R'); }));
}

TEST_F(WaitingForAFrameTest, ADragKeepsItsLastPlaceAndItsEnd) {
    for (const bool scrub : {false, true}) {
        (scrub ? viewerState.dragging.scrub : viewerState.dragging.pan) = true;
        windowContext().cursor.x = windowContext().cursor.y = 5;
        moveAbout(60);
        whileReading(1, [](int) { headless::release(EV_LEFTMOUSE); });
        moveAbout(70);
        EXPECT_EQ(windowContext().cursor.x, 5);  // the loop has not seen it yet
        EXPECT_EQ(queued(), (Events{{EV_MOUSEX, 69},
                                    {EV_MOUSEY, 79},
                                    {EV_LEFTMOUSE, 0},
                                    {EV_MOUSEX, 79},
                                    {EV_MOUSEY, 89}}));
        viewerState.dragging = {};
    }
}

TEST_F(WaitingForAFrameTest, APressStaysWhereItWasMade) {
    moveAbout(60);
    whileReading(1, [](int) { headless::press(EV_LEFTMOUSE); });
    moveAbout(70);
    EXPECT_EQ(windowContext().cursor.x, 69);
    EXPECT_EQ(windowContext().cursor.y, 79);
    EXPECT_EQ(queued(), (Events{{EV_LEFTMOUSE, 1}, {EV_MOUSEX, 79}, {EV_MOUSEY, 89}}));
}

TEST_F(WaitingForAFrameTest, EachMoveOfABrushIsPainted) {
    viewerState.painting.active = true;
    moveAbout(3);
    EXPECT_EQ(windowContext().queue.count(), 6);
    moveAbout(100);
    whileReading(1, [](int) { headless::release(EV_RIGHTMOUSE); });
    const Events events = queued();
    EXPECT_EQ(events.back(), (std::pair{int{EV_RIGHTMOUSE}, 0}));
    EXPECT_EQ(events[events.size() - 3], (std::pair{int{EV_MOUSEX}, 109}));
}

TEST_F(WaitingForAFrameTest, AScrubEndsThoughItsReleaseCameAfterAFloodOfMoves) {
    windowContext().viewerRunning = 0;
    headless::script([] { headless::type(keySpace); });
    headless::script([] { viewerState.currentFrame = 5; });
    headless::script([] { headless::moveMouse(500, 500); });
    headless::script([] { headless::press(EV_LEFTMOUSE); });
    headless::script([] {
        for (int i = 0; i <= 60; ++i) headless::moveMouse(500 + i, 500);  // between two pumps
        headless::release(EV_LEFTMOUSE);
    });
    bool looked = false;
    headless::whenIdle([&] {
        looked = true;
        EXPECT_FALSE(viewerState.dragging.scrub);
        EXPECT_EQ(viewerState.currentFrame, 8);
        headless::close();
    });
    runViewerLoop(viewerState);
    EXPECT_TRUE(looked);
}

}  // namespace vistel
