// FrameStore: the planes of one loaded frame, at display size.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "iff/image_header.h"

namespace vistel {

// A zero-filled block of pixels, bottom row first. Memory is taken from the system as rows are first
// made usable, so a header that promises more than its file holds costs nothing.
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

    // Room for width x height zero pixels; what was there before is freed. False without memory.
    [[nodiscard]] bool allocate(size_t width, size_t height);
    // Makes rows [first, last] usable. False without memory.
    [[nodiscard]] bool commitRows(size_t first, size_t last);
    // Makes every row usable (the display reads all of them). False without memory.
    [[nodiscard]] bool commitAll();
    void free();

    bool empty() const { return pixels_ == nullptr; }
    Pixel* data() { return pixels_; }
    const Pixel* data() const { return pixels_; }
    Pixel* row(size_t y) { return pixels_ + y * width_; }
    const Pixel* row(size_t y) const { return pixels_ + y * width_; }

 private:
    void swap(Plane& other) noexcept {
        std::swap(pixels_, other.pixels_);
        std::swap(width_, other.width_);
        std::swap(height_, other.height_);
        std::swap(usable_, other.usable_);
    }
    Pixel* pixels_ = nullptr;
    size_t width_ = 0, height_ = 0;
    std::vector<bool> usable_;  // for each block of memory
};

extern template class Plane<uint32_t>;
extern template class Plane<float>;
extern template class Plane<uint8_t>;

// Inclusive rectangle in pixels of the full-size image, origin at the first pixel.
struct TileRect {
    uint16_t x1 = 0, y1 = 0, x2 = 0, y2 = 0;
    uint32_t width() const { return uint32_t{x2} - x1 + 1; }
    uint32_t height() const { return uint32_t{y2} - y1 + 1; }
};

// How large a frame is shown.
struct DisplayFit {
    uint32_t shrink = 1;               // rfact, at least 1
    uint32_t magnify = 1;              // zoom factor at start, at least 1
    uint32_t maxWidth = UINT32_MAX;    // screen width; UINT32_MAX: no fitting
    uint32_t maxHeight = UINT32_MAX;   // screen height, less the title's 29 rows unless full screen
};

struct DisplaySize {
    uint32_t shrink = 1, width = 1, height = 1;
};

// The smallest shrink factor from fit.shrink on at which (size / shrink) x magnify fits, and the size
// at it (integer divisions, at least 1).
DisplaySize displaySize(uint32_t width, uint32_t height, const DisplayFit& fit);

struct FrameStore {
    ImageHeader header;        // of the image the planes hold
    int width = 0, height = 0;  // of the planes: display size, pixels
    int shrink = 1;            // image size / display size
    Plane<uint32_t> colour;    // red in the lowest byte, then green, blue, mask
    Plane<float> z;
    Plane<uint8_t> shade;      // relief analysis
    std::vector<TileRect> tiles;  // rectangles of the colour tiles, up to 8192
    std::string imageName;     // text of the "NAME" chunk
    bool zViewBuilt = false;

    bool hasPicture() const { return !colour.empty() || !z.empty(); }
    // Frees the planes and forgets the geometry.
    void clear();
};

}  // namespace vistel
