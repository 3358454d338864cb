// Drawing in the viewer's window, in client pixels with the origin at the bottom left.
#pragma once

#include <cstdint>
#include <string_view>

namespace vistel {

// Makes the rendering context when there is none and resets the pixel pipeline. False after an
// error box when the system refuses.
[[nodiscard]] bool createDrawing();

void setDoubleBuffer(bool on);

// 1 red, 2 black, 3 white; other indices change nothing.
void setColourIndex(int index);

// Red in bits 0-7, blue in bits 8-15, green in bits 16-23, alpha in bits 24-31: green and blue are
// in this order on purpose, callers pack their colours so.
void setColourPacked(uint32_t packed);

// Fills the scissor rectangle (the window, when none is in force) with the current colour.
void clearDrawing();

// Pixels into the rectangle with both corners inclusive, one window pixel each; rows as wide as the
// rectangle, or as the row length says when it is not 0, which is set only when `which` is 1. The
// interface is whole: neither has a caller in the viewer, which draws frames by their fit.
void drawPixelRectangle(int x0, int y0, int x1, int y1, const uint32_t* pixels);
void setUnpackRowLength(int which, int pixels);

void fillRectangle(int x0, int y0, int x1, int y1);  // corners inclusive
void penMove(int x, int y);
void penDraw(int x, int y);

int textWidth(std::string_view text);
// Baseline start at (x, y), in the current colour.
void drawText(int x, int y, std::string_view text);

// Shows what was drawn over or instead of the picture.
void showDrawing();

}  // namespace vistel
