// Writes the headers of AIFF and AIFF-C files, with the chunks in this order:
//
//     "FORM"  "FVER" (AIFF-C)  "COMM"  "MARK" "INST" "AESD" miscellaneous  "SSND"
//
// Counts and sizes are little-endian, though the format wants them big-endian: readers of the
// format, ours too, find no sound in such a file. A new file has markers, an instrument,
// AES or miscellaneous chunks only where the records were given them before the header is written.
#pragma once

#include "audio/audio_records.h"

namespace vistel {

bool startWritingAiff(const char* operation, AFfilehandle& file, const AFfilesetup& setup);
bool writeAiffHeader(const char* operation, AFfilehandle& file);
bool padAiffSamples(const char* operation, AFfilehandle& file);
bool updateAiffHeader(const char* operation, AFfilehandle& file);

}  // namespace vistel
