#include "viewer/commands/sound_commands.h"

#include "platform/menu.h"
#include "resources/command_ids.h"
#include "viewer/commands/show_frame.h"
#include "viewer/playback/sound_in_step.h"
#include "viewer/window/window_context.h"

namespace vistel {

bool restartWithSound(Viewer& viewer) {
    openSound(viewer);
    viewer.currentFrame = viewer.playFirst;
    viewer.clock.reset();
    return showFrame(viewer);
}

bool toggleSound(Viewer& viewer, const Press&, int) {
    if (!viewer.animation || viewer.audioFile.empty()) return false;
    viewer.soundOn = !viewer.soundOn;
    platform::checkMenuItem(windowContext().window, COMMAND_TOGGLE_SOUND, !viewer.soundOn);
    if (viewer.soundOn) return restartWithSound(viewer);
    closeSound(viewer);
    return false;
}

}  // namespace vistel
