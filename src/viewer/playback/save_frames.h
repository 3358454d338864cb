// Saves the frame on screen, or each frame of the play range, while the window is served.
#pragma once

#include "viewer/playback/player.h"

namespace vistel {

// Writes the frame on screen, at its full size; what came of it is told in a band and on standard
// error. Escape ends a converter that does not end.
void saveShownFrame(Player& player);

// Plays the range once from its start, writing each frame, and stops. Escape ends it with the frame
// that is being written; so does whatever would keep the following frames from being written.
void saveRange(Player& player);

}  // namespace vistel
