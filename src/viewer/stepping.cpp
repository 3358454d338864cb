#include "viewer/stepping.h"

#include <utility>

#include "app/viewer_state.h"
#include "viewer/viewer_session.h"

namespace vistel {

namespace {

// Milliseconds by which playing that skips frames may be late from one round to the next.
constexpr float longestSkippedLag = 250;

bool pastRange(Direction direction, int64_t frame) {
    return direction == Direction::forward ? frame > viewerState.playLast
                                           : frame < viewerState.playFirst;
}

int endOfRange(Direction direction) {
    return direction == Direction::forward ? viewerState.playLast : viewerState.playFirst;
}

// The step itself; while playback is late and may skip, further ones up to the range's end.
int64_t advance(const Step& step) {
    int64_t frame = viewerState.currentFrame;
    PlaybackClock& clock = playbackClock();
    do {
        frame += int64_t{stepSize()} * static_cast<int>(step.direction);
        clock.step(stepSize());
    } while (step.synthetic && viewerState.frameSkip && !pastRange(step.direction, frame) &&
             clock.timeAhead(effectiveFrameRate()) < clock.allowedLag());
    return frame;
}

void restartClock(const Step& step) {
    const int due = step.direction == Direction::forward ? stepSize() : 0;
    if (step.synthetic) {
        const float frameTime = 1000.0f / float(effectiveFrameRate());
        const float longestLag = viewerState.frameSkip ? longestSkippedLag : frameTime;
        playbackClock().resetAtWrap(effectiveFrameRate(), due, longestLag);
    } else {
        playbackClock().reset();
        playbackClock().step(due);
    }
}

int reflected(Direction direction, int64_t frame) {
    const int64_t first = viewerState.playFirst, last = viewerState.playLast;
    if (direction == Direction::forward) {
        const int64_t back = 2 * last - frame;
        return static_cast<int>(back < first ? lastReachableFrame() : back);
    }
    const int64_t forth = 2 * first - frame;
    return static_cast<int>(forth > last ? first : forth);
}

// The frame on the other side of the range's end, where playing goes on.
int wrapped(Direction direction, int64_t frame) {
    if (viewerState.pingPong) return reflected(direction, frame);
    return direction == Direction::forward ? viewerState.playFirst : lastReachableFrame();
}

// The frame to go on with beyond an end of the range.
int beyondEnd(const Step& step, int64_t frame) {
    const bool forward = step.direction == Direction::forward;
    if (viewerState.playOnce) {
        viewerState.playOnce = 0;
        viewerState.playMode = PlayMode::stopped;
        return endOfRange(step.direction);
    }
    if (viewerState.pingPong && playing())
        viewerState.playMode = forward ? PlayMode::backward : PlayMode::forward;
    return wrapped(step.direction, frame);
}

}  // namespace

int stepSize() { return viewerState.frameStep > 0 ? viewerState.frameStep : 1; }

int lastReachableFrame() {
    const int64_t first = viewerState.playFirst, span = int64_t{viewerState.playLast} - first;
    return static_cast<int>(first + span / stepSize() * stepSize());
}

UpcomingFrames::UpcomingFrames()
    : frame_(viewerState.currentFrame),
      direction_(viewerState.playMode == PlayMode::forward ? Direction::forward
                                                           : Direction::backward),
      ended_(!playing()) {}

std::optional<int> UpcomingFrames::next() {
    if (ended_) return std::nullopt;
    frame_ += int64_t{stepSize()} * static_cast<int>(direction_);
    if (pastRange(direction_, frame_)) {
        ended_ = viewerState.playOnce != 0;
        frame_ = ended_ ? endOfRange(direction_) : wrapped(direction_, frame_);
        if (viewerState.pingPong)
            direction_ = static_cast<Direction>(-static_cast<int>(direction_));
    }
    return static_cast<int>(frame_);
}

std::vector<int> upcomingFrames(size_t count) {
    std::vector<int> frames;
    UpcomingFrames upcoming;
    while (frames.size() < count) {
        const std::optional<int> frame = upcoming.next();
        if (!frame) break;
        frames.push_back(*frame);
    }
    return frames;
}

bool stepFrame(const Step& step) {
    if (!step.synthetic && !step.toEnd && playing()) return false;
    if (!step.synthetic && step.toEnd) {
        viewerState.currentFrame = endOfRange(step.direction);
        playbackClock().reset();
        return true;
    }
    viewerSession().wentBackward |= step.direction == Direction::backward;
    const int64_t frame = advance(step);
    if (pastRange(step.direction, frame)) {
        restartClock(step);
        viewerState.currentFrame = beyondEnd(step, frame);
    } else {
        viewerState.currentFrame = static_cast<int>(frame);
    }
    return true;
}

void setRangeStart() {
    const bool reset = viewerState.currentFrame == viewerState.playFirst;
    viewerState.playFirst = reset ? viewerState.firstFrame : viewerState.currentFrame;
    if (viewerState.playFirst > viewerState.playLast)
        std::swap(viewerState.playFirst, viewerState.playLast);
}

void setRangeEnd() {
    const bool reset = viewerState.currentFrame == viewerState.playLast;
    viewerState.playLast = reset ? viewerState.lastFrame : viewerState.currentFrame;
    if (viewerState.playFirst > viewerState.playLast)
        std::swap(viewerState.playFirst, viewerState.playLast);
}

}  // namespace vistel
