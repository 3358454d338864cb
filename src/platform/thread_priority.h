// How urgent a thread is. win32 and linux implement this each.
#pragma once

namespace vistel::platform {

// The calling thread is to run as soon as it can, before any other; where a user may not ask for
// that, it stays as it is.
void makeThreadTimeCritical();

}  // namespace vistel::platform
