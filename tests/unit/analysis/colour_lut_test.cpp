// The tables of the look-up table, and what applying them changes.

#include "analysis/colour_lut.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <vector>

namespace vistel {
namespace {

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

LutControls with(const std::function<void(LutControls&)>& change) {
    LutControls controls;
    change(controls);
    return controls;
}

ColourLut built(const std::function<void(LutControls&)>& change) {
    ColourLut lut;
    change(lut.controls);
    lut.build();
    return lut;
}

void gammaOf2(LutControls& c) { c.gamma = {2, 2, 2}; }
void negateAll(LutControls& c) { c.negate = {true, true, true}; }
void film(LutControls& c) { c.cineonLog = true; }

TEST(ColourLut, IsTheIdentityAndOutOfUseAtFirst) {
    const ColourLut lut;
    EXPECT_FALSE(lut.lutActive);
    for (int plane = 0; plane < 4; ++plane)
        for (int i = 0; i < 256; ++i) ASSERT_EQ(lut.table(plane)[i], i) << plane;
}

TEST(ColourLut, NeutralControlsGiveTheIdentityAndLeaveItOutOfUse) {
    const ColourLut lut = built([](LutControls&) {});
    EXPECT_FALSE(lut.lutActive);
    for (int plane = 0; plane < 4; ++plane)
        for (int i = 0; i < 256; ++i) ASSERT_EQ(lut.table(plane)[i], i) << plane;
}

TEST(ColourLut, EntriesOfOneControlAtATime) {
    const struct {
        const char* name;
        std::function<void(LutControls&)> change;
        int input, entry;
    } rows[] = {
        {"negate", negateAll, 0, 255},
        {"negate", negateAll, 1, 254},
        {"negate", negateAll, 255, 0},
        {"gamma 2", gammaOf2, 128, 64},
        {"gamma 2", gammaOf2, 0, 0},
        {"gamma 2", gammaOf2, 255, 255},
        {"gamma 1/2",
         [](LutControls& c) {
             c.gamma = {0.5f, 0.5f, 0.5f};
         },
         64, 128},
        {"gamma 0",
         [](LutControls& c) {
             c.gamma = {0, 0, 0};
         },
         0, 255},
        {"gamma -1 of 0",
         [](LutControls& c) {
             c.gamma = {-1, -1, -1};
         },
         0, 255},
        {"gain 2",
         [](LutControls& c) {
             c.gain = {2, 2, 2};
         },
         100, 200},
        {"gain 2",
         [](LutControls& c) {
             c.gain = {2, 2, 2};
         },
         128, 255},
        {"gain 0",
         [](LutControls& c) {
             c.gain = {0, 0, 0};
         },
         255, 0},
        {"gain -1",
         [](LutControls& c) {
             c.gain = {-1, -1, -1};
         },
         255, 0},
        {"offset 10",
         [](LutControls& c) {
             c.offset = {10, 10, 10};
         },
         100, 110},
        {"offset -10",
         [](LutControls& c) {
             c.offset = {-10, -10, -10};
         },
         5, 0},
        {"offset 255",
         [](LutControls& c) {
             c.offset = {255, 255, 255};
         },
         0, 255},
        {"offset 1e10",
         [](LutControls& c) {
             c.offset = {1e10f, 1e10f, 1e10f};
         },
         0, 255},
        {"offset -1e10",
         [](LutControls& c) {
             c.offset = {-1e10f, -1e10f, -1e10f};
         },
         255, 0},
        // The upper half: (2x - 1)^2 / 2 + 1/2; the lower its mirror image.
        {"saturation 2",
         [](LutControls& c) {
             c.saturation = {2, 2, 2};
         },
         192, 160},
        {"saturation 2",
         [](LutControls& c) {
             c.saturation = {2, 2, 2};
         },
         63, 95},
        {"saturation 2",
         [](LutControls& c) {
             c.saturation = {2, 2, 2};
         },
         0, 0},
        {"saturation 2",
         [](LutControls& c) {
             c.saturation = {2, 2, 2};
         },
         255, 255},
        {"saturation 0",
         [](LutControls& c) {
             c.saturation = {0, 0, 0};
         },
         127, 0},
        {"saturation 0",
         [](LutControls& c) {
             c.saturation = {0, 0, 0};
         },
         128, 255},
        // 10^(0.0033333 (1023 - 800)) is above 1 and becomes 1: 1 - e^-4.4 = 0.98772.
        {"film", film, 255, 252},
        // 10^(-2.66664) = 0.0021546; ^0.78125 = 0.0082532; 1 - e^(-4.4 ...) = 0.035663.
        {"film", film, 0, 9},
        {"exposure", [](LutControls& c) { c.exposureCurve = true; }, 0, 0},
        {"exposure", [](LutControls& c) { c.exposureCurve = true; }, 255, 252},
        // 0.25^0.78125 = 0.33856; 1 - e^-1.48966 = 0.77455.
        {"exposure of 1/4",
         [](LutControls& c) {
             c.exposureCurve = true;
             c.gain = {0, 0, 0};
             c.offset = {63.75f, 63.75f, 63.75f};
         },
         17, 198},
        {"no number",
         [](LutControls& c) {
             c.gain = {notANumber, notANumber, notANumber};
         },
         9, 0},
        {"power of a negative number",
         [](LutControls& c) {
             c.exposureCurve = true;
             c.offset = {-20, -20, -20};
         },
         5, 0},
    };
    for (const auto& row : rows)
        for (int channel = 0; channel < lutChannels; ++channel)
            EXPECT_EQ(lutEntry(with(row.change), channel, row.input), row.entry)
                << row.name << " channel " << channel << " input " << row.input;
}

TEST(ColourLut, TheControlsWorkInTheirOrder) {
    const auto entry = [](int input, const std::function<void(LutControls&)>& change) {
        return int{lutEntry(with(change), 0, input)};
    };
    // Gamma before gain: 2 x (1/4)^(1/2); the other way round 0.7071.
    EXPECT_EQ(entry(64, [](LutControls& c) { c.gamma[0] = 0.5f, c.gain[0] = 0.5f; }), 64);
    // Gain before offset: 1/2 x 200 + 50.
    EXPECT_EQ(entry(200, [](LutControls& c) { c.gain[0] = 0.5f, c.offset[0] = 50; }), 150);
    // Offset before negation: 255 - (100 + 50).
    EXPECT_EQ(entry(100, [](LutControls& c) { c.offset[0] = 50, c.negate[0] = true; }), 105);
    // Negation before the film conversion: black becomes white.
    EXPECT_EQ(entry(0, [](LutControls& c) { c.negate[0] = true, c.cineonLog = true; }), 252);
    // Saturation before gamma: ((1/2)^2 / 2 + 1/2)^2 = 0.390625 about 3/4.
    EXPECT_EQ(entry(191, [](LutControls& c) { c.saturation[0] = 2, c.gamma[0] = 2; }), 99);
    // Nothing is clamped between the steps: a gain of 4 and an offset of -510.
    EXPECT_EQ(entry(191, [](LutControls& c) { c.gain[0] = 4, c.offset[0] = -510; }), 254);
}

TEST(ColourLut, TheBlackValueOfFilmBelongsToItsChannel) {
    const LutControls controls = with([](LutControls& c) {
        c.cineonLog = true;
        c.black = {0, 95, 223};
    });
    // At full input: exponents 0.0033333 x 223, x 128 and x 0, all at least 0.
    for (int channel = 0; channel < lutChannels; ++channel)
        EXPECT_EQ(lutEntry(controls, channel, 255), 252);
    // 128 is 513.5 of 1023.
    const float exponents[] = {-286.49f, -381.49f, -509.49f};
    for (int channel = 0; channel < lutChannels; ++channel) {
        const double y = std::pow(10.0, exponents[channel] * 0.0033333);
        const double shown = 1 - std::exp(-4.4 * std::pow(y, 0.78125));
        EXPECT_EQ(lutEntry(controls, channel, 128), int(shown * 255 + 0.5)) << channel;
    }
}

TEST(ColourLut, TheExposureCurveChangesNothingOnceTheFilmConversionIsOn) {
    const LutControls one = with(film);
    const LutControls both = with([](LutControls& c) { c.cineonLog = c.exposureCurve = true; });
    for (int i = 0; i < 256; ++i) EXPECT_EQ(lutEntry(one, 0, i), lutEntry(both, 0, i));
}

TEST(ColourLut, TheTablesHoldTheEntriesOfTheirChannels) {
    const ColourLut lut = built([](LutControls& c) {
        c.gain = {0.5f, 1.5f, 1};
        c.gamma = {2, 0.7f, 1.3f};
        c.saturation = {1, 2, 0.5f};
        c.offset = {10, 0, -3};
        c.negate = {true, false, false};
    });
    for (int i = 0; i < 256; ++i) {
        EXPECT_EQ(lut.table(0)[i], i) << "the mask's table stays the identity";
        for (int channel = 0; channel < lutChannels; ++channel)
            ASSERT_EQ(lut.table(channel + 1)[i], lutEntry(lut.controls, channel, i));
    }
}

TEST(ColourLut, BuildingPutsItInUseUnlessTheControlsAreNeutral) {
    ColourLut lut;
    lut.controls.negate[1] = true;
    lut.build();
    EXPECT_TRUE(lut.lutActive);
    lut.controls.negate[1] = false;
    lut.build();
    EXPECT_FALSE(lut.lutActive);
    lut.controls.cineonLog = true;
    lut.build();
    EXPECT_TRUE(lut.lutActive);
}

TEST(ColourLut, AViewShowsThesePlanes) {
    const struct {
        int view, selected;
        unsigned planes;
    } rows[] = {
        {0, 4, 0b0001}, {1, 4, 0b0010}, {2, 4, 0b0100}, {3, 4, 0b1000},
        {4, 0, 0b1110}, {5, 0, 0b1110}, {6, 0, 0b1110},                  // the colours
        {7, 0, 0b0001}, {7, 1, 0b0010}, {8, 2, 0b0100}, {8, 3, 0b1000},  // the selected plane
        {7, 4, 0b1111}, {8, 5, 0b1111}, {8, 6, 0b1111},                  // all
    };
    for (const auto& row : rows)
        EXPECT_EQ(planesOfView(ChannelMode{row.view}, ChannelMode{row.selected}), row.planes)
            << row.view << " " << row.selected;
}

TEST(ColourLut, OnlyThePlanesAskedForAreWritten) {
    const ColourLut lut = built(negateAll);
    const std::vector<uint32_t> stored(19, 0x40302010);
    for (unsigned planes = 0; planes < 16; ++planes) {
        std::vector<uint32_t> display(19, 0xABABABAB);
        lut.apply(planes, stored.data(), stored.size(), display.data());
        const uint32_t changed = planeBits(planes);
        EXPECT_EQ(display,
                  std::vector<uint32_t>(19, (0x40CFDFEF & changed) | (0xABABABAB & ~changed)))
            << planes;
    }
}

TEST(ColourLut, ApplyingIsLookingUpEveryByteInItsPlanesTable) {
    const ColourLut lut = built([](LutControls& c) {
        c.gamma = {0.5f, 1.5f, 2};
        c.offset = {3, -8, 20};
        c.cineonLog = true;
    });
    std::vector<uint32_t> stored, display(256);
    for (uint32_t i = 0; i < 256; ++i) stored.push_back(i * 0x01010101u ^ 0x00FF5500);
    lut.apply(15, stored.data(), stored.size(), display.data());
    for (size_t i = 0; i < stored.size(); ++i)
        for (int plane = 0; plane < 4; ++plane) {
            const int shift = 8 * (3 - plane);
            EXPECT_EQ(display[i] >> shift & 255, lut.table(plane)[stored[i] >> shift & 255]);
        }
}

TEST(ColourLut, WhileOutOfUseTheStoredPixelsAreShownThemselves) {
    const ColourLut lut;
    const uint32_t stored[3] = {1, 2, 3};
    DisplayBuffer display;
    EXPECT_EQ(lut.prepare(ChannelMode::all, ChannelMode::all, stored, 3, display), stored);
    EXPECT_EQ(display.capacity(), 0u);
}

TEST(ColourLut, InUseItShowsACorrectedCopyAndLeavesTheStoredPixels) {
    const ColourLut lut = built(negateAll);
    const std::vector<uint32_t> stored(5, 0x80402010), before = stored;
    DisplayBuffer display;
    const uint32_t* shown =
        lut.prepare(ChannelMode::all, ChannelMode::all, stored.data(), 5, display);
    ASSERT_EQ(shown, display.pixels());
    EXPECT_EQ(stored, before);
    for (int i = 0; i < 5; ++i) EXPECT_EQ(shown[i], 0x00BFDFEFu) << "a new copy has no mask";
}

TEST(ColourLut, BytesOfPlanesThatAViewDoesNotShowKeepWhatTheyHeld) {
    ColourLut lut = built(negateAll);
    const std::vector<uint32_t> stored(5, 0x80402010);
    DisplayBuffer display;
    ASSERT_TRUE(lut.prepare(ChannelMode::all, ChannelMode::all, stored.data(), 5, display));
    lut.controls.negate.fill(false);
    lut.controls.gain = {0, 0, 0};
    lut.build();
    const uint32_t* shown =
        lut.prepare(ChannelMode::green, ChannelMode::all, stored.data(), 5, display);
    for (int i = 0; i < 5; ++i) EXPECT_EQ(shown[i], 0x00BF00EFu);
    shown = lut.prepare(ChannelMode::bump, ChannelMode::luminance, stored.data(), 5, display);
    for (int i = 0; i < 5; ++i) EXPECT_EQ(shown[i], 0x80000000u);
}

TEST(ColourLut, TheCopyGrowsWithLargerFramesAndStaysForSmallerOnes) {
    const ColourLut lut = built(negateAll);
    const std::vector<uint32_t> stored(3000, 0);
    DisplayBuffer display;
    ASSERT_TRUE(lut.prepare(ChannelMode::all, ChannelMode::all, stored.data(), 1000, display));
    EXPECT_GE(display.capacity(), 1000u);
    ASSERT_TRUE(lut.prepare(ChannelMode::all, ChannelMode::all, stored.data(), 3000, display));
    const size_t capacity = display.capacity();
    EXPECT_GE(capacity, 3000u);
    const uint32_t* place = display.pixels();
    EXPECT_EQ(lut.prepare(ChannelMode::all, ChannelMode::all, stored.data(), 10, display), place);
    EXPECT_EQ(display.capacity(), capacity);
}

TEST(ColourLut, WithoutMemoryForTheCopyThereIsNothingToShow) {
    const ColourLut lut = built(negateAll);
    const uint32_t stored[1] = {};
    DisplayBuffer display;
    constexpr size_t tooMany = std::numeric_limits<size_t>::max() / 5;
    EXPECT_EQ(lut.prepare(ChannelMode::all, ChannelMode::all, stored, tooMany, display), nullptr);
}

}  // namespace
}  // namespace vistel
