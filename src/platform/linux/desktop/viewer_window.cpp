#include "platform/linux/desktop/viewer_window.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QDragEnterEvent>
#include <QElapsedTimer>
#include <QMimeData>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QScreen>
#include <QTimer>
#include <QUrl>
#include <QWindow>
#include <algorithm>
#include <utility>

#include "platform/control_bar.h"
#include "platform/linux/desktop/application.h"
#include "platform/linux/desktop/menu_bar.h"

namespace vistel::platform {

namespace {

// A caption and its buttons, but no sizing and no maximising.
constexpr Qt::WindowFlags withBorder = Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                                       Qt::WindowSystemMenuHint | Qt::WindowMinimizeButtonHint |
                                       Qt::WindowCloseButtonHint;
constexpr Qt::WindowFlags withoutBorder = Qt::Window | Qt::FramelessWindowHint;

// A driver that draws in software asks for the size of a window at the first drawing after a swap,
// and when another surface was current before it. What is drawn already may have been the first.
void forgetSurfaceSize(QOpenGLContext& context) {
    QOffscreenSurface other;
    other.setFormat(context.format());
    other.create();
    context.makeCurrent(&other);
    context.doneCurrent();
}

}  // namespace

ViewerWindow::ViewerWindow(Window& of, bool menu)
    : QWidget(nullptr, withBorder), window(&of), hasMenu(menu) {
    menus = createMenuBar(this, of.menuItems, [this](int id) { sendCommand(id); });
    if (!hasMenu) menus->hide();
    client = new GlArea(this, of.sink,
                        {[this] { close(); }, [this](char mnemonic) { openMenuOf(mnemonic); },
                         [this] { areaResized(); }});
    client->setFocus();
    setAcceptDrops(window->sink.dropped != nullptr);
}

// The window may be closed when the command returns.
void ViewerWindow::sendCommand(int id) {
    if (!window) return;
    // Choosing an item does not change its mark; the command may.
    showMenuItem(window->menuItems[id]);
    const WindowSink sink = window->sink;
    sink.commandStarts(sink.owner);
    sink.command(sink.owner, id);
    sink.commandEnds(sink.owner);
}

void ViewerWindow::barClicked(int control) {
    client->setFocus();
    if (!window) return;
    const WindowSink sink = window->sink;
    sink.command(sink.owner, control);
}

void ViewerWindow::showControlBar(bool open) {
    if (open == (bar != nullptr)) return;
    if (open) {
        bar = new ControlBarRow(this, {[this](int control) { barClicked(control); },
                                       [this](const std::string& text) {
                                           if (window && window->sink.rateTyped)
                                               window->sink.rateTyped(window->sink.owner, text);
                                       },
                                       [this] { client->setFocus(); }});
        bar->show();
    } else {
        client->setFocus();
        // A click on it may be what closes it.
        bar->hide();
        std::exchange(bar, nullptr)->deleteLater();
    }
    arrange();
}

int ViewerWindow::barRows() const { return bar ? scaledForText(controlBarHeight) : 0; }

QRect ViewerWindow::clientRectangle() const {
    const int rows = barRows();
    const QPoint corner = client->mapToGlobal(QPoint(0, -rows));
    return {corner, QSize(client->width(), client->height() + rows)};
}

void ViewerWindow::openMenuOf(char mnemonic) {
    if (menus->isVisible()) openMenu(*menus, mnemonic);
}

void ViewerWindow::areaResized() {
    if (!window) return;
    if (window->context) forgetSurfaceSize(*window->context);
    makeSurfaceCurrent(window);
    window->sink.resized(window->sink.owner);
}

int ViewerWindow::menuHeight() const {
    return bordered && hasMenu ? menus->sizeHint().height() : 0;
}

QMargins ViewerWindow::frame() const {
    return windowHandle()->frameMargins() +
           QMargins(0, hasMenu ? menus->sizeHint().height() : 0, 0, 0);
}

void ViewerWindow::waitForFrame() {
    if (!windowManagerRuns()) return;
    constexpr int longestMilliseconds = 500;
    QElapsedTimer waited;
    waited.start();
    while (windowHandle()->frameMargins().isNull() && !waited.hasExpired(longestMilliseconds))
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents, 5);
}

void ViewerWindow::arrange() {
    const int top = menuHeight();
    menus->setGeometry(0, 0, width(), top);
    if (bar) bar->setGeometry(0, top, width(), barRows());
    client->setGeometry(0, top + barRows(), width(), std::max(height() - top - barRows(), 1));
}

void ViewerWindow::resizeEvent(QResizeEvent*) { arrange(); }

// The flags of the native window are changed, and the widget only told: changing the widget's own
// would create the native windows anew and take the drawing surface away.
void ViewerWindow::showBorder(bool border) {
    bordered = border;
    menus->setVisible(border && hasMenu);
    const Qt::WindowFlags flags = border ? withBorder : withoutBorder;
    overrideWindowFlags(flags);
    windowHandle()->setFlags(flags);
}

void ViewerWindow::showFullScreenState(bool full) {
    if (full == fullScreen) return;
    fullScreen = full;
    windowHandle()->setWindowStates(full ? Qt::WindowFullScreen : Qt::WindowNoState);
    // The widget is not to know: it would leave its size to the window manager, and there may be
    // none.
    overrideWindowState(Qt::WindowNoState);
}

void ViewerWindow::place(const PixelRect& rect, bool border, bool keepOnScreen) {
    winId();
    if (border != bordered || windowFlags() != (border ? withBorder : withoutBorder)) {
        showBorder(border);
    }
    QRect whole(rect.left, rect.top - menuHeight(), std::max(rect.width(), 1),
                std::max(rect.height(), 1) + menuHeight());
    if (keepOnScreen && whole.top() < 0) whole.moveTop(0);
    if (!border || fullScreen) showFullScreenState(!border && whole == screen()->geometry());
    setMinimumSize(0, 0);
    setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
    setGeometry(whole);
    setFixedSize(whole.size());
    arrange();
}

void ViewerWindow::closeEvent(QCloseEvent* event) {
    event->ignore();
    closeWindow(window);
}

void ViewerWindow::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->hasUrls()) event->acceptProposedAction();
}

// Whoever has sent the files waits for an answer, so they are opened after it.
void ViewerWindow::dropEvent(QDropEvent* event) {
    std::vector<std::string> names;
    for (const QUrl& url : event->mimeData()->urls())
        if (url.isLocalFile()) names.push_back(url.toLocalFile().toStdString());
    event->acceptProposedAction();
    if (names.empty()) return;
    QTimer::singleShot(0, this, [this, names] {
        if (!window) return;
        const WindowSink sink = window->sink;
        sink.dropped(sink.owner, names);
    });
}

void ViewerWindow::retire() {
    client->silence();
    window = nullptr;
    hide();
    deleteLater();
}

}  // namespace vistel::platform
