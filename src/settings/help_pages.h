// Where the help pages lie.
#pragma once

#include "host/tstring.h"

namespace vistel {

struct HelpLocation {
    Tstring helpBase;  // "file:///" + install root + "/docs/ext/VisTel/"
};

}  // namespace vistel
