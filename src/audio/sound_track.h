// A sound file that is played beside the frames: its samples from any place on, faster or slower
// than they were recorded, with silence before them. Used by one thread at a time.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "audio/audio_file.h"

namespace vistel {

class SoundTrack {
 public:
    // None when the library refuses the file (which it reports), or it is nothing that is played:
    // other than 1, 2 or 4 channels, more than 24 bits, no rate.
    static std::optional<SoundTrack> open(const std::string& name);
    // The same, but nothing is reported: `why` becomes the reason, for the person who listens.
    static std::optional<SoundTrack> open(const std::string& name, std::string& why);

    // Why a file that the library opened is not played; null when it is.
    static const char* whyNotPlayed(AFfilehandle& file);

    int32_t fileFormat() const { return fileFormat_; }  // AfFileFormat; nobody in the viewer asks
    int32_t sampleFormat() const { return sampleFormat_; }
    int32_t channels() const { return channels_; }
    int32_t rate() const { return rate_; }  // frames per second, without their fraction
    int64_t frames() const { return frames_; }
    // Bytes of a sample as the device is to get it: 1, 2, or 3 for more than 16 bits.
    int32_t sampleBytes() const { return sampleBytes_; }
    // Bytes of a frame as `read` hands it out.
    int32_t frameBytes() const { return containerBytes_ * channels_; }

    int64_t position() const { return position_; }
    // So many frames of silence come before the file's first; none unless this is called, which the
    // viewer does not: it shifts sound and pictures by seeking.
    void setStart(int64_t frames) { start_ = frames; }
    void seek(int64_t frame);

    // Up to so many frames at a speed (1: as recorded); fewer at the end of the sound.
    int64_t read(void* buffer, int64_t frames, double speed);

 private:
    SoundTrack() = default;
    static std::optional<SoundTrack> load(const std::string& name, const char*& whyNot);
    int64_t readFrames(void* buffer, int64_t frames);
    int64_t readSlower(uint8_t* buffer, int64_t frames, double speed);
    int64_t readFaster(uint8_t* buffer, int64_t frames, double speed);

    struct Closer {
        void operator()(AFfilehandle* file) const { (void)AFclosefile(file); }
    };
    std::unique_ptr<AFfilehandle, Closer> file_;
    int32_t fileFormat_ = 0;
    int32_t sampleFormat_ = 0;
    int32_t sampleBytes_ = 0, containerBytes_ = 0;
    int32_t channels_ = 0;
    int32_t rate_ = 0;
    int64_t frames_ = 0;
    int64_t start_ = 0;     // where the file begins, in frames of the sound
    int64_t position_ = 0;  // where the next read begins
    std::vector<uint8_t> scratch_;
};

}  // namespace vistel
