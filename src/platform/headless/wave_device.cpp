// A wave device that records what it is given, and plays it as a test says. Threads that play are
// not the test's own: all that it holds is guarded.
#include "platform/wave_device.h"

#include <algorithm>
#include <deque>
#include <mutex>
#include <vector>

#include "platform/headless/headless.h"
#include "platform/wave_ring.h"

namespace vistel::platform {

struct WaveDevice {
    WaveBlockDone done;
    void* user;
    std::deque<WaveBlock*> queue;
    size_t played = 0;  // bytes of the first block
};

struct WaveRing {
    std::vector<uint8_t> bytes;
    size_t play = 0;
    bool plays = false;
};

struct WaveTimer {
    void (*call)(void* user);
    void* user;
};

namespace {

std::recursive_mutex lock;
std::mutex timerCalls;  // held while a timer calls, which takes locks of its own; never inside `lock`
headless::WaveFaults faults;
headless::RecordedWaves recorded;
std::vector<WaveDevice*> devices;  // those that are open
WaveRing* ring = nullptr;
WaveTimer* timer = nullptr;

void noteOpened(const WaveFormat& format) {
    ++recorded.opened;
    recorded.channels = format.channels;
    recorded.rate = format.rate;
    recorded.bits = format.bits;
}

void playBlocks(WaveDevice& device, size_t bytes) {
    while (!device.queue.empty()) {
        WaveBlock& block = *device.queue.front();
        const size_t count = std::min(bytes, block.samples.size() - device.played);
        const auto from = block.samples.begin() + static_cast<std::ptrdiff_t>(device.played);
        if (faults.blocksToLose == 0)
            recorded.heard.insert(recorded.heard.end(), from,
                                  from + static_cast<std::ptrdiff_t>(count));
        device.played += count;
        bytes -= count;
        if (device.played < block.samples.size()) return;
        if (faults.blocksToLose > 0) --faults.blocksToLose;
        device.played = 0;
        device.queue.pop_front();
        device.done(device.user, block);
    }
}

void playRing(size_t bytes) {
    for (; bytes > 0 && ring->plays; --bytes) {
        recorded.heard.push_back(ring->bytes[ring->play]);
        ring->play = (ring->play + 1) % ring->bytes.size();
    }
}

}  // namespace

// --- the device ----------------------------------------------------------------------------------

WaveDevice* openWaveDevice(const WaveFormat& format, WaveBlockDone done, void* user) {
    const std::lock_guard guard(lock);
    if (faults.absent) return nullptr;
    noteOpened(format);
    devices.push_back(new WaveDevice{done, user, {}, 0});
    return devices.back();
}

bool playWaveBlock(WaveDevice& device, WaveBlock& block) {
    const std::lock_guard guard(lock);
    if (faults.blocksToTake == 0) return false;
    if (faults.blocksToTake > 0) --faults.blocksToTake;
    ++recorded.blocks;
    device.queue.push_back(&block);
    if (faults.playsAtOnce) playBlocks(device, SIZE_MAX);
    return true;
}

bool waveDeviceHasGone(WaveDevice&) {
    const std::lock_guard guard(lock);
    return faults.blocksToTake == 0;
}

void takeWaveBlockBack(WaveDevice&, WaveBlock&) {
    const std::lock_guard guard(lock);
    ++recorded.takenBack;
}

int64_t waveBytesInHardware(WaveDevice&) {
    const std::lock_guard guard(lock);
    return faults.bytesInHardware;
}

void resetWaveDevice(WaveDevice& which) {
    const std::lock_guard guard(lock);
    for (WaveBlock* block : which.queue) which.done(which.user, *block);
    which.queue.clear();
}

void closeWaveDevice(WaveDevice* which) {
    const std::lock_guard guard(lock);
    ++recorded.closed;
    std::erase(devices, which);
    delete which;
}

// --- the ring ------------------------------------------------------------------------------------

bool prepareWaveRings() {
    const std::lock_guard guard(lock);
    return !faults.noRing;
}

WaveRing* openWaveRing(const WaveFormat& format, size_t bytes) {
    const std::lock_guard guard(lock);
    if (faults.noRing || faults.absent) return nullptr;
    noteOpened(format);
    ring = new WaveRing{std::vector<uint8_t>(bytes, 0xEE), 0, false};
    return ring;
}

void closeWaveRing(WaveRing* which) {
    const std::lock_guard guard(lock);
    ++recorded.closed;
    if (ring == which) ring = nullptr;
    delete which;
}

bool ringCursors(WaveRing& which, RingCursors& cursors) {
    const std::lock_guard guard(lock);
    cursors = {which.play, which.play};
    return !faults.absent;
}

RingLock lockRing(WaveRing& which, size_t offset, size_t bytes, RingRegion& region) {
    const std::lock_guard guard(lock);
    if (faults.ringLost) return RingLock::lost;
    if (offset >= which.bytes.size() || bytes > which.bytes.size()) return RingLock::failed;
    const size_t first = std::min(bytes, which.bytes.size() - offset);
    region.parts[0] = {which.bytes.data() + offset, first};
    region.parts[1] = {which.bytes.data(), bytes - first};
    lock.lock();  // nothing is played out of memory that is written
    return RingLock::locked;
}

void unlockRing(WaveRing&, const RingRegion&) { lock.unlock(); }

bool restoreRing(WaveRing&) {
    const std::lock_guard guard(lock);
    ++recorded.restored;
    faults.ringLost = false;
    return true;
}

bool ringPlays(WaveRing& which) {
    const std::lock_guard guard(lock);
    return which.plays;
}

bool startRing(WaveRing& which) {
    const std::lock_guard guard(lock);
    which.plays = recorded.ringPlays = true;
    return true;
}

void stopRing(WaveRing& which) {
    const std::lock_guard guard(lock);
    which.plays = recorded.ringPlays = false;
}

bool mixerLevels(MixerLevels& levels) {
    const std::lock_guard guard(lock);
    levels = {recorded.volume, recorded.pan};
    return !faults.noRing;
}

void setMixerVolume(int32_t volume) {
    const std::lock_guard guard(lock);
    recorded.volume = volume;
}

void setMixerPan(int32_t pan) {
    const std::lock_guard guard(lock);
    recorded.pan = pan;
}

WaveTimer* startWaveTimer(unsigned, unsigned, void (*call)(void* user), void* user) {
    const std::lock_guard guard(lock);
    timer = new WaveTimer{call, user};
    return timer;
}

void stopWaveTimer(WaveTimer* which) {
    const std::scoped_lock guard(timerCalls, lock);
    if (timer == which) timer = nullptr;
    delete which;
}

// --- what a test says and asks -------------------------------------------------------------------

void headless::resetWaves(const WaveFaults& wanted) {
    const std::lock_guard guard(lock);
    faults = wanted;
    recorded = {};
}

void headless::setWaveFaults(const WaveFaults& wanted) {
    const std::lock_guard guard(lock);
    faults = wanted;
}

void headless::playWaves(size_t bytes) {
    const std::lock_guard guard(lock);
    for (WaveDevice* device : devices) playBlocks(*device, bytes);
    if (ring) playRing(bytes);
}

headless::RecordedWaves headless::recordedWaves() {
    const std::lock_guard guard(lock);
    return recorded;
}

void headless::fireWaveTimer() {
    const std::lock_guard calling(timerCalls);
    const WaveTimer* running;
    {
        const std::lock_guard guard(lock);
        running = timer;
    }
    if (running) running->call(running->user);
}

}  // namespace vistel::platform
