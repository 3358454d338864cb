// The viewer's top-level window: the menu bar above the client area.
#pragma once

#include <QMenuBar>
#include <QWidget>

#include "platform/linux/desktop/gl_area.h"
#include "platform/window.h"

namespace vistel::platform {

class ViewerWindow : public QWidget {
 public:
    explicit ViewerWindow(const WindowSink& sink);

    GlArea& area() { return *client; }
    QMenuBar& menuBar() { return *menus; }

    // Puts the client area on this rectangle of the screen. `keepOnScreen` moves the window down
    // where its upper edge would be above the screen.
    void place(const PixelRect& rect, bool border, bool keepOnScreen);

    // Ends the window's part in everything; it is deleted by the event loop.
    void retire();

    // The window of this process; null when there is none.
    static ViewerWindow* current();

 protected:
    void resizeEvent(QResizeEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

 private:
    int menuHeight() const;
    void showBorder(bool border);
    void showFullScreenState(bool full);
    void arrange();

    QMenuBar* menus;
    GlArea* client;
    bool bordered = true;
    bool fullScreen = false;
};

}  // namespace vistel::platform
