#include "audio/wave_reader.h"

#include <cstdio>
#include <cstring>
#include <string_view>

#include "audio/audio_errors.h"
#include "audio/chunk_reading.h"
#include "host/byte_order.h"

namespace vistel {

namespace {

struct Walk {
    const char* operation;
    AFfilehandle& file;
    FILE* stream;
    AFtrack& track;
    bool isWave = false;
    bool hasData = false;
    uint32_t dataBytes = 0;

    // The chunk at hand.
    uint8_t id[4] = {};
    uint32_t size = 0;
};

bool isNamed(const Walk& walk, const char* name) { return std::memcmp(walk.id, name, 4) == 0; }

bool readHeader(Walk& walk) {
    uint8_t header[8];
    if (std::fread(header, 1, sizeof header, walk.stream) != sizeof header) return false;
    std::memcpy(walk.id, header, sizeof walk.id);
    walk.size = readLittle32(header + 4);
    return true;
}

void readRiff(Walk& walk) {
    if (static_cast<int32_t>(walk.size) < 0)
        AFreporterror(afForm, "%s: AIFF FORM chunk: invalid data size %d \n", walk.operation,
                      static_cast<int32_t>(walk.size));
    walk.file.header.formSize = platform::streamPosition(walk.stream) - 4;
    char type[4];
    walk.isWave = std::fread(type, 1, sizeof type, walk.stream) == sizeof type &&
                  std::memcmp(type, "WAVE", 4) == 0;
    if (walk.isWave)
        walk.file.format = afWave;
    else
        AFreporterror(afForm, "%s: couldn't find AIFF identifier\n", walk.operation);
}

bool readFormat(Walk& walk) {
    if (!walk.isWave) return false;
    if (static_cast<int32_t>(walk.size) < 16) {
        AFreporterror(afChunkBody, "%s: fmt chunk to small to be WAVE\n", walk.operation);
        return false;
    }
    std::vector<uint8_t> body;
    if (readPiece(walk.stream, walk.size, body) != PieceRead::whole) {
        AFreporterror(afChunkBody, "%s: failed to read %d bytes from fmt chunk data area\n",
                      walk.operation, static_cast<int>(walk.size));
        return false;
    }
    constexpr uint16_t pcm = 1;
    if (readLittle16(body.data()) != pcm) {
        AFreporterror(afNotPcm, "%s: \n", walk.operation);
        return false;
    }
    AFtrack& track = walk.track;
    track.channels = readLittle16(body.data() + 2);
    track.rate = readLittle32(body.data() + 4);
    walk.file.header.blockAlignment = readLittle16(body.data() + 12);
    track.width = readLittle16(body.data() + 14);
    track.sampleFormat = track.width == 8 ? afUnsigned : afTwosComplement;
    track.swapBytes = false;
    track.compression = afNotCompressed;
    track.compressionName.clear();
    return true;
}

bool skipBody(Walk& walk) { return platform::seekStream(walk.stream, walk.size, SEEK_CUR); }

bool findData(Walk& walk) {
    const int64_t body = platform::streamPosition(walk.stream);
    if (body < 0) {
        AFreporterror(afSoundChunk, "%s: lseek returned %d when parsing data chunk\n",
                      walk.operation, -1);
        return false;
    }
    walk.file.header.soundSize = body - 4;
    walk.track.dataStart = body;
    walk.dataBytes = walk.size;
    walk.hasData = true;
    if (skipBody(walk)) return true;
    AFreporterror(afSoundChunk, "%s: lseek returned %d when parsing  data chunk\n", walk.operation,
                  -1);
    return false;
}

bool skipUnknown(Walk& walk) {
    if (skipBody(walk)) return true;
    reportSkipFailure(walk.operation);
    reportUnknownChunk(walk.operation, walk.id);
    return false;
}

bool readChunk(Walk& walk) {
    if (isNamed(walk, "fmt ")) return readFormat(walk);
    if (isNamed(walk, "data")) return findData(walk);
    return skipUnknown(walk);
}

}  // namespace

bool readWaveHeader(const char* operation, AFfilehandle& file) {
    Walk walk{operation, file, file.stream.get(), file.track()};
    if (!readHeader(walk)) {
        AFreporterror(afChunkHeader, "%s: failed to read FORM chunk header from WAVE file\n",
                      operation);
        return false;
    }
    if (!isNamed(walk, "RIFF")) {
        AFreporterror(afForm, "%s: failed to find FORM chunk id in WAVE file\n", operation);
        return false;
    }
    readRiff(walk);
    while (readHeader(walk))
        if (!readChunk(walk)) return false;
    if (!walk.hasData) return false;
    // Only now: the format may stand behind the samples. A frame of no bytes holds no frames.
    const uint32_t frameBytes = file.header.blockAlignment;
    walk.track.frames = frameBytes == 0 ? 0 : walk.dataBytes / frameBytes;
    walk.track.samples = walk.track.frames * walk.track.channels;
    return true;
}

}  // namespace vistel
