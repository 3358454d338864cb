#include "viewer/menu_commands.h"

#include "app/viewer_state.h"
#include "platform/menu.h"
#include "viewer/display_setup.h"
#include "viewer/viewer_session.h"
#include "viewer/window_layer.h"

namespace vistel {

namespace {

constexpr int firstCommand = 40001, lastCommand = 40028;
constexpr int commandFullResolution = 40028;

void postKey(int key) { postEvent(key, 1); }
void closeViewer(int) { platform::closeWindow(); }

void refitWindow() {
    if (FrameStore* shown = viewerSession().shown) setUpDisplay(*shown, Refit::fitWindow);
    postEvent(EV_REDRAW, 1);
}

void enterFullScreen(int) {
    if (viewerState.fullScreen) return;
    const PictureLayout& layout = viewerSession().layout;
    viewerSession().beforeFullScreen = {layout.zoom, layout.panX, layout.panY};
    viewerState.fullScreen = 1;
    refitWindow();
}

// Frames that were fitted to the screen by their reader, or now are to be, are read again.
void readAgainAtNewFit() {
    ViewerSession& session = viewerSession();
    if (!session.shown) return;
    const ImageHeader& header = session.shown->header;
    const DisplaySize size = displaySize(header.width, header.height, currentDisplayFit());
    if (static_cast<int>(size.shrink) == session.shown->shrink) return refitWindow();
    session.slots.dropAllBut(viewerState.currentFrame);
    postKey('U');
}

void toggleFullResolution(int) {
    viewerState.noRescale = !viewerState.noRescale;
    platform::checkMenuItem(commandFullResolution, viewerState.noRescale);
    readAgainAtNewFit();
}

struct MenuCommand {
    int id;
    void (*run)(int argument);
    int argument;
};

constexpr MenuCommand commands[] = {
    {40008, closeViewer, 0},
    {40012, postKey, 'U'},
    {40025, enterFullScreen, 0},
    {40028, toggleFullResolution, 0},
};

const MenuCommand* findCommand(int id) {
    for (const MenuCommand& command : commands) {
        if (command.id == id) return &command;
    }
    return nullptr;
}

}  // namespace

void runMenuCommand(int id) {
    if (const MenuCommand* command = findCommand(id)) command->run(command->argument);
}

void prepareMenu() {
    for (int id = firstCommand; id <= lastCommand; ++id) {
        if (!findCommand(id)) platform::enableMenuItem(id, false);
    }
    platform::checkMenuItem(commandFullResolution, viewerState.noRescale);
}

}  // namespace vistel
