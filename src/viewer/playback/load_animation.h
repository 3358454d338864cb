// Loads the frames of an animation after its first one is on screen.
#pragma once

#include "viewer/playback/player.h"

namespace vistel {

// Reads the frames after player.currentFrame up to the last one into their slots, with progress in
// the title (and on the console when it is a terminal). Frames that are missing or unreadable are
// reported and left out. The user ends it early (player.loading.stopped; frames not read yet are
// then read when they are shown) or by closing the window.
void loadRemainingFrames(Player& player);

}  // namespace vistel
