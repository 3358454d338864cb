#include "viewer/frame_display.h"

#include <cstdio>
#include <memory>
#include <optional>
#include <vector>

#include "app/viewer_state.h"
#include "host/messages.h"
#include "iff/result_codes.h"
#include "platform/clock.h"
#include "sequence/frame_loader.h"
#include "viewer/display_setup.h"
#include "viewer/drawing.h"
#include "viewer/stepping.h"
#include "viewer/viewer_session.h"
#include "viewer/window_layer.h"

namespace vistel {

namespace {

// How far from a frame that is not in memory reading ahead begins; from then on its own room
// counts.
constexpr size_t framesLookedAhead = 4;

// Held keys must not pile up behind a slow frame: all but the first so many go.
void dropRepeatedSteps(int kept) {
    windowContext().queue.drop([&](const InputEvent& event) {
        if (event.code == EV_TIMER) return true;
        const bool arrow = event.code == keyLeftArrow || event.code == keyRightArrow;
        const bool step = event.code == 'U' || (arrow && event.value);
        return step && kept-- <= 0;
    });
}

// Whether the frames that could be read ahead are all in memory. Allocates nothing: it is asked
// before each frame that is played from there.
bool upcomingInMemory() {
    ViewerSession& session = viewerSession();
    UpcomingFrames upcoming;
    const size_t count = session.ahead ? session.ahead->room() : framesLookedAhead;
    for (size_t i = 0; i < count; ++i) {
        const std::optional<int> frame = upcoming.next();
        if (!frame) break;
        if (!session.slots.find(*frame)) return false;
    }
    return true;
}

// Playing reads the frames that follow ahead, where they are not in memory.
void readFollowingAhead() {
    ViewerSession& session = viewerSession();
    if (!playing()) return;
    if (!session.ahead) session.ahead = std::make_unique<FramesAhead>();
    std::vector<int> frames = upcomingFrames(session.ahead->room());
    frames.insert(frames.begin(), viewerState.currentFrame);
    std::erase_if(frames, [&](int frame) { return session.slots.find(frame) != nullptr; });
    session.ahead->expect(frames);
}

FrameStore* readCurrentFrame(int& result, Retry retry = Retry::never) {
    viewerSession().readStarted = platform::tickMilliseconds();
    readFollowingAhead();
    FrameStore read;
    result = readFrameAgain(read, retry);
    if (result != iffOk && !read.hasPicture()) return nullptr;
    return &keepFrame(viewerState.currentFrame, std::move(read));
}

bool show(FrameStore& frame, SourceMark mark, Refit refit) {
    viewerSession().mark = mark;
    setUpDisplay(frame, refit);
    if (!playing()) dropRepeatedSteps(0);
    return true;
}

bool reload() {
    if (!viewerSession().dragging.scrub) showMessageBand(messageText(Message::rVTReloadingImage));
    int result = iffOk;
    if (FrameStore* frame = readCurrentFrame(result, Retry::asked))
        return show(*frame, SourceMark::disk, Refit::fitWindow);
    if (result == iffAborted) {  // a key did not want to wait
        restoreFrontImage();
        return false;
    }
    showMessageBand(messageText(Message::rVTFileRemoved));
    viewerSession().bandShown = true;
    return false;
}

}  // namespace

FrameStore& keepFrame(int frame, FrameStore&& store) {
    ViewerSession& session = viewerSession();
    if (viewerState.kmem > 0 && session.slots.hasRoomFor(frame, store))
        return session.slots.keep(frame, std::move(store));
    session.slots.drop(frame);  // what it held is out of date
    return session.loose = std::move(store);
}

bool keepFittingFrames() {
    ViewerSession& session = viewerSession();
    const DisplayFit fit = currentDisplayFit();
    const auto fits = [&](const FrameStore& frame) {
        const DisplaySize size = displaySize(frame.header.width, frame.header.height, fit);
        return static_cast<int>(size.shrink) == frame.shrink;
    };
    session.slots.dropWhere(
        [&](const FrameStore& frame) { return &frame != session.shown && !fits(frame); });
    return !session.shown || fits(*session.shown);
}

void reportUnreadableFrame() {
    const Tstring text =
        formatMessage(Message::rVTFrameUnreadable,
                      {lastFrameName(), lastFrameReason(), viewerState.currentFrame});
    std::fprintf(stderr, "%s\n", text.c_str());
}

bool showCurrentFrame(FrameRead read) {
    if (read == FrameRead::always) return reload();
    if (FrameStore* kept = viewerSession().slots.find(viewerState.currentFrame)) {
        if (playing() && !upcomingInMemory()) readFollowingAhead();
        return show(*kept, SourceMark::memory, Refit::keepWindow);
    }
    int result = iffOk;
    if (FrameStore* frame = readCurrentFrame(result))
        return show(*frame, SourceMark::disk, Refit::keepWindow);
    viewerSession().mark = SourceMark::unknown;
    // The key that ended the wait for this frame is to act.
    if (!playing()) dropRepeatedSteps(result == iffAborted ? 1 : 0);
    return true;
}

}  // namespace vistel
