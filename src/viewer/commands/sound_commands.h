// Commands for the sound beside the frames.
#pragma once

#include "viewer/commands/command.h"

namespace vistel {

// The item is checked while the sound is muted. Without an animation or a sound nothing happens.
bool toggleSound(Viewer& viewer, const Press&, int);

// To the range's start, pictures and sound.
bool restartWithSound(Viewer& viewer);
// The same with another sound.
bool startWithSound(Viewer& viewer);

}  // namespace vistel
