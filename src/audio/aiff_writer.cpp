#include "audio/aiff_writer.h"

#include <cstdio>
#include <new>
#include <string_view>

#include "audio/audio_errors.h"
#include "audio/extended_float.h"
#include "audio/header_bytes.h"
#include "audio/track_start.h"

namespace vistel {

namespace {

constexpr uint32_t versionOfAiffC = 0xA2805140;
constexpr std::string_view notCompressed = "not compressed";

int64_t dataBytes(const AFtrack& track) { return track.bytesPerSample * track.samples; }

// How the parts of a header are called in the report of a failed write.
constexpr const char* formPart = "AIFF FORM chunk:";
constexpr const char* versionPart = "AIFF-C FVER chunk:";
constexpr const char* commonPart = "AIFF COMM chunk:";
constexpr const char* markPart = "AIFF MARK chunk:";
constexpr const char* instrumentPart = "AIFF INST chunk:";
constexpr const char* aesPart = "AIFF AESD chunk:";
constexpr const char* soundPart = "AIFF SSND chunk";

bool append(const char* operation, AFfilehandle& file, const char* part,
            const HeaderBytes& header) {
    return headerWritten(operation, part, header.size(), header.write(file.stream.get()));
}

bool overwrite(const char* operation, AFfilehandle& file, const char* part, int64_t place,
               const HeaderBytes& header) {
    return headerWritten(operation, part, header.size(), header.writeAt(file.stream.get(), place));
}

// --- the chunks, each at the end of the file -----------------------------------------------------

int64_t endOf(AFfilehandle& file) { return platform::streamPosition(file.stream.get()); }

bool writeForm(const char* operation, AFfilehandle& file) {
    file.header.formSize = endOf(file) + 4;
    HeaderBytes form;
    form.text("FORM").u32(0).text(file.format == afAiff ? "AIFF" : "AIFC");
    return append(operation, file, formPart, form);
}

bool writeVersion(const char* operation, AFfilehandle& file) {
    file.header.version = versionOfAiffC;
    return append(operation, file, versionPart,
                  HeaderBytes().text("FVER").u32(4).u32(versionOfAiffC));
}

bool writeCommon(const char* operation, AFfilehandle& file) {
    const AFtrack& track = file.track();
    file.header.frameCount = endOf(file) + 10;
    HeaderBytes common;
    common.text("COMM").u32(file.format == afAiff ? 18 : 38).u16(track.channels).u32(0);
    common.u16(track.width).bytes(extendedFromDouble(track.rate));
    if (file.format != afAiff)
        common.text("NONE")
            .u8(static_cast<int32_t>(notCompressed.size()))
            .text(notCompressed)
            .u8(0);
    return append(operation, file, commonPart, common);
}

// Bytes of a marker: id, position, name and its pad byte.
int64_t bytesOf(const AFmarker& marker) {
    const auto length = static_cast<int64_t>(marker.name.size());
    return 7 + length + (length % 2 == 0);
}

int64_t bodyOf(const std::vector<AFmarker>& markers) {
    int64_t bytes = 2;
    for (const AFmarker& marker : markers) bytes += bytesOf(marker);
    return bytes;
}

bool writeMarkers(const char* operation, AFfilehandle& file) {
    std::vector<AFmarker>& markers = file.track().markers;
    HeaderBytes header;
    header.text("MARK").u32(bodyOf(markers)).u16(static_cast<int32_t>(markers.size()));
    if (!append(operation, file, markPart, header)) return false;
    for (AFmarker& marker : markers) {
        marker.filePosition = endOf(file);
        HeaderBytes start;
        start.u16(marker.id).u32(marker.position).u8(static_cast<int32_t>(marker.name.size()));
        if (!append(operation, file, markPart, start)) return false;
        std::string name = marker.name;
        if (name.size() % 2 == 0) name.push_back('\0');
        const bool whole =
            std::fwrite(name.data(), 1, name.size(), file.stream.get()) == name.size();
        const auto bytes = static_cast<int>(name.size());
        if (!headerWritten(operation, markPart, bytes, whole ? bytes : -1)) return false;
    }
    return true;
}

constexpr int64_t loopsInInstrument = 8;  // what stands before them

bool writeInstrument(const char* operation, AFfilehandle& file) {
    const AFinstrument& instrument = file.instruments.front();
    file.header.instrument = endOf(file) + 8;
    HeaderBytes body;
    body.text("INST").u32(20).u8(instrument.baseNote).u8(instrument.detune);
    body.u8(instrument.lowNote).u8(instrument.highNote);
    body.u8(instrument.lowVelocity).u8(instrument.highVelocity).u16(instrument.gain);
    for (const AFloop& loop : instrument.loops)
        body.u16(loop.playMode).u16(loop.beginMarker).u16(loop.endMarker);
    return append(operation, file, instrumentPart, body);
}

bool writeAes(const char* operation, AFfilehandle& file) {
    file.header.aes = endOf(file) + 8;
    return append(operation, file, aesPart,
                  HeaderBytes().text("AESD").u32(24).bytes(file.track().aes));
}

const char* idOfMisc(int32_t type) {
    constexpr const char* ids[] = {"(c) ", "AUTH", "NAME", "ANNO", "APPL", "MIDI"};
    return type >= afMiscCopyright && type <= afMiscMidi ? ids[type - afMiscCopyright] : nullptr;
}

// The bytes of a chunk, of which there may be none.
bool writeBytes(FILE* stream, const std::vector<uint8_t>& bytes) {
    return bytes.empty() || std::fwrite(bytes.data(), 1, bytes.size(), stream) == bytes.size();
}

bool writeMiscChunk(const char* operation, FILE* stream, AFmiscChunk& chunk, int32_t number) {
    const char* id = idOfMisc(chunk.type);
    if (!id) {
        AFreporterror(afWriteFailed, "%s: bad miscellaneous chunk type %d\n", operation,
                      chunk.type);
        return false;
    }
    if (std::fwrite(id, 1, 4, stream) != 4) {
        AFreporterror(afWriteFailed, "%s: failed to write id %s for misc %d\n", operation, id,
                      number);
        return false;
    }
    chunk.sizePosition = platform::streamPosition(stream);
    if (HeaderBytes().u32(chunk.size).write(stream) < 0) {
        AFreporterror(afWriteFailed, "%s: failed to write size %d for misc %d (%s)\n", operation,
                      static_cast<int>(chunk.size), number, id);
        return false;
    }
    chunk.dataPosition = platform::streamPosition(stream);
    if (!writeBytes(stream, chunk.data)) {
        AFreporterror(afWriteFailed, "%s: failed to write %d data bytes for misc %d (%s)\n",
                      operation, static_cast<int>(chunk.size), number, id);
        return false;
    }
    if (chunk.size % 2 == 1 && std::fputc(0, stream) == EOF) {
        AFreporterror(afWriteFailed, "%s: failed to write pad byte for misc %d (%s)\n", operation,
                      number, id);
        return false;
    }
    return true;
}

// Whoever describes a chunk before the file is written may fill its bytes in later: until then they
// are zero.
bool writeMisc(const char* operation, AFfilehandle& file) {
    for (int32_t i = 0; i < file.miscCount; ++i) {
        AFmiscChunk& chunk = file.misc[static_cast<size_t>(i)];
        try {
            chunk.data.resize(chunk.size);
        } catch (const std::bad_alloc&) {
            AFreporterror(afNoMemory, "%s: failed to malloc %d bytes for misc %d buffer\n",
                          operation, static_cast<int>(chunk.size), i);
            return false;
        }
        if (!writeMiscChunk(operation, file.stream.get(), chunk, i)) return false;
    }
    return true;
}

bool writeSound(const char* operation, AFfilehandle& file) {
    file.header.soundSize = endOf(file) + 4;
    const bool done =
        append(operation, file, soundPart, HeaderBytes().text("SSND").u32(0).u32(0).u32(0));
    file.track().dataStart = endOf(file);
    return done;
}

// --- what is filled in at the end ----------------------------------------------------------------

// Bytes behind "SSND" and its size; the pad byte counts among them.
int64_t soundSize(const AFfilehandle& file) {
    const int64_t bytes = dataBytes(file.tracks.front());
    return 8 + bytes + (bytes & 1);
}

// The chunks with their headers and pad bytes, and the form's type.
int64_t formSize(const AFfilehandle& file) {
    const AFtrack& track = file.tracks.front();
    int64_t size = 4 + (file.format == afAiff ? 26 : 12 + 46) + 8 + soundSize(file);
    if (!track.markers.empty()) size += 8 + bodyOf(track.markers);
    if (!file.instruments.empty()) size += 28;
    if (track.hasAes) size += 32;
    for (int32_t i = 0; i < file.miscCount; ++i) {
        const uint32_t bytes = file.misc[static_cast<size_t>(i)].size;
        size += int64_t{8} + bytes + (bytes & 1);
    }
    return size;
}

bool updateLoops(const char* operation, AFfilehandle& file) {
    HeaderBytes loops;
    for (int32_t id = 1; id <= 2; ++id) {
        const AFloop* found = nullptr;
        for (const AFloop& loop : file.instruments.front().loops)
            if (loop.id == id) found = &loop;
        if (!found) {
            AFreporterror(afBadLoop, "%s: failed to find loopid for %s\n", operation,
                          id == 1 ? "sustain" : "release");
            return false;
        }
        loops.u16(found->playMode).u16(found->beginMarker).u16(found->endMarker);
    }
    return overwrite(operation, file, instrumentPart, file.header.instrument + loopsInInstrument,
                     loops);
}

bool updateMarkers(const char* operation, AFfilehandle& file) {
    for (const AFmarker& marker : file.track().markers)
        if (!overwrite(operation, file, markPart, marker.filePosition,
                       HeaderBytes().u16(marker.id).u32(marker.position)))
            return false;
    return true;
}

bool updateMisc(const char* operation, AFfilehandle& file) {
    FILE* stream = file.stream.get();
    for (int32_t i = 0; i < file.miscCount; ++i) {
        const AFmiscChunk& chunk = file.misc[static_cast<size_t>(i)];
        const auto place = static_cast<int>(chunk.dataPosition);
        if (!platform::seekStream(stream, chunk.dataPosition, SEEK_SET)) {
            AFreporterror(afSeekFailed,
                          "%s: failed to seek to data at file pos %d for misc chunk %d\n",
                          operation, place, i);
            return false;
        }
        if (!writeBytes(stream, chunk.data)) {
            AFreporterror(afWriteFailed,
                          "%s: failed to write %d data bytes for misc chunk %d to fpos %d\n",
                          operation, static_cast<int>(chunk.size), i, place);
            return false;
        }
    }
    return true;
}

}  // namespace

bool startWritingAiff(const char* operation, AFfilehandle& file, const AFfilesetup& setup) {
    if (!startWritingTrack(operation, file, setup)) return false;
    file.track().swapBytes = file.track().width == 16;
    return true;
}

bool writeAiffHeader(const char* operation, AFfilehandle& file) {
    return writeForm(operation, file) && (file.format == afAiff || writeVersion(operation, file)) &&
           writeCommon(operation, file) &&
           (file.track().markers.empty() || writeMarkers(operation, file)) &&
           (file.instruments.empty() || writeInstrument(operation, file)) &&
           (!file.track().hasAes || writeAes(operation, file)) && writeMisc(operation, file) &&
           writeSound(operation, file);
}

bool padAiffSamples(const char* operation, AFfilehandle& file) {
    FILE* stream = file.stream.get();
    if (dataBytes(file.track()) % 2 == 0) return true;
    file.header.soundPadded = true;
    const bool atEnd = platform::seekStream(stream, 0, SEEK_END);
    if (atEnd && std::fputc(0, stream) != EOF) return true;
    AFreporterror(atEnd ? afWriteFailed : afSeekFailed,
                  "%s: failed to add zero pad byte to SSND chunk\n", operation);
    return false;
}

bool updateAiffHeader(const char* operation, AFfilehandle& file) {
    const AFheader& header = file.header;
    const AFtrack& track = file.track();
    return overwrite(operation, file, formPart, header.formSize,
                     HeaderBytes().u32(formSize(file))) &&
           overwrite(operation, file, commonPart, header.frameCount,
                     HeaderBytes().u32(track.frames)) &&
           overwrite(operation, file, soundPart, header.soundSize,
                     HeaderBytes().u32(soundSize(file))) &&
           (file.instruments.empty() || updateLoops(operation, file)) &&
           updateMarkers(operation, file) &&
           (!track.hasAes ||
            overwrite(operation, file, aesPart, header.aes, HeaderBytes().bytes(track.aes))) &&
           updateMisc(operation, file);
}

}  // namespace vistel
