#include "viewer/viewer_hooks.h"

#include <utility>

#include "app/viewer_state.h"
#include "iff/result_codes.h"
#include "platform/window.h"
#include "sequence/frame_loader.h"
#include "viewer/display_setup.h"
#include "viewer/draw_pass.h"
#include "viewer/drawing.h"
#include "viewer/frame_display.h"
#include "viewer/load_animation.h"
#include "viewer/menu_commands.h"
#include "viewer/viewer_loop.h"
#include "viewer/viewer_session.h"
#include "viewer/window_layer.h"

namespace vistel {

namespace {

void presentFirstFrame() {
    windowContext().drawPass = drawPass;
    viewerSession().statusFrame = viewerState.currentFrame;
    viewerSession().fps = FpsMeter{};
    viewerSession().mark = SourceMark::memory;
    drawPass();
    swapDrawing();
}

// A picture of the current source arrived: shows it, reads what belongs to it, runs the loop.
int frameLoaded(FrameStore& frame) {
    if (windowContext().quit) {  // the window went while it was read
        viewerState.quitRequested = 1;
        return iffParsingComplete;
    }
    releaseFrames();
    beginDisplay(keepFrame(viewerState.currentFrame, std::move(frame)));
    presentFirstFrame();
    if (viewerState.animation) loadRemainingFrames();
    runViewerLoop();
    return iffParsingComplete;
}

// When the window of the source before was closed, that quit is over.
void sourceBegins() {
    WindowContext& context = windowContext();
    if (platform::windowExists(context.window)) return;
    platform::releaseWindow(std::exchange(context.window, nullptr));
    context.quit = false;
    clearEvents();
}

}  // namespace

void installViewer() {
    loaderHooks.sourceBegins = sourceBegins;
    loaderHooks.clearImageState = clearViewerSession;
    loaderHooks.displayFit = currentDisplayFit;
    loaderHooks.frameLoaded = frameLoaded;
    loaderHooks.hasWindow = [] { return platform::windowExists(windowContext().window); };
    loaderHooks.keepGoing = keepLoading;
    windowContext().command = runMenuCommand;
}

void runEmptyWindow() {
    openWindowOrExit("VisTel");
    runUntilQuit();
}

}  // namespace vistel
