#include "audio/sound.h"

#include <algorithm>
#include <cstdlib>

#include "platform/clock.h"
#include "platform/wave_ring.h"

namespace vistel {

bool Sound::load(const std::string& file) {
    unload();
    if (file.empty()) return false;
    track_ = SoundTrack::open(file, whyNot_);
    if (!track_) return false;
    if (!interface_) interface_ = chooseWaveInterface();
    deviceRate_ = track_->rate();
    whyNot_ = "no sound device plays " + std::to_string(track_->channels()) + " channels at " +
              std::to_string(deviceRate_) + " Hz";
    output_ = AudioOutput::open(*track_, *interface_);
    if (!output_) {
        track_.reset();
        return false;
    }
    track_->seek(0);
    feeder_ = std::make_unique<SoundFeeder>(*track_, *output_, speed_);
    constexpr int64_t seconds = 10000;
    feeder_->setFramesToPlay(
        static_cast<int64_t>(static_cast<double>(seconds * track_->rate()) / speed_));
    return true;
}

void Sound::unload() {
    outOfStep_.reset();
    feeder_.reset();
    output_.reset();
    track_.reset();
}

void Sound::play(const std::string& file, double speed) {
    constexpr double least = 1e-10, most = 1000;  // a chunk of more would not fit into memory
    if (speed > least && speed <= most) speed_ = speed;
    if (load(file)) start();
}

void Sound::start() {
    if (feeder_) feeder_->start();
}

void Sound::stop() {
    if (feeder_) feeder_->stop();
}

bool Sound::feed(int32_t chunksPerSecond) { return feeder_ && feeder_->feed(chunksPerSecond); }

// Whether the sound can go on where it is, though this frame of the track should be next: it is
// near, or was near a moment ago. Pictures that are much too late may be in time again at once.
bool Sound::goesOnAt(int64_t frame, int32_t frameRate) {
    const int64_t rate = track_->rate();
    const int64_t near = std::max(rate * 3 / 4 / frameRate, rate / 40);
    if (std::abs(feeder_->position() - frame) <= near) {
        outOfStep_.reset();
        return true;
    }
    constexpr uint32_t moment = 100;
    const uint32_t now = platform::tickMilliseconds();
    if (!outOfStep_) outOfStep_ = now;
    return now - *outOfStep_ < moment;
}

void Sound::feedPicture(const PictureShown& picture) {
    if (!output_) return;
    const int32_t frameRate = std::max(picture.frameRate, 1);
    const int64_t rate = track_->rate();
    int64_t pending = output_->pendingSamples() / track_->channels();
    const int64_t next = rate * picture.number / frameRate +
                         static_cast<int64_t>(picture.late * track_->rate()) +
                         pending * picture.step;
    if (pending == 0 || !goesOnAt(next, frameRate)) {
        feeder_->seek(next);
        outOfStep_.reset();
    }
    const int64_t wanted = rate * (picture.goesOn ? 3 : 1) / 10;
    const int64_t part = frameRate >= 10 ? rate / frameRate : output_->chunkFrames();
    for (; pending < wanted && feed(frameRate); pending += part) {
    }
}

void Sound::seek(int32_t frame, int32_t frameRate) {
    if (feeder_) feeder_->seek(int64_t{track_->rate()} * frame / std::max(frameRate, 1));
}

double Sound::timePlayed() {
    if (!feeder_) return 0.0;
    return static_cast<double>(feeder_->framesPlayed()) / track_->rate() * speed_;
}

// --- levels --------------------------------------------------------------------------------------

// value x numerator / denominator, rounded to the nearest, halves away from zero.
static int32_t scaled(int64_t value, int64_t numerator, int64_t denominator) {
    const int64_t rounded = (std::abs(value) * numerator + denominator / 2) / denominator;
    return static_cast<int32_t>(value < 0 ? -rounded : rounded);
}

constexpr int32_t mostLevel = 10000;  // hundredths of a decibel

bool Sound::read(std::span<SoundSetting> settings) {
    bool whole = true;
    for (SoundSetting& setting : settings) {
        platform::MixerLevels levels;
        const bool ofMixer =
            setting.parameter >= soundPanRight && setting.parameter <= soundVolumeRight;
        if (ofMixer && (interface_ != WaveInterface::ring || !platform::mixerLevels(levels))) {
            whole = false;
            continue;
        }
        const int32_t right = std::max(levels.pan, 0), left = std::max(-levels.pan, 0);
        int32_t level = 0;
        if (setting.parameter == soundPanRight) level = right;
        if (setting.parameter == soundPanLeft) level = left;
        if (setting.parameter == soundVolumeLeft) level = levels.volume + mostLevel - right;
        if (setting.parameter == soundVolumeRight) level = levels.volume + mostLevel - left;
        setting.value = scaled(level, 255, mostLevel);
        if (setting.parameter == soundChannels) setting.value = 6;
        if (setting.parameter == soundRate) setting.value = deviceRate_;
    }
    return whole;
}

void Sound::write(std::span<const SoundSetting> settings) {
    for (const SoundSetting& setting : settings) {
        if (setting.parameter == soundRate) deviceRate_ = setting.value;
        if (interface_ != WaveInterface::ring) continue;
        const int32_t level = scaled(setting.value, mostLevel, 255);
        if (setting.parameter == soundPanRight) platform::setMixerPan(level);
        if (setting.parameter == soundPanLeft) platform::setMixerPan(-level);
        if (setting.parameter == soundVolumeLeft || setting.parameter == soundVolumeRight)
            platform::setMixerVolume(level - mostLevel);
    }
}

}  // namespace vistel
