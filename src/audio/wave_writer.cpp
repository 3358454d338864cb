#include "audio/wave_writer.h"

#include <cstdio>

#include "audio/audio_errors.h"
#include "audio/header_bytes.h"
#include "audio/track_start.h"

namespace vistel {

bool startWritingWave(const char* operation, AFfilehandle& file, const AFfilesetup& setup) {
    if (!startWritingTrack(operation, file, setup)) return false;
    const AFtrack& track = file.track();
    file.header.blockAlignment =
        static_cast<uint32_t>(int64_t{track.bytesPerSample} * track.channels);
    return true;
}

// As the field of the header holds it; rates that it cannot hold are 0.
static uint32_t wholeRate(double rate) {
    return rate > 0 && rate < 4294967296.0 ? static_cast<uint32_t>(rate) : 0;
}

bool writeWaveHeader(const char* operation, AFfilehandle& file) {
    FILE* stream = file.stream.get();
    const AFtrack& track = file.track();
    const uint32_t frameBytes = file.header.blockAlignment;
    const uint32_t rate = wholeRate(track.rate);

    HeaderBytes riff, format, data;
    riff.text("RIFF").u32(0).text("WAVE");
    constexpr int32_t pcm = 1;
    format.text("fmt ").u32(20).u16(pcm).u16(track.channels).u32(rate);
    format.u32(rate * frameBytes);
    format.u16(static_cast<int32_t>(frameBytes)).u16(track.width).u32(0);
    data.text("data").u32(0);

    // In reports the parts have the names of those of AIFF files.
    file.header.formSize = platform::streamPosition(stream) + 4;
    if (!headerWritten(operation, "AIFF FORM chunk:", riff.size(), riff.write(stream)) ||
        !headerWritten(operation, "AIFF COMM chunk:", format.size(), format.write(stream)))
        return false;
    file.header.soundSize = platform::streamPosition(stream) + 4;
    if (!headerWritten(operation, "AIFF SSND chunk", data.size(), data.write(stream))) return false;
    if (!platform::seekStream(stream, 0, SEEK_END)) {
        AFreporterror(afSeekFailed, "%s: failed to position write pointer at end of file\n",
                      operation);
        return false;
    }
    file.track().dataStart = platform::streamPosition(stream);
    return true;
}

bool updateWaveHeader(const char* operation, AFfilehandle& file) {
    FILE* stream = file.stream.get();
    const AFtrack& track = file.track();
    const bool compressed = track.compression != afNotCompressed;
    const int64_t bytes = compressed ? 0 : track.bytesPerSample * track.samples;
    HeaderBytes whole, data;
    whole.u32(bytes + 48);
    data.u32(bytes);
    return headerWritten(operation, "WAVE data chunk:", 4,
                         whole.writeAt(stream, file.header.formSize)) &&
           headerWritten(operation, "WAVE data chunk:", 4,
                         data.writeAt(stream, file.header.soundSize));
}

}  // namespace vistel
