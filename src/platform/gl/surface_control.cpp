// Buffers, viewport, projection, scissor, read-back.
#include <algorithm>

#include "platform/gl/gl_state.h"

namespace vistel::platform {

namespace {

// One unit is one window pixel, whatever part of the window the picture takes: under another
// projection rectangles and lines would be stretched, pictures and text would not. The projection
// starts at -0.499 and not at -0.5, so that a raster position at a whole coordinate falls inside
// its pixel and not on the border of two, where drivers differ; rectangles reach half a unit round
// a pixel's centre and are not moved by it.
void loadProjection(const DrawingState& state) {
    if (state.viewWidth <= 0 || state.viewHeight <= 0) return;
    constexpr double start = -0.499;
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(start, state.viewWidth + start, start, state.viewHeight + start, -1.0, 1.0);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
}

void keepWindowContents(DrawingState& state) {
    if (!bindTexture(state, state.kept, state.viewWidth, state.viewHeight, GL_RGBA8)) return;
    glReadBuffer(GL_BACK);
    glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 0, 0, state.viewWidth, state.viewHeight);
}

void restoreWindowContents(DrawingState& state) {
    if (!bindTexture(state, state.kept, state.viewWidth, state.viewHeight, GL_RGBA8)) return;
    glDisable(GL_SCISSOR_TEST);
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);
    drawTexture(state.kept, {0, 0, state.viewWidth, state.viewHeight}, state.viewWidth,
                state.viewHeight);
    if (state.scissorTest) glEnable(GL_SCISSOR_TEST);
}

}  // namespace

// Where the window's visible content cannot be drawn on (software drivers, composited desktops),
// drawing to it means: drawing to the back buffer, which keeps its contents when a flush shows it.
// Both modes thus draw to the back buffer.
void setDoubleBuffered(Window* window, bool on) {
    DrawingState* const state = drawingState(window);
    if (!state) return;
    state->doubleBuffered = on;
    if (makeSurfaceCurrent(window)) glDrawBuffer(GL_BACK);
}

void setDithering(Window* window, bool on) {
    if (!makeSurfaceCurrent(window)) return;
    on ? glEnable(GL_DITHER) : glDisable(GL_DITHER);
}

void flushSurface(Window* window) {
    DrawingState* const state = drawOn(window);
    if (!state) return;
    glFlush();
    if (state->doubleBuffered) return;
    keepWindowContents(*state);
    swapBuffers(window);
    restoreWindowContents(*state);
}

void setViewport(Window* window, int width, int height) {
    DrawingState* const state = drawingState(window);
    if (!state) return;
    state->viewWidth = width;
    state->viewHeight = height;
    if (!makeSurfaceCurrent(window)) return;
    glViewport(0, 0, width, height);
    loadProjection(*state);
}

void setScissorTest(Window* window, bool on) {
    DrawingState* const state = drawingState(window);
    if (!state) return;
    state->scissorTest = on;
    if (!makeSurfaceCurrent(window)) return;
    on ? glEnable(GL_SCISSOR_TEST) : glDisable(GL_SCISSOR_TEST);
}

void setScissor(Window* window, int x, int y, int width, int height) {
    DrawingState* const state = drawingState(window);
    if (!state) return;
    width = std::max(width, 0);
    height = std::max(height, 0);
    state->scissor = {x, y, x + width, y + height};
    if (makeSurfaceCurrent(window)) glScissor(x, y, width, height);
}

void readPixels(Window* window, int x, int y, int width, int height, uint32_t* pixels) {
    if (width <= 0 || height <= 0 || !makeSurfaceCurrent(window)) return;
    glReadBuffer(GL_BACK);
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    glPixelStorei(GL_PACK_ROW_LENGTH, 0);
    glReadPixels(x, y, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
}

}  // namespace vistel::platform
