// Sound on a device that records.
#pragma once

#include <chrono>
#include <thread>

#include "audio/audio_files.h"
#include "audio/sound.h"
#include "platform/headless/headless.h"
#include "platform/process.h"

namespace vistel::test {

namespace headless = platform::headless;

struct SoundTest : testing::Test {
    SoundTest() { headless::resetWaves({}); }

    // So many frames of 16 bits: 0, 1, 2 ...
    static Bytes counted(unsigned frames, unsigned channels = 1) {
        Bytes samples;
        samples.data.reserve(frames * channels * 2);
        for (unsigned i = 0; i < frames * channels; ++i) samples.add(little16(i & 0x7FFF));
        return wave(waveFormat(channels, 16).add(waveChunk("data", samples)));
    }
    static std::vector<uint8_t> soundOf(const Bytes& file) {
        return {file.data.begin() + 44, file.data.end()};
    }
    // Waits for what another thread is to do; false after ten seconds.
    template <class Condition>
    static bool becomes(Condition condition) {
        for (int i = 0; i < 10000; ++i) {
            if (condition()) return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return false;
    }
};

}  // namespace vistel::test
