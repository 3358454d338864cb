#include "analysis/lut_controls.h"

#include <algorithm>

namespace vistel {

namespace {

struct ControlRow {
    std::array<float, lutChannels> LutControls::*values;
    float neutral;
    float steps[4];  // none, Shift, Alt, Alt with Shift
};

constexpr ControlRow controlRows[] = {
    {&LutControls::gain, 1, {0.01f, 0.1f, 0.5f, 1}},
    {&LutControls::gamma, 1, {0.01f, 0.1f, 0.5f, 1}},
    {&LutControls::saturation, 1, {0.01f, 0.1f, 0.5f, 1}},
    {&LutControls::offset, 0, {1, 5, 10, 20}},
};

const ControlRow& rowOf(LutControl control) { return controlRows[static_cast<int>(control)]; }

}  // namespace

bool LutControls::neutral() const {
    if (cineonLog || exposureCurve) return false;
    if (std::any_of(negate.begin(), negate.end(), [](bool on) { return on; })) return false;
    return std::all_of(std::begin(controlRows), std::end(controlRows), [&](const ControlRow& row) {
        const auto& values = this->*row.values;
        return std::all_of(values.begin(), values.end(),
                           [&](float value) { return value == row.neutral; });
    });
}

std::array<bool, lutChannels> ControlChannel::channels() const {
    std::array<bool, lutChannels> chosen{};
    if (number < 1 || number > lutChannels) {
        chosen.fill(true);
    } else if (complement) {
        chosen[number % lutChannels] = chosen[(number + 1) % lutChannels] = true;
    } else {
        chosen[number - 1] = true;
    }
    return chosen;
}

float lutStep(LutControl control, const Modifiers& held) {
    return rowOf(control).steps[(held.alt() ? 2 : 0) + (held.shift() ? 1 : 0)];
}

void adjust(LutControls& controls, LutControl control, int direction, const Modifiers& held,
            ControlChannel chosen) {
    const ControlRow& row = rowOf(control);
    const float step = lutStep(control, held);
    if (!held.control()) controls.lastAdjustment = direction < 0 ? -step : step;
    const auto channels = chosen.channels();
    auto& values = controls.*row.values;
    for (int c = 0; c < lutChannels; ++c) {
        if (!channels[c]) continue;
        values[c] = held.control() ? row.neutral : values[c] + controls.lastAdjustment;
    }
}

void resetAdjustments(LutControls& controls) {
    for (const ControlRow& row : controlRows) (controls.*row.values).fill(row.neutral);
}

void toggleNegation(LutControls& controls, ControlChannel chosen) {
    const auto channels = ControlChannel{chosen.number}.channels();
    for (int c = 0; c < lutChannels; ++c) controls.negate[c] ^= channels[c];
}

void clearNegation(LutControls& controls) {
    controls.negate.fill(false);
    controls.maskInverted = false;
}

void toggleFilmConversion(LutControls& controls) {
    controls.cineonLog = !controls.cineonLog;
    controls.exposureCurve = false;
}

void toggleExposureCurve(LutControls& controls) {
    controls.exposureCurve = !controls.exposureCurve;
    controls.cineonLog = false;
}

}  // namespace vistel
