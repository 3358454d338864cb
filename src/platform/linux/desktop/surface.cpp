// The rendering context on the client area: this system's half of the surface.
#include "platform/surface.h"

#include <QGuiApplication>
#include <QOpenGLContext>
#include <QScreen>
#include <QWindow>
#include <memory>

#include "platform/dialogs.h"
#include "platform/gl/gl_surface.h"
#include "platform/linux/desktop/application.h"
#include "platform/linux/desktop/surface_context.h"
#include "platform/linux/desktop/viewer_window.h"

namespace vistel::platform {

namespace {

// Deleted with its window only: when the process ends with the window open, the driver may be gone
// before the destructors of this file's objects run.
QOpenGLContext* context = nullptr;

QWindow* drawable() {
    ViewerWindow* window = ViewerWindow::current();
    return window ? window->area().windowHandle() : nullptr;
}

}  // namespace

bool createSurface() {
    QWindow* window = drawable();
    if (!window) return false;
    const bool fresh = !context;
    if (fresh) {
        auto created = std::make_unique<QOpenGLContext>();
        created->setFormat(window->requestedFormat());
        if (!created->create()) {
            showSystemErrorBox(cannotSetPixelFormat);
            return false;
        }
        context = created.release();
    }
    if (!context->makeCurrent(window)) {
        showSystemErrorBox(cannotOpenSurface);
        return false;
    }
    resetPixelPipeline(fresh);
    return true;
}

void destroySurface() {
    if (!context) return;
    if (QWindow* window = drawable(); window && context->makeCurrent(window)) {
        releaseDrawingObjects();
        context->doneCurrent();
    }
    delete context;
    context = nullptr;
}

bool surfaceExists() { return context != nullptr; }

void makeSurfaceCurrent() {
    QWindow* window = drawable();
    if (context && window) context->makeCurrent(window);
}

void swapBuffers() {
    QWindow* window = drawable();
    if (context && window) context->swapBuffers(window);
}

}  // namespace vistel::platform
