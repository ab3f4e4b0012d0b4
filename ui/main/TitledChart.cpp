#include "ui/main/TitledChart.h"

#include <QFont>
#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>

namespace TitledChart {

namespace {

constexpr const char* kXTitle = "Value";
constexpr const char* kYTitle = "Density";

QFont FontOf(double size, bool bold = false) {
    QFont font("DejaVu Sans");
    font.setPixelSize(std::max(1, static_cast<int>(size + 0.5)));
    font.setBold(bold);
    return font;
}

// The bands around the picture: title above, the y title left, the x title below.
struct Bands {
    double Top, Left, Bottom;
};

Bands BandsOf(const Chart& chart, double fontSize) {
    const double line = QFontMetricsF(FontOf(fontSize)).height();
    const double title = chart.Title.empty()
                             ? line * 0.5
                             : QFontMetricsF(FontOf(fontSize * 1.25, true)).height() + line * 0.6;
    return {title, line * 1.4, 0};
}

QSizeF PictureSize(const Chart& chart) {
    return chart.Image.deviceIndependentSize();
}

} // namespace

QSizeF SizeFor(const Chart& chart, double fontSize) {
    const Bands b = BandsOf(chart, fontSize);
    const QSizeF picture = PictureSize(chart);
    return {picture.width() + b.Left, picture.height() + b.Top + b.Bottom};
}

void Paint(QPainter& painter, const QRectF& area, const Chart& chart, double fontSize) {
    const QSizeF picture = PictureSize(chart);
    if (picture.isEmpty() || area.isEmpty()) return;
    const Bands b = BandsOf(chart, fontSize);
    const QRectF room(area.left() + b.Left, area.top() + b.Top, area.width() - b.Left,
                      area.height() - b.Top - b.Bottom);
    // The picture keeps its proportions, so its geometry maps by one factor.
    const double s = std::min(room.width() / picture.width(), room.height() / picture.height());
    const QRectF target(room.left(), room.top(), picture.width() * s, picture.height() * s);

    painter.save();
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(target, chart.Image);
    painter.setPen(Qt::black);

    if (!chart.Title.empty()) {
        painter.setFont(FontOf(fontSize * 1.25, true));
        painter.drawText(QRectF(area.left(), area.top(), area.width(), b.Top),
                         Qt::AlignHCenter | Qt::AlignVCenter | Qt::TextSingleLine,
                         QString::fromStdString(chart.Title));
    }

    const DensityChart::Geometry& g = chart.Geom;
    auto px = [&](double x) { return target.left() + g.Px(x) * s; };
    const double plotLeft = target.left() + g.X0 * s;
    const double plotRight = target.left() + (g.X0 + g.PlotWidth) * s;
    const double plotTop = target.top() + (g.Y0 - g.PlotHeight) * s;
    const double baseline = target.top() + g.Y0 * s;

    painter.setFont(FontOf(fontSize));
    const QFontMetricsF metrics(painter.font());
    // The x title under the tick labels, which sit just below the baseline.
    const double xTitleTop = baseline + (target.bottom() - baseline) * 0.45;
    painter.drawText(QRectF(plotLeft, xTitleTop, plotRight - plotLeft, metrics.height() * 1.2),
                     Qt::AlignHCenter | Qt::AlignVCenter, kXTitle);
    painter.save();
    painter.translate(area.left(), (plotTop + baseline) / 2);
    painter.rotate(-90);
    painter.drawText(QRectF(-(baseline - plotTop) / 2, 0, baseline - plotTop, b.Left),
                     Qt::AlignHCenter | Qt::AlignVCenter, kYTitle);
    painter.restore();

    // Each limit's name just above the plot, centred on its line.
    for (const Chart::Mark& mark : chart.Limits) {
        const double x = px(mark.X);
        if (!(x >= target.left() && x <= target.right())) continue;
        const QString name = QString::fromStdString(mark.Name);
        const double w = metrics.horizontalAdvance(name);
        painter.drawText(QPointF(x - w / 2, plotTop - metrics.descent() - fontSize * 0.2), name);
    }

    if (!chart.Corner.empty()) {
        QStringList lines;
        for (const std::string& line : chart.Corner)
            lines << QString::fromStdString(line);
        const QString text = lines.join('\n');
        const QRectF box = metrics.boundingRect(QRectF(0, 0, 1e6, 1e6), Qt::AlignLeft, text);
        const double pad = fontSize * 0.4;
        const QRectF frame(plotRight - box.width() - 2 * pad, plotTop + pad, box.width() + 2 * pad,
                           box.height() + 2 * pad);
        painter.fillRect(frame, QColor(255, 255, 255, 220));
        painter.setPen(QPen(QColor(128, 128, 128), 0));
        painter.drawRect(frame);
        painter.setPen(Qt::black);
        painter.drawText(frame.adjusted(pad, pad, -pad, -pad), Qt::AlignLeft, text);
    }
    painter.restore();
}

QImage Render(const Chart& chart, double fontSize) {
    const double ratio = chart.Image.devicePixelRatio();
    const QSizeF size = SizeFor(chart, fontSize);
    QImage image((size * ratio).toSize(), QImage::Format_RGB32);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::TextAntialiasing);
    Paint(painter, QRectF(QPointF(0, 0), size), chart, fontSize);
    return image;
}

} // namespace TitledChart
