// JPEG by the stb libraries, where there is no libjpeg. A mask is left out when a picture is
// written. The library makes up pixels for picture data that is damaged, or ended by its marker too
// early, and does not tell; only a file that is cut is noticed.

#include <stb_image_write.h>

#include <numeric>
#include <vector>

#include "byte_source.h"
#include "byte_target.h"
#include "codecs.h"
#include "file_starts.h"
#include "jpeg_marks.h"
#include "packed_rows.h"
#include "stb_reading.h"
#include "turned.h"

namespace vistel {

namespace {

constexpr int quality = 95;  // above 90 colour is stored as finely as light
constexpr uint32_t longestSide = 65500;

// Some versions of the library write past the end of a table of codes that claims to have more than
// the 256 that there can be. Whether the segment of tables whose length stands there does.
bool claimsTooManyCodes(std::span<const uint8_t> bytes) {
    if (bytes.size() < 2) return false;
    const size_t length = number16(bytes.data(), ByteOrder::big);
    for (size_t at = 2; at < length && at + 17 <= bytes.size();) {
        const size_t codes = std::accumulate(&bytes[at + 1], &bytes[at + 17], size_t{0});
        if (codes > 256) return true;
        at += 17 + codes;
    }
    return false;
}

// Segments are passed over up to the first scan, or to what is no segment; from there on every mark
// of such tables counts.
bool hasBadTables(std::span<const uint8_t> bytes) {
    constexpr uint8_t tables = 0xC4, startOfScan = 0xDA;
    size_t at = 2;
    while (at + 4 <= bytes.size() && bytes[at] == 0xFF && bytes[at + 1] != startOfScan) {
        const uint8_t marker = bytes[at + 1];
        if (marker == tables && claimsTooManyCodes(bytes.subspan(at + 2))) return true;
        at += marker == 0xFF ? 1 : 2 + number16(&bytes[at + 2], ByteOrder::big);
    }
    for (; at + 2 <= bytes.size(); ++at)
        if (bytes[at] == 0xFF && bytes[at + 1] == tables &&
            claimsTooManyCodes(bytes.subspan(at + 2)))
            return true;
    return false;
}

Failure checkTables(const SourceFile& source) {
    std::vector<uint8_t> bytes;
    if (Failure failure = readWhole(source, bytes)) return failure;
    std::rewind(source.file);
    if (hasBadTables(bytes)) return "the file is damaged: its tables of codes";
    return {};
}

Failure read(const SourceFile& source, Picture& picture) {
    if (Failure failure = checkTables(source)) return failure;
    const JpegMarks marks = marksOfJpeg(source);
    // The library takes the four for colour and mask.
    if (marks.channels == 4 && !marks.inksInverted)
        return "JPEG pictures in inks without their usual mark are not supported";
    if (Failure failure = readByStb(source, "a JPEG", picture)) return failure;
    return turnUpright(picture, marks.orientation);
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

const Codec jpegCodec = {"jpeg", isJpeg, read, write};

}  // namespace vistel
