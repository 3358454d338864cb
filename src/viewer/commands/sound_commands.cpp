#include "viewer/commands/sound_commands.h"

#include "viewer/commands/show_frame.h"
#include "viewer/playback/sound_in_step.h"

namespace vistel {

static bool playFromStart(Viewer& viewer) {
    viewer.currentFrame = viewer.playFirst;
    viewer.clock.reset();
    return showFrame(viewer);
}

bool restartWithSound(Viewer& viewer) {
    openSound(viewer);
    return playFromStart(viewer);
}

bool startWithSound(Viewer& viewer) {
    startSound(viewer);
    return playFromStart(viewer);
}

bool toggleSound(Viewer& viewer, const Press&, int) {
    if (!viewer.animation || viewer.audioFile.empty()) return false;
    viewer.soundOn = !viewer.soundOn;
    if (viewer.soundOn) return restartWithSound(viewer);
    closeSound(viewer);
    return false;
}

}  // namespace vistel
