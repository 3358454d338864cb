// The drawing state of a window's surface, shared by the drawing routines.
#pragma once

#include <cstdint>

#include "platform/gl/gl_api.h"
#include "platform/gl/gl_surface.h"
#include "platform/surface.h"

namespace vistel::platform {

// A texture that grows to the largest rectangle drawn through it. Its sides are powers of two,
// which every OpenGL 1.1 takes.
struct GrowingTexture {
    GLuint name = 0;
    int width = 0, height = 0;
};

// Window pixels, right and top exclusive.
struct PixelBox {
    int left = 0, bottom = 0, right = 0, top = 0;
    bool empty() const { return left >= right || bottom >= top; }
};

constexpr int plainCharacters = 128;

// Where a plain character lies in the glyph texture.
struct GlyphCell {
    bool known = false;
    int width = 0, height = 0, descent = 0;
};

// The plain characters of the font that was drawn with last.
struct GlyphAtlas {
    GrowingTexture texture;
    FontHandle* font = nullptr;
    GlyphCell cells[plainCharacters];
};

struct DrawingState {
    bool doubleBuffered = true;
    bool scissorTest = false;
    PixelBox scissor;
    int viewWidth = 0, viewHeight = 0;
    GLubyte colour[4] = {255, 255, 255, 255};
    int largestTexture = 0;
    GrowingTexture picture, text, kept;
    GlyphAtlas glyphs;
};

// The state of a surface that is now current and can be drawn on; null when there is none.
inline DrawingState* drawOn(Window* window) {
    return makeSurfaceCurrent(window) ? drawingState(window) : nullptr;
}

// What can be seen of a drawing: the viewport within the scissor rectangle.
PixelBox visibleBox(const DrawingState& state);

// Binds a texture of the current surface and makes it at least width x height, one of
// `internalFormat`. False when this OpenGL takes no texture of that size; then nothing is bound.
bool bindTexture(const DrawingState& state, GrowingTexture& texture, int width, int height,
                 GLint internalFormat);

// Draws a part of the bound texture over the box.
void drawTexturePart(const GrowingTexture& texture, const PixelBox& texels, const PixelBox& box);
// The same for its lower-left sourceWidth x sourceHeight texels.
void drawTexture(const GrowingTexture& texture, const PixelBox& box, int sourceWidth,
                 int sourceHeight);

}  // namespace vistel::platform
