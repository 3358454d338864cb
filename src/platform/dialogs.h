// Modal boxes.
#pragma once

#include <string>

namespace vistel::platform {

// Text with an OK button. Without a display the text goes to standard error.
void showMessageBox(const std::string& caption, const std::string& text);

// The system's own text for the last error of this thread, in an information box over the window.
void showSystemErrorBox(const std::string& caption);

}  // namespace vistel::platform
