// Named texts that survive from run to run, per user. win32 (the registry) and linux (a file)
// implement both functions each; there is no headless one.
#pragma once

#include <optional>
#include <string>

namespace vistel::platform {

// The stored text, at most 259 bytes; none when it was never written.
std::optional<std::string> readSetting(const std::string& name);

// Stores the text; other settings stay, also those that other programs store meanwhile. A failure is
// silent by design, but for settings behind a symbolic link that leads nowhere: the link stays, and a
// line on standard error says so.
void writeSetting(const std::string& name, const std::string& value);

}  // namespace vistel::platform
