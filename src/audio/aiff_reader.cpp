#include "audio/aiff_reader.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <new>
#include <string_view>

#include "audio/audio_errors.h"
#include "audio/chunk_reading.h"
#include "audio/extended_float.h"
#include "host/byte_order.h"

namespace vistel {

namespace {

struct Walk {
    const char* operation;
    AFfilehandle& file;
    FILE* stream;
    AFtrack& track;
    std::vector<AFmarker> markers;

    // The chunk at hand.
    uint8_t id[4] = {};
    uint32_t size = 0;
    uint64_t taken = 0;  // bytes read behind its header
};

std::string_view nameOf(const Walk& walk) {
    return {reinterpret_cast<const char*>(walk.id), sizeof walk.id};
}

size_t readHeader(Walk& walk) {
    uint8_t header[8];
    const size_t got = std::fread(header, 1, sizeof header, walk.stream);
    std::memcpy(walk.id, header, sizeof walk.id);
    walk.size = readBig32(header + 4);
    walk.taken = 0;
    return got;
}

bool take(Walk& walk, void* bytes, size_t count) {
    walk.taken += count;
    return std::fread(bytes, 1, count, walk.stream) == count;
}

// Moves behind the chunk and its pad byte.
bool moveBehind(const Walk& walk) {
    const uint64_t padded = uint64_t{walk.size} + (walk.size & 1);
    return walk.taken >= padded ||
           platform::seekStream(walk.stream, static_cast<int64_t>(padded - walk.taken), SEEK_CUR);
}

bool skipRest(Walk& walk) {
    if (moveBehind(walk)) return true;
    reportSkipFailure(walk.operation);
    return false;
}

bool bodyTooShort(const Walk& walk, uint64_t bytes) {
    AFreporterror(afChunkBody, "%s: failed to read %d bytes from %.4s chunk data area\n",
                  walk.operation, static_cast<int>(bytes), nameOf(walk).data());
    return false;
}

// --- FORM ----------------------------------------------------------------------------------------

void readForm(Walk& walk) {
    if (static_cast<int32_t>(walk.size) < 0)
        AFreporterror(afForm, "%s: AIFF FORM chunk: invalid data size %d \n", walk.operation,
                      static_cast<int32_t>(walk.size));
    const int64_t body = platform::streamPosition(walk.stream);
    if (body < 0)
        AFreporterror(afForm, "%s: seek returned %d when parsing FORM chunk\n", walk.operation, -1);
    walk.file.header.formSize = body - 4;
    char type[4];
    const std::string_view kind(type, std::fread(type, 1, sizeof type, walk.stream));
    if (kind == "AIFF")
        walk.file.format = afAiff;
    else if (kind == "AIFC")
        walk.file.format = afAiffC;
    else
        AFreporterror(afForm, "%s: couldn't find AIFF identifier\n", walk.operation);
}

// --- the chunks ----------------------------------------------------------------------------------

int32_t compressionOf(const Walk& walk, const uint8_t* type) {
    struct Row {
        const char* type;
        AfCompression id;
    };
    constexpr Row rows[] = {{"NONE", afNotCompressed},
                            {"ACE2", afAce2},
                            {"ACE8", afAce8},
                            {"MAC3", afMac3},
                            {"MAC6", afMac6}};
    for (const Row& row : rows)
        if (std::memcmp(row.type, type, 4) == 0) return row.id;
    AFreporterror(afChunkBody, "%s: unrecognized compression type %c%c%c%c for file %s\n",
                  walk.operation, printable(type[0]), printable(type[1]), printable(type[2]),
                  printable(type[3]), walk.file.name.c_str());
    return afCompressionUnknown;
}

bool readCompressionName(Walk& walk) try {
    uint8_t length;
    if (!take(walk, &length, 1)) {
        AFreporterror(afChunkBody, "%s: failed to read pstring length from COMM chunk data area\n",
                      walk.operation);
        return false;
    }
    char text[256];
    const size_t bytes = length + (length % 2 == 0);  // a pad byte makes the whole even
    if (!take(walk, text, bytes)) {
        AFreporterror(afChunkBody,
                      "%s: failed to read %d bytes, pstring COMM chunk data (len=%d)\n",
                      walk.operation, static_cast<int>(bytes), length);
        return false;
    }
    walk.track.compressionName.assign(text, length);
    return true;
} catch (const std::bad_alloc&) {
    AFreporterror(afNoMemory, "%s: failed to allocate memory for compression name string\n",
                  walk.operation);
    return false;
}

bool readCommon(Walk& walk) {
    walk.file.header.frameCount = platform::streamPosition(walk.stream) + 2;
    const bool aiffC = walk.file.format == afAiffC;
    uint8_t body[22];
    const size_t bytes = aiffC ? 22 : 18;
    if (!take(walk, body, bytes)) return bodyTooShort(walk, bytes);

    AFtrack& track = walk.track;
    track.channels = static_cast<int16_t>(readBig16(body));
    track.frames = readBig32(body + 2);
    track.samples = track.frames * track.channels;
    track.width = static_cast<int16_t>(readBig16(body + 6));
    track.rate = doubleFromExtended(body + 8);
    track.sampleFormat = afTwosComplement;
    track.swapBytes = track.width == 16;
    track.compression = aiffC ? compressionOf(walk, body + 18) : afNotCompressed;
    track.compressionName.clear();
    return (!aiffC || readCompressionName(walk)) && skipRest(walk);
}

bool readSound(Walk& walk) {
    const int64_t body = platform::streamPosition(walk.stream);
    if (body < 0) {
        AFreporterror(afSoundChunk, "%s: lseek returned %d when parsing SSND chunk\n",
                      walk.operation, -1);
        return false;
    }
    uint8_t fields[8] = {};
    if (!take(walk, fields, sizeof fields))
        AFreporterror(afSoundChunk, "%s: failed to read %d bytes from SSND chunk data area\n",
                      walk.operation, static_cast<int>(sizeof fields));
    walk.file.header.soundSize = body - 4;
    walk.file.header.soundPadded = walk.size & 1;
    walk.track.dataStart = body + 8 + readBig32(fields);
    if (moveBehind(walk)) return true;
    AFreporterror(afSoundChunk, "%s: lseek returned %d when parsing  SSND chunk\n", walk.operation,
                  -1);
    return false;
}

AFloop loopAt(int32_t id, const uint8_t* bytes) {
    return {id, readBig16(bytes), readBig16(bytes + 2), readBig16(bytes + 4)};
}

bool readInstrument(Walk& walk) {
    walk.file.header.instrument = platform::streamPosition(walk.stream);
    uint8_t body[20];
    if (!take(walk, body, sizeof body)) return bodyTooShort(walk, sizeof body);
    AFinstrument& instrument = walk.file.instruments.emplace_back();
    instrument.baseNote = body[0];
    instrument.detune = body[1] < 128 ? body[1] : body[1] - 256;  // signed
    instrument.lowNote = body[2];
    instrument.highNote = body[3];
    instrument.lowVelocity = body[4];
    instrument.highVelocity = body[5];
    instrument.gain = static_cast<int16_t>(readBig16(body + 6));
    instrument.loops = {loopAt(1, body + 8), loopAt(2, body + 14)};
    walk.file.instruments = {instrument};  // the last one is the only one
    return skipRest(walk);
}

// Markers whose bytes are not all there do not count.
std::vector<AFmarker> markersIn(const std::vector<uint8_t>& body, unsigned count) {
    std::vector<AFmarker> markers;
    size_t at = 0;
    constexpr size_t beforeName = 7;  // id, position, length of the name
    while (markers.size() < count && body.size() - at >= beforeName) {
        const uint8_t* bytes = body.data() + at;
        const size_t length = bytes[6];
        if (body.size() - at - beforeName < length) break;
        markers.push_back({readBig16(bytes), readBig32(bytes + 2),
                           std::string(reinterpret_cast<const char*>(bytes) + beforeName, length),
                           0});
        at = std::min(body.size(), at + beforeName + length + (length % 2 == 0));
    }
    return markers;
}

bool readMarkers(Walk& walk) {
    uint8_t count[2];
    if (!take(walk, count, sizeof count)) return bodyTooShort(walk, sizeof count);
    std::vector<uint8_t> body;
    const uint64_t bytes = walk.size > 2 ? walk.size - 2 : 0;
    walk.taken += bytes;
    if (readPiece(walk.stream, bytes, body) != PieceRead::whole) return bodyTooShort(walk, bytes);
    walk.markers = markersIn(body, readBig16(count));
    return skipRest(walk);
}

bool readVersion(Walk& walk) {
    if (walk.file.format == afAiffC) {
        uint8_t stamp[4];
        if (!take(walk, stamp, sizeof stamp)) return bodyTooShort(walk, sizeof stamp);
        walk.file.header.version = readBig32(stamp);
    }
    return skipRest(walk);
}

bool readAes(Walk& walk) {
    walk.file.header.aes = platform::streamPosition(walk.stream);
    if (!take(walk, walk.track.aes.data(), walk.track.aes.size()))
        return bodyTooShort(walk, walk.track.aes.size());
    walk.track.hasAes = true;
    return skipRest(walk);
}

bool readMisc(Walk& walk, int32_t type) {
    AFfilehandle& file = walk.file;
    const int32_t slot = file.miscCount++;
    if (static_cast<size_t>(slot) == file.misc.size()) file.misc.emplace_back().id = slot + 1;
    AFmiscChunk& chunk = file.misc[static_cast<size_t>(slot)];
    chunk.type = type;
    chunk.size = walk.size;
    chunk.dataPosition = platform::streamPosition(walk.stream);
    chunk.sizePosition = chunk.dataPosition - 4;
    const PieceRead result = readPiece(walk.stream, walk.size, chunk.data);
    walk.taken = walk.size;
    if (result == PieceRead::whole) return skipRest(walk);
    const char* complaint = result == PieceRead::noMemory
                                ? "%s: failed to malloc %d bytes for %.4s chunk data (misc[%d])\n"
                                : "%s: failed to read %d bytes of %.4s chunk data (misc[%d])\n";
    AFreporterror(result == PieceRead::noMemory ? afNoMemory : afReadFailed, complaint,
                  walk.operation, static_cast<int>(walk.size), nameOf(walk).data(), slot);
    return false;
}

bool skipUnknown(Walk& walk) {
    if (skipRest(walk)) return true;
    reportUnknownChunk(walk.operation, walk.id);
    return false;
}

struct ChunkRow {
    std::string_view id;
    bool (*read)(Walk& walk);
};
constexpr ChunkRow chunkRows[] = {
    {"COMM", readCommon},
    {"SSND", readSound},
    {"INST", readInstrument},
    {"MARK", readMarkers},
    {"FVER", readVersion},
    {"AESD", readAes},
    {"MIDI", [](Walk& walk) { return readMisc(walk, afMiscMidi); }},
    {"APPL", [](Walk& walk) { return readMisc(walk, afMiscApplication); }},
    {"NAME", [](Walk& walk) { return readMisc(walk, afMiscName); }},
    {"AUTH", [](Walk& walk) { return readMisc(walk, afMiscAuthor); }},
    {"(c) ", [](Walk& walk) { return readMisc(walk, afMiscCopyright); }},
    {"ANNO", [](Walk& walk) { return readMisc(walk, afMiscAnnotation); }},
    {"COMT", skipRest},
    {"SAXL", skipRest},
};

bool readChunk(Walk& walk) {
    for (const ChunkRow& row : chunkRows)
        if (row.id == nameOf(walk)) return row.read(walk);
    return skipUnknown(walk);
}

}  // namespace

bool readAiffHeader(const char* operation, AFfilehandle& file) try {
    Walk walk{operation, file, file.stream.get(), file.track(), {}};
    if (readHeader(walk) != 8) {
        AFreporterror(afChunkHeader, "%s: failed to read FORM chunk header from AIFF file\n",
                      operation);
        return false;
    }
    if (nameOf(walk) != "FORM") {
        AFreporterror(afForm, "%s: failed to find FORM chunk id in AIFF file\n", operation);
        return false;
    }
    readForm(walk);
    size_t got;
    while ((got = readHeader(walk)) == 8)
        if (!readChunk(walk)) return false;
    if (got > 0) {
        AFreporterror(afChunkHeader, "%s: failed to read complete chunk header from AIFF file\n",
                      operation);
        return false;
    }
    walk.track.markers = std::move(walk.markers);
    return true;
} catch (const std::bad_alloc&) {
    AFreporterror(afNoMemory, "%s: failed to alloc mem for file handle struct\n", operation);
    return false;
}

int32_t aiffVersion(const AFfilehandle& file) { return static_cast<int32_t>(file.header.version); }

}  // namespace vistel
