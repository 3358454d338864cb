// What is to be read of a frame file, and who is told of it.
#pragma once

#include <cstdint>
#include <cstdio>
#include <functional>

#include "iff/frame_store.h"
#include "platform/go_on.h"

namespace vistel {

class IffReader;

// Takes a colour tile in place of the decoder: reads of the chunk what it wants. `frame` has what
// the image's form has told so far. The reader's result.
using TileCounter = std::function<int(IffReader& chunk, const FrameStore& frame)>;

struct ImageLoadRequest {
    FILE* stream = nullptr;    // not closed
    int wantedForm = 0;        // 0: full pass; k: re-read of the k-th image form
    bool verbose = false;      // list chunks and descriptions on standard output (full pass only)
    bool loadPixels = true;    // `inter`: read colour tiles and, with loadZ, depth tiles
    bool decodeColour = true;  // false: colour tiles go to countTile instead
    TileCounter countTile;     // empty: then they are passed over
    bool showAll = false;      // walk tile groups even when pixels are not loaded
    bool loadZ = true;
    uint32_t maxLevel = 0xFFFFFFF0;  // groups at this nesting depth or deeper are skipped
    bool waitForWriter = false;      // `synchro`: wait for bytes that are still being written
    DisplayFit fit;

    // Asked about every millisecond while waiting for a writer, about once for each MB that is
    // read, and once per tile; false aborts the load with iffAborted.
    platform::GoOn goOn;
    // Called when an image form was read to its end, in a full pass or a re-read. The planes may be
    // moved out. Its result goes on as the form handler's: iffParsingComplete ends the load. A form
    // that ended in an error is handed over too when it has any plane, with that error, and then
    // the error is what the load returns. May be null.
    int (*formRead)(void* owner, FrameStore& frame, int error) = nullptr;
    void* owner = nullptr;
};

}  // namespace vistel
