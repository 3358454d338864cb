// WebP by libwebp; still pictures, which are always in colour. Written without loss, colour under a
// clear mask included.

#include <webp/decode.h>
#include <webp/encode.h>

#include <cstring>
#include <memory>
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

// The library is content with a part where the first picture ends early enough.
bool isWhole(const std::vector<uint8_t>& bytes) {
    return bytes.size() >= 12 && bytes.size() >= uint64_t{readLittle32(&bytes[4])} + 8;
}

Failure reasonOf(VP8StatusCode status) {
    switch (status) {
        case VP8_STATUS_OUT_OF_MEMORY:
            return "there is not enough memory";
        case VP8_STATUS_NOT_ENOUGH_DATA:
            return "the file ends early";
        default:
            return "the file is damaged";
    }
}

Failure read(const SourceFile& source, Picture& picture) {
    std::vector<uint8_t> bytes;
    if (Failure failure = readWhole(source, bytes)) return failure;
    if (!isWhole(bytes)) return "the file ends early";
    WebPBitstreamFeatures features;
    const VP8StatusCode status = WebPGetFeatures(bytes.data(), bytes.size(), &features);
    if (status != VP8_STATUS_OK) return reasonOf(status);
    if (features.has_animation) return "animated WebP files cannot be read";
    if (Failure failure = picture.allocate(static_cast<uint32_t>(features.width),
                                           static_cast<uint32_t>(features.height), false))
        return failure;
    picture.mask = features.has_alpha != 0;
    const auto stride = static_cast<int>(picture.rowSamples());
    if (!WebPDecodeRGBAInto(bytes.data(), bytes.size(), picture.samples.data(),
                            picture.samples.size(), stride))
        return "the file is damaged";
    return {};
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
