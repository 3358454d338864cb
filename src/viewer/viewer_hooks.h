// How the viewer is joined to the loader and the start-up.
#pragma once

namespace vistel {

// Lets the loader hand its frames to the viewer. Once, at start.
void installViewer();

// The empty window: shown until the user closes it or opens a file from its menu.
void runEmptyWindow();

}  // namespace vistel
