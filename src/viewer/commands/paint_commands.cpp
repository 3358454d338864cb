#include "viewer/commands/paint_commands.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "analysis/plane_views.h"
#include "analysis/strokes.h"
#include "viewer/picture/image_point.h"
#include "viewer/picture/picture_view.h"

namespace vistel {

namespace {

struct ImagePixel {
    int column = 0, row = 0;
};

// The image pixel under the cursor, or the nearest one.
ImagePixel pixelUnderCursor(const ShownPicture& picture) {
    const ImagePoint point = pointUnderCursor(picture.layout);
    const FrameStore& frame = *picture.shown;  // may be smaller than the one that was drawn
    const auto along = [](double place, int size) {
        return std::clamp(static_cast<int>(std::floor(place)), 0, size - 1);
    };
    return {along(point.x, frame.width), along(point.y, frame.height)};
}

// The pixel painted last, or the nearest one of the frame that is shown now.
ImagePixel lastPixel(const Painting& painting, const FrameStore& frame) {
    return {std::min(painting.column, frame.width - 1), std::min(painting.row, frame.height - 1)};
}

constexpr uint32_t redBits = 0xFF, greenBits = 0xFF00, blueBits = 0xFF0000, maskBits = 0xFF000000;

// By channel: 0 mask, 1 blue, 2 green, 3 red.
constexpr uint32_t channelBits[] = {maskBits, blueBits, greenBits, redBits};
constexpr uint32_t allColours = redBits | greenBits | blueBits;

// In the view of a plane that plane is filled, with Control cleared. Else the control channel is
// filled, or cleared under its full complement.
void choosePaint(const ShownPicture& picture, const Press& press, Stroke& stroke) {
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
std::optional<float> chooseDepth(const ShownPicture& picture, const Press& press) {
    if (picture.mode != ChannelMode::zBuffer) return std::nullopt;
    const FrameStore& frame = *picture.shown;
    const DepthRange range =
        finiteRange(frame.z.data(), size_t(frame.width) * size_t(frame.height));
    return press.modifiers.control() ? range.farthest : range.nearest;
}

}  // namespace

bool beginPainting(Viewer& viewer, const Press& press, int) {
    if (!viewer.shown) return false;
    const ImagePixel pixel = pixelUnderCursor(viewer);
    viewer.painting.active = true;
    viewer.painting.column = pixel.column;
    viewer.painting.row = pixel.row;
    return paint(viewer, press);
}

bool endPainting(Viewer& viewer, const Press&, int) {
    viewer.painting.active = false;
    return false;
}

bool paint(Viewer& viewer, const Press& press) {
    Painting& painting = viewer.painting;
    const ImagePixel pixel = pixelUnderCursor(viewer);
    FrameStore& frame = *viewer.shown;
    const ImagePixel from = painting.lines ? lastPixel(painting, frame) : pixel;
    Stroke stroke;
    stroke.fromColumn = from.column;
    stroke.fromRow = from.row;
    stroke.toColumn = pixel.column;
    stroke.toRow = pixel.row;
    choosePaint(viewer, press, stroke);
    stroke.depth = chooseDepth(viewer, press);
    paintStroke(stroke, frame, 1);
    frame.strokes.push_back(stroke);
    painting.column = pixel.column;
    painting.row = pixel.row;
    viewChanged(viewer);
    return true;
}

}  // namespace vistel
