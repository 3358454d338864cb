#include "platform/linux/desktop/application.h"

#include <unistd.h>

#include <QApplication>
#include <array>
#include <clocale>
#include <cstdio>
#include <optional>
#include <string>

// After Qt: the X headers define macros with everyday names.
#include <X11/XKBlib.h>
#include <X11/Xlib.h>

namespace vistel::platform {

namespace {

// Takes variables out of the environment while the application starts.
class WithoutVariables {
 public:
    WithoutVariables() {
        for (size_t i = 0; i < names.size(); ++i) {
            if (!qEnvironmentVariableIsSet(names[i])) continue;
            values[i] = qgetenv(names[i]);
            qunsetenv(names[i]);
        }
    }
    ~WithoutVariables() {
        for (size_t i = 0; i < names.size(); ++i) {
            if (values[i]) qputenv(names[i], *values[i]);
        }
    }

 private:
    static constexpr std::array names = {"QT_SCALE_FACTOR", "QT_SCREEN_SCALE_FACTORS",
                                         "QT_AUTO_SCREEN_SCALE_FACTOR", "QT_ENABLE_HIGHDPI_SCALING",
                                         "QT_USE_PHYSICAL_DPI"};
    std::array<std::optional<QByteArray>, names.size()> values;
};

// The terminal belongs to the viewer's own reports.
void showOnlyFatalMessages(QtMsgType type, const QMessageLogContext&, const QString& text) {
    if (type == QtFatalMsg) std::fprintf(stderr, "%s\n", text.toUtf8().constData());
}

bool onFirstThread() { return getpid() == gettid(); }

void createApplication() {
    // One image pixel is one pixel of the screen, so scaling is off whatever the screen's density;
    // fonts follow the density by themselves. Only X11 has window positions and a global cursor.
    static std::array<std::string, 3> words = {"vistel", "-platform", "xcb"};
    static std::array<char*, 4> arguments = {words[0].data(), words[1].data(), words[2].data(),
                                             nullptr};
    static int count = 3;
    const WithoutVariables unscaled;
    qputenv("QT_ENABLE_HIGHDPI_SCALING", "0");
    qInstallMessageHandler(showOnlyFatalMessages);
    // Every place of the mouse counts: painted lines go through them all.
    QApplication::setAttribute(Qt::AA_CompressHighFrequencyEvents, false);
    // Lives until the process ends: it must outlast everything that is destroyed at exit.
    new QApplication(count, arguments.data());
    qunsetenv("QT_ENABLE_HIGHDPI_SCALING");
    QApplication::setQuitOnLastWindowClosed(false);
    // The application has set the user's locale; numbers keep the decimal point.
    std::setlocale(LC_NUMERIC, "C");
    if (Display* display = xDisplay()) XkbSetDetectableAutoRepeat(display, True, nullptr);
}

}  // namespace

bool startApplication() {
    if (!onFirstThread()) return false;
    if (qApp) return true;
    // Qt ends the process when it finds no display, so it is asked for first. The connection stays
    // until Qt has its own: some servers start anew when their last client leaves.
    Display* probe = XOpenDisplay(nullptr);
    if (!probe) return false;
    createApplication();
    XCloseDisplay(probe);
    return true;
}

bool applicationRuns() { return qApp && onFirstThread(); }

// A window manager leaves a mark on the root window.
bool windowManagerRuns() {
    Display* display = xDisplay();
    if (!display) return false;
    const Atom mark = XInternAtom(display, "_NET_SUPPORTING_WM_CHECK", True);
    if (mark == None) return false;
    Atom type = None;
    int format = 0;
    unsigned long items = 0, rest = 0;
    unsigned char* value = nullptr;
    XGetWindowProperty(display, DefaultRootWindow(display), mark, 0, 1, False, AnyPropertyType,
                       &type, &format, &items, &rest, &value);
    if (value) XFree(value);
    return type != None;
}

Display* xDisplay() {
    if (!qApp) return nullptr;
    const auto* x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 ? x11->display() : nullptr;
}

}  // namespace vistel::platform
