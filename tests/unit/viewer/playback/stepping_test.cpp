#include "viewer/playback/stepping.h"

#include "viewer/viewer_fixture.h"

namespace vistel {

class SteppingTest : public ViewerTest {
 protected:
    void range(int first, int last, int step, int current) {
        viewerState.firstFrame = viewerState.playFirst = first;
        viewerState.lastFrame = viewerState.playLast = last;
        viewerState.frameStep = step;
        viewerState.currentFrame = current;
    }
    int key(Direction direction) {
        stepFrame(viewerState, {direction, false, false});
        return viewerState.currentFrame;
    }
    int played(Direction direction) {
        viewerState.playMode =
            direction == Direction::forward ? PlayMode::forward : PlayMode::backward;
        stepFrame(viewerState, {direction, true, false});
        return viewerState.currentFrame;
    }
};

TEST_F(SteppingTest, WrapsAtBothEnds) {
    struct Row {
        int first, last, step, current;
        Direction direction;
        int expected;
    };
    const Row rows[] = {
        {1, 10, 1, 5, Direction::forward, 6},   {1, 10, 1, 5, Direction::backward, 4},
        {1, 10, 1, 10, Direction::forward, 1},  {1, 10, 1, 1, Direction::backward, 10},
        {1, 10, 3, 10, Direction::forward, 1},  {1, 10, 3, 1, Direction::backward, 10},
        {1, 9, 3, 1, Direction::backward, 7},   {5, 5, 1, 5, Direction::forward, 5},
        {-5, 5, 4, -5, Direction::backward, 3}, {1, 10, 10, 1, Direction::forward, 1},
    };
    for (const Row& row : rows) {
        range(row.first, row.last, row.step, row.current);
        EXPECT_EQ(key(row.direction), row.expected)
            << row.first << ".." << row.last << " at " << row.current;
    }
}

TEST_F(SteppingTest, PingPongTurnsRoundWhilePlaying) {
    range(1, 10, 1, 10);
    viewerState.pingPong = 1;
    EXPECT_EQ(played(Direction::forward), 9);
    EXPECT_EQ(viewerState.playMode, PlayMode::backward);
    viewerState.currentFrame = 1;
    EXPECT_EQ(played(Direction::backward), 2);
    EXPECT_EQ(viewerState.playMode, PlayMode::forward);
}

TEST_F(SteppingTest, PingPongByKeyReflectsWithoutTurning) {
    range(1, 10, 1, 10);
    viewerState.pingPong = 1;
    EXPECT_EQ(key(Direction::forward), 9);
    EXPECT_EQ(viewerState.playMode, PlayMode::stopped);
}

TEST_F(SteppingTest, APingPongReflectionStaysInTheRange) {
    viewerState.pingPong = 1;
    range(1, 3, 9, 1);
    EXPECT_EQ(key(Direction::forward), 1);  // 2 x 3 - 10 passes the start: the last reachable frame
    range(1, 3, 9, 1);
    EXPECT_EQ(key(Direction::backward), 1);  // 2 x 1 + 8 passes the end: the start
}

TEST_F(SteppingTest, PlayOnceStopsAtTheEnds) {
    range(1, 10, 4, 9);
    viewerState.playOnce = 1;
    EXPECT_EQ(played(Direction::forward), 10);
    EXPECT_EQ(viewerState.playMode, PlayMode::stopped);
    EXPECT_EQ(viewerState.playOnce, 0);
    viewerState.playOnce = 1;
    viewerState.currentFrame = 2;
    EXPECT_EQ(played(Direction::backward), 1);
    EXPECT_EQ(viewerState.playMode, PlayMode::stopped);
}

TEST_F(SteppingTest, AKeyStepWhilePlayingDoesNothing) {
    range(1, 10, 1, 5);
    viewerState.playMode = PlayMode::forward;
    EXPECT_FALSE(stepFrame(viewerState, {Direction::forward, false, false}));
    EXPECT_EQ(viewerState.currentFrame, 5);
    viewerState.paused = 1;
    EXPECT_TRUE(stepFrame(viewerState, {Direction::forward, false, false}));
    EXPECT_EQ(viewerState.currentFrame, 6);
}

TEST_F(SteppingTest, AJumpGoesToTheEndsOfTheRangeEvenWhilePlaying) {
    range(1, 10, 1, 5);
    viewerState.playFirst = 3;
    viewerState.playLast = 8;
    viewerState.playMode = PlayMode::forward;
    EXPECT_TRUE(stepFrame(viewerState, {Direction::forward, false, true}));
    EXPECT_EQ(viewerState.currentFrame, 8);
    EXPECT_TRUE(stepFrame(viewerState, {Direction::backward, false, true}));
    EXPECT_EQ(viewerState.currentFrame, 3);
}

TEST_F(SteppingTest, EveryStepBackIsMarked) {
    struct Row {
        const char* name;
        Direction direction;
        int from;
        bool played, pingPong, skip, marked;
    };
    const Row rows[] = {
        {"back by key", Direction::backward, 5, false, false, false, true},
        {"back by key over the start", Direction::backward, 1, false, false, false, true},
        {"back by playing", Direction::backward, 5, true, false, false, true},
        {"back by playing over the start", Direction::backward, 1, true, false, false, true},
        {"back by playing with skipping", Direction::backward, 5, true, false, true, true},
        {"reflected at the start", Direction::backward, 1, true, true, false, true},
        {"forward by key", Direction::forward, 5, false, false, false, false},
        {"forward by playing", Direction::forward, 5, true, false, false, false},
        {"forward over the end", Direction::forward, 10, true, false, false, false},
    };
    for (const Row& row : rows) {
        range(1, 10, 1, row.from);
        viewerState.pingPong = row.pingPong;
        viewerState.frameSkip = row.skip;
        viewerState.playMode = PlayMode::stopped;
        viewerState.wentBackward = false;
        row.played ? played(row.direction) : key(row.direction);
        EXPECT_EQ(viewerState.wentBackward, row.marked) << row.name;
    }
}

TEST_F(SteppingTest, AJumpToTheStartIsNoStepBack) {
    range(1, 10, 1, 5);
    EXPECT_TRUE(stepFrame(viewerState, {Direction::backward, false, true}));
    EXPECT_EQ(viewerState.currentFrame, 1);
    EXPECT_FALSE(viewerState.wentBackward);
    viewerState.currentFrame = 5;
    EXPECT_TRUE(stepFrame(viewerState, {Direction::backward, false, false}));
    EXPECT_TRUE(viewerState.wentBackward);
}

TEST_F(SteppingTest, AStepThatIsIgnoredMarksNothing) {
    range(1, 10, 1, 5);
    viewerState.playMode = PlayMode::forward;
    stepFrame(viewerState, {Direction::backward, false, false});
    EXPECT_FALSE(viewerState.wentBackward);
}

TEST_F(SteppingTest, FrameSkippingGoesOnUntilTheFrameIsDue) {
    range(1, 100, 1, 1);
    viewerState.frameRate = 25;
    viewerState.frameSkip = 1;
    viewerState.clock.reset();
    platform::headless::advanceMilliseconds(200);  // five frames late
    EXPECT_EQ(played(Direction::forward), 6);
    EXPECT_EQ(viewerState.clock.framesDue(), 5);
    viewerState.frameSkip = 0;
    platform::headless::advanceMilliseconds(1000);
    EXPECT_EQ(played(Direction::forward), 7);
}

TEST_F(SteppingTest, FrameSkippingStopsAtTheEndOfTheRange) {
    range(1, 10, 1, 1);
    viewerState.frameSkip = 1;
    viewerState.clock.reset();
    platform::headless::advanceMilliseconds(1000000);
    EXPECT_EQ(played(Direction::forward), 1);
}

TEST_F(SteppingTest, WrapsForwardWithAStepDueAndBackwardWithNone) {
    range(1, 10, 3, 10);
    played(Direction::forward);
    EXPECT_EQ(viewerState.clock.framesDue(), 3);
    range(1, 10, 3, 1);
    played(Direction::backward);
    EXPECT_EQ(viewerState.clock.framesDue(), 0);
}

TEST_F(SteppingTest, TheExtremesOfFrameNumbersDoNotOverflow) {
    range(INT32_MAX - 2, INT32_MAX, 10, INT32_MAX - 1);
    EXPECT_EQ(key(Direction::forward), INT32_MAX - 2);
    range(INT32_MIN, INT32_MIN + 2, 10, INT32_MIN + 1);
    EXPECT_EQ(key(Direction::backward), INT32_MIN);
    range(INT32_MIN, INT32_MAX, 1, 0);
    EXPECT_EQ(lastReachableFrame(viewerState), INT32_MAX);
}

TEST_F(SteppingTest, RangeBoundsAreSetResetAndExchanged) {
    range(1, 10, 1, 4);
    setRangeStart(viewerState);
    EXPECT_EQ(viewerState.playFirst, 4);
    viewerState.currentFrame = 7;
    setRangeEnd(viewerState);
    EXPECT_EQ(viewerState.playLast, 7);
    setRangeEnd(viewerState);  // on the end: back to the sequence's own
    EXPECT_EQ(viewerState.playLast, 10);
    viewerState.currentFrame = 2;
    setRangeEnd(viewerState);  // before the start: exchanged
    EXPECT_EQ(viewerState.playFirst, 2);
    EXPECT_EQ(viewerState.playLast, 4);
}

}  // namespace vistel
