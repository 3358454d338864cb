// The clock that paces playback, and the frames-per-second figure of the status line. Times come
// from the high-resolution counter in milliseconds; the window's timer paces nothing.
#pragma once

#include <cstdint>

namespace vistel {

constexpr int lowestFrameRate = 1;
constexpr int highestFrameRate = 300;

class PlaybackClock {
 public:
    // Starts counting now: no frame is due, no lag allowed.
    void reset();

    // The range wrapped while playing, the step beyond its end has been counted: starts counting
    // anew with `due` frames due, and with the few milliseconds that the next frame would have been
    // early (up to 2) or late (up to `longestLag`), so that a round takes its nominal time.
    void resetAtWrap(int frameRate, int due, float longestLag);

    // A step of so many frames was made.
    void step(int frames) { framesDue_ += frames; }

    // Milliseconds until the current frame is due at this rate; negative when it is late.
    float timeAhead(int frameRate) const;

    // Later than this many milliseconds the player skips frames when skipping is on. None is
    // allowed: what is late is skipped.
    float allowedLag() const { return 0.0f; }
    int64_t framesDue() const { return framesDue_; }  // looked at by tests

 private:
    uint32_t start_ = 0;  // tick, milliseconds
    int64_t framesDue_ = 0;
    float carried_ = 0;  // milliseconds that a wrap carried over; negative: late
};

// The rate shown in the status line: the average over each 20 passes.
class FpsMeter {
 public:
    // A pass drew an animation frame now.
    void count();
    float shown() const { return shown_; }

 private:
    static constexpr int passesPerFigure = 20;
    int passes_ = 0;
    float milliseconds_ = 0;
    uint32_t lastTick_ = 0;
    bool counted_ = false;
    float shown_ = 0;
};

}  // namespace vistel
