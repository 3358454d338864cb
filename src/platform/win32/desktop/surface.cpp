// The rendering context on the window; what is drawn with it is in platform/gl.
#include "platform/surface.h"

#include <algorithm>

#include "platform/dialogs.h"
#include "platform/gl/gl_api.h"
#include "platform/gl/gl_surface.h"
#include "platform/win32/desktop/native_window.h"
#include "platform/win32/desktop/pixel_format.h"
#include "platform/win32/desktop/wine_cures.h"

namespace vistel::platform {

namespace {

bool createContext(Window& window) {
    if (!setPixelFormat(window.device)) {
        showSystemErrorBox(&window, cannotSetPixelFormat);
        return false;
    }
    window.context = wglCreateContext(window.device);
    // A context that cannot be made current is kept: the window's destruction deletes it.
    if (!window.context || !wglMakeCurrent(window.device, window.context)) {
        showSystemErrorBox(&window, cannotOpenSurface);
        return false;
    }
    return true;
}

}  // namespace

DrawingState* drawingState(Window* window) { return window ? &window->drawing : nullptr; }

bool makeSurfaceCurrent(Window* window) {
    if (!surfaceExists(window)) return false;
    if (wglGetCurrentContext() == window->context) return true;
    return wglMakeCurrent(window->device, window->context);
}

bool createSurface(Window* window) {
    if (!window || !window->device) return false;
    const bool newContext = !window->context;
    if (newContext && !createContext(*window)) return false;
    if (!makeSurfaceCurrent(window)) return false;
    resetPixelPipeline(window, newContext);
    return true;
}

void destroySurface(Window* window) {
    if (!surfaceExists(window)) return;
    if (makeSurfaceCurrent(window)) releaseDrawingObjects(window);
    wglMakeCurrent(nullptr, nullptr);
    wglDeleteContext(window->context);
    window->context = nullptr;
}

bool surfaceExists(const Window* window) { return window && window->context; }

void swapBuffers(Window* window) {
    if (!makeSurfaceCurrent(window)) return;
    glFlush();
    SwapBuffers(window->device);
    wine::buffersSwapped(window->handle, window->device);
}

}  // namespace vistel::platform
