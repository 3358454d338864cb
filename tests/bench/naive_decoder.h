// The plainest decoder of four-channel tiles there can be: what the fast one is measured against.
// A byte at a time into a tile of its own, rows copied into the plane, and when the frame is
// complete one more pass over it that exchanges bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "iff/frame_store.h"

namespace vistel::bench {

class NaiveDecoder {
 public:
    // Unpacks a run-length coded tile, or takes one that is stored whole as it is, and copies its
    // rows to their place.
    void placeTile(const TileRect& rect, const std::vector<uint8_t>& data, uint32_t* plane,
                   size_t rowPixels);
    // The last pass over the frame: blue, green, red, mask becomes red, green, blue, mask.
    static void exchange(uint32_t* plane, size_t pixels);

 private:
    void unpack(size_t width, size_t height, const std::vector<uint8_t>& data);

    std::vector<uint8_t> tile_;
};

}  // namespace vistel::bench
