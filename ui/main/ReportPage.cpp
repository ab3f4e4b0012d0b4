#include "ui/main/ReportPage.h"

#include <QFont>
#include <QFontMetricsF>
#include <QLocale>
#include <QPainter>
#include <QPdfWriter>
#include <QPrinter>

#include <algorithm>

namespace ReportPage {

namespace {

constexpr double kMargin = 42;   // points, about 15 mm
constexpr double kBody = 9;      // body text size in points
constexpr double kHeading = 16;  // heading size in points
constexpr double kRowGap = 1.35; // line height of the figure rows, in text heights

QFont FontOf(double size, bool bold = false) {
    QFont font("DejaVu Sans");
    font.setPixelSize(std::max(1, static_cast<int>(size + 0.5)));
    font.setBold(bold);
    return font;
}

// Rows of captions and values in two columns each, filled top to bottom.
double PaintRows(QPainter& painter, const QRectF& area,
                 const std::vector<std::pair<std::string, std::string>>& rows) {
    painter.setFont(FontOf(kBody));
    const double line = QFontMetricsF(painter.font()).height() * kRowGap;
    const int perColumn = std::max(1, static_cast<int>((rows.size() + 1) / 2));
    const double columnWidth = area.width() / 2;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const int column = static_cast<int>(i) / perColumn;
        const double x = area.left() + column * columnWidth;
        const double y = area.top() + static_cast<double>(static_cast<int>(i) % perColumn) * line;
        painter.setPen(QColor(80, 80, 80));
        painter.drawText(QRectF(x, y, columnWidth * 0.5, line), Qt::AlignLeft | Qt::AlignVCenter,
                         QString::fromStdString(rows[i].first));
        painter.setPen(Qt::black);
        painter.drawText(QRectF(x + columnWidth * 0.5, y, columnWidth * 0.48, line),
                         Qt::AlignLeft | Qt::AlignVCenter, QString::fromStdString(rows[i].second));
    }
    return perColumn * line;
}

} // namespace

std::vector<std::pair<std::string, std::string>> RowsOf(const std::string& text) {
    std::vector<std::pair<std::string, std::string>> rows;
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        const std::string line = text.substr(start, end - start);
        const std::size_t tab = line.find('\t');
        if (tab == std::string::npos) continue;
        // A row of several cells (an interval's low and high) reads as a range.
        std::string value = line.substr(tab + 1);
        for (std::size_t at; (at = value.find('\t')) != std::string::npos;)
            value.replace(at, 1, " \u2013 ");
        rows.emplace_back(line.substr(0, tab), std::move(value));
        start = end + 1;
    }
    return rows;
}

QPageSize PageSizeFor(const QLocale& locale) {
    return QPageSize(locale.measurementSystem() == QLocale::ImperialUSSystem ? QPageSize::Letter
                                                                             : QPageSize::A4);
}

void Paint(QPainter& painter, const QRectF& page, const Content& content) {
    const QRectF area = page.adjusted(kMargin, kMargin, -kMargin, -kMargin);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::TextAntialiasing);
    double y = area.top();

    painter.setPen(Qt::black);
    painter.setFont(FontOf(kHeading, true));
    const double headingHeight = QFontMetricsF(painter.font()).height();
    painter.drawText(QRectF(area.left(), y, area.width(), headingHeight),
                     Qt::AlignLeft | Qt::AlignVCenter, QString::fromStdString(content.Heading));
    painter.setFont(FontOf(kBody));
    painter.setPen(QColor(80, 80, 80));
    painter.drawText(QRectF(area.left(), y, area.width(), headingHeight),
                     Qt::AlignRight | Qt::AlignVCenter, QString::fromStdString(content.Subheading));
    y += headingHeight * 1.2;
    painter.setPen(Qt::black);
    const double line = QFontMetricsF(painter.font()).height();
    painter.drawText(QRectF(area.left(), y, area.width(), line * 2.5),
                     Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap,
                     QString::fromStdString(content.Params));
    y += line * 1.8;
    painter.setPen(QPen(QColor(160, 160, 160), 0.5));
    painter.drawLine(QPointF(area.left(), y), QPointF(area.right(), y));
    y += line * 0.8;

    // The chart across the page, as tall as its proportions ask, at most 45 % of it.
    const QSizeF natural = TitledChart::SizeFor(content.Chart, kBody);
    double chartHeight = 0;
    if (!natural.isEmpty()) {
        chartHeight =
            std::min(area.width() * natural.height() / natural.width(), area.height() * 0.5);
        TitledChart::Paint(painter, QRectF(area.left(), y, area.width(), chartHeight),
                           content.Chart, kBody);
    }
    y += chartHeight + line;

    // The figures; with data, the probability plot beside them.
    QRectF rows(area.left(), y, area.width(), area.bottom() - y);
    if (content.ProbabilityPlot) {
        const double side = std::min(area.width() * 0.42, area.bottom() - y);
        content.ProbabilityPlot(painter, QRectF(area.right() - side, y, side, side * 0.85));
        rows.setWidth(area.width() - side - line);
    }
    PaintRows(painter, rows, content.Rows);
    painter.restore();
}

bool WritePdf(const QString& path, const Content& content, const QPageSize& size) {
    QPdfWriter writer(path);
    if (!writer.setPageSize(size)) return false;
    writer.setPageMargins(QMarginsF(0, 0, 0, 0));
    writer.setTitle(QString::fromStdString(content.Heading));
    writer.setCreator("Pondera");
    // Painter units are points: the writer's resolution over 72.
    constexpr int kResolution = 1200;
    writer.setResolution(kResolution);
    QPainter painter;
    if (!painter.begin(&writer)) return false;
    painter.scale(kResolution / 72.0, kResolution / 72.0);
    Paint(painter, QRectF(QPointF(0, 0), size.size(QPageSize::Point)), content);
    return painter.end();
}

void Print(QPrinter& printer, const Content& content) {
    // The page keeps its own margins, so it prints as the PDF looks.
    printer.setFullPage(true);
    QPainter painter;
    if (!painter.begin(&printer)) return;
    const double scale = printer.resolution() / 72.0;
    painter.scale(scale, scale);
    const QRectF page = printer.paperRect(QPrinter::Point);
    Paint(painter, QRectF(QPointF(0, 0), page.size()), content);
    painter.end();
}

} // namespace ReportPage
