// The frame range and the per-file values of the state, as each file argument and each file chosen
// in the window sets them.
#pragma once

#include "app/viewer_state.h"

namespace vistel {

// A new source, from which nothing was read yet and which nobody has left. Tells the viewer.
void beginSource();

// An animation over this range; it is put in order by normaliseRange.
void takeRange(const FrameRange& range);

// No animation: every frame field is 1.
void forgetAnimation();

// Puts the range of an animation in order (first frame at most the last, step at least 1) and
// switches its depth planes off unless they are forced; for a single image sets every frame field
// to 1. Outside sequence mode the source gets a new window, and a single image its own `kmem`; the
// viewer forgets how the image before it was looked at.
void normaliseRange();

// Saves what one file may change and the next must not see, and restores it at its end.
class PerFileValues {
 public:
    PerFileValues() = default;
    ~PerFileValues();
    PerFileValues(const PerFileValues&) = delete;
    PerFileValues& operator=(const PerFileValues&) = delete;

 private:
    float kmem_ = viewerState.kmem;
    int32_t loadZ_ = viewerState.loadZ, rfact_ = viewerState.rfact;
    int32_t magnify_ = viewerState.magnify, animationShown_ = viewerState.animationShown;
    int32_t oneFile_ = viewerState.oneFile, inter_ = viewerState.inter;  // by a range among files
};

}  // namespace vistel
