// The formats that the audio file library knows, in the order in which a file is recognised.
#pragma once

#include <cstdint>
#include <string_view>

#include "audio/audio_records.h"

namespace vistel {

// What a format does. `operation` is the name of the public operation, for reports; each reports
// its own failure and returns false. What a format has not got is null and left out.
struct AudioFormat {
    AfFileFormat id;
    const char* name;
    bool supported;
    // The bytes at the file's start and at place 8 (none: any); a format without either is only
    // named by a setup.
    std::string_view start, kind;

    int32_t (*version)(const AFfilehandle& file);
    // Fills in the track, from a setup where the format needs one.
    bool (*startReading)(const char* operation, AFfilehandle& file, const AFfilesetup* setup);
    bool (*parseHeader)(const char* operation, AFfilehandle& file);
    bool (*startTrack)(const char* operation, AFfilehandle& file);
    bool (*startWriting)(const char* operation, AFfilehandle& file, const AFfilesetup& setup);
    // Writes the header with what is not known yet as 0.
    bool (*writeHeader)(const char* operation, AFfilehandle& file);
    // At the end of a written file: pads the samples, then fills the header in.
    bool (*padSamples)(const char* operation, AFfilehandle& file);
    bool (*updateHeader)(const char* operation, AFfilehandle& file);
};

constexpr int32_t audioFormatCount = 8;
extern const AudioFormat audioFormats[audioFormatCount];

// Where a file format stands in the table, and back; -1 for anything else.
int32_t tablePositionOf(int32_t format);
int32_t fileFormatAt(int32_t tablePosition);

// The format whose marks a file has at its start (up to 12 bytes of it); null when none has.
const AudioFormat* recogniseAudio(std::string_view firstBytes);

// Whether files of this format can be opened; what cannot is reported.
[[nodiscard]] bool audioFormatSupported(const char* operation, int32_t tablePosition);

}  // namespace vistel
