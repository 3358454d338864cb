#include "viewer/commands/queued_input.h"

#include <bitset>
#include <utility>

#include "platform/clock.h"
#include "platform/process.h"
#include "platform/window.h"
#include "viewer/window/front_image.h"
#include "viewer/window/window_context.h"
#include "viewer/window/window_events.h"

namespace vistel {

namespace {

// Milliseconds that a key waits for a frame that is being written, and for one that a command
// brings, which had better be allowed to finish what it has begun.
constexpr uint32_t longestKeyWait = 100;
constexpr uint32_t longestCommandWait = 1000;

bool isArrow(int32_t code) { return code == keyLeftArrow || code == keyRightArrow; }

// A key that acts on what is shown. The one that asked for the frame that is being read repeats
// while it is held: frames that always take long must come nevertheless. It acts again when it has
// been let go meanwhile; while playing no key has asked.
class WaitingKey {
 public:
    explicit WaitingKey(const Viewer& viewer) : viewer_(viewer) {}
    bool operator()(const InputEvent& event) {
        const bool arrow = isArrow(event.code);
        if (!event.value) letGo_ |= arrow;
        if (!event.value || event.code == EV_TIMER || isMove(event.code) || event.code == keyReload)
            return false;
        return !arrow || letGo_ || viewer_.synchro || playing(viewer_);
    }

 private:
    const Viewer& viewer_;
    bool letGo_ = false;
};

// A frame of a running animation that is still being written must not hold up the keys.
bool keyWaitsTooLong(const Viewer& viewer) {
    if (!windowContext().viewerRunning || viewer.loading.progress) return false;
    if (!viewer.synchro && !viewer.sourceIsPipe) return false;
    const uint32_t longest = viewer.synchro ? longestKeyWait : longestCommandWait;
    if (platform::tickMilliseconds() - viewer.readStarted < longest) return false;
    return windowContext().queue.any(WaitingKey(viewer));
}

// What carries nothing, asked about each event in turn:
// - Ticks but one, with which modifiers are looked up that a dialog or menu saw released.
// - The presses by which a held key repeats.
// - Moves while no button is down or waiting: where they lead is noted. With one, those that a
//   further move follows; but what is painted is painted along each.
class CarriesNothing {
 public:
    explicit CarriesNothing(const Viewer& viewer) {
        if (!windowContext().viewerRunning) return;
        painting_ = viewer.painting.active;
        button_ = painting_ || viewer.dragging.any();
    }
    bool operator()(const InputEvent& event) {
        if (isMove(event.code)) return move(event);
        if (event.code == EV_TIMER) return std::exchange(tick_, true);
        if (!isButton(event.code)) return repeats(event);
        button_ = true;
        if (event.code == EV_RIGHTMOUSE) painting_ = event.value != 0;
        return false;
    }

 private:
    bool move(const InputEvent& event) const {
        if (!button_) {
            windowContext().cursor.note(event);
            return true;
        }
        const int own = event.code == EV_MOUSEX ? 1 : 0;  // its other half is still queued
        return !painting_ && windowContext().queue.movesBeforeButton() > own;
    }
    bool repeats(const InputEvent& event) {
        const auto code = static_cast<size_t>(event.code);
        if (code >= down_.size()) return false;
        const bool before = down_[code];
        down_[code] = event.value != 0;
        return event.value && before;
    }

    bool painting_ = false, button_ = false, tick_ = false;
    std::bitset<512> down_;
};

// Takes what concerns the reading itself out of the queue, and what carries nothing. True when the
// window must be drawn again.
bool takeEvents(Viewer& viewer) {
    const bool loading = viewer.loading.progress != nullptr;
    bool redraw = false;
    CarriesNothing unneeded(viewer);
    windowContext().queue.drop([&](const InputEvent& event) {
        const bool escape = loading && event.code == keyEscape;
        viewer.loading.stopped |= escape && event.value;
        if (escape) viewer.escapeTaken = event.value != 0;
        if (event.code == EV_REDRAW) redraw = true;
        return escape || event.code == EV_REDRAW || unneeded(event);
    });
    return redraw;
}

}  // namespace

void dropRepeats(const Press& press) {
    windowContext().queue.drop(
        [&](const InputEvent& event) { return event.code == press.code && event.value; });
}

void dropStepsBehind(const Viewer& viewer, FrameShown shown) {
    if (shown == FrameShown::unchanged || playing(viewer)) return;
    int kept = shown == FrameShown::givenUp ? 1 : 0;
    bool tick = false;
    windowContext().queue.drop([&](const InputEvent& event) {
        if (event.code == EV_TIMER) return std::exchange(tick, true);
        const bool step = event.code == keyReload || (isArrow(event.code) && event.value);
        return step && kept-- <= 0;
    });
}

bool laterMoveQueued() { return windowContext().queue.movesBeforeButton() > 0; }

bool keepReading(Viewer& viewer) {
    if (viewer.loading.progress) viewer.loading.progress->refresh();
    WindowContext& context = windowContext();
    if (!platform::windowExists(windowContext().window)) {
        platform::pumpMessages();  // there may be windows of others
        return !platform::interruptRequested() && !context.quit;
    }
    pumpEvents();
    if (takeEvents(viewer) && context.drawPass) {
        context.drawPass();
        swapDrawing();
    }
    if (context.quit) viewer.quitRequested = 1;
    return !viewer.loading.stopped && !context.quit && !viewer.leaving && !keyWaitsTooLong(viewer);
}

}  // namespace vistel
