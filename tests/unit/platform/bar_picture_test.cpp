// The buttons of the control bar as pixels.
#include "platform/bar_picture.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <set>

namespace vistel::platform {

namespace {

constexpr BarIcon icons[] = {BarIcon::toStart,     BarIcon::stepBack,    BarIcon::playBackward,
                             BarIcon::playForward, BarIcon::stepForward, BarIcon::toEnd,
                             BarIcon::pause,       BarIcon::channels,    BarIcon::mask,
                             BarIcon::depth};
constexpr BarColours light{0xF0F0F0, 0x000000, 0x3080C0}, dark{0x202020, 0xE8E8E8, 0x3080C0};

std::vector<uint32_t> draw(const BarButtonLook& look, BarTouch touch = BarTouch::none,
                           const BarColours& colours = light, int width = 28, int height = 23) {
    return drawBarButton(look, touch, colours, width, height);
}

int brightness(uint32_t pixel) {
    return static_cast<int>((pixel >> 16 & 255) + (pixel >> 8 & 255) + (pixel & 255));
}

// The part of the pixels that differ clearly from the face.
double inked(const std::vector<uint32_t>& pixels, uint32_t face) {
    size_t count = 0;
    for (const uint32_t pixel : pixels)
        count += std::abs(brightness(pixel) - brightness(face)) > 90 ? 1 : 0;
    return double(count) / double(pixels.size());
}

}  // namespace

TEST(BarPicture, EachIconIsAnother) {
    std::set<std::vector<uint32_t>> pictures;
    for (const BarIcon icon : icons) pictures.insert(draw({.icon = icon}));
    EXPECT_EQ(pictures.size(), std::size(icons));
}

TEST(BarPicture, EachIconShowsOnLightAndOnDarkAtBothDensities) {
    for (const BarIcon icon : icons) {
        for (const BarColours& colours : {light, dark}) {
            const double once = inked(draw({.icon = icon}, BarTouch::none, colours), colours.face);
            const double twice =
                inked(draw({.icon = icon}, BarTouch::none, colours, 56, 46), colours.face);
            EXPECT_GT(once, 0.05) << static_cast<int>(icon);
            EXPECT_NEAR(once, twice, 0.04) << static_cast<int>(icon);
        }
    }
}

TEST(BarPicture, BackwardIsTheMirrorImageOfForward) {
    const std::pair<BarIcon, BarIcon> pairs[] = {{BarIcon::playBackward, BarIcon::playForward},
                                                 {BarIcon::stepBack, BarIcon::stepForward},
                                                 {BarIcon::toStart, BarIcon::toEnd}};
    constexpr int width = 29, height = 24;  // the icon's 16 pixels lie in the middle of 28 and 24
    for (const auto& [back, forward] : pairs) {
        const auto left = draw({.icon = back}, BarTouch::none, light, width - 1, height);
        const auto right = draw({.icon = forward}, BarTouch::none, light, width - 1, height);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width - 1; ++x)
                EXPECT_NEAR(brightness(left[size_t(y * (width - 1) + x)]),
                            brightness(right[size_t(y * (width - 1) + width - 2 - x)]), 3);
    }
}

TEST(BarPicture, HandAndModeShow) {
    const auto plain = draw({});
    const auto hovered = draw({}, BarTouch::hovered), pressed = draw({}, BarTouch::pressed);
    const auto active = draw({.active = true});
    EXPECT_EQ(plain[0], 0xFF000000 | light.face);
    EXPECT_LT(brightness(hovered[30]), brightness(plain[30]));
    EXPECT_LT(brightness(pressed[30]), brightness(hovered[30]));
    EXPECT_GT(int(active[30] & 255), int(active[30] >> 16 & 255));  // of the highlight's blue
}

TEST(BarPicture, AGreyButtonIsFaintAndDoesNotMindTheHand) {
    const auto grey = draw({.enabled = false});
    EXPECT_EQ(grey, draw({.enabled = false}, BarTouch::pressed));
    EXPECT_EQ(inked(grey, light.face) > 0, true);
    int darkest = 765;
    for (const uint32_t pixel : grey) darkest = std::min(darkest, brightness(pixel));
    EXPECT_GT(darkest, 300);
}

}  // namespace vistel::platform
