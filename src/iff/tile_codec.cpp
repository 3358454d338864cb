#include "iff/tile_codec.h"

#include <algorithm>
#include <cstring>

#include "iff/result_codes.h"
#include "iff/tile_kernels.h"

namespace vistel {

TilePlacement placeTile(const TileRect& rect, uint32_t shrink) {
    TilePlacement place;
    place.column = rect.x1 / shrink;
    place.row = rect.y1 / shrink;
    place.columns = (rect.x2 + 1u) / shrink - place.column;
    place.rows = (rect.y2 + 1u) / shrink - place.row;
    return place;
}

int checkTileRect(const TileRect& rect, const ImageHeader& header) {
    const bool inside = rect.x1 <= rect.x2 && rect.x2 < header.width &&  //
                        rect.y1 <= rect.y2 && rect.y2 < header.height;
    return inside ? iffOk : iffBadTiling;
}

// A tile up to this size may promise more than its data can hold.
static constexpr uint64_t freeTileSize = uint64_t{16} << 20;

int checkTileDataSize(const TileFormat& format, const TileRect& rect, uint64_t size) {
    // The densest packets: 2 bytes for 128 values, 4 bytes for 128 pixels of three bytes.
    const uint64_t densest = format.packsWholePixels() ? 96 : 64;
    const uint64_t raw = rawTileSize(format, rect);
    if (size > raw) return iffCompression;
    return raw > freeTileSize && raw > densest * size + densest ? iffCompression : iffOk;
}

// The scratch planes of a packed tile: one for each channel (of 16-bit channels only the high byte
// is kept), or the four bytes of a depth value. Bytes of a whole pixel between one plane's source
// and the next's:
static int planeSpacing(const TileFormat& format) { return format.valueBytes == 2 ? 2 : 1; }

static int planeCount(const TileFormat& format) {
    return format.pixelBytes() / planeSpacing(format);
}

static PixelRecipe colourRecipe(const TileFormat& format) {
    const int spacing = planeSpacing(format);
    const bool grey = format.indexOf(channelGreen) >= 0 && format.indexOf(channelRed) < 0;
    const FileChannel from[4] = {grey ? channelGreen : channelRed, channelGreen,
                                 grey ? channelGreen : channelBlue, channelMask};
    PixelRecipe recipe;
    for (int k = 0; k < 4; ++k) {
        const int index = format.indexOf(from[k]);
        recipe.offset[k] = index < 0 ? -1 : index * spacing;
    }
    if (format.indexOf(channelGreen) >= 0) recipe.fixed[3] = 255;  // colour without mask is opaque
    return recipe;
}

int TileDecoder::decodeColour(const TileFormat& format, const TileRect& rect, const uint8_t* data,
                              size_t size, const TileTarget& target) {
    return decode(format, rect, data, size, target, colourRecipe(format));
}

int TileDecoder::decodeDepth(const TileRect& rect, const uint8_t* data, size_t size,
                             const TileTarget& target) {
    PixelRecipe recipe;
    for (int k = 0; k < 4; ++k) recipe.offset[k] = 3 - k;
    return decode(depthTileFormat(), rect, data, size, target, recipe);
}

int TileDecoder::decode(const TileFormat& format, const TileRect& rect, const uint8_t* data,
                        size_t size, const TileTarget& target, const PixelRecipe& recipe) {
    const uint64_t raw = rawTileSize(format, rect);
    if (raw == 0) return iffOk;
    if (size == raw) {
        storeWhole(format, rect, data, target, recipe);
        return iffOk;
    }
    const bool packed = format.compression == compressRle || format.compression == compressQrl;
    const uint64_t pixels = raw / format.pixelBytes();
    // Behind the planes: one row of each fixed value.
    const uint64_t planes = packed ? planeRoom(pixels) * planeCount(format) + rect.width() : raw;
    if (!growScratch(planes + kernelSlack)) return iffNoMemory;
    if (!packed) {
        std::copy_n(data, size, scratch_.get());
        std::memset(scratch_.get() + size, 0, raw - size);
        storeWhole(format, rect, scratch_.get(), target, recipe);
        return iffOk;
    }
    if (format.packsWholePixels())
        unpackPixels(format, rect, data, size);
    else
        unpackRuns(format, pixels, data, size);
    storePlanar(format, rect, target, recipe);
    return iffOk;
}

void TileDecoder::storeWhole(const TileFormat& format, const TileRect& rect, const uint8_t* data,
                             const TileTarget& target, const PixelRecipe& recipe) const {
    const TileKernels& kernels = tileKernels();
    const TilePlacement place = placeTile(rect, target.shrink);
    const size_t pixelBytes = format.pixelBytes();
    const size_t rowBytes = rect.width() * pixelBytes * target.shrink;
    const bool byteChannels = format.valueBytes != 2 && target.shrink == 1;
    for (uint32_t m = 0; m < place.rows; ++m, data += rowBytes) {
        uint32_t* row = target.row(place.row + m) + place.column;
        if (byteChannels && pixelBytes == 4)
            kernels.reverse4(row, data, place.columns);
        else if (byteChannels && pixelBytes == 3)
            kernels.reverse3(row, data, place.columns);
        else
            gatherPixels(row, data, place.columns, pixelBytes * target.shrink, recipe);
    }
}

// One plane; what is missing of it and of the planes behind it becomes zero. False: decoding ends.
bool TileDecoder::unpackChannel(const TileFormat& format, int index, size_t pixels,
                                const uint8_t*& data, const uint8_t* end) {
    uint8_t* const values = plane(index, pixels);
    const size_t stored = tileKernels().unpackRle(data, end, values, pixels);
    const uint8_t* const table = format.valueBytes == 4 ? nullptr : tables_[format.channels[index]];
    if (table)
        std::transform(values, values + stored, values,
                       [=](uint8_t value) { return table[value]; });
    if (stored == pixels && (format.valueBytes != 2 || skipRle(data, end, pixels))) return true;
    std::memset(values + stored, 0, plane(planeCount(format), pixels) - (values + stored));
    return false;
}

void TileDecoder::unpackRuns(const TileFormat& format, size_t pixels, const uint8_t* data,
                             size_t size) {
    const uint8_t* const end = data + size;
    for (int i = 0; i < planeCount(format); ++i)
        if (!unpackChannel(format, i, pixels, data, end)) return;
}

// The mask, when there is one, comes first as a run-length coded channel; then the rows of pixels.
void TileDecoder::unpackPixels(const TileFormat& format, const TileRect& rect, const uint8_t* data,
                               size_t size) {
    const TileKernels& kernels = tileKernels();
    const uint8_t* const end = data + size;
    const size_t width = rect.width(), pixels = width * rect.height();
    const int mask = format.indexOf(channelMask);
    if (mask >= 0 && !unpackChannel(format, mask, pixels, data, end)) return;
    uint8_t* const red = plane(format.indexOf(channelRed), pixels);
    uint8_t* const green = plane(format.indexOf(channelGreen), pixels);
    uint8_t* const blue = plane(format.indexOf(channelBlue), pixels);
    for (size_t at = 0; at < pixels; at += width) {
        uint8_t* const row[3] = {red + at, green + at, blue + at};
        const size_t stored = kernels.unpackQrl(data, end, row, width);
        if (stored == width) continue;
        for (uint8_t* values : {red, green, blue})
            std::memset(values + at + stored, 0, pixels - at - stored);
        return;
    }
}

void TileDecoder::storePlanar(const TileFormat& format, const TileRect& rect,
                              const TileTarget& target, const PixelRecipe& recipe) const {
    const TileKernels& kernels = tileKernels();
    const size_t width = rect.width(), pixels = width * rect.height();
    const TilePlacement place = placeTile(rect, target.shrink);
    uint8_t* const fixedRow = plane(planeCount(format), pixels);
    const uint8_t* from[4];
    size_t rowStep[4];
    for (int k = 0; k < 4; ++k) {
        const bool moving = recipe.offset[k] >= 0;
        from[k] = moving ? plane(recipe.offset[k] / planeSpacing(format), pixels) : fixedRow;
        rowStep[k] = moving ? width * target.shrink : 0;
        if (!moving) std::memset(fixedRow, recipe.fixed[k], width);
    }
    for (uint32_t m = 0; m < place.rows; ++m) {
        uint32_t* row = target.row(place.row + m) + place.column;
        if (target.shrink == 1)
            kernels.interleave(row, from, place.columns);
        else
            interleaveNearest(row, from, place.columns, target.shrink);
        for (int k = 0; k < 4; ++k) from[k] += rowStep[k];
    }
}

size_t TileDecoder::planeRoom(size_t pixels) { return pixels + kernelSlack; }

bool TileDecoder::growScratch(uint64_t bytes) {
    if (bytes <= capacity_) return true;
    if (bytes > size_t{PTRDIFF_MAX}) return false;
    scratch_.reset();  // old contents are not needed: no copy
    capacity_ = 0;
    auto* block = static_cast<uint8_t*>(std::malloc(bytes));
    if (!block) return false;
    scratch_.reset(block);
    capacity_ = bytes;
    return true;
}

}  // namespace vistel
