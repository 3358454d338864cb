#include "analysis/strokes.h"

#include <algorithm>
#include <cstdlib>

namespace vistel {

// One pixel of the stroke; what would lie outside the frame is left out.
static void paintBlock(const Stroke& stroke, FrameStore& frame, int column, int row, int scale) {
    const int right = std::min((column + 1) * scale, frame.width);
    const int top = std::min((row + 1) * scale, frame.height);
    for (int y = row * scale; y < top; ++y) {
        for (int x = column * scale; x < right; ++x) {
            const auto along = static_cast<size_t>(x), up = static_cast<size_t>(y);
            if (stroke.depth && !frame.z.empty()) frame.z.row(up)[along] = *stroke.depth;
            if (frame.colour.empty()) continue;
            uint32_t& pixel = frame.colour.row(up)[along];
            pixel = (pixel & ~stroke.bits) | stroke.colour;
        }
    }
}

void paintStroke(const Stroke& stroke, FrameStore& frame, int scale) {
    const int64_t across = stroke.toColumn - stroke.fromColumn, up = stroke.toRow - stroke.fromRow;
    const int64_t steps = std::max<int64_t>({std::abs(across), std::abs(up), 1});
    for (int64_t i = 0; i <= steps; ++i)
        paintBlock(stroke, frame, static_cast<int>(stroke.fromColumn + across * i / steps),
                   static_cast<int>(stroke.fromRow + up * i / steps), scale);
}

}  // namespace vistel
