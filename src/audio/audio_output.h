// The device that a sound track is played on: blocks of a wave device, or a ring where that was
// asked for and is there. Safe on every thread.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>

#include "audio/sound_track.h"
#include "audio/wave_queue.h"
#include "audio/wave_ring.h"

namespace vistel {

enum class WaveInterface { waveOutput, ring };

// What the environment asks for (TAVO_USE_DIRECTSOUND) and the system has.
WaveInterface chooseWaveInterface();

class AudioOutput {
 public:
    // Null when there is no device for the track.
    static std::unique_ptr<AudioOutput> open(const SoundTrack& track, WaveInterface interface);

    // Samples as the track reads them. False when the device has gone.
    [[nodiscard]] bool write(const void* frames, int64_t count);
    // Whether the device has refused late, or has gone. Nobody knows of a ring.
    bool deviceHasGone();
    // Samples that were written and have not been played.
    int64_t pendingSamples();
    // Frames that the device is to be given now; less than none when it has more than it needs.
    int64_t freeFrames();
    // Waits until all is played, but not for a device that plays nothing.
    void drain();

    // Samples that the device is to hold (looked at by tests), and the frames in which it gets
    // them, two thirds of that.
    int64_t bufferSamples() const { return bufferSamples_; }
    int64_t chunkFrames() const { return bufferSamples_ * 2 / 3 / conversion_.format.channels; }

 private:
    explicit AudioOutput(const WaveConversion& conversion);

    std::recursive_mutex lock_;
    WaveConversion conversion_;
    int64_t bufferSamples_;
    std::unique_ptr<WaveQueue> queue_;  // one of the two
    std::unique_ptr<WaveRing> ring_;
};

}  // namespace vistel
