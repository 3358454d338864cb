// How each source is opened and shown, be it a file argument or one chosen in the window.
#pragma once

#include "app/start_up_services.h"
#include "sequence/sequence_state.h"
#include "viewer/viewer_state.h"

namespace vistel {

// A new source, from which nothing was read yet and which nobody has left.
void beginSource(const StartUpServices& services);

// Looks for the frames that the name stands for, unless it is a command. The name, with its
// trailing dot removed when that stood for a sequence that exists.
[[nodiscard]] Tstring discoverSequence(const Tstring& name, const StartUpServices& services);

// Puts the range of an animation in order and switches its depth planes off unless they are forced;
// for a single image sets every frame field to 1. Outside sequence mode the source gets a new
// window, and a single image its own `kmem`; how the image before it was looked at is forgotten.
void normaliseRange(const StartUpServices& services);

// Opens the source and shows what there is of it, until the user leaves. 0 or why it could not be
// read whole.
[[nodiscard]] int openAndShow(const Tstring& name, const StartUpServices& services);

// The same for a source that was chosen in the window; step 0 means a single image.
[[nodiscard]] int reopenSource(const Tstring& name, const FrameRange& range,
                               const StartUpServices& services);

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
