// Modal boxes over a window of the calling thread, which takes no input until they are closed;
// other windows do. With null the box stands alone. Each system implements both functions (win32,
// linux, headless).
#pragma once

#include <string>

namespace vistel::platform {

struct Window;

// Text with an OK button. Without a display the text goes to standard error.
void showMessageBox(Window* over, const std::string& caption, const std::string& text);

// The system's own text for the last error of this thread, in an information box.
void showSystemErrorBox(Window* over, const std::string& caption);

}  // namespace vistel::platform
