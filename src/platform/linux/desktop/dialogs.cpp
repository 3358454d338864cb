#include "platform/dialogs.h"

#include <QMessageBox>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "platform/linux/desktop/application.h"
#include "platform/linux/desktop/viewer_window.h"

namespace vistel::platform {

static void showBox(QMessageBox::Icon icon, const std::string& caption, const std::string& text) {
    if (!startApplication()) {
        std::fprintf(stderr, "%s: %s\n", caption.c_str(), text.c_str());
        return;
    }
    QMessageBox box(ViewerWindow::current());
    box.setIcon(icon);
    box.setTextFormat(Qt::PlainText);
    box.setWindowTitle(QString::fromStdString(caption));
    box.setText(QString::fromStdString(text));
    box.exec();
    // Without a window manager nobody else gives the keyboard back.
    if (ViewerWindow* window = ViewerWindow::current()) window->activateWindow();
}

void showMessageBox(const std::string& caption, const std::string& text) {
    showBox(QMessageBox::NoIcon, caption, text);
}

void showSystemErrorBox(const std::string& caption) {
    const std::string text = std::strerror(errno);
    showBox(QMessageBox::Information, caption, text);
}

}  // namespace vistel::platform
