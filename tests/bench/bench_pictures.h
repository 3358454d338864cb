// The pictures that the benchmarks read: 1920 x 1080 frames made from formulas, the same on every
// machine and in every run.
//
//     flat      large areas of one colour: long runs
//     typical   a lit scene: even sky, smooth shading, grain on half of it; packs to about half
//     raw       noise in every channel: no tile packs, all are stored whole
//     depth     the typical scene with its depth, partly smooth (packed tiles) and partly a cloud
//               of particles (tiles stored whole)
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "iff/tile_format.h"

namespace vistel::bench {

enum class PictureKind { flat, typical, raw, depth };

// "flat", "typical", "raw", "depth".
const char* pictureName(PictureKind kind);

struct Picture {
    uint32_t width = 1920, height = 1080;
    // Four bytes a pixel: red, green, blue, mask, red in the lowest byte. First row of the file
    // first, which is the bottom one on the screen.
    std::vector<uint32_t> colour;
    std::vector<float> z;  // the same size, or empty

    const uint32_t* row(uint32_t y) const { return colour.data() + size_t{y} * width; }
    // Width x 4 bytes, red first.
    const uint8_t* rowBytes(uint32_t y) const { return reinterpret_cast<const uint8_t*>(row(y)); }
    const float* depthRow(uint32_t y) const { return z.data() + size_t{y} * width; }
    // Of one plane.
    size_t bytes() const { return size_t{width} * height * sizeof(uint32_t); }
    ImageHeader header() const;
};

// Frame `number` of a sequence in which things move a little and the grain differs.
Picture makePicture(PictureKind kind, int number = 0);

// Writes a frame file with vistel's own writer: run-length coded where that is smaller. A code of
// result_codes.h.
[[nodiscard]] int writeFrameFile(const Picture& picture, const std::string& path);

// The data of one tile chunk behind its rectangle.
struct PackedTile {
    TileRect rect;
    std::vector<uint8_t> data;
};

// The same tiles in memory, as the writer would cut and pack them.
std::vector<PackedTile> colourTiles(const Picture& picture);
std::vector<PackedTile> depthTiles(const Picture& picture);
size_t packedBytes(const std::vector<PackedTile>& tiles);

}  // namespace vistel::bench
