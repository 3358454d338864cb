// Samples as a sound file has them become what a device plays.
#pragma once

#include <cstddef>
#include <cstdint>

#include "audio/sound_track.h"
#include "platform/wave_device.h"

namespace vistel {

// What is done to each sample on its way to the device.
struct WaveConversion {
    platform::WaveFormat format;
    bool toUnsigned = false;  // signed bytes become unsigned ones
    bool from24To16 = false;  // bits 8 to 23 of a 32-bit sample
    int32_t sourceBytes = 2;  // of a sample before
    uint8_t silence = 0;      // each byte of what is not heard
};

// For samples of 1, 2 or 3 bytes (a 3 stands for 24 bits in 32).
WaveConversion waveConversion(const SoundTrack& track);

void convertSamples(const WaveConversion& conversion, const void* source, size_t samples,
                    uint8_t* device);

}  // namespace vistel
