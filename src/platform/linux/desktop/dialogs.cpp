#include "platform/dialogs.h"

#include <QMessageBox>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "platform/linux/desktop/application.h"
#include "platform/linux/desktop/native_window.h"

namespace vistel::platform {

static void showBox(Window* over, QMessageBox::Icon icon, const std::string& caption,
                    const std::string& text) {
    if (!startApplication()) {
        std::fprintf(stderr, "%s: %s\n", caption.c_str(), text.c_str());
        return;
    }
    QWidget* const parent = boxParent(over);
    QMessageBox box(parent);
    if (parent) box.setWindowModality(Qt::WindowModal);
    box.setIcon(icon);
    box.setTextFormat(Qt::PlainText);
    box.setWindowTitle(QString::fromStdString(caption));
    box.setText(QString::fromStdString(text));
    box.exec();
    // Without a window manager nobody else gives the keyboard back.
    if (QWidget* still = boxParent(over)) still->activateWindow();
}

void showMessageBox(Window* over, const std::string& caption, const std::string& text) {
    showBox(over, QMessageBox::NoIcon, caption, text);
}

void showSystemErrorBox(Window* over, const std::string& caption) {
    const std::string text = std::strerror(errno);
    showBox(over, QMessageBox::Information, caption, text);
}

}  // namespace vistel::platform
