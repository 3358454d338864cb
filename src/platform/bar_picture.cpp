#include "platform/bar_picture.h"

#include <algorithm>
#include <array>
#include <span>

namespace vistel::platform {

namespace {

// What a shape is filled with.
struct Ink {
    bool ofText;      // the text's colour
    uint32_t colour;  // else this one
    float strength;   // 1 covers what lies below
};
constexpr Ink text{true, 0, 1}, farText{true, 0, 0.3f}, nearText{true, 0, 0.6f};
constexpr Ink red{false, 0xE04848, 1}, green{false, 0x30A048, 1}, blue{false, 0x4878E8, 1};

// A shape in a square of side 1, first row above.
struct Shape {
    enum Kind { triangle, box, disc, leftHalfDisc, ring } kind;
    // triangle: an upright edge at x0 from y0 to y1, the tip at x1; box: two corners; the round
    // ones: centre (x0, y0), radius x1, of the ring's hole y1
    float x0, y0, x1, y1;
    Ink ink = text;

    bool contains(float x, float y) const {
        const float fromCentre = (x - x0) * (x - x0) + (y - y0) * (y - y0);
        switch (kind) {
            case triangle: {
                const float along = (x - x0) / (x1 - x0), half = (y1 - y0) / 2 * (1 - along);
                return along >= 0 && along <= 1 && std::abs(y - (y0 + y1) / 2) <= half;
            }
            case box:
                return x >= x0 && x <= x1 && y >= y0 && y <= y1;
            case disc:
                return fromCentre <= x1 * x1;
            case leftHalfDisc:
                return fromCentre <= x1 * x1 && x <= x0;
            case ring:
                return fromCentre <= x1 * x1 && fromCentre >= y1 * y1;
        }
        return false;
    }
};

constexpr Shape play[] = {{Shape::triangle, 0.15f, 0.05f, 0.9f, 0.95f}};
constexpr Shape step[] = {{Shape::box, 0.1f, 0.1f, 0.25f, 0.9f},
                          {Shape::triangle, 0.38f, 0.1f, 0.95f, 0.9f}};
constexpr Shape ending[] = {{Shape::triangle, 0.0f, 0.15f, 0.43f, 0.85f},
                            {Shape::triangle, 0.4f, 0.15f, 0.83f, 0.85f},
                            {Shape::box, 0.85f, 0.1f, 1.0f, 0.9f}};
constexpr Shape pausing[] = {{Shape::box, 0.16f, 0.08f, 0.4f, 0.92f},
                             {Shape::box, 0.6f, 0.08f, 0.84f, 0.92f}};
constexpr Shape channels[] = {{Shape::disc, 0.5f, 0.29f, 0.28f, 0, red},
                              {Shape::disc, 0.28f, 0.69f, 0.28f, 0, green},
                              {Shape::disc, 0.72f, 0.69f, 0.28f, 0, blue}};
constexpr Shape mask[] = {{Shape::ring, 0.5f, 0.5f, 0.48f, 0.37f},
                          {Shape::leftHalfDisc, 0.5f, 0.5f, 0.48f, 0}};
constexpr Shape depth[] = {{Shape::box, 0.42f, 0.02f, 0.98f, 0.58f, farText},
                           {Shape::box, 0.22f, 0.22f, 0.78f, 0.78f, nearText},
                           {Shape::box, 0.02f, 0.42f, 0.58f, 0.98f}};

struct Icon {
    std::span<const Shape> shapes;
    bool mirrored = false;
};

Icon iconOf(BarIcon icon) {
    switch (icon) {
        case BarIcon::toStart:
            return {ending, true};
        case BarIcon::stepBack:
            return {step, true};
        case BarIcon::playBackward:
            return {play, true};
        case BarIcon::playForward:
            return {play};
        case BarIcon::stepForward:
            return {step};
        case BarIcon::toEnd:
            return {ending};
        case BarIcon::pause:
            return {pausing};
        case BarIcon::channels:
            return {channels};
        case BarIcon::mask:
            return {mask};
        case BarIcon::depth:
            return {depth};
    }
    return {};
}

using Colour = std::array<float, 3>;

Colour unpacked(uint32_t rgb) {
    return {float(rgb >> 16 & 255), float(rgb >> 8 & 255), float(rgb & 255)};
}

Colour blended(const Colour& below, const Colour& above, float strength) {
    Colour result;
    for (size_t i = 0; i < result.size(); ++i)
        result[i] = below[i] + (above[i] - below[i]) * strength;
    return result;
}

uint32_t packed(const Colour& colour) {
    const auto byte = [](float value) { return static_cast<uint32_t>(value + 0.5f); };
    return 0xFF000000 | byte(colour[0]) << 16 | byte(colour[1]) << 8 | byte(colour[2]);
}

// The colour of one point of the icon over a ground.
Colour colourAt(const Icon& icon, float x, float y, const Colour& ground, const Colour& ofText,
                float strength) {
    Colour colour = ground;
    for (const Shape& shape : icon.shapes) {
        if (!shape.contains(icon.mirrored ? 1 - x : x, y)) continue;
        const Colour ink = shape.ink.ofText ? ofText : unpacked(shape.ink.colour);
        colour = blended(colour, ink, shape.ink.strength * strength);
    }
    return colour;
}

constexpr int samples = 4;  // of a pixel, in each direction

}  // namespace

std::vector<uint32_t> drawBarButton(const BarButtonLook& look, BarTouch touch,
                                    const BarColours& colours, int width, int height) {
    const Colour face = unpacked(colours.face), ofText = unpacked(colours.text);
    const float touched = touch == BarTouch::pressed   ? 0.25f
                          : touch == BarTouch::hovered ? 0.1f
                                                       : 0;
    Colour ground = look.active ? blended(face, unpacked(colours.highlight), 0.4f) : face;
    if (look.enabled) ground = blended(ground, ofText, touched);
    const bool framed = look.enabled && (look.active || touch != BarTouch::none);
    const Colour frame = framed ? blended(ground, ofText, 0.35f) : ground;
    const float strength = look.enabled ? 1.0f : 0.35f;
    const Icon icon = iconOf(look.icon);
    const int side = std::min(width, height) * 2 / 3;
    const int left = (width - side) / 2, top = (height - side) / 2;
    std::vector<uint32_t> pixels(size_t(width) * size_t(height));
    auto pixel = pixels.begin();
    for (int row = 0; row < height; ++row) {
        for (int column = 0; column < width; ++column, ++pixel) {
            const bool edge = row == 0 || column == 0 || row == height - 1 || column == width - 1;
            Colour sum{};
            for (int i = 0; i < samples * samples; ++i) {
                const int across = i % samples, down = i / samples;
                const float x = float(column - left) + (float(across) + 0.5f) / samples;
                const float y = float(row - top) + (float(down) + 0.5f) / samples;
                const Colour part = colourAt(icon, x / float(side), y / float(side),
                                             edge ? frame : ground, ofText, strength);
                for (size_t c = 0; c < sum.size(); ++c) sum[c] += part[c] / (samples * samples);
            }
            *pixel = packed(sum);
        }
    }
    return pixels;
}

}  // namespace vistel::platform
