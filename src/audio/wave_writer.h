// Writes the headers of WAVE files. The size of the whole is written as that of the samples and 48.
#pragma once

#include "audio/audio_records.h"

namespace vistel {

bool startWritingWave(const char* operation, AFfilehandle& file, const AFfilesetup& setup);
bool writeWaveHeader(const char* operation, AFfilehandle& file);
bool updateWaveHeader(const char* operation, AFfilehandle& file);

}  // namespace vistel
