#include "viewer/load_animation.h"

#include <algorithm>
#include <bitset>
#include <cstdio>
#include <optional>
#include <vector>

#include "app/viewer_state.h"
#include "host/messages.h"
#include "iff/result_codes.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/process.h"
#include "sequence/frame_loader.h"
#include "viewer/display_setup.h"
#include "viewer/drawing.h"
#include "viewer/frame_display.h"
#include "viewer/viewer_session.h"
#include "viewer/window_layer.h"

namespace vistel {

namespace {

// Milliseconds that a key waits for a frame that is being written, and for one that a command
// brings, which had better be allowed to finish what it has begun.
constexpr uint32_t longestKeyWait = 100;
constexpr uint32_t longestCommandWait = 1000;
constexpr unsigned progressInterval = 100;  // milliseconds between two progress texts

bool loading = false;  // Escape ends the load
bool stopped = false;  // the user ended the load

// Progress in the title and on the console, a few times a second.
class Progress {
 public:
    explicit Progress(int frames) : frames_(frames), console_(platform::isTerminal(2)) {}

    void show(int done) {
        done_ = done;
        refresh();
    }
    // Also called while a frame takes long: its text may have come too soon after the one before.
    void refresh() {
        const uint32_t now = platform::tickMilliseconds();
        if (done_ == shown_ || (shown_ && now - shownAt_ < progressInterval)) return;
        shown_ = done_;
        shownAt_ = now;
        const Tstring text =
            formatMessage("s_VistelStrings.rVTLoading", {shownSourceName(), done_, frames_});
        setViewerTitle(text);
        if (console_) std::fprintf(stderr, "\r%s", text.c_str());
    }
    ~Progress() {
        if (console_ && shown_) std::fprintf(stderr, "\n");
    }

 private:
    int frames_;
    bool console_;
    int done_ = 0, shown_ = 0;
    uint32_t shownAt_ = 0;  // tick
};

std::optional<Progress> progress;  // of the load that goes on

// Frames in a row that cannot be opened for the same reason are one message.
class MissingFrames {
 public:
    ~MissingFrames() { report(); }

    void add(int frame, const Tstring& name, const Tstring& reason) {
        if (count_ && reason != reason_) report();
        if (!count_) first_ = frame;
        last_ = frame;
        name_ = name;
        reason_ = reason;
        ++count_;
    }
    void report() {
        if (count_ == 1)
            printError(formatMessage("s_VistelStrings.rVTFrameMissing", {first_, name_, reason_}));
        if (count_ > 1) {
            printError(
                formatMessage("s_VistelStrings.rVTFramesMissing", {first_, last_, name_, reason_}));
        }
        count_ = 0;
    }

 private:
    int first_ = 0, last_ = 0, count_ = 0;
    Tstring name_, reason_;  // of the last one
};

// False when memory has no room for the frame.
bool loadFrame(int frame, MissingFrames& missing) {
    viewerState.currentFrame = frame;
    FrameStore store;
    const int result = readFrameAgain(store);
    if (result == iffNotIff) {
        missing.add(frame, lastFrameName(), lastFrameReason());
        return true;
    }
    missing.report();
    if (result != iffOk && !stopped) reportUnreadableFrame();
    if (!store.hasPicture()) return true;
    FrameSlots& slots = viewerSession().slots;
    if (!slots.hasRoomFor(frame, store)) return false;
    slots.keep(frame, std::move(store));
    return true;
}

// The frame and those that will be read after it.
std::vector<int> followingFrames(int64_t frame, int64_t step, size_t count) {
    std::vector<int> frames;
    for (; frames.size() < count && frame <= viewerState.lastFrame; frame += step)
        frames.push_back(static_cast<int>(frame));
    return frames;
}

int megabytes(size_t bytes) { return static_cast<int>(std::min<size_t>(bytes >> 20, INT32_MAX)); }

void reportMemoryLimit() {
    if (!viewerState.verbose) return;
    const int limit = megabytes(viewerSession().slots.limit());
    std::printf("%s\n", formatMessage("s_VistelStrings.rVTMemoryLimit", {limit}).c_str());
}

void reportMemoryUsedUp(int frame) {
    const int limit = megabytes(viewerSession().slots.limit());
    std::fprintf(stderr, "%s\n",
                 formatMessage("s_VistelStrings.rVTMemoryUsedUp", {frame, limit}).c_str());
}

void redrawPicture() {
    if (!windowContext().drawPass) return;
    windowContext().drawPass();
    swapDrawing();
}

// A key that acts on what is shown. The one that asked for the frame that is being read repeats
// while it is held: frames that always take long must come nevertheless. It acts again when it has
// been let go meanwhile; while playing no key has asked.
class WaitingKey {
 public:
    bool operator()(const InputEvent& event) {
        const bool arrow = event.code == keyLeftArrow || event.code == keyRightArrow;
        if (!event.value) letGo_ |= arrow;
        if (!event.value || event.code == EV_TIMER || isMove(event.code) || event.code == 'U')
            return false;
        return !arrow || letGo_ || viewerState.synchro || playing();
    }

 private:
    bool letGo_ = false;
};

// A frame of a running animation that is still being written must not hold up the keys.
bool keyWaitsTooLong() {
    if (!viewerState.viewerLoopRunning) return false;
    if (!viewerState.synchro && !viewerState.sourceIsPipe) return false;
    const uint32_t longest = viewerState.synchro ? longestKeyWait : longestCommandWait;
    if (platform::tickMilliseconds() - viewerSession().readStarted < longest) return false;
    return windowContext().queue.any(WaitingKey());
}

// What leaves the queue while a frame is read, so that the keys and buttons that wait there for the
// loop do not run out of room. Asked about each event in turn.
// - Ticks, and the presses by which a held key repeats.
// - Moves while no button is down or waiting: where they lead is noted. With one, those that a
//   further move follows; but what is painted is painted along each.
class CarriesNothing {
 public:
    bool operator()(const InputEvent& event) {
        if (isMove(event.code)) return move(event);
        if (!isButton(event.code)) return event.code == EV_TIMER || repeats(event);
        button_ = true;
        if (event.code == EV_RIGHTMOUSE) painting_ = event.value != 0;
        return false;
    }

 private:
    bool move(const InputEvent& event) const {
        if (!button_) {
            viewerSession().noteCursor(event);
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

    bool painting_ = viewerState.viewerLoopRunning && viewerSession().painting.active;
    bool button_ = painting_ || (viewerState.viewerLoopRunning && viewerSession().dragging.any());
    std::bitset<512> down_;
};

// Takes what concerns the reading itself out of the queue, and what carries nothing. True when the
// window must be drawn again.
bool takeEvents() {
    bool redraw = false;
    windowContext().queue.drop([&, unneeded = CarriesNothing()](const InputEvent& event) mutable {
        const bool escape = loading && event.code == keyEscape;
        stopped |= escape && event.value;
        if (escape) viewerSession().escapeTaken = event.value != 0;
        if (event.code == EV_REDRAW) redraw = true;
        return escape || event.code == EV_REDRAW || unneeded(event);
    });
    return redraw;
}

}  // namespace

bool keepLoading() {
    if (progress) progress->refresh();
    if (!platform::windowExists(windowContext().window))
        return !platform::interruptRequested() && !windowContext().quit;
    pumpEvents();
    if (takeEvents()) redrawPicture();
    if (windowContext().quit) viewerState.quitRequested = 1;
    return !stopped && !windowContext().quit && !keyWaitsTooLong();
}

void loadRemainingFrames() {
    const int first = viewerState.currentFrame;
    if (viewerState.kmem <= 0) return;
    reportMemoryLimit();
    const int64_t step = viewerState.frameStep > 0 ? viewerState.frameStep : 1;
    const int frames = static_cast<int>((int64_t{viewerState.lastFrame} - first) / step + 1);
    loading = true;
    progress.emplace(frames);
    MissingFrames missing;
    FramesAhead ahead;
    int done = 1;
    bool room = true;
    for (int64_t frame = first + step; frame <= viewerState.lastFrame && room && keepLoading();
         frame += step) {
        progress->show(++done);
        ahead.expect(followingFrames(frame, step, ahead.room()));
        room = loadFrame(static_cast<int>(frame), missing);
    }
    missing.report();
    if (!room) reportMemoryUsedUp(viewerState.currentFrame);
    progress.reset();
    viewerState.currentFrame = first;
    loading = stopped = false;
}

}  // namespace vistel
