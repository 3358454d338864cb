// OpenEXR by its own library. Colour is linear light and becomes 8 bits by the sRGB curve; the mask
// is linear; a depth channel is kept. The picture is the file's display window: what the file holds
// outside is left out, what it does not hold is black and clear.

#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfIO.h>
#include <ImfInputFile.h>
#include <ImfOutputFile.h>
#include <ImfPartType.h>
#include <ImfTileDescription.h>
#include <ImfVersion.h>
#include <half.h>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <string>
#include <vector>

#include "byte_target.h"
#include "codecs.h"
#include "exr_channels.h"
#include "exr_header_walk.h"
#include "exr_rows.h"
#include "exr_window.h"
#include "file_starts.h"
#include "host/byte_order.h"
#include "platform/files.h"
#include "samples.h"
#include "turned.h"
#include "without_exceptions.h"

namespace vistel {

namespace {

// What the library may take for one block of rows or row of tiles, however large the file.
constexpr uint64_t mostBlockBytes = uint64_t{256} << 20;

// --- the file as the library sees it ---

class Input : public Imf::IStream {
 public:
    explicit Input(const SourceFile& source) : IStream(""), source_(source) {}
    bool read(char bytes[], int n) override {
        if (n < 0 || std::fread(bytes, 1, static_cast<size_t>(n), source_.file) != size_t(n))
            throw std::runtime_error("the file ends early");
        return tellg() < source_.size;
    }
    uint64_t tellg() override {
        return static_cast<uint64_t>(platform::streamPosition(source_.file));
    }
    void seekg(uint64_t place) override {
        if (place > source_.size ||
            !platform::seekStream(source_.file, static_cast<int64_t>(place), SEEK_SET))
            throw std::runtime_error("the file ends early");
    }

 private:
    const SourceFile& source_;
};

class Output : public Imf::OStream {
 public:
    Output(FILE* file, int& error) : OStream(""), file_(file), error_(error) {}
    void write(const char bytes[], int n) override {
        if (std::fwrite(bytes, 1, static_cast<size_t>(n), file_) != size_t(n)) fail();
    }
    uint64_t tellp() override { return static_cast<uint64_t>(platform::streamPosition(file_)); }
    void seekp(uint64_t place) override {
        if (!platform::seekStream(file_, static_cast<int64_t>(place), SEEK_SET)) fail();
    }

 private:
    // The library puts words of its own around the reason: it is kept.
    void fail() {
        if (error_ == 0) error_ = errno;
        throw std::runtime_error("the file cannot be written");
    }

    FILE* file_;
    int& error_;
};

// --- what the file holds ---

// The first header is read on its own: the library takes memory for the picture by what it says
// before anybody else can look at it.
Imf::Header firstHeader(Input& input) {
    uint8_t start[8];
    input.read(reinterpret_cast<char*>(start), sizeof start);
    int version = static_cast<int>(readLittle32(start + 4));
    Imf::Header header;
    header.readFrom(input, version);
    return header;
}

ExrExtent extentOf(const Imath::Box2i& box) { return {box.min.x, box.min.y, box.max.x, box.max.y}; }

uint64_t bytesOfPixel(const Imf::Header& header) {
    uint64_t bytes = 0;
    for (auto i = header.channels().begin(); i != header.channels().end(); ++i)
        bytes += i.channel().type == Imf::HALF ? 2 : 4;
    return bytes;
}

// Rows that the library unpacks together.
uint64_t blockRows(const Imf::Header& header) {
    if (header.hasTileDescription()) return header.tileDescription().ySize;
    switch (header.compression()) {
        case Imf::NO_COMPRESSION:
        case Imf::RLE_COMPRESSION:
        case Imf::ZIPS_COMPRESSION:
            return 1;
        case Imf::ZIP_COMPRESSION:
        case Imf::PXR24_COMPRESSION:
            return 16;
        case Imf::PIZ_COMPRESSION:
        case Imf::B44_COMPRESSION:
        case Imf::B44A_COMPRESSION:
        case Imf::DWAA_COMPRESSION:
            return 32;
        default:
            return 256;
    }
}

Failure checkHeader(const Imf::Header& header, uint64_t fileSize, uint64_t mostBytes) {
    if (header.hasType() && Imf::isDeepData(header.type())) return "deep pictures cannot be read";
    const ExrExtent data = extentOf(header.dataWindow());
    const ExrExtent display = extentOf(header.displayWindow());
    if (!data.usable() || !display.usable()) return "the size of the picture is beyond reason";
    const uint64_t blockBytes =
        static_cast<uint64_t>(data.width) * blockRows(header) * (bytesOfPixel(header) + 4);
    if (blockBytes > std::min(mostBlockBytes, mostBytes))
        return "the picture has too many or too large channels";
    if (!header.hasTileDescription()) return {};
    // Eight bytes of the file point to each tile.
    const Imf::TileDescription& tile = header.tileDescription();
    if (tile.xSize == 0 || tile.ySize == 0) return "the file is damaged";
    const uint64_t tiles = ((static_cast<uint64_t>(data.width) - 1) / tile.xSize + 1) *
                           ((static_cast<uint64_t>(data.height) - 1) / tile.ySize + 1);
    if (tiles * 8 > fileSize) return "the file ends early";
    return {};
}

Failure findChannels(const Imf::ChannelList& list, ExrChannels& channels) {
    std::vector<std::string> names;
    for (auto i = list.begin(); i != list.end(); ++i) names.emplace_back(i.name());
    return findExrChannels(names, channels);
}

// --- reading ---

// Luminance and chroma are turned into colour by the library, with the file's primaries.
Failure readPixels(Input& input, const Imf::Header& header, const ExrChannels& names,
                   Picture& picture) {
    input.seekg(0);
    if (names.luminanceChroma) return readLuminanceChroma(input, names, picture);
    Imf::InputFile file(input, 0);
    return readExrRows(file, names, blockRows(header), picture);
}

Failure readFile(const SourceFile& source, Picture& picture) {
    if (Failure failure = walkExrHeaders(source)) return failure;
    Input input(source);
    input.seekg(0);
    const Imf::Header header = firstHeader(input);
    if (Failure failure = checkHeader(header, source.size, picture.mostBytes)) return failure;
    ExrChannels names;
    if (Failure failure = findChannels(header.channels(), names)) return failure;
    const ExrExtent display = extentOf(header.displayWindow());
    Failure failure = picture.allocate(static_cast<uint32_t>(display.width),
                                       static_cast<uint32_t>(display.height), false);
    if (!failure && !names.depth.empty()) failure = picture.allocateZ();
    if (failure) return failure;
    picture.colour = !names.grey;
    picture.mask = !names.mask.empty();
    failure = readPixels(input, header, names, picture);
    return completed(picture, failure);
}

// The library's texts begin with the function or file that they come from.
Failure read(const SourceFile& source, Picture& picture) {
    return withoutExceptions(
        [&] { return readFile(source, picture); },
        [](const std::string& text) { return "the file is damaged: " + text; });
}

// --- writing ---

// A row of halfs for each channel.
struct HalfRows {
    std::vector<half> sample[4];
    std::vector<float> depth;
};

void fillRow(const Picture& picture, uint32_t y, HalfRows& rows) {
    for (uint32_t x = 0; x < picture.width; ++x) {
        for (size_t i = 0; i < 3; ++i)
            rows.sample[i][x] = lightOfSample(picture, y, size_t{x} * 4 + i);
        rows.sample[3][x] =
            static_cast<float>(wordSample(picture, y, size_t{x} * 4 + 3)) / 65535.0f;
    }
    for (uint32_t x = 0; x < picture.width && !picture.z.empty(); ++x)
        rows.depth[x] = picture.zRow(y)[x];
}

// `error` becomes the system's, when that is what it fails for.
Failure writeFile(const Picture& picture, const TargetFile& target, int& error) {
    Imf::Header header(static_cast<int>(picture.width), static_cast<int>(picture.height));
    header.compression() = Imf::ZIP_COMPRESSION;
    Imf::FrameBuffer frame;
    HalfRows rows;
    const auto add = [&](const char* name, Imf::PixelType type, void* row, size_t bytes) {
        header.channels().insert(name, Imf::Channel(type));
        frame.insert(name, Imf::Slice(type, static_cast<char*>(row), bytes, 0));
    };
    for (auto& row : rows.sample) row.resize(picture.width);
    rows.depth.resize(picture.width);
    const char* names[] = {picture.colour ? "R" : "Y", "G", "B"};
    for (int i = 0; i < (picture.colour ? 3 : 1); ++i)
        add(names[i], Imf::HALF, rows.sample[i].data(), sizeof(half));
    if (picture.mask) add("A", Imf::HALF, rows.sample[3].data(), sizeof(half));
    if (!picture.z.empty()) add("Z", Imf::FLOAT, rows.depth.data(), sizeof(float));
    Output output(target.file, error);
    Imf::OutputFile file(output, header, 0);
    file.setFrameBuffer(frame);
    for (uint32_t y = 0; y < picture.height; ++y) {
        fillRow(picture, y, rows);
        file.writePixels(1);
    }
    return {};
}

Failure write(const Picture& picture, const TargetFile& target) {
    int error = 0;
    Failure failure = withoutExceptions([&] { return writeFile(picture, target, error); });
    // Of what it writes last, as its file goes, the library does not say that it failed.
    return error != 0 ? writingFailure(error) : failure;
}

bool isExr(std::span<const uint8_t> start) { return startsWith(start, "\x76\x2F\x31\x01"); }

}  // namespace

const Codec exrCodec = {"exr", isExr, read, write};

}  // namespace vistel
