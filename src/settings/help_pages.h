// The help pages: where they lie, and showing one.
#pragma once

#include "host/tstring.h"

namespace vistel {

namespace platform {
struct Window;
}

struct HelpLocation {
    Tstring helpBase;  // address of the install root's folder "/docs/ext/VisTel/"
};

// Shows the page with this address in a web browser. Where the system tells that there is none a
// box over the window names the address, so that it can be opened by hand.
void showHelpPage(platform::Window* over, const Tstring& address);

}  // namespace vistel
