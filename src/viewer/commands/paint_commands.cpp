#include "viewer/commands/paint_commands.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "analysis/plane_views.h"
#include "viewer/picture/picture_view.h"
#include "viewer/window/window_context.h"

namespace vistel {

namespace {

struct ImagePoint {
    int column = 0, row = 0;
};

// The image pixel under the cursor, or the nearest one. The cursor's row counts from 1 at the foot.
ImagePoint pointUnderCursor(const Picture& picture) {
    const PictureLayout& layout = picture.layout;
    const Cursor& cursor = windowContext().cursor;
    const FrameStore& frame = *picture.shown;  // may be smaller than the one that was drawn
    const auto along = [&](int place, int margin, float pan, int size) {
        const int offset = static_cast<int>(std::floor(float(place - margin) / float(layout.zoom)));
        return std::clamp(static_cast<int>(pan) + offset, 0, size - 1);
    };
    return {along(cursor.x, layout.marginX, layout.panX, frame.width),
            along(cursor.y - 1, layout.marginY, layout.panY, frame.height)};
}

// The pixel painted last, or the nearest one of the frame that is shown now.
ImagePoint lastPoint(const Painting& painting, const FrameStore& frame) {
    return {std::min(painting.column, frame.width - 1), std::min(painting.row, frame.height - 1)};
}

// The bits of a stored pixel that are painted, and what they become.
struct Paint {
    uint32_t bits = 0, colour = 0;
};

constexpr uint32_t redBits = 0xFF, greenBits = 0xFF00, blueBits = 0xFF0000, maskBits = 0xFF000000;

// By channel: 0 mask, 1 blue, 2 green, 3 red.
constexpr uint32_t channelBits[] = {maskBits, blueBits, greenBits, redBits};
constexpr uint32_t allColours = redBits | greenBits | blueBits;

// In the view of a plane that plane is filled, with Control cleared. Else the control channel is
// filled, or cleared under its full complement.
Paint choosePaint(const Picture& picture, const Press& press) {
    if (isSinglePlane(picture.mode)) {
        const uint32_t plane = channelBits[planeOf(picture.mode)];
        return {plane, press.modifiers.control() ? 0 : plane};
    }
    if (picture.controlChannel == 0) return {allColours, allColours};
    const uint32_t channel = channelBits[picture.controlChannel];
    if (picture.controlComplement) return {allColours, allColours & ~channel};
    return {channel, channel};
}

// In the depth view the depth is painted, too: as near as the nearest sample, which is shown white,
// or with Control as far as the farthest. Where no sample is finite it is painted 0.
class Brush {
 public:
    Brush(const Picture& picture, const Press& press)
        : frame_(*picture.shown), paint_(choosePaint(picture, press)) {
        depth_ = picture.mode == ChannelMode::zBuffer;
        if (!depth_) return;
        const DepthRange range =
            finiteRange(frame_.z.data(), size_t(frame_.width) * size_t(frame_.height));
        sample_ = press.modifiers.control() ? range.farthest : range.nearest;
    }

    void dot(const ImagePoint& point) {
        const auto column = static_cast<size_t>(point.column), row = static_cast<size_t>(point.row);
        if (depth_) frame_.z.row(row)[column] = sample_;
        if (frame_.colour.empty()) return;
        uint32_t& pixel = frame_.colour.row(row)[column];
        pixel = (pixel & ~paint_.bits) | paint_.colour;
    }

    void line(const ImagePoint& from, const ImagePoint& to) {
        const int64_t across = to.column - from.column, up = to.row - from.row;
        const int64_t steps = std::max<int64_t>({std::abs(across), std::abs(up), 1});
        for (int64_t i = 0; i <= steps; ++i)
            dot({static_cast<int>(from.column + across * i / steps),
                 static_cast<int>(from.row + up * i / steps)});
    }

 private:
    FrameStore& frame_;
    Paint paint_;
    bool depth_ = false;
    float sample_ = 0;
};

}  // namespace

bool beginPainting(Viewer& viewer, const Press& press, int) {
    if (!viewer.shown) return false;
    const ImagePoint point = pointUnderCursor(viewer);
    viewer.painting.active = true;
    viewer.painting.column = point.column;
    viewer.painting.row = point.row;
    return paint(viewer, press);
}

bool endPainting(Viewer& viewer, const Press&, int) {
    viewer.painting.active = false;
    return false;
}

bool paint(Viewer& viewer, const Press& press) {
    Painting& painting = viewer.painting;
    const ImagePoint point = pointUnderCursor(viewer);
    Brush brush(viewer, press);
    if (painting.lines)
        brush.line(lastPoint(painting, *viewer.shown), point);
    else
        brush.dot(point);
    painting.column = point.column;
    painting.row = point.row;
    viewChanged(viewer);
    return true;
}

}  // namespace vistel
