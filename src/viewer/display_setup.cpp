#include "viewer/display_setup.h"

#include <algorithm>
#include <cstdio>

#include "app/viewer_state.h"
#include "host/messages.h"
#include "platform/surface.h"
#include "sequence/frame_name.h"
#include "settings/saved_settings.h"
#include "viewer/drawing.h"
#include "viewer/menu_commands.h"
#include "viewer/picture_view.h"
#include "viewer/viewer_session.h"
#include "viewer/window_layer.h"

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

bool showsAnimation() { return viewerState.animation != 0; }

int screenMargin(int screen, int picture) { return std::max(0, (screen - picture) / 2); }

int smallestWindowMargin() {
    return showsAnimation() && !viewerState.noWinBorder ? smallestMargin : 0;
}

int windowMargin(int least, int picture) { return picture < least ? least / 2 - picture / 2 : 0; }

// The visible part of a zoomed picture side: in full resolution it may be larger than the screen.
int fittedSide(int picture, int screenSide, int workSide) {
    if (viewerState.fullScreen) return std::min(picture, screenSide);
    return viewerState.noRescale ? std::min(picture, std::max(1, workSide - workAreaReserve))
                                 : picture;
}

// The window around picture and margins: centred on the work area at first, later where it is.
void placeAround(const PictureLayout& layout) {
    const int width = layout.visibleWidth + 2 * layout.marginX;
    const int height = layout.visibleHeight + 2 * layout.marginY;
    if (viewerState.fullScreen) {
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
    if (viewerState.noWinBorder) clearPreferredPosition();
}

void fitWindow(const FrameStore& frame) {
    const platform::PixelRect before = clientOnScreen();
    PictureLayout& layout = viewerSession().layout;
    layOutPicture(frame.width, frame.height);
    placeAround(layout);
    if (viewerState.windowId < 1) openWindowOrExit(windowTitle());
    applyPendingPlacement();
    if (clientOnScreen() != before) viewerSession().cursorKnown = false;
    if (!platform::surfaceExists(windowContext().window) && !createDrawing())
        saveSettingsAndExit(1);
}

}  // namespace

DisplayFit currentDisplayFit() {
    DisplayFit fit;
    fit.shrink = std::max(1, viewerState.rfact);
    fit.magnify = std::max(1, viewerState.magnify);
    const platform::ScreenSize screen = platform::screenSize();
    if (viewerState.noRescale || screen.width < 1) return fit;
    fit.maxWidth = screen.width;
    fit.maxHeight = std::max(1, screen.height - (viewerState.fullScreen ? 0 : titleRows));
    return fit;
}

void openWindowOrExit(const std::string& title) {
    if (!openViewerWindow(title)) {
        std::fprintf(stderr, "%s\n", messageText("s_VistelStrings.rVTNoWindow").c_str());
        saveSettingsAndExit(1);
    }
    viewerState.windowId = 1;
    prepareMenu();
    setDoubleBuffer(screenMetric(3) == 24);
    if (!createDrawing()) saveSettingsAndExit(1);
    if (viewerState.sequenceMode) setTimerRate(sequenceTimerRate);
}

namespace {

// Margins and visible size of the picture at the zoom.
void computeMargins(int width, int height, int zoom) {
    PictureLayout& layout = viewerSession().layout;
    const int zoomedWidth = width * zoom, zoomedHeight = height * zoom;
    const platform::ScreenSize screen = platform::screenSize();
    layout.width = width;
    layout.height = height;
    if (viewerState.halfHeight) {
        layout.marginX = screenMargin(screen.width, zoomedWidth);
        layout.marginY = std::max(0, (halfHeightLines - height / 2 * zoom) / 2);
    } else if (viewerState.fullScreen) {
        layout.marginX = screenMargin(screen.width, zoomedWidth);
        layout.marginY = screenMargin(screen.height, zoomedHeight);
    } else {
        const int leastHeight = showsAnimation() ? leastAnimationHeight : leastImageHeight;
        layout.marginX =
            std::max(windowMargin(leastWindowWidth, zoomedWidth), smallestWindowMargin());
        layout.marginY = std::max(windowMargin(leastHeight, zoomedHeight), smallestWindowMargin());
    }
    const platform::PixelRect work = platform::workArea();
    layout.visibleWidth = fittedSide(zoomedWidth, screen.width, work.width());
    layout.visibleHeight = fittedSide(zoomedHeight, screen.height, work.height());
}

// The pan with which the place that was in the middle of what showed is there again, in a picture
// that may have become larger or smaller.
float panKeepingMiddle(float pan, float growth, int visibleBefore, int visible) {
    const int zoom = viewerSession().layout.zoom;
    return pan * growth + (float(visibleBefore) * growth - float(visible)) / float(2 * zoom);
}

float growth(int before, int size) { return before > 0 ? float(size) / float(before) : 1.0f; }

void keepMiddle(const PictureLayout& before) {
    PictureLayout& layout = viewerSession().layout;
    layout.panX = panKeepingMiddle(layout.panX, growth(before.width, layout.width),
                                   before.visibleWidth, layout.visibleWidth);
    layout.panY = panKeepingMiddle(layout.panY, growth(before.height, layout.height),
                                   before.visibleHeight, layout.visibleHeight);
    layout.clearWanted = true;
}

// Margin of a zoomed picture in a window that is there. A picture as large as the window was made
// for keeps the window's margin at every zoom; around a smaller one there is more, and a larger one
// takes all but the smallest margin.
int marginInWindow(int windowSide, int pictureSide, int windowMargin) {
    const PictureLayout& layout = viewerSession().layout;
    const int least = smallestWindowMargin();
    const auto around = [&](int zoom) { return (windowSide - pictureSide * zoom) / 2; };
    const int own = std::clamp(around(layout.startZoom), least, std::max(least, windowMargin));
    return std::max(own, around(layout.zoom));
}

}  // namespace

void layOutPicture(int width, int height) {
    PictureLayout& layout = viewerSession().layout;
    const PictureLayout before = layout;
    computeMargins(width, height, viewerState.fullScreen ? layout.zoom : layout.startZoom);
    layout.windowMarginX = layout.marginX;
    layout.windowMarginY = layout.marginY;
    keepMiddle(before);
}

void layOutInWindow(int width, int height) {
    if (viewerState.fullScreen || viewerState.halfHeight) return layOutPicture(width, height);
    PictureLayout& layout = viewerSession().layout;
    const PictureLayout before = layout;
    int windowWidth, windowHeight;
    clientSize(windowWidth, windowHeight);
    layout.width = width;
    layout.height = height;
    layout.marginX = marginInWindow(windowWidth, width, layout.windowMarginX);
    layout.marginY = marginInWindow(windowHeight, height, layout.windowMarginY);
    measureVisibleArea();
    keepMiddle(before);
}

void measureVisibleArea() {
    PictureLayout& layout = viewerSession().layout;
    int width, height;
    clientSize(width, height);
    layout.visibleWidth = std::max(0, width - 2 * layout.marginX);
    layout.visibleHeight = std::max(0, height - 2 * layout.marginY);
}

void beginDisplay(FrameStore& frame) {
    const bool sameView = viewerState.sequenceMode && viewerState.windowId >= 1;
    PictureLayout& layout = viewerSession().layout;
    layout.startZoom = std::max(1, viewerState.currentZoom);
    if (sameView) {
        layout.width = frame.width;
        layout.height = frame.height;
    } else {
        layout.zoom = layout.startZoom;
        viewerSession().beforeFullScreen = {};
    }
    setUpDisplay(frame, Refit::fitWindow);
    if (sameView) return;
    layout.panX = std::max(0.0f, (frame.width - float(layout.visibleWidth) / layout.zoom) / 2);
    layout.panY = std::max(0.0f, (frame.height - float(layout.visibleHeight) / layout.zoom) / 2);
}

std::string shownSourceName() {
    if (namesCommand(viewerState.fileName)) return messageText("s_VistelStrings.rVTPipedCmd");
    const bool named = !viewerState.fileName.empty();
    return named ? viewerState.fileName : viewerState.sourceName;
}

std::string windowTitle() { return formatPositional("VisTel: ^1s^2s", {shownSourceName(), ""}); }

void setUpDisplay(FrameStore& frame, Refit refit) {
    const PictureLayout& layout = viewerSession().layout;
    viewerSession().shown = &frame;
    showNewFrame();
    if (refit == Refit::fitWindow || viewerState.windowId < 1)
        fitWindow(frame);
    else if (frame.width != layout.width || frame.height != layout.height)
        layOutInWindow(frame.width, frame.height);
    if (!playing()) setViewerTitle(windowTitle());
}

}  // namespace vistel
