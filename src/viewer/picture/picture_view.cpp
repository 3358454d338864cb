#include "viewer/picture/picture_view.h"

#include <new>

#include "analysis/missing_planes.h"
#include "host/messages.h"
#include "viewer/window/front_image.h"

namespace vistel {

namespace {

size_t pixelCount(const FrameStore& frame) { return size_t(frame.width) * frame.height; }

// Stored pixels as the look-up table shows them in a mode; without memory for them as they are.
const uint32_t* correctedPixels(ShownPicture& picture, ChannelMode mode) {
    const FrameStore& frame = *picture.shown;
    const uint32_t* stored = frame.colour.data();
    const uint32_t* corrected =
        picture.lut.prepare(mode, mode, stored, pixelCount(frame), picture.views.corrected);
    return corrected ? corrected : stored;
}

// The grey view of a mode; null without memory.
const uint32_t* greyView(ShownPicture& picture, ChannelMode mode) {
    const FrameStore& frame = *picture.shown;
    const size_t pixels = pixelCount(frame);
    if (!picture.views.grey.grow(pixels)) return nullptr;
    uint32_t* grey = picture.views.grey.pixels();
    if (mode == ChannelMode::zBuffer)
        buildZView(frame.z.data(), pixels, picture.zScale, grey);
    else if (mode == ChannelMode::luminance)
        buildLuminanceView(correctedPixels(picture, mode), pixels, grey);
    else
        buildPlaneView(mode, picture.lut.controls.maskInverted, correctedPixels(picture, mode),
                       pixels, grey);
    return grey;
}

// The depth's grey goes through the colours' tables; as heights of a relief it stays as it is.
const uint32_t* correctedDepth(ShownPicture& picture) {
    const uint32_t* grey = greyView(picture, ChannelMode::zBuffer);
    if (grey && picture.lut.lutActive)
        picture.lut.apply(planesOfView(picture.mode, picture.mode), grey,
                          pixelCount(*picture.shown), picture.views.grey.pixels());
    return grey;
}

float reliefSlope(const ShownPicture& picture) {
    return picture.reliefInverted ? -picture.reliefDepth : picture.reliefDepth;
}

// The relief of its source, all channels counting as their luminance; the heights alone without
// memory for it.
const uint32_t* reliefPicture(ShownPicture& picture) {
    const ChannelMode source = picture.bumpSource.value_or(ChannelMode::all);
    const uint32_t* heights =
        greyView(picture, source == ChannelMode::all ? ChannelMode::luminance : source);
    const FrameStore& frame = *picture.shown;
    const size_t pixels = pixelCount(frame);
    PictureViews& views = picture.views;
    if (!heights || !views.relief.grow(pixels)) return heights;
    if (views.shade.size() < pixels) views.shade.resize(pixels);
    views.shader.shade(heights, static_cast<size_t>(frame.width), static_cast<size_t>(frame.height),
                       reliefSlope(picture), false, views.shade.data());
    const bool colours = !frame.colour.empty() && !frame.header.has(imageBlack);
    const uint32_t* colour = colours ? frame.colour.data() : nullptr;
    buildReliefView(views.shade.data(), colour, picture.reliefAmount, pixels,
                    views.relief.pixels());
    views.heights = heights;
    return views.relief.pixels();
}

const uint32_t* build(ShownPicture& picture) try {
    if (picture.mode == ChannelMode::all) return correctedPixels(picture, ChannelMode::all);
    if (picture.mode == ChannelMode::zBuffer) return correctedDepth(picture);
    return isRelief(picture.mode) ? reliefPicture(picture) : greyView(picture, picture.mode);
} catch (const std::bad_alloc&) {
    return nullptr;
}

// Why the frame on screen cannot be shown so; none when it can.
Message missingFor(const FrameStore& frame, ChannelMode mode) {
    return missingPlaneMessage(mode, {!frame.colour.empty(), !frame.z.empty(), frame.header.flags});
}

void show(ShownPicture& picture, ChannelMode mode) {
    if (picture.mode != mode) picture.layout.clearWanted = true;  // the label changes
    picture.mode = mode;
    viewChanged(picture);
}

void showReliefOf(ShownPicture& picture, ChannelMode source) {
    picture.bumpSource = source;
    show(picture, reliefViewOf(reliefSlope(picture)));
}

// The view on screen, or the one behind it when that is a relief.
ChannelMode reliefSource(const ShownPicture& picture) {
    return isRelief(picture.mode) ? picture.bumpSource.value_or(ChannelMode::all) : picture.mode;
}

ChannelMode plainView(const FrameStore& frame) {
    if (frame.colour.empty()) return ChannelMode::zBuffer;
    return frame.header.has(imageBlack) ? ChannelMode::matte : ChannelMode::all;
}

}  // namespace

void showNewFrame(ShownPicture& picture) {
    const FrameStore& frame = *picture.shown;
    const bool relief = isRelief(picture.chosen);
    const ChannelMode wanted = relief ? picture.chosenSource : picture.chosen;
    const bool there = missingFor(frame, wanted) == Message::none;
    const ChannelMode view = there ? wanted : plainView(frame);
    relief ? showReliefOf(picture, view) : show(picture, view);
}

bool hasView(const ShownPicture& picture, ChannelMode mode) {
    return missingFor(*picture.shown, mode) == Message::none;
}

bool chooseView(ShownPicture& picture, ChannelMode mode) {
    const Message message = missingFor(*picture.shown, mode);
    if (message != Message::none) {
        showMessageBand(messageText(message), picture.layout.marginX, picture.layout.visibleWidth);
        picture.bandShown = true;
        return false;
    }
    picture.chosen = mode;
    show(picture, mode);
    return true;
}

void chooseReliefView(ShownPicture& picture, bool inverted) {
    if (!isRelief(picture.mode)) picture.chosenSource = picture.mode;
    picture.reliefInverted = inverted;
    showReliefOf(picture, reliefSource(picture));
    picture.chosen = picture.mode;
}

bool reliefChanged(ShownPicture& picture) {
    if (!isRelief(picture.mode)) return false;
    showReliefOf(picture, reliefSource(picture));
    picture.chosen = picture.mode;
    return true;
}

void viewChanged(ShownPicture& picture) { picture.views.stale = true; }

const uint32_t* displayedPixels(ShownPicture& picture) {
    PictureViews& views = picture.views;
    if (views.stale) {
        views.heights = nullptr;
        views.displayed = build(picture);
    }
    views.stale = false;
    return views.displayed;
}

const uint32_t* reliefHeights(const ShownPicture& picture) {
    return picture.profiles ? picture.views.heights : nullptr;
}

}  // namespace vistel
