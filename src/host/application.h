// The name under which the program presents itself (captions of its message boxes), and its
// version.
#pragma once

#include "host/tstring.h"

namespace vistel {

void setApplicationName(const Tstring& name);
const Tstring& applicationName();

// "8.5": the project's own, which the file's properties tell, too.
const char* applicationVersion();

}  // namespace vistel
