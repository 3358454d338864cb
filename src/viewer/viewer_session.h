// The end of what the viewer knows of a source.
#pragma once

#include "viewer/commands/viewer.h"

namespace vistel {

// Frees every frame; nothing is on display then. Pan and channel stay, for sequence mode.
void releaseFrames(Viewer& viewer);

// Forgets everything about the source: frames, view, input.
void clearViewerSession(Viewer& viewer);

}  // namespace vistel
