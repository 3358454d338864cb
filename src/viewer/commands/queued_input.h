// Which input may be dropped that waits in the event queue. All rules are here, but for those by
// which the queue itself keeps room (EventQueue::post).
#pragma once

#include "viewer/commands/command.h"
#include "viewer/playback/frame_display.h"

namespace vistel {

// A held key must not run on behind its release: its repeats go.
void dropRepeats(const Press& press);

// While stopped, steps and reloads that a held key has queued must not pile up behind a frame
// change; the ticks that came meanwhile go too, but for one. The key that gave the frame up is to
// act.
void dropStepsBehind(const Viewer& viewer, FrameShown shown);

// Whether the mouse has moved on already: then this place need not be shown. What a button does
// meanwhile needs it.
bool laterMoveQueued();

// Serves the window while a frame is read: shows progress, redraws, and takes out of the queue what
// carries nothing, so that the keys and buttons that wait there for the loop do not run out of
// room. False when the reading is to end: Escape during a load, a closed window, a key that has
// waited long enough.
bool keepReading(Viewer& viewer);

}  // namespace vistel
