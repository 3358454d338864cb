// A top-level window: the menu bar above the client area.
#pragma once

#include <QMenuBar>
#include <QWidget>

#include "platform/linux/desktop/bar_row.h"
#include "platform/linux/desktop/gl_area.h"
#include "platform/linux/desktop/native_window.h"
#include "platform/window.h"

namespace vistel::platform {

class ViewerWindow : public QWidget {
 public:
    // The widget of this window, until it is retired. `menu`: with the menu bar above its client
    // area, where it has a border.
    ViewerWindow(Window& window, bool menu);

    // One without a menu lies beside another one, or above it.
    bool isBeside() const { return !hasMenu; }

    GlArea& area() { return *client; }
    QMenuBar& menuBar() { return *menus; }

    // The client area: the control bar, when it is open, and the area below it.
    QRect clientRectangle() const;
    void showControlBar(bool open);
    ControlBarRow* controlBar() { return bar; }  // null while it is closed

    // What a window with border has round its client area: the menu, and the frame that the window
    // manager gives it.
    QMargins frame() const;
    // Gives the window manager, where there is one, a moment to put the frame round a window that
    // has just been shown.
    void waitForFrame();

    // Puts the client area on this rectangle of the screen. `keepOnScreen` moves the window down
    // where its upper edge would be above the screen.
    void place(const PixelRect& rect, bool border, bool keepOnScreen);

    // Ends the widget's part in everything, the window's included; it is deleted by the event loop.
    void retire();

 protected:
    void resizeEvent(QResizeEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

 private:
    int menuHeight() const;
    void showBorder(bool border);
    void showFullScreenState(bool full);
    void arrange();
    int barRows() const;
    void sendCommand(int id);
    void barClicked(int control);
    void openMenuOf(char mnemonic);
    void areaResized();

    Window* window;  // null once retired
    QMenuBar* menus;
    bool hasMenu;
    GlArea* client;
    ControlBarRow* bar = nullptr;
    bool bordered = true;
    bool fullScreen = false;
};

}  // namespace vistel::platform
