// Which stream the current source is read from: the choice between the frames of an animation, the
// test output, standard input, a command and a file.
#pragma once

#include <optional>

#include "host/tstring.h"
#include "sequence/opened_source.h"
#include "sequence/sequence_state.h"

namespace vistel {

// Whether a source is opened for the first time or one of its frames is read again: what is
// reported and entered once per source then is not again.
enum class Reading { first, again };

// Opens the frame `number` of the source. Sets sourceIsPipe, padWidth and the order of the search
// directories; outside an animation sourceName and, for a file, the current directory and
// sourceFolder. The first reading of an animation may move currentFrame on (findFirst). A one-file
// animation's stream is handed over from the state, at its start.
OpenedSource chooseSource(SequenceState& state, const Tstring& name, int number, Reading reading);

// Gives the stream of a one-file animation back to the state, for the next frame.
void keepOneFileStream(SequenceState& state, OpenedSource& source);

// The name under which chooseSource would look first for another frame of the animation; empty when
// its frames are not files of their own.
Tstring likelyFrameName(const SequenceState& state, int frame);

// The path at which chooseSource would look first for another frame of the animation; empty when
// its frames are not files of their own.
Tstring likelyFramePath(const SequenceState& state, int frame);

// The next frame of the animation, or the one past its end, for which the folders may have a file:
// no frame between `after` and this one is there. None when there are no more. Of animations whose
// frames are files of their own.
std::optional<int> nextListedFrame(const SequenceState& state, int after);

}  // namespace vistel
