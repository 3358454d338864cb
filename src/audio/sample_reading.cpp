// Frames out of a file.
#include <algorithm>
#include <cstdio>

#include "audio/audio_errors.h"
#include "audio/audio_file.h"
#include "audio/chunk_reading.h"
#include "audio/handle_checks.h"
#include "audio/sample_kernels.h"

namespace vistel {

// The samples that were read whole; -1 when reading failed.
static int64_t readSamples(FILE* stream, void* buffer, int64_t samples, int32_t bytesPerSample) {
    const auto bytes = static_cast<size_t>(samples * bytesPerSample);
    const size_t got = std::fread(buffer, 1, bytes, stream);
    if (got < bytes && std::ferror(stream)) {
        AFreporterror(afReadFailed, "%s: tried to read %d bytes, read returned %d", "AFreadframes",
                      static_cast<int>(bytes), -1);
        std::clearerr(stream);
        return -1;
    }
    return static_cast<int64_t>(got) / bytesPerSample;
}

// Where the stream stands already it is not moved: a seek would throw away what is read ahead.
static bool seekTo(FILE* stream, int64_t place) {
    return platform::streamPosition(stream) == place ||
           platform::seekStream(stream, place, SEEK_SET);
}

static int64_t readAsTheyAre(AFtrack& track, FILE* stream, void* buffer, int64_t samples) {
    const int64_t got = readSamples(stream, buffer, samples, track.bytesPerSample);
    if (got > 0 && track.swapBytes) {
        auto* bytes = static_cast<uint8_t*>(buffer);
        sampleKernels().swap16(bytes, static_cast<size_t>(got), bytes);
    }
    return got;
}

// Large reads are widened block by block: a block stays in the processor's cache between the two.
static int64_t readWidened(AFtrack& track, FILE* stream, void* buffer, int64_t samples) {
    constexpr int64_t block = 1 << 14;
    const int64_t wanted = std::min(samples, block);
    if (static_cast<int64_t>(track.conversion.size()) < wanted * 3 &&
        !makeRoom(track.conversion, static_cast<uint64_t>(wanted) * 3)) {
        AFreporterror(afNoMemory, "%s: failed to allocate buffer for 24-bit sample conversion\n",
                      "AFreadframes");
        return 0;
    }
    int64_t done = 0;
    while (done < samples) {
        const int64_t part = std::min(samples - done, wanted);
        const int64_t got = readSamples(stream, track.conversion.data(), part, 3);
        if (got <= 0) break;
        sampleKernels().widen24(track.conversion.data(), static_cast<size_t>(got),
                                static_cast<int32_t*>(buffer) + done);
        done += got;
        if (got < part) break;
    }
    return done;
}

int64_t AFreadframes(AFfilehandle* file, int32_t track, void* buffer, int64_t frames) {
    const char* operation = "AFreadframes";
    if (!file) {
        AFreporterror(afBadHandle, "%s: null audio file descriptor\n", operation);
        return 0;
    }
    if (!isHandle(operation, file) || !hasTrack(operation, *file, track)) return 0;
    AFtrack& source = file->track();
    if (source.compression != afNotCompressed) {
        AFreporterror(afBadCompression, "%s: bad compression type %d\n", operation,
                      source.compression);
        return 0;
    }
    // Nothing is handed out of what has no channels, or samples that no container holds.
    if (source.channels < 1 || source.containerBytes == 0 || frames < 1) return 0;
    const int64_t left = source.samples - source.position;
    const int64_t samples = std::min(frames, left / source.channels + 1) * source.channels;
    const int64_t count = std::min(samples, left);
    if (count < 1) return 0;

    FILE* stream = file->stream.get();
    if (file->seekable &&
        !seekTo(stream, source.dataStart + source.position * source.bytesPerSample)) {
        AFreporterror(afSeekFailed, "%s: unable to position read ptr at next sample\n", operation);
        return 0;
    }
    const bool asTheyAre = source.bytesPerSample == source.containerBytes;
    const int64_t got = (asTheyAre ? readAsTheyAre : readWidened)(source, stream, buffer, count);
    if (got < 1) return 0;
    source.position += got;
    return got / source.channels;
}

int32_t AFseekframe(AFfilehandle* file, int32_t track, int64_t frame) {
    const char* operation = "AFseekframe";
    if (!isHandle(operation, file)) return -1;
    if (file->access != afRead) {
        AFreporterror(afNotReadable, "%s: file must be opened for reading\n", operation);
        return -1;
    }
    if (!hasTrack(operation, *file, track)) return -1;
    AFtrack& source = file->track();
    if (source.compression != afNotCompressed) return 0;
    int64_t sample, offset, place;
    const bool fits = !__builtin_mul_overflow(frame, int64_t{source.channels}, &sample) &&
                      !__builtin_mul_overflow(sample, int64_t{source.bytesPerSample}, &offset) &&
                      !__builtin_add_overflow(source.dataStart, offset, &place);
    if (fits && sample >= 0 && platform::seekStream(file->stream.get(), place, SEEK_SET))
        source.position = sample;
    else
        AFreporterror(afSeekFailed, "%s: lseek to offset %d bytes into %s failed\n", operation,
                      fits ? static_cast<int>(place) : -1, file->name.c_str());
    return 0;
}

}  // namespace vistel
