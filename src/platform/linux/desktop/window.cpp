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

bool quitPosted = false;

// The window of the calling thread: only the first thread has one.
ViewerWindow* window() { return applicationRuns() ? ViewerWindow::current() : nullptr; }

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

bool openWindow(const WindowRequest& request, const WindowSink& sink) {
    if (!startApplication() || window()) return false;
    quitPosted = false;
    auto* fresh = new ViewerWindow(sink);
    fresh->setWindowTitle(titleText(request.title));
    fresh->place(request.client, request.border, true);
    fresh->show();
    fresh->raise();
    // Without a window manager nobody else gives it the keyboard.
    fresh->activateWindow();
    return true;
}

bool windowExists() { return window() != nullptr; }

void placeWindow(const PixelRect& client, bool border) {
    if (ViewerWindow* open = window()) open->place(client, border, false);
}

void setWindowTitle(const std::string& title) {
    if (ViewerWindow* open = window()) open->setWindowTitle(titleText(title));
}

void closeWindow() {
    ViewerWindow* open = window();
    if (!open) return;
    destroySurface();
    open->retire();
    quitPosted = true;
}

void clientArea(int& width, int& height) {
    ViewerWindow* open = window();
    width = open ? open->area().width() : 0;
    height = open ? open->area().height() : 0;
}

void clientScreenPosition(int& x, int& y) {
    ViewerWindow* open = window();
    const QPoint corner = open ? open->area().mapToGlobal(QPoint(0, 0)) : QPoint();
    x = corner.x();
    y = corner.y();
}

ScreenSize screenSize() {
    const QScreen* screen = mainScreen();
    if (!screen) return {};
    return {screen->geometry().width(), screen->geometry().height()};
}

PixelRect workArea() {
    const QScreen* screen = mainScreen();
    return screen ? toPixelRect(screen->availableGeometry()) : PixelRect{};
}

void setCursor(bool cross) {
    if (ViewerWindow* open = window()) {
        open->area().setCursor(cross ? Qt::CrossCursor : Qt::ArrowCursor);
    }
}

void startTimer(unsigned milliseconds) {
    if (ViewerWindow* open = window()) open->area().startPosting(milliseconds);
}

bool pumpMessages() {
    if (applicationRuns()) {
        watchInterrupts();
        QCoreApplication::processEvents(QEventLoop::AllEvents);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    const bool quit = quitPosted;
    quitPosted = false;
    return !quit;
}

void waitMessage() {
    if (quitPosted || interruptRequested()) return;
    if (!applicationRuns()) return waitForInterrupt();
    watchInterrupts();
    // Waits only when nothing is there yet, and handles what comes: a message between the last pump
    // and this call cannot be missed.
    QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
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
