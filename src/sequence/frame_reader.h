// Single frames of the source that is open, read when they are wanted: from their files, or from
// what was read ahead.
#pragma once

#include <span>

#include "host/tstring.h"
#include "iff/frame_store.h"
#include "iff/image_loader.h"
#include "platform/go_on.h"
#include "sequence/read_ahead.h"
#include "sequence/sequence_state.h"

namespace vistel {

// Whether a file that its converter could not read is converted again although it has not changed.
enum class Retry { never, asked };

// How a frame is to be read.
struct ReadTerms {
    DisplayFit fit;              // the size that it may have
    platform::GoOn goOn;         // asked while it is read and waited for
    ReadAhead* ahead = nullptr;  // frames that were read ahead; null: none
    Retry retry = Retry::never;
    TileCounter countTile = {};  // of a source that is opened with the option histogram
};

// What a reading came to.
struct FrameRead {
    int code = 0;       // iffOk, or why there is no whole frame (iffNotIff: no such frame)
    Tstring name;       // of the file, as it was built
    Tstring reason;     // what to tell the user; empty for iffOk
    bool told = false;  // by the converter, which has shown its own reason
};

// Reads a frame of the source state.openedName, without reports on success. After a failure `frame`
// is unchanged, or holds the part of a damaged frame that could be read.
[[nodiscard]] FrameRead readFrame(SequenceState& state, int number, const ReadTerms& terms,
                                  FrameStore& frame);

// Says on standard error why the frame is not whole, once for each frame and reason.
void tellBadFrame(SequenceState& state, int number, const FrameRead& read);

// Tells `ahead` the frames that readFrame will be asked for next, beginning with the very next one;
// those beyond its room are not looked at.
void wantFrames(const SequenceState& state, std::span<const int> numbers, const DisplayFit& fit,
                ReadAhead& ahead);

// The request for a full pass over a stream, without call-backs.
ImageLoadRequest loadRequest(const LoadOptions& options, const DisplayFit& fit, FILE* stream);

}  // namespace vistel
