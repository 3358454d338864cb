#include "test_chart.h"

#include <algorithm>
#include <cmath>

namespace vistel {

namespace {

constexpr int width = 640, height = 480;
constexpr int square = 40;  // of the grid

struct Colour {
    int red, green, blue;
};
constexpr Colour white{255, 255, 255}, black{0, 0, 0};
constexpr Colour background{52, 56, 60}, gridLine{92, 96, 100};

struct Box {
    int left, top, right, bottom;  // right and bottom are outside
};
constexpr Box bars{80, 40, 560, 120}, fullBars{80, 120, 560, 150};
constexpr Box ramps{80, 330, 560, 390}, stair{80, 390, 560, 440};
constexpr Box uprightLines{40, 200, 160, 280}, levelLines{480, 200, 600, 280};
constexpr double centreX = 320, centreY = 240, radius = 79.5, discRadius = 48;

bool inside(const Box& box, int x, int y) {
    return x >= box.left && x < box.right && y >= box.top && y < box.bottom;
}

// Which of `count` equal columns of the box.
int columnOf(const Box& box, int x, int count) {
    return (x - box.left) * count / (box.right - box.left);
}

Colour barColour(const Box& box, int x, int level) {
    const int bar = 7 - columnOf(box, x, 8);  // white yellow cyan green magenta red blue black
    return {bar & 2 ? level : 0, bar & 4 ? level : 0, bar & 1 ? level : 0};
}

Colour rampColour(int x, int y) {
    const int value = (x - ramps.left) * 255 / (ramps.right - ramps.left - 1);
    const int band = (y - ramps.top) * 4 / (ramps.bottom - ramps.top);
    if (band == 3) return {value, value, value};
    return {band == 0 ? value : 0, band == 1 ? value : 0, band == 2 ? value : 0};
}

// Lines 4, 3, 2 and 1 pixels wide in four fields, then a chequer of single pixels.
Colour lineColour(int along, int across, int length) {
    const int field = along * 5 / length;
    const int thickness = 4 - field;
    const bool lit = field == 4 ? ((along + across) & 1) == 0 : along / thickness % 2 == 0;
    return lit ? white : black;
}

bool cornerMark(int x, int y) {
    const int fromX = std::min(x, width - 1 - x), fromY = std::min(y, height - 1 - y);
    return (fromX < 3 && fromY < 24) || (fromY < 3 && fromX < 24);
}

Colour fieldColour(int x, int y) {
    if (inside(bars, x, y)) return barColour(bars, x, 191);
    if (inside(fullBars, x, y)) return barColour(fullBars, x, 255);
    if (inside(ramps, x, y)) return rampColour(x, y);
    if (inside(stair, x, y)) {
        const int value = columnOf(stair, x, 16) * 17;
        return {value, value, value};
    }
    if (inside(uprightLines, x, y))
        return lineColour(x - uprightLines.left, y, uprightLines.right - uprightLines.left);
    if (inside(levelLines, x, y))
        return lineColour(y - levelLines.top, x, levelLines.bottom - levelLines.top);
    const bool grid = x % square == 0 || y % square == 0;
    return grid ? gridLine : background;
}

Colour colourAt(int x, int y) {
    if (cornerMark(x, y)) return x < width / 2 && y < height / 2 ? Colour{255, 48, 32} : white;
    const Colour under = fieldColour(x, y);
    // The circle's edge is smooth: coverage by the distance from its line.
    const double distance = std::hypot(x + 0.5 - centreX, y + 0.5 - centreY);
    const double cover = std::clamp(1.5 - std::abs(distance - radius), 0.0, 1.0);
    const bool cross = distance < radius && (x == 320 || y == 240);
    const auto blend = [&](int value) {
        return static_cast<int>(std::lround(value + (255 - value) * (cross ? 1.0 : cover)));
    };
    return {blend(under.red), blend(under.green), blend(under.blue)};
}

// A disc fades from clear in the middle; one pixel at each edge is clear too.
int maskAt(int x, int y) {
    if (x == 0 || y == 0 || x == width - 1 || y == height - 1) return 0;
    const double distance = std::hypot(x + 0.5 - centreX, y + 0.5 - centreY);
    return static_cast<int>(std::lround(std::min(distance / discRadius, 1.0) * 255));
}

}  // namespace

Failure makeTestChart(Picture& picture) {
    if (Failure failure = picture.allocate(width, height, false)) return failure;
    picture.mask = true;
    for (int y = 0; y < height; ++y) {
        uint8_t* pixel = picture.row(static_cast<uint32_t>(y));
        for (int x = 0; x < width; ++x, pixel += 4) {
            const Colour colour = colourAt(x, y);
            pixel[0] = static_cast<uint8_t>(colour.red);
            pixel[1] = static_cast<uint8_t>(colour.green);
            pixel[2] = static_cast<uint8_t>(colour.blue);
            pixel[3] = static_cast<uint8_t>(maskAt(x, y));
        }
    }
    return {};
}

}  // namespace vistel
