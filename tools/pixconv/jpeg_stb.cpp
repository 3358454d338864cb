// JPEG by the stb libraries, where there is no libjpeg. A mask is left out when a picture is
// written.

#include <stb_image_write.h>

#include <vector>

#include "byte_source.h"
#include "codecs.h"
#include "packed_rows.h"
#include "stb_reading.h"

namespace vistel {

namespace {

constexpr int quality = 95;  // above 90 colour is stored as finely as light
constexpr uint32_t longestSide = 65500;

bool recognises(std::span<const uint8_t> start) {
    return start.size() >= 3 && start[0] == 0xFF && start[1] == 0xD8 && start[2] == 0xFF;
}

Failure read(const SourceFile& source, Picture& picture) {
    return readByStb(source, "a JPEG", picture);
}

struct Sink {
    FILE* file;
    bool failed = false;
    static void write(void* context, void* bytes, int count) {
        auto* sink = static_cast<Sink*>(context);
        const auto size = static_cast<size_t>(count);
        if (std::fwrite(bytes, 1, size, sink->file) != size) sink->failed = true;
    }
};

Failure write(const Picture& picture, const TargetFile& target) {
    if (picture.width > longestSide || picture.height > longestSide)
        return "a JPEG file has at most " + std::to_string(longestSide) + " pixels each way";
    const int channels = picture.colour ? 3 : 1;
    std::vector<uint8_t> narrow,
        block(picture.rowSamples() / 4 * size_t(channels) * picture.height);
    uint8_t* row = block.data();
    for (uint32_t y = 0; y < picture.height; ++y, row += size_t{picture.width} * size_t(channels))
        packRow(picture.byteRow(y, narrow), picture.width, channels, row);
    Sink sink{target.file};
    if (!stbi_write_jpg_to_func(Sink::write, &sink, int(picture.width), int(picture.height),
                                channels, block.data(), quality) ||
        sink.failed)
        return cannotWrite();
    return {};
}

}  // namespace

const Codec jpegCodec = {"jpeg", recognises, read, write};

}  // namespace vistel
