#include "viewer/picture/display_setup.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "host/messages.h"
#include "platform/surface.h"
#include "platform/text.h"
#include "platform/window.h"
#include "viewer/picture/picture_view.h"
#include "viewer/picture/title.h"
#include "viewer/window/drawing.h"
#include "viewer/window/window_context.h"
#include "viewer/window/window_geometry.h"
#include "viewer/window/window_layer.h"

namespace vistel {

namespace {

constexpr int smallestMargin = 20;         // of an animation, all round, at usual density
constexpr int leastAnimationHeight = 240;  // window pixels
constexpr int leastImageHeight = 144;
constexpr int halfHeightLines =
    491;  // lines of the picture area in half-height mode, whatever the screen
constexpr int workAreaReserve = 120;   // a full-resolution window leaves this much of the work area
constexpr int sequenceTimerRate = 10;  // ticks per second, at which the end of a file is noticed
constexpr int titleRows = 29;          // of the screen, taken by the window's title

int screenMargin(int screen, int picture) { return std::max(0, (screen - picture) / 2); }

int smallestWindowMargin(const ShownPicture& picture) {
    return picture.animation && !picture.noWinBorder ? platform::scaledForText(smallestMargin) : 0;
}

int windowMargin(int least, int picture) { return picture < least ? least / 2 - picture / 2 : 0; }

// The visible part of a zoomed picture side: in full resolution it may be larger than the screen.
int fittedSide(const ShowOptions& options, int side, int screenSide, int workSide) {
    if (options.fullScreen) return std::min(side, screenSide);
    return options.noRescale ? std::min(side, std::max(1, workSide - workAreaReserve)) : side;
}

// The window around picture and margins: centred on the work area at first, later where it is. After
// full screen it is where it was before.
void placeAround(const ShownPicture& picture, const Surround& surround) {
    const int width = surround.visibleWidth + 2 * surround.marginX;
    const int height = surround.visibleHeight + 2 * surround.marginY;
    WindowContext& context = windowContext();
    const bool shown = platform::windowExists(context.window);
    if (picture.fullScreen) {
        if (shown && !context.coversScreen) context.beforeCovering = clientOnScreen();
        const platform::ScreenSize screen = platform::screenSize();
        clearPreferredPosition();
        context.coversScreen = true;
        return setPreferredPosition(0, screen.width, 0, screen.height);
    }
    const platform::PixelRect work = platform::workArea(context.window);
    int left = work.left + std::max(0, (work.width() - width) / 2);
    int top = work.top + std::max(0, (work.height() - height) / 2);
    if (shown && !context.coversScreen) {
        platform::clientScreenPosition(context.window, left, top);
    } else if (shown && context.beforeCovering) {
        left = context.beforeCovering->left;
        top = context.beforeCovering->top;
    }
    context.coversScreen = false;
    setPreferredPosition(left, left + width, top, top + height);
    if (picture.noWinBorder) clearPreferredPosition();
}

// The program is nothing without its window.
[[noreturn]] void leave() {
    if (windowContext().calls.refused) windowContext().calls.refused();
    std::exit(1);
}

// Makes the window for the largest frame, in full screen for this one, and lays this one out in it.
void fitWindow(ShownPicture& picture, const FrameStore& frame) {
    PictureLayout& layout = picture.layout;
    const Surround surround =
        picture.fullScreen
            ? surroundOf(picture, frame.width, frame.height, layout.zoom)
            : surroundOf(picture, layout.largestWidth, layout.largestHeight, layout.startZoom);
    layout.windowMarginX = surround.marginX;
    layout.windowMarginY = surround.marginY;
    const platform::PixelRect before = clientOnScreen();
    placeAround(picture, surround);
    if (picture.windowId < 1) openWindowOrExit(picture, windowTitle(picture));
    applyPendingPlacement();
    if (clientOnScreen() != before) windowContext().cursor.known = false;
    if (!platform::surfaceExists(windowContext().window) && !createDrawing()) leave();
    layOutInWindow(picture, frame.width, frame.height);
}

// The limits of frames that are shown in a window, or in full screen.
DisplayFit displayFit(const ShownPicture& picture, bool fullScreen) {
    DisplayFit fit;
    fit.shrink = std::max(1, picture.rfact);
    fit.magnify = std::max(1, picture.magnify);
    const platform::ScreenSize screen = platform::screenSize();
    if (picture.noRescale || screen.width < 1) return fit;
    fit.maxWidth = screen.width;
    fit.maxHeight = std::max(1, screen.height - (fullScreen ? 0 : titleRows));
    return fit;
}

// Whether the frame is larger, one way or the other, than those before it. One that is shown in
// full screen counts with the size that it would have in a window.
bool noteSize(ShownPicture& picture, const FrameStore& frame) {
    int width = frame.width, height = frame.height;
    if (picture.fullScreen) {
        const DisplaySize size =
            displaySize(frame.header.width, frame.header.height, displayFit(picture, false));
        width = static_cast<int>(size.width);
        height = static_cast<int>(size.height);
    }
    PictureLayout& layout = picture.layout;
    const bool larger = width > layout.largestWidth || height > layout.largestHeight;
    layout.largestWidth = std::max(width, layout.largestWidth);
    layout.largestHeight = std::max(height, layout.largestHeight);
    return larger;
}

}  // namespace

DisplayFit currentDisplayFit(const ShownPicture& picture) {
    return displayFit(picture, picture.fullScreen != 0);
}

void forgetLargestFrame(PictureLayout& layout) { layout.largestWidth = layout.largestHeight = 0; }

void openWindowOrExit(ShownPicture& picture, const std::string& title) {
    if (!openViewerWindow(title)) {
        printError(messageText(Message::rVTNoWindow));
        leave();
    }
    picture.windowId = 1;
    setDoubleBuffer(screenMetric(3) == 24);
    if (!createDrawing()) leave();
    if (picture.sequenceMode) setTimerRate(sequenceTimerRate);
}

Surround surroundOf(const ShownPicture& picture, int width, int height, int zoom) {
    const int zoomedWidth = width * zoom, zoomedHeight = height * zoom;
    const platform::ScreenSize screen = platform::screenSize();
    Surround surround;
    if (picture.halfHeight) {
        surround.marginX = screenMargin(screen.width, zoomedWidth);
        surround.marginY = std::max(0, (halfHeightLines - height / 2 * zoom) / 2);
    } else if (picture.fullScreen) {
        surround.marginX = screenMargin(screen.width, zoomedWidth);
        surround.marginY = screenMargin(screen.height, zoomedHeight);
    } else {
        const int leastHeight = picture.animation ? leastAnimationHeight : leastImageHeight;
        const int least = smallestWindowMargin(picture);
        surround.marginX = std::max(windowMargin(leastWindowWidth, zoomedWidth), least);
        surround.marginY = std::max(windowMargin(leastHeight, zoomedHeight), least);
    }
    const platform::PixelRect work = platform::workArea(windowContext().window);
    surround.visibleWidth = fittedSide(picture, zoomedWidth, screen.width, work.width());
    surround.visibleHeight = fittedSide(picture, zoomedHeight, screen.height, work.height());
    return surround;
}

namespace {

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
int marginInWindow(const ShownPicture& picture, int windowSide, int pictureSide, int windowMargin) {
    const PictureLayout& layout = picture.layout;
    const int least = smallestWindowMargin(picture);
    const auto around = [&](int zoom) { return (windowSide - pictureSide * zoom) / 2; };
    const int own = std::clamp(around(layout.startZoom), least, std::max(least, windowMargin));
    return std::max(own, around(layout.zoom));
}

}  // namespace

void layOutInWindow(ShownPicture& picture, int width, int height) {
    PictureLayout& layout = picture.layout;
    const PictureLayout before = layout;
    layout.width = width;
    layout.height = height;
    if (picture.fullScreen || picture.halfHeight) {
        const int zoom = picture.fullScreen ? layout.zoom : layout.startZoom;
        const Surround surround = surroundOf(picture, width, height, zoom);
        layout.marginX = surround.marginX;
        layout.marginY = surround.marginY;
        layout.visibleWidth = surround.visibleWidth;
        layout.visibleHeight = surround.visibleHeight;
    } else {
        int windowWidth, windowHeight;
        clientSize(windowWidth, windowHeight);
        layout.marginX = marginInWindow(picture, windowWidth, width, layout.windowMarginX);
        layout.marginY = marginInWindow(picture, windowHeight, height, layout.windowMarginY);
        measureVisibleArea(layout);
    }
    keepMiddle(before, layout);
}

void measureVisibleArea(PictureLayout& layout) {
    int width, height;
    clientSize(width, height);
    layout.visibleWidth = std::max(0, width - 2 * layout.marginX);
    layout.visibleHeight = std::max(0, height - 2 * layout.marginY);
}

void beginDisplay(ShownPicture& picture, FrameStore& frame) {
    const bool sameView = picture.sequenceMode && picture.windowId >= 1;
    PictureLayout& layout = picture.layout;
    layout.startZoom = std::max(1, picture.currentZoom);
    forgetLargestFrame(layout);
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

void setUpDisplay(ShownPicture& picture, FrameStore& frame, Refit refit) {
    picture.shown = &frame;
    showNewFrame(picture);
    const bool grows = noteSize(picture, frame) && !picture.fullScreen;
    if (refit == Refit::fitWindow || grows || picture.windowId < 1)
        fitWindow(picture, frame);
    else if (frame.width != picture.layout.width || frame.height != picture.layout.height)
        layOutInWindow(picture, frame.width, frame.height);
}

}  // namespace vistel
