// Pixel rectangles. The visible part of the picture goes into a texture that is kept from frame to
// frame and is drawn as one rectangle: the driver then scales, and nothing is allocated or
// converted on the way. The result is that of drawing pixels with a pixel zoom, which is also what
// is done when the driver takes no texture that large.
#include <algorithm>
#include <cstddef>

#include "platform/gl/gl_state.h"

namespace vistel::platform {

namespace {

int floorDivide(int value, int divisor) {
    return value >= 0 ? value / divisor : -((-value + divisor - 1) / divisor);
}

// The columns (or rows) of a rectangle `count` image pixels wide, drawn from window pixel `start`,
// that show within [low, high).
struct Span {
    int first = 0, end = 0;
};

Span visibleSpan(int start, int count, int zoom, int low, int high) {
    return {std::clamp(floorDivide(low - start, zoom), 0, count),
            std::clamp(floorDivide(high - start + zoom - 1, zoom), 0, count)};
}

void drawRaster(int x, int y, int width, int height, const uint32_t* pixels, int zoom) {
    // The raster position may lie outside the viewport, where glRasterPos would make it invalid: it
    // is set at the origin and moved by an empty bitmap.
    glRasterPos2i(0, 0);
    glBitmap(0, 0, 0, 0, static_cast<GLfloat>(x), static_cast<GLfloat>(y), nullptr);
    glPixelZoom(static_cast<GLfloat>(zoom), static_cast<GLfloat>(zoom));
    glDrawPixels(width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
    glPixelZoom(1.0F, 1.0F);
    glRasterPos2i(0, 0);
}

}  // namespace

void drawPixels(Window* window, int x, int y, const PixelSource& source, int zoom) {
    zoom = std::max(zoom, 1);
    DrawingState* const state = source.pixels ? drawOn(window) : nullptr;
    if (!state) return;
    const PixelBox visible = visibleBox(*state);
    if (visible.empty()) return;
    const Span columns = visibleSpan(x, source.width, zoom, visible.left, visible.right);
    const Span rows = visibleSpan(y, source.height, zoom, visible.bottom, visible.top);
    const int width = columns.end - columns.first, height = rows.end - rows.first;
    if (width <= 0 || height <= 0) return;

    const uint32_t* pixels = source.pixels +
                             static_cast<ptrdiff_t>(source.row + rows.first) * source.rowLength +
                             source.column + columns.first;
    const PixelBox box{x + columns.first * zoom, y + rows.first * zoom, x + columns.end * zoom,
                       y + rows.end * zoom};
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    glPixelStorei(GL_UNPACK_ROW_LENGTH, source.rowLength);
    if (bindTexture(*state, state->picture, width, height, GL_RGBA8)) {
        glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
        glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);
        drawTexture(state->picture, box, width, height);
    } else {
        drawRaster(box.left, box.bottom, width, height, pixels, zoom);
    }
    glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
}

}  // namespace vistel::platform
