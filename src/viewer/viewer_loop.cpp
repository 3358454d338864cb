#include "viewer/viewer_loop.h"

#include <algorithm>
#include <utility>

#include "app/viewer_state.h"
#include "platform/clock.h"
#include "platform/surface.h"
#include "viewer/display_lut.h"
#include "viewer/display_setup.h"
#include "viewer/draw_pass.h"
#include "viewer/drawing.h"
#include "viewer/key_table.h"
#include "viewer/paint_commands.h"
#include "viewer/pan_commands.h"
#include "viewer/picture_view.h"
#include "viewer/stepping.h"
#include "viewer/viewer_session.h"
#include "viewer/window_layer.h"

namespace vistel {

namespace {

constexpr int restMilliseconds = 100;

// --- one pass -----------------------------------------------------------------------------------

// While playing, waits until the frame is due. False when an event came first. Steps by hand are
// shown at once, however fast they follow each other.
bool waitUntilDue() {
    if (!playing()) return true;
    while (static_cast<int>(playbackClock().timeAhead(effectiveFrameRate())) > 1) {
        if (peekEvent() != 0) return false;
        platform::sleepMilliseconds(1);
    }
    return true;
}

void presentPass() {
    if (windowContext().quit) return;  // the window went while a frame was read
    ViewerSession& session = viewerSession();
    session.statusFrame = viewerState.currentFrame;
    if (viewerState.animation) session.fps.count();
    drawPass();
    swapDrawing();
    session.bandShown = false;
    session.wentBackward = false;
}

KeyPress keyPress(const InputEvent& event, bool synthetic) {
    return {event.code, event.value, synthetic, viewerSession().modifiers};
}

// The step that playback makes when nothing is queued.
KeyPress playbackStep() {
    const int arrow = viewerState.playMode == PlayMode::backward ? keyLeftArrow : keyRightArrow;
    return keyPress({arrow, 1}, true);
}

// Whether the frame after the one on screen is due already.
bool stepIsDue() {
    if (!playing()) return false;
    const int rate = effectiveFrameRate();
    return playbackClock().timeAhead(rate) + 1000.0f * float(stepSize()) / float(rate) <= 1;
}

int queuedEvents() {
    pumpEvents();
    return windowContext().queue.count();
}

// A key without a meaning of its own takes the message band away when it is released.
bool otherReleased(const KeyPress& press) {
    const bool button = press.code <= EV_MIDDLEMOUSE;
    if (!button && std::exchange(viewerSession().bandShown, false)) restoreFrontImage();
    return false;
}

// Whether the mouse has moved on already: then this place need not be shown. What a button does
// meanwhile needs it.
bool laterMoveQueued() { return windowContext().queue.movesBeforeButton() > 0; }

// The cursor may be where no move led to: where the window opened under it. Where one did, the
// cursor may have left the place by now.
void findCursor() {
    if (viewerSession().cursorKnown) return;
    const auto moved = [](const InputEvent& event) { return isMove(event.code); };
    if (windowContext().queue.any(moved)) return;  // the cursor has left the place
    cursorPlace(viewerSession().cursorX, viewerSession().cursorY);
}

// A move comes as two events, the column first.
bool mouseMoved(const KeyPress& press) {
    ViewerSession& session = viewerSession();
    session.noteCursor({press.code, press.value});
    if (press.code == EV_MOUSEX || !session.shown) return false;
    const bool later = laterMoveQueued();
    if (session.painting.active) return paint(press) && !later;
    if (later) return false;
    if (session.dragging.scrub) return scrub();
    return session.dragging.pan && dragPicture(press);
}

// A release that went to another window is seen here. Where the key's own event is still queued,
// the keys before it were typed with the modifier as it is.
void refreshModifiers() {
    for (int32_t code = keyLeftShift; code <= keyRightAlt; ++code) {
        const auto changes = [&](const InputEvent& event) { return event.code == code; };
        if (windowContext().queue.any(changes)) continue;
        viewerSession().modifiers.update({code, static_cast<uint16_t>(deviceValue(code) != 0)});
    }
}

// Acts on an event. True when the picture must be drawn again.
bool dispatch(const KeyPress& press) {
    switch (press.code) {
        case EV_REDRAW:
            return true;
        case EV_TIMER:
            refreshModifiers();
            return false;
        case EV_MOUSEX:
        case EV_MOUSEY:
            return mouseMoved(press);
    }
    viewerSession().modifiers.update({press.code, press.value});
    if (isButton(press.code) && press.value) {
        pumpEvents();  // moves that followed tell that the cursor is elsewhere by now
        findCursor();
    }
    if (!press.value && !findBinding(press)) return otherReleased(press);
    return runKey(press);
}

// In sequence mode a file is shown for so long; the next one follows in the same window.
bool timeLimitOver() {
    if (!viewerState.sequenceMode) return false;
    const uint32_t elapsed = platform::tickMilliseconds() - viewerSession().startTick;
    return elapsed > uint64_t(viewerState.sequenceDelay) * 1000;
}

void rest() {
    ViewerSession& session = viewerSession();
    if (!session.restRequested || (viewerState.animation && !viewerState.paused)) return;
    platform::sleepMilliseconds(restMilliseconds);
    session.restRequested = false;
}

enum class Ended { no, byUser, byTimeLimit };

Ended handleEvent(const KeyPress& press, bool& redraw) {
    if (press.code == EV_QUIT) return Ended::byUser;
    redraw = dispatch(press);
    if (timeLimitOver()) return Ended::byTimeLimit;
    rest();
    return Ended::no;
}

// Handles events until one changes the picture: those that are queued, then the step of playback or
// whatever comes next. `drawn` is false when the current frame was not presented yet because an
// event came before it was due: then no step is made. Events that arrive meanwhile wait for the
// next pass, and a step that is due is made though the picture has changed: a flood of events, even
// of ones that change it, does not hold playback up.
Ended handleEvents(bool drawn) {
    Ended ended = Ended::no;
    bool redraw = false;
    for (int queued = queuedEvents(); queued > 0 && !redraw && ended == Ended::no; --queued) {
        if (windowContext().queue.empty()) break;  // dropped by a command
        ended = handleEvent(keyPress(windowContext().queue.take(), false), redraw);
    }
    if (!playing()) viewerSession().ahead.reset();
    if (drawn && redraw && ended == Ended::no && stepIsDue())
        ended = handleEvent(playbackStep(), redraw);
    while (drawn && !redraw && ended == Ended::no) {
        ended = handleEvent(playing() ? playbackStep() : keyPress(waitEvent(), false), redraw);
    }
    return ended;
}

// --- start and end ------------------------------------------------------------------------------

void startLoop() {
    ViewerSession& session = viewerSession();
    viewerState.viewerLoopRunning = 1;
    viewerState.playMode = viewerState.animation ? PlayMode::forward : PlayMode::stopped;
    viewerState.paused = 0;
    viewerState.playOnce = 0;
    session.dragging = {};
    session.painting.active = false;
    setViewerTitle(windowTitle());
    session.startTick = platform::tickMilliseconds();
    playbackClock().reset();
    findCursor();
    platform::setScissorTest(windowContext().window, true);
}

void cleanUp() {
    releaseFrames();
    if (!viewerState.sequenceMode) resetDisplayLut();  // there it stays from file to file
    if (platform::surfaceExists(windowContext().window))
        platform::setScissorTest(windowContext().window, false);
    if (windowContext().quit) viewerState.quitRequested = 1;
}

}  // namespace

void runViewerLoop() {
    Ended ended = windowContext().quit ? Ended::byUser : Ended::no;
    if (ended == Ended::no) startLoop();
    while (ended == Ended::no) {
        const bool drawn = waitUntilDue();
        if (drawn) presentPass();
        ended = handleEvents(drawn);
    }
    viewerState.viewerLoopRunning = 0;
    viewerState.playMode = PlayMode::stopped;
    if (ended == Ended::byUser) cleanUp();
}

}  // namespace vistel
