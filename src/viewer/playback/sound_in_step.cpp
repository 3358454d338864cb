#include "viewer/playback/sound_in_step.h"

#include <utility>

#include "host/messages.h"

namespace vistel {

static void load(Player& player) {
    if (!player.sound) player.sound = std::make_unique<Sound>();
    player.soundLoaded = player.sound->load(player.audioFile);
    player.soundStart.reset();
}

void openSound(Player& player) {
    load(player);
    player.soundFrame.reset();
}

void startSound(Player& player) {
    player.soundOn = 1;
    openSound(player);
    if (!player.soundLoaded && !player.audioFile.empty())
        printError(formatMessage(Message::rVTSoundNotPlayed,
                                 {printable(player.audioFile), printable(player.sound->whyNot())}));
}

void closeSound(Player& player) {
    player.sound.reset();
    player.soundFrame.reset();
}

namespace {

enum class Way { onward, backward, jump, toStart };

// How the pictures came to this frame.
Way wayTo(const Player& player, int before, int frame) {
    if (player.wentBackward) return Way::backward;
    if (frame < before) return frame == player.playFirst ? Way::toStart : Way::jump;
    const bool late = player.soundBehind || frame > before + stepSize(player);
    return late ? Way::jump : Way::onward;
}

// Backward nothing is heard. A jump begins with an empty device: what it still has belongs to other
// pictures. The sound begins with the first picture of a pass, whatever its number; after a jump
// with the picture that the offset names.
void followPicture(Player& player, Way way) {
    const int frame = player.currentFrame, rate = effectiveFrameRate(player);
    player.soundBehind = way == Way::backward;
    if (way == Way::backward || (!player.soundLoaded && way != Way::toStart)) return;
    if (way != Way::onward) load(player);
    if (way == Way::jump) player.soundStart = player.audioOffset;
    if (!player.soundStart) player.soundStart = frame;
    player.sound->feedPicture(frame - *player.soundStart, rate);
}

}  // namespace

void keepSoundInStep(Player& player) {
    if (!player.soundOn || !player.sound) return;
    const int frame = player.currentFrame;
    const int before = std::exchange(player.soundFrame, frame).value_or(frame - 1);
    if (frame == before) return;
    const Way way = wayTo(player, before, frame);
    if (frame >= player.audioOffset)
        followPicture(player, way);
    else if (way != Way::onward)
        load(player);  // it begins anew when its frame comes
}

}  // namespace vistel
