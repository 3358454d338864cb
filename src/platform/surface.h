// The OpenGL surface of a window. Coordinates are client pixels, origin at the bottom left; image
// pixel (0, 0) drawn at (x, y) covers exactly window pixel (x, y).
//
// Every window has a surface, a rendering context and a drawing state of its own (buffers,
// viewport, scissor, colour); each call says which it means, and makes it the current one of the
// thread when it is not. Calls are made on the window's thread. What is set before there is a
// surface holds for it; drawing then, or without a window, does nothing.
//
// win32 and linux implement createSurface, destroySurface, surfaceExists and swapBuffers each; all
// else they share (platform/gl). headless implements all of it.
//
// Pixels are 4 bytes, red in the lowest byte, then green, blue, alpha.
//
// Drawing goes to the back buffer when double buffering is selected, else to the window's visible
// content. The front buffer is never read (software drivers and composited desktops cannot).
#pragma once

#include <cstdint>
#include <string_view>

#include "platform/text.h"

namespace vistel::platform {

struct Window;

// Chooses a pixel format, creates the rendering context on the window and makes it current; when
// one exists, only resets the pixel pipeline. False (after an error box) when the system refuses,
// or there is no window.
[[nodiscard]] bool createSurface(Window* window);
void destroySurface(Window* window);
bool surfaceExists(const Window* window);

void setDoubleBuffered(Window* window, bool on);
// Off in a new surface.
void setDithering(Window* window, bool on);

// Viewport of the whole client area, with a two-dimensional orthographic projection over its
// pixels, whose centres are at whole coordinates (from -0.5 to width - 0.5).
void setViewport(Window* window, int width, int height);

void setScissorTest(Window* window, bool on);
void setScissor(Window* window, int x, int y, int width, int height);

void setColour(Window* window, uint8_t red, uint8_t green, uint8_t blue, uint8_t alpha);
// Clears the scissor rectangle with the current colour.
void clearSurface(Window* window);

// Draws a rectangle of an image, each image pixel as a zoom x zoom block, lower-left block at (x,
// y). `pixels` points at the whole image, rows from bottom to top, `rowLength` pixels apart; the
// rectangle starts at (column, row) and is width x height image pixels. What the scissor hides is
// not uploaded.
struct PixelSource {
    const uint32_t* pixels = nullptr;
    int rowLength = 0;
    int column = 0, row = 0;
    int width = 0, height = 0;
};
void drawPixels(Window* window, int x, int y, const PixelSource& source, int zoom);

// Filled rectangle, all four edges inclusive.
void fillRectangle(Window* window, int x0, int y0, int x1, int y1);
// One pixel wide.
void drawLine(Window* window, int x0, int y0, int x1, int y1);
// A line of UTF-8 text in the current colour, baseline start at (x, y): each plain (ASCII)
// character takes its own width (textWidth of it alone). Characters that have been drawn once are
// kept on the surface: drawing them again allocates and uploads nothing.
void drawText(Window* window, FontHandle* font, int x, int y, std::string_view text);

// Reads back what has been drawn since the last swap (rows from bottom to top, tightly packed).
void readPixels(Window* window, int x, int y, int width, int height, uint32_t* pixels);

void flushSurface(Window* window);
void swapBuffers(Window* window);

}  // namespace vistel::platform
