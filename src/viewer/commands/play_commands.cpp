#include "viewer/commands/play_commands.h"

#include "viewer/commands/show_frame.h"
#include "viewer/commands/sound_commands.h"
#include "viewer/playback/frame_rate.h"
#include "viewer/playback/stepping.h"

namespace vistel {

bool togglePause(Viewer& viewer, const Press&, int) {
    viewer.paused = !viewer.paused;
    viewer.clock.reset();
    return true;
}

bool stepByKey(Viewer& viewer, const Press& press, int direction) {
    const bool toEnd = press.modifiers.control() || viewer.jumpToEnds;
    if (!press.synthetic) viewer.jumpToEnds = false;
    if (!stepFrame(viewer, {static_cast<Direction>(direction), press.synthetic, toEnd}))
        return false;
    return showFrame(viewer);
}

bool setStep(Viewer& viewer, const Press& press, int frames) {
    viewer.frameStep = frames ? frames : press.code - '0';
    return false;
}

bool togglePingPong(Viewer& viewer, const Press&, int) {
    viewer.pingPong = !viewer.pingPong;
    return true;
}

bool toggleFrameSkip(Viewer& viewer, const Press&, int) {
    viewer.frameSkip = !viewer.frameSkip;
    viewer.clock.reset();
    return true;
}

bool reloadFrame(Viewer& viewer, const Press&, int) {
    return showFrame(viewer, viewer.dragging.scrub ? FrameSource::fileQuietly : FrameSource::file);
}

bool changeRate(Viewer& viewer, const Press& press, int direction) {
    setFrameRate(viewer, rateAfterKey(viewer, direction, press.modifiers));
    return !viewer.soundOn || !viewer.soundLoaded || restartWithSound(viewer);
}

bool playOrSetBound(Viewer& viewer, const Press& press, int direction) {
    if (press.modifiers.shift()) {
        direction < 0 ? setRangeStart(viewer) : setRangeEnd(viewer);
        return true;
    }
    viewer.playMode = direction < 0 ? PlayMode::backward : PlayMode::forward;
    viewer.paused = 0;
    viewer.playOnce = press.modifiers.alt();
    viewer.clock.reset();
    if (!viewer.playOnce) return true;
    viewer.currentFrame = direction < 0 ? viewer.playLast : viewer.playFirst;
    return showFrame(viewer);
}

}  // namespace vistel
