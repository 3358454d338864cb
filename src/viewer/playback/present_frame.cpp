#include "viewer/playback/present_frame.h"

#include "viewer/picture/draw_pass.h"
#include "viewer/picture/title.h"
#include "viewer/playback/playback_status.h"
#include "viewer/playback/sound_in_step.h"
#include "viewer/window/front_image.h"
#include "viewer/window/window_context.h"

namespace vistel {

void presentFrame(Player& player) {
    if (windowContext().quit) return;  // the window went while a frame was read
    if (player.animation) player.fps.count();
    player.status = playbackStatus(player);
    drawPass(player);
    swapDrawing();
    if (!playing(player)) refreshTitle(player);
    keepSoundInStep(player);
    player.bandShown = false;
    player.wentBackward = false;
}

}  // namespace vistel
