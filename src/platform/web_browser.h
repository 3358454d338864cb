// Showing a page to the user in a web browser. Each system implements it (win32, linux, headless).
#pragma once

#include <string>

namespace vistel::platform {

// Opens the address ("file:///...") in a browser, which lives on when this program ends. False when
// none could be started, as far as the system tells. May take a moment, as long as a browser needs
// to say that it cannot.
[[nodiscard]] bool showInBrowser(const std::string& address);

}  // namespace vistel::platform
