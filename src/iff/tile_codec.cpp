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

// A tile while it is decoded.
struct TileDecoder::Tile {
    Tile(const TileFormat& theFormat, const PixelRecipe& theRecipe, const TileRect& rect,
         const TileTarget& theTarget, const uint8_t* theData, size_t size)
        : format(theFormat),
          recipe(theRecipe),
          target(theTarget),
          place(placeTile(rect, theTarget.shrink)),
          width(rect.width()),
          pixels(width * rect.height()),
          data(theData),
          end(theData + size) {
        for (size_t& step : planeStep) step = width;
    }

    const TileFormat& format;
    const PixelRecipe& recipe;
    const TileTarget& target;
    TilePlacement place;
    size_t width, pixels;
    const uint8_t* data;  // what has not been unpacked yet
    const uint8_t* end;
    size_t planeStep[4];  // of each scratch plane from one row to the next; 0: all rows are alike

    PixelArea area(size_t firstRow, size_t endRow) const {
        return {target.row(place.row + firstRow) + place.column, target.rowPixels, place.columns,
                endRow - firstRow, target.touched};
    }
};

// The first row of each byte of a pixel, and how far the next one is.
struct TileDecoder::PlanarRows {
    const uint8_t* from[4];
    size_t step[4];
};

int TileDecoder::decodeColour(const TileFormat& format, const TileRect& rect, const uint8_t* data,
                              size_t size, const TileTarget& target) {
    const PixelRecipe recipe = colourRecipe(format);
    Tile tile(format, recipe, rect, target, data, size);
    return decode(tile);
}

int TileDecoder::decodeDepth(const TileRect& rect, const uint8_t* data, size_t size,
                             const TileTarget& target) {
    const TileFormat format = depthTileFormat();
    PixelRecipe recipe;
    for (int k = 0; k < 4; ++k) recipe.offset[k] = 3 - k;
    Tile tile(format, recipe, rect, target, data, size);
    return decode(tile);
}

int TileDecoder::decode(Tile& tile) {
    const TileFormat& format = tile.format;
    const uint64_t raw = uint64_t{tile.pixels} * format.pixelBytes();
    if (raw == 0) return iffOk;
    unsettled_ |= tile.target.touched;
    const size_t size = static_cast<size_t>(tile.end - tile.data);
    if (size == raw) {
        storeWhole(tile, tile.data);
        return iffOk;
    }
    const bool packed = format.compression == compressRle || format.compression == compressQrl;
    // Behind the planes: a row of the fixed value; of several, only one is ever stored.
    const uint64_t planes = packed ? planeRoom(tile.pixels) * planeCount(format) + tile.width : raw;
    if (!growScratch(planes + kernelSlack)) return iffNoMemory;
    if (!packed) {
        std::copy_n(tile.data, size, scratch_.get());
        std::memset(scratch_.get() + size, 0, raw - size);
        storeWhole(tile, scratch_.get());
    } else if (format.packsWholePixels()) {
        decodePixels(tile);
    } else {
        decodeRuns(tile);
    }
    return iffOk;
}

void TileDecoder::settle() {
    if (unsettled_ && kernels_.settle) kernels_.settle();
    unsettled_ = false;
}

void TileDecoder::storeWhole(const Tile& tile, const uint8_t* data) const {
    const TilePlacement& place = tile.place;
    const size_t shrink = tile.target.shrink, pixelBytes = tile.format.pixelBytes();
    const bool byteChannels = tile.format.valueBytes != 2 && shrink == 1;
    const PixelArea area = tile.area(0, place.rows);
    if (byteChannels && pixelBytes == 4) return kernels_.reverse4(area, data);
    if (byteChannels && pixelBytes == 3) return kernels_.reverse3(area, data);
    const size_t rowBytes = tile.width * pixelBytes * shrink;
    for (size_t m = 0; m < place.rows; ++m, data += rowBytes)
        gatherPixels(area.pixels + m * area.rowPixels, data, place.columns, pixelBytes * shrink,
                     tile.recipe);
}

void TileDecoder::applyTable(const Tile& tile, int index, uint8_t* values, size_t count) const {
    const bool colour = tile.format.valueBytes != 4;
    const uint8_t* const table = colour ? tables_[tile.format.channels[index]] : nullptr;
    if (!table) return;
    std::transform(values, values + count, values, [=](uint8_t value) { return table[value]; });
}

// Decoding ends here: the rest of this plane and the planes behind it are zero.
void TileDecoder::clearFrom(const Tile& tile, uint8_t* values) {
    uint8_t* const end = plane(planeCount(tile.format), tile.pixels);
    std::memset(values, 0, static_cast<size_t>(end - values));
}

// Whether the next `count` values are all the same, in the fewest packets possible. Masks and empty
// areas are full of such channels; their packets need not be unpacked one by one. `bytes` is what
// they take.
static bool isConstant(const uint8_t* data, const uint8_t* end, size_t count, size_t& bytes) {
    const size_t full = (count - 1) / longestPacket;  // packets before the last one
    bytes = 2 * full + 2;
    if (static_cast<size_t>(end - data) < bytes) return false;
    const uint8_t* const last = data + 2 * full;
    if (last[0] != 127 + count - full * longestPacket || last[1] != data[1]) return false;
    return full == 0 || (data[0] == 255 && std::memcmp(data, data + 2, 2 * full - 2) == 0);
}

// One plane; what is missing of it and of the planes behind it becomes zero. False: decoding ends.
bool TileDecoder::unpackPlane(Tile& tile, int index) {
    uint8_t* const values = plane(index, tile.pixels);
    size_t stored = tile.pixels, bytes = 0;
    if (isConstant(tile.data, tile.end, tile.pixels, bytes)) {
        std::memset(values, tile.data[1], tile.width);
        applyTable(tile, index, values, tile.width);
        tile.planeStep[index] = 0;
        tile.data += bytes;
    } else {
        stored = kernels_.unpackRle(tile.data, tile.end, values, tile.pixels, tile.pixels);
        applyTable(tile, index, values, stored);
    }
    const bool lowBytes = tile.format.valueBytes == 2;
    if (stored == tile.pixels && (!lowBytes || skipRle(tile.data, tile.end, tile.pixels)))
        return true;
    clearFrom(tile, values + stored);
    return false;
}

// Values of the last plane that are unpacked before their rows are stored.
static constexpr size_t storeAfter = 1024;

// The last plane, its rows stored together with those of the others as soon as a few are there: the
// processor unpacks the next ones while the memory takes in the last.
void TileDecoder::unpackLastPlane(Tile& tile, int index) {
    const PlanarRows source = planarRows(tile);
    uint8_t* const values = plane(index, tile.pixels);
    const size_t rows = tile.pixels / tile.width;
    const size_t rowsAtOnce = std::max<size_t>(1, storeAfter / tile.width);
    size_t done = 0;
    for (size_t row = 0; row < rows;) {
        const size_t enough = std::min(rows, row + rowsAtOnce) * tile.width - done;
        uint8_t* const at = values + done;
        const size_t stored =
            kernels_.unpackRle(tile.data, tile.end, at, tile.pixels - done, enough);
        applyTable(tile, index, at, stored);
        done += stored;
        if (stored < enough) {
            clearFrom(tile, values + done);
            done = tile.pixels;
        }
        storeRows(tile, source, row, done / tile.width);
        row = done / tile.width;
    }
}

void TileDecoder::decodeRuns(Tile& tile) {
    const int last = planeCount(tile.format) - 1;
    bool whole = true;
    for (int i = 0; i < last && whole; ++i) whole = unpackPlane(tile, i);
    size_t bytes;
    if (whole && tile.target.shrink == 1 && !isConstant(tile.data, tile.end, tile.pixels, bytes))
        return unpackLastPlane(tile, last);
    if (whole) (void)unpackPlane(tile, last);
    storePlanar(tile);
}

// The mask, when there is one, comes first as a run-length coded channel; then the rows of pixels.
void TileDecoder::decodePixels(Tile& tile) {
    const TileFormat& format = tile.format;
    const size_t pixels = tile.pixels, width = tile.width;
    const int mask = format.indexOf(channelMask);
    const bool whole = mask < 0 || unpackPlane(tile, mask);
    uint8_t* const planes[3] = {plane(format.indexOf(channelRed), pixels),
                                plane(format.indexOf(channelGreen), pixels),
                                plane(format.indexOf(channelBlue), pixels)};
    for (size_t at = 0; at < pixels && whole; at += width) {
        uint8_t* const row[3] = {planes[0] + at, planes[1] + at, planes[2] + at};
        const size_t stored = kernels_.unpackQrl(tile.data, tile.end, row, width);
        if (stored == width) continue;
        for (uint8_t* values : row) std::memset(values + stored, 0, pixels - at - stored);
        break;
    }
    storePlanar(tile);
}

TileDecoder::PlanarRows TileDecoder::planarRows(const Tile& tile) {
    PlanarRows source;
    uint8_t* const fixedRow = plane(planeCount(tile.format), tile.pixels);
    for (int k = 0; k < 4; ++k) {
        const int offset = tile.recipe.offset[k];
        const int index = offset < 0 ? 0 : offset / planeSpacing(tile.format);
        source.from[k] = offset < 0 ? fixedRow : plane(index, tile.pixels);
        source.step[k] = offset < 0 ? 0 : tile.planeStep[index] * tile.target.shrink;
        if (offset < 0) std::memset(fixedRow, tile.recipe.fixed[k], tile.width);
    }
    return source;
}

// Rows [first, end) of those that the tile covers.
void TileDecoder::storeRows(const Tile& tile, const PlanarRows& source, size_t first,
                            size_t end) const {
    const uint8_t* from[4];
    for (int k = 0; k < 4; ++k) from[k] = source.from[k] + first * source.step[k];
    const PixelArea area = tile.area(first, end);
    if (tile.target.shrink == 1) return kernels_.interleave(area, from, source.step);
    for (size_t m = 0; m < area.rows; ++m) {
        interleaveNearest(area.pixels + m * area.rowPixels, from, area.columns, tile.target.shrink);
        for (int k = 0; k < 4; ++k) from[k] += source.step[k];
    }
}

void TileDecoder::storePlanar(const Tile& tile) {
    storeRows(tile, planarRows(tile), 0, tile.place.rows);
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
