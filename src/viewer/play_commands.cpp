#include "viewer/play_commands.h"

#include "app/viewer_state.h"
#include "viewer/frame_display.h"
#include "viewer/stepping.h"

namespace vistel {

bool togglePause(const KeyPress&, int) {
    viewerState.paused = !viewerState.paused;
    playbackClock().reset();
    return true;
}

bool stepByKey(const KeyPress& press, int direction) {
    ViewerSession& session = viewerSession();
    const bool toEnd = press.modifiers.control() || session.jumpToEnds;
    if (!press.synthetic) session.jumpToEnds = false;
    if (!stepFrame({static_cast<Direction>(direction), press.synthetic, toEnd})) return false;
    return showCurrentFrame(FrameRead::ifNeeded);
}

bool setStep(const KeyPress& press, int frames) {
    viewerState.frameStep = frames ? frames : press.code - '0';
    return false;
}

bool togglePingPong(const KeyPress&, int) {
    viewerState.pingPong = !viewerState.pingPong;
    return true;
}

bool toggleFrameSkip(const KeyPress&, int) {
    viewerState.frameSkip = !viewerState.frameSkip;
    playbackClock().reset();
    return true;
}

bool reloadFrame(const KeyPress&, int) { return showCurrentFrame(FrameRead::always); }

bool changeRate(const KeyPress& press, int direction) {
    const Modifiers& held = press.modifiers;
    setFrameRate(rateAfterKey(direction, held.shift(), held.control(), held.alt()));
    return true;
}

bool playOrSetBound(const KeyPress& press, int direction) {
    if (press.modifiers.shift()) {
        direction < 0 ? setRangeStart() : setRangeEnd();
        return true;
    }
    viewerState.playMode = direction < 0 ? PlayMode::backward : PlayMode::forward;
    viewerState.paused = 0;
    viewerState.playOnce = press.modifiers.alt();
    playbackClock().reset();
    if (!viewerState.playOnce) return true;
    viewerState.currentFrame = direction < 0 ? viewerState.playLast : viewerState.playFirst;
    return showCurrentFrame(FrameRead::ifNeeded);
}

}  // namespace vistel
