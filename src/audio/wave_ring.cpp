#include "audio/wave_ring.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <vector>

namespace vistel {

std::unique_ptr<WaveRing> WaveRing::open(const WaveConversion& conversion) {
    std::unique_ptr<WaveRing> ring(new WaveRing(conversion));
    ring->size_ = size_t(conversion.format.rate) * size_t(conversion.format.frameBytes());
    ring->ring_ = platform::openWaveRing(conversion.format, ring->size_);
    if (!ring->ring_) ring.reset();
    return ring;
}

WaveRing::~WaveRing() {
    if (timer_) platform::stopWaveTimer(timer_);
    if (!ring_) return;
    platform::stopRing(*ring_);
    platform::closeWaveRing(ring_);
}

// Takes off what was played since it was last asked. False when the device has gone.
bool WaveRing::follow() {
    platform::RingCursors cursors;
    if (!platform::ringCursors(*ring_, cursors)) return false;
    const size_t played = (cursors.play + size_ - lastPlay_) % size_;
    lastPlay_ = cursors.play;
    pending_ -= static_cast<int64_t>(played);
    if (pending_ > 0) return true;
    pending_ = 0;
    end_ = cursors.write;  // nothing is heard: what comes next is heard as soon as can be
    return true;
}

int64_t WaveRing::pendingBytes() {
    const std::lock_guard guard(lock_);
    if (!follow()) pending_ = 0;
    return pending_;
}

int64_t WaveRing::freeSamples() {
    const std::lock_guard guard(lock_);
    const int64_t sampleBytes = conversion_.format.bits / 8;
    return static_cast<int64_t>(size_) / sampleBytes - conversion_.format.rate / 4 -
           pendingBytes() / sampleBytes;
}

// The bytes into the region's parts, then silence to their end.
static void copyInto(const platform::RingRegion& region, const std::vector<uint8_t>& bytes,
                     uint8_t silence) {
    size_t done = 0;
    for (const platform::RingPart& part : region.parts) {
        if (part.size == 0) continue;
        const size_t count = std::min(part.size, bytes.size() - done);
        std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(done), count, part.bytes);
        std::memset(part.bytes + count, silence, part.size - count);
        done += count;
    }
}

bool WaveRing::fill(const void* source, size_t samples) {
    const auto sampleBytes = static_cast<size_t>(conversion_.format.bits / 8);
    std::vector<uint8_t> bytes(samples * sampleBytes);
    convertSamples(conversion_, source, samples, bytes.data());
    const size_t left = size_ - static_cast<size_t>(pending_);
    const size_t silent = static_cast<size_t>(conversion_.format.rate / 4) * sampleBytes;
    const size_t wanted = std::min(left, bytes.size() + silent);

    platform::RingRegion region;
    auto result = platform::lockRing(*ring_, end_, wanted, region);
    if (result == platform::RingLock::lost && platform::restoreRing(*ring_))
        result = platform::lockRing(*ring_, end_, wanted, region);
    if (result != platform::RingLock::locked) return false;
    copyInto(region, bytes, conversion_.silence);
    platform::unlockRing(*ring_, region);
    end_ = (end_ + bytes.size()) % size_;
    pending_ += static_cast<int64_t>(bytes.size());
    return true;
}

bool WaveRing::write(const void* source, size_t samples) try {
    const std::lock_guard guard(lock_);
    if (!follow()) return false;
    const auto sampleBytes = static_cast<size_t>(conversion_.format.bits / 8);
    const size_t room = (size_ - static_cast<size_t>(pending_)) / sampleBytes;
    if (!fill(source, std::min(samples, room))) return false;
    if (!platform::ringPlays(*ring_) && !platform::startRing(*ring_)) return false;
    constexpr unsigned period = 250, resolution = 100;
    if (!timer_) timer_ = platform::startWaveTimer(period, resolution, checkUnderRun, this);
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

void WaveRing::checkUnderRun(void* user) {
    auto& ring = *static_cast<WaveRing*>(user);
    const std::lock_guard guard(ring.lock_);
    if (ring.pendingBytes() == 0) platform::stopRing(*ring.ring_);
}

}  // namespace vistel
