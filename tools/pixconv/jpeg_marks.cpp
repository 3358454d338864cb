#include "jpeg_marks.h"

#include <cstring>
#include <string_view>
#include <vector>

#include "byte_source.h"
#include "file_starts.h"

namespace vistel {

namespace {

constexpr std::string_view exifMark("Exif\0\0", 6);
constexpr uint16_t orientationTag = 0x112, shortType = 3;
constexpr size_t entryBytes = 12;

constexpr int app1 = 0xE1, startOfScan = 0xDA, endOfImage = 0xD9;

// The next segment's marker; below 0 when there is none before the first scan.
int nextMarker(ByteSource& source) {
    if (source.next() != 0xFF) return -1;
    int marker = source.next();
    while (marker == 0xFF) marker = source.next();  // filling
    return marker == 0 || marker == startOfScan || marker == endOfImage ? -1 : marker;
}

bool readBody(ByteSource& source, std::vector<uint8_t>& body) {
    uint8_t length[2];
    if (!source.read(length, 2)) return false;
    const size_t size = readBig16(length);
    if (size < 2 || size - 2 > source.left()) return false;
    body.resize(size - 2);
    return source.read(body.data(), body.size());
}

}  // namespace

int orientationOfJpeg(const SourceFile& file) {
    int orientation = 1;
    ByteSource source(file);
    std::vector<uint8_t> body;
    if (source.goTo(2)) {  // behind the start of the image
        int marker;
        while ((marker = nextMarker(source)) >= 0 && readBody(source, body))
            // Other data goes under the same marker.
            if (marker == app1 && startsWith(body, exifMark)) orientation = orientationOfExif(body);
    }
    std::rewind(file.file);
    return orientation;
}

//  offset  width  of what follows the mark, in the byte order that it starts with
//       0      2  "II" little-endian, "MM" big-endian
//       2      2  42
//       4      4  place of the directory: how many entries (2 bytes), then entries:
//                 0 tag   2 type   4 count   8 value, a short one in the first bytes
int orientationOfExif(std::span<const uint8_t> body) {
    if (body.size() < exifMark.size() + 8 || !startsWith(body, exifMark)) return 1;
    const std::span<const uint8_t> bytes = body.subspan(exifMark.size());
    if (bytes[0] != bytes[1] || (bytes[0] != 'I' && bytes[0] != 'M')) return 1;
    const ByteOrder order = bytes[0] == 'M' ? ByteOrder::big : ByteOrder::little;
    if (number16(&bytes[2], order) != 42) return 1;
    const uint64_t directory = number32(&bytes[4], order);
    if (directory + 2 > bytes.size()) return 1;
    const size_t entries = number16(&bytes[directory], order);
    for (size_t i = 0; i < entries; ++i) {
        const uint64_t at = directory + 2 + i * entryBytes;
        if (at + entryBytes > bytes.size()) return 1;
        if (number16(&bytes[at], order) != orientationTag) continue;
        const uint16_t value = number16(&bytes[at + 8], order);
        const bool usable = number16(&bytes[at + 2], order) == shortType &&
                            number32(&bytes[at + 4], order) == 1 && value >= 1 && value <= 8;
        return usable ? value : 1;
    }
    return 1;
}

}  // namespace vistel
