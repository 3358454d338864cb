#include "viewer/commands/menu_commands.h"

#include <algorithm>
#include <iterator>
#include <string>

#include "platform/menu.h"
#include "platform/window.h"
#include "resources/command_ids.h"
#include "viewer/commands/command.h"
#include "viewer/commands/sound_commands.h"
#include "viewer/picture/display_setup.h"
#include "viewer/playback/frame_display.h"
#include "viewer/window/window_context.h"
#include "viewer/window/window_events.h"

namespace vistel {

namespace {

// Most items do what a key does, and leave it to the key.
bool postKey(Viewer&, const Press&, int key) {
    postEvent(key, 1);
    return false;
}

bool closeViewer(Viewer&, const Press&, int) {
    platform::closeWindow(windowContext().window);
    return false;
}

bool refitWindow(Viewer& viewer) {
    if (viewer.shown) setUpDisplay(viewer, *viewer.shown, Refit::fitWindow);
    return true;
}

bool enterFullScreen(Viewer& viewer, const Press& press, int) {
    if (viewer.fullScreen) return false;
    const PictureLayout& layout = viewer.layout;
    viewer.beforeFullScreen = {layout.width, layout.height, layout.zoom, layout.panX, layout.panY};
    viewer.fullScreen = 1;
    refitWindow(viewer);
    if (keepFittingFrames(viewer)) return true;
    postEvent(EV_REDRAW, 1);  // what there is, until the frame has been read again
    return postKey(viewer, press, keyReload);
}

bool toggleFullResolution(Viewer& viewer, const Press& press, int) {
    viewer.noRescale = !viewer.noRescale;
    platform::checkMenuItem(windowContext().window, COMMAND_FULL_RESOLUTION, viewer.noRescale);
    forgetLargestFrame(viewer.layout);
    if (!viewer.shown) return false;
    return keepFittingFrames(viewer) ? refitWindow(viewer) : postKey(viewer, press, keyReload);
}

bool openHelpPage(Viewer& viewer, const Press&, int page) {
    showHelpPage(windowContext().window,
                 viewer.helpBase + "VisTel" + std::to_string(page) + ".html");
    return false;
}

struct MenuBinding {
    int id;
    Command command;
    int argument;
};

constexpr MenuBinding bindings[] = {
    {COMMAND_EXIT, closeViewer, 0},
    {COMMAND_REVERT, postKey, keyReload},
    {COMMAND_FULL_SCREEN, enterFullScreen, 0},
    {COMMAND_FULL_RESOLUTION, toggleFullResolution, 0},
    {COMMAND_TOGGLE_SOUND, toggleSound, 0},
    {COMMAND_HELP_OPENING, openHelpPage, 13},
    {COMMAND_HELP_SAVING, openHelpPage, 16},
    {COMMAND_HELP_COMMAND_LINE, openHelpPage, 20},
    {COMMAND_HELP_KEYBOARD, openHelpPage, 21},
    {COMMAND_HELP_MANIPULATIONS, openHelpPage, 22},
    {COMMAND_HELP_ANIMATION, openHelpPage, 23},
    {COMMAND_HELP_MOUSE, openHelpPage, 29},
};

const MenuBinding* findBinding(int id) {
    const auto* row = std::ranges::find(bindings, id, &MenuBinding::id);
    return row == std::end(bindings) ? nullptr : row;
}

}  // namespace

void runMenuCommand(Viewer& viewer, int id) {
    const MenuBinding* binding = findBinding(id);
    if (!binding) return;
    const Press chosen{.modifiers = viewer.modifiers};
    if (binding->command(viewer, chosen, binding->argument)) postEvent(EV_REDRAW, 1);
}

void prepareMenu(const Viewer& viewer) {
    const auto needsSound = [](int id) {
        return id == COMMAND_IMPORT_SOUND || id == COMMAND_TOGGLE_SOUND;
    };
    for (int id = COMMAND_FIRST; id <= COMMAND_LAST; ++id) {
        const bool enabled = findBinding(id) && (viewer.soundLoaded || !needsSound(id));
        platform::enableMenuItem(windowContext().window, id, enabled);
    }
    platform::checkMenuItem(windowContext().window, COMMAND_FULL_RESOLUTION, viewer.noRescale);
}

}  // namespace vistel
