// How a track begins, in whatever format.
#pragma once

#include "audio/audio_records.h"

namespace vistel {

// A new track, for a header parser to fill in, and ten free slots for miscellaneous chunks.
bool startReadingTrack(const char* operation, AFfilehandle& file, const AFfilesetup* setup);

// After the header: sizes from the width, then the stream at the first sample. What is compressed
// is refused.
bool startTrack(const char* operation, AFfilehandle& file);

// A new track as the setup describes it, for writing.
bool startWritingTrack(const char* operation, AFfilehandle& file, const AFfilesetup& setup);

}  // namespace vistel
