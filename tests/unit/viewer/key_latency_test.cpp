// A key pressed while frames are played acts on the very next frame that is shown.
#include <vector>

#include "platform/clock.h"
#include "viewer/viewer_fixture.h"

namespace vistel {

namespace headless = platform::headless;

class KeyLatencyTest : public ViewerTest {
 protected:
    struct Shown {
        uint32_t at;  // tick
        ChannelMode mode;
        int presses;  // made before it
    };

    // Plays at a rate; drawing takes so long. Keys are pressed between two frames and, in another
    // round, while one is drawn. Each picture that became visible.
    std::vector<Shown> play(int rate, unsigned drawing, bool whileDrawing) {
        showAnimation(1, 9);
        viewerState.frameRate = rate;
        std::vector<Shown> shown;
        int presses = 0;
        const auto press = [&] {
            const int letters[] = {'R', 'L', 'G', 'C'};
            pressedAt_.push_back(platform::tickMilliseconds());
            headless::type(letters[presses++ % 4]);
        };
        headless::whenPresented([&] {
            shown.push_back({platform::tickMilliseconds(), viewerState.mode, presses});
            if (whileDrawing && shown.size() % 3 == 0) press();
            headless::advanceMilliseconds(drawing);
        });
        // Half of what is waited for the next frame.
        const unsigned frameTime = 1000u / unsigned(rate);
        const unsigned half = drawing < frameTime ? (frameTime - drawing) / 2 : 0;
        size_t pressedAfter = 0;
        for (int i = 0; i < 2000; ++i)
            headless::script([&] {
                if (shown.size() >= 16) return postEvent(EV_QUIT, 1), void();
                if (whileDrawing || shown.size() % 3 != 0 || shown.size() == pressedAfter) return;
                if (platform::tickMilliseconds() < shown.back().at + drawing + half) return;
                pressedAfter = shown.size();
                press();
            });
        runViewerLoop(viewerState);
        EXPECT_GE(presses, 5);
        return shown;
    }

    static ChannelMode modeAfter(int presses) {
        const ChannelMode modes[] = {ChannelMode::all, ChannelMode::red, ChannelMode::luminance,
                                     ChannelMode::green};
        return modes[presses % 4];
    }
    std::vector<uint32_t> pressedAt_;
};

TEST_F(KeyLatencyTest, TheNextFrameShowsWhatAKeyDoes) {
    for (const int rate : {24, 60, 300}) {
        for (const unsigned drawing : {0u, 2u, 50u}) {
            for (const bool whileDrawing : {false, true}) {
                SetUp();
                pressedAt_.clear();
                const auto shown = play(rate, drawing, whileDrawing);
                int before = 0;
                for (const Shown& picture : shown) {
                    ASSERT_EQ(picture.mode, modeAfter(picture.presses))
                        << rate << " frames/s, drawing " << drawing << " ms, press "
                        << picture.presses;
                    if (picture.presses == before) continue;
                    before = picture.presses;
                    const uint32_t waited = picture.at - pressedAt_[size_t(before - 1)];
                    EXPECT_LE(waited, 1000u / unsigned(rate) + drawing + 1)
                        << rate << " frames/s, drawing " << drawing << " ms";
                }
            }
        }
    }
}

TEST_F(KeyLatencyTest, WhileNothingPlaysAKeyActsAtOnce) {
    showAnimation(1, 9);
    viewerState.frameRate = 1;
    uint32_t pressed = 0;
    int idle = 0;
    headless::script([] { headless::type(keySpace); });
    headless::whenIdle([&] {
        if (++idle == 1) {
            pressed = platform::tickMilliseconds();
            return headless::type('R');
        }
        EXPECT_EQ(platform::tickMilliseconds(), pressed);
        EXPECT_EQ(shownText(), "Red");
        headless::close();
    });
    runViewerLoop(viewerState);
    EXPECT_EQ(idle, 2);
}

}  // namespace vistel
