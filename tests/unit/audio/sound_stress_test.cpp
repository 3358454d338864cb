// All threads of sound at once, for as long as VISTEL_STRESS_SECONDS says: the viewer's, which
// loads, plays, seeks, feeds and unloads in any order, the feeder's, and a device's, which plays in
// unequal steps, goes, comes back, loses blocks and rings, and calls the timer. What races is found
// by the preset "tsan".
#include <atomic>
#include <random>

#include "audio/sound_fixture.h"

namespace vistel::test {
namespace {

using Clock = std::chrono::steady_clock;

// A device with a will of its own while it lives.
class LivelyDevice {
 public:
    LivelyDevice(bool ring, unsigned seed)
        : ring_(ring), thread_([this, seed] { run(std::mt19937(seed)); }) {}
    LivelyDevice(const LivelyDevice&) = delete;
    LivelyDevice& operator=(const LivelyDevice&) = delete;
    ~LivelyDevice() {
        ending_ = true;
        thread_.join();
    }

 private:
    headless::WaveFaults anyFaults(std::mt19937& random) const {
        headless::WaveFaults faults{.playsAtOnce = false, .noRing = !ring_};
        switch (random() % 8) {
            case 0:
                faults.absent = true;
                break;
            case 1:
                faults.blocksToTake = static_cast<int>(random() % 30);
                break;
            case 2:
                faults.blocksToLose = static_cast<int>(random() % 5);
                break;
            case 3:
                faults.ringLost = true;
                break;
            case 4:
                faults.bytesInHardware = static_cast<int64_t>(random() % 20000);
                break;
            case 5:
                faults.playsAtOnce = true;
                break;
            default:
                break;
        }
        return faults;
    }
    void run(std::mt19937 random) {
        while (!ending_) {
            if (random() % 50 == 0) headless::setWaveFaults(anyFaults(random));
            headless::playWaves(random() % 8000);
            if (random() % 10 == 0) headless::fireWaveTimer();
            std::this_thread::sleep_for(std::chrono::microseconds(random() % 1500));
        }
    }

    const bool ring_;
    std::atomic<bool> ending_ = false;
    std::thread thread_;
};

// What the viewer does with every picture, and the levels.
void doLittle(Sound& sound, std::mt19937& random) {
    const auto number = static_cast<int32_t>(random() % 100);
    SoundSetting settings[] = {{soundVolumeLeft, number}, {soundPanRight, number}};
    switch (random() % 6) {
        case 0:
            (void)sound.read(settings);
            (void)sound.deviceHasGone();
            break;
        case 1:
            sound.write(settings);
            break;
        case 2:
            (void)sound.feed(number);
            break;
        case 3:
            sound.feedPicture({.number = number, .goesOn = number % 2 == 0});
            break;
        case 4:
            sound.seek(number, 24);
            break;
        default:
            std::this_thread::sleep_for(std::chrono::microseconds(number));
    }
    EXPECT_GE(sound.timePlayed(), 0.0);
}

// What ends threads and starts them, which takes its time.
void doMuch(Sound& sound, const std::string& file, std::mt19937& random) {
    const double speed = 0.25 + static_cast<double>(random() % 100) / 25;
    switch (random() % 8) {
        case 0:
            (void)sound.load(file);
            break;
        case 1:
            sound.unload();
            break;
        case 2:
            sound.stop();
            break;
        case 3:
            sound.start();
            break;
        case 4:
            sound.play(file, 1.0);
            break;
        default:
            sound.play(file, speed);
    }
}

// The file is heard whole again, whatever went before.
void expectWhole(Sound& sound, const std::string& file, const std::vector<uint8_t>& samples) {
    sound.unload();
    headless::resetWaves({});
    sound.play(file, 1.0);
    ASSERT_TRUE(SoundTest::becomes([&] { return !sound.isPlaying(); }));
    ASSERT_TRUE(headless::recordedWaves().heard == samples);
    sound.unload();
    EXPECT_EQ(headless::recordedWaves().opened, 1);
    EXPECT_EQ(headless::recordedWaves().closed, 1);
}

void stress(bool ring, Clock::duration time) {
    const Bytes bytes = SoundTest::counted(4 * 44100);
    const TemporaryFile file(bytes);
    const auto samples = SoundTest::soundOf(bytes);
    const unsigned seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (const auto end = Clock::now() + time; Clock::now() < end;) {
        headless::resetWaves({.playsAtOnce = false, .noRing = !ring});
        Sound sound;
        {
            const LivelyDevice device(ring, random());
            for (int i = 0; i < 2000 && Clock::now() < end; ++i)
                if (random() % 50 == 0)
                    doMuch(sound, file.name(), random);
                else
                    doLittle(sound, random);
        }
        if (ring) continue;  // it is not played by itself
        ASSERT_NO_FATAL_FAILURE(expectWhole(sound, file.name(), samples));
    }
}

struct SoundStressTest : SoundTest {
    static Clock::duration halfTheTime() {
        const auto seconds = platform::environmentVariable("VISTEL_STRESS_SECONDS");
        return std::chrono::milliseconds(500 * (seconds ? std::stoi(*seconds) : 4));
    }
};

TEST_F(SoundStressTest, BlocksStandAnyOrderOfCallsAndLosses) { stress(false, halfTheTime()); }

TEST_F(SoundStressTest, RingsStandAnyOrderOfCallsAndLosses) {
    platform::setEnvironmentVariable("TAVO_USE_DIRECTSOUND", "1");
    stress(true, halfTheTime());
}

}  // namespace
}  // namespace vistel::test
