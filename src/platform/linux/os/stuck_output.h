// Standard output and standard error whose reader does not read.
#pragma once

namespace vistel::platform {

// What is written to those that take nothing more goes nowhere from now on, also a write that waits
// already, once it is interrupted. May be called by a signal handler.
void dropStuckOutput();

}  // namespace vistel::platform
