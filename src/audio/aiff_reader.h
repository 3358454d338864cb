// The header of AIFF and AIFF-C files: a "FORM" whose chunks are walked to the end of the file.
//
//     "FORM" size  "AIFF" | "AIFC"
//         "FVER" stamp                                      AIFF-C
//         "COMM" channels frames width rate [compression name]
//         "SSND" offset block-size samples...
//         "MARK" "INST" "AESD" "NAME" "AUTH" "(c) " "ANNO" "APPL" "MIDI"
//
// Every number is big-endian; a chunk of odd size is followed by a pad byte. The walk goes on
// behind whichever ends later, the chunk or what was read of it.
#pragma once

#include "audio/audio_records.h"

namespace vistel {

bool readAiffHeader(const char* operation, AFfilehandle& file);

// The time stamp of "FVER".
int32_t aiffVersion(const AFfilehandle& file);

}  // namespace vistel
