#include "audio/format_table.h"

#include "audio/aiff_reader.h"
#include "audio/aiff_writer.h"
#include "audio/audio_errors.h"
#include "audio/raw_samples.h"
#include "audio/track_start.h"
#include "audio/wave_reader.h"
#include "audio/wave_writer.h"

namespace vistel {

// clang-format off
constexpr AudioFormat audioFormats[audioFormatCount] = {
    // id              name               opens  start   kind
    {afAiff,           "AIFF",            true,  "FORM", "AIFF",
     nullptr,     startReadingTrack, readAiffHeader, startTrack,
     startWritingAiff, writeAiffHeader, padAiffSamples, updateAiffHeader},
    {afAiffC,          "AIFF-C",          true,  "FORM", "AIFC",
     aiffVersion, startReadingTrack, readAiffHeader, startTrack,
     startWritingAiff, writeAiffHeader, padAiffSamples, updateAiffHeader},
    {afRaw,            "Raw Data",        true,  "",     "",
     nullptr,     startReadingRaw,   countRawSamples, nullptr,
     startWritingTrack, nullptr, nullptr, nullptr},
    {afSoundDesigner1, "Sound Designer 1", false, "SFIL", "", {}, {}, {}, {}, {}, {}, {}, {}},
    {afSoundDesigner2, "Sound Designer 2", false, "Sd2f", "", {}, {}, {}, {}, {}, {}, {}, {}},
    {afNext,           "NeXT .snd",       false, "dns.", "", {}, {}, {}, {}, {}, {}, {}, {}},
    {afWave,           "MS RIFF WAVE",    true,  "RIFF", "WAVE",
     nullptr,     startReadingTrack, readWaveHeader, startTrack,
     startWritingWave, writeWaveHeader, nullptr, updateWaveHeader},
    {afSocketRaw,      "Socket Raw Data", true,  "",     "",
     nullptr,     startReadingRaw,   countRawSamples, nullptr,
     startWritingTrack, nullptr, nullptr, nullptr},
};
// clang-format on

int32_t tablePositionOf(int32_t format) {
    for (int32_t position = 0; position < audioFormatCount; ++position)
        if (audioFormats[position].id == format) return position;
    return -1;
}

int32_t fileFormatAt(int32_t tablePosition) {
    if (tablePosition < 0 || tablePosition >= audioFormatCount) return -1;
    return audioFormats[tablePosition].id;
}

const AudioFormat* recogniseAudio(std::string_view firstBytes) {
    for (const AudioFormat& format : audioFormats)
        if (!format.start.empty() && firstBytes.starts_with(format.start) &&
            (format.kind.empty() ||
             (firstBytes.size() >= 12 && firstBytes.substr(8, 4) == format.kind)))
            return &format;
    return nullptr;
}

bool audioFormatSupported(const char* operation, int32_t tablePosition) {
    const AudioFormat& format = audioFormats[tablePosition];
    if (!format.supported)
        AFreporterror(afWarning, "%s: WARNING %s format not supported by audio file library\n",
                      operation, format.name);
    return format.supported;
}

}  // namespace vistel
