// Headerless samples: only a setup says what they are.
#pragma once

#include "audio/audio_records.h"

namespace vistel {

bool startReadingRaw(const char* operation, AFfilehandle& file, const AFfilesetup* setup);

// A file's length tells how many samples there are. Of a stream nobody knows: it counts as empty.
bool countRawSamples(const char* operation, AFfilehandle& file);

}  // namespace vistel
