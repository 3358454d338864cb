#include "audio/wave_queue.h"

#include <new>
#include <thread>

namespace vistel {

std::unique_ptr<WaveQueue> WaveQueue::open(const platform::WaveFormat& format) {
    std::unique_ptr<WaveQueue> queue(new WaveQueue);
    queue->device_ = platform::openWaveDevice(format, blockDone, queue.get());
    if (!queue->device_) queue.reset();
    return queue;
}

// A device that gives nothing back is not waited for without end.
WaveQueue::~WaveQueue() {
    if (!device_) return;
    platform::resetWaveDevice(*device_);
    for (int waits = 0; pending_ > 0 && waits < 1000; ++waits) std::this_thread::yield();
    platform::closeWaveDevice(device_);
}

void WaveQueue::blockDone(void* user, platform::WaveBlock& block) {
    auto& queue = *static_cast<WaveQueue*>(user);
    queue.pending_ -= static_cast<int64_t>(block.samples.size());
    static_cast<Block&>(block).taken = false;
}

// One whose memory has the wanted size already, else any free one, else a new one.
WaveQueue::Block* WaveQueue::freeBlock(size_t bytes) {
    Block* any = nullptr;
    for (const auto& block : pool_) {
        if (block->taken) continue;
        if (block->samples.size() == bytes) return block.get();
        any = block.get();
    }
    if (any) return any;
    constexpr size_t growth = 10;
    for (size_t i = 0; i < growth; ++i) pool_.push_back(std::make_unique<Block>());
    return pool_.back().get();
}

bool WaveQueue::write(const WaveConversion& conversion, const void* source, size_t samples) try {
    const size_t bytes = samples * static_cast<size_t>(conversion.format.bits / 8);
    Block& block = *freeBlock(bytes);
    if (block.used) platform::takeWaveBlockBack(*device_, block);
    block.used = false;
    block.samples.resize(bytes);
    convertSamples(conversion, source, samples, block.samples.data());
    pending_ += static_cast<int64_t>(bytes);
    block.taken = block.used = true;
    if (platform::playWaveBlock(*device_, block)) return true;
    block.taken = block.used = false;
    pending_ -= static_cast<int64_t>(bytes);
    return false;
} catch (const std::bad_alloc&) {
    return false;
}

}  // namespace vistel
