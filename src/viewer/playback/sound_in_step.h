// The sound beside the frames: loaded with them, fed frame by frame while they play.
#pragma once

#include "viewer/playback/player.h"

namespace vistel {

// Loads the sound that the state names, ready to begin with the range. Without a file or a device
// there is no sound and the pictures go on alone.
void openSound(Player& player);

// Loads it for the first time and turns it on; one line tells of a sound that cannot be played.
void startSound(Player& player);

// Tells once of a sound that is not heard though it should be, and why: a device may refuse long
// after it was asked for, or go while it plays.
void tellOfSilence(Player& player);

// Ends it at once; it stays the animation's sound.
void closeSound(Player& player);

// After each picture: the part of the sound that belongs to it is given to the device. With each
// pass over the range, and where the pictures jump, the sound is loaded again: a device that had
// gone and is back is found then, too.
void keepSoundInStep(Player& player);

}  // namespace vistel
