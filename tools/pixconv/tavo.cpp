// Frame files of our own, and the frame streams of both ways of the converter.

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>
#include <string_view>

#include "codecs.h"
#include "convert.h"
#include "iff/file_kind.h"
#include "iff/iff_reader.h"
#include "iff/image_header.h"
#include "iff/image_parse.h"
#include "iff/image_writer.h"
#include "iff/result_codes.h"
#include "iff/tile_codec.h"
#include "iff/with_memory.h"
#include "platform/files.h"
#include "samples.h"

namespace vistel {

namespace {

static_assert(std::endian::native == std::endian::little, "pixels are taken as 32-bit words");

// Without its number: "(28) compression error".
std::string reasonOf(int code) {
    const std::string text = errorText(code);
    const size_t words = text.find(") ");
    return words == std::string::npos ? text : text.substr(words + 2);
}

// --- reading ---

struct FrameReader {
    Picture* picture = nullptr;
    ImageHeader header;
    bool headerRead = false;
    bool filmCodes = false;
    uint64_t tilesRead = 0;
    Failure failure;  // of the picture's memory
    std::vector<uint8_t> data;
    TileDecoder decoder;
    std::vector<uint8_t> planes;  // a wide tile, byte plane after byte plane
};

int walk(IffReader& group);

int readHeader(IffReader& chunk, FrameReader& reader) {
    uint8_t bytes[ImageHeader::encodedSize];
    if (int code = chunk.readBytes(bytes, sizeof bytes); code != iffOk) return code;
    if (reader.headerRead) return iffBadBlock;
    if (int code = decodeImageHeader(bytes, reader.header); code != iffOk) return code;
    const ImageHeader& header = reader.header;
    Picture& picture = *reader.picture;
    reader.failure = picture.allocate(header.width, header.height, header.wideChannels != 0);
    if (!reader.failure && header.has(imageZ)) reader.failure = picture.allocateZ();
    if (reader.failure) return iffBadImageSize;
    picture.colour = header.has(imageColour);
    picture.mask = header.has(imageMask);
    reader.headerRead = true;
    return iffOk;
}

// A stream does not tell how long it is: memory is taken as bytes come.
int readData(IffReader& chunk, uint64_t size, std::vector<uint8_t>& data) {
    constexpr uint64_t piece = 1 << 20;
    data.clear();
    while (data.size() < size) {
        const size_t before = data.size();
        data.resize(static_cast<size_t>(std::min(size, before + piece)));
        if (int code = chunk.readBytes(data.data() + before, data.size() - before); code != iffOk)
            return code;
    }
    return iffOk;
}

// One byte plane; what no packet fills is zero, a packet that runs past the end ends it.
const uint8_t* unpackRuns(const uint8_t* data, const uint8_t* end, uint8_t* plane, size_t count) {
    size_t at = 0;
    while (at < count && data < end) {
        const size_t length = (*data & 127) + 1;
        const bool run = *data++ >= 128;
        const size_t stored = run ? 1 : length;
        if (static_cast<size_t>(end - data) < stored || at + length > count) return end;
        if (run)
            std::memset(plane + at, *data, length);
        else
            std::memcpy(plane + at, data, length);
        data += stored;
        at += length;
    }
    return data;
}

// The bytes of a wide tile as planes, whichever way they lie in the file.
void unpackWide(FrameReader& reader, const TileFormat& format, size_t pixels) {
    const size_t planes = static_cast<size_t>(format.pixelBytes());
    reader.planes.assign(planes * pixels, 0);
    const uint8_t* data = reader.data.data();
    const uint8_t* end = data + reader.data.size();
    const bool packed = format.compression == compressRle || format.compression == compressQrl;
    if (packed && reader.data.size() < reader.planes.size()) {
        for (size_t i = 0; i < planes; ++i)
            data = unpackRuns(data, end, reader.planes.data() + i * pixels, pixels);
        return;
    }
    for (size_t i = 0; i < reader.data.size(); ++i)
        reader.planes[i % planes * pixels + i / planes] = data[i];
}

// Frame channel of each sample of a picture: red, green, blue, mask; a grey image stores one.
const uint8_t* planeOf(const FrameReader& reader, const TileFormat& format, int sample,
                       size_t pixels) {
    const bool grey = !reader.header.has(imageColour) && sample < 3;
    const int index = format.indexOf(grey ? channelGreen : static_cast<FileChannel>(3 - sample));
    return index < 0 ? nullptr : reader.planes.data() + size_t(index) * 2 * pixels;
}

void placeWide(FrameReader& reader, const TileFormat& format, const TileRect& rect) {
    const size_t pixels = size_t{rect.width()} * rect.height();
    unpackWide(reader, format, pixels);
    // Colour that is not there is zero, a mask that is not there all ones.
    const uint16_t opaque = reader.header.has(imageBlack) ? 0 : 0xFFFF;
    for (int sample = 0; sample < 4; ++sample) {
        const uint8_t* plane = planeOf(reader, format, sample, pixels);
        const uint16_t missing = sample == 3 ? opaque : uint16_t{0};
        for (uint32_t y = 0, i = 0; y < rect.height(); ++y) {
            uint16_t* out = reader.picture->wideRow(rect.y1 + y) + 4 * size_t{rect.x1} + sample;
            for (uint32_t x = 0; x < rect.width(); ++x, ++i, out += 4)
                *out = plane ? uint16_t(plane[i] << 8 | plane[pixels + i]) : missing;
        }
    }
}

// The rows lie bottom first until the picture is whole.
int placeTile(FrameReader& reader, int32_t id, const TileRect& rect) {
    Picture& picture = *reader.picture;
    TileTarget target;
    target.rowPixels = picture.width;
    if (id == iffId("ZBUF")) {
        target.pixels = reinterpret_cast<uint32_t*>(picture.z.data());
        return reader.decoder.decodeDepth(rect, reader.data.data(), reader.data.size(), target);
    }
    const TileFormat format = colourTileFormat(reader.header);
    if (picture.wide) {
        placeWide(reader, format, rect);
        return iffOk;
    }
    target.pixels = reinterpret_cast<uint32_t*>(picture.samples.data());
    return reader.decoder.decodeColour(format, rect, reader.data.data(), reader.data.size(),
                                       target);
}

int readTile(IffReader& chunk, FrameReader& reader, int32_t id) {
    if (!reader.headerRead) return iffNoImageHeader;
    const bool depth = id == iffId("ZBUF");
    if (depth && !reader.header.has(imageZ)) return iffNoZPlane;
    if (!chunk.sizeKnown() || chunk.chunkSize() < 8) return iffBadSize;
    TileRect rect;
    if (int code = readTileRect(chunk, rect); code != iffOk) return code;
    if (int code = checkTileRect(rect, reader.header); code != iffOk) return code;
    const TileFormat format = depth ? depthTileFormat() : colourTileFormat(reader.header);
    const uint64_t size = chunk.chunkSize() - 8;
    if (int code = checkTileDataSize(format, rect, size); code != iffOk) return code;
    ++reader.tilesRead;
    return withMemory([&] {
        if (int code = readData(chunk, size, reader.data); code != iffOk) return code;
        return placeTile(reader, id, rect);
    });
}

// What tells film codes, which no header of the format does: a remark of the image.
constexpr std::string_view filmRemark = "logarithmic film codes";

int readRemark(IffReader& chunk, FrameReader& reader) {
    char text[filmRemark.size()];
    if (!chunk.sizeKnown() || chunk.chunkSize() != sizeof text) return iffOk;
    const int code = chunk.readBytes(text, sizeof text);
    reader.filmCodes |= code == iffOk && std::string_view(text, sizeof text) == filmRemark;
    return code;
}

int readChunk(IffReader& chunk, FrameReader& reader, int32_t id) {
    if (id == iffId("ANNO")) return readRemark(chunk, reader);
    if (id == iffId("TBHD")) return readHeader(chunk, reader);
    if (id == iffId("RGBA") || id == iffId("ZBUF")) return readTile(chunk, reader, id);
    return iffOk;  // skipped by the next step
}

// Groups of images are walked to their first image; an image's tile group to its end.
int onGroup(IffReader& group) {
    auto& reader = *static_cast<FrameReader*>(group.user);
    const int32_t type = group.groupType();
    const bool image = type == iffId("CIMG");
    const bool form = group.chunkId() == iffId("FOR4") || group.chunkId() == iffId("FORM") ||
                      group.chunkId() == iffId("FOR8");
    if (form && !image && (type != iffId("TBMP") || !reader.headerRead)) return iffBlockIgnored;
    const int code = walk(group);
    return code == iffOk && form && image && reader.headerRead ? int{iffParsingComplete} : code;
}

int walk(IffReader& group) {
    IffReader chunks;
    int code = group.enter(chunks);
    if (code != iffOk) return code;
    do {
        code = chunks.dispatch();
        if (code > 0) code = readChunk(chunks, *static_cast<FrameReader*>(group.user), code);
    } while (code == iffOk);
    chunks.leave();
    return code == iffEndOfGroup ? int{iffOk} : code;
}

template <class Sample>
void turnOver(Sample* first, size_t rowLength, uint32_t height) {
    for (uint32_t y = 0; y < height / 2; ++y)
        std::swap_ranges(first + y * rowLength, first + (y + 1) * rowLength,
                         first + (height - 1 - y) * rowLength);
}

void turnOver(Picture& picture) {
    if (picture.wide)
        turnOver(picture.wideSamples.data(), picture.rowSamples(), picture.height);
    else
        turnOver(picture.samples.data(), picture.rowSamples(), picture.height);
    if (!picture.z.empty()) turnOver(picture.z.data(), picture.width, picture.height);
}

Failure readTavo(const SourceFile& source, Picture& picture) {
    return readFrame(source.file, picture);
}

// --- writing ---

int writeRows(ImageWriter& writer, const Picture& picture) {
    for (uint32_t y = 0; y < picture.height; ++y) {
        const float* z = picture.z.empty() ? nullptr : picture.zRow(y);
        const int code = picture.wide ? writer.writeWideScanline(picture.wideRow(y), z)
                                      : writer.writeScanline(
                                            reinterpret_cast<const uint32_t*>(picture.row(y)), z);
        if (code != iffOk) return code;
    }
    return iffOk;
}

int writeImage(ImageWriter& writer, const Picture& picture, FrameExtent extent) {
    const uint32_t flags = (picture.colour ? imageColour : 0u) | (picture.mask ? imageMask : 0u) |
                           (picture.z.empty() ? 0u : imageZ);
    int code = writer.setWideChannels(picture.wide);
    if (code == iffOk) code = writer.setRowsFromLast(true);
    if (code == iffOk && picture.filmCodes) code = writer.writeText("ANNO", filmRemark);
    if (code == iffOk) code = writer.writeHeader(picture.width, picture.height, flags);
    if (code == iffOk) code = writer.beginImageData();
    if (code == iffOk) code = writeRows(writer, picture);
    if (code == iffOk) code = extent == FrameExtent::whole ? writer.endImage() : writer.abandon();
    return code;
}

// The writer closes its stream; the file stays open for who opened it.
Failure writeTavo(const Picture& picture, const TargetFile& target) {
    FILE* file = platform::duplicateStream(target.file);
    if (!file) return std::string(std::strerror(errno));
    return writeFrame(picture, file);
}

}  // namespace

Failure readFrame(FILE* in, Picture& picture) {
    FrameReader reader;
    reader.picture = &picture;
    IffReader root;
    root.handlers.form = root.handlers.concatenation = root.handlers.list = onGroup;
    root.user = &reader;
    const int code = parseFile(root, in);
    if (reader.failure) return reader.failure;
    if (code == iffIncomplete || code == iffPartialIo || code == iffBrokenPipe)
        return "the file ends early";
    if (code != iffParsingComplete) {
        return "not a readable frame: " + reasonOf(code == iffOk ? int{iffNoImageHeader} : code);
    }
    if (reader.tilesRead == 0) return "the frame has no pixels";
    turnOver(picture);
    picture.filmCodes = reader.filmCodes;
    // Where no tile was, and in an image without colour, the mask is still 0.
    for (uint32_t y = 0; y < picture.height && !picture.mask; ++y) completeRow(picture, y);
    return {};
}

Failure writeFrame(const Picture& picture, FILE* out, FrameExtent extent) {
    ImageWriter writer;
    errno = 0;
    // Sizes that are told before the picture cannot be told of a part.
    int code = writer.openStream(out, extent == FrameExtent::part);
    if (code == iffOk) code = writeImage(writer, picture, extent);
    int reason = code == iffOk ? 0 : errno;
    const int closed = writer.close();
    if (code == iffOk) reason = errno;
    if (code == iffOk) code = closed;
    if (code == iffOk) return {};
    if (reason == EPIPE || errno == EPIPE) return "";
    if (code == iffIoError && reason != 0) return std::string(std::strerror(reason));
    return "the frame cannot be written: " + reasonOf(code);
}

const Codec tavoCodec = {"tavo", startsAsImage, readTavo, writeTavo};

}  // namespace vistel
