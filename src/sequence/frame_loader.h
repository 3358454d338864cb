// From the viewer's state to loaded frames: opens sources with the current settings and hands each
// frame that arrives to the viewer.
#pragma once

#include <cstddef>
#include <cstdio>
#include <span>

#include "host/tstring.h"
#include "iff/frame_store.h"
#include "iff/image_loader.h"

namespace vistel {

// What the loader needs of the viewer. Set once at start; null members are skipped.
struct LoaderHooks {
    // A new source begins: the next image is its first.
    void (*sourceBegins)() = nullptr;
    // Forgets what is kept for one image (pan, channel, view).
    void (*clearImageState)() = nullptr;
    // Largest picture that a frame may take on the screen, in pixels after zoom.
    DisplayFit (*displayFit)() = nullptr;
    // A frame of the current source is complete (first pass over it). Shows it and runs the viewer;
    // returns the code with which the walk of the file goes on (iffParsingComplete ends it). May
    // call readFrameAgain: for a one-file animation the walk ends then, whatever is returned.
    int (*frameLoaded)(FrameStore& frame) = nullptr;
    // Whether the user has a window to look at.
    bool (*hasWindow)() = nullptr;
    // Called often while a frame is read; false when the user wants to leave.
    bool (*keepGoing)() = nullptr;
};
inline LoaderHooks loaderHooks;

// Whether the user still wants what is being loaded.
inline bool mayGoOn() { return !loaderHooks.keepGoing || loaderHooks.keepGoing(); }

// Whether a file that its converter could not read is converted again although it has not changed.
enum class Retry { never, asked };

// Reads the frame viewerState.currentFrame of the current source again, without reports on success.
// Returns 0 and fills `frame`, or the negative code (iffNotIff when there is no such frame).
// `frame` then is unchanged, or holds the part of a damaged frame that could be read.
[[nodiscard]] int readFrameAgain(FrameStore& frame, Retry retry = Retry::never);

// While one of these lives, frames that readFrameAgain is expected to be asked for are read ahead
// by threads of the loader's own. At most one at a time.
class FramesAhead {
 public:
    FramesAhead();
    ~FramesAhead();
    FramesAhead(const FramesAhead&) = delete;
    FramesAhead& operator=(const FramesAhead&) = delete;

    // Frames that it pays to name, the next one and others; 0: nothing is read ahead.
    size_t room() const;
    // The frames that will be asked for next, in this order, beginning with the very next one.
    void expect(std::span<const int> frames);
    // Frames that had been read when they were asked for.
    size_t taken() const;
};

// The name that readFrameAgain built last, and why that frame could not be read (empty when it
// could).
Tstring lastFrameName();
Tstring lastFrameReason();

// Sets the name of the source that readFrameAgain reads (as given to openImageSource).
void setCurrentSource(const Tstring& name);

// The request for a stream, filled from the viewer's state and the hooks: a full pass, nothing
// called for its forms.
ImageLoadRequest loadRequest(FILE* stream);

}  // namespace vistel
