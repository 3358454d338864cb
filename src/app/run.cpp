#include "app/run.h"

#include <optional>
#include <utility>

#include "app/session.h"
#include "host/image_plugins.h"
#include "iff/result_codes.h"
#include "platform/dialogs.h"
#include "platform/files.h"
#include "platform/menu.h"
#include "platform/process.h"
#include "platform/window.h"
#include "sequence/frame_sequence.h"
#include "sequence/image_source.h"
#include "viewer/entropy_window.h"
#include "viewer/picture/display_lut.h"
#include "viewer/playback/frame_display.h"
#include "viewer/playback/sound_in_step.h"
#include "viewer/show_source.h"
#include "viewer/viewer_session.h"
#include "viewer/viewer_state.h"
#include "viewer/window/window_context.h"
#include "viewer/window/window_layer.h"

namespace vistel {

namespace {

constexpr int standardInput = 0;

bool standardInputIsConsole() { return platform::isCharacterDevice(standardInput); }

// What was opened, told apart from all else that was.
std::string sourceOfFrame(const SequenceState& state) {
    return formatPrintf("%d ", state.currentFrame) + state.openedName;
}

int openSource(const Tstring& name, FrameStore& frame) {
    ReadTerms terms = readTerms(viewerState);
    std::optional<CountedFile> counted;
    if (viewerState.histogram) terms.countTile = countInto(counted);
    const int code = openImageSource(viewerState, name, terms,
                                     platform::windowExists(windowContext().window), frame);
    if (counted && code != iffAborted)
        viewerState.entropyWindows.open(sourceOfFrame(viewerState), counted->histogram,
                                        histogramTitle(viewerState, *counted),
                                        viewerState.fullScreen != 0);
    return code;
}

// The viewer's own window would show what it does not serve any more.
void outlastWindows() {
    if (!viewerState.entropyWindows.anyOpen()) return;
    platform::releaseWindow(std::exchange(windowContext().window, nullptr));
    viewerState.entropyWindows.waitUntilClosed();
}

StartUpServices joinedServices() {
    StartUpServices services;
    services.loadPlugins = loadAllPXFPlugins;
    services.openSource = openSource;
    services.sourceBegins = [] {
        forgetClosedWindow();
        viewerState.leaving = false;
    };
    services.clearImageState = [] { clearViewerSession(viewerState); };
    services.showSource = [](FrameStore&& frame) { showSource(viewerState, std::move(frame)); };
    services.discover = [](const Tstring& name) {
        return discoverFrames(viewerState, name, viewerState);
    };
    services.buildDisplayTable = [] { startDisplayLut(viewerState); };
    services.joinViewer = [] { installViewer(viewerState); };
    services.outlastWindows = outlastWindows;
    services.runEmptyWindow = [] { runEmptyWindow(viewerState); };
    services.checkMenuItem = [](int command, bool checked) {
        platform::checkMenuItem(windowContext().window, command, checked);
    };
    services.showMessageBox = [](const std::string& caption, const std::string& text) {
        platform::showMessageBox(windowContext().window, caption, text);
    };
    services.openSoundTrack = [] { startSound(viewerState); };
    services.interrupted = platform::interruptRequested;
    services.standardInputIsConsole = standardInputIsConsole;
    return services;
}

}  // namespace

int runVistel(int argc, char** argv) {
    platform::keepStandardStreams();
    platform::catchInterrupts();
    const int status = runSession(argc, argv, joinedServices());
    platform::leaveStuckReport(status);
    return status;
}

}  // namespace vistel
