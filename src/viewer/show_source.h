// The way of an opened source onto the screen, and the window without one.
#pragma once

#include "iff/frame_store.h"
#include "viewer/commands/viewer.h"

namespace vistel {

// Joins the window to the viewer, which then must stay where it is: menu commands, the menu's
// state, the serving of the window while frames are read. Once, at start.
void installViewer(Viewer& viewer);

// Shows the first frame of the source that was opened, loads the others of an animation, and runs
// the viewer's loop until the user leaves.
void showSource(Viewer& viewer, FrameStore&& firstFrame);

// The empty window: shown until the user closes it or opens a file from its menu.
void runEmptyWindow(Viewer& viewer);

}  // namespace vistel
