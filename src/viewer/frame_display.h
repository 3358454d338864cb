// Bringing the current frame to the screen: from its slot, or from its file.
#pragma once

#include "iff/frame_store.h"

namespace vistel {

enum class FrameRead { ifNeeded, always };

// Shows the frame viewerState.currentFrame: from memory, or read from its file when its slot is
// empty or `read` says so. When it cannot be read the picture before it stays. True when the
// picture (or the status line) must be drawn again.
bool showCurrentFrame(FrameRead read);

// Empties the slots of frames that their reader would shrink otherwise now than it did: full screen
// and full resolution have other limits than a window. They are read again when they are shown. The
// frame on screen stays; false when it should be read again, too.
bool keepFittingFrames();

// Puts a frame that was read into its slot, or into the one loose store when frames are not kept or
// memory is used up.
FrameStore& keepFrame(int frame, FrameStore&& store);

// Prints that a frame could not be read, with its file's name and the reason, on standard error.
void reportUnreadableFrame();

}  // namespace vistel
