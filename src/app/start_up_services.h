// What start-up and the walk over the file arguments need of the rest of the program. The record is
// filled once, where everything is joined; tests fill it with recorders. A null member is skipped
// (an opener that is missing counts as one that fails).
#pragma once

#include <string>

#include "host/tstring.h"
#include "iff/frame_store.h"

namespace vistel {

struct StartUpServices {
    // --- sources ---
    // Opens a source and reads its first picture; the empty name is standard input. 0 or a failure.
    int (*openSource)(const Tstring& name, FrameStore& frame) = nullptr;
    // Looks for the frames that a name stands for; non-zero when there are some, and the frame
    // range of the state is then filled.
    int (*discover)(const Tstring& name) = nullptr;

    // --- viewer ---
    // A source begins: what the window of the one before has left behind is over.
    void (*sourceBegins)() = nullptr;
    // Forgets what is kept for one image: frames, place, channel, view.
    void (*clearImageState)() = nullptr;
    // Shows the source that was opened, until the user leaves it.
    void (*showSource)(FrameStore&& frame) = nullptr;
    // The window without a picture, until it is closed.
    void (*runEmptyWindow)() = nullptr;
    // All was shown: what the other windows show stays until they are closed.
    void (*outlastWindows)() = nullptr;
    // Joins the viewer to its window, once the state is there.
    void (*joinViewer)() = nullptr;
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
