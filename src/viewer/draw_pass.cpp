#include "viewer/draw_pass.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <vector>

#include "analysis/relief.h"
#include "app/viewer_state.h"
#include "platform/surface.h"
#include "viewer/display_setup.h"
#include "viewer/drawing.h"
#include "viewer/picture_view.h"
#include "viewer/status_line.h"
#include "viewer/viewer_session.h"
#include "viewer/window_layer.h"

namespace vistel {

namespace {

constexpr uint32_t bandColour = 0xFF202020;  // packed; dark grey

void drawMargins() {
    PictureLayout& layout = viewerSession().layout;
    if (!layout.marginX && !layout.marginY) return;
    const WindowContext& context = windowContext();
    if (!context.doubleBuffer && !layout.clearWanted && !context.overlaid) return;
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
void drawProfiles(const uint32_t* heights) {
    const ViewerSession& session = viewerSession();
    const PictureLayout& layout = session.layout;
    const std::optional<uint32_t> colour = profileColour(session.bumpSource);
    if (!colour) return;
    platform::setColour(windowContext().window, static_cast<uint8_t>(*colour),
                        static_cast<uint8_t>(*colour >> 8), static_cast<uint8_t>(*colour >> 16),
                        255);
    const auto width = static_cast<size_t>(layout.width);
    static std::vector<ProfilePoint> points;  // kept: nothing is allocated while playing
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

void drawPicture(int width, int height) {
    PictureLayout& layout = viewerSession().layout;
    layout.panX = clampedPan(layout.panX, layout.width, layout.visibleWidth, layout.zoom);
    layout.panY = clampedPan(layout.panY, layout.height, layout.visibleHeight, layout.zoom);
    const int column = static_cast<int>(layout.panX), row = static_cast<int>(layout.panY);
    const auto needed = [&](int visible) { return (visible + layout.zoom - 1) / layout.zoom; };
    const platform::PixelSource source{displayedPixels(),
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
    if (const uint32_t* heights = reliefHeights()) drawProfiles(heights);
    platform::setScissor(windowContext().window, 0, 0, width, height);
}

void drawCentred(std::string_view text, int width, int y) {
    setColourIndex(1);
    drawText((width - textWidth(text)) / 2, y, text);
}

void drawBand(int width, int firstRow, int lastRow) {
    setColourPacked(bandColour);
    fillRectangle(0, firstRow, width - 1, lastRow);
}

void drawLabel(int width, int height) {
    const std::string_view label = channelLabel();
    if (label.empty() || !viewerSession().layout.marginY) return;
    if (viewerState.animation) {
        drawBand(width, 0, 15);
        return drawCentred(label, width, 5);
    }
    drawBand(width, height - 17, height - 1);
    drawCentred(label, width, height - (viewerState.controlBarShown ? 40 : 15));
}

void drawStatusLine(int width, int height) {
    if (!viewerState.animation) return;
    if (viewerSession().layout.marginY) {
        drawBand(width, height - (viewerState.controlBarShown ? 39 : 17), height - 1);
    }
    drawCentred(statusLine(viewerSession().statusFrame), width,
                height - (viewerState.controlBarShown ? 37 : 15));
}

}  // namespace

void drawPass() {
    if (!viewerSession().shown || !platform::surfaceExists(windowContext().window)) return;
    int width, height;
    clientSize(width, height);
    platform::setScissorTest(windowContext().window, true);
    platform::setScissor(windowContext().window, 0, 0, width, height);
    measureVisibleArea();
    drawMargins();
    drawPicture(width, height);
    drawLabel(width, height);
    drawStatusLine(width, height);
}

}  // namespace vistel
