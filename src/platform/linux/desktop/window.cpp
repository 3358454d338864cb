#include "platform/window.h"

#include <poll.h>

#include <QApplication>
#include <QCursor>
#include <QScreen>
#include <QSocketNotifier>

#include "platform/input_event.h"
#include "platform/linux/desktop/application.h"
#include "platform/linux/desktop/keyboard.h"
#include "platform/linux/desktop/viewer_window.h"
#include "platform/linux/os/interrupts.h"
#include "platform/process.h"
#include "platform/surface.h"

namespace vistel::platform {

namespace {

// A window was closed since the last pump.
bool closedSincePump = false;

// The widget of a window that is open; null for any other.
ViewerWindow* widgetOf(const Window* window) { return window ? window->widget : nullptr; }

// An interrupt is for the whole program, so it closes the menu or box that a user has left open.
void closeOpenBoxes() {
    if (QWidget* popup = QApplication::activePopupWidget()) popup->close();
    if (QWidget* box = QApplication::activeModalWidget()) box->close();
}

// Lets an interrupt end the wait for messages, once: the descriptor stays readable.
void watchInterrupts() {
    static QSocketNotifier* notifier = nullptr;
    if (notifier || interruptDescriptor() < 0) return;
    notifier = new QSocketNotifier(interruptDescriptor(), QSocketNotifier::Read, qApp);
    QObject::connect(notifier, &QSocketNotifier::activated, [] {
        notifier->setEnabled(false);
        closeOpenBoxes();
    });
}

void waitForInterrupt() {
    constexpr int longestMilliseconds = 100;
    pollfd descriptor{interruptDescriptor(), POLLIN, 0};
    poll(&descriptor, 1, longestMilliseconds);
}

// A title is text: the toolkit's mark for modified documents has no meaning in it.
QString titleText(const std::string& title) {
    return QString::fromStdString(title).replace(QLatin1String("[*]"), QLatin1String("[*][*]"));
}

const QScreen* mainScreen() {
    return startApplication() ? QGuiApplication::primaryScreen() : nullptr;
}

PixelRect toPixelRect(const QRect& rect) {
    return {rect.left(), rect.top(), rect.left() + rect.width(), rect.top() + rect.height()};
}

}  // namespace

QWidget* boxParent(Window* window) { return widgetOf(window); }

QWindow* drawable(const Window* window) {
    ViewerWindow* const open = widgetOf(window);
    return open ? open->area().windowHandle() : nullptr;
}

bool windowsOnEveryThread() { return false; }

Window* openWindow(const WindowRequest& request, const WindowSink& sink) {
    if (!startApplication()) return nullptr;
    auto* window = new Window;
    window->sink = sink;
    auto* fresh = window->widget = new ViewerWindow(*window, request.menu);
    fresh->setWindowTitle(titleText(request.title));
    fresh->place(request.client, request.border, true);
    fresh->show();
    if (request.border) fresh->waitForFrame();
    fresh->raise();
    // What lies in the middle of the screen would be hidden by a larger window that opens there.
    for (QWidget* other : QApplication::topLevelWidgets()) {
        const auto* const beside = dynamic_cast<ViewerWindow*>(other);
        if (beside && beside->isBeside() && other->isVisible()) other->raise();
    }
    // Without a window manager nobody else gives it the keyboard.
    fresh->activateWindow();
    return window;
}

bool windowExists(const Window* window) { return widgetOf(window) != nullptr; }

void closeWindow(Window* window) {
    ViewerWindow* const open = widgetOf(window);
    if (!open) return;
    destroySurface(window);
    window->widget = nullptr;
    open->retire();
    closedSincePump = true;
}

void releaseWindow(Window* window) {
    closeWindow(window);
    delete window;
}

void placeWindow(Window* window, const PixelRect& client, bool border) {
    if (ViewerWindow* open = widgetOf(window)) open->place(client, border, false);
}

PixelRect outerRect(const Window* window, const PixelRect& client, bool border) {
    ViewerWindow* const open = widgetOf(window);
    if (!open || !border) return client;
    const QMargins frame = open->frame();
    return {client.left - frame.left(), client.top - frame.top(), client.right + frame.right(),
            client.bottom + frame.bottom()};
}

void setWindowTitle(Window* window, const std::string& title) {
    if (ViewerWindow* open = widgetOf(window)) open->setWindowTitle(titleText(title));
}

void clientArea(const Window* window, int& width, int& height) {
    ViewerWindow* const open = widgetOf(window);
    width = open ? open->clientRectangle().width() : 0;
    height = open ? open->clientRectangle().height() : 0;
}

void clientScreenPosition(const Window* window, int& x, int& y) {
    ViewerWindow* const open = widgetOf(window);
    const QPoint corner = open ? open->clientRectangle().topLeft() : QPoint();
    x = corner.x();
    y = corner.y();
}

void setCursor(Window* window, bool cross) {
    if (ViewerWindow* open = widgetOf(window)) {
        open->area().setCursor(cross ? Qt::CrossCursor : Qt::ArrowCursor);
    }
}

void startTimer(Window* window, unsigned milliseconds) {
    if (ViewerWindow* open = widgetOf(window)) open->area().startPosting(milliseconds);
}

void pumpMessages() {
    closedSincePump = false;
    if (!applicationRuns()) return;
    watchInterrupts();
    QCoreApplication::processEvents(QEventLoop::AllEvents);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void waitMessage() {
    if (closedSincePump || interruptRequested()) return;
    if (!applicationRuns()) return waitForInterrupt();
    watchInterrupts();
    // Waits only when nothing is there yet, and handles what comes: a message between the last pump
    // and this call cannot be missed.
    QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
}

ScreenSize screenSize() {
    const QScreen* screen = mainScreen();
    if (!screen) return {};
    return {screen->geometry().width(), screen->geometry().height()};
}

PixelRect workArea(const Window* window) {
    ViewerWindow* const open = widgetOf(window);
    const QScreen* screen = open ? open->screen() : mainScreen();
    return screen ? toPixelRect(screen->availableGeometry()) : PixelRect{};
}

bool keyDown(int code) {
    if (!applicationRuns()) return false;
    switch (code) {
        case EV_LEFTMOUSE:
        case EV_RIGHTMOUSE:
        case EV_MIDDLEMOUSE:
            return mouseButtonHeld(code);
        default:
            return keyHeld(code);
    }
}

void cursorPosition(int& x, int& y) {
    const QPoint at = applicationRuns() ? QCursor::pos() : QPoint();
    x = at.x();
    y = at.y();
}

}  // namespace vistel::platform
