#include "platform/linux/desktop/bar_row.h"

#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QRegularExpressionValidator>
#include <QSignalBlocker>
#include <QWheelEvent>
#include <algorithm>

#include "resources/command_ids.h"

namespace vistel::platform {

namespace {

constexpr int buttonTop = 3, buttonHeight = 23;
constexpr int fieldTop = 4, fieldHeight = 21;
constexpr int longestText = 255;
constexpr int tallestText = 14;

uint32_t colourOf(const QPalette& palette, QPalette::ColorRole role) {
    return palette.color(QPalette::Active, role).rgb() & 0xFFFFFF;
}

}  // namespace

// --- button -------------------------------------------------------------------------------------

BarButton::BarButton(QWidget* parent, const char* caption) : QAbstractButton(parent) {
    setAccessibleName(QString::fromUtf8(caption));
    setFocusPolicy(Qt::NoFocus);
    setAttribute(Qt::WA_Hover);
}

void BarButton::showLook(const BarButtonLook& wanted) {
    look = wanted;
    setEnabled(look.enabled);
    update();
}

void BarButton::paintEvent(QPaintEvent*) {
    const BarColours colours{colourOf(palette(), QPalette::Window),
                             colourOf(palette(), QPalette::WindowText),
                             colourOf(palette(), QPalette::Highlight)};
    const BarTouch touch = isDown()       ? BarTouch::pressed
                           : underMouse() ? BarTouch::hovered
                                          : BarTouch::none;
    const std::vector<uint32_t> pixels = drawBarButton(look, touch, colours, width(), height());
    QPainter(this).drawImage(0, 0,
                             QImage(reinterpret_cast<const uchar*>(pixels.data()), width(),
                                    height(), width() * 4, QImage::Format_RGB32));
}

// --- field --------------------------------------------------------------------------------------

RateField::RateField(QWidget* parent, std::function<void(const std::string& text)> changed,
                     std::function<void()> left)
    : QLineEdit(parent), leave(std::move(left)) {
    setAlignment(Qt::AlignRight);
    setFocusPolicy(Qt::ClickFocus);
    setMaxLength(longestText);
    setContextMenuPolicy(Qt::NoContextMenu);
    static const QRegularExpression numbersAndBlanks(QStringLiteral("[0-9 \\t\\r\\n]*"));
    setValidator(new QRegularExpressionValidator(numbersAndBlanks, this));
    connect(this, &QLineEdit::textChanged,
            [changed = std::move(changed)](const QString& text) { changed(text.toStdString()); });
}

void RateField::rewrite(const QString& wanted) {
    if (wanted == text()) return;
    const QSignalBlocker quiet(this);
    const bool emptied = text().isEmpty();
    const int caret = cursorPosition();
    setText(wanted);
    setCursorPosition(std::min<int>(caret, static_cast<int>(wanted.size())));
    // What stands for an emptied field is replaced by the next digit.
    if (emptied && hasFocus()) selectAll();
}

void RateField::step(int change) {
    setText(QString::number(std::max(text().simplified().toInt() + change, 1)));
}

void RateField::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
        case Qt::Key_Escape:
        case Qt::Key_Tab:
            return leave();
        case Qt::Key_Up:
            return step(1);
        case Qt::Key_Down:
            return step(-1);
        default:
            QLineEdit::keyPressEvent(event);
    }
}

void RateField::wheelEvent(QWheelEvent* event) {
    step(event->angleDelta().y() > 0 ? 1 : -1);
    event->accept();
}

// --- row ----------------------------------------------------------------------------------------

ControlBarRow::ControlBarRow(QWidget* parent, const Owner& owner) : QWidget(parent) {
    setAutoFillBackground(true);
    // The bar keeps its size whatever that of texts is.
    QFont ours = font();
    ours.setPixelSize(std::min(QFontInfo(ours).pixelSize(), tallestText));
    setFont(ours);
    const auto addButton = [&](const char* caption, int control, int left, int width) {
        auto* made = new BarButton(this, caption);
        made->setGeometry(left, buttonTop, width, buttonHeight);
        connect(made, &QAbstractButton::clicked, [owner, control] { owner.clicked(control); });
        controls[control] = made;
    };
    const auto addField = [&](int control, int left, int width) {
        controls[control] = field = new RateField(this, owner.rateTyped, owner.left);
        field->setGeometry(left, fieldTop, width, fieldHeight);
    };
    const auto addLabel = [&](const char* text, int control, int left, int width) {
        auto* label = new QLabel(QString::fromUtf8(text), this);
        label->setGeometry(left, fieldTop, width, fieldHeight);
        if (field) label->setBuddy(field);
        controls[control] = label;
    };
#define BAR_BUTTON(caption, control, left, width) addButton(caption, control, left, width);
#define BAR_FIELD(control, left, width) addField(control, left, width);
#define BAR_LABEL(text, control, left, width) addLabel(text, control, left, width);
#include "resources/control_bar_table.inc"
#undef BAR_BUTTON
#undef BAR_FIELD
#undef BAR_LABEL
    field->setAccessibleName(QStringLiteral("FPS"));
}

void ControlBarRow::setTip(int control, const QString& text) {
    if (const auto found = controls.find(control); found != controls.end())
        found->second->setToolTip(text);
}

BarButton* ControlBarRow::button(int control) {
    const auto found = controls.find(control);
    return found == controls.end() ? nullptr : dynamic_cast<BarButton*>(found->second);
}

}  // namespace vistel::platform
