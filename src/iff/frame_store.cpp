#include "iff/frame_store.h"

#include <algorithm>

#include "iff/plane_pool.h"
#include "platform/memory.h"

namespace vistel {

// Memory is made usable in blocks of this size, that of a large page.
static constexpr size_t usableBlock = size_t{2} << 20;

template <class Pixel>
Plane<Pixel>::~Plane() {
    free();
}

template <class Pixel>
bool Plane<Pixel>::allocate(size_t width, size_t height) {
    free();
    size_t pixels = 0, bytes = 0;
    if (__builtin_mul_overflow(width, height, &pixels)) return false;
    if (__builtin_mul_overflow(pixels, sizeof(Pixel), &bytes)) return false;
    if (bytes == 0 || bytes > size_t{PTRDIFF_MAX}) return false;
    bytes = platform::efficientSize(bytes);
    usable_.assign((bytes - 1) / usableBlock + 1, false);
    const PlaneMemory memory = takePlaneMemory(bytes);
    if (!memory.start) return false;
    pixels_ = static_cast<Pixel*>(memory.start);
    bytes_ = bytes;
    touched_ = memory.touched;
    width_ = width;
    height_ = height;
    if (!touched_) return true;
    usable_.flip();
    usableBytes_ = bytes_;
    settled_.assign(height, 0);
    return true;
}

template <class Pixel>
bool Plane<Pixel>::commitRows(size_t first, size_t last) {
    if (empty() || first > last || last >= height_) return false;
    const size_t rowBytes = width_ * sizeof(Pixel);
    const size_t lastBlock = ((last + 1) * rowBytes - 1) / usableBlock;
    for (size_t block = first * rowBytes / usableBlock; block <= lastBlock; ++block) {
        if (usable_[block]) continue;
        const size_t from = block * usableBlock;
        const size_t bytes = std::min(usableBlock, bytes_ - from);
        if (!platform::commitMemory(reinterpret_cast<uint8_t*>(pixels_) + from, bytes))
            return false;
        usable_[block] = true;
        usableBytes_ += bytes;
    }
    return true;
}

template <class Pixel>
void Plane<Pixel>::zero(size_t y, size_t from, size_t to) {
    if (from < to) std::fill(row(y) + from, row(y) + to, Pixel{});
}

template <class Pixel>
void Plane<Pixel>::markWritten(size_t column, size_t first, size_t columns, size_t rows) {
    if (settled_.empty() || columns == 0) return;
    for (size_t y = first; y < first + rows; ++y) {
        zero(y, settled_[y], column);
        settled_[y] = std::max(settled_[y], static_cast<uint32_t>(column + columns));
    }
}

template <class Pixel>
bool Plane<Pixel>::complete() {
    if (empty() || !commitRows(0, height_ - 1)) return false;
    for (size_t y = 0; y < settled_.size(); ++y) zero(y, settled_[y], width_);
    settled_ = {};
    touched_ = true;
    return true;
}

template <class Pixel>
void Plane<Pixel>::free() {
    givePlaneMemory({pixels_, usableBytes_ == bytes_}, bytes_);
    pixels_ = nullptr;
    width_ = height_ = bytes_ = usableBytes_ = 0;
    usable_.clear();
    settled_ = {};
    touched_ = false;
}

template class Plane<uint32_t>;
template class Plane<float>;

// size / shrink x magnify <= limit holds exactly from this shrink factor on.
static uint64_t smallestShrink(uint32_t size, uint64_t limit, uint64_t magnify) {
    return size / (limit / magnify + 1) + 1;
}

DisplaySize displaySize(uint32_t width, uint32_t height, const DisplayFit& fit) {
    const uint64_t magnify = std::max<uint32_t>(fit.magnify, 1);
    const uint64_t shrink = std::max({uint64_t{std::max<uint32_t>(fit.shrink, 1)},
                                      smallestShrink(width, fit.maxWidth, magnify),
                                      smallestShrink(height, fit.maxHeight, magnify)});
    DisplaySize display;
    display.shrink = static_cast<uint32_t>(std::min<uint64_t>(shrink, UINT32_MAX));
    display.width = std::max<uint32_t>(width / display.shrink, 1);
    display.height = std::max<uint32_t>(height / display.shrink, 1);
    return display;
}

void FrameStore::clear() { *this = FrameStore(); }

}  // namespace vistel
