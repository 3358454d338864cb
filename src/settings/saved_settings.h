// The three values that survive from run to run: file-type filter, frame rate, last folder.
#pragma once

namespace vistel {

// Longest folder that is kept, in bytes.
inline constexpr int maxFolderLength = 259;

// Fills viewerState.filterIndex, savedFrameRate and lastFolder; a value that was never stored
// leaves its field as it is. A stored text that is no number reads as 0.
void readSettings();

// Stores the three fields. A failure is silent.
void writeSettings();

// Makes the current directory the last folder. One whose name is too long to be kept changes
// nothing.
void rememberFolder();

// The way out of the program from inside the window: keeps the frame rate in force, stores the
// settings and ends the process.
[[noreturn]] void saveSettingsAndExit(int status);

}  // namespace vistel
