// The buttons of the control bar as pixels: drawn from shapes, at any size, in the colours of the
// desktop. Shared by all systems.
#pragma once

#include <cstdint>
#include <vector>

namespace vistel::platform {

enum class BarIcon {
    toStart,
    stepBack,
    playBackward,
    playForward,
    stepForward,
    toEnd,
    pause,
    channels,
    mask,
    depth,
};

// What a button says.
struct BarButtonLook {
    BarIcon icon = BarIcon::playForward;
    bool active = false;  // its mode is in force
    bool enabled = true;
    bool operator==(const BarButtonLook&) const = default;
};

// What the user's hand does to it.
enum class BarTouch { none, hovered, pressed };

// 0xRRGGBB. The text's colour differs from the face's, light on dark or dark on light.
struct BarColours {
    uint32_t face, text, highlight;
};

// Opaque pixels 0xFFRRGGBB, rows from above.
std::vector<uint32_t> drawBarButton(const BarButtonLook& look, BarTouch touch,
                                    const BarColours& colours, int width, int height);

}  // namespace vistel::platform
