#include "viewer/viewer_session.h"

#include <algorithm>

#include "app/viewer_state.h"
#include "viewer/picture_view.h"
#include "viewer/window_layer.h"

namespace vistel {

void Modifiers::update(const InputEvent& event) {
    const bool down = event.value != 0;
    switch (event.code) {
        case keyLeftShift:
            leftShift = down;
            break;
        case keyRightShift:
            rightShift = down;
            break;
        case keyLeftControl:
            leftControl = down;
            break;
        case keyRightControl:
            rightControl = down;
            break;
        case keyLeftAlt:
            leftAlt = down;
            break;
        case keyRightAlt:
            rightAlt = down;
            break;
    }
}

ViewerSession& viewerSession() {
    static ViewerSession session;
    return session;
}

void releaseFrames() {
    ViewerSession& session = viewerSession();
    windowContext().drawPass = nullptr;
    windowContext().savedImageValid = false;
    session.shown = nullptr;
    session.escapeTaken = false;
    session.ahead.reset();
    session.slots.clear();
    session.loose.clear();
    releaseViews();
}

void clearViewerSession() {
    releaseFrames();
    viewerSession() = ViewerSession{};
}

int effectiveFrameRate() { return std::max(1, viewerState.frameRate); }

bool playing() { return viewerState.playMode != PlayMode::stopped && !viewerState.paused; }

}  // namespace vistel
