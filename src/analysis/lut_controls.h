// The controls from which the display look-up table is built, and how the keys move them. Channels
// are counted 0 blue, 1 green, 2 red throughout: channel c is plane c + 1 of the stored pixel.
#pragma once

#include <array>

#include "host/modifiers.h"

namespace vistel {

constexpr int lutChannels = 3;

struct LutControls {
    std::array<float, lutChannels> gain{1, 1, 1};        // luminance gain
    std::array<float, lutChannels> gamma{1, 1, 1};       // used as the exponent itself
    std::array<float, lutChannels> saturation{1, 1, 1};  // exponent of the saturation curve
    std::array<float, lutChannels> offset{};             // in steps of the 0..255 scale
    std::array<bool, lutChannels> negate{};
    std::array<float, lutChannels> black{};  // black of logarithmic film, in steps of 0..1023
    bool cineonLog = false;                  // logarithmic film data becomes display values
    bool exposureCurve = false;  // the alternative film conversion: the exposure curve alone
    bool maskInverted = false;   // the mask is seen and written as 255 - mask; not in the tables
    float lastAdjustment = 0;    // the signed step of the last key

    // Whether the tables built from these are known to be the identity: the film conversions are
    // off, nothing is negated, gains, gammas and saturations are exactly 1 and offsets exactly 0.
    bool neutral() const;
};

enum class LutControl { gain, gamma, saturation, offset };

// The control channel: 0 none (all three channels), 1 blue, 2 green, 3 red. Its complement (yellow,
// magenta, cyan) is the two other channels.
struct ControlChannel {
    int number = 0;
    bool complement = false;

    std::array<bool, lutChannels> channels() const;
};

// By how much one key press moves a control, without its sign.
float lutStep(LutControl control, const Modifiers& held);

// One press of an adjusting key: steps the chosen channels up (direction 1) or down (-1) and keeps
// the signed step as lastAdjustment, or, with Control held, sets them back to neutral. The values
// have no limit; the tables are clamped.
void adjust(LutControls& controls, LutControl control, int direction, const Modifiers& held,
            ControlChannel chosen);

// Sets gains, gammas and saturations to 1 and offsets to 0. Everything else stays.
void resetAdjustments(LutControls& controls);

// Flips the negation of all channels, or of the control channel alone (chosen as a complement or
// not).
void toggleNegation(LutControls& controls, ControlChannel chosen);
// Ends every negation, that of the mask too.
void clearNegation(LutControls& controls);

// Flips the film conversion, or its alternative form; the other of the two goes off.
void toggleFilmConversion(LutControls& controls);
void toggleExposureCurve(LutControls& controls);

}  // namespace vistel
