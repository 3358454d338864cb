// Sound as a queue of blocks: a pool of them, grown by ten at a time, whose memory is used again.
#pragma once

#include <atomic>
#include <memory>
#include <vector>

#include "audio/wave_samples.h"

namespace vistel {

class WaveQueue {
 public:
    // Null when there is no device.
    static std::unique_ptr<WaveQueue> open(const platform::WaveFormat& format);
    WaveQueue(const WaveQueue&) = delete;
    WaveQueue& operator=(const WaveQueue&) = delete;
    // Ends the sound and gives all back.
    ~WaveQueue();

    // In blocks of a hundredth of a second: it is by blocks that a device tells what it has played.
    // False when the device has gone or there is no memory.
    [[nodiscard]] bool write(const WaveConversion& conversion, const void* source, size_t samples);
    bool deviceHasGone() const { return platform::waveDeviceHasGone(*device_); }
    // Bytes that were written and have not been played. Safe on every thread.
    int64_t pendingBytes() const { return pending_; }
    // Those of them that still have to reach the hardware.
    int64_t bytesAhead();

 private:
    struct Block : platform::WaveBlock {
        bool used = false;                // the device has something of it to give back
        std::atomic<bool> taken = false;  // by the device, which has not done it yet
    };
    WaveQueue() = default;
    bool writeBlock(const WaveConversion& conversion, const void* source, size_t samples);
    static void blockDone(void* user, platform::WaveBlock& block);
    Block* freeBlock(size_t bytes);

    platform::WaveDevice* device_ = nullptr;
    std::atomic<int64_t> pending_ = 0;
    std::vector<std::unique_ptr<Block>> pool_;
};

}  // namespace vistel
