// Frames into a file.
#include <cstdio>

#include "audio/audio_errors.h"
#include "audio/audio_file.h"
#include "audio/chunk_reading.h"
#include "audio/handle_checks.h"
#include "audio/sample_kernels.h"

namespace vistel {

// Bits 8 to 31 of each 32-bit sample, the lowest byte first, whatever the format.
static void narrow24(const uint8_t* from, size_t samples, uint8_t* to) {
    for (size_t i = 0; i < samples; ++i, from += 4, to += 3) {
        to[0] = from[1];
        to[1] = from[2];
        to[2] = from[3];
    }
}

// The bytes as they go into the file: the caller's own, or converted ones; null without memory.
static const void* bytesToWrite(AFtrack& track, const void* buffer, int64_t samples) {
    const bool narrowed = track.bytesPerSample != track.containerBytes;
    if (!narrowed && !track.swapBytes) return buffer;
    const auto bytes = static_cast<uint64_t>(samples * track.bytesPerSample);
    if (track.conversion.size() < bytes && !makeRoom(track.conversion, bytes)) {
        AFreporterror(afNoMemory, "%s: failed to allocate buffer for 24-bit sample conversion\n",
                      "AFwriteframes");
        return nullptr;
    }
    const auto convert = narrowed ? narrow24 : sampleKernels().swap16;
    convert(static_cast<const uint8_t*>(buffer), static_cast<size_t>(samples),
            track.conversion.data());
    return track.conversion.data();
}

int64_t AFwriteframes(AFfilehandle* file, int32_t track, const void* buffer, int64_t frames) {
    const char* operation = "AFwriteframes";
    if (!file) return 0;
    if (!isHandle(operation, file) || !hasTrack(operation, *file, track) || frames < 1) return 0;
    AFtrack& target = file->track();
    if (target.compression != afNotCompressed) {
        AFreporterror(afBadCompression, "%s: bad compression type %d\n", operation,
                      target.compression);
        return 0;
    }
    constexpr int64_t mostFrames = int64_t{1} << 40;  // keeps products in range
    if (target.channels < 1 || target.containerBytes == 0 || frames > mostFrames) return 0;

    FILE* stream = file->stream.get();
    const int64_t place = target.dataStart + target.position * target.bytesPerSample;
    if (file->seekable && !platform::seekStream(stream, place, SEEK_SET)) {
        AFreporterror(afSeekFailed, "%s: unable to position file write ptr at next sample\n",
                      operation);
        return 0;
    }
    const int64_t samples = frames * target.channels;
    const void* bytes = bytesToWrite(target, buffer, samples);
    if (!bytes) return 0;
    const auto count = static_cast<size_t>(samples * target.bytesPerSample);
    if (std::fwrite(bytes, 1, count, stream) != count) {
        AFreporterror(afWriteFailed, "%s: tried to write %d bytes, write returned %d\n", operation,
                      static_cast<int>(count), -1);
        return 0;
    }
    target.position += samples;
    target.samples += samples;
    target.frames = target.samples / target.channels;
    return frames;
}

}  // namespace vistel
