// Everything that the commands of keys, menu and bar work on.
#pragma once

#include <cstdint>

#include "host/modifiers.h"
#include "host/tstring.h"
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

struct Viewer : Player, SavedSettings, HelpLocation, MenuRequests, InputSession {
    int32_t luminanceCurve = 0;  // F8: picking a point writes its luminance through the frames
};

}  // namespace vistel
