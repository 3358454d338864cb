#include "exr_header_walk.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "byte_source.h"
#include "exr_window.h"

namespace vistel {

namespace {

constexpr uint32_t tiledFlag = 0x200, deepFlag = 0x800, partsFlag = 0x1000;
constexpr size_t longestName = 255;
constexpr uint32_t scanLineTypes = 10;  // compressions that there are
// No file has so many; each costs the library a few kilobytes.
constexpr uint32_t mostParts = 1024;

Failure damagedAttribute(const std::string& name) {
    return "the file is damaged: attribute \"" + name + "\" of its header";
}

uint32_t little32(const uint8_t* at) { return number32(at, ByteOrder::little); }

// What of a part's header tells how many blocks it has.
struct Part {
    ExrExtent data{0, 0, -1, -1};
    bool tiled = false, deep = false;
    uint32_t compression = 0;
    uint32_t tileWidth = 0, tileHeight = 0;
    uint32_t levels = 0;  // 0 one, 1 halved both ways at once, 2 halved each way on its own
    bool roundUp = false;
};

// A text up to a zero byte. False when the file or the patience ends before.
bool readName(ByteSource& source, std::string& name) {
    name.clear();
    for (;;) {
        const int byte = source.next();
        if (byte < 0 || name.size() > longestName) return false;
        if (byte == 0) return true;
        name.push_back(char(byte));
    }
}

// Texts one after the other, each behind its length: none may reach beyond the attribute.
bool holdsTexts(ByteSource& source, uint64_t bytes) {
    while (bytes > 0) {
        std::array<uint8_t, 4> field;
        if (bytes < field.size() || !source.read(field.data(), field.size())) return false;
        const uint64_t length = little32(field.data());
        bytes -= field.size();
        if (length > bytes || !source.goTo(source.position() + length)) return false;
        bytes -= length;
    }
    return true;
}

// Width, height, and four bytes for each pixel.
bool holdsPreview(ByteSource& source, uint64_t bytes) {
    std::array<uint8_t, 8> sides;
    if (bytes < sides.size() || !source.read(sides.data(), sides.size())) return false;
    const uint64_t pixels = uint64_t{little32(&sides[0])} * little32(&sides[4]);
    return pixels == (bytes - sides.size()) / 4 && bytes % 4 == 0;
}

// Names with 16 bytes behind each, up to an empty name, which the library looks for however few
// bytes the attribute has.
bool holdsChannels(ByteSource& source, uint64_t bytes) {
    const uint64_t end = source.position() + bytes;
    std::string name;
    while (readName(source, name)) {
        if (name.empty()) return source.position() == end;
        if (source.position() + 16 > end || !source.goTo(source.position() + 16)) return false;
    }
    return false;
}

// Types whose values always have one size: the library reads that much whatever size is told.
struct FixedSize {
    std::string_view type;
    uint64_t bytes;
};
constexpr FixedSize fixedSizes[] = {
    {"box2f", 16},
    {"box2i", 16},
    {"chromaticities", 32},
    {"compression", 1},
    {"deepImageState", 1},
    {"double", 8},
    {"envmap", 1},
    {"float", 4},
    {"int", 4},
    {"keycode", 28},
    {"lineOrder", 1},
    {"m33d", 72},
    {"m33f", 36},
    {"m44d", 128},
    {"m44f", 64},
    {"rational", 8},
    {"tiledesc", 9},
    {"timecode", 8},
    {"v2d", 16},
    {"v2f", 8},
    {"v2i", 8},
    {"v3d", 24},
    {"v3f", 12},
    {"v3i", 12},
};

bool hasItsSize(std::string_view type, uint64_t bytes) {
    for (const FixedSize& row : fixedSizes)
        if (type == row.type) return bytes == row.bytes;
    return type != "floatvector" || bytes % 4 == 0;
}

// The first bytes of a value.
template <size_t count>
bool readValue(ByteSource& source, uint64_t bytes, std::array<uint8_t, count>& value) {
    return bytes >= count && source.read(value.data(), count);
}

bool noteTiles(ByteSource& source, uint64_t bytes, Part& part) {
    std::array<uint8_t, 9> value;
    if (!readValue(source, bytes, value)) return false;
    part.tileWidth = little32(&value[0]);
    part.tileHeight = little32(&value[4]);
    part.levels = value[8] & 15;
    part.roundUp = value[8] >> 4;
    return part.tileWidth > 0 && part.tileHeight > 0;
}

bool noteWindow(ByteSource& source, uint64_t bytes, Part& part) {
    std::array<uint8_t, 16> value;
    if (!readValue(source, bytes, value)) return false;
    const auto side = [&](size_t at) { return static_cast<int>(little32(&value[at])); };
    part.data = ExrExtent(side(0), side(4), side(8), side(12));
    return true;
}

bool noteType(ByteSource& source, uint64_t bytes, Part& part) {
    std::string text(std::min<uint64_t>(bytes, longestName), '\0');
    if (!source.read(text.data(), text.size())) return false;
    part.deep = text.starts_with("deep");
    part.tiled = text == "tiledimage" || text == "deeptile";
    return true;
}

bool noteCompression(ByteSource& source, uint64_t bytes, Part& part) {
    std::array<uint8_t, 1> value;
    if (!readValue(source, bytes, value)) return false;
    part.compression = value[0];
    return part.compression < scanLineTypes;
}

// Whether the value of an attribute is no larger than it says.
bool checkValue(ByteSource& source, std::string_view name, std::string_view type, uint64_t bytes,
                Part& part) {
    if (!hasItsSize(type, bytes)) return false;
    if (type == "chlist") return holdsChannels(source, bytes);
    if (type == "preview") return holdsPreview(source, bytes);
    if (type == "stringvector") return holdsTexts(source, bytes);
    if (name == "dataWindow" && type == "box2i") return noteWindow(source, bytes, part);
    if (name == "tiles" && type == "tiledesc") return noteTiles(source, bytes, part);
    if (name == "type" && type == "string") return noteType(source, bytes, part);
    if (name == "compression" && type == "compression") return noteCompression(source, bytes, part);
    return true;
}

// One header. `empty` tells that it has no attribute: it then is the mark behind the last part.
Failure walkHeader(ByteSource& source, Part& part, bool& empty) {
    std::string name, type;
    for (empty = true;; empty = false) {
        if (!readName(source, name)) return endsInHeader();
        if (name.empty()) return {};
        std::array<uint8_t, 4> field;
        if (!readName(source, type) || !source.read(field.data(), field.size()))
            return endsInHeader();
        const uint64_t bytes = little32(field.data());
        if (bytes > source.left()) return damagedAttribute(name);
        const uint64_t end = source.position() + bytes;
        if (!checkValue(source, name, type, bytes, part) || source.position() > end ||
            !source.goTo(end))
            return damagedAttribute(name);
    }
}

uint64_t halved(uint64_t size, uint32_t times, bool roundUp) {
    const uint64_t divisor = uint64_t{1} << times;
    return std::max<uint64_t>((size + (roundUp ? divisor - 1 : 0)) / divisor, 1);
}

uint32_t levelsOf(uint64_t size, bool roundUp) {
    uint32_t levels = 1;
    for (; size > 1; size = roundUp ? (size + 1) / 2 : size / 2) ++levels;
    return levels;
}

// Along one side at one level.
uint64_t tilesOf(int64_t size, uint32_t tile, uint32_t level, bool roundUp) {
    return (halved(uint64_t(size), level, roundUp) - 1) / tile + 1;
}

uint64_t tileBlocks(const Part& part) {
    const auto across = [&](uint32_t level) {
        return tilesOf(part.data.width, part.tileWidth, level, part.roundUp);
    };
    const auto down = [&](uint32_t level) {
        return tilesOf(part.data.height, part.tileHeight, level, part.roundUp);
    };
    if (part.levels == 0) return across(0) * down(0);
    uint64_t blocks = 0;
    if (part.levels == 1) {
        const auto larger = uint64_t(std::max(part.data.width, part.data.height));
        for (uint32_t i = 0; i < levelsOf(larger, part.roundUp); ++i) blocks += across(i) * down(i);
        return blocks;
    }
    uint64_t columns = 0, rows = 0;
    for (uint32_t i = 0; i < levelsOf(uint64_t(part.data.width), part.roundUp); ++i)
        columns += across(i);
    for (uint32_t i = 0; i < levelsOf(uint64_t(part.data.height), part.roundUp); ++i)
        rows += down(i);
    return columns * rows;
}

uint64_t blocksOf(const Part& part) {
    // In the order of their numbers: none, RLE, ZIPS, ZIP, PIZ, PXR24, B44, B44A, DWAA, DWAB.
    static constexpr uint32_t rows[scanLineTypes] = {1, 1, 1, 16, 32, 16, 32, 32, 32, 256};
    if (part.tiled) return tileBlocks(part);
    return (uint64_t(part.data.height) - 1) / rows[part.compression] + 1;
}

Failure checkPart(const Part& part, uint64_t& blocks) {
    if (!part.data.usable()) return "the size of the picture is beyond reason";
    if (part.tiled && part.tileWidth == 0) return damagedAttribute("tiles");
    blocks += blocksOf(part);
    return {};
}

Failure walkParts(ByteSource& source, uint32_t flags) {
    uint64_t blocks = 0;
    for (uint32_t number = 0; number <= mostParts; ++number) {
        Part part;
        part.tiled = flags & tiledFlag;
        bool empty = true;
        if (Failure failure = walkHeader(source, part, empty)) return failure;
        const bool several = flags & partsFlag;
        if (several && empty && number > 0)
            return blocks * 8 > source.left() ? endsInHeader() : Failure();
        // The first picture is the one that is read.
        if (number == 0 && (part.deep || (!several && flags & deepFlag)))
            return "deep pictures cannot be read";
        if (Failure failure = checkPart(part, blocks)) return failure;
        if (!several) return blocks * 8 > source.left() ? endsInHeader() : Failure();
    }
    return "the file has too many parts";
}

}  // namespace

Failure walkExrHeaders(const SourceFile& file) {
    ByteSource source(file);
    std::array<uint8_t, 8> start;
    if (!source.read(start.data(), start.size())) return endsInHeader();
    return walkParts(source, little32(&start[4]));
}

}  // namespace vistel
