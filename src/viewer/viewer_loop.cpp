#include "viewer/viewer_loop.h"

#include <new>
#include <utility>

#include "iff/result_codes.h"
#include "platform/clock.h"
#include "platform/process.h"
#include "platform/surface.h"
#include "viewer/commands/control_bar.h"
#include "viewer/commands/key_table.h"
#include "viewer/commands/menu_commands.h"
#include "viewer/commands/paint_commands.h"
#include "viewer/commands/pan_commands.h"
#include "viewer/commands/queued_input.h"
#include "viewer/picture/display_lut.h"
#include "viewer/picture/title.h"
#include "viewer/playback/present_frame.h"
#include "viewer/playback/sound_in_step.h"
#include "viewer/viewer_session.h"
#include "viewer/window/front_image.h"
#include "viewer/window/window_context.h"
#include "viewer/window/window_events.h"
#include "viewer/window/window_layer.h"

namespace vistel {

namespace {

constexpr int restMilliseconds = 100;

// --- one pass -----------------------------------------------------------------------------------

// While playing, waits until the frame is due. False when an event came first. Steps by hand are
// shown at once, however fast they follow each other.
bool waitUntilDue(const Player& player) {
    if (!playing(player)) return true;
    while (player.clock.timeAhead(effectiveFrameRate(player)) >= 2) {
        if (peekEvent() != 0) return false;
        platform::sleepMilliseconds(1);
    }
    return true;
}

// The step that playback makes when nothing is queued.
Press playbackStep(const Viewer& viewer) {
    const int arrow = viewer.playMode == PlayMode::backward ? keyLeftArrow : keyRightArrow;
    return {arrow, 1, true, viewer.modifiers};
}

Press pressOf(const InputEvent& event, const Viewer& viewer) {
    return {event.code, event.value, false, viewer.modifiers};
}

// Whether the frame after the one on screen is due already.
bool stepIsDue(const Player& player) {
    if (!playing(player)) return false;
    const int rate = effectiveFrameRate(player);
    return player.clock.timeAhead(rate) + 1000.0f * float(stepSize(player)) / float(rate) <= 1;
}

// The cursor may be where no move led to: where the window opened under it. Where one did, the
// cursor may have left the place by now.
void findCursor() {
    WindowContext& context = windowContext();
    if (context.cursor.known) return;
    if (context.queue.any([](const InputEvent& event) { return isMove(event.code); })) return;
    cursorPlace(context.cursor.x, context.cursor.y);
}

// A move comes as two events, the column first.
bool mouseMoved(Viewer& viewer, const Press& press) {
    windowContext().cursor.note({press.code, press.value});
    if (press.code == EV_MOUSEX || !viewer.shown) return false;
    const bool later = laterMoveQueued();
    if (viewer.painting.active) return paint(viewer, press) && !later;
    if (later) return false;
    if (viewer.dragging.scrub) return scrub(viewer);
    return viewer.dragging.pan && dragPicture(viewer, press);
}

// A release that went to another window is seen here. Where the key's own event is still queued,
// the keys before it were typed with the modifier as it is.
void refreshModifiers(Modifiers& modifiers) {
    for (int32_t code = keyLeftShift; code <= keyRightAlt; ++code) {
        const auto changes = [&](const InputEvent& event) { return event.code == code; };
        if (windowContext().queue.any(changes)) continue;
        modifiers.update({code, static_cast<uint16_t>(deviceValue(code) != 0)});
    }
}

// Acts on an event. True when the picture must be drawn again.
bool dispatch(Viewer& viewer, const Press& press) {
    switch (press.code) {
        case EV_REDRAW:
            return true;
        case EV_TIMER:
            refreshModifiers(viewer.modifiers);
            platform::collectEndedCommands();
            tellOfSilence(viewer);
            return false;
        case EV_MOUSEX:
        case EV_MOUSEY:
            return mouseMoved(viewer, press);
    }
    viewer.modifiers.update({press.code, press.value});
    if (isButton(press.code) && press.value) {
        pumpEvents();  // moves that followed tell that the cursor is elsewhere by now
        findCursor();
    }
    if (press.value || findBinding(press)) return runKey(viewer, press);
    // A key without a meaning of its own takes the message band away when it is released.
    if (!isButton(press.code) && std::exchange(viewer.bandShown, false)) restoreFrontImage();
    return false;
}

// In sequence mode a file is shown for so long; the next one follows in the same window.
bool timeLimitOver(const ShowOptions& options, uint32_t startTick) {
    if (!options.sequenceMode) return false;
    const uint32_t elapsed = platform::tickMilliseconds() - startTick;
    return elapsed > uint64_t(options.sequenceDelay) * 1000;
}

void rest(Viewer& viewer) {
    if (!viewer.restRequested || (viewer.animation && !viewer.paused)) return;
    platform::sleepMilliseconds(restMilliseconds);
    viewer.restRequested = false;
}

enum class Ended { no, byUser, byTimeLimit };

// The loop on its way.
struct Loop {
    Viewer& viewer;
    uint32_t startTick;  // for the time limit
    Ended ended = Ended::no;
    bool redraw = false;

    void handle(const Press& press);
    void handleEvents(bool drawn);
};

// A command that finds no memory is given up; what it shows stays.
void Loop::handle(const Press& press) try {
    if (press.code == EV_QUIT) {
        ended = Ended::byUser;
        return;
    }
    redraw = dispatch(viewer, press);
    showMenuState(viewer);
    showBarState(viewer);
    if (timeLimitOver(viewer, startTick))
        ended = Ended::byTimeLimit;
    else
        rest(viewer);
} catch (const std::bad_alloc&) {
    reportError(iffNoMemory);
}

// Handles events until one changes the picture: those that are queued, then the step of playback or
// whatever comes next. `drawn` is false when the current frame was not presented yet because an
// event came before it was due: then no step is made. Events that arrive meanwhile wait for the
// next pass, and a step that is due is made though the picture has changed: a flood of events, even
// of ones that change it, does not hold playback up.
void Loop::handleEvents(bool drawn) {
    redraw = false;
    pumpEvents();
    EventQueue& queue = windowContext().queue;
    for (int queued = queue.count(); queued > 0 && !redraw && ended == Ended::no; --queued) {
        if (queue.empty()) break;  // dropped by a command
        handle(pressOf(queue.take(), viewer));
    }
    if (!playing(viewer)) viewer.ahead.reset();
    if (drawn && redraw && ended == Ended::no && stepIsDue(viewer)) handle(playbackStep(viewer));
    while (drawn && !redraw && ended == Ended::no)
        handle(playing(viewer) ? playbackStep(viewer) : pressOf(waitEvent(), viewer));
}

// --- start and end ------------------------------------------------------------------------------

void startLoop(Viewer& viewer) {
    windowContext().viewerRunning = true;
    viewer.playMode = viewer.animation ? PlayMode::forward : PlayMode::stopped;
    viewer.paused = 0;
    viewer.playOnce = 0;
    viewer.dragging = {};
    viewer.painting.active = false;
    showTitle(viewer);
    showMenuState(viewer);
    showBarState(viewer);
    viewer.clock.reset();
    findCursor();
    platform::setScissorTest(windowContext().window, true);
}

void cleanUp(Viewer& viewer) {
    releaseFrames(viewer);
    if (!viewer.sequenceMode) resetDisplayLut(viewer);  // there it stays from file to file
    if (platform::surfaceExists(windowContext().window))
        platform::setScissorTest(windowContext().window, false);
    if (windowContext().quit) viewer.quitRequested = 1;
}

}  // namespace

void runViewerLoop(Viewer& viewer) {
    Loop loop{viewer, platform::tickMilliseconds()};
    if (windowContext().quit)
        loop.ended = Ended::byUser;
    else
        startLoop(viewer);
    while (loop.ended == Ended::no) {
        const bool drawn = waitUntilDue(viewer);
        if (drawn) presentFrame(viewer);
        loop.handleEvents(drawn);
    }
    windowContext().viewerRunning = false;
    viewer.playMode = PlayMode::stopped;
    if (loop.ended == Ended::byUser) cleanUp(viewer);
}

}  // namespace vistel
