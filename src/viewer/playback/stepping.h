// Which frame comes next: steps by key and by playback, the range's ends, ping-pong, play-once,
// skipping of frames that are late.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "viewer/playback/player.h"

namespace vistel {

enum class Direction { backward = -1, forward = 1 };

struct Step {
    Direction direction = Direction::forward;
    bool synthetic = false;  // made by playback, not by a key
    bool toEnd = false;      // go to the range's start (backward) or end (forward); keys only
};

// Changes player.currentFrame, the play mode and the clock. False when nothing changed: a
// key's step while playing.
bool stepFrame(Player& player, const Step& step);

// Highest frame that steps from the range's start reach.
int lastReachableFrame(const FramePosition& position);

// The frames of the playing that goes on, the one after the current frame first: round and round,
// back and forth, or once up to the range's end. None when stopped.
class UpcomingFrames {
 public:
    explicit UpcomingFrames(const Player& player);
    std::optional<int> next();

 private:
    const Player& player_;
    int64_t frame_;
    Direction direction_;
    bool ended_;
};

// The first so many of them.
std::vector<int> upcomingFrames(const Player& player, size_t count);

// Sets the start or the end of the play range to the current frame; on the frame that is the bound
// already, the bound goes back to the sequence's own. Start and end are exchanged when they cross.
void setRangeStart(FramePosition& position);
void setRangeEnd(FramePosition& position);

}  // namespace vistel
