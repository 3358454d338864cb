#include "memory_rule.h"

#include <algorithm>

namespace vistel {

namespace {

constexpr uint64_t megabyte = uint64_t{1} << 20;
constexpr uint64_t alwaysJustified = 64 * megabyte;

// Bytes of a picture that one byte of a file can stand for.
constexpr uint64_t stored = 32;        // one bit for each pixel of four bytes
constexpr uint64_t inRuns = 512;       // 255 pixels in two bytes
constexpr uint64_t bitsInRuns = 2048;  // 128 bytes in two, one bit for each pixel
constexpr uint64_t packed = 4096;      // deflate, LZW and transforms: 1000 pixels of grey
constexpr uint64_t inBlocks = 131072;  // ZSTD: 128 KB of grey in four bytes

struct Row {
    std::string_view key;
    uint64_t ratio;
};
constexpr Row rows[] = {
    {"tavo", inRuns},    {"png", packed},  {"jpeg", packed}, {"tiff", inBlocks},
    {"exr", packed},     {"webp", packed}, {"tga", inRuns},  {"bmp", inRuns},
    {"psd", bitsInRuns}, {"gif", packed},  {"hdr", inRuns},  {"pnm", stored},
    {"pfm", stored},     {"sgi", inRuns},  {"dpx", inRuns},  {"cineon", stored},
};

const Row* rowOf(std::string_view key) {
    const Row* row = std::find_if(std::begin(rows), std::end(rows),
                                  [&](const Row& each) { return each.key == key; });
    return row == std::end(rows) ? nullptr : row;
}

}  // namespace

uint64_t justifiedBytes(std::string_view key, uint64_t fileBytes) {
    const Row* row = rowOf(key);
    const uint64_t ratio = row ? row->ratio : stored;
    if (fileBytes > mostPictureBytes / ratio) return mostPictureBytes;
    return std::max(fileBytes * ratio, alwaysJustified);
}

bool hasMemoryRule(std::string_view key) { return rowOf(key) != nullptr; }

Failure notJustified(uint64_t bytes) {
    return "the picture would take " + std::to_string((bytes + megabyte - 1) / megabyte) +
           " MB, more than the size of its file justifies";
}

}  // namespace vistel
