// Sound as a ring of memory that a device plays round and round. What is written goes behind what
// was written before, with silence behind it, lest old sound is heard when nothing more comes; a
// timer then stops the ring.
#pragma once

#include <memory>
#include <mutex>

#include "audio/wave_samples.h"
#include "platform/wave_ring.h"

namespace vistel {

class WaveRing {
 public:
    // A ring of one second; null when there is no device.
    static std::unique_ptr<WaveRing> open(const WaveConversion& conversion);
    WaveRing(const WaveRing&) = delete;
    WaveRing& operator=(const WaveRing&) = delete;
    ~WaveRing();

    // What does not fit is not written. False when the device has gone.
    [[nodiscard]] bool write(const void* source, size_t samples);
    // Bytes that were written and have not been played.
    int64_t pendingBytes();
    // Samples that can be written now: not what is pending, and a quarter of a second stays silent.
    int64_t freeSamples();

 private:
    explicit WaveRing(const WaveConversion& conversion) : conversion_(conversion) {}
    bool follow();
    bool fill(const void* source, size_t samples);
    static void checkUnderRun(void* user);

    std::recursive_mutex lock_;  // the writer's thread and the timer's
    const WaveConversion conversion_;
    platform::WaveRing* ring_ = nullptr;
    platform::WaveTimer* timer_ = nullptr;
    size_t size_ = 0;      // bytes
    size_t end_ = 0;       // offset behind what was written
    size_t lastPlay_ = 0;  // the play cursor, when it was last looked at
    int64_t pending_ = 0;  // bytes between the two
};

}  // namespace vistel
