// Drawing in the viewer's window, in client pixels with the origin at the bottom left.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
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

void setUnpackRowLength(int which, int pixels);  // only when which is 1

// Pixels into the rectangle with both corners inclusive, one window pixel each.
void drawPixelRectangle(int x0, int y0, int x1, int y1, const uint32_t* pixels);

void fillRectangle(int x0, int y0, int x1, int y1);  // corners inclusive
void penMove(int x, int y);
void penDraw(int x, int y);

int textWidth(std::string_view text);
// Baseline start at (x, y), in the current colour.
void drawText(int x, int y, std::string_view text);

// Keeps a copy of the picture that is on screen (the pass is drawn once more into it), so that
// bands and menus can cover it and be taken away again. Only when none is kept already.
void saveFrontImage();
// Shows the kept picture again.
void restoreFrontImage();
// Shows what `draw` draws over the kept picture, until it is restored.
void showOverlay(const std::function<void()>& draw);
// Shows a black band of 20 rows with white text at the foot of the kept picture: as wide as the
// window, or so many columns from `left` on.
void showMessageBand(const std::string& text);
void showMessageBand(const std::string& text, int left, int columns);

// Presents what was drawn; the kept picture is then out of date.
void swapDrawing();

}  // namespace vistel
