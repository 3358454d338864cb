// What the viewer knows of the source on screen: its frames, how they are laid out in the window,
// the keys that are held. One record, owned by the main thread.
#pragma once

#include <cstdint>
#include <memory>

#include "analysis/plane_views.h"
#include "app/viewer_state.h"
#include "platform/input_event.h"
#include "sequence/frame_loader.h"
#include "viewer/frame_slots.h"
#include "viewer/playback_clock.h"

namespace vistel {

enum class ChannelMode : int32_t {
    matte = 0,
    blue = 1,
    green = 2,
    red = 3,
    all = 4,
    zBuffer = 5,
    luminance = 6,
    invertedBump = 7,
    bump = 8,
};

// Where the shown frame came from.
enum class SourceMark { memory, disk, unknown };

struct Modifiers {
    bool leftShift = false, rightShift = false;
    bool leftControl = false, rightControl = false;
    bool leftAlt = false, rightAlt = false;

    bool shift() const { return leftShift || rightShift; }
    bool control() const { return leftControl || rightControl; }
    bool alt() const { return leftAlt || rightAlt; }
    bool any() const { return shift() || control() || alt(); }
    // Takes a key event; other keys change nothing.
    void update(const InputEvent& event);
};

// The picture's place in the window.
struct PictureLayout {
    int width = 0, height = 0;     // of the shown frame, image pixels
    int zoom = 1;                  // window pixels per image pixel
    int startZoom = 1;             // the zoom given at start: margins and window are made for it
    int marginX = 0, marginY = 0;  // window pixels between the window's edge and the picture
    // The margins that the window was made with.
    int windowMarginX = 0, windowMarginY = 0;
    int visibleWidth = 0, visibleHeight = 0;  // window pixels
    float panX = 0, panY = 0;  // image column and row at the picture's lower-left corner
    bool clearWanted = true;   // the margins must be painted
};

// What full screen was entered with, to come back to.
struct WindowView {
    int width = 0, height = 0;  // of the frame, image pixels
    int zoom = 0;
    float panX = 0, panY = 0;
};

constexpr float startReliefDepth = -0.1f;

// Painting with the right button.
struct Painting {
    bool active = false;
    int column = 0, row = 0;  // image pixel painted last
    bool lines = true;        // successive points are joined
};

// Dragging with the left button: the picture, or the position in the animation.
struct Dragging {
    bool pan = false, scrub = false;
    int cursorX = 0, cursorY = 0;  // at the last pan, or where the scrub began; client pixels
    int frame = 0;                 // where the scrub began
    PlayMode playMode = PlayMode::stopped;  // before it

    bool any() const { return pan || scrub; }
};

struct ViewerSession {
    FrameSlots slots;                       // used while viewerState.kmem > 0
    FrameStore loose;                       // the frame on screen otherwise
    std::unique_ptr<FramesAhead> ahead;     // while frames are played from their files
    FrameStore* shown = nullptr;            // the frame on screen
    ChannelMode mode = ChannelMode::all;    // what is shown of it
    ChannelMode chosen = ChannelMode::all;  // by key, for each frame that has it
    ZScale zScale = ZScale::wholeRange;
    int bumpSource = -1;  // channel mode that the relief views are made from; -1 none
    ChannelMode chosenSource = ChannelMode::all;  // the same by key, for frames that have it
    bool reliefInverted = false;
    float reliefDepth = startReliefDepth;  // slope of the relief; negative: lit from the other side
    int reliefAmount = 0;                  // 0 grey to 256: how much of the colours a relief has
    bool profiles = false;                 // profile lines over a relief
    int controlChannel = 0;                // 1 blue, 2 green, 3 red; 0 none
    bool controlComplement = false;        // the control channel was chosen with Shift
    Painting painting;
    Dragging dragging;
    PictureLayout layout;
    WindowView beforeFullScreen;
    Modifiers modifiers;
    int cursorX = 0, cursorY = 0;  // last seen, client pixels from the lower left
    bool cursorKnown = false;      // a move led there since the window took its place
    FpsMeter fps;
    SourceMark mark = SourceMark::memory;
    bool jumpToEnds = false;     // the next step goes to the range's start or end
    bool wentBackward = false;   // a step back was made since the last pass
    bool restRequested = false;  // a pause of 100 ms after the event
    bool escapeTaken = false;    // Escape ended a load; its release means nothing more
    int statusFrame = 0;         // number that the status line shows
    uint32_t readStarted = 0;    // tick at which a frame began to be read again
    bool bandShown = false;      // a message band covers the picture
    uint32_t startTick = 0;      // of the loop, for the time limit

    // Takes one half of a mouse move. Left of the window or below it, while a button holds the
    // mouse, a place is negative.
    void noteCursor(const InputEvent& event) {
        (event.code == EV_MOUSEX ? cursorX : cursorY) = static_cast<int16_t>(event.value);
        cursorKnown = true;
    }
};

ViewerSession& viewerSession();

// Frees every frame; nothing is on display then. Pan and channel stay, for sequence mode.
void releaseFrames();

// Forgets everything about the source.
void clearViewerSession();

// Frames per second in force, at least 1.
int effectiveFrameRate();

// An animation that is running, not paused.
bool playing();

}  // namespace vistel
