// Rectangles and lines in the current colour.
#include <algorithm>
#include <cstdlib>

#include "platform/gl/gl_state.h"

namespace vistel::platform {

void setColour(Window* window, uint8_t red, uint8_t green, uint8_t blue, uint8_t alpha) {
    DrawingState* const state = drawingState(window);
    if (!state) return;
    GLubyte* colour = state->colour;
    colour[0] = red;
    colour[1] = green;
    colour[2] = blue;
    colour[3] = alpha;
    if (makeSurfaceCurrent(window)) glColor4ubv(colour);
}

void clearSurface(Window* window) {
    const DrawingState* const state = drawOn(window);
    if (!state) return;
    const GLubyte* colour = state->colour;
    glClearColor(colour[0] / 255.0F, colour[1] / 255.0F, colour[2] / 255.0F, colour[3] / 255.0F);
    glClear(GL_COLOR_BUFFER_BIT);
}

void fillRectangle(Window* window, int x0, int y0, int x1, int y1) {
    if (!makeSurfaceCurrent(window)) return;
    glRectf(
        static_cast<float>(std::min(x0, x1)) - 0.5F, static_cast<float>(std::min(y0, y1)) - 0.5F,
        static_cast<float>(std::max(x0, x1)) + 0.5F, static_cast<float>(std::max(y0, y1)) + 0.5F);
}

// OpenGL leaves open which pixels a line takes and leaves out its last one, so a line is drawn as
// the pixels themselves, both ends included.
void drawLine(Window* window, int x0, int y0, int x1, int y1) {
    if (!makeSurfaceCurrent(window)) return;
    if (x0 == x1 || y0 == y1) return fillRectangle(window, x0, y0, x1, y1);
    const int64_t across = int64_t{x1} - x0, up = int64_t{y1} - y0;
    const int64_t steps = std::max(std::abs(across), std::abs(up));
    glBegin(GL_POINTS);
    for (int64_t i = 0; i <= steps; ++i) {
        glVertex2i(static_cast<GLint>(x0 + across * i / steps),
                   static_cast<GLint>(y0 + up * i / steps));
    }
    glEnd();
}

}  // namespace vistel::platform
