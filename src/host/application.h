// The name under which the program presents itself (captions of its message boxes).
#pragma once

#include "host/tstring.h"

namespace vistel {

void setApplicationName(const Tstring& name);
const Tstring& applicationName();

}  // namespace vistel
