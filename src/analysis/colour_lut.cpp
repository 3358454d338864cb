#include "analysis/colour_lut.h"

#include <algorithm>
#include <cmath>

namespace vistel {

namespace {

// The operands are single precision, the power is not.
float power(float base, float exponent) {
    return static_cast<float>(std::pow(double{base}, double{exponent}));
}

float saturationCurve(float x, float exponent) {
    if (x >= 0.5f) return power(2 * x - 1, exponent) * 0.5f + 0.5f;
    return 0.5f - power(1 - 2 * x, exponent) * 0.5f;
}

float filmToLinear(float y, float black) {
    return std::min(power(10, (y * 1023 - black - 800) * 0.0033333f), 1.0f);
}

float exposed(float y) {
    return static_cast<float>(1 - std::exp(-4.4 * std::pow(double{y}, 0.78125)));
}

// Clamped before it becomes an integer: what is too large for one, or no number, has a place too.
uint8_t toByte(float y) {
    const float scaled = y * 255 + 0.5f;
    if (!(scaled > 0)) return 0;
    return static_cast<uint8_t>(std::min(scaled, 255.0f));
}

}  // namespace

uint8_t lutEntry(const LutControls& controls, int channel, int input) {
    float y = saturationCurve(input / 255.0f, controls.saturation[channel]);
    y = power(y, controls.gamma[channel]);
    y *= controls.gain[channel];
    y += controls.offset[channel] / 255;
    if (controls.negate[channel]) y = 1 - y;
    if (controls.cineonLog) y = filmToLinear(y, controls.black[channel]);
    if (controls.exposureCurve || controls.cineonLog) y = exposed(y);
    return toByte(y);
}

ColourLut::ColourLut() {
    for (auto& table : tables_.plane)
        for (int i = 0; i < 256; ++i) table[i] = static_cast<uint8_t>(i);
}

void ColourLut::build() {
    for (int channel = 0; channel < lutChannels; ++channel)
        for (int i = 0; i < 256; ++i)
            tables_.plane[channel + 1][i] = lutEntry(controls, channel, i);
    lutActive = !controls.neutral();
}

void ColourLut::apply(unsigned planes, const uint32_t* stored, size_t pixels,
                      uint32_t* display) const {
    viewKernels().lookUp(tables_, planes, stored, pixels, display);
}

const uint32_t* ColourLut::prepare(ChannelMode view, ChannelMode selected, const uint32_t* stored,
                                   size_t pixels, DisplayBuffer& display) const {
    if (!lutActive) return stored;
    if (!display.grow(pixels)) return nullptr;
    apply(planesOfView(view, selected), stored, pixels, display.pixels());
    return display.pixels();
}

unsigned planesOfView(ChannelMode view, ChannelMode selected) {
    constexpr unsigned allPlanes = 0xF, colourPlanes = 0xE;
    if (isSinglePlane(view)) return 1u << planeOf(view);
    if (!isRelief(view)) return colourPlanes;
    return isSinglePlane(selected) ? 1u << planeOf(selected) : allPlanes;
}

}  // namespace vistel
