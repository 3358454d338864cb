#include "sequence/frame_range.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace vistel {

void takeRange(FramePosition& position, const FrameRange& range) {
    position.animation = 1;
    position.firstFrame = position.currentFrame = position.playFirst = range.start;
    position.lastFrame = position.playLast = range.end;
    position.frameStep = range.step;
}

void forgetAnimation(FramePosition& position) {
    position.animation = 0;
    position.firstFrame = position.lastFrame = position.frameStep = 1;
    position.currentFrame = position.playFirst = position.playLast = 1;
}

void orderRange(FramePosition& position) {
    position.animationShown = 1;
    if (position.lastFrame < position.firstFrame)
        std::swap(position.firstFrame, position.lastFrame);
    const int64_t step = position.frameStep < 0 ? -int64_t{position.frameStep} : position.frameStep;
    position.frameStep =
        static_cast<int32_t>(std::clamp<int64_t>(step, 1, std::numeric_limits<int32_t>::max()));
    position.currentFrame = position.playFirst = position.firstFrame;
    position.playLast = position.lastFrame;
}

}  // namespace vistel
