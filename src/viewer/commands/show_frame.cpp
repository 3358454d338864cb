#include "viewer/commands/show_frame.h"

#include "viewer/commands/queued_input.h"

namespace vistel {

bool showFrame(Viewer& viewer, FrameSource source) {
    const FrameShown shown = showCurrentFrame(viewer, source);
    dropStepsBehind(viewer, shown);
    return shown != FrameShown::unchanged;
}

}  // namespace vistel
