#include "burnt_in.h"

#include <algorithm>
#include <string>

namespace vistel::demo {

namespace {

constexpr uint32_t white = 0x00FFFFFF, plate = 0x00181818;

// Digits of 3 x 5 cells, rows from top to bottom, three bits each.
constexpr uint16_t digits[10] = {
    0b111101101101111, 0b010110010010111, 0b111001111100111, 0b111001111001111, 0b101101111001001,
    0b111100111001111, 0b111100111101111, 0b111001010010010, 0b111101111101111, 0b111101111001111,
};

void fill(Picture& picture, int x0, int y0, int width, int height, uint32_t colour) {
    for (int y = std::max(0, y0); y < std::min(picture.height, y0 + height); ++y) {
        for (int x = std::max(0, x0); x < std::min(picture.width, x0 + width); ++x) {
            uint32_t& pixel = picture.colour[size_t(y) * picture.width + x];
            pixel = (pixel & 0xFF000000u) | colour;
        }
    }
}

void drawDigit(Picture& picture, int digit, int left, int bottom, int cell) {
    for (int i = 0; i < 15; ++i) {
        if (!(digits[digit] >> (14 - i) & 1)) continue;
        fill(picture, left + i % 3 * cell, bottom + (4 - i / 3) * cell, cell, cell, white);
    }
}

}  // namespace

void burnInNumber(Picture& picture, int number) {
    const int cell = std::max(1, picture.height / 90);
    const std::string text = std::to_string(number);
    fill(picture, cell, cell, (int(text.size()) * 4 + 1) * cell, 7 * cell, plate);
    for (size_t i = 0; i < text.size(); ++i) {
        drawDigit(picture, text[i] - '0', cell * (2 + 4 * int(i)), 2 * cell, cell);
    }
}

void burnInFlash(Picture& picture) {
    const int side = picture.height / 8;
    fill(picture, picture.width - side, picture.height - side, side, side, white);
}

}  // namespace vistel::demo
