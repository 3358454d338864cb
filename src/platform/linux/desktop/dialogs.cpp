#include "platform/dialogs.h"

#include <QMessageBox>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "platform/linux/desktop/application.h"
#include "platform/linux/desktop/native_window.h"

namespace vistel::platform {

int runBox(Window* over, QDialog& box) {
    if (box.parentWidget()) box.setWindowModality(Qt::WindowModal);
    const int answer = box.exec();
    // Without a window manager nobody else gives the keyboard back.
    if (QWidget* still = boxParent(over)) still->activateWindow();
    return answer;
}

static void showBox(Window* over, QMessageBox::Icon icon, const std::string& caption,
                    const std::string& text) {
    if (!startApplication()) {
        std::fprintf(stderr, "%s: %s\n", caption.c_str(), text.c_str());
        return;
    }
    QMessageBox box(boxParent(over));
    box.setIcon(icon);
    box.setTextFormat(Qt::PlainText);
    box.setWindowTitle(QString::fromStdString(caption));
    box.setText(QString::fromStdString(text));
    runBox(over, box);
}

void showMessageBox(Window* over, const std::string& caption, const std::string& text) {
    showBox(over, QMessageBox::NoIcon, caption, text);
}

bool confirm(Window* over, const std::string& caption, const std::string& text) {
    if (!startApplication()) return false;
    QMessageBox box(boxParent(over));
    box.setIcon(QMessageBox::Question);
    box.setTextFormat(Qt::PlainText);
    box.setWindowTitle(QString::fromStdString(caption));
    box.setText(QString::fromStdString(text));
    box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
    box.setDefaultButton(QMessageBox::No);
    return runBox(over, box) == QMessageBox::Yes;
}

void showAbout(Window* over, const std::string& text) {
    showBox(over, QMessageBox::NoIcon, "About VisTel", text);
}

void showSystemErrorBox(Window* over, const std::string& caption) {
    const std::string text = std::strerror(errno);
    showBox(over, QMessageBox::Information, caption, text);
}

}  // namespace vistel::platform
