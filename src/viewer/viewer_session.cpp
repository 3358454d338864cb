#include "viewer/viewer_session.h"

#include "viewer/window/window_context.h"

namespace vistel {

void releaseFrames(Viewer& viewer) {
    windowContext().drawPass = nullptr;
    windowContext().front.valid = false;
    viewer.shown = nullptr;
    viewer.escapeTaken = false;
    viewer.ahead.reset();
    viewer.slots.clear();
    viewer.loose.clear();
    viewer.views = {};
}

void clearViewerSession(Viewer& viewer) {
    releaseFrames(viewer);
    static_cast<PictureSession&>(viewer) = {};
    static_cast<PlayerSession&>(viewer) = {};
    static_cast<InputSession&>(viewer) = {};
    windowContext().cursor = {};
}

}  // namespace vistel
