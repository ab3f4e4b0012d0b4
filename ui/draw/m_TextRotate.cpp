#include "ui/draw/m_TextRotate.h"

#include "support/ErrorTrap.h"
#include "ui/draw/Look.h"
#include "ui/draw/PictureBox.h"

#include <QFontMetricsF>
#include <QImage>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace m_TextRotate {

namespace {

constexpr const char* kModule = "Pondera.m_TextRotate";

// The size is the character cell's height, as the old font request had it,
// so the face is scaled until ascent + descent match it.
QFont CellFont(const QString& fontName, int size, bool bold, bool italic, QPaintDevice* device) {
    QFont font(fontName.isEmpty() ? look::AppFontFamily() : fontName);
    const int cell = std::max(size, 1);
    font.setPixelSize(cell);
    font.setWeight(bold ? QFont::Bold : QFont::Normal);
    font.setItalic(italic);
    const double height = QFontMetricsF(font, device).height();
    if (height > 0)
        font.setPixelSize(std::max(1, static_cast<int>(std::lround(cell * cell / height))));
    return font;
}

void Print(QPainter& p, QPaintDevice* device, const QString& text, double x, double y, int angle,
           const QString& fontName, int size, bool bold, bool italic) {
    if (!std::isfinite(x) || !std::isfinite(y)) return;
    const QFont font = CellFont(fontName, size, bold, italic, device);
    p.save();
    p.setFont(font);
    p.setRenderHint(QPainter::TextAntialiasing, true);
    p.setBackgroundMode(Qt::TransparentMode);
    p.translate(x, y);
    // Tenths of a degree, counter-clockwise on screen.
    p.rotate(-angle / 10.0);
    p.drawText(QPointF(0, QFontMetricsF(font, device).ascent()), text);
    p.restore();
}

} // namespace

void PrintRotatedText(PictureBox& surface, const QString& text, double x, double y, int angle,
                      const QString& fontName, int size, bool bold, bool italic) {
    support::Trap({kModule, __func__}, [&] {
        QPainter& p = surface.Painter();
        const QColor pen = look::ToQColor(surface.ForeColor());
        p.setPen(pen);
        Print(p, p.device(), text, x, y, angle, fontName, size, bold, italic);
        surface.Refresh();
    });
}

void PrintRotatedText(QImage& image, const QString& text, double x, double y, int angle,
                      const QString& fontName, int size, bool bold, bool italic) {
    support::Trap({kModule, __func__}, [&] {
        if (image.isNull()) return;
        QPainter p(&image);
        p.setPen(Qt::black);
        Print(p, &image, text, x, y, angle, fontName, size, bold, italic);
    });
}

} // namespace m_TextRotate
