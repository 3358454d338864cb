// The one Qt application of the process, started when something first needs a screen: runs that
// only print never touch the display.
#pragma once

struct _XDisplay;

namespace vistel::platform {

// True when there is an application, which is started if need be. False without a display or on
// another thread than the first one: widgets belong to that thread.
[[nodiscard]] bool startApplication();

// True when an application has been started and the caller may use it.
bool applicationRuns();

// Whether somebody puts frames round windows.
bool windowManagerRuns();

// The connection to the X server; null without an application.
_XDisplay* xDisplay();

}  // namespace vistel::platform
