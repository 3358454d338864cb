// ViewerState: the one process-wide record of the viewer, put together from the parts that live
// with their owners. What lies below takes the parts that it works on as arguments. It belongs to
// the main thread.
#pragma once

#include "viewer/commands/viewer.h"
#include "viewer/entropy_window.h"

namespace vistel {

struct ViewerState : Viewer {
    EntropyWindows entropyWindows;  // -e
};

inline ViewerState viewerState;

}  // namespace vistel
