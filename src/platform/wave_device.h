// A device that plays blocks of samples in the order in which it is given them. win32 (wave
// output), linux (a sound server) and headless (one that records) implement all of this each.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace vistel::platform {

// PCM: 8 bits are unsigned, 16 signed in native byte order; channels interleaved.
struct WaveFormat {
    int32_t channels = 2;
    int32_t rate = 44100;
    int32_t bits = 16;

    int32_t frameBytes() const { return bits * channels / 8; }
};

struct WaveDevice;

struct WaveBlock {
    std::vector<uint8_t> samples;
    std::shared_ptr<void> system;  // what the device keeps with a block
};

// Tells on a thread of the system's that a block was played, or given back; it may do no more than
// note that.
using WaveBlockDone = void (*)(void* user, WaveBlock& block);

// Null when there is no device for this format. Takes at most a tenth of a second: a device that
// needs longer is either waited for behind the scenes or does not count as one.
[[nodiscard]] WaveDevice* openWaveDevice(const WaveFormat& format, WaveBlockDone done, void* user);

// Plays a block behind those before it. The block is the device's until it is done; false: it was
// not taken, because the device has gone.
[[nodiscard]] bool playWaveBlock(WaveDevice& device, WaveBlock& block);

// Whether the device refuses to play after all, or has gone: it never takes a block again.
[[nodiscard]] bool waveDeviceHasGone(WaveDevice& device);

// To be called before a block that is done is changed.
void takeWaveBlockBack(WaveDevice& device, WaveBlock& block);

// How many of the bytes that are not done yet the hardware has already: they need no more care, and
// those behind them are all that keeps the sound from breaking off. 0 where nobody knows.
int64_t waveBytesInHardware(WaveDevice& device);

// Ends the sound; every block is done soon.
void resetWaveDevice(WaveDevice& device);

// After a reset. No block is the device's any more, and none is told of.
void closeWaveDevice(WaveDevice* device);

}  // namespace vistel::platform
