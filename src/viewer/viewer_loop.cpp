#include "viewer/viewer_loop.h"

#include <algorithm>
#include <utility>

#include "app/viewer_state.h"
#include "platform/clock.h"
#include "platform/surface.h"
#include "viewer/display_setup.h"
#include "viewer/drawing.h"
#include "viewer/key_table.h"
#include "viewer/status_line.h"
#include "viewer/viewer_session.h"
#include "viewer/window_layer.h"

namespace vistel {

namespace {

constexpr uint32_t bandColour = 0xFF202020;  // packed; dark grey
constexpr int restMilliseconds = 100;

// --- drawing a pass -----------------------------------------------------------------------------

// A frame of another size than the one before is centred on the same place.
void followPictureSize() {
    ViewerSession& session = viewerSession();
    PictureLayout& layout = session.layout;
    const FrameStore& frame = *session.shown;
    if (frame.width == layout.width && frame.height == layout.height) return;
    if (!viewerState.halfHeight) {
        layout.marginX += (layout.width - frame.width) * layout.zoom / 2;
        layout.marginY += (layout.height - frame.height) * layout.zoom / 2;
    }
    layout.width = frame.width;
    layout.height = frame.height;
    layout.clearWanted = true;
}

void measureVisibleArea(int width, int height) {
    PictureLayout& layout = viewerSession().layout;
    layout.visibleWidth = width - 2 * layout.marginX;
    layout.visibleHeight = height - 2 * layout.marginY;
}

void drawMargins() {
    PictureLayout& layout = viewerSession().layout;
    if (!layout.marginX && !layout.marginY) return;
    if (!windowContext().doubleBuffer && !layout.clearWanted) return;
    setColourPacked(bandColour);
    clearDrawing();
    layout.clearWanted = false;
}

float clampedPan(float pan, int size, int visible, int zoom) {
    return std::max(0.0f, std::min(pan, size - float(visible + 1) / zoom));
}

void drawPicture(int width, int height) {
    const ViewerSession& session = viewerSession();
    PictureLayout& layout = viewerSession().layout;
    layout.panX = clampedPan(layout.panX, layout.width, layout.visibleWidth, layout.zoom);
    layout.panY = clampedPan(layout.panY, layout.height, layout.visibleHeight, layout.zoom);
    const int column = static_cast<int>(layout.panX), row = static_cast<int>(layout.panY);
    const auto needed = [&](int visible) { return (visible + layout.zoom - 1) / layout.zoom; };
    const platform::PixelSource source{session.displayed,
                                       layout.width,
                                       column,
                                       row,
                                       std::min(layout.width - column, needed(layout.visibleWidth)),
                                       std::min(layout.height - row, needed(layout.visibleHeight))};
    platform::setScissor(layout.marginX, layout.marginY, layout.visibleWidth, layout.visibleHeight);
    platform::drawPixels(layout.marginX, layout.marginY, source, layout.zoom);
    platform::setScissor(0, 0, width, height);
}

void drawCentred(const std::string& text, int width, int y) {
    setColourIndex(1);
    drawText((width - textWidth(text)) / 2, y, text);
}

void drawBand(int width, int firstRow, int lastRow) {
    setColourPacked(bandColour);
    fillRectangle(0, firstRow, width - 1, lastRow);
}

void drawLabel(int width, int height) {
    const std::string label = channelLabel();
    if (label.empty() || !viewerSession().layout.marginY) return;
    if (viewerState.animation) {
        drawBand(width, 0, 15);
        return drawCentred(label, width, 5);
    }
    drawBand(width, height - 17, height - 1);
    drawCentred(label, width, height - (viewerState.controlBarShown ? 40 : 15));
}

void drawStatusLine(int width, int height) {
    if (!viewerState.animation) return;
    if (viewerSession().layout.marginY) {
        drawBand(width, height - (viewerState.controlBarShown ? 39 : 17), height - 1);
    }
    drawCentred(statusLine(viewerSession().statusFrame), width,
                height - (viewerState.controlBarShown ? 37 : 15));
}

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

int queuedEvents() {
    pumpEvents();
    return windowContext().queue.count();
}

bool leaveFullScreen() {
    if (!viewerState.fullScreen) return false;
    viewerState.fullScreen = 0;
    setUpDisplay(*viewerSession().shown, Refit::fitWindow);
    return true;
}

bool keyReleased(const KeyPress& press) {
    ViewerSession& session = viewerSession();
    const bool button = press.code <= EV_MIDDLEMOUSE;
    if (press.code == keyEscape && !std::exchange(session.escapeTaken, false) &&
        leaveFullScreen()) {
        return true;
    }
    if (!button && std::exchange(session.bandShown, false)) restoreFrontImage();
    return false;
}

// A release that went to another window is seen here.
void refreshModifiers() {
    for (int32_t code = keyLeftShift; code <= keyRightAlt; ++code) {
        viewerSession().modifiers.update({code, static_cast<uint16_t>(deviceValue(code) != 0)});
    }
}

// Acts on an event. True when the picture must be drawn again.
bool dispatch(const KeyPress& press) {
    viewerSession().modifiers.update({press.code, press.value});
    if (press.code == EV_TIMER) refreshModifiers();
    if (press.code == EV_REDRAW) return true;
    if (press.code == EV_MOUSEX || press.code == EV_MOUSEY || press.code == EV_TIMER) return false;
    return press.value ? runKey(press) : keyReleased(press);
}

bool timeLimitOver() {
    if (!viewerState.timeLimitMode) return false;
    const uint32_t elapsed = platform::tickMilliseconds() - viewerSession().startTick;
    return elapsed > uint64_t(viewerState.timeLimit) * 1000;
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
// next pass, so a flood of them does not hold playback up.
Ended handleEvents(bool drawn) {
    Ended ended = Ended::no;
    bool redraw = false;
    for (int queued = queuedEvents(); queued > 0 && !redraw && ended == Ended::no; --queued) {
        if (windowContext().queue.empty()) break;  // dropped by a command
        ended = handleEvent(keyPress(windowContext().queue.take(), false), redraw);
    }
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
    setViewerTitle(windowTitle());
    session.startTick = platform::tickMilliseconds();
    playbackClock().reset();
    platform::setScissorTest(true);
}

void cleanUp() {
    releaseFrames();
    if (platform::surfaceExists()) platform::setScissorTest(false);
    if (windowContext().quit) viewerState.quitRequested = 1;
}

}  // namespace

void drawPass() {
    if (!viewerSession().shown || !platform::surfaceExists()) return;
    int width, height;
    clientSize(width, height);
    platform::setScissorTest(true);
    platform::setScissor(0, 0, width, height);
    followPictureSize();
    measureVisibleArea(width, height);
    drawMargins();
    drawPicture(width, height);
    drawLabel(width, height);
    drawStatusLine(width, height);
}

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
