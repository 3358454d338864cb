// Decodes the data of one tile straight into a plane of the frame store: unpack each channel into a
// small planar scratch, then one pass writes finished pixels (byte order, grey copy, opaque mask,
// high byte of 16-bit channels, shrinking by nearest sample).
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include "iff/tile_format.h"
#include "iff/tile_kernels.h"

namespace vistel {

// The first pixel of a plane and how the image is shrunk into it.
struct TileTarget {
    uint32_t* pixels = nullptr;
    size_t rowPixels = 0;
    uint32_t shrink = 1;
    // The memory of the plane was written before: stores may bypass the cache. Memory that the
    // system has yet to supply is cleared through the cache, where ordinary stores find it.
    bool touched = false;
    uint32_t* row(size_t y) const { return pixels + y * rowPixels; }
};

// The part of a plane that a tile covers: every shrink-th row and pixel of the tile, from its
// first.
struct TilePlacement {
    uint32_t column = 0, row = 0;    // of the first plane pixel
    uint32_t columns = 0, rows = 0;  // plane pixels; either may be 0
};
TilePlacement placeTile(const TileRect& rect, uint32_t shrink);

// Whether a rectangle lies within the image: iffOk or iffBadTiling.
[[nodiscard]] int checkTileRect(const TileRect& rect, const ImageHeader& header);

// Whether `size` bytes can be a tile's data, before any of them is read: iffCompression for more
// than the tile stored whole takes, and, where a whole tile is very large, for so few that no
// packing could have made them from it. A smaller tile may be short or empty.
[[nodiscard]] int checkTileDataSize(const TileFormat& format, const TileRect& rect, uint64_t size);

class TileDecoder {
 public:
    TileDecoder() : TileDecoder(tileKernels()) {}
    explicit TileDecoder(const TileKernels& kernels) : kernels_(kernels) {}
    ~TileDecoder() { settle(); }
    TileDecoder(const TileDecoder&) = delete;
    TileDecoder& operator=(const TileDecoder&) = delete;

    // Decodes `size` bytes (accepted by checkTileDataSize) into the target, whose rows must be
    // usable. As many bytes as the tile stored whole: stored whole. Fewer: packed as the format
    // says; a packet that runs past its channel ends decoding, and values that are missing are
    // zero. Only iffNoMemory can go wrong.
    [[nodiscard]] int decodeColour(const TileFormat& format, const TileRect& rect,
                                   const uint8_t* data, size_t size, const TileTarget& target);
    // The same for depth; the target's pixels are the floats' bits.
    [[nodiscard]] int decodeDepth(const TileRect& rect, const uint8_t* data, size_t size,
                                  const TileTarget& target);

    // To be called before another thread is given what was decoded: stores that bypass the cache
    // are not ordered with those by which threads tell each other that something is ready. (Waiting
    // for them after each tile would cost a tenth of the time.) The destructor does it too.
    void settle();

    // A table of 256 bytes through which the run-length coded values of a colour channel are looked
    // up before they are stored; null for none. Not copied. No file that the viewer reads asks for
    // one.
    void setValueTable(FileChannel channel, const uint8_t* table) { tables_[channel] = table; }

 private:
    struct Freer {
        void operator()(void* block) const { std::free(block); }
    };
    struct Tile;
    struct PlanarRows;

    [[nodiscard]] int decode(Tile& tile);
    void storeWhole(const Tile& tile, const uint8_t* data) const;
    void decodeRuns(Tile& tile);
    void decodePixels(Tile& tile);
    [[nodiscard]] bool unpackPlane(Tile& tile, int index);
    void unpackLastPlane(Tile& tile, int index);
    void applyTable(const Tile& tile, int index, uint8_t* values, size_t count) const;
    void clearFrom(const Tile& tile, uint8_t* values);
    PlanarRows planarRows(const Tile& tile);
    void storeRows(const Tile& tile, const PlanarRows& source, size_t first, size_t end) const;
    void storePlanar(const Tile& tile);
    [[nodiscard]] bool growScratch(uint64_t bytes);
    // A scratch plane; behind each lies the room that the kernels may write into.
    uint8_t* plane(size_t index, size_t pixels) const {
        return scratch_.get() + index * planeRoom(pixels);
    }
    static size_t planeRoom(size_t pixels);

    const TileKernels& kernels_;
    std::unique_ptr<uint8_t, Freer> scratch_;
    size_t capacity_ = 0;
    bool unsettled_ = false;
    const uint8_t* tables_[4] = {};
};

}  // namespace vistel
