// What a luminance curve is made of.
#pragma once

#include <optional>
#include <vector>

#include "analysis/tracking.h"
#include "viewer/playback/player.h"

namespace vistel {

// The luminance of one pixel in each frame from the sequence's first to its last. Frames that are
// not in memory are read from their files and not kept; the title shows how far that is. Frames
// that the step leaves out, or that cannot be read, count as 0. None when the user ended it.
std::optional<std::vector<float>> readLuminance(Player& player, const Pick& pick);

}  // namespace vistel
