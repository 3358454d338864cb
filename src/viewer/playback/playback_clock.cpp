#include "viewer/playback/playback_clock.h"

#include <algorithm>

#include "platform/clock.h"

namespace vistel {

void PlaybackClock::reset() {
    start_ = platform::tickMilliseconds();
    framesDue_ = 0;
    carried_ = 0;
}

void PlaybackClock::resetAtWrap(int frameRate, int due, float longestLag) {
    const float ahead = timeAhead(frameRate);
    reset();
    framesDue_ = due;
    constexpr float earliest = 2;  // pacing itself lets a frame be so early
    carried_ = std::clamp(ahead - timeAhead(frameRate), -longestLag, earliest);
}

float PlaybackClock::timeAhead(int frameRate) const {
    const uint32_t elapsed = platform::tickMilliseconds() - start_;
    return static_cast<float>(double(framesDue_) * 1000.0 / frameRate + carried_ - double(elapsed));
}

void FpsMeter::count() {
    const uint32_t now = platform::tickMilliseconds();
    if (counted_) milliseconds_ += static_cast<float>(now - lastTick_);
    counted_ = true;
    lastTick_ = now;
    if (++passes_ < passesPerFigure) return;
    if (milliseconds_ != 0) shown_ = 1000.0f / (milliseconds_ / passesPerFigure);
    passes_ = 0;
    milliseconds_ = 0;
}

}  // namespace vistel
