#include "audio/raw_samples.h"

#include <algorithm>
#include <cstdio>

#include "audio/audio_errors.h"
#include "audio/track_start.h"

namespace vistel {

bool startReadingRaw(const char* operation, AFfilehandle& file, const AFfilesetup* setup) {
    return startWritingTrack(operation, file, *setup);  // nothing else recognises this format
}

bool countRawSamples(const char* operation, AFfilehandle& file) {
    AFtrack& track = file.track();
    if (!file.seekable || track.compression != afNotCompressed || track.bytesPerSample == 0)
        return true;
    FILE* stream = file.stream.get();
    const bool atEnd = platform::seekStream(stream, 0, SEEK_END);
    const int64_t size = atEnd ? platform::streamPosition(stream) : -1;
    if (size < 0 || !platform::seekStream(stream, 0, SEEK_SET)) {
        AFreporterror(afSeekFailed, "%s: unable to position fileptr at first sample\n", operation);
        return false;
    }
    track.samples = size / track.bytesPerSample;
    track.frames = track.samples / std::max(track.channels, 1);
    return true;
}

}  // namespace vistel
