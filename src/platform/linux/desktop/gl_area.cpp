#include "platform/linux/desktop/gl_area.h"

#include <QFocusEvent>
#include <QMouseEvent>
#include <QSurfaceFormat>
#include <QTimerEvent>
#include <QWindow>
#include <cstdint>
#include <utility>
#include <vector>

#include "platform/input_event.h"
#include "platform/linux/desktop/keyboard.h"

namespace vistel::platform {

GlArea::GlArea(QWidget* parent, const WindowSink& target, Owner holder)
    : QWidget(parent), sink(target), owner(std::move(holder)) {
    setAttribute(Qt::WA_NativeWindow);
    setAttribute(Qt::WA_PaintOnScreen);
    setAttribute(Qt::WA_NoSystemBackground);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    // The toolkit has made a window to paint on; OpenGL wants one with a visual of its choice.
    winId();
    QWindow* native = windowHandle();
    native->destroy();
    QSurfaceFormat format;
    format.setRenderableType(QSurfaceFormat::OpenGL);
    format.setProfile(QSurfaceFormat::NoProfile);
    format.setVersion(1, 1);
    format.setSwapBehavior(QSurfaceFormat::DoubleBuffer);
    format.setSwapInterval(0);
    native->setSurfaceType(QSurface::OpenGLSurface);
    native->setFormat(format);
    native->create();
}

void GlArea::startPosting(unsigned milliseconds) {
    timer.start(static_cast<int>(milliseconds), Qt::PreciseTimer, this);
}

void GlArea::post(int code, unsigned value) {
    if (!silent) sink.postEvent(sink.owner, code, value & 0xFFFF);
}

bool GlArea::event(QEvent* event) {
    switch (event->type()) {
        case QEvent::ShortcutOverride:
            // All keys come here: none is a shortcut, and Alt does not go to the menu bar.
            event->accept();
            return true;
        case QEvent::KeyPress:
            keyPressed(*static_cast<QKeyEvent*>(event));
            return true;
        case QEvent::KeyRelease:
            keyReleased(*static_cast<QKeyEvent*>(event));
            return true;
        default:
            return QWidget::event(event);
    }
}

void GlArea::paintEvent(QPaintEvent*) {
    if (!silent) sink.paint(sink.owner);
}

void GlArea::resizeEvent(QResizeEvent*) {
    if (!silent) owner.resized();
}

void GlArea::timerEvent(QTimerEvent* event) {
    if (event->timerId() == timer.timerId()) post(EV_TIMER, 1);
}

// --- keys ----------------------------------------------------------------------------------------

// Keys that mean something to the desktop or the menu and are not the viewer's.
bool GlArea::handledBySystem(int code, bool alt) {
    constexpr int keyF4 = keyF1 + 3, keyF10 = keyF1 + 9;
    if (code == keyF10) {
        owner.openMenu('F');
        return true;
    }
    if (alt && code == keyF4) {
        owner.close();
        return true;
    }
    return alt && (code == keyTab || code == keySpace);
}

// The modifiers that typed a character are not held for what it does.
void GlArea::postTyped(int code) {
    std::vector<int> typing;
    for (const auto& [key, down] : held) {
        const bool types = down == keyLeftShift || down == keyRightShift || down == keyRightAlt;
        if (types) typing.push_back(down);
    }
    for (const int modifier : typing) post(modifier, 0);
    post(code, 1);
    for (const int modifier : typing) post(modifier, 1);
}

void GlArea::keyPressed(const QKeyEvent& event) {
    const unsigned key = event.nativeScanCode();
    const auto present = held.find(key);
    const int layout = static_cast<int>(event.nativeModifiers() >> 13 & 3);
    if (const int typed = typedKeyCode(event.nativeVirtualKey(), layout)) {
        held[key] = typed;
        return postTyped(typed);
    }
    const int code = present != held.end() ? present->second : keyCodeOf(key, layout);
    const bool alt = (event.modifiers() & Qt::AltModifier) != 0 &&
                     (event.modifiers() & Qt::ControlModifier) == 0;
    if (code == 0 || handledBySystem(code, alt)) return;
    held[key] = code;
    post(code, 1);
    if (alt && (code == 'F' || code == 'V')) owner.openMenu(static_cast<char>(code));
}

void GlArea::keyReleased(const QKeyEvent& event) {
    const auto present = held.find(event.nativeScanCode());
    if (event.isAutoRepeat() || present == held.end()) return;
    const int code = present->second;
    held.erase(present);
    post(code, 0);
}

// The releases of the keys that are held will go elsewhere.
void GlArea::focusOutEvent(QFocusEvent*) {
    const std::map<unsigned, int> keys = std::move(held);
    held.clear();
    for (const auto& [key, code] : keys) post(code, 0);
}

// What became of the modifiers meanwhile is looked up with every tick: now at once.
void GlArea::focusInEvent(QFocusEvent*) { post(EV_TIMER, 1); }

// --- mouse ---------------------------------------------------------------------------------------

static int buttonCode(Qt::MouseButton button) {
    switch (button) {
        case Qt::LeftButton:
            return EV_LEFTMOUSE;
        case Qt::RightButton:
            return EV_RIGHTMOUSE;
        case Qt::MiddleButton:
            return EV_MIDDLEMOUSE;
        default:
            return 0;
    }
}

void GlArea::mouseMoveEvent(QMouseEvent* event) {
    const QPoint at = event->position().toPoint();
    post(EV_MOUSEX, static_cast<unsigned>(at.x()));
    post(EV_MOUSEY, static_cast<unsigned>(height() - at.y()));
}

void GlArea::mousePressEvent(QMouseEvent* event) {
    const int code = buttonCode(event->button());
    if (code == 0) return;
    setFocus(Qt::MouseFocusReason);
    captured = true;
    post(code, 1);
}

// The first button that goes up ends the capture; a button released without it says nothing.
void GlArea::mouseReleaseEvent(QMouseEvent* event) {
    const int code = buttonCode(event->button());
    if (code == 0 || !captured) return;
    captured = false;
    post(code, 0);
}

}  // namespace vistel::platform
