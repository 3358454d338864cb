#include "viewer/picture_view.h"

#include <memory>
#include <new>
#include <vector>

#include "analysis/display_buffer.h"
#include "analysis/missing_planes.h"
#include "analysis/plane_views.h"
#include "analysis/relief.h"
#include "app/viewer_state.h"
#include "host/messages.h"
#include "viewer/display_lut.h"
#include "viewer/drawing.h"

namespace vistel {

namespace {

struct Views {
    bool stale = true;
    const uint32_t* displayed = nullptr;
    DisplayBuffer corrected;  // stored pixels through the look-up table
    DisplayBuffer grey;       // a plane, the depth or the luminance; the heights of a relief
    const uint32_t* heights = nullptr;  // of the relief built last
    DisplayBuffer relief;
    std::vector<uint8_t> shade;
    ReliefShader shader;
};
Views views;

size_t pixelCount(const FrameStore& frame) { return size_t(frame.width) * frame.height; }

// Stored pixels as the look-up table shows them in a mode.
const uint32_t* correctedPixels(const FrameStore& frame, ChannelMode mode) {
    const uint32_t* stored = frame.colour.data();
    const int view = static_cast<int>(mode);
    const uint32_t* corrected =
        displayLut().prepare(view, view, stored, pixelCount(frame), views.corrected);
    return corrected ? corrected : stored;
}

// The grey view of a mode; null without memory.
const uint32_t* greyView(const FrameStore& frame, ChannelMode mode) {
    const size_t pixels = pixelCount(frame);
    if (!views.grey.grow(pixels)) return nullptr;
    uint32_t* grey = views.grey.pixels();
    if (mode == ChannelMode::zBuffer)
        buildZView(frame.z.data(), pixels, viewerSession().zScale, grey);
    else if (mode == ChannelMode::luminance)
        buildLuminanceView(correctedPixels(frame, mode), pixels, grey);
    else
        buildPlaneView(static_cast<int>(mode), displayLut().controls.maskInverted,
                       correctedPixels(frame, mode), pixels, grey);
    return grey;
}

// The view whose relief is shown; all channels count as their luminance.
ChannelMode heightsMode() {
    const auto source = static_cast<ChannelMode>(viewerSession().bumpSource);
    return source == ChannelMode::all ? ChannelMode::luminance : source;
}

float reliefSlope() {
    const ViewerSession& session = viewerSession();
    return session.reliefInverted ? -session.reliefDepth : session.reliefDepth;
}

// The heights alone without memory for their relief.
const uint32_t* reliefPicture(const FrameStore& frame) {
    const size_t pixels = pixelCount(frame);
    const uint32_t* heights = greyView(frame, heightsMode());
    if (!heights || !views.relief.grow(pixels)) return heights;
    if (views.shade.size() < pixels) views.shade.resize(pixels);
    views.shader.shade(heights, static_cast<size_t>(frame.width), static_cast<size_t>(frame.height),
                       reliefSlope(), false, views.shade.data());
    const bool colours = !frame.colour.empty() && !frame.header.has(imageBlack);
    const uint32_t* colour = colours ? frame.colour.data() : nullptr;
    buildReliefView(views.shade.data(), colour, viewerSession().reliefAmount, pixels,
                    views.relief.pixels());
    views.heights = heights;
    return views.relief.pixels();
}

const uint32_t* build(const FrameStore& frame) try {
    switch (viewerSession().mode) {
        case ChannelMode::all:
            return correctedPixels(frame, ChannelMode::all);
        case ChannelMode::bump:
        case ChannelMode::invertedBump:
            return reliefPicture(frame);
        default:
            return greyView(frame, viewerSession().mode);
    }
} catch (const std::bad_alloc&) {
    return nullptr;
}

bool isRelief(ChannelMode mode) {
    return mode == ChannelMode::bump || mode == ChannelMode::invertedBump;
}

PlaneRequest requestOf(ChannelMode mode) {
    if (mode == ChannelMode::zBuffer) return PlaneRequest::depth;
    return mode == ChannelMode::matte ? PlaneRequest::mask : PlaneRequest::colour;
}

// Why the frame on screen cannot be shown so; none when it can.
Message missingFor(ChannelMode mode) {
    const FrameStore& frame = *viewerSession().shown;
    return missingPlaneMessage(requestOf(mode),
                               {!frame.colour.empty(), !frame.z.empty(), frame.header.flags});
}

void show(ChannelMode mode) {
    ViewerSession& session = viewerSession();
    if (session.mode != mode) session.layout.clearWanted = true;  // the label changes
    session.mode = mode;
    viewChanged();
}

void showReliefOf(ChannelMode source) {
    viewerSession().bumpSource = static_cast<int>(source);
    show(static_cast<ChannelMode>(reliefViewOf(reliefSlope())));
}

// The view on screen, or the one behind it when that is a relief.
ChannelMode reliefSource() {
    const ViewerSession& session = viewerSession();
    return isRelief(session.mode) ? static_cast<ChannelMode>(session.bumpSource) : session.mode;
}

ChannelMode plainView(const FrameStore& frame) {
    if (frame.colour.empty()) return ChannelMode::zBuffer;
    return frame.header.has(imageBlack) ? ChannelMode::matte : ChannelMode::all;
}

}  // namespace

void showNewFrame() {
    ViewerSession& session = viewerSession();
    const ChannelMode plain = plainView(*session.shown);
    const bool relief = isRelief(session.chosen);
    const ChannelMode wanted = relief ? session.chosenSource : session.chosen;
    const bool there = missingFor(wanted) == Message::none;
    if (relief)
        showReliefOf(there ? wanted : plain);
    else
        show(there ? wanted : plain);
}

bool chooseView(ChannelMode mode) {
    if (const Message message = missingFor(mode); message != Message::none) {
        const PictureLayout& layout = viewerSession().layout;
        showMessageBand(messageText(message), layout.marginX, layout.visibleWidth);
        viewerSession().bandShown = true;
        return false;
    }
    viewerSession().chosen = mode;
    show(mode);
    return true;
}

void chooseReliefView(bool inverted) {
    ViewerSession& session = viewerSession();
    if (!isRelief(session.mode)) session.chosenSource = session.mode;
    session.reliefInverted = inverted;
    showReliefOf(reliefSource());
    session.chosen = session.mode;
}

bool reliefChanged() {
    ViewerSession& session = viewerSession();
    if (!isRelief(session.mode)) return false;
    showReliefOf(reliefSource());
    session.chosen = session.mode;
    return true;
}

void viewChanged() { views.stale = true; }

const uint32_t* displayedPixels() {
    const FrameStore& frame = *viewerSession().shown;
    if (views.stale) {
        views.heights = nullptr;
        views.displayed = build(frame);
    }
    views.stale = false;
    return views.displayed;
}

const uint32_t* reliefHeights() { return viewerSession().profiles ? views.heights : nullptr; }

void releaseViews() {
    std::destroy_at(&views);
    std::construct_at(&views);
}

}  // namespace vistel
