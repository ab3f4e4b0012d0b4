// The one-page report: heading and date, the distribution and its parameters,
// the titled density chart, the probability plot when the curve was fitted to
// data, and every figure the window shows (the rows of Copy Results). The same
// page goes to a PDF file and to a printer. Text and lines are painted as
// vectors; the density chart is the window's own picture, drawn for print at a
// high pixel ratio.
#pragma once

#include "ui/main/TitledChart.h"

#include <QPageSize>

#include <functional>
#include <string>
#include <utility>
#include <vector>

class QLocale;
class QPainter;
class QPrinter;
class QString;

namespace ReportPage {

struct Content {
    std::string Heading;    // what the page is about: the distribution
    std::string Subheading; // the date and the program
    std::string Params;     // the parameters on one line
    TitledChart::Chart Chart;
    std::vector<std::pair<std::string, std::string>> Rows; // caption, value
    // Paints the probability plot into a rectangle; empty when there are no data.
    std::function<void(QPainter&, const QRectF&)> ProbabilityPlot;
};

// Tab-separated "caption<TAB>value" lines (what Copy Results puts on the
// clipboard) as rows.
std::vector<std::pair<std::string, std::string>> RowsOf(const std::string& text);

// Letter where the locale measures in inches (the United States), A4 elsewhere.
QPageSize PageSizeFor(const QLocale& locale);

// Paints the page into `page`, in points.
void Paint(QPainter& painter, const QRectF& page, const Content& content);

// False when the file could not be written.
bool WritePdf(const QString& path, const Content& content, const QPageSize& size);

void Print(QPrinter& printer, const Content& content);

} // namespace ReportPage
