// While frames are played from memory nothing is allocated and no file is touched. This program's
// operator new counts.
#include <atomic>
#include <cstdlib>
#include <new>

#include "platform/clock.h"
#include "viewer/picture_view.h"
#include "viewer_fixture.h"

namespace {

std::atomic<size_t> allocations;

void* countedMemory(std::size_t bytes) {
    ++allocations;
    return std::malloc(bytes ? bytes : 1);
}

}  // namespace

void* operator new(std::size_t bytes) {
    if (void* memory = countedMemory(bytes)) return memory;
    throw std::bad_alloc();
}
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
    return countedMemory(bytes);
}
void* operator new[](std::size_t bytes) { return operator new(bytes); }
void* operator new[](std::size_t bytes, const std::nothrow_t& tag) noexcept {
    return operator new(bytes, tag);
}
// g++ 12 takes std::free here for the wrong partner of the operators above: it looks through them.
[[gnu::noinline]] static void freeCounted(void* memory) { std::free(memory); }
void operator delete(void* memory) noexcept { freeCounted(memory); }
void operator delete(void* memory, std::size_t) noexcept { freeCounted(memory); }
void operator delete[](void* memory) noexcept { freeCounted(memory); }
void operator delete[](void* memory, std::size_t) noexcept { freeCounted(memory); }

namespace vistel {

namespace headless = platform::headless;

class PlayedFramesTest : public ViewerTest {
 protected:
    static constexpr int frames = 10;

    void SetUp() override {
        ViewerTest::SetUp();
        showAnimation(1, frames, 1, 100, 60);
        for (int number = 1; number <= frames; ++number)
            keepFrame(number, planesFrame(number, 100, 60));
        viewerState.currentFrame = 1;
        beginDisplay(*viewerSession().slots.find(1));
        viewerState.fileName = "no such file";
        viewerState.frameRate = 300;
        headless::setMicroseconds(5'000'000);
    }

    // Plays with the keys pressed first; counts what is allocated while 200 frames are shown, after
    // a first round.
    void expectNoAllocations(const char* name, const std::function<void()>& pressKeys) {
        constexpr int warmUp = 2 * frames + 5, counted = 200;
        int first = 0;
        size_t before = 0;
        int shownFrames = 0, views = 0;
        size_t made = 0;
        const uint32_t* pixels = nullptr;
        const auto look = [&] {
            const int shown = headless::presents() - first;
            if (shown < warmUp) return;
            if (before == 0) {
                before = allocations;
                pixels = displayedPixels();
            }
            if (shown < warmUp + counted || shownFrames) return;
            made = allocations - before;
            shownFrames = shown - warmUp;
            views = pixels == displayedPixels();
        };
        first = headless::presents();
        pressKeys();
        constexpr int pumps = 1500;
        for (int i = 0; i < pumps; ++i) headless::script([&] { look(); });
        headless::script([] {
            EXPECT_TRUE(playing());
            EXPECT_EQ(viewerSession().readStarted, 0u);  // no frame was read from its file
            EXPECT_EQ(viewerSession().mark, SourceMark::memory);
            EXPECT_NE(shownText(viewerSession().mode == ChannelMode::all ? 0 : 1).find(" Mem"),
                      std::string::npos);
            postEvent(EV_QUIT, 1);
        });
        runViewerLoop();
        EXPECT_GE(shownFrames, counted) << name;
        EXPECT_EQ(made, 0u) << name;
        if (views == 0 && displayIsBuilt_) ADD_FAILURE() << name << ": another display buffer";
    }
    bool displayIsBuilt_ = true;  // not the stored pixels themselves
};

TEST_F(PlayedFramesTest, TheCounterCounts) {
    const size_t before = allocations;
    ::operator delete(::operator new(5));
    ::operator delete[](::operator new[](5, std::nothrow));
    EXPECT_EQ(allocations - before, 2u);
}

TEST_F(PlayedFramesTest, ThePictureAllocatesNothing) {
    displayIsBuilt_ = false;
    expectNoAllocations("picture", [] {});
}

TEST_F(PlayedFramesTest, APlaneAndItsLabelAllocateNothing) {
    expectNoAllocations("red", [] { key('R'); });
}

TEST_F(PlayedFramesTest, TheLuminanceThroughTheLookUpTableAllocatesNothing) {
    expectNoAllocations("luminance", [] {
        key('L');
        key(characterKey(']'), shift);
        key(keyF1);
    });
}

TEST_F(PlayedFramesTest, TheNegativePictureAllocatesNothing) {
    expectNoAllocations("negative", [] { key('X'); });
}

TEST_F(PlayedFramesTest, TheDepthAllocatesNothing) {
    expectNoAllocations("depth", [] { key('Z'); });
}

TEST_F(PlayedFramesTest, AReliefWithProfilesAllocatesNothing) {
    expectNoAllocations("relief", [] {
        key('R');
        key('N', shift);
        key(keyPadMultiply, alt);
    });
}

TEST_F(PlayedFramesTest, PingPongSkippingAndANarrowedRangeAllocateNothing) {
    expectNoAllocations("ping-pong", [] {
        key('R');
        key('S');
        viewerState.frameSkip = 1;
        viewerState.playFirst = 2;
        viewerState.playLast = 8;
    });
}

}  // namespace vistel
