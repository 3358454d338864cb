// The header of RIFF WAVE files: chunks one behind the other.
//
//     "RIFF" size "WAVE"
//         "fmt " tag channels rate bytes-per-second block-alignment width
//         "data" samples...
//
// Numbers are little-endian. A chunk is taken to be as long as it says: no pad byte is looked for.
#pragma once

#include "audio/audio_records.h"

namespace vistel {

bool readWaveHeader(const char* operation, AFfilehandle& file);

}  // namespace vistel
