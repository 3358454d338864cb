// The entropy analyser: windows beside the viewer's, one for each source that was opened while its
// tiles were counted. Each shows the byte histogram of its source until it is closed; Escape in one
// of them ends the program, as an interrupt from the console does.
//
// A window has a copy of its own of what it draws: whoever has counted keeps nothing for it. Where
// every thread can have windows each has a thread of its own, which waits for nobody and for which
// nobody waits; elsewhere it is served by whoever handles the first thread's messages.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "analysis/byte_histogram.h"
#include "iff/image_load_request.h"
#include "platform/process.h"
#include "sequence/sequence_state.h"

namespace vistel {

// What was counted in one source.
struct CountedFile {
    ByteHistogram histogram;
    std::string imageName;  // of its first image with tiles; empty: it has none
};

// Counts all tiles of one source. There is something in `counted` once there was a tile.
TileCounter countInto(std::optional<CountedFile>& counted);

// The window's title: it names the file; standard input by its image's name where that has one.
std::string histogramTitle(const CurrentSource& source, const CountedFile& counted);

class EntropyWindows {
 public:
    // `escaped` is called on the window's thread. The program has then to end within two seconds:
    // a window with a thread of its own ends it otherwise.
    EntropyWindows(void (*escaped)() = platform::requestInterrupt);
    ~EntropyWindows();
    EntropyWindows(EntropyWindows&&) noexcept;
    EntropyWindows& operator=(EntropyWindows&&) noexcept;

    // Opens a window of the picture's size in the middle of the screen; of a screen that is not to
    // be covered 29 rows do not count. Where the system refuses it, the program ends with status 1.
    // A source whose window is open has no second one.
    void open(const std::string& source, const ByteHistogram& histogram, const std::string& title,
              bool fullScreen);

    bool anyOpen();
    // Returns when the last one was closed, or at an interrupt. On the thread that opened them.
    void waitUntilClosed();

 private:
    class OpenWindow;
    struct OwnThreads;

    void (*escaped_)();
    std::map<std::string, std::unique_ptr<OpenWindow>> windows_;  // that the first thread serves
    std::shared_ptr<OwnThreads> threads_;                         // shared with them
};

}  // namespace vistel
