#include "viewer/playback/playback_status.h"

namespace vistel {

namespace {

const char* directionMark(const Playing& state) {
    if (!playing(state)) return "";
    if (state.playMode == PlayMode::forward) return state.pingPong ? "FS" : "F";
    return state.pingPong ? "BS" : "B";
}

const char* sourceMark(SourceMark mark) {
    switch (mark) {
        case SourceMark::memory:
            return "Mem";
        case SourceMark::disk:
            return "Dsk";
        default:
            return "???";
    }
}

}  // namespace

StatusFields playbackStatus(const Player& player) {
    StatusFields status;
    status.frame = player.currentFrame;
    status.frameRate = effectiveFrameRate(player);
    status.skips = player.frameSkip != 0;
    status.direction = directionMark(player);
    status.source = sourceMark(player.mark);
    status.partly = player.playFirst != player.firstFrame || player.playLast != player.lastFrame;
    status.playFirst = player.playFirst;
    status.playLast = player.playLast;
    status.framesPerSecond = player.fps.shown();
    return status;
}

}  // namespace vistel
