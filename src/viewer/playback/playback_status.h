// What the status line says of playing.
#pragma once

#include "viewer/playback/player.h"

namespace vistel {

// For the frame player.currentFrame.
StatusFields playbackStatus(const Player& player);

}  // namespace vistel
