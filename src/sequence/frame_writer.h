// Writes a frame to a file: beside its target until it is whole and on disk, or through the
// converter that makes a file of another type of it and does the same.
#pragma once

#include <atomic>
#include <cstdio>

#include "host/output_file.h"
#include "host/tstring.h"
#include "iff/frame_store.h"
#include "iff/image_writer.h"
#include "sequence/output_name.h"

namespace vistel {

// What a writing came to. After a failure the target is as it was.
struct FrameWritten {
    int code = 0;          // iffOk, or why there is no file
    Tstring reason;        // what to tell the user; empty for iffOk
    bool byPlace = false;  // other frames would fail there for the same reason
};

class FrameWriter {
 public:
    // "stdout" is standard output. Without the converter the file becomes a frame of our own
    // whatever its type. False with errno set on failure.
    [[nodiscard]] bool open(const OutputTarget& target);
    // Writes the planes of the frame, once, and closes the file. `maskInverted` writes 255 - mask.
    // May run on a thread of its own.
    FrameWritten write(const FrameStore& frame, bool maskInverted);
    // For another thread meanwhile: ends a converter that does not come to an end.
    void stop();

 private:
    int writeImage(const FrameStore& frame, bool maskInverted);
    int writeRows(const FrameStore& frame, bool maskInverted);

    OutputFile file_;
    ImageWriter writer_;
    bool toFile_ = false;        // file_ is what is written
    FILE* converter_ = nullptr;  // its standard input; null without one
    std::atomic<bool> stopped_{false};
};

}  // namespace vistel
