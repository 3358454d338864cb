#include "viewer/frame_display.h"

#include <cstdio>
#include <memory>
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

// Held keys must not pile up behind a slow frame: all but the first so many go.
void dropRepeatedSteps(int kept) {
    windowContext().queue.drop([&](const InputEvent& event) {
        if (event.code == EV_TIMER) return true;
        const bool arrow = event.code == keyLeftArrow || event.code == keyRightArrow;
        const bool step = event.code == 'U' || (arrow && event.value);
        return step && kept-- <= 0;
    });
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
    if (!viewerSession().dragging.scrub)
        showMessageBand(messageText("s_VistelStrings.rVTReloadingImage"));
    int result = iffOk;
    if (FrameStore* frame = readCurrentFrame(result, Retry::asked))
        return show(*frame, SourceMark::disk, Refit::fitWindow);
    if (result == iffAborted) {  // a key did not want to wait
        restoreFrontImage();
        return false;
    }
    showMessageBand(messageText("s_VistelStrings.rVTFileRemoved"));
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

void reportUnreadableFrame() {
    const Tstring text =
        formatMessage("s_VistelStrings.rVTFrameUnreadable",
                      {lastFrameName(), lastFrameReason(), viewerState.currentFrame});
    std::fprintf(stderr, "%s\n", text.c_str());
}

bool showCurrentFrame(FrameRead read) {
    if (read == FrameRead::always) return reload();
    if (FrameStore* kept = viewerSession().slots.find(viewerState.currentFrame)) {
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
