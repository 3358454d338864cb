#include "audio/track_start.h"

#include <cstdio>
#include <new>

#include "audio/audio_errors.h"

namespace vistel {

bool startReadingTrack(const char* operation, AFfilehandle& file, const AFfilesetup*) try {
    file.tracks.resize(1);
    file.misc.resize(10);
    for (size_t i = 0; i < file.misc.size(); ++i) file.misc[i].id = static_cast<int32_t>(i) + 1;
    return true;
} catch (const std::bad_alloc&) {
    AFreporterror(afNoMemory, "%s: failed to allocate filehandle struct\n", operation);
    return false;
}

// Bytes of a sample: in the file (0 for no width at all), and as the caller gets it (0 where the
// file has more than 4).
static void setSizes(AFtrack& track) {
    constexpr int32_t containers[] = {0, 1, 2, 4, 4};
    const int32_t bytes = track.width <= 0 ? 0 : track.width / 8 + (track.width % 8 != 0);
    track.bytesPerSample = bytes;
    track.containerBytes = bytes <= 4 ? containers[bytes] : 0;
    track.conversion = {};
}

bool startTrack(const char* operation, AFfilehandle& file) {
    AFtrack& track = file.track();
    if (track.compression != afNotCompressed) {
        AFreporterror(afBadCompression, "%s: unknown compression id %d\n", operation,
                      track.compression);
        return false;
    }
    setSizes(track);
    if (!platform::seekStream(file.stream.get(), track.dataStart, SEEK_SET)) {
        AFreporterror(afSeekFailed, "%s: unable to position fileptr at first sample\n", operation);
        return false;
    }
    return true;
}

bool startWritingTrack(const char* operation, AFfilehandle& file, const AFfilesetup& setup) {
    if (!startReadingTrack(operation, file, &setup)) return false;
    AFtrack& track = file.track();
    track.rate = setup.rate;
    track.width = setup.width;
    track.sampleFormat = setup.sampleFormat;
    track.channels = setup.channels;
    track.compression = setup.compression;
    if (track.compression != afNotCompressed && track.channels > 2) {
        AFreporterror(afBadCompression, "%s: can't compress more than 2 channels of data\n",
                      operation);
        return false;
    }
    track.compressionName = "not compressed";
    setSizes(track);
    return true;
}

}  // namespace vistel
