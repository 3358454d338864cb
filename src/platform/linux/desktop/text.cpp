#include "platform/text.h"

#include <QFont>
#include <QFontMetrics>
#include <QImage>
#include <QPainter>
#include <algorithm>
#include <cstring>
#include <deque>

#include "platform/linux/desktop/application.h"

namespace vistel::platform {

// Without a display there is no text: widths are 0 and coverage is empty.
struct FontHandle {
    FontRequest request;
    QFont font;
    bool usable = false;
};

static void findFont(FontHandle& handle) {
    if (handle.usable || !startApplication()) return;
    QFont font(QStringLiteral("Helvetica"));
    // Fonts without this family: any of the same kind.
    font.setStyleHint(QFont::Helvetica,
                      QFont::StyleStrategy(QFont::PreferAntialias | QFont::NoSubpixelAntialias));
    font.setPixelSize(std::max(scaledForText(std::abs(handle.request.height)), 1));
    font.setWeight(static_cast<QFont::Weight>(std::clamp(handle.request.weight, 1, 1000)));
    font.setItalic(handle.request.italic);
    handle.font = font;
    handle.usable = true;
}

FontHandle* createFont(const FontRequest& request) {
    static std::deque<FontHandle> fonts;
    for (FontHandle& font : fonts) {
        const FontRequest& known = font.request;
        if (known.height == request.height && known.weight == request.weight &&
            known.italic == request.italic) {
            return &font;
        }
    }
    fonts.push_back({request, {}, false});
    return &fonts.back();
}

int textWidth(FontHandle* font, const std::string& text) {
    findFont(*font);
    if (!font->usable) return 0;
    return QFontMetrics(font->font).horizontalAdvance(QString::fromStdString(text));
}

TextCoverage renderText(FontHandle* font, const std::string& text) {
    TextCoverage coverage;
    coverage.width = textWidth(font, text);
    if (coverage.width <= 0) return coverage;
    const QFontMetrics metrics(font->font);
    coverage.height = metrics.height();
    coverage.descent = metrics.descent();
    QImage image(coverage.width, coverage.height, QImage::Format_Grayscale8);
    image.fill(Qt::black);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::TextAntialiasing);
    painter.setFont(font->font);
    painter.setPen(Qt::white);
    painter.drawText(0, metrics.ascent(), QString::fromStdString(text));
    painter.end();
    coverage.rows.resize(static_cast<size_t>(coverage.width) * coverage.height);
    for (int row = 0; row < coverage.height; ++row) {
        std::memcpy(coverage.rows.data() + static_cast<size_t>(row) * coverage.width,
                    image.constScanLine(row), static_cast<size_t>(coverage.width));
    }
    return coverage;
}

}  // namespace vistel::platform
