// The thread that keeps a device supplied with chunks of a track.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>
#include <vector>

#include "audio/audio_output.h"
#include "audio/sound_track.h"

namespace vistel {

class SoundFeeder {
 public:
    SoundFeeder(SoundTrack& track, AudioOutput& output, double speed);
    SoundFeeder(const SoundFeeder&) = delete;
    SoundFeeder& operator=(const SoundFeeder&) = delete;
    ~SoundFeeder() { stop(); }

    // Only this much is played; counts from nothing sent.
    void setFramesToPlay(int64_t frames);

    // Starts the thread and waits for its first chunk, a second at most.
    void start();
    // Ends the thread when what the device has was played.
    void stop();
    // From the start to the stop or the end of the sound.
    bool isRunning() const { return running_; }
    // The next chunk begins with this frame of the track.
    void seek(int64_t frame);
    int64_t position();

    // Reads one chunk and queues it: of the usual size, or an n-th of a second for n of 10 and
    // more. False at the end of the sound, or when the device has gone. Not while the thread runs.
    bool feed(int32_t chunksPerSecond);

    // Frames that were given to the device and are not pending any more.
    int64_t framesPlayed();

 private:
    void run();
    void readChunk(int64_t usual);
    bool sendChunk();
    bool waitForRoom(int64_t frames);
    void signal();

    SoundTrack& track_;
    AudioOutput& output_;
    const double speed_;
    std::vector<uint8_t> chunk_;    // grows with what is asked for
    int64_t wanted_ = 0, got_ = 0;  // frames of the chunk
    std::mutex trackMutex_;
    int64_t toPlay_ = 0;
    std::atomic<int64_t> sent_ = 0;
    std::mutex sendMutex_;  // what is sent and what is pending are counted together

    std::thread thread_;
    std::mutex mutex_;
    std::condition_variable changed_;
    uint64_t passes_ = 0;
    std::atomic<bool> stopped_ = true;
    std::atomic<bool> running_ = false;
};

}  // namespace vistel
