// The opening of a source: a frame file, a converter, a command, standard input or the converter's
// test mode is opened and read up to its first picture.
#pragma once

#include "host/tstring.h"
#include "iff/frame_store.h"
#include "sequence/frame_reader.h"
#include "sequence/sequence_state.h"

namespace vistel {

// Opens the source, reads its first picture into `frame` and closes it again; what is wrong with it
// is told on standard error. The empty name means standard input. 0, iffNotIff (-4) when nothing
// could be opened, else the reader's code: `frame` then holds what there is of a damaged picture,
// or nothing. A source whose tiles are counted is read to its end. Of the terms `ahead` and `retry`
// are not looked at. `windowOpen` says whether there is a window to tell that the program waits;
// without one a terminal tells it.
[[nodiscard]] int openImageSource(SequenceState& state, const Tstring& name, const ReadTerms& terms,
                                  bool windowOpen, FrameStore& frame);

}  // namespace vistel
