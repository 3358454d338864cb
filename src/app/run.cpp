#include "app/run.h"

#include "app/session.h"
#include "host/image_plugins.h"
#include "platform/dialogs.h"
#include "platform/files.h"
#include "platform/menu.h"
#include "platform/process.h"
#include "sequence/frame_sequence.h"
#include "sequence/image_source.h"
#include "viewer/display_lut.h"
#include "viewer/viewer_hooks.h"
#include "viewer/window_layer.h"

namespace vistel {

namespace {

constexpr int standardInput = 0;

bool standardInputIsConsole() { return platform::isCharacterDevice(standardInput); }

StartUpServices joinedServices() {
    StartUpServices services;
    services.loadPlugins = loadAllPXFPlugins;
    services.openSource = openImageSource;
    services.reopenSource = reopenSource;
    services.discover = discoverNumberedFiles;
    services.buildDisplayTable = startDisplayLut;
    services.runEmptyWindow = runEmptyWindow;
    services.checkMenuItem = [](int command, bool checked) {
        platform::checkMenuItem(windowContext().window, command, checked);
    };
    services.showMessageBox = [](const std::string& caption, const std::string& text) {
        platform::showMessageBox(windowContext().window, caption, text);
    };
    services.interrupted = platform::interruptRequested;
    services.standardInputIsConsole = standardInputIsConsole;
    return services;
}

}  // namespace

int runVistel(int argc, char** argv) {
    platform::keepStandardStreams();
    platform::catchInterrupts();
    installViewer();
    return runSession(argc, argv, joinedServices());
}

}  // namespace vistel
