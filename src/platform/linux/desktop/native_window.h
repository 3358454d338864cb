// What the files of this folder share about a window.
#pragma once

#include <map>

#include "platform/gl/gl_state.h"
#include "platform/window.h"

class QAction;
class QOpenGLContext;
class QDialog;
class QWidget;
class QWindow;

namespace vistel::platform {

class ViewerWindow;

// Of one command of the menu.
struct MenuItemState {
    bool checked = false;
    bool enabled = true;
    QAction* action = nullptr;  // belongs to the menu bar; null for a command that no item has
};

struct Window {
    WindowSink sink{};
    ViewerWindow* widget = nullptr;  // deleted by the event loop; null when the window was closed
    QOpenGLContext* context = nullptr;  // see surface.cpp
    DrawingState drawing;
    // By command.
    std::map<int, MenuItemState> menuItems;
};

// The widget over which a box for this window is shown; null when it is not there.
QWidget* boxParent(Window* window);

// Shows a box or dialog over a window until it is closed, and gives the keyboard back; the answer.
int runBox(Window* over, QDialog& box);

// Where OpenGL draws; null when the window is not there.
QWindow* drawable(const Window* window);

}  // namespace vistel::platform
