// The control bar as a row of widgets.
#pragma once

#include <QAbstractButton>
#include <QLineEdit>
#include <QWidget>
#include <functional>
#include <map>
#include <string>

#include "platform/bar_picture.h"

namespace vistel::platform {

class BarButton : public QAbstractButton {
 public:
    BarButton(QWidget* parent, const char* caption);
    void showLook(const BarButtonLook& wanted);

 protected:
    void paintEvent(QPaintEvent* event) override;

 private:
    BarButtonLook look;
};

// Takes digits and blanks; Up, Down and the wheel step.
class RateField : public QLineEdit {
 public:
    RateField(QWidget* parent, std::function<void(const std::string& text)> changed,
              std::function<void()> left);
    // Over what is being typed, too; nobody is told.
    void rewrite(const QString& text);

 protected:
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

 private:
    void step(int change);

    std::function<void()> leave;  // the keyboard goes back to the picture
};

class ControlBarRow : public QWidget {
 public:
    // What the bar asks of the window round it.
    struct Owner {
        std::function<void(int control)> clicked;
        std::function<void(const std::string& text)> rateTyped;
        std::function<void()> left;
    };
    ControlBarRow(QWidget* parent, const Owner& owner);

    void setTip(int control, const QString& text);
    BarButton* button(int control);  // null: none
    RateField& rate() { return *field; }

 protected:
    void resizeEvent(QResizeEvent* event) override;

 private:
    struct Placed {
        QWidget* widget = nullptr;
        QRect place;  // at usual density
    };
    std::map<int, Placed> controls;
    RateField* field = nullptr;
};

}  // namespace vistel::platform
