#include "viewer/commands/lut_commands.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "viewer/picture/picture_view.h"
#include "viewer/viewer_fixture.h"

namespace vistel {

namespace headless = platform::headless;

namespace {

// Channels are counted 0 blue, 1 green, 2 red.
struct Control {
    const char* name;
    int downKey, upKey;
    std::array<float, 3> LutControls::*values;
    float neutral;
    float steps[4];  // none, Shift, Alt, both
};
const Control controls[] = {
    {"gamma", characterKey('['), characterKey(']'), &LutControls::gamma, 1, {0.01f, 0.1f, 0.5f, 1}},
    {"gain", characterKey('-'), characterKey('='), &LutControls::gain, 1, {0.01f, 0.1f, 0.5f, 1}},
    {"saturation",
     characterKey(';'),
     characterKey('\''),
     &LutControls::saturation,
     1,
     {0.01f, 0.1f, 0.5f, 1}},
    {"offset", characterKey('/'), characterKey('\\'), &LutControls::offset, 0, {1, 5, 10, 20}},
};

// A control channel, by function key, and the channels that it stands for.
struct Chosen {
    int key;
    unsigned held;
    std::array<bool, 3> channels;
};
const Chosen choices[] = {
    {4, none, {true, true, true}},   {1, none, {false, false, true}},
    {2, none, {false, true, false}}, {3, none, {true, false, false}},
    {1, shift, {true, true, false}},  // cyan
    {2, shift, {true, false, true}},  // magenta
    {3, shift, {false, true, true}},  // yellow
};

// What the look-up table does to a byte, in double precision.
struct Curve {
    double saturation = 1, gamma = 1, gain = 1, offset = 0;
    bool negate = false, film = false, exposure = false;

    double at(int input) const {
        const double x = input / 255.0;
        double y = x >= 0.5 ? std::pow(2 * x - 1, saturation) * 0.5 + 0.5
                            : 0.5 - std::pow(1 - 2 * x, saturation) * 0.5;
        y = std::pow(y, gamma) * gain + offset / 255;
        if (negate) y = 1 - y;
        if (film) y = std::min(std::pow(10, (y * 1023 - 800) * 0.0033333), 1.0);
        if (film || exposure) y = 1 - std::exp(-4.4 * std::pow(y, 0.78125));
        return std::clamp(y * 255 + 0.5, 0.0, 255.0);
    }
};

}  // namespace

class LutCommandsTest : public ViewerTest {
 protected:
    static LutControls& now() { return viewerState.lut.controls; }
    static std::array<float, 3> value(const Control& control) { return now().*control.values; }

    // A picture of 16 x 16 in which each channel has every value.
    void showRamps() {
        FrameStore frame = planesFrame(1, 16, 16);
        for (uint32_t i = 0; i < 256; ++i)
            frame.colour.data()[i] = i | (i * 7 & 255) << 8 | (255 - i) << 16 | 0x80000000u;
        showImage(std::move(frame));
    }
    // The picture went through the curves of blue, green, red. A value that the double precision
    // curve puts within a hundredth of the next integer may come out as either.
    static void expectCurves(const std::array<Curve, 3>& curves) {
        const headless::Image& image = redraw();
        const PictureLayout& layout = viewerState.layout;
        for (int i = 0; i < 256; ++i) {
            const uint32_t from = viewerState.shown->colour.data()[i];
            const uint32_t pixel = image.at(layout.marginX + i % 16, layout.marginY + i / 16);
            for (int channel = 0; channel < 3; ++channel) {
                const int shift = 16 - 8 * channel;
                const double exact = curves[size_t(channel)].at(int(from >> shift & 255));
                const int shown = int(pixel >> shift & 255);
                ASSERT_LT(shown, exact + 0.01) << "channel " << channel << " of pixel " << i;
                ASSERT_GT(shown, exact - 1.01) << "channel " << channel << " of pixel " << i;
            }
        }
    }
    static void expectStored() { expectPicture(stored); }
};

TEST_F(LutCommandsTest, EachKeyMovesItsControlByTheStepOfTheModifiers) {
    showRamps();
    for (const Control& control : controls) {
        for (const unsigned held : {none, shift, alt}) {
            for (const bool up : {false, true}) {
                now() = LutControls{};
                const float step = control.steps[held == alt ? 2 : held == shift ? 1 : 0];
                EXPECT_TRUE(key(up ? control.upKey : control.downKey, held));
                for (const float result : value(control))
                    EXPECT_FLOAT_EQ(result, control.neutral + (up ? step : -step)) << control.name;
            }
        }
        now() = LutControls{};
        key(control.upKey, shift | alt);
        EXPECT_FLOAT_EQ(value(control)[0], control.neutral + control.steps[3]) << control.name;
        EXPECT_FLOAT_EQ(now().lastAdjustment, control.steps[3]) << control.name;
        key(control.downKey, shift | alt);
        EXPECT_FLOAT_EQ(now().lastAdjustment, -control.steps[3]) << control.name;
    }
}

TEST_F(LutCommandsTest, RightHandModifiersCountToo) {
    showRamps();
    runKey(viewerState, {.code = characterKey(']'), .modifiers = modifiersOf(shift, true)});
    EXPECT_FLOAT_EQ(now().gamma[0], 1.1f);
}

TEST_F(LutCommandsTest, ControlSetsTheControlNeutral) {
    showRamps();
    for (const Control& control : controls) {
        for (const int code : {control.downKey, control.upKey}) {
            for (const unsigned further : {0u, unsigned{shift}, shift | alt}) {
                (now().*control.values).fill(7);
                now().lastAdjustment = 3;
                EXPECT_TRUE(key(code, further | vistel::control));
                for (const float result : value(control)) EXPECT_EQ(result, control.neutral);
                EXPECT_EQ(now().lastAdjustment, 3);
            }
        }
    }
}

TEST_F(LutCommandsTest, AControlChannelOrItsComplementIsMovedAlone) {
    showRamps();
    for (const Chosen& chosen : choices) {
        key(keyF1 + chosen.key - 1, chosen.held);
        for (const Control& control : controls) {
            now() = LutControls{};
            key(control.upKey);
            for (size_t c = 0; c < 3; ++c)
                EXPECT_FLOAT_EQ(value(control)[c],
                                control.neutral + (chosen.channels[c] ? control.steps[0] : 0))
                    << control.name << " F" << chosen.key << " channel " << c;
            (now().*control.values).fill(9);
            key(control.upKey, vistel::control);
            for (size_t c = 0; c < 3; ++c)
                EXPECT_EQ(value(control)[c], chosen.channels[c] ? control.neutral : 9);
        }
    }
}

TEST_F(LutCommandsTest, ValuesHaveNoLimit) {
    showRamps();
    for (int i = 0; i < 40; ++i) key(characterKey('-'), shift | alt);
    EXPECT_FLOAT_EQ(now().gain[0], -39);
    for (int i = 0; i < 40; ++i) key(characterKey('\\'), shift | alt);
    EXPECT_FLOAT_EQ(now().offset[0], 800);
}

TEST_F(LutCommandsTest, ThePictureIsShownThroughTheCurves) {
    showRamps();
    expectStored();
    Curve curve;
    key(characterKey(']'), shift | alt);
    curve.gamma = 2;
    expectCurves({curve, curve, curve});
    key(characterKey('-'), shift);
    curve.gain = 1 - double{0.1f};
    expectCurves({curve, curve, curve});
    key(characterKey('\''), alt);
    curve.saturation = 1.5;
    expectCurves({curve, curve, curve});
    key(keyF1);  // red
    key(characterKey('\\'), shift | alt);
    Curve red = curve;
    red.offset = 20;
    expectCurves({curve, curve, red});
    key('X');
    red.negate = true;
    expectCurves({curve, curve, red});
    for (const Control& control : controls) {
        key(keyF1 + 3);
        key(control.upKey, vistel::control);
    }
    key('X', vistel::control);
    expectStored();
    EXPECT_EQ(viewerState.lutActive, 0);
}

TEST_F(LutCommandsTest, GammaTwoMaps128To64) {
    FrameStore frame = planesFrame(1, 16, 16);
    std::fill_n(frame.colour.data(), 256, 0xFF808080u);
    showImage(std::move(frame));
    key(characterKey(']'), shift | alt);
    expectPicture([](int, int) { return 0x404040u; });
}

TEST_F(LutCommandsTest, ThePlaneViewsShowTheCorrectedBytes) {
    showRamps();
    key('X');
    for (const auto& [letter, shift] : {std::pair{'B', 16}, {'G', 8}, {'R', 0}}) {
        key(letter);
        expectPicture(
            [&, s = shift](int x, int y) { return (255 - (stored(x, y) >> s & 255)) * 0x010101u; });
    }
    key('A');  // the mask's table is the identity
    expectPicture([](int x, int y) { return (stored(x, y) >> 24) * 0x010101u; });
    key('L');
    expectPicture([](int x, int y) {
        const uint32_t p = ~stored(x, y);
        return (((p & 255) + 2 * (p >> 8 & 255) + (p >> 16 & 255)) / 4) * 0x010101u;
    });
    key('Z');
    const uint32_t before = displayedPixels(viewerState)[5];
    key('X', control);
    EXPECT_EQ(displayedPixels(viewerState)[5] & 0xFFFFFF, ~before & 0xFFFFFF);
}

TEST_F(LutCommandsTest, TheStoredFrameIsNeverChanged) {
    showRamps();
    const std::vector<uint32_t> before(viewerState.shown->colour.data(),
                                       viewerState.shown->colour.data() + 256);
    for (const int code : {int{'X'}, int{'K'}, characterKey('['), characterKey('=')}) key(code);
    redraw();
    EXPECT_TRUE(std::equal(before.begin(), before.end(), viewerState.shown->colour.data()));
}

TEST_F(LutCommandsTest, ResettingSetsTheFourControlsAndNothingElse) {
    showRamps();
    for (const Control& control : controls) (now().*control.values) = {2, 3, 4};
    key('X');
    key('X', shift);
    key('K');
    key(keyF1);
    EXPECT_TRUE(key('D'));
    for (const Control& control : controls)
        for (const float result : value(control)) EXPECT_EQ(result, control.neutral);
    for (const bool negated : now().negate) EXPECT_TRUE(negated);
    EXPECT_TRUE(now().maskInverted);
    EXPECT_TRUE(now().cineonLog);
}

TEST_F(LutCommandsTest, XNegatesAllChannelsOrTheControlChannelOnly) {
    struct Row {
        int functionKey;
        unsigned held;
        std::array<bool, 3> negated;
    };
    const Row rows[] = {
        {4, none, {true, true, true}},    {3, none, {true, false, false}},
        {2, none, {false, true, false}},  {1, none, {false, false, true}},
        {3, shift, {true, false, false}},  // a complement counts as its channel
        {1, shift, {false, false, true}},
    };
    showRamps();
    for (const Row& row : rows) {
        key(keyF1 + row.functionKey - 1, row.held);
        EXPECT_TRUE(key('X'));
        EXPECT_EQ(now().negate, row.negated);
        Curve negative, same;
        negative.negate = true;
        expectCurves({row.negated[0] ? negative : same, row.negated[1] ? negative : same,
                      row.negated[2] ? negative : same});
        EXPECT_TRUE(key('X'));  // and back
        EXPECT_EQ(now().negate, (std::array<bool, 3>{}));
        expectStored();
    }
}

TEST_F(LutCommandsTest, XWithShiftInvertsTheMaskOnly) {
    showRamps();
    key('A');
    EXPECT_TRUE(key('X', shift));
    EXPECT_TRUE(now().maskInverted);
    expectPicture([](int x, int y) { return (255 - (stored(x, y) >> 24)) * 0x010101u; });
    EXPECT_EQ(now().negate, (std::array<bool, 3>{}));
    key('C');
    expectStored();
    key('X', shift);
    EXPECT_FALSE(now().maskInverted);
}

TEST_F(LutCommandsTest, XWithControlEndsEveryNegation) {
    showRamps();
    key('X');
    key('X', shift);
    key(keyF1 + 1);
    EXPECT_TRUE(key('X', control));
    EXPECT_EQ(now().negate, (std::array<bool, 3>{}));
    EXPECT_FALSE(now().maskInverted);
    EXPECT_EQ(viewerState.lutActive, 0);
}

TEST_F(LutCommandsTest, KTogglesTheFilmConversionAndShiftItsAlternative) {
    struct Row {
        unsigned held;
        bool film, exposure;
    };
    const Row rows[] = {{none, true, false},  {shift, false, true}, {none, true, false},
                        {none, false, false}, {shift, false, true}, {shift, false, false}};
    showRamps();
    for (const Row& row : rows) {
        EXPECT_TRUE(key('K', row.held));
        EXPECT_EQ(now().cineonLog, row.film);
        EXPECT_EQ(now().exposureCurve, row.exposure);
        EXPECT_EQ(viewerState.cineonLog, row.film);
        EXPECT_EQ(viewerState.lutActive, row.film || row.exposure);
        Curve curve;
        curve.film = row.film;
        curve.exposure = row.exposure;
        expectCurves({curve, curve, curve});
    }
}

TEST_F(LutCommandsTest, QueuedRepeatsOfAnAdjustingKeyAreDropped) {
    showRamps();
    std::vector<int> codes = {'D'};
    for (const Control& control : controls) {
        codes.push_back(control.downKey);
        codes.push_back(control.upKey);
    }
    for (const int code : codes) {
        clearEvents();
        for (int i = 0; i < 5; ++i) postEvent(code, 1);
        postEvent('R', 1);
        postEvent(code, 0);  // its release stays
        key(code);
        ASSERT_EQ(windowContext().queue.count(), 2) << code;
        EXPECT_EQ(waitEvent().code, 'R') << code;
        const InputEvent last = waitEvent();
        EXPECT_EQ(last.code, code);
        EXPECT_EQ(last.value, 0);
    }
}

TEST_F(LutCommandsTest, AHeldKeyStepsOncePerPass) {
    showRamps();
    headless::script([] {
        for (int i = 0; i < 10; ++i) headless::press(characterKey(']'));
        headless::release(characterKey(']'));
    });
    float gamma = 0;
    headless::whenIdle([&] {
        gamma = now().gamma[0];
        headless::close();
    });
    runViewerLoop(viewerState);
    EXPECT_FLOAT_EQ(gamma, 1.01f);
}

TEST_F(LutCommandsTest, TheTableIsBackAtItsStartValuesAfterTheSource) {
    viewerState.defGamma = 2;
    viewerState.cineonLog = 1;
    startDisplayLut(viewerState);
    for (const bool filmOff : {false, true}) {
        showRamps();
        EXPECT_EQ(now().gamma, (std::array<float, 3>{2, 2, 2}));
        for (const Control& control : controls) key(control.upKey, shift);
        key('X');
        key('X', shift);
        key('K', filmOff ? none : shift);
        headless::script([] { postEvent(EV_QUIT, 1); });
        runViewerLoop(viewerState);
        EXPECT_EQ(now().gamma, (std::array<float, 3>{2, 2, 2}));
        EXPECT_EQ(now().gain, (std::array<float, 3>{1, 1, 1}));
        EXPECT_EQ(now().saturation, (std::array<float, 3>{1, 1, 1}));
        EXPECT_EQ(now().offset, (std::array<float, 3>{}));
        EXPECT_EQ(now().negate, (std::array<bool, 3>{}));
        EXPECT_FALSE(now().maskInverted);
        EXPECT_FALSE(now().exposureCurve);
        EXPECT_TRUE(now().cineonLog);
        EXPECT_EQ(viewerState.cineonLog, 1);
        EXPECT_EQ(viewerState.lutActive, 1);
        for (int i = 0; i < 256; ++i) EXPECT_EQ(viewerState.lut.table(0)[i], i);
    }
}

TEST_F(LutCommandsTest, TheTableIsKeptInSequenceMode) {
    viewerState.sequenceMode = 1;
    showRamps();
    key(characterKey('='), shift | alt);
    key('X');
    headless::script([] { postEvent(EV_QUIT, 1); });
    runViewerLoop(viewerState);
    EXPECT_EQ(now().gain[0], 2);
    EXPECT_TRUE(now().negate[0]);
}

}  // namespace vistel
