// The size of an OpenEXR file's windows.
#pragma once

#include <cstdint>

namespace vistel {

inline constexpr int64_t longestExrSide = 65535;

struct ExrExtent {
    int64_t width, height;

    // Of a window whose corners both belong to it. They may be anywhere, also the wrong way round.
    ExrExtent(int left, int top, int right, int bottom)
        : width(int64_t{right} - left + 1), height(int64_t{bottom} - top + 1) {}

    bool usable() const {
        return width > 0 && height > 0 && width <= longestExrSide && height <= longestExrSide;
    }
};

}  // namespace vistel
