// Which stream the current source is read from: the choice between the frames of an animation, the
// test output, standard input, a command and a file, made from the viewer's state.
#pragma once

#include <functional>

#include "host/tstring.h"
#include "sequence/source_stream.h"

namespace vistel {

struct ChosenSource {
    OpenedSource opened;
    FILE* file = nullptr;  // what is read: the opened stream, or the one of a one-file animation;
                           // the file itself as long as its converter has not been started
    bool oneFile = false;  // the frame is chosen by its number among the forms of the file
    bool notFoundTold = false;  // the user was told already why there is none
    Tstring name;               // of the file, or what stands for a stream without one

    // Starts the converter of a file that needs one; `file` is null afterwards when it cannot be
    // started. To be called before anything is read.
    void connect();
    // End what was opened for it (see SourceStream).
    int close(const std::function<bool()>& goOn);
    void release(const std::function<bool()>& goOn = {});
    void abandon();
};

// Opens the source for viewerState.currentFrame. Sets sourceIsPipe and oneFileStream; outside an
// animation sourceName and, for a file, the current directory and the last folder. The first frame
// of an animation may move currentFrame on (findFirst). file is null when there is nothing to read.
ChosenSource chooseSource(const Tstring& name);

// The path at which chooseSource would look first for another frame of the animation; empty when
// its frames are not files of their own. Changes nothing.
Tstring likelyFramePath(const Tstring& name, int frame);

}  // namespace vistel
