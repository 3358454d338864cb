#include "viewer/playback/frame_slots.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "viewer/frame_folder.h"
#include "viewer/playback/load_animation.h"
#include "viewer/playback/stepping.h"
#include "viewer/viewer_fixture.h"

namespace vistel {

namespace headless = platform::headless;

TEST(FrameSlots, FindsWhatWasKept) {
    FrameSlots slots;
    EXPECT_EQ(slots.find(7), nullptr);
    FrameStore& kept = slots.keep(7, testFrame(7, 4, 3));
    EXPECT_EQ(slots.find(7), &kept);
    EXPECT_EQ(slots.find(8), nullptr);
    slots.drop(7);
    EXPECT_EQ(slots.find(7), nullptr);
    slots.drop(7);
    EXPECT_EQ(slots.count(), 0u);
}

TEST(FrameSlots, AnEmptySlotIsNotFound) {
    FrameSlots slots;
    slots.keep(1, FrameStore{});
    EXPECT_EQ(slots.find(1), nullptr);
}

TEST(FrameSlots, CountsThePlanesOfAllFramesAgainstItsLimit) {
    const size_t one = testFrame(1, 64, 64).memoryBytes();
    FrameSlots slots;
    slots.setLimit(2 * one);
    EXPECT_TRUE(slots.hasRoomFor(1, testFrame(1, 64, 64)));
    slots.keep(1, testFrame(1, 64, 64));
    slots.keep(2, testFrame(2, 64, 64));
    EXPECT_FALSE(slots.hasRoomFor(3, testFrame(3, 64, 64)));
    EXPECT_TRUE(slots.hasRoomFor(2, testFrame(2, 64, 64)));  // in place of what is there
    slots.keep(2, testFrame(2, 64, 64));
    EXPECT_FALSE(slots.hasRoomFor(3, testFrame(3, 64, 64)));
    slots.drop(1);
    EXPECT_TRUE(slots.hasRoomFor(3, testFrame(3, 64, 64)));
    slots.clear();
    slots.keep(1, testFrame(1, 64, 64));
    EXPECT_TRUE(slots.hasRoomFor(2, testFrame(2, 64, 64)));
}

TEST(FrameSlots, TheDepthPlaneCountsToo) {
    const FrameStore colour = planesFrame(1, 64, 64, imageColour);
    const FrameStore both = planesFrame(1, 64, 64, imageColour | imageZ);
    FrameSlots slots;
    slots.setLimit(colour.memoryBytes());
    EXPECT_TRUE(slots.hasRoomFor(1, colour));
    EXPECT_FALSE(slots.hasRoomFor(1, both));
}

// --- how much memory ----------------------------------------------------------------------------

TEST(FrameMemory, IsThreeQuartersOfTheMachinesUnlessToldOtherwise) {
    constexpr size_t megabyte = size_t{1} << 20;
    EXPECT_EQ(usualFrameMegabytes(1000 * megabyte), 750u);
    EXPECT_EQ(usualFrameMegabytes(8 * megabyte), 6u);
    EXPECT_EQ(usualFrameMegabytes(0), 1536u);  // the machine does not tell
}

TEST(FrameMemory, AVariableThatIsNoNumberIsToldOf) {
    const auto said = [](const char* value) {
        platform::setEnvironmentVariable("VISTEL_MEMORY", value);
        testing::internal::CaptureStderr();
        const size_t limit = readFrameMemoryLimit();
        platform::setEnvironmentVariable("VISTEL_MEMORY", "");
        return std::pair{testing::internal::GetCapturedStderr(), limit >> 20};
    };
    EXPECT_EQ(said("0"), (std::pair<std::string, size_t>{"", 0}));
    EXPECT_EQ(said("25"), (std::pair<std::string, size_t>{"", 25}));
    const size_t usual = said("").second;
    EXPECT_EQ(said("12abc"), (std::pair<std::string, size_t>{
                                 "VISTEL_MEMORY: \"12abc\" is no number of megabytes from 0 to "
                                 "1073741824; " +
                                     std::to_string(usual) + " is used\n",
                                 usual}));
}

// --- in the viewer ------------------------------------------------------------------------------

// Frame files shot.1 to shot.6 of 4 x 4 pixels whose red is ten times their number.
class MemoryLimitTest : public ViewerTest {
 protected:
    void SetUp() override {
        ViewerTest::SetUp();
        folder_.emplace();
        FrameFolder::animation("shot", 1, 6);
    }
    void TearDown() override {
        clearViewerSession(viewerState);
        folder_.reset();
    }
    // Loads the animation with room for so many frames. What it said on standard error.
    static std::string load(int frames) {
        FrameStore first;
        EXPECT_EQ(readCurrent(first), 0);
        viewerState.slots.setLimit(first.memoryBytes() * size_t(frames));
        beginDisplay(viewerState, keepFrame(viewerState, 1, std::move(first)));
        testing::internal::CaptureStderr();
        loadRemainingFrames(viewerState);
        return testing::internal::GetCapturedStderr();
    }
    // Plays for so many pumps: red and source mark of each frame shown.
    static std::vector<std::pair<int, SourceMark>> play(int pumps) {
        std::vector<std::pair<int, SourceMark>> shown;
        int presents = headless::presents();
        for (int i = 0; i < pumps; ++i)
            headless::script([&] {
                if (headless::presents() == presents) return;
                presents = headless::presents();
                const PictureLayout& layout = viewerState.layout;
                shown.emplace_back(
                    headless::visibleImage().at(layout.marginX, layout.marginY) & 255,
                    viewerState.mark);
            });
        headless::script([] { headless::close(); });
        runViewerLoop(viewerState);
        return shown;
    }

    std::optional<FrameFolder> folder_;
};

TEST_F(MemoryLimitTest, FramesBeyondTheLimitAreReadWhenTheyAreShown) {
    const std::string said = load(3);
    EXPECT_EQ(viewerState.slots.count(), 3u);
    EXPECT_NE(said.find("From frame 4 on"), std::string::npos) << said;
    EXPECT_EQ(viewerState.currentFrame, 1);
    viewerState.frameRate = 300;
    const auto shown = play(400);
    ASSERT_GT(shown.size(), 20u);
    for (size_t i = 1; i < shown.size(); ++i) {
        const int number = int(i % 6) + 1;
        EXPECT_EQ(shown[i].first, number * 10) << i;
        EXPECT_EQ(shown[i].second, number <= 3 ? SourceMark::memory : SourceMark::disk) << i;
    }
}

TEST_F(MemoryLimitTest, FramesPlayedFromTheirFilesHaveBeenReadAhead) {
    for (int number = 1; number <= 6; ++number) {  // files that rest
        const fs::path file = "shot." + std::to_string(number);
        fs::last_write_time(file, fs::last_write_time(file) - std::chrono::hours(1));
    }
    platform::setEnvironmentVariable("VISTEL_THREADS", "1");  // room for three of the six frames
    viewerState.kmem = 0;
    load(6);
    viewerState.frameRate = 300;
    size_t taken = 0;
    for (int i = 0; i < 400; ++i)
        headless::script([&] {
            if (viewerState.ahead) taken = viewerState.ahead->taken();
        });
    const size_t shown = play(1).size() + size_t(headless::presents());
    platform::setEnvironmentVariable("VISTEL_THREADS", "");
    ASSERT_GT(shown, 20u);
    EXPECT_GT(taken, shown / 2);
}

TEST_F(MemoryLimitTest, ReadingAheadBeginsBeforeTheFirstFrameThatIsNotInMemory) {
    struct Row {
        const char* name;
        int frames;  // that fit in memory
        PlayMode mode;
        int shown;
        bool ahead;
    };
    const Row rows[] = {
        {"the next frame is on disk", 3, PlayMode::forward, 3, true},
        {"the next but one", 3, PlayMode::forward, 2, true},
        {"backward, beyond the start", 3, PlayMode::backward, 1, true},
        {"stopped", 3, PlayMode::stopped, 3, false},
        {"all in memory", 6, PlayMode::forward, 3, false},
    };
    platform::setEnvironmentVariable("VISTEL_THREADS", "1");
    for (const Row& row : rows) {
        clearViewerSession(viewerState);
        viewerState.currentFrame = 1;
        load(row.frames);
        viewerState.playMode = row.mode;
        viewerState.currentFrame = row.shown;
        showFrame(viewerState, FrameSource::kept);
        EXPECT_EQ(viewerState.mark, SourceMark::memory) << row.name;
        EXPECT_EQ(viewerState.ahead != nullptr, row.ahead) << row.name;
    }
    platform::setEnvironmentVariable("VISTEL_THREADS", "");
}

TEST_F(MemoryLimitTest, WithRoomForAllNothingIsReadAgain) {
    EXPECT_EQ(load(6), "");
    EXPECT_EQ(viewerState.slots.count(), 6u);
    viewerState.frameRate = 300;
    for (const auto& [red, mark] : play(400)) EXPECT_EQ(mark, SourceMark::memory) << red;
}

TEST_F(MemoryLimitTest, WithoutSlotsEachFrameIsReadAsItIsShown) {
    viewerState.kmem = 0;
    EXPECT_EQ(load(6), "");
    EXPECT_EQ(viewerState.slots.count(), 0u);
    viewerState.frameRate = 300;
    const auto shown = play(400);
    ASSERT_GT(shown.size(), 12u);
    for (size_t i = 1; i < shown.size(); ++i) {
        EXPECT_EQ(shown[i].first, int(i % 6 + 1) * 10) << i;
        EXPECT_EQ(shown[i].second, SourceMark::disk) << i;
    }
}

TEST_F(MemoryLimitTest, AFrameThatHasGrownLeavesItsSlot) {
    load(6);
    FrameStore larger = testFrame(2, 640, 480);
    ASSERT_FALSE(viewerState.slots.hasRoomFor(2, larger));
    FrameStore& kept = keepFrame(viewerState, 2, std::move(larger));
    EXPECT_EQ(&kept, &viewerState.loose);
    EXPECT_EQ(viewerState.slots.find(2), nullptr);  // what it held is out of date
    EXPECT_EQ(viewerState.slots.count(), 5u);
}

TEST_F(MemoryLimitTest, AReloadReadsTheFileAgainAndKeepsTheView) {
    load(6);
    key('R');
    FrameFolder::write("shot.1", 200);
    EXPECT_TRUE(key('U'));
    EXPECT_EQ(viewerState.mark, SourceMark::disk);
    EXPECT_EQ(viewerState.mode, ChannelMode::red);
    EXPECT_EQ(viewerState.slots.find(1), viewerState.shown);
    expectPicture([](int, int) { return 200 * 0x010101u; });
}

TEST_F(MemoryLimitTest, AReloadByKeySaysSoExceptWhileScrubbing) {
    load(6);
    windowContext().drawPass = [] { drawPass(viewerState); };
    static std::vector<std::string> texts;  // on screen while the file is read
    viewerState.goOn = [] {
        const auto& shown = headless::visibleTexts();
        texts.push_back(shown.empty() ? "" : shown.back().text);
        return true;
    };
    redraw();
    const auto readBy = [](int code) {
        texts.clear();
        key(code);
        return std::exchange(texts, {});
    };
    const std::string reloading = "Reloading the image ...";
    auto seen = readBy('U');
    ASSERT_FALSE(seen.empty());
    for (const std::string& text : seen) EXPECT_EQ(text, reloading);
    redraw();
    viewerState.dragging.scrub = true;
    seen = readBy('U');
    ASSERT_FALSE(seen.empty());
    for (const std::string& text : seen) EXPECT_NE(text, reloading);
    viewerState.dragging.scrub = false;
    viewerState.slots.drop(2);
    seen = readBy(keyRightArrow);  // read because it is not in memory
    ASSERT_FALSE(seen.empty());
    EXPECT_EQ(viewerState.currentFrame, 2);
    for (const std::string& text : seen) EXPECT_NE(text, reloading);
}

TEST_F(MemoryLimitTest, PaintIsGoneAfterAReload) {
    load(6);
    viewerState.shown->colour.data()[5] = 0xFFFFFFFF;
    key('U');
    expectPicture([](int, int) { return 10u; });
}

// --- reading ahead ------------------------------------------------------------------------------

// The frames that are announced are those that playing then shows.
TEST_F(MemoryLimitTest, TheFramesThatAreExpectedAreThoseThatPlayingShows) {
    struct Row {
        const char* name;
        int first, last, step, from;
        PlayMode mode;
        bool pingPong, once;
    };
    const Row rows[] = {
        {"round", 1, 6, 1, 3, PlayMode::forward, false, false},
        {"round backward", 1, 6, 1, 3, PlayMode::backward, false, false},
        {"round in steps", 1, 10, 3, 4, PlayMode::forward, false, false},
        {"round backward in steps", 1, 9, 3, 4, PlayMode::backward, false, false},
        {"back and forth", 1, 6, 1, 3, PlayMode::forward, true, false},
        {"back and forth from the end", 1, 6, 1, 6, PlayMode::forward, true, false},
        {"forth and back", 1, 6, 1, 3, PlayMode::backward, true, false},
        {"back and forth in steps", 1, 9, 4, 5, PlayMode::forward, true, false},
        {"back and forth in large steps", 1, 3, 9, 2, PlayMode::forward, true, false},
        {"single frame", 5, 5, 1, 5, PlayMode::forward, false, false},
        {"single frame, back and forth", 5, 5, 1, 5, PlayMode::backward, true, false},
        {"once", 1, 6, 1, 3, PlayMode::forward, false, true},
        {"once backward", 1, 6, 1, 3, PlayMode::backward, false, true},
        {"once in steps", 1, 10, 4, 5, PlayMode::forward, false, true},
        {"once, back and forth", 1, 6, 1, 4, PlayMode::forward, true, true},
    };
    for (const Row& row : rows) {
        viewerState.playFirst = row.first;
        viewerState.playLast = row.last;
        viewerState.frameStep = row.step;
        viewerState.currentFrame = row.from;
        viewerState.playMode = row.mode;
        viewerState.pingPong = row.pingPong;
        viewerState.playOnce = row.once;
        const std::vector<int> expected = upcomingFrames(viewerState, 12);
        std::vector<int> shown;
        while (shown.size() < 12 && playing(viewerState)) {
            const bool backward = viewerState.playMode == PlayMode::backward;
            stepFrame(viewerState,
                      {backward ? Direction::backward : Direction::forward, true, false});
            shown.push_back(viewerState.currentFrame);
        }
        EXPECT_EQ(expected, shown) << row.name;
    }
    viewerState.playMode = PlayMode::stopped;
    EXPECT_TRUE(upcomingFrames(viewerState, 5).empty());
    viewerState.playMode = PlayMode::forward;
    viewerState.paused = 1;
    EXPECT_TRUE(upcomingFrames(viewerState, 5).empty());
}

}  // namespace vistel
