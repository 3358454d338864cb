// WebP by libwebp, which are always in colour; of an animation the first picture, on its canvas.
// Written without loss, colour under a clear mask included.
//
//     0  "RIFF"   4 size   8 "WEBP", then chunks: name, size, so many bytes and one to make it even
//     "VP8X"  what the file has (1 byte, 3 unused), width less one of the canvas (3), height (3)
//     "ANMF"  a picture: left and top (3 each), in steps of two; width and height less one (3
//     each),
//             time (3), how it is laid over the one before (1), then its chunks
//
// Numbers are little-endian. What the first picture leaves of the canvas is transparent black.

#include <webp/decode.h>
#include <webp/encode.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#include "byte_source.h"
#include "byte_target.h"
#include "codecs.h"

namespace vistel {

namespace {

bool recognises(std::span<const uint8_t> start) {
    return start.size() >= 12 && std::memcmp(start.data(), "RIFF", 4) == 0 &&
           std::memcmp(start.data() + 8, "WEBP", 4) == 0;
}

Failure reasonOf(VP8StatusCode status) {
    switch (status) {
        case VP8_STATUS_OUT_OF_MEMORY:
            return "there is not enough memory";
        case VP8_STATUS_SUSPENDED:
        case VP8_STATUS_NOT_ENOUGH_DATA:
            return "the file ends early";
        default:
            return "the file is damaged";
    }
}

constexpr size_t riffBytes = 12, chunkBytes = 8, pictureBytes = 16;

uint32_t number24(const uint8_t* at) {
    return at[0] | uint32_t{at[1]} << 8 | uint32_t{at[2]} << 16;
}

// A still picture, and where it lies on its canvas.
struct Still {
    std::vector<uint8_t> bytes;  // a file of its own, as far as it is there
    uint32_t left = 0, top = 0;
    uint32_t canvasWidth = 0, canvasHeight = 0;  // 0: its own size
    bool whole = true;
};

// A file around the chunks of one picture of an animation.
std::vector<uint8_t> fileAround(std::span<const uint8_t> chunks, const uint8_t* size) {
    constexpr uint8_t hasMask = 0x10;
    std::vector<uint8_t> file(riffBytes + chunkBytes + 10);
    std::memcpy(&file[0], "RIFF", 4);
    std::memcpy(&file[8], "WEBPVP8X", 8);
    writeLittle32(&file[4], uint32_t(file.size() + chunks.size() - 8));
    writeLittle32(&file[16], 10);
    file[20] = hasMask;
    std::memcpy(&file[24], size, 6);
    file.insert(file.end(), chunks.begin(), chunks.end());
    return file;
}

// The first picture of an animation.
Failure findFirst(const std::vector<uint8_t>& bytes, Still& still) {
    for (uint64_t at = riffBytes; at + chunkBytes <= bytes.size();) {
        const uint8_t* chunk = &bytes[at];
        const uint64_t size = readLittle32(chunk + 4);
        const uint64_t body = at + chunkBytes;
        const uint64_t there = std::min(size, bytes.size() - body);
        if (std::memcmp(chunk, "VP8X", 4) == 0 && there >= 10) {
            still.canvasWidth = number24(chunk + 12) + 1;
            still.canvasHeight = number24(chunk + 15) + 1;
        }
        if (std::memcmp(chunk, "ANMF", 4) == 0) {
            if (there < pictureBytes) break;
            still.left = number24(chunk + 8) * 2;
            still.top = number24(chunk + 11) * 2;
            still.whole = there == size;
            still.bytes = fileAround(
                std::span(bytes).subspan(body + pictureBytes, there - pictureBytes), chunk + 14);
            return {};
        }
        at = body + size + size % 2;
    }
    return "the file ends early: before its first picture";
}

// The rows that the bytes are enough for, to their place in the picture.
Failure decode(const Still& still, uint32_t width, uint32_t height, Picture& picture) {
    const auto stride = static_cast<int>(picture.rowSamples());
    uint8_t* first = picture.row(still.top) + size_t{still.left} * 4;
    const size_t room = picture.samples.size() - size_t(first - picture.samples.data());
    const std::unique_ptr<WebPIDecoder, void (*)(WebPIDecoder*)> decoder(
        WebPINewRGB(MODE_RGBA, first, room, stride), WebPIDelete);
    if (!decoder) return "there is not enough memory";
    const VP8StatusCode status = WebPIUpdate(decoder.get(), still.bytes.data(), still.bytes.size());
    int rows = 0, wide = 0, high = 0, step = 0;
    if (!WebPIDecGetRGB(decoder.get(), &rows, &wide, &high, &step)) rows = 0;
    // The rest of the canvas is there from the beginning.
    picture.rowsRead = uint32_t(rows) == height ? picture.height : uint32_t(rows);
    if (status != VP8_STATUS_OK) return reasonOf(status);
    if (uint32_t(wide) != width || uint32_t(high) != height) return "the file is damaged";
    return still.whole ? Failure() : "the file ends early";
}

Failure read(const SourceFile& source, Picture& picture) {
    Still still;
    if (Failure failure = readWhole(source, still.bytes)) return failure;
    if (still.bytes.size() < riffBytes) return "the file ends early";
    still.whole = still.bytes.size() >= uint64_t{readLittle32(&still.bytes[4])} + 8;
    WebPBitstreamFeatures features;
    VP8StatusCode status = WebPGetFeatures(still.bytes.data(), still.bytes.size(), &features);
    if (status == VP8_STATUS_OK && features.has_animation) {
        const std::vector<uint8_t> animation = std::move(still.bytes);
        if (Failure failure = findFirst(animation, still)) return failure;
        status = WebPGetFeatures(still.bytes.data(), still.bytes.size(), &features);
    }
    if (status != VP8_STATUS_OK) return reasonOf(status);
    const auto width = uint32_t(features.width), height = uint32_t(features.height);
    if (still.canvasWidth == 0) {
        still.canvasWidth = width;
        still.canvasHeight = height;
    }
    if (uint64_t{still.left} + width > still.canvasWidth ||
        uint64_t{still.top} + height > still.canvasHeight)
        return "the file is damaged: a picture beyond its canvas";
    if (Failure failure = picture.allocate(still.canvasWidth, still.canvasHeight, false))
        return failure;
    picture.mask = features.has_alpha != 0 || width < picture.width || height < picture.height;
    return decode(still, width, height, picture);
}

// --- writing ---

struct Encoder {
    WebPConfig config;
    WebPPicture picture;
    bool valid = WebPConfigInit(&config) && WebPPictureInit(&picture);
    ~Encoder() {
        if (valid) WebPPictureFree(&picture);
    }
};

int writeBytes(const uint8_t* bytes, size_t size, const WebPPicture* picture) {
    return std::fwrite(bytes, 1, size, static_cast<FILE*>(picture->custom_ptr)) == size;
}

bool importRows(WebPPicture& out, const Picture& picture) {
    if (!WebPPictureAlloc(&out)) return false;
    std::vector<uint8_t> room;
    for (uint32_t y = 0; y < picture.height; ++y) {
        const uint8_t* pixel = picture.byteRow(y, room);
        uint32_t* packed = out.argb + size_t{y} * static_cast<size_t>(out.argb_stride);
        for (uint32_t x = 0; x < picture.width; ++x, pixel += 4)
            packed[x] = uint32_t{pixel[3]} << 24 | uint32_t{pixel[0]} << 16 |
                        uint32_t{pixel[1]} << 8 | pixel[2];
    }
    return true;
}

Failure write(const Picture& picture, const TargetFile& target) {
    if (picture.width > WEBP_MAX_DIMENSION || picture.height > WEBP_MAX_DIMENSION)
        return "a WebP file has at most " + std::to_string(WEBP_MAX_DIMENSION) + " pixels each way";
    Encoder encoder;
    if (!encoder.valid || !WebPConfigLosslessPreset(&encoder.config, 1))
        return "the WebP library is of another version";
    encoder.config.exact = 1;
    encoder.picture.use_argb = 1;
    encoder.picture.width = static_cast<int>(picture.width);
    encoder.picture.height = static_cast<int>(picture.height);
    encoder.picture.writer = writeBytes;
    encoder.picture.custom_ptr = target.file;
    if (!importRows(encoder.picture, picture)) return "there is not enough memory";
    if (WebPEncode(&encoder.config, &encoder.picture)) return {};
    const bool disk = encoder.picture.error_code == VP8_ENC_ERROR_BAD_WRITE;
    return disk ? cannotWrite() : "the picture cannot be packed";
}

}  // namespace

const Codec webpCodec = {"webp", recognises, read, write};

}  // namespace vistel
