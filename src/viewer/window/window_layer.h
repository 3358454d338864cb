// The viewer's window: opening, placing, titling it. A thin layer over the platform's window that
// adds what is the same on every system: the pending placement, the event queue, the control bar's
// share of the client area.
#pragma once

#include <string>

namespace vistel {

// No window is narrower, pixels: its menu needs the room.
constexpr int leastWindowWidth = 320;

// Creates the window at the pending placement (320 x 240 in the middle of the work area when none
// is pending), or re-titles and re-places the existing one, whose event queue is emptied. False
// when the system refuses.
[[nodiscard]] bool openViewerWindow(const std::string& title);

// Edits of the pending placement; the default one is made first when none is pending. However it is
// chosen, a window lies in the work area with its frame and menu, and is made smaller for that;
// only full screen covers all.
void setPreferredPosition(int x0, int x1, int y0, int y1);
void clearPreferredPosition();

// Moves the existing window to the pending placement and frees it.
void applyPendingPlacement();

// Opens or closes the control bar: the window becomes 29 rows higher or lower at its upper edge, so
// that nothing of the picture moves where the screen has room. In full screen nothing happens.
void showControlBar(bool wanted);

// A cross-hair over the picture, or the arrow; also in windows that are opened later.
void showCrossCursor(bool cross);

void setViewerTitle(const std::string& title);
void setTimerRate(int ticksPerSecond);

// A source begins: the quit of a window that was closed is over.
void forgetClosedWindow();

}  // namespace vistel
