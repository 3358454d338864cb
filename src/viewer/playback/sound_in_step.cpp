#include "viewer/playback/sound_in_step.h"

#include <utility>

#include "host/messages.h"
#include "viewer/playback/stepping.h"

namespace vistel {

static std::unique_ptr<Sound> loaded(const Player& player) {
    auto sound = std::make_unique<Sound>();
    sound->load(player.audioFile);
    return sound;
}

// What was played before is silent once the result has gone.
static std::unique_ptr<Sound> begin(Player& player) {
    if (!player.nextSound) player.nextSound = loaded(player);
    auto before = std::exchange(player.sound, std::move(player.nextSound));
    player.soundLoaded = player.sound->isLoaded();
    player.soundStart.reset();
    return before;
}

void openSound(Player& player) {
    player.sound.reset();
    player.nextSound.reset();
    begin(player);
    player.soundFrame.reset();
}

void startSound(Player& player) {
    player.soundOn = 1;
    player.silenceTold = false;
    openSound(player);
    tellOfSilence(player);
}

void tellOfSilence(Player& player) {
    if (!player.soundOn || !player.sound || player.audioFile.empty()) return;
    const Sound& sound = *player.sound;
    if (sound.isLoaded() && !sound.deviceHasGone()) return;
    player.soundLoaded = false;
    if (std::exchange(player.silenceTold, true)) return;
    printError(formatMessage(Message::rVTSoundNotPlayed,
                             {printable(player.audioFile), printable(sound.whyNot())}));
}

void closeSound(Player& player) {
    player.sound.reset();
    player.nextSound.reset();
    player.soundFrame.reset();
}

namespace {

enum class Way { onward, backward, jump, toStart };

// How the pictures came to this frame. Some that are skipped for being late are no jump: the sound
// has not waited for them.
Way wayTo(const Player& player, int before, int frame) {
    if (player.wentBackward) return Way::backward;
    if (frame < before) return frame == player.playFirst ? Way::toStart : Way::jump;
    const bool skips = playing(player) && player.frameSkip;
    const int mostSkipped = skips ? effectiveFrameRate(player) / 5 : 0;
    const bool jumped = frame - mostSkipped > before + stepSize(player);
    return player.soundBehind || jumped ? Way::jump : Way::onward;
}

// By how much the picture is late, where the next ones can make up for that: the sound does not
// wait. With pictures that are later still the sound keeps to them.
double secondsLate(const Player& player) {
    constexpr float longest = 100;
    const float late = -player.clock.timeAhead(effectiveFrameRate(player));
    return playing(player) && late > 0 && late <= longest ? late / 1000 : 0;
}

// What the device still has is not heard. The sound goes on where the pictures do.
void silence(Player& player) {
    const std::optional<int> start = player.soundStart;
    begin(player);
    player.soundStart = start;
}

// Backward nothing is heard. A jump begins with an empty device: what it still has belongs to other
// pictures. The sound begins with the first picture of a pass, whatever its number; after a jump
// with the picture that the offset names.
void followPicture(Player& player, Way way) {
    const int frame = player.currentFrame, rate = effectiveFrameRate(player);
    const bool turned = way == Way::backward && !player.soundBehind;
    player.soundBehind = way == Way::backward;
    if (turned && player.soundLoaded) silence(player);
    if (way == Way::backward || (!player.soundLoaded && way != Way::toStart)) return;
    // To end it takes some milliseconds, too: first the new one is heard.
    const std::unique_ptr<Sound> before = way == Way::onward ? nullptr : begin(player);
    if (way == Way::jump) player.soundStart = player.audioOffset;
    if (!player.soundStart) player.soundStart = frame;
    player.sound->feedPicture({.number = frame - *player.soundStart,
                               .frameRate = rate,
                               .late = secondsLate(player),
                               .goesOn = playing(player),
                               .step = stepSize(player)});
}

// A device takes some milliseconds to open: the next pass's is opened while the last picture of
// this one is shown.
void prepareNextPass(Player& player) {
    const bool ends = UpcomingFrames(player).next() == player.playFirst;
    if (!ends || player.currentFrame == player.playFirst)
        player.nextSound.reset();
    else if (!player.nextSound)
        player.nextSound = loaded(player);
}

}  // namespace

void keepSoundInStep(Player& player) {
    if (!player.soundOn || !player.sound) return;
    tellOfSilence(player);
    const int frame = player.currentFrame;
    const int before = std::exchange(player.soundFrame, frame).value_or(frame - 1);
    const bool pictureFollowed = std::exchange(player.soundGoesOn, playing(player));
    if (frame == before) {
        if (pictureFollowed && !player.soundGoesOn && player.soundLoaded) silence(player);
        return;
    }
    const Way way = wayTo(player, before, frame);
    if (frame >= player.audioOffset)
        followPicture(player, way);
    else if (way != Way::onward)
        begin(player);  // it begins anew when its frame comes
    prepareNextPass(player);
}

}  // namespace vistel
