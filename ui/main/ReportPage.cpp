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

// Rows of captions and values in two columns each, filled top to bottom. A
// value longer than its room ends in an ellipsis rather than running on.
double PaintRows(QPainter& painter, const QRectF& area,
                 const std::vector<std::pair<std::string, std::string>>& rows) {
    painter.setFont(FontOf(kBody));
    const QFontMetricsF metrics(painter.font());
    const double line = metrics.height() * kRowGap;
    const std::size_t perColumn = std::max<std::size_t>(1, (rows.size() + 1) / 2);
    const double gap = metrics.height();
    auto width = [&](const std::string& text) {
        return metrics.horizontalAdvance(QString::fromStdString(text));
    };
    double caption[2] = {0, 0}, value[2] = {0, 0};
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const std::size_t c = i / perColumn;
        caption[c] = std::max(caption[c], width(rows[i].first) + gap);
        value[c] = std::max(value[c], width(rows[i].second));
    }
    // The first column as wide as it needs; the second takes the rest.
    const double second = caption[0] + value[0] + gap;
    const double room[2] = {value[0], area.width() - second - caption[1]};
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const std::size_t c = i / perColumn;
        const double x = area.left() + (c == 0 ? 0 : second);
        const double y = area.top() + static_cast<double>(i % perColumn) * line;
        painter.setPen(QColor(80, 80, 80));
        painter.drawText(QRectF(x, y, caption[c], line), Qt::AlignLeft | Qt::AlignVCenter,
                         QString::fromStdString(rows[i].first));
        painter.setPen(Qt::black);
        painter.drawText(
            QRectF(x + caption[c], y, room[c], line), Qt::AlignLeft | Qt::AlignVCenter,
            metrics.elidedText(QString::fromStdString(rows[i].second), Qt::ElideRight, room[c]));
    }
    return static_cast<double>(perColumn) * line;
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

    // The density chart across the page, as tall as its proportions ask (at
    // most half the page); with data, the probability plot beside it.
    const double chartWidth = content.ProbabilityPlot ? area.width() * 0.6 : area.width();
    const QSizeF natural = TitledChart::SizeFor(content.Chart, kBody);
    double chartHeight = area.height() * 0.3;
    if (!natural.isEmpty()) {
        chartHeight =
            std::min(chartWidth * natural.height() / natural.width(), area.height() * 0.5);
        TitledChart::Paint(painter, QRectF(area.left(), y, chartWidth, chartHeight), content.Chart,
                           kBody);
    }
    if (content.ProbabilityPlot) {
        const double left = area.left() + chartWidth + line;
        content.ProbabilityPlot(painter,
                                QRectF(left, y + line, area.right() - left, chartHeight - line));
    }
    y += chartHeight + line;

    // The figures, in two columns across the page.
    PaintRows(painter, QRectF(area.left(), y, area.width(), area.bottom() - y), content.Rows);
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
