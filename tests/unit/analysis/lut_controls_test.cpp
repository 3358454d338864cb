// How the keys move the controls of the look-up table.

#include "analysis/lut_controls.h"

#include <gtest/gtest.h>

namespace vistel {
namespace {

using Values = std::array<float, lutChannels>;

constexpr Modifiers none{}, shift{.leftShift = true}, alt{.rightAlt = true},
    altShift{.rightShift = true, .leftAlt = true}, held{.leftControl = true};

TEST(LutControls, StartNeutral) {
    const LutControls controls;
    EXPECT_EQ(controls.gain, (Values{1, 1, 1}));
    EXPECT_EQ(controls.gamma, (Values{1, 1, 1}));
    EXPECT_EQ(controls.saturation, (Values{1, 1, 1}));
    EXPECT_EQ(controls.offset, (Values{0, 0, 0}));
    EXPECT_EQ(controls.black, (Values{0, 0, 0}));
    EXPECT_TRUE(controls.neutral());
}

TEST(LutControls, TheStepFollowsTheModifiers) {
    const struct {
        LutControl control;
        float steps[4];
    } rows[] = {
        {LutControl::gain, {0.01f, 0.1f, 0.5f, 1}},
        {LutControl::gamma, {0.01f, 0.1f, 0.5f, 1}},
        {LutControl::saturation, {0.01f, 0.1f, 0.5f, 1}},
        {LutControl::offset, {1, 5, 10, 20}},
    };
    for (const auto& row : rows) {
        const Modifiers modifiers[] = {none, shift, alt, altShift};
        for (int i = 0; i < 4; ++i) EXPECT_EQ(lutStep(row.control, modifiers[i]), row.steps[i]);
    }
}

TEST(LutControls, AStepMovesItsOwnControlInAllChannels) {
    LutControls controls;
    adjust(controls, LutControl::gain, 1, none, {});
    EXPECT_EQ(controls.gain, (Values{1.01f, 1.01f, 1.01f}));
    adjust(controls, LutControl::gamma, -1, shift, {});
    EXPECT_EQ(controls.gamma, (Values{0.9f, 0.9f, 0.9f}));
    adjust(controls, LutControl::saturation, 1, alt, {});
    EXPECT_EQ(controls.saturation, (Values{1.5f, 1.5f, 1.5f}));
    adjust(controls, LutControl::offset, -1, altShift, {});
    EXPECT_EQ(controls.offset, (Values{-20, -20, -20}));
    EXPECT_EQ(controls.gain, (Values{1.01f, 1.01f, 1.01f}));
}

TEST(LutControls, TheSignedStepIsKept) {
    LutControls controls;
    adjust(controls, LutControl::offset, 1, shift, {});
    EXPECT_EQ(controls.lastAdjustment, 5);
    adjust(controls, LutControl::gamma, -1, none, {});
    EXPECT_EQ(controls.lastAdjustment, -0.01f);
    adjust(controls, LutControl::gamma, 1, held, {});
    EXPECT_EQ(controls.lastAdjustment, -0.01f) << "setting back is no step";
}

TEST(LutControls, ControlSetsTheChosenChannelsBackWhateverElseIsHeld) {
    for (const bool alsoShift : {false, true})
        for (const int direction : {-1, 1}) {
            LutControls controls;
            controls.gain = controls.gamma = controls.saturation = controls.offset = {3, 4, 5};
            const Modifiers modifiers{
                .leftShift = alsoShift, .rightControl = true, .leftAlt = alsoShift};
            adjust(controls, LutControl::gain, direction, modifiers, {});
            adjust(controls, LutControl::gamma, direction, modifiers, {2});
            adjust(controls, LutControl::saturation, direction, modifiers, {2, true});
            adjust(controls, LutControl::offset, direction, modifiers, {3});
            EXPECT_EQ(controls.gain, (Values{1, 1, 1}));
            EXPECT_EQ(controls.gamma, (Values{3, 1, 5}));
            EXPECT_EQ(controls.saturation, (Values{1, 4, 1}));
            EXPECT_EQ(controls.offset, (Values{3, 4, 0}));
        }
}

TEST(LutControls, AControlChannelIsOneChannelAndItsComplementTheTwoOthers) {
    const struct {
        ControlChannel chosen;
        std::array<bool, 3> channels;  // blue, green, red
    } rows[] = {
        {{0, false}, {true, true, true}},   {{0, true}, {true, true, true}},
        {{1, false}, {true, false, false}}, {{1, true}, {false, true, true}},
        {{2, false}, {false, true, false}}, {{2, true}, {true, false, true}},
        {{3, false}, {false, false, true}}, {{3, true}, {true, true, false}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.chosen.channels(), row.channels)
            << row.chosen.number << row.chosen.complement;
        LutControls controls;
        adjust(controls, LutControl::offset, 1, none, row.chosen);
        for (int c = 0; c < lutChannels; ++c) EXPECT_EQ(controls.offset[c], row.channels[c]);
    }
}

TEST(LutControls, ValuesHaveNoLimit) {
    LutControls controls;
    for (int i = 0; i < 100; ++i) {
        adjust(controls, LutControl::gamma, -1, altShift, {});
        adjust(controls, LutControl::offset, 1, altShift, {});
    }
    EXPECT_EQ(controls.gamma, (Values{-99, -99, -99}));
    EXPECT_EQ(controls.offset, (Values{2000, 2000, 2000}));
}

TEST(LutControls, AResetTakesBackAdjustmentsAndNothingElse) {
    LutControls controls;
    controls.gain = controls.gamma = controls.saturation = controls.offset = {3, 4, 5};
    controls.negate = {true, false, true};
    controls.cineonLog = controls.exposureCurve = controls.maskInverted = true;
    resetAdjustments(controls);
    EXPECT_EQ(controls.gain, (Values{1, 1, 1}));
    EXPECT_EQ(controls.gamma, (Values{1, 1, 1}));
    EXPECT_EQ(controls.saturation, (Values{1, 1, 1}));
    EXPECT_EQ(controls.offset, (Values{0, 0, 0}));
    EXPECT_EQ(controls.negate, (std::array<bool, 3>{true, false, true}));
    EXPECT_TRUE(controls.cineonLog && controls.exposureCurve && controls.maskInverted);
}

TEST(LutControls, NegationTogglesInAllChannelsOrInTheControlChannel) {
    LutControls controls;
    toggleNegation(controls, {2});
    EXPECT_EQ(controls.negate, (std::array<bool, 3>{false, true, false}));
    toggleNegation(controls, {});
    EXPECT_EQ(controls.negate, (std::array<bool, 3>{true, false, true}));
    toggleNegation(controls, {3, true});
    EXPECT_EQ(controls.negate, (std::array<bool, 3>{true, false, false}));
    controls.maskInverted = true;
    clearNegation(controls);
    EXPECT_EQ(controls.negate, (std::array<bool, 3>{}));
    EXPECT_FALSE(controls.maskInverted);
}

TEST(LutControls, TheTwoFilmConversionsExcludeEachOther) {
    LutControls controls;
    toggleFilmConversion(controls);
    EXPECT_TRUE(controls.cineonLog && !controls.exposureCurve);
    toggleExposureCurve(controls);
    EXPECT_TRUE(!controls.cineonLog && controls.exposureCurve);
    toggleFilmConversion(controls);
    EXPECT_TRUE(controls.cineonLog && !controls.exposureCurve);
    toggleFilmConversion(controls);
    EXPECT_FALSE(controls.cineonLog || controls.exposureCurve);
    toggleExposureCurve(controls);
    toggleExposureCurve(controls);
    EXPECT_FALSE(controls.cineonLog || controls.exposureCurve);
}

TEST(LutControls, AnyControlOfAnyChannelEndsNeutrality) {
    const struct {
        const char* name;
        void (*change)(LutControls&, int channel);
    } rows[] = {
        {"gain", [](LutControls& c, int n) { c.gain[n] = 1.01f; }},
        {"gamma", [](LutControls& c, int n) { c.gamma[n] = 0.99f; }},
        {"saturation", [](LutControls& c, int n) { c.saturation[n] = 2; }},
        {"offset", [](LutControls& c, int n) { c.offset[n] = -1; }},
        {"negation", [](LutControls& c, int n) { c.negate[n] = true; }},
        {"film", [](LutControls& c, int) { c.cineonLog = true; }},
        {"exposure", [](LutControls& c, int) { c.exposureCurve = true; }},
    };
    for (const auto& row : rows)
        for (int channel = 0; channel < lutChannels; ++channel) {
            LutControls controls;
            row.change(controls, channel);
            EXPECT_FALSE(controls.neutral()) << row.name << channel;
        }
    LutControls controls;
    controls.black = {95, 95, 95};
    controls.maskInverted = true;
    controls.lastAdjustment = 1;
    EXPECT_TRUE(controls.neutral()) << "these are in no table while the film conversion is off";
}

}  // namespace
}  // namespace vistel
