// A block of display pixels that grows when it is too small and never shrinks, so that showing
// frame after frame allocates nothing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

namespace vistel {

class DisplayBuffer {
 public:
    DisplayBuffer() = default;
    DisplayBuffer(DisplayBuffer&& other) noexcept
        : pixels_(std::exchange(other.pixels_, nullptr)),
          capacity_(std::exchange(other.capacity_, 0)) {}
    DisplayBuffer& operator=(DisplayBuffer&& other) noexcept {
        std::swap(pixels_, other.pixels_);
        std::swap(capacity_, other.capacity_);
        return *this;
    }
    ~DisplayBuffer();

    // Room for `pixels` pixels. What was there is kept, new pixels are zero. False, with nothing
    // changed, when there is no memory.
    [[nodiscard]] bool grow(size_t pixels);

    uint32_t* pixels() { return pixels_; }
    const uint32_t* pixels() const { return pixels_; }
    size_t capacity() const { return capacity_; }

 private:
    uint32_t* pixels_ = nullptr;
    size_t capacity_ = 0;  // pixels
};

}  // namespace vistel
