#include "viewer/playback/stepping.h"

#include <utility>

namespace vistel {

namespace {

// Milliseconds by which playing that skips frames may be late from one round to the next.
constexpr float longestSkippedLag = 250;

bool pastRange(const FramePosition& position, Direction direction, int64_t frame) {
    return direction == Direction::forward ? frame > position.playLast : frame < position.playFirst;
}

int endOfRange(const FramePosition& position, Direction direction) {
    return direction == Direction::forward ? position.playLast : position.playFirst;
}

// The step itself; while playback is late and may skip, further ones up to the range's end.
int64_t advance(Player& player, const Step& step) {
    int64_t frame = player.currentFrame;
    do {
        frame += int64_t{stepSize(player)} * static_cast<int>(step.direction);
        player.clock.step(stepSize(player));
    } while (step.synthetic && player.frameSkip && !pastRange(player, step.direction, frame) &&
             player.clock.timeAhead(effectiveFrameRate(player)) < player.clock.allowedLag());
    return frame;
}

void restartClock(Player& player, const Step& step) {
    const int due = step.direction == Direction::forward ? stepSize(player) : 0;
    if (step.synthetic) {
        const int rate = effectiveFrameRate(player);
        const float frameTime = 1000.0f / float(rate);
        player.clock.resetAtWrap(rate, due, player.frameSkip ? longestSkippedLag : frameTime);
    } else {
        player.clock.reset();
        player.clock.step(due);
    }
}

int reflected(const FramePosition& position, Direction direction, int64_t frame) {
    const int64_t first = position.playFirst, last = position.playLast;
    if (direction == Direction::forward) {
        const int64_t back = 2 * last - frame;
        return static_cast<int>(back < first ? lastReachableFrame(position) : back);
    }
    const int64_t forth = 2 * first - frame;
    return static_cast<int>(forth > last ? first : forth);
}

// The frame on the other side of the range's end, where playing goes on.
int wrapped(const Player& player, Direction direction, int64_t frame) {
    if (player.pingPong) return reflected(player, direction, frame);
    return direction == Direction::forward ? player.playFirst : lastReachableFrame(player);
}

// The frame to go on with beyond an end of the range.
int beyondEnd(Player& player, const Step& step, int64_t frame) {
    const bool forward = step.direction == Direction::forward;
    if (player.playOnce) {
        player.playOnce = 0;
        player.playMode = PlayMode::stopped;
        return endOfRange(player, step.direction);
    }
    if (player.pingPong && playing(player))
        player.playMode = forward ? PlayMode::backward : PlayMode::forward;
    return wrapped(player, step.direction, frame);
}

}  // namespace

int lastReachableFrame(const FramePosition& position) {
    const int64_t first = position.playFirst, span = int64_t{position.playLast} - first;
    const int64_t step = stepSize(position);
    return static_cast<int>(first + span / step * step);
}

UpcomingFrames::UpcomingFrames(const Player& player)
    : player_(player),
      frame_(player.currentFrame),
      direction_(player.playMode == PlayMode::forward ? Direction::forward : Direction::backward),
      ended_(!playing(player)) {}

std::optional<int> UpcomingFrames::next() {
    if (ended_) return std::nullopt;
    frame_ += int64_t{stepSize(player_)} * static_cast<int>(direction_);
    if (pastRange(player_, direction_, frame_)) {
        ended_ = player_.playOnce != 0;
        frame_ = ended_ ? endOfRange(player_, direction_) : wrapped(player_, direction_, frame_);
        if (player_.pingPong) direction_ = static_cast<Direction>(-static_cast<int>(direction_));
    }
    return static_cast<int>(frame_);
}

std::vector<int> upcomingFrames(const Player& player, size_t count) {
    std::vector<int> frames;
    UpcomingFrames upcoming(player);
    while (frames.size() < count) {
        const std::optional<int> frame = upcoming.next();
        if (!frame) break;
        frames.push_back(*frame);
    }
    return frames;
}

bool stepFrame(Player& player, const Step& step) {
    if (!step.synthetic && !step.toEnd && playing(player)) return false;
    if (!step.synthetic && step.toEnd) {
        player.currentFrame = endOfRange(player, step.direction);
        player.clock.reset();
        return true;
    }
    player.wentBackward |= step.direction == Direction::backward;
    const int64_t frame = advance(player, step);
    if (pastRange(player, step.direction, frame)) {
        restartClock(player, step);
        player.currentFrame = beyondEnd(player, step, frame);
    } else {
        player.currentFrame = static_cast<int>(frame);
    }
    return true;
}

static void orderBounds(FramePosition& position) {
    if (position.playFirst > position.playLast) std::swap(position.playFirst, position.playLast);
}

void setRangeStart(FramePosition& position) {
    const bool reset = position.currentFrame == position.playFirst;
    position.playFirst = reset ? position.firstFrame : position.currentFrame;
    orderBounds(position);
}

void setRangeEnd(FramePosition& position) {
    const bool reset = position.currentFrame == position.playLast;
    position.playLast = reset ? position.lastFrame : position.currentFrame;
    orderBounds(position);
}

}  // namespace vistel
