// Files, standard streams and folders. Names are UTF-8 on every system; forward slashes are
// accepted everywhere. win32 and linux implement all of this each; there is no headless one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/go_on.h"

namespace vistel::platform {

struct FileCloser {
    void operator()(FILE* file) const {
        if (file) std::fclose(file);
    }
};
using FilePtr = std::unique_ptr<FILE, FileCloser>;

// Opens a file as fopen does ("r", "w", "r+"), always binary; no child process inherits it. A
// folder is never opened: null with errno EISDIR. Null with errno set on failure. A named pipe is
// opened for reading ("r") before it has a writer: a read at once would take that for its end, so
// its bytes are to be awaited first (awaitBytes).
[[nodiscard]] FILE* openFile(const std::string& name, const char* mode);

// A file for writing that only its owner may read; one of that name is emptied. Null with errno set
// on failure.
[[nodiscard]] FILE* createPrivateFile(const std::string& name);

// A stream ("r" or "w", binary) on a descriptor, which goes with it; null with errno set on
// failure: the descriptor is then left as it was.
[[nodiscard]] FILE* openDescriptor(int descriptor, const char* mode);

// A new stream on a duplicate of the given standard descriptor (0, 1), mode as fopen; null with
// errno set on failure: EBADF when it was closed as the program started (keepStandardStreams).
[[nodiscard]] FILE* duplicateStandardStream(int descriptor, const char* mode);

// From now on standard input, that of this process and of the commands that it starts, is this
// file, from its start. It stays when the stream is closed. False with errno set on failure.
[[nodiscard]] bool replaceStandardInput(FILE* file);

// Puts the place in the open file, which whoever shares it sees, where the stream stands that reads
// it: what was read ahead is read again. False with errno set where that is not possible.
[[nodiscard]] bool giveBackReadAhead(FILE* stream);

// A further stream on the same open file, at the place that both share (what `stream` holds back is
// written first). For who hands a stream to be closed and keeps the file. Null on failure.
[[nodiscard]] FILE* duplicateStream(FILE* stream);

enum class StreamKind { regular, fifo, characterDevice, other };

struct StreamStatus {
    StreamKind kind = StreamKind::other;
    uint64_t size = 0;     // bytes, regular files only
    bool appends = false;  // whatever is written goes to the end, wherever the stream stands
};

// What the stream is connected to (fstat).
StreamStatus streamStatus(FILE* stream);

// What tells one state of a regular file from another.
struct FileStamp {
    uint64_t size = 0;
    uint64_t modified = 0;  // the system's own unit, from the same clock for all files
    uint64_t id = 0;        // of the file on its volume
    bool operator==(const FileStamp&) const = default;
};
// None for what is no regular file.
std::optional<FileStamp> fileStamp(FILE* stream);
// Whether the file was written within the last seconds: another write that follows so closely may
// leave the same stamp, on volumes whose clock is coarse.
bool modifiedJustNow(const FileStamp& stamp);

// Whether the name is that of a regular file, which is not opened: what stands behind any other
// name (a named pipe) may take an opening for an answer.
bool isRegularFile(const std::string& name);

int streamDescriptor(FILE* stream);
// Whether the stream is one of the three standard streams, which whoever uses them does not close.
inline bool isStandardStream(FILE* stream) { return streamDescriptor(stream) <= 2; }

// How many bytes can be read without waiting for whoever writes them; 0: none have come yet. They
// are waited for up to so many milliseconds; 0 leaves the writer just the time to go on with what
// it is at. At least 1 for what never waits: a regular file, the end of any stream. 1 also stands
// for "as many as fit into the stream's buffer", which should therefore be large.
size_t awaitBytes(FILE* stream, unsigned milliseconds);

// Size of the blocks in which a stream is best read. Where a seek throws away what was read ahead,
// large blocks cost more than they save.
size_t readBlockSize();

// 64-bit position and seek; origin as fseek. seekStream returns false on failure.
int64_t streamPosition(FILE* stream);
[[nodiscard]] bool seekStream(FILE* stream, int64_t offset, int origin);

// Gives the file `from` the name `to`, in the same folder, in the place of the file that has it;
// whoever opens `to` meets either of the two whole. False with errno set on failure: both are left
// as they were.
[[nodiscard]] bool replaceFile(const std::string& from, const std::string& to);

// The name of the file itself where the name is that of a symbolic link, else the name as it is.
// None with errno set for a link that leads nowhere (ENOENT), in a circle (ELOOP) or where this
// user may not look.
[[nodiscard]] std::optional<std::string> followLinks(const std::string& name);

// True when something of that name exists (file or folder).
bool fileExists(const std::string& name);

// Names in a folder, one bare name each, in the system's own order; searchDirectory and folder are
// the two halves of the path (either may be empty; both empty means the current folder). An
// unreadable folder gives an empty list.
std::vector<std::string> listFolder(const std::string& searchDirectory, const std::string& folder);

// Full path of the running program, with the system's own separators.
std::string programPath();

// Whether a name does not count from the current folder: it begins with a slash, or, where there
// are drives, with a backslash or a drive's letter and a colon.
bool isAbsolutePath(const std::string& name);

std::string currentDirectory();
bool setCurrentDirectory(const std::string& folder);

// Whether the standard stream with this descriptor is a character device (a console).
bool isCharacterDevice(int descriptor);
// Whether it is a terminal that a person reads.
bool isTerminal(int descriptor);

// To be called first of all: what the caller has closed of the three standard streams is opened on
// the null device, lest the next file that is opened takes the place.
void keepStandardStreams();

// Whether the caller had closed the standard stream with this descriptor.
bool wasClosed(int descriptor);

// Writes what standard output still holds. False with errno set when that or anything before could
// not be written, EBADF when the caller had closed it: to be asked before a program says that it
// did its work.
[[nodiscard]] bool finishStandardOutput();

// Writes text to standard output at once. While a reader does not read, `goOn` is asked about every
// millisecond; false ends that soon, and what is written to standard output from then on goes
// nowhere.
void writeReport(const std::string& text, const GoOn& goOn);

// The last step of a program that writes reports: ends it with this status at once where its end
// would wait for a reader that does not read; else returns.
void leaveStuckReport(int status);

// Puts the process's standard streams into binary mode and makes binary the default of files
// opened later (a no-operation where text mode does not exist).
void setBinaryFileMode();

// Sets the process's locale to the user's own; numbers keep the decimal point.
void setNativeLocale();

}  // namespace vistel::platform
