#include "viewer/window/event_queue.h"

#include <gtest/gtest.h>

namespace vistel {

TEST(EventQueue, GivesEventsBackInOrder) {
    EventQueue queue;
    queue.post('A', 1);
    queue.post('A', 0);
    EXPECT_EQ(queue.count(), 2);
    EXPECT_EQ(queue.take().value, 1);
    EXPECT_EQ(queue.take().value, 0);
    EXPECT_TRUE(queue.empty());
}

TEST(EventQueue, KeepsOneRedrawOnly) {
    EventQueue queue;
    queue.post('A', 1);
    const int place = queue.post(EV_REDRAW, 1);
    EXPECT_EQ(queue.post(EV_REDRAW, 1), place);
    EXPECT_EQ(queue.count(), 2);
}

TEST(EventQueue, FiftyPostsKeepTheFirstFortyNine) {
    EventQueue queue;
    for (int i = 0; i < 49; ++i) EXPECT_EQ(queue.post('A', static_cast<uint16_t>(i)), i);
    EXPECT_EQ(queue.post('B', 1), 49);
    EXPECT_EQ(queue.count(), 49);
    for (int i = 0; i < 49; ++i) EXPECT_EQ(queue.take().value, i);
    EXPECT_TRUE(queue.empty());
}

TEST(EventQueue, QuitEmptiesAFullQueueAndIsKept) {
    EventQueue queue;
    for (int i = 0; i < 60; ++i) queue.post('A', 1);
    queue.post(EV_QUIT, 1);
    EXPECT_EQ(queue.count(), 1);
    EXPECT_EQ(queue.take().code, EV_QUIT);
}

static void postMove(EventQueue& queue, int column, int row) {
    queue.post(EV_MOUSEX, static_cast<uint16_t>(column));
    queue.post(EV_MOUSEY, static_cast<uint16_t>(row));
}

TEST(EventQueue, MovesLeaveRoomForKeysAndTheLastOneIsKept) {
    EventQueue queue;
    for (int i = 1; i <= 100; ++i) postMove(queue, i, 2 * i);
    const int moves = queue.count() / 2;
    EXPECT_LE(queue.count(), EventQueue::ringSize / 2 + 2);
    for (int i = 0; i < 20; ++i) queue.post('A' + i, 1);
    for (int i = 1; i < moves; ++i) {  // what came first has not been touched
        EXPECT_EQ(queue.take().value, i);
        EXPECT_EQ(queue.take().value, 2 * i);
    }
    EXPECT_EQ(queue.take().value, 100);
    EXPECT_EQ(queue.take().value, 200);
    for (int i = 0; i < 20; ++i) EXPECT_EQ(queue.take().code, 'A' + i);
    EXPECT_TRUE(queue.empty());
}

TEST(EventQueue, AMoveReplacesOnlyTheOneRightBeforeIt) {
    EventQueue queue;
    for (int i = 0; i < EventQueue::ringSize / 2; ++i) queue.post('A', 1);
    for (const int button : {1, 0}) {
        postMove(queue, 10 + button, 20);
        postMove(queue, 30 + button, 40);
        queue.post(EV_LEFTMOUSE, static_cast<uint16_t>(button));
    }
    postMove(queue, 50, 60);
    while (queue.front().code == 'A') queue.take();
    for (const int button : {1, 0}) {
        EXPECT_EQ(queue.take().value, 30 + button);
        EXPECT_EQ(queue.take().value, 40);
        EXPECT_EQ(queue.take().code, EV_LEFTMOUSE);
    }
    EXPECT_EQ(queue.take().value, 50);
    EXPECT_EQ(queue.count(), 1);
}

TEST(EventQueue, TicksDoNotFillTheRing) {
    EventQueue queue;
    for (int i = 0; i < 100; ++i) queue.post(EV_TIMER, 1);
    EXPECT_EQ(queue.count(), EventQueue::ringSize / 2);
    queue.post('A', 1);
    EXPECT_EQ(queue.count(), EventQueue::ringSize / 2 + 1);
}

TEST(EventQueue, CountsTheMovesBeforeTheNextButton) {
    EventQueue queue;
    EXPECT_EQ(queue.movesBeforeButton(), 0);
    for (int i = 0; i < 3; ++i) postMove(queue, i, i);
    queue.post('A', 1);
    postMove(queue, 4, 4);
    EXPECT_EQ(queue.movesBeforeButton(), 4);
    queue.post(EV_RIGHTMOUSE, 1);
    postMove(queue, 5, 5);
    EXPECT_EQ(queue.movesBeforeButton(), 4);
}

TEST(EventQueue, WhileAnEventIsAskedAboutTheQueueHoldsThoseAfterIt) {
    EventQueue queue;
    for (int i = 0; i < 4; ++i) queue.post('A' + i, 1);
    int left = 4;
    queue.drop([&](const InputEvent&) {
        EXPECT_EQ(queue.count(), --left);
        return left == 0;
    });
    EXPECT_EQ(queue.count(), 3);
}

TEST(EventQueue, WrapsRoundItsRing) {
    EventQueue queue;
    for (int i = 0; i < 200; ++i) {
        queue.post('A', static_cast<uint16_t>(i));
        queue.post('B', static_cast<uint16_t>(i));
        EXPECT_EQ(queue.take().value, i);
        EXPECT_EQ(queue.take().code, 'B');
    }
}

TEST(EventQueue, DropsWhatIsUnwantedAndKeepsTheOrderOfTheRest) {
    EventQueue queue;
    for (const int code : {int{'U'}, int{'A'}, int{keyLeftArrow}, int{'B'}, int{'U'}})
        queue.post(code, 1);
    queue.drop(
        [](const InputEvent& event) { return event.code == 'U' || event.code == keyLeftArrow; });
    ASSERT_EQ(queue.count(), 2);
    EXPECT_EQ(queue.take().code, 'A');
    EXPECT_EQ(queue.take().code, 'B');
}

}  // namespace vistel
