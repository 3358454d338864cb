#include "audio/audio_output.h"

#include <algorithm>
#include <chrono>
#include <thread>

#include "platform/process.h"

namespace vistel {

WaveInterface chooseWaveInterface() {
    const bool asked = platform::environmentVariable("TAVO_USE_DIRECTSOUND").has_value();
    return asked && platform::prepareWaveRings() ? WaveInterface::ring : WaveInterface::waveOutput;
}

// 0.15 seconds, within limits.
static int64_t bufferSamplesOf(const platform::WaveFormat& format) {
    const int64_t samples = int64_t{format.rate} * format.channels * 3 / 20;
    return format.channels == 1 ? std::clamp<int64_t>(samples, 1019, 262139)
                                : std::clamp<int64_t>(samples, 510, 131069);
}

AudioOutput::AudioOutput(const WaveConversion& conversion)
    : conversion_(conversion), bufferSamples_(bufferSamplesOf(conversion.format)) {}

std::unique_ptr<AudioOutput> AudioOutput::open(const SoundTrack& track, WaveInterface interface) {
    std::unique_ptr<AudioOutput> output(new AudioOutput(waveConversion(track)));
    if (interface == WaveInterface::ring) output->ring_ = WaveRing::open(output->conversion_);
    if (!output->ring_) output->queue_ = WaveQueue::open(output->conversion_.format);
    if (!output->ring_ && !output->queue_) output.reset();
    return output;
}

bool AudioOutput::write(const void* frames, int64_t count) {
    const std::lock_guard guard(lock_);
    const auto samples = static_cast<size_t>(count * conversion_.format.channels);
    return ring_ ? ring_->write(frames, samples) : queue_->write(conversion_, frames, samples);
}

bool AudioOutput::deviceHasGone() {
    const std::lock_guard guard(lock_);
    return queue_ && queue_->deviceHasGone();
}

int64_t AudioOutput::pendingSamples() {
    const std::lock_guard guard(lock_);
    return (ring_ ? ring_->pendingBytes() : queue_->pendingBytes()) / (conversion_.format.bits / 8);
}

int64_t AudioOutput::freeFrames() {
    const std::lock_guard guard(lock_);
    const int64_t sampleBytes = conversion_.format.bits / 8;
    const int64_t samples =
        ring_ ? ring_->freeSamples() : bufferSamples_ - queue_->bytesAhead() / sampleBytes;
    return samples / conversion_.format.channels;
}

void AudioOutput::drain() {
    using std::chrono::milliseconds;
    constexpr int mostIdlePolls = 250;
    int64_t before = -1;
    int idle = 0;
    for (int64_t pending; (pending = pendingSamples()) > 0 && idle < mostIdlePolls;) {
        idle = pending == before ? idle + 1 : 0;
        before = pending;
        std::this_thread::sleep_for(milliseconds(1));
    }
    std::this_thread::sleep_for(milliseconds(10));
}

}  // namespace vistel
