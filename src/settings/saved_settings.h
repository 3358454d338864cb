// The three values that survive from run to run: file-type filter, frame rate, last folder.
#pragma once

#include <cstdint>
#include <string>

#include "host/tstring.h"

namespace vistel {

struct SavedSettings {
    int32_t filterIndex = 0;      // of the file dialogs
    int32_t savedFrameRate = 24;  // frames per second
    Tstring lastFolder;           // where the file dialogs start; at most maxFolderLength bytes
};

// Longest folder that is kept, in bytes.
inline constexpr int maxFolderLength = 259;

// Fills the fields; a value that was never stored leaves its field as it is. A stored text that is
// no number reads as 0.
void readSettings(SavedSettings& settings);

// Stores the three fields. A failure is silent.
void writeSettings(const SavedSettings& settings);

// Makes the folder the last one. One whose name is empty or too long to be kept changes nothing.
void rememberFolder(SavedSettings& settings, const std::string& folder);

}  // namespace vistel
