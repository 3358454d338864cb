// Dialogs for files: the desktop's own where nothing is asked besides, else the toolkit's, with our
// fields in a row below its own.
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QSpinBox>
#include <algorithm>

#include "platform/dialogs.h"
#include "platform/linux/desktop/application.h"
#include "platform/linux/desktop/native_window.h"
#include "resources/dialog_texts.h"

namespace vistel::platform {

namespace {

constexpr int longestName = 511;  // characters

// On this system a file without a dot is a file, too.
QString filterText(const FileFilter& filter) {
    QString patterns = QString::fromStdString(filter.patterns);
    patterns = patterns == QLatin1String("*.*")
                   ? QStringLiteral("*")
                   : patterns.replace(QLatin1Char(';'), QLatin1Char(' '));
    return QString::fromStdString(filter.name) + QLatin1String(" (") + patterns.trimmed() +
           QLatin1Char(')');
}

// A file to be opened may be typed though its name has not the chosen type: any name is taken at
// first, and the dialog stays open when there is no such file.
class FileDialog : public QFileDialog {
 public:
    using QFileDialog::QFileDialog;

    void accept() override {
        const QStringList names = selectedFiles();
        const bool opens = acceptMode() == AcceptOpen && !names.isEmpty();
        if (!opens || QFileInfo::exists(names.constFirst())) return QFileDialog::accept();
        QMessageBox::warning(
            this, windowTitle(),
            names.constFirst() + QLatin1String("\n\n") + QStringLiteral(FILE_MISSING));
    }
};

// The fields below a dialog.
class Fields {
 public:
    Fields(QFileDialog& dialog, const FileRequest& request) {
        auto* const grid = qobject_cast<QGridLayout*>(dialog.layout());
        if (!grid) return;
        row = new QHBoxLayout;
        if (request.question == FileQuestion::openAnimation) addAnimation(request.animation);
        if (request.question == FileQuestion::openSound)
            offset = addNumber(QStringLiteral(AUDIO_OFFSET_TEXT), INT_MIN, INT_MAX, 0);
        row->addStretch();
        grid->addLayout(row, grid->rowCount(), 0, 1, grid->columnCount());
    }

    void read(FileChoice& choice) const {
        if (offset) choice.audioOffset = offset->value();
        if (!zoom) return;
        choice.animation = {endSet->isChecked() ? end->value() : 0, zoom->value(), shrink->value(),
                            depth->isChecked()};
    }

 private:
    QSpinBox* addNumber(const QString& label, int least, int most, int value) {
        auto* const field = new QSpinBox;
        field->setRange(least, most);
        field->setValue(value);
        field->setAccessibleName(label);
        if (!label.isEmpty()) row->addWidget(new QLabel(label));
        row->addWidget(field);
        return field;
    }

    void addAnimation(const AnimationFields& fields) {
        endSet = new QCheckBox(QStringLiteral(SET_END_FRAME_TEXT));
        row->addWidget(endSet);
        end = addNumber({}, INT_MIN, INT_MAX, 0);
        end->setAccessibleName(endSet->text());
        end->setEnabled(false);
        QObject::connect(endSet, &QCheckBox::toggled, end, &QWidget::setEnabled);
        zoom = addNumber(QStringLiteral(ZOOM_FACTOR_TEXT), 1, 8, fields.zoom);
        shrink = addNumber(QStringLiteral(SHRINK_FACTOR_TEXT), 1, 9999, fields.shrink);
        depth = new QCheckBox(QStringLiteral(Z_BUFFER_TEXT));
        depth->setChecked(fields.depth);
        row->addWidget(depth);
    }

    QHBoxLayout* row = nullptr;
    QCheckBox *endSet = nullptr, *depth = nullptr;
    QSpinBox *end = nullptr, *zoom = nullptr, *shrink = nullptr, *offset = nullptr;
};

void addHelp(QFileDialog& dialog) {
    auto* const buttons = dialog.findChild<QDialogButtonBox*>();
    if (!buttons) return;
    QPushButton* const help = buttons->addButton(QDialogButtonBox::Help);
    QObject::connect(help, &QPushButton::clicked, &dialog, [&dialog] {
        QMessageBox box(&dialog);
        box.setWindowTitle(QStringLiteral(FILE_HELP_CAPTION));
        box.setText(QStringLiteral(FILE_HELP_OPENING) + QLatin1String("\n\n") +
                    QStringLiteral(FILE_HELP_SAVING));
        box.exec();
    });
}

}  // namespace

std::optional<FileChoice> askForFile(Window* over, const FileRequest& request) {
    if (!startApplication()) return std::nullopt;
    const bool saves = request.question == FileQuestion::save;
    const bool asksMore = request.question == FileQuestion::openAnimation ||
                          request.question == FileQuestion::openSound;
    FileDialog dialog(boxParent(over));
    dialog.setAcceptMode(saves ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode(QFileDialog::AnyFile);
    // Whether a file may be replaced is asked by who saves it.
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    dialog.setOption(QFileDialog::DontUseNativeDialog, asksMore);
    if (!request.folder.empty()) dialog.setDirectory(QString::fromStdString(request.folder));
    QStringList filters;
    for (const FileFilter& filter : request.filters) filters << filterText(filter);
    dialog.setNameFilters(filters);
    const int first = std::clamp<int>(request.filter - 1, 0, static_cast<int>(filters.size()) - 1);
    dialog.selectNameFilter(filters[first]);
    std::optional<Fields> fields;
    if (dialog.layout()) {  // the toolkit's own
        if (asksMore) fields.emplace(dialog, request);
        addHelp(dialog);
    }
    if (runBox(over, dialog) != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return std::nullopt;
    const QString name = dialog.selectedFiles().constFirst();
    if (name.isEmpty() || name.size() > longestName) return std::nullopt;
    FileChoice choice;
    choice.animation = request.animation;
    if (fields) fields->read(choice);
    choice.name = name.toStdString();
    choice.folder = QFileInfo(name).absolutePath().toStdString();
    choice.filter = static_cast<int>(filters.indexOf(dialog.selectedNameFilter())) + 1;
    return choice;
}

}  // namespace vistel::platform
