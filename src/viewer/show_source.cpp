#include "viewer/show_source.h"

#include <utility>

#include "host/messages.h"
#include "platform/window.h"
#include "viewer/commands/control_bar.h"
#include "viewer/commands/file_commands.h"
#include "viewer/commands/menu_commands.h"
#include "viewer/commands/queued_input.h"
#include "viewer/picture/display_setup.h"
#include "viewer/picture/draw_pass.h"
#include "viewer/picture/empty_window.h"
#include "viewer/picture/title.h"
#include "viewer/playback/frame_display.h"
#include "viewer/playback/load_animation.h"
#include "viewer/playback/playback_status.h"
#include "viewer/viewer_loop.h"
#include "viewer/viewer_session.h"
#include "viewer/window/front_image.h"
#include "viewer/window/window_context.h"
#include "viewer/window/window_events.h"
#include "viewer/window/window_layer.h"

namespace vistel {

// The window's calls carry no owner: each thread has one window and one viewer.
static Viewer* joined = nullptr;

// Before an end of the program that comes back to nobody.
static void keepSettings() {
    joined->savedFrameRate = joined->frameRate;
    writeSettings(*joined);
}

void installViewer(Viewer& viewer) {
    joined = &viewer;
    viewer.goOn = [&viewer] { return keepReading(viewer); };
    windowContext().calls = {
        .opened = [] { prepareMenu(*joined); },
        .refused = keepSettings,
        .barOpened = [] { prepareBar(*joined); },
        .command =
            [](int id) {
                isBarCommand(id) ? runBarCommand(*joined, id) : runMenuCommand(*joined, id);
            },
        .rateTyped = [](const std::string& text) { typeRate(*joined, text); },
        .dropped = [](const std::vector<std::string>& names) { openDropped(*joined, names); },
    };
    platform::onDisplayLost([] {
        printError(messageText(Message::rVTDisplayLost));
        keepSettings();
    });
}

void showSource(Viewer& viewer, FrameStore&& firstFrame) {
    if (windowContext().quit) {  // the window went while the frame was read
        viewer.quitRequested = 1;
        return;
    }
    if (viewer.leaving) return;  // another file was chosen meanwhile
    releaseFrames(viewer);
    viewer.fps = {};
    viewer.mark = SourceMark::memory;
    beginDisplay(viewer, keepFrame(viewer, viewer.currentFrame, std::move(firstFrame)));
    showTitle(viewer);
    viewer.status = playbackStatus(viewer);
    windowContext().drawPass = [&viewer] { drawPass(viewer); };
    drawPass(viewer);
    swapDrawing();
    if (viewer.animation) loadRemainingFrames(viewer);
    runViewerLoop(viewer);
}

void runEmptyWindow(Viewer& viewer) {
    openWindowOrExit(viewer, "VisTel");
    windowContext().drawPass = drawEmptyWindow;
    runUntilQuit([] {
        drawEmptyWindow();
        swapDrawing();
    });
}

}  // namespace vistel
