#include "viewer/commands/paint_commands.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "analysis/plane_views.h"
#include "analysis/strokes.h"
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

constexpr uint32_t redBits = 0xFF, greenBits = 0xFF00, blueBits = 0xFF0000, maskBits = 0xFF000000;

// By channel: 0 mask, 1 blue, 2 green, 3 red.
constexpr uint32_t channelBits[] = {maskBits, blueBits, greenBits, redBits};
constexpr uint32_t allColours = redBits | greenBits | blueBits;

// In the view of a plane that plane is filled, with Control cleared. Else the control channel is
// filled, or cleared under its full complement.
void choosePaint(const Picture& picture, const Press& press, Stroke& stroke) {
    const auto paint = [&](uint32_t bits, uint32_t colour) {
        stroke.bits = bits;
        stroke.colour = colour;
    };
    if (isSinglePlane(picture.mode)) {
        const uint32_t plane = channelBits[planeOf(picture.mode)];
        return paint(plane, press.modifiers.control() ? 0 : plane);
    }
    if (picture.controlChannel == 0) return paint(allColours, allColours);
    const uint32_t channel = channelBits[picture.controlChannel];
    if (picture.controlComplement) return paint(allColours, allColours & ~channel);
    paint(channel, channel);
}

// In the depth view the depth is painted, too: as near as the nearest sample, which is shown white,
// or with Control as far as the farthest. Where no sample is finite it is painted 0.
std::optional<float> chooseDepth(const Picture& picture, const Press& press) {
    if (picture.mode != ChannelMode::zBuffer) return std::nullopt;
    const FrameStore& frame = *picture.shown;
    const DepthRange range =
        finiteRange(frame.z.data(), size_t(frame.width) * size_t(frame.height));
    return press.modifiers.control() ? range.farthest : range.nearest;
}

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
    FrameStore& frame = *viewer.shown;
    const ImagePoint from = painting.lines ? lastPoint(painting, frame) : point;
    Stroke stroke;
    stroke.fromColumn = from.column;
    stroke.fromRow = from.row;
    stroke.toColumn = point.column;
    stroke.toRow = point.row;
    choosePaint(viewer, press, stroke);
    stroke.depth = chooseDepth(viewer, press);
    paintStroke(stroke, frame, 1);
    frame.strokes.push_back(stroke);
    painting.column = point.column;
    painting.row = point.row;
    viewChanged(viewer);
    return true;
}

}  // namespace vistel
