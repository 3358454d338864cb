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

bool createContext(NativeWindow& native) {
    if (!setPixelFormat(native.device)) {
        showSystemErrorBox(cannotSetPixelFormat);
        return false;
    }
    native.context = wglCreateContext(native.device);
    // A context that cannot be made current is kept: the window's destruction deletes it.
    if (!native.context || !wglMakeCurrent(native.device, native.context)) {
        showSystemErrorBox(cannotOpenSurface);
        return false;
    }
    return true;
}

bool isCurrent(HGLRC context) { return wglGetCurrentContext() == context; }

}  // namespace

bool createSurface() {
    NativeWindow& native = nativeWindow();
    if (!native.device) return false;
    const bool newContext = !native.context;
    if (newContext && !createContext(native)) return false;
    if (!isCurrent(native.context) && !wglMakeCurrent(native.device, native.context)) return false;
    resetPixelPipeline(newContext);
    return true;
}

void destroySurface() {
    NativeWindow& native = nativeWindow();
    if (!native.context) return;
    if (wglMakeCurrent(native.device, native.context)) releaseDrawingObjects();
    wglMakeCurrent(nullptr, nullptr);
    wglDeleteContext(native.context);
    native.context = nullptr;
}

bool surfaceExists() { return nativeWindow().context != nullptr; }

void swapBuffers() {
    const NativeWindow& native = nativeWindow();
    if (!native.context) return;
    glFlush();
    SwapBuffers(native.device);
    wine::buffersSwapped(native.handle, native.device);
}

}  // namespace vistel::platform
