// The stream a picture is read from, and how it is opened: a frame file, read as it is or through a
// converter, a command, standard input, or the converter's test output.
#pragma once

#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "host/tstring.h"
#include "platform/files.h"
#include "platform/process.h"

namespace vistel {

// An open stream and how it must be closed: a command is not only a stream, a file is closed unless
// it is one of the three standard streams. It is read in large blocks.
class SourceStream {
 public:
    SourceStream() = default;
    // Takes the stream, of which nothing has been read yet; null for none.
    SourceStream(FILE* file, bool isPipe);
    SourceStream(SourceStream&& other) noexcept
        : file_(std::exchange(other.file_, nullptr)),
          isPipe_(other.isPipe_),
          block_(std::move(other.block_)) {}
    SourceStream& operator=(SourceStream&& other) noexcept {
        std::swap(file_, other.file_);
        std::swap(isPipe_, other.isPipe_);
        std::swap(block_, other.block_);
        return *this;
    }
    ~SourceStream() { abandon(); }

    explicit operator bool() const { return file_ != nullptr; }
    FILE* file() const { return file_; }
    bool isPipe() const { return isPipe_; }

    // One of the three ends it. The exit status of a command, waited for as long as `goOn` (asked
    // every millisecond) wants, else -1; 0 for files and for nothing open.
    int close(const std::function<bool()>& goOn);
    // All that was wanted of it has been read: a command may still do what it does. It is waited
    // for only when too many do that already, and only with a `goOn`.
    void release(const std::function<bool()>& goOn = {});
    // It is not wanted any more: a command is ended.
    void abandon();

 private:
    void end(const std::function<void(FILE*)>& endPipe);

    FILE* file_ = nullptr;
    bool isPipe_ = false;
    std::unique_ptr<char[]> block_;  // the stream's buffer
};

// What reads a file of a kind (probeFileKind): the frame reader itself or one of two converters,
// which write the frame format to their standard output.
enum class SourceReader { direct, imageConverter, olderConverter };
SourceReader readerOfKind(int kind);

// Base name of a converter's program.
const char* converterName(SourceReader reader);

// Full path of a converter's program; none: not installed. Called by the threads that read ahead,
// too. Tests put their own here.
inline std::optional<std::string> (*converterProgram)(SourceReader reader) =
    [](SourceReader reader) { return platform::findProgram(converterName(reader)); };

// The command that converts one file.
std::string converterCommand(SourceReader reader, const std::string& program,
                             const std::string& file);

// The result of opening: a stream, or why there is none.
struct OpenedSource {
    SourceStream stream;
    int systemError = 0;  // errno when nothing could be opened
    Tstring complaint;    // instead of it: a message, which does not name the located file
    Tstring located;      // path of the regular file that was found; empty for anything else
    // Of the located file when its converter was started.
    std::optional<platform::FileStamp> convertedAs;
    // A file that a converter must read first: the stream still is the file itself.
    SourceReader reader = SourceReader::direct;
    std::string program;  // of the converter

    // Whether what connect leaves behind is the output of a command.
    bool throughPipe() const { return stream.isPipe() || reader != SourceReader::direct; }
    // Starts the converter when one is needed: the stream becomes its output, or ends
    // (systemError). What it complains of is shown once for each file (ConvertedFiles).
    void connect();
};

// What reads the regular file of this path, by how it begins. With waitForWriter a file that is
// still too short to be told is taken for a frame that is being written.
SourceReader readerOfFile(const std::string& located, bool waitForWriter);

// A frame file, looked for along the search directories; a converter that it needs is not started
// (waitForWriter: see readerOfFile). What is no regular file (a named pipe) can be opened only
// once: it is not told apart but read as it is.
OpenedSource openFrameFile(const Tstring& name, bool waitForWriter);

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
