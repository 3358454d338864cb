// The signals that ask a process to end, while it makes a file that nobody is to find half done.
#pragma once

#include <string>

namespace vistel::platform {

// From now on such a signal waits for endChange. Signals that are ignored stay so; who handles one
// itself ends in its own way.
void beginChange();
// Lets the signals end the process again, and removes the file of this name first. Empty: there is
// none. A name is shorter than PATH_MAX.
void endChange(const std::string& unfinished);

}  // namespace vistel::platform
