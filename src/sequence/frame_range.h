// The range of an animation, as options, names and dialogs set it.
#pragma once

#include "sequence/sequence_state.h"

namespace vistel {

// An animation over this range; it is put in order by orderRange.
void takeRange(FramePosition& position, const FrameRange& range);

// No animation: every frame field is 1.
void forgetAnimation(FramePosition& position);

// Puts the range of an animation in order (first frame at most the last, step at least 1), with its
// first frame as the current one and all of it to be played.
void orderRange(FramePosition& position);

}  // namespace vistel
