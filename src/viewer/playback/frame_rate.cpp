#include "viewer/playback/frame_rate.h"

#include <algorithm>

namespace vistel {

static int clampedRate(int rate) { return std::clamp(rate, lowestFrameRate, highestFrameRate); }

void setFrameRate(Player& player, int framesPerSecond) {
    player.frameRate = clampedRate(framesPerSecond);
    player.clock.reset();
}

int rateAfterKey(const Playing& state, int direction, const Modifiers& held) {
    if (held.control()) return state.startFrameRate;
    const int change = held.alt() ? (held.shift() ? 10 : 5) : (held.shift() ? 2 : 1);
    return clampedRate(clampedRate(state.frameRate) + direction * change);
}

void setTypedFrameRate(Player& player, const std::string& text) {
    Tstring digits;
    for (const char c : text.substr(0, 255)) {
        if (c != '\r' && c != '\n' && c != '\t' && c != ' ') digits += c;
    }
    const int rate = clampedRate(digits.asInt32());
    if (rate != player.frameRate) setFrameRate(player, rate);
}

}  // namespace vistel
