// Brings the picture as it is now to the screen.
#pragma once

#include "viewer/playback/player.h"

namespace vistel {

// Draws it with its status line and presents it: one pass.
void presentFrame(Player& player);

}  // namespace vistel
