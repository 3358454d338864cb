#include "platform/control_bar.h"

#include "platform/linux/desktop/viewer_window.h"

namespace vistel::platform {

static ControlBarRow* barOf(Window* window) {
    return windowExists(window) ? window->widget->controlBar() : nullptr;
}

void openControlBar(Window* window) {
    if (windowExists(window)) window->widget->showControlBar(true);
}

void closeControlBar(Window* window) {
    if (windowExists(window)) window->widget->showControlBar(false);
}

void setBarTip(Window* window, int control, const std::string& text) {
    if (ControlBarRow* bar = barOf(window)) bar->setTip(control, QString::fromStdString(text));
}

void showBarButton(Window* window, int button, const BarButtonLook& look) {
    ControlBarRow* const bar = barOf(window);
    if (BarButton* found = bar ? bar->button(button) : nullptr) found->showLook(look);
}

void showBarRate(Window* window, const std::string& text) {
    if (ControlBarRow* bar = barOf(window)) bar->rate().rewrite(QString::fromStdString(text));
}

}  // namespace vistel::platform
