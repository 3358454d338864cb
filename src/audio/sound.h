// The sound beside the frames: a track, the device it is played on and what keeps the two in step
// with the pictures. All failures are silent: without a file or a device the pictures go on alone.
// Called on one thread. The interface is whole: playing on its own (play, isPlaying, timePlayed)
// and the levels (read, write) have no caller in the viewer, which feeds the sound picture by
// picture.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "audio/audio_output.h"
#include "audio/sound_feeder.h"
#include "audio/sound_track.h"

namespace vistel {

// Of the mixer, on a scale from 0 to 255.
enum SoundParameter : int32_t {
    soundPanRight = 0,
    soundPanLeft = 1,
    soundVolumeLeft = 2,
    soundVolumeRight = 3,
    soundChannels = 4,
    soundRate = 7,
};
struct SoundSetting {
    int32_t parameter = 0;
    int32_t value = 0;
};

class Sound {
 public:
    Sound() = default;
    Sound(const Sound&) = delete;
    Sound& operator=(const Sound&) = delete;
    ~Sound() { unload(); }

    // Opens the file and a device, ready to play from its start; what was loaded goes. False when
    // there is no name, no such sound or no device, which `whyNot` tells then.
    bool load(const std::string& file);
    const std::string& whyNot() const { return whyNot_; }
    // Whether a device that took its time to open has refused after all, or one that played has gone,
    // which `whyNot` tells then, too.
    bool deviceHasGone() const { return output_ && output_->deviceHasGone(); }
    void unload();
    bool isLoaded() const { return feeder_ != nullptr; }

    // Plays from the start, faster or slower; speeds of nothing, or beyond what is a speed, count
    // for nothing.
    void play(const std::string& file, double speed);
    // Plays on from where the track is.
    void start();
    void stop();
    bool isPlaying() const { return feeder_ && feeder_->isRunning(); }

    // Queues one chunk: an n-th of a second for n of 10 and more. False at the end.
    bool feed(int32_t chunksPerSecond);
    // The picture on screen, counted from that with which the sound began.
    struct PictureShown {
        int32_t number = 0;
        int32_t frameRate = 24;
        double late = 0;      // seconds for which the sound did not wait
        bool goesOn = false;  // others follow at that rate,
        int32_t step = 1;     // each with a number that is so much larger
    };
    // Queues what the device needs from this picture to the next one: so much that the next one may
    // be late. What is queued begins where the sound should be once all before it was heard; it
    // goes on without a break as long as it is in step with the pictures, or soon will be.
    void feedPicture(const PictureShown& picture);
    // To a picture's number at a frame rate.
    void seek(int32_t frame, int32_t frameRate);
    // Seconds of the recording that were heard; 0 without a device.
    double timePlayed();

    // Levels, while the mixer is in use; false where one of them cannot be read.
    bool read(std::span<SoundSetting> settings);
    void write(std::span<const SoundSetting> settings);

    const SoundTrack* track() const { return track_ ? &*track_ : nullptr; }
    int32_t deviceRate() const { return deviceRate_; }  // looked at by tests

 private:
    bool goesOnAt(int64_t frame, int32_t frameRate);

    std::optional<WaveInterface> interface_;  // chosen when first needed
    int32_t deviceRate_ = 22050;              // of the next device
    double speed_ = 1.0;
    std::string whyNot_;
    std::optional<SoundTrack> track_;
    std::unique_ptr<AudioOutput> output_;
    std::unique_ptr<SoundFeeder> feeder_;
    std::optional<uint32_t> outOfStep_;  // since this tick, milliseconds
};

}  // namespace vistel
