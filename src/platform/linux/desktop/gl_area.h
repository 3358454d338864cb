// The client area: a native window of its own that OpenGL draws on, and where keys and the mouse
// arrive.
#pragma once

#include <QBasicTimer>
#include <QWidget>
#include <functional>
#include <map>

#include "platform/window.h"

namespace vistel::platform {

class GlArea : public QWidget {
 public:
    // What the area asks of the window round it.
    struct Owner {
        std::function<void()> close;
        std::function<void(char mnemonic)> openMenu;
        std::function<void()> resized;
    };

    GlArea(QWidget* parent, const WindowSink& sink, Owner owner);

    // Posts EV_TIMER every `milliseconds`.
    void startPosting(unsigned milliseconds);
    // Nothing is posted any more.
    void silence() { silent = true; }

    QPaintEngine* paintEngine() const override { return nullptr; }

 protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override { mousePressEvent(event); }
    void mouseReleaseEvent(QMouseEvent* event) override;

 private:
    void post(int code, unsigned value);
    void keyPressed(const QKeyEvent& event);
    void keyReleased(const QKeyEvent& event);
    void postTyped(int code);
    bool handledBySystem(int code, bool alt);

    WindowSink sink;
    Owner owner;
    QBasicTimer timer;
    std::map<unsigned, int> held;  // codes of the pressed keys by X keycode
    bool captured = false;
    bool silent = false;
};

}  // namespace vistel::platform
