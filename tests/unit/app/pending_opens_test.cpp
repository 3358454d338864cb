#include "app/file_walk.h"

#include <gtest/gtest.h>

#include "app/walk_fixture.h"

namespace vistel {
namespace {

using PendingOpens = WalkTest;

TEST_F(PendingOpens, RequestedFilesAreServedUntilNoneIsLeft) {
    viewerState.pendingOpen = "a";
    viewerState.pendingRange = {1, 9, 2};
    viewerState.pendingRangeSet = 1;
    recorder.opening = [this](const Tstring&) {
        EXPECT_EQ(viewerState.pendingOpen, "");
        EXPECT_EQ(viewerState.pendingRangeSet, 0);
        see();
        return -4;
    };
    recorder.pictures = Recorder::Pictures::ofFailedOnesToo;
    int left = 2;
    recorder.showing = [&] {
        if (--left == 0) return;
        viewerState.pendingOpen = "b";
        viewerState.pendingRange = {};
        viewerState.pendingRangeSet = 1;
    };
    servePendingOpens(services_);
    EXPECT_EQ(recorder.calls,
              "start source\nopen a\nshow a\n"
              "start source\nclear image state\nopen b\nshow b\n");
    ASSERT_EQ(seen_.size(), 2u);
    EXPECT_EQ(range(seen_[0]), "1..9 step 2 at 1, play 1..9");
    EXPECT_EQ(range(seen_[1]), singleFrame);
}

TEST_F(PendingOpens, ARequestWithoutARangeTakesTheRangeOfTheAnimation) {
    viewerState.animation = 1;
    viewerState.firstFrame = 3;
    viewerState.lastFrame = 7;
    viewerState.frameStep = 2;
    viewerState.pendingOpen = "a";
    servePendingOpens(services_);
    EXPECT_EQ(opened(), "[a]");
    ASSERT_EQ(seen_.size(), 1u);
    EXPECT_EQ(range(seen_[0]), "3..7 step 2 at 3, play 3..7");
}

TEST_F(PendingOpens, ARequestedFileCountsFromTheCurrentFolder) {
    viewerState.startDirectory = "elsewhere";
    viewerState.quitRequested = 1;  // how the source before it was left
    viewerState.pendingOpen = "a";
    recorder.opening = [this](const Tstring&) {
        EXPECT_EQ(viewerState.startDirectory, start_);
        EXPECT_EQ(viewerState.quitRequested, 0);
        return 0;
    };
    servePendingOpens(services_);
    EXPECT_EQ(opened(), "[a]");
}

TEST_F(PendingOpens, AFileChosenInTheEmptyWindowIsOpened) {
    recorder.emptyWindow = [] {
        viewerState.pendingOpen = "chosen.iff";
        viewerState.pendingRangeSet = 1;
    };
    walk({});
    servePendingOpens(services_);
    EXPECT_EQ(callsAfterStartUp(),
              "empty window\n"
              "start source\nclear image state\nopen chosen.iff\nshow chosen.iff\n");
    EXPECT_EQ(range(seen_.at(0)), singleFrame);
}

}  // namespace
}  // namespace vistel
