// What a picture is read from, opened: a frame file, read as it is or through a converter, a
// command, standard input, or the converter's test output.
#pragma once

#include <optional>
#include <string>

#include "host/tstring.h"
#include "platform/files.h"
#include "platform/process.h"
#include "sequence/converter.h"
#include "sequence/sequence_state.h"

namespace vistel {

// The result of opening: a stream, or why there is none.
struct OpenedSource {
    SourceStream stream;
    Tstring name;               // of the file, or what stands for a stream without one
    bool oneFile = false;       // the frame is chosen by its number among the forms of the file
    int systemError = 0;        // errno when nothing could be opened
    Tstring complaint;          // instead of it: a message, which does not name the located file
    bool notFoundTold = false;  // the user was told already why there is no stream
    Tstring located;            // path of the regular file that was found; empty for anything else
    // Of the located file when its converter was started.
    std::optional<platform::FileStamp> convertedAs;
    // A file that a converter must read first: the stream still is the file itself.
    SourceReader reader = SourceReader::direct;
    std::string program;  // of the converter

    // There is no stream because there is no such file.
    bool missing() const { return !stream && complaint.empty(); }
    // Whether what connect leaves behind is the output of a command.
    bool throughPipe() const { return stream.isPipe() || reader != SourceReader::direct; }
    // Starts the converter when one is needed: the stream becomes its output, or ends
    // (systemError). What it complains of is shown once for each file (`converted`). To be called
    // before anything is read.
    void connect(ConvertedFiles& converted);
};

// A frame file, looked for along the search directories; a converter that it needs is not started
// (waitForWriter: see readerOfFile). What is no regular file (a named pipe) can be opened only
// once: it is not told apart but read as it is.
OpenedSource openFrameFile(FramePlaces& places, const Tstring& name, bool waitForWriter);

// Of the located file, before it is connected to what reads it.
inline std::optional<platform::FileStamp> locatedStamp(const OpenedSource& source) {
    if (!source.stream || source.located.empty()) return std::nullopt;
    return platform::fileStamp(source.stream.file());
}

// The output of a command.
OpenedSource openCommand(const std::string& command,
                         platform::CommandErrors errors = platform::CommandErrors::shown);

// A command of the user's, with the frame's number in the environment variable FRAME.
OpenedSource openFrameCommand(const std::string& command, int frame);

// The output of the command in the environment variable VTTEST, or of the image converter, which is
// called without a word.
OpenedSource openTestOutput();

// A stream on a duplicate of standard input; a complaint when that was closed by who started us.
OpenedSource openStandardInput();

}  // namespace vistel
