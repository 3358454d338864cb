// The rendering context on the client area: this system's half of the surface.
#include "platform/surface.h"

#include <QOpenGLContext>
#include <QWindow>
#include <memory>

#include "platform/dialogs.h"
#include "platform/gl/gl_surface.h"
#include "platform/linux/desktop/native_window.h"

namespace vistel::platform {

DrawingState* drawingState(Window* window) { return window ? &window->drawing : nullptr; }

bool makeSurfaceCurrent(Window* window) {
    if (!surfaceExists(window)) return false;
    QOpenGLContext* const context = window->context;
    QWindow* const target = drawable(window);
    if (QOpenGLContext::currentContext() == context && context->surface() == target) return true;
    return context->makeCurrent(target);
}

bool createSurface(Window* window) {
    QWindow* const target = drawable(window);
    if (!target) return false;
    const bool fresh = !window->context;
    if (fresh) {
        auto created = std::make_unique<QOpenGLContext>();
        created->setFormat(target->requestedFormat());
        if (!created->create()) {
            showSystemErrorBox(window, cannotSetPixelFormat);
            return false;
        }
        // Deleted with its window only: when the process ends with the window open, the driver may
        // be gone before any destructor runs.
        window->context = created.release();
    }
    if (!window->context->makeCurrent(target)) {
        showSystemErrorBox(window, cannotOpenSurface);
        return false;
    }
    resetPixelPipeline(window, fresh);
    return true;
}

void destroySurface(Window* window) {
    if (!surfaceExists(window)) return;
    if (window->context->makeCurrent(drawable(window))) {
        releaseDrawingObjects(window);
        window->context->doneCurrent();
    }
    delete window->context;
    window->context = nullptr;
}

bool surfaceExists(const Window* window) { return window && window->context; }

void swapBuffers(Window* window) {
    if (makeSurfaceCurrent(window)) window->context->swapBuffers(drawable(window));
}

}  // namespace vistel::platform
