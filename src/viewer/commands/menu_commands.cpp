#include "viewer/commands/menu_commands.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

#include "platform/menu.h"
#include "platform/window.h"
#include "resources/command_ids.h"
#include "viewer/commands/command.h"
#include "viewer/commands/file_commands.h"
#include "viewer/commands/sound_commands.h"
#include "viewer/picture/display_setup.h"
#include "viewer/picture/picture_view.h"
#include "viewer/playback/frame_display.h"
#include "viewer/window/window_context.h"
#include "viewer/window/window_events.h"
#include "viewer/window/window_layer.h"

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
    viewer.magnify = std::clamp(viewer.magnify, 1, 8);
    viewer.rfact = std::max(viewer.rfact, 1);
    viewer.fullScreen = 1;
    refitWindow(viewer);
    if (keepFittingFrames(viewer)) return true;
    postEvent(EV_REDRAW, 1);  // what there is, until the frame has been read again
    return postKey(viewer, press, keyReload);
}

bool toggleFullResolution(Viewer& viewer, const Press& press, int) {
    viewer.noRescale = !viewer.noRescale;
    forgetLargestFrame(viewer.layout);
    if (!viewer.shown) return false;
    return keepFittingFrames(viewer) ? refitWindow(viewer) : postKey(viewer, press, keyReload);
}

bool toggleControlBar(Viewer&, const Press&, int) {
    showControlBar(!windowContext().controlBarWanted);
    return true;
}

bool openHelpPage(Viewer& viewer, const Press&, int page) {
    showHelpPage(windowContext().window,
                 viewer.helpBase + "VisTel" + std::to_string(page) + ".html");
    return false;
}

// --- when there is something to do ---------------------------------------------------------------

bool always(const Viewer&) { return true; }

// Standard input cannot be read twice.
bool fileOnScreen(const Viewer& viewer) { return viewer.shown && !viewer.openedName.empty(); }

template <ChannelMode view>
bool viewThere(const Viewer& viewer) {
    return viewer.shown && hasView(viewer, view);
}

struct MenuBinding {
    int id;
    Command command;
    int argument;
    bool (*enabled)(const Viewer&) = always;
    bool (*checked)(const Viewer&) = nullptr;  // null: never
};

bool anythingOnScreen(const Viewer& viewer) { return viewer.shown != nullptr; }
bool animationOnScreen(const Viewer& viewer) { return viewer.shown && viewer.animation; }

bool soundThere(const Viewer& viewer) { return animationOnScreen(viewer) && viewer.soundLoaded; }
bool soundMuted(const Viewer& viewer) { return viewer.soundLoaded && !viewer.soundOn; }

constexpr MenuBinding bindings[] = {
    // clang-format off
    {COMMAND_OPEN_IMAGE,      openFile,             0},
    {COMMAND_OPEN_ANIMATION,  openFile,             1},
    {COMMAND_REVERT,          postKey,              keyReload, fileOnScreen},
    {COMMAND_IMPORT_SOUND,    importSound,          0, animationOnScreen},
    {COMMAND_TOGGLE_SOUND,    toggleSound,          0, soundThere, soundMuted},
    {COMMAND_SAVE_IMAGE,      saveFile,             0, anythingOnScreen},
    {COMMAND_SAVE_ANIMATION,  saveFile,             1, animationOnScreen},
    {COMMAND_EXIT,            closeViewer,          0},
    {COMMAND_RED_CHANNEL,     postKey,              'R', viewThere<ChannelMode::red>},
    {COMMAND_GREEN_CHANNEL,   postKey,              'G', viewThere<ChannelMode::green>},
    {COMMAND_BLUE_CHANNEL,    postKey,              'B', viewThere<ChannelMode::blue>},
    {COMMAND_ALPHA_CHANNEL,   postKey,              'A', viewThere<ChannelMode::matte>},
    {COMMAND_ALL_CHANNELS,    postKey,              'C', viewThere<ChannelMode::all>},
    {COMMAND_LUMINANCE,       postKey,              'L', viewThere<ChannelMode::luminance>},
    {COMMAND_CONTROL_BAR,     toggleControlBar,     0, always, [](const Viewer&) { return windowContext().controlBarShown; }},
    {COMMAND_FULL_SCREEN,     enterFullScreen,      0, always, [](const Viewer& viewer) { return viewer.fullScreen != 0; }},
    {COMMAND_FULL_RESOLUTION, toggleFullResolution, 0, always, [](const Viewer& viewer) { return viewer.noRescale != 0; }},
    {COMMAND_HELP_MANIPULATIONS,   openHelpPage,    22},
    {COMMAND_HELP_OPENING,         openHelpPage,    13},
    {COMMAND_HELP_SAVING,          openHelpPage,    16},
    {COMMAND_HELP_ANIMATION,       openHelpPage,    23},
    {COMMAND_HELP_COMMAND_LINE,    openHelpPage,    20},
    {COMMAND_HELP_MOUSE,           openHelpPage,    29},
    {COMMAND_HELP_KEYBOARD,        openHelpPage,    21},
    {COMMAND_ABOUT,           showAbout,            0},
    // clang-format on
};

const MenuBinding* findBinding(int id) {
    const auto* row = std::ranges::find(bindings, id, &MenuBinding::id);
    return row == std::end(bindings) ? nullptr : row;
}

}  // namespace

void runMenuCommand(Viewer& viewer, int id) {
    const MenuBinding* binding = findBinding(id);
    if (!binding || !binding->enabled(viewer)) return;
    const Press chosen{.modifiers = viewer.modifiers};
    if (binding->command(viewer, chosen, binding->argument)) postEvent(EV_REDRAW, 1);
    showMenuState(viewer);
}

void showMenuState(Viewer& viewer) {
    platform::Window* const window = windowContext().window;
    MenuState now;
    for (const MenuBinding& binding : bindings) {
        const auto item = static_cast<size_t>(binding.id - COMMAND_FIRST);
        now.enabled[item] = binding.enabled(viewer);
        now.checked[item] = binding.checked && binding.checked(viewer);
    }
    const std::optional<MenuState> before = std::exchange(viewer.menuOnScreen, now);
    if (before == now) return;
    for (int id = COMMAND_FIRST; id <= COMMAND_LAST; ++id) {
        const auto item = static_cast<size_t>(id - COMMAND_FIRST);
        if (!before || before->enabled[item] != now.enabled[item])
            platform::enableMenuItem(window, id, now.enabled[item]);
        if (!before || before->checked[item] != now.checked[item])
            platform::checkMenuItem(window, id, now.checked[item]);
    }
}

void prepareMenu(Viewer& viewer) {
    viewer.menuOnScreen.reset();
    showMenuState(viewer);
}

}  // namespace vistel
