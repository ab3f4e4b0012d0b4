// What leaves the window: the chart (bare as drawn, or titled) to the
// clipboard, to PNG and to SVG, and the one-page report to PDF and to a
// printer. Each asks the window for its chart and figures and writes them.
#pragma once

#include "ui/main/ReportPage.h"

#include <string>

class frm_Pondera;
class QString;

namespace ChartExport {

// The report page for what the window shows, dated today.
ReportPage::Content ReportOf(frm_Pondera& window);

// Writes the report as PDF; false (after nothing else) when it could not be written.
bool WriteReport(frm_Pondera& window, const QString& path);

// A titled chart of the window's chart at `ratio` device pixels per pixel.
TitledChart::Chart TitledOf(frm_Pondera& window, double ratio, bool title);

// Writes the chart as PNG or SVG by the path's suffix, titled or bare.
bool WriteChart(frm_Pondera& window, const QString& path, bool titled);

// The menu commands: each asks where (or which printer) and writes.
void CopyChart(frm_Pondera& window);
void SaveChart(frm_Pondera& window);
void SaveReport(frm_Pondera& window);
void PrintReport(frm_Pondera& window);

} // namespace ChartExport
