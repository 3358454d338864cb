// What commands do when they have changed the current frame.
#pragma once

#include "viewer/commands/viewer.h"
#include "viewer/playback/frame_display.h"

namespace vistel {

// Shows the frame viewer.currentFrame, and lets no held key run on behind it. True when the picture
// (or the status line) must be drawn again.
bool showFrame(Viewer& viewer, FrameSource source = FrameSource::kept);

}  // namespace vistel
