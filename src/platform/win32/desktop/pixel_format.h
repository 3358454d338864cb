// Which of a device's pixel formats the window gets.
#pragma once

#include "platform/win32/windows_api.h"

namespace vistel::platform {

// Chooses a format and gives it to the device. False when the system refuses (GetLastError tells).
[[nodiscard]] bool setPixelFormat(HDC device);

}  // namespace vistel::platform
