// FrameStore: the planes of one loaded frame, at display size.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "iff/image_header.h"

namespace vistel {

// A block of pixels, bottom row first, all zero until they are written. Memory is taken from the
// system as rows are first made usable, so a header that promises more than its file holds costs
// nothing. Memory of an earlier plane of the same size is used again: it holds old pixels, and the
// plane keeps track of what must still become zero.
template <class Pixel>
class Plane {
 public:
    Plane() = default;
    Plane(Plane&& other) noexcept { swap(other); }
    Plane& operator=(Plane&& other) noexcept {
        swap(other);
        return *this;
    }
    ~Plane();

    // Room for width x height pixels; what was there before is freed. False without memory.
    [[nodiscard]] bool allocate(size_t width, size_t height);
    // Makes rows [first, last] usable for writing. False without memory.
    [[nodiscard]] bool commitRows(size_t first, size_t last);
    // To be told after each write: the pixels of a rectangle inside the plane now hold a picture.
    void markWritten(size_t column, size_t row, size_t columns, size_t rows);
    // Makes every row usable and all that was not written zero. Whoever reads the plane needs it.
    // False without memory.
    [[nodiscard]] bool complete();
    void free();

    bool empty() const { return pixels_ == nullptr; }
    size_t memoryBytes() const { return bytes_; }
    size_t usableBytes() const { return usableBytes_; }  // that commitRows has made so
    // Whether writing meets memory that was used before.
    bool touched() const { return touched_; }
    Pixel* data() { return pixels_; }
    const Pixel* data() const { return pixels_; }
    Pixel* row(size_t y) { return pixels_ + y * width_; }
    const Pixel* row(size_t y) const { return pixels_ + y * width_; }

 private:
    void swap(Plane& other) noexcept {
        std::swap(pixels_, other.pixels_);
        std::swap(width_, other.width_);
        std::swap(height_, other.height_);
        std::swap(bytes_, other.bytes_);
        std::swap(usable_, other.usable_);
        std::swap(usableBytes_, other.usableBytes_);
        std::swap(touched_, other.touched_);
        std::swap(settled_, other.settled_);
    }
    void zero(size_t row, size_t from, size_t to);

    Pixel* pixels_ = nullptr;
    size_t width_ = 0, height_ = 0;
    size_t bytes_ = 0;          // of the memory
    std::vector<bool> usable_;  // for each block of memory
    size_t usableBytes_ = 0;
    bool touched_ = false;  // the memory was used before
    // Of touched memory, for each row: the pixels left of this column are written or zero.
    std::vector<uint32_t> settled_;
};

extern template class Plane<uint32_t>;
extern template class Plane<float>;

// Inclusive rectangle in pixels of the full-size image, origin at the first pixel.
struct TileRect {
    uint16_t x1 = 0, y1 = 0, x2 = 0, y2 = 0;
    uint32_t width() const { return uint32_t{x2} - x1 + 1; }
    uint32_t height() const { return uint32_t{y2} - y1 + 1; }
};

// How large a frame is shown.
struct DisplayFit {
    uint32_t shrink = 1;              // rfact, at least 1
    uint32_t magnify = 1;             // zoom factor at start, at least 1
    uint32_t maxWidth = UINT32_MAX;   // screen width; UINT32_MAX: no fitting
    uint32_t maxHeight = UINT32_MAX;  // screen height, less the title's 29 rows unless full screen

    bool operator==(const DisplayFit&) const = default;
};

struct DisplaySize {
    uint32_t shrink = 1, width = 1, height = 1;
};

// The smallest shrink factor from fit.shrink on at which (size / shrink) x magnify fits, and the
// size at it (integer divisions, at least 1).
DisplaySize displaySize(uint32_t width, uint32_t height, const DisplayFit& fit);

// A line that was painted, from pixel to pixel of the planes that it was painted into.
struct Stroke {
    int fromColumn = 0, fromRow = 0, toColumn = 0, toRow = 0;
    uint32_t bits = 0, colour = 0;  // bits of a stored pixel that are painted, what they become
    std::optional<float> depth;     // painted into the depth plane
};

struct FrameStore {
    ImageHeader header;         // of the image the planes hold
    int width = 0, height = 0;  // of the planes: display size, pixels
    int shrink = 1;             // image size / display size
    Plane<uint32_t> colour;     // red in the lowest byte, then green, blue, mask
    Plane<float> z;
    std::vector<TileRect> tiles;  // rectangles of the colour tiles, up to 8192
    std::string imageName;        // text of the "NAME" chunk
    std::vector<Stroke> strokes;  // painted since the frame was read

    bool hasPicture() const { return !colour.empty() || !z.empty(); }
    // Of the planes.
    size_t memoryBytes() const { return colour.memoryBytes() + z.memoryBytes(); }
    // Frees the planes and forgets the geometry.
    void clear();
};

}  // namespace vistel
