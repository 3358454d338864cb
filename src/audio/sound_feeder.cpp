#include "audio/sound_feeder.h"

#include <algorithm>
#include <chrono>
#include <system_error>

#include "audio/chunk_reading.h"
#include "platform/thread_priority.h"

namespace vistel {

using std::chrono::milliseconds;

SoundFeeder::SoundFeeder(SoundTrack& track, AudioOutput& output, double speed)
    : track_(track), output_(output), speed_(speed) {}

void SoundFeeder::setFramesToPlay(int64_t frames) {
    toPlay_ = frames;
    sent_ = 0;
}

void SoundFeeder::start() try {
    stop();
    stopped_ = false;
    running_ = true;
    passes_ = 0;
    readChunk(output_.chunkFrames());  // the first one is there before the thread is
    thread_ = std::thread([this] { run(); });
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, milliseconds(1000), [this] { return passes_ > 0; });
} catch (const std::system_error&) {
    running_ = false;
}

void SoundFeeder::stop() {
    {
        const std::lock_guard lock(mutex_);
        stopped_ = true;
    }
    changed_.notify_all();
    if (!thread_.joinable()) return;
    thread_.join();
    output_.drain();
}

void SoundFeeder::signal() {
    {
        const std::lock_guard lock(mutex_);
        ++passes_;
    }
    changed_.notify_all();
}

void SoundFeeder::seek(int64_t frame) {
    const std::lock_guard lock(trackMutex_);
    track_.seek(frame);
}

int64_t SoundFeeder::position() {
    const std::lock_guard lock(trackMutex_);
    return track_.position();
}

// Of a device that went in the midst of a chunk, more may be pending than counts as sent.
int64_t SoundFeeder::framesPlayed() {
    const std::lock_guard lock(sendMutex_);
    return std::max<int64_t>(0, sent_ - output_.pendingSamples() / track_.channels());
}

void SoundFeeder::readChunk(int64_t usual) {
    wanted_ = std::min(usual, toPlay_ - sent_);
    const auto bytes = static_cast<uint64_t>(wanted_ * track_.frameBytes());
    got_ = 0;
    if (chunk_.size() < bytes && !makeRoom(chunk_, bytes)) return;
    const std::lock_guard lock(trackMutex_);
    got_ = track_.read(chunk_.data(), wanted_, speed_);
}

// Whether there is more to come.
bool SoundFeeder::sendChunk() {
    const std::lock_guard lock(sendMutex_);
    if (got_ < 1 || !output_.write(chunk_.data(), got_)) return false;
    sent_ += got_;
    return got_ == wanted_ && sent_ < toPlay_;
}

bool SoundFeeder::feed(int32_t chunksPerSecond) {
    if (running_) return false;
    readChunk(chunksPerSecond >= 10 ? track_.rate() / chunksPerSecond : output_.chunkFrames());
    return sendChunk();
}

// Polls the device, every millisecond when the room is near; false when the feeder was stopped
// meanwhile.
bool SoundFeeder::waitForRoom(int64_t frames) {
    std::unique_lock lock(mutex_);
    while (!stopped_) {
        lock.unlock();
        const int64_t missing = frames - output_.freeFrames();
        if (missing <= 0) return true;
        lock.lock();
        const int64_t halfTheWay = missing * 500 / track_.rate();
        changed_.wait_for(lock, milliseconds(std::clamp<int64_t>(halfTheWay, 1, 5)),
                          [this] { return stopped_.load(); });
    }
    return false;
}

void SoundFeeder::run() {
    platform::makeThreadTimeCritical();
    bool more = true;
    for (bool first = true; more; first = false) {
        more = waitForRoom(output_.chunkFrames());
        if (more && !first) readChunk(output_.chunkFrames());
        more = more && sendChunk();
        if (!more) running_ = false;
        signal();
    }
}

}  // namespace vistel
