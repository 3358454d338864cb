// Loads the frames of an animation after its first one is on screen.
#pragma once

namespace vistel {

// Reads the frames after viewerState.currentFrame up to the last one into their slots, with
// progress in the title (and on the console when it is a terminal). Frames that are missing or
// unreadable are reported and left out. The user ends it early with Escape (frames not read yet are
// then read when they are shown) or by closing the window. viewerState.currentFrame is as before
// afterwards.
void loadRemainingFrames();

// Handles the window while something is being read. False when the user wants to stop.
bool keepLoading();

}  // namespace vistel
