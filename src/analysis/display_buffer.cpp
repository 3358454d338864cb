#include "analysis/display_buffer.h"

#include <cstring>
#include <limits>

#include "platform/memory.h"

namespace vistel {

static void release(uint32_t* pixels, size_t count) {
    if (pixels) platform::releaseMemory(pixels, count * sizeof(uint32_t));
}

DisplayBuffer::~DisplayBuffer() { release(pixels_, capacity_); }

bool DisplayBuffer::grow(size_t pixels) {
    if (pixels <= capacity_) return true;
    // Reservations are rounded up to pages: the size itself must leave room for that.
    if (pixels > std::numeric_limits<size_t>::max() / 8) return false;
    const size_t bytes = pixels * sizeof(uint32_t);
    auto* larger = static_cast<uint32_t*>(platform::reserveMemory(bytes));
    if (!larger) return false;
    if (!platform::commitMemory(larger, bytes)) {
        release(larger, pixels);
        return false;
    }
    if (capacity_ > 0) std::memcpy(larger, pixels_, capacity_ * sizeof(uint32_t));
    release(pixels_, capacity_);
    pixels_ = larger;
    capacity_ = pixels;
    return true;
}

}  // namespace vistel
