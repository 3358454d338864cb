// Tiles on their way from the file into the planes of a frame.

#include <algorithm>

#include "host/byte_order.h"
#include "iff/image_parse.h"

namespace vistel {

static constexpr size_t maxListedTiles = 8192;
static constexpr size_t firstDataBlock = 64 << 10;

bool TileData::grow(size_t size) {
    if (size <= capacity_) return true;
    auto* block = static_cast<uint8_t*>(std::realloc(block_.get(), size));
    if (!block) return false;
    (void)block_.release();  // realloc has taken it
    block_.reset(block);
    capacity_ = size;
    return true;
}

int TileData::read(IffReader& chunk, size_t size) {
    for (size_t have = 0; have < size;) {
        const size_t next = std::min(size, std::max({capacity_, 2 * have, firstDataBlock}));
        if (!grow(next)) return iffNoMemory;
        if (const int code = chunk.readBytes(block_.get() + have, next - have); code != iffOk)
            return code;
        have = next;
    }
    return iffOk;
}

//  offset  width  tile chunk (big-endian)
//       0      8  x1, y1, x2, y2: inclusive rectangle
//       8         data
int readTileRect(IffReader& chunk, TileRect& rect) {
    uint8_t bytes[8];
    if (const int code = chunk.readBytes(bytes, sizeof bytes); code != iffOk) return code;
    rect = {readBig16(bytes), readBig16(bytes + 2), readBig16(bytes + 4), readBig16(bytes + 6)};
    return iffOk;
}

// The planes take the display size of the form's header; planes of another size are freed.
static void fitPlanes(ImageForm& form) {
    FrameStore& frame = form.frame;
    const DisplaySize& display = form.display;
    const bool same = frame.width == static_cast<int>(display.width) &&
                      frame.height == static_cast<int>(display.height);
    if (!same) {
        frame.colour.free();
        frame.z.free();
    }
    frame.width = static_cast<int>(display.width);
    frame.height = static_cast<int>(display.height);
    frame.shrink = static_cast<int>(display.shrink);
}

// The densest packets, of an image with one channel, have 2 bytes for 128 pixels of 4 bytes.
static constexpr uint64_t densestTiles = 256;
static constexpr uint64_t freePlaneBytes = uint64_t{256} << 20;

bool memoryJustified(uint64_t planeBytes, uint64_t dataBytes) {
    return planeBytes <= freePlaneBytes + densestTiles * dataBytes;
}

template <class Pixel>
static int makeRoom(ImageForm& form, Plane<Pixel>& plane, const TilePlacement& place) {
    const DisplaySize& display = form.display;
    if (display.width > INT32_MAX || display.height > INT32_MAX) return iffNoMemory;
    fitPlanes(form);
    if (plane.empty() && !plane.allocate(display.width, display.height)) return iffNoMemory;
    if (place.rows == 0) return iffOk;
    if (!plane.commitRows(place.row, place.row + place.rows - 1)) return iffNoMemory;
    return memoryJustified(plane.usableBytes(), form.dataBytes) ? iffOk : iffNoMemory;
}

template <class Pixel>
static TileTarget targetOf(ImageForm& form, Plane<Pixel>& plane) {
    static_assert(sizeof(Pixel) == sizeof(uint32_t));
    return {reinterpret_cast<uint32_t*>(plane.data()), form.display.width, form.display.shrink,
            plane.touched()};
}

// Rectangle and data of a tile, refused before anything is read that cannot be right.
static int readTile(IffReader& chunk, ImageParse& parse, const TileFormat& format, TileRect& rect,
                    size_t& size) {
    if (int code = readTileRect(chunk, rect); code != iffOk) return code;
    if (int code = checkTileRect(rect, parse.form->frame.header); code != iffOk) return code;
    size = chunk.chunkSize() - 8;
    if (int code = checkTileDataSize(format, rect, size); code != iffOk) return code;
    if (int code = parse.data.read(chunk, size); code != iffOk) return code;
    parse.form->dataBytes += size;
    return iffOk;
}

int loadColourTile(IffReader& chunk, ImageParse& parse) {
    ImageForm& form = *parse.form;
    FrameStore& frame = form.frame;
    TileRect rect;
    size_t size = 0;
    if (int code = readTile(chunk, parse, form.colourFormat, rect, size); code != iffOk)
        return code;
    if (frame.header.tiles <= maxListedTiles && frame.tiles.size() < maxListedTiles)
        frame.tiles.push_back(rect);
    if (form.colourFormat.channelCount == 0) {
        // Black, unless the form turns out to have depth, which is then what there is to see.
        form.blackTiles = true;
        return iffOk;
    }
    const TilePlacement place = placeTile(rect, form.display.shrink);
    if (int code = makeRoom(form, frame.colour, place); code != iffOk) return code;
    if (int code = parse.decoder.decodeColour(form.colourFormat, rect, parse.data.bytes(), size,
                                              targetOf(form, frame.colour));
        code != iffOk) {
        return code;
    }
    frame.colour.markWritten(place.column, place.row, place.columns, place.rows);
    return iffOk;
}

int makeBlackPicture(ImageForm& form) { return makeRoom(form, form.frame.colour, {}); }

int loadDepthTile(IffReader& chunk, ImageParse& parse) {
    ImageForm& form = *parse.form;
    TileRect rect;
    size_t size = 0;
    if (int code = readTile(chunk, parse, depthTileFormat(), rect, size); code != iffOk)
        return code;
    const TilePlacement place = placeTile(rect, form.display.shrink);
    if (int code = makeRoom(form, form.frame.z, place); code != iffOk) return code;
    if (int code =
            parse.decoder.decodeDepth(rect, parse.data.bytes(), size, targetOf(form, form.frame.z));
        code != iffOk) {
        return code;
    }
    form.frame.z.markWritten(place.column, place.row, place.columns, place.rows);
    return iffOk;
}

}  // namespace vistel
