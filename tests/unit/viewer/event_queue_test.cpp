#include "viewer/event_queue.h"

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
