#include "viewer/picture/display_setup.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "host/messages.h"
#include "platform/surface.h"
#include "platform/window.h"
#include "viewer/picture/picture_view.h"
#include "viewer/picture/title.h"
#include "viewer/window/drawing.h"
#include "viewer/window/window_context.h"
#include "viewer/window/window_geometry.h"
#include "viewer/window/window_layer.h"

namespace vistel {

namespace {

constexpr int smallestMargin = 20;         // of an animation, all round
constexpr int leastAnimationHeight = 240;  // window pixels
constexpr int leastImageHeight = 144;
constexpr int halfHeightLines =
    491;  // lines of the picture area in half-height mode, whatever the screen
constexpr int workAreaReserve = 120;  // a full-resolution window leaves this much of the work area
constexpr int captionAndMenuRows = 50;  // kept on the screen when full screen is left
constexpr int sequenceTimerRate = 10;   // ticks per second, at which the end of a file is noticed
constexpr int titleRows = 29;           // of the screen, taken by the window's title

int screenMargin(int screen, int picture) { return std::max(0, (screen - picture) / 2); }

int smallestWindowMargin(const Picture& picture) {
    return picture.animation && !picture.noWinBorder ? smallestMargin : 0;
}

int windowMargin(int least, int picture) { return picture < least ? least / 2 - picture / 2 : 0; }

// The visible part of a zoomed picture side: in full resolution it may be larger than the screen.
int fittedSide(const ShowOptions& options, int side, int screenSide, int workSide) {
    if (options.fullScreen) return std::min(side, screenSide);
    return options.noRescale ? std::min(side, std::max(1, workSide - workAreaReserve)) : side;
}

// The window around picture and margins: centred on the work area at first, later where it is.
void placeAround(const Picture& picture) {
    const PictureLayout& layout = picture.layout;
    const int width = layout.visibleWidth + 2 * layout.marginX;
    const int height = layout.visibleHeight + 2 * layout.marginY;
    if (picture.fullScreen) {
        const platform::ScreenSize screen = platform::screenSize();
        clearPreferredPosition();
        windowContext().coversScreen = true;
        return setPreferredPosition(0, screen.width, 0, screen.height);
    }
    const platform::PixelRect work = platform::workArea();
    int left = work.left + std::max(0, (work.width() - width) / 2);
    int top = work.top + std::max(0, (work.height() - height) / 2);
    if (windowContext().coversScreen) top = std::max(top, work.top + captionAndMenuRows);
    if (platform::windowExists(windowContext().window) && !windowContext().coversScreen) {
        platform::clientScreenPosition(windowContext().window, left, top);
    }
    windowContext().coversScreen = false;
    setPreferredPosition(left, left + width, top, top + height);
    if (picture.noWinBorder) clearPreferredPosition();
}

// The program is nothing without its window.
[[noreturn]] void leave() {
    if (windowContext().calls.refused) windowContext().calls.refused();
    std::exit(1);
}

void fitWindow(Picture& picture, const FrameStore& frame) {
    const platform::PixelRect before = clientOnScreen();
    layOutPicture(picture, frame.width, frame.height);
    placeAround(picture);
    if (picture.windowId < 1) openWindowOrExit(picture, windowTitle(picture));
    applyPendingPlacement();
    if (clientOnScreen() != before) windowContext().cursor.known = false;
    if (!platform::surfaceExists(windowContext().window) && !createDrawing()) leave();
}

}  // namespace

DisplayFit currentDisplayFit(const Picture& picture) {
    DisplayFit fit;
    fit.shrink = std::max(1, picture.rfact);
    fit.magnify = std::max(1, picture.magnify);
    const platform::ScreenSize screen = platform::screenSize();
    if (picture.noRescale || screen.width < 1) return fit;
    fit.maxWidth = screen.width;
    fit.maxHeight = std::max(1, screen.height - (picture.fullScreen ? 0 : titleRows));
    return fit;
}

void openWindowOrExit(Picture& picture, const std::string& title) {
    if (!openViewerWindow(title)) {
        printError(messageText(Message::rVTNoWindow));
        leave();
    }
    picture.windowId = 1;
    setDoubleBuffer(screenMetric(3) == 24);
    if (!createDrawing()) leave();
    if (picture.sequenceMode) setTimerRate(sequenceTimerRate);
}

namespace {

// Margins and visible size of the picture at the zoom.
void computeMargins(Picture& picture, int width, int height, int zoom) {
    PictureLayout& layout = picture.layout;
    const int zoomedWidth = width * zoom, zoomedHeight = height * zoom;
    const platform::ScreenSize screen = platform::screenSize();
    layout.width = width;
    layout.height = height;
    if (picture.halfHeight) {
        layout.marginX = screenMargin(screen.width, zoomedWidth);
        layout.marginY = std::max(0, (halfHeightLines - height / 2 * zoom) / 2);
    } else if (picture.fullScreen) {
        layout.marginX = screenMargin(screen.width, zoomedWidth);
        layout.marginY = screenMargin(screen.height, zoomedHeight);
    } else {
        const int leastHeight = picture.animation ? leastAnimationHeight : leastImageHeight;
        const int least = smallestWindowMargin(picture);
        layout.marginX = std::max(windowMargin(leastWindowWidth, zoomedWidth), least);
        layout.marginY = std::max(windowMargin(leastHeight, zoomedHeight), least);
    }
    const platform::PixelRect work = platform::workArea();
    layout.visibleWidth = fittedSide(picture, zoomedWidth, screen.width, work.width());
    layout.visibleHeight = fittedSide(picture, zoomedHeight, screen.height, work.height());
}

float growth(int before, int size) { return before > 0 ? float(size) / float(before) : 1.0f; }

// The image place that was in the middle of what showed is there again, in a picture that may have
// become larger or smaller.
void keepMiddle(const PictureLayout& before, PictureLayout& layout) {
    const auto panned = [&](float pan, float growth, int visibleBefore, int visible) {
        return pan * growth +
               (float(visibleBefore) * growth - float(visible)) / float(2 * layout.zoom);
    };
    layout.panX = panned(layout.panX, growth(before.width, layout.width), before.visibleWidth,
                         layout.visibleWidth);
    layout.panY = panned(layout.panY, growth(before.height, layout.height), before.visibleHeight,
                         layout.visibleHeight);
    layout.clearWanted = true;
}

// Margin of a zoomed picture in a window that is there. A picture as large as the window was made
// for keeps the window's margin at every zoom; around a smaller one there is more, and a larger one
// takes all but the smallest margin.
int marginInWindow(const Picture& picture, int windowSide, int pictureSide, int windowMargin) {
    const PictureLayout& layout = picture.layout;
    const int least = smallestWindowMargin(picture);
    const auto around = [&](int zoom) { return (windowSide - pictureSide * zoom) / 2; };
    const int own = std::clamp(around(layout.startZoom), least, std::max(least, windowMargin));
    return std::max(own, around(layout.zoom));
}

}  // namespace

void layOutPicture(Picture& picture, int width, int height) {
    PictureLayout& layout = picture.layout;
    const PictureLayout before = layout;
    computeMargins(picture, width, height, picture.fullScreen ? layout.zoom : layout.startZoom);
    layout.windowMarginX = layout.marginX;
    layout.windowMarginY = layout.marginY;
    keepMiddle(before, layout);
}

void layOutInWindow(Picture& picture, int width, int height) {
    if (picture.fullScreen || picture.halfHeight) return layOutPicture(picture, width, height);
    PictureLayout& layout = picture.layout;
    const PictureLayout before = layout;
    int windowWidth, windowHeight;
    clientSize(windowWidth, windowHeight);
    layout.width = width;
    layout.height = height;
    layout.marginX = marginInWindow(picture, windowWidth, width, layout.windowMarginX);
    layout.marginY = marginInWindow(picture, windowHeight, height, layout.windowMarginY);
    measureVisibleArea(layout);
    keepMiddle(before, layout);
}

void measureVisibleArea(PictureLayout& layout) {
    int width, height;
    clientSize(width, height);
    layout.visibleWidth = std::max(0, width - 2 * layout.marginX);
    layout.visibleHeight = std::max(0, height - 2 * layout.marginY);
}

void beginDisplay(Picture& picture, FrameStore& frame) {
    const bool sameView = picture.sequenceMode && picture.windowId >= 1;
    PictureLayout& layout = picture.layout;
    layout.startZoom = std::max(1, picture.currentZoom);
    if (sameView) {
        layout.width = frame.width;
        layout.height = frame.height;
    } else {
        layout.zoom = layout.startZoom;
        picture.beforeFullScreen = {};
    }
    setUpDisplay(picture, frame, Refit::fitWindow);
    if (sameView) return;
    layout.panX = std::max(0.0f, (frame.width - float(layout.visibleWidth) / layout.zoom) / 2);
    layout.panY = std::max(0.0f, (frame.height - float(layout.visibleHeight) / layout.zoom) / 2);
}

void setUpDisplay(Picture& picture, FrameStore& frame, Refit refit) {
    picture.shown = &frame;
    showNewFrame(picture);
    if (refit == Refit::fitWindow || picture.windowId < 1)
        fitWindow(picture, frame);
    else if (frame.width != picture.layout.width || frame.height != picture.layout.height)
        layOutInWindow(picture, frame.width, frame.height);
}

}  // namespace vistel
