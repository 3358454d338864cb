#include "viewer/menu_commands.h"

#include "app/viewer_state.h"
#include "platform/menu.h"
#include "viewer/display_setup.h"
#include "viewer/frame_display.h"
#include "viewer/viewer_session.h"
#include "viewer/window_layer.h"

namespace vistel {

namespace {

constexpr int firstCommand = 40001, lastCommand = 40028;
constexpr int commandFullResolution = 40028;

void postKey(int key) { postEvent(key, 1); }
void closeViewer(int) { platform::closeWindow(windowContext().window); }

void refitWindow() {
    if (FrameStore* shown = viewerSession().shown) setUpDisplay(*shown, Refit::fitWindow);
    postEvent(EV_REDRAW, 1);
}

void enterFullScreen(int) {
    if (viewerState.fullScreen) return;
    const PictureLayout& layout = viewerSession().layout;
    viewerSession().beforeFullScreen = {layout.width, layout.height, layout.zoom, layout.panX,
                                        layout.panY};
    viewerState.fullScreen = 1;
    refitWindow();
    if (!keepFittingFrames()) postKey('U');
}

void toggleFullResolution(int) {
    viewerState.noRescale = !viewerState.noRescale;
    platform::checkMenuItem(windowContext().window, commandFullResolution, viewerState.noRescale);
    if (!viewerSession().shown) return;
    keepFittingFrames() ? refitWindow() : postKey('U');
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
        if (!findCommand(id)) platform::enableMenuItem(windowContext().window, id, false);
    }
    platform::checkMenuItem(windowContext().window, commandFullResolution, viewerState.noRescale);
}

}  // namespace vistel
