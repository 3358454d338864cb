// Everything that the commands of keys, menu and bar work on.
#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <optional>

#include "host/modifiers.h"
#include "host/tstring.h"
#include "platform/bar_picture.h"
#include "resources/command_ids.h"
#include "settings/help_pages.h"
#include "settings/saved_settings.h"
#include "viewer/playback/player.h"

namespace vistel {

// What menus and dialogs leave for the walk over the files.
struct MenuRequests {
    Tstring pendingOpen;
    FrameRange pendingRange;
    int32_t pendingRangeSet = 0;
    int32_t pendingZoom = 0, pendingShrink = 0;
    int32_t quitRequested = 0;
    bool leaving = false;   // another file was chosen: what is shown or read is given up
    bool choosing = false;  // a file is being chosen or tried; no second one can be
};

// Painting with the right button.
struct Painting {
    bool active = false;
    int column = 0, row = 0;  // image pixel painted last
    bool lines = true;        // successive points are joined
};

// Dragging with the left button: the picture, or the position in the animation.
struct Dragging {
    bool pan = false, scrub = false;
    int cursorX = 0, cursorY = 0;  // at the last pan, or where the scrub began; client pixels
    int frame = 0;                 // where the scrub began
    PlayMode playMode = PlayMode::stopped;  // before it

    bool any() const { return pan || scrub; }
};

// What is known of the user's hands, forgotten with the source.
struct InputSession {
    Painting painting;
    Dragging dragging;
    Modifiers modifiers;
    bool restRequested = false;  // a pause of 100 ms after the event
    bool escapeTaken = false;    // Escape ended a load; its release means nothing more
};

// How the items of the menu look, each at its id less COMMAND_FIRST.
struct MenuState {
    std::bitset<COMMAND_LAST - COMMAND_FIRST + 1> enabled, checked;
    bool operator==(const MenuState&) const = default;
};

// What the control bar shows.
struct BarState {
    std::array<platform::BarButtonLook, 10> looks;  // of its commands, in the order of their table
    int rate = 0;                                   // frames per second
};

struct Viewer : Player, SavedSettings, HelpLocation, MenuRequests, InputSession {
    std::optional<MenuState> menuOnScreen;  // none: the window's menu is new
    std::optional<BarState> barOnScreen;    // none: its control bar is new
    bool outputGivenUp = false;  // nobody read standard output: what is written there is lost
};

}  // namespace vistel
