// What start-up and the walk over the file arguments need of the rest of the program. The record is
// filled once, where everything is joined; tests fill it with recorders. A null member is skipped
// (an opener that is missing counts as one that fails).
#pragma once

#include <string>

#include "host/tstring.h"

namespace vistel {

struct StartUpServices {
    // --- sources ---
    // Opens a source, loads it and runs the viewer on it; the empty name is standard input. 0 or a
    // failure.
    int (*openSource)(const Tstring& name) = nullptr;
    // The same for a source chosen in the window; step 0 means a single image.
    int (*reopenSource)(const Tstring& name, int start, int end, int step) = nullptr;
    // Looks for the numbered files of a stem ending with a dot; non-zero when there are some, and
    // the frame range of the state is then filled.
    int (*discover)(const Tstring& stem) = nullptr;

    // --- viewer ---
    // The window without a picture, until it is closed.
    void (*runEmptyWindow)() = nullptr;
    // Allocates the display look-up table, sets its factors from the state and builds it.
    void (*buildDisplayTable)() = nullptr;
    void (*checkMenuItem)(int command, bool checked) = nullptr;
    void (*showMessageBox)(const std::string& caption, const std::string& text) = nullptr;

    // --- others ---
    void (*loadPlugins)() = nullptr;
    // Opens viewerState.audioFile and prepares it for playing.
    void (*openSoundTrack)() = nullptr;
    // The user wants the program to end at once (Ctrl+C in the console).
    bool (*interrupted)() = nullptr;
    // Whether standard input is a console (true) or a file or pipe that carries an image.
    bool (*standardInputIsConsole)() = nullptr;
};

// Calls a member that may be null.
template <typename... Parameters, typename... Arguments>
void callIfSet(void (*service)(Parameters...), Arguments&&... arguments) {
    if (service) service(arguments...);
}

}  // namespace vistel
