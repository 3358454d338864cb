#include "viewer/picture/draw_pass.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include "analysis/relief.h"
#include "platform/surface.h"
#include "platform/text.h"
#include "viewer/picture/display_setup.h"
#include "viewer/picture/picture_view.h"
#include "viewer/picture/point_mark.h"
#include "viewer/picture/status_line.h"
#include "viewer/window/drawing.h"
#include "viewer/window/window_context.h"
#include "viewer/window/window_geometry.h"

namespace vistel {

namespace {

void drawMargins(PictureLayout& layout) {
    if (!layout.marginX && !layout.marginY) return;
    const WindowContext& context = windowContext();
    if (!context.doubleBuffer && !layout.clearWanted && !context.front.overlaid) return;
    setColourPacked(bandColour);
    clearDrawing();
    layout.clearWanted = false;
}

// Up to where the last column (or row) shows, be it in part.
float clampedPan(float pan, int size, int visible, int zoom) {
    const int shown = (visible + zoom - 1) / zoom;
    return std::max(0.0f, std::min(pan, float(size - shown)));
}

// The columns (or rows) that show in the window, one more on either side.
struct Shown {
    int first, last;
};
Shown shownPart(float pan, int size, int visible, int zoom) {
    const int first = static_cast<int>(pan);
    return {std::max(first - 1, 0), std::min(first + visible / zoom + 2, size - 1)};
}

// The heights under a relief as a line over every eighth row, where it shows.
void drawProfiles(ShownPicture& picture, const uint32_t* heights) {
    const PictureLayout& layout = picture.layout;
    if (!picture.bumpSource) return;
    const std::optional<uint32_t> colour = profileColour(*picture.bumpSource);
    if (!colour) return;
    platform::setColour(windowContext().window, static_cast<uint8_t>(*colour),
                        static_cast<uint8_t>(*colour >> 8), static_cast<uint8_t>(*colour >> 16),
                        255);
    const auto width = static_cast<size_t>(layout.width);
    std::vector<ProfilePoint>& points = picture.views.profile;
    points.resize(width);
    const auto window = [&](float pixel, int margin, float pan) {
        return margin +
               static_cast<int>(std::floor((pixel - std::floor(pan)) * float(layout.zoom)));
    };
    const auto penAt = [&](const ProfilePoint& point, void (*go)(int, int)) {
        go(window(point.x, layout.marginX, layout.panX),
           window(point.y, layout.marginY, layout.panY));
    };
    const Shown columns = shownPart(layout.panX, layout.width, layout.visibleWidth, layout.zoom);
    const Shown rows = shownPart(layout.panY, layout.height, layout.visibleHeight, layout.zoom);
    const int step = static_cast<int>(profileRowStep);
    // A line rises above its row by up to its full height.
    const int firstRow = std::max(rows.first - profileHeight, 0) / step * step;
    for (int row = firstRow; row <= rows.last; row += step) {
        const auto y = static_cast<size_t>(row);
        profileOfRow(heights + y * width, width, y, points.data());
        penAt(points[static_cast<size_t>(columns.first)], penMove);
        for (int column = columns.first; column <= columns.last; ++column)
            penAt(points[static_cast<size_t>(column)], penDraw);
    }
}

void drawPicture(ShownPicture& picture, int width, int height) {
    PictureLayout& layout = picture.layout;
    layout.panX = clampedPan(layout.panX, layout.width, layout.visibleWidth, layout.zoom);
    layout.panY = clampedPan(layout.panY, layout.height, layout.visibleHeight, layout.zoom);
    const int column = static_cast<int>(layout.panX), row = static_cast<int>(layout.panY);
    const auto needed = [&](int visible) { return (visible + layout.zoom - 1) / layout.zoom; };
    const platform::PixelSource source{displayedPixels(picture),
                                       layout.width,
                                       column,
                                       row,
                                       std::min(layout.width - column, needed(layout.visibleWidth)),
                                       std::min(layout.height - row, needed(layout.visibleHeight))};
    platform::setScissor(windowContext().window, layout.marginX, layout.marginY,
                         layout.visibleWidth, layout.visibleHeight);
    if (source.pixels) {
        platform::drawPixels(windowContext().window, layout.marginX, layout.marginY, source,
                             layout.zoom);
    } else {  // without memory for the view
        setColourPacked(bandColour);
        clearDrawing();
    }
    if (const uint32_t* heights = reliefHeights(picture)) drawProfiles(picture, heights);
    platform::setScissor(windowContext().window, 0, 0, width, height);
}

// Rows of the window, from the foot.
struct Rows {
    int first, last;
};

// Red text in the middle of the window, its baseline at row y. The band behind it is as wide as the
// window in a margin; over the picture it has as many columns as the text needs to be read on any
// colour.
void drawBandWithText(const ShownPicture& picture, std::string_view text, int width, Rows rows,
                      int y) {
    const int space = platform::scaledForText(4);  // on either side of the text
    const int textColumns = textWidth(text), left = (width - textColumns) / 2;
    const bool whole = picture.layout.marginY != 0;
    setColourPacked(bandColour);
    fillRectangle(whole ? 0 : left - space, rows.first,
                  whole ? width - 1 : left + textColumns + space - 1, rows.last);
    setColourIndex(1);
    drawText(left, y, text);
}

void drawLabel(const ShownPicture& picture, int width, int height) {
    const std::string_view label = channelLabel(picture);
    if (label.empty()) return;
    const bool bar = windowContext().controlBarShown;
    const auto scaled = platform::scaledForText;
    if (picture.animation)
        return drawBandWithText(picture, label, width, {0, scaled(16) - 1}, scaled(5));
    drawBandWithText(picture, label, width, {height - scaled(bar ? 42 : 17), height - 1},
                     height - scaled(bar ? 40 : 15));
}

void drawStatusLine(const ShownPicture& picture, int width, int height) {
    if (!picture.animation) return;
    const bool bar = windowContext().controlBarShown;
    const auto scaled = platform::scaledForText;
    drawBandWithText(picture, statusLine(picture.status), width,
                     {height - scaled(bar ? 39 : 17), height - 1}, height - scaled(bar ? 37 : 15));
}

}  // namespace

void drawPass(ShownPicture& picture) {
    if (!picture.shown || !platform::surfaceExists(windowContext().window)) return;
    int width, height;
    clientSize(width, height);
    platform::setScissorTest(windowContext().window, true);
    platform::setScissor(windowContext().window, 0, 0, width, height);
    measureVisibleArea(picture.layout);
    drawMargins(picture.layout);
    drawPicture(picture, width, height);
    drawTrackingMark(picture);
    // Their places count from the upper edge of the whole client area; what lies under the control
    // bar does not show.
    const int wholeHeight = height + controlBarRows();
    drawLabel(picture, width, wholeHeight);
    drawStatusLine(picture, width, wholeHeight);
}

}  // namespace vistel
