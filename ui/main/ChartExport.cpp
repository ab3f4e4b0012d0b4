#include "ui/main/ChartExport.h"

#include "settings/DisplayOptions.h"
#include "stats/m_Fits.h"
#include "stats/m_ProbabilityPlot.h"
#include "support/ErrorTrap.h"
#include "support/Format.h"
#include "support/UserFace.h"
#include "support/Version.h"
#include "ui/draw/PictureBox.h"
#include "ui/draw/m_PictureBoxCopy.h"
#include "ui/main/PlotPipeline.h"
#include "ui/main/ProbabilityChart.h"
#include "ui/main/ResultsSheet.h"
#include "ui/main/frm_Pondera.h"

#include <QDate>
#include <QFileDialog>
#include <QFileInfo>
#include <QLocale>
#include <QPainter>
#include <QPrintDialog>
#include <QPrinter>
#include <QSvgGenerator>

#include <cmath>

namespace ChartExport {

namespace {

constexpr double kChartFont = 12;  // text added around an exported chart, in pixels
constexpr double kReportRatio = 4; // the report's chart: sharp in print at 300 dpi and more
constexpr int kReportChartWidth = 640;
constexpr int kReportChartHeight = 400;

const QString kPng = "PNG images (*.png)";
const QString kPngTitled = "PNG images with titles (*.png)";
const QString kSvg = "SVG images (*.svg)";
const QString kSvgTitled = "SVG images with titles (*.svg)";

std::string Plain(std::string caption) {
    if (!caption.empty() && caption.back() == ':') caption.pop_back();
    return caption;
}

std::string ParamsLine(const ResultsSheet::Shown& shown, const char* separator) {
    std::string line;
    for (const auto& [caption, value] : shown.Params) {
        if (!line.empty()) line += separator;
        line += Plain(caption) + " " + value;
    }
    return line;
}

// Ppk and the method it was found by, for a chart's corner: every export names it.
void AddPpk(std::vector<std::string>& corner, const ResultsSheet::Shown& shown) {
    if (shown.Capability.Ppk.empty()) return;
    corner.push_back("Ppk " + shown.Capability.Ppk);
    corner.push_back(std::string("Method: ") + m_Capability::MethodName(shown.Study.Shown));
}

// How a row of the data dialog's table estimates its curve.
std::string EstimatorOf(int row) {
    switch (row) {
    case m_Fits::kNormal:
        return "sample mean and standard deviation (n - 1)";
    case m_Fits::kLogNormal:
        return "mean and standard deviation of ln x (n - 1)";
    case m_Fits::kLogNormal3P:
    case m_Fits::kWeibull3P:
        return "profile maximum likelihood";
    case m_Fits::kJohnsonMoments:
        return "moments (AS 99)";
    case m_Fits::kJohnsonPercentiles:
        return "percentiles (Slifker and Shapiro)";
    default:
        return "maximum likelihood";
    }
}

// The data's row: its rows on the page and its probability plot.
void AddDataFit(ReportPage::Content& page, const frm_Pondera& window) {
    const std::optional<m_Identify::RowResult> fit = window.ShownDataRow();
    if (!fit) return;
    int row = 0;
    while (row < m_Fits::kRowCount && fit->Name != m_Fits::Info(row).Name)
        ++row;
    const std::string pattern = "0.000";
    page.Rows.emplace_back("Fitted row", fit->Name);
    page.Rows.emplace_back("Estimator", EstimatorOf(row));
    if (std::isfinite(fit->A2))
        page.Rows.emplace_back("Anderson-Darling A²", support::Format(fit->A2, pattern));
    if (std::isfinite(fit->P))
        page.Rows.emplace_back("p (simulated)", support::Format(fit->P, pattern));
    m_ProbabilityPlot::Plot plot;
    {
        // Boost's and Eigen's arithmetic, where NaN and infinity are values.
        const support::ForeignCode numerics;
        plot = m_ProbabilityPlot::Make(window.DataValues, row, fit->F);
    }
    page.ProbabilityPlot = [plot = std::move(plot), style = ProbabilityChart::Style::FromOptions()](
                               QPainter& painter, const QRectF& area) {
        // The chart measures itself in the device's own pixels.
        painter.save();
        const QRectF device = painter.worldTransform().mapRect(area);
        painter.resetTransform();
        ProbabilityChart::Paint(painter, device, plot, style);
        painter.restore();
    };
}

} // namespace

TitledChart::Chart TitledOf(frm_Pondera& window, double ratio, bool title) {
    TitledChart::Chart chart =
        window.ExportChart(window.pb_PDF->ScaleWidth(), window.pb_PDF->ScaleHeight(), ratio);
    const ResultsSheet::Shown shown = window.ResultsShown();
    if (title) {
        chart.Title = shown.Distribution;
        const std::string params = ParamsLine(shown, ", ");
        if (!params.empty()) chart.Title += ": " + params;
    }
    if (!shown.PNC[2].empty()) chart.Corner.push_back("Total PNC " + shown.PNC[2]);
    AddPpk(chart.Corner, shown);
    return chart;
}

ReportPage::Content ReportOf(frm_Pondera& window) {
    const ResultsSheet::Shown shown = window.ResultsShown();
    ReportPage::Content page;
    page.Heading = shown.Distribution;
    if (!shown.N.empty()) page.Heading += " fitted to " + shown.N + " values";
    page.Subheading = QDate::currentDate().toString(Qt::ISODate).toStdString() + "   Pondera " +
                      support::kVersion;
    page.Params = ParamsLine(shown, "     ");
    // Beside a probability plot the chart is narrower, so its own text stays legible.
    const bool data = window.ShownDataRow().has_value();
    page.Chart = window.ExportChart(data ? kReportChartWidth * 3 / 4 : kReportChartWidth,
                                    kReportChartHeight, kReportRatio);
    const char* names[] = {"LSL", "Target", "USL"};
    for (int i = 0; i < 3; ++i)
        if (shown.Limit[i].Ticked)
            page.Params += std::string("     ") + names[i] + " " + shown.Limit[i].Text;
    AddPpk(page.Chart.Corner, shown);
    // A figure the window leaves blank (no limits, no capability) has no row.
    for (auto& row : ReportPage::RowsOf(ResultsSheet::Text(shown)))
        if (!row.second.empty()) page.Rows.push_back(std::move(row));
    AddDataFit(page, window);
    return page;
}

bool WriteReport(frm_Pondera& window, const QString& path) {
    return ReportPage::WritePdf(path, ReportOf(window), ReportPage::PageSizeFor(QLocale()));
}

bool WriteChart(frm_Pondera& window, const QString& path, bool titled) {
    const bool svg = QFileInfo(path).suffix().compare("svg", Qt::CaseInsensitive) == 0;
    if (!svg && !titled) return m_PictureBoxCopy::SavePicture(*window.pb_PDF, path);
    TitledChart::Chart chart = TitledOf(window, svg ? 4 : window.pb_PDF->PixelRatio(), titled);
    if (chart.Image.isNull()) return false;
    if (!svg) return TitledChart::Render(chart, kChartFont).save(path, "PNG");
    // SVG: the added text and lines as vectors, the chart as its picture.
    const QSizeF size =
        titled ? TitledChart::SizeFor(chart, kChartFont) : chart.Image.deviceIndependentSize();
    QSvgGenerator generator;
    generator.setFileName(path);
    generator.setSize(size.toSize());
    generator.setViewBox(QRectF(QPointF(0, 0), size));
    generator.setTitle(QString::fromStdString(chart.Title));
    QPainter painter;
    if (!painter.begin(&generator)) return false;
    if (titled)
        TitledChart::Paint(painter, QRectF(QPointF(0, 0), size), chart, kChartFont);
    else
        painter.drawImage(QRectF(QPointF(0, 0), size), chart.Image);
    return painter.end() && QFileInfo(path).size() > 0;
}

void CopyChart(frm_Pondera& window) {
    if (!DisplayOptions::AppChartTitles) return m_PictureBoxCopy::CopyEntirePicture(*window.pb_PDF);
    const QImage titled =
        TitledChart::Render(TitledOf(window, window.pb_PDF->PixelRatio(), true), kChartFont);
    if (titled.isNull()) return m_PictureBoxCopy::CopyEntirePicture(*window.pb_PDF);
    m_PictureBoxCopy::CopyImage(titled);
}

void SaveChart(frm_Pondera& window) {
    QString filter = DisplayOptions::AppChartTitles ? kPngTitled : kPng;
    QString path = QFileDialog::getSaveFileName(
        &window, "Save Chart As", "chart.png",
        QStringList{kPng, kPngTitled, kSvg, kSvgTitled}.join(";;"), &filter);
    if (path.isEmpty()) return;
    const bool svgFilter = filter == kSvg || filter == kSvgTitled;
    if (QFileInfo(path).suffix().isEmpty()) path += svgFilter ? ".svg" : ".png";
    const bool titled = filter == kPngTitled || filter == kSvgTitled;
    if (!WriteChart(window, path, titled))
        support::MsgBox("The chart could not be saved to " + path.toStdString() + ".",
                        PlotPipeline::kWarningTitle);
}

void SaveReport(frm_Pondera& window) {
    QString path =
        QFileDialog::getSaveFileName(&window, "Save Report", "report.pdf", "PDF documents (*.pdf)");
    if (path.isEmpty()) return;
    if (QFileInfo(path).suffix().isEmpty()) path += ".pdf";
    if (!WriteReport(window, path))
        support::MsgBox("The report could not be saved to " + path.toStdString() + ".",
                        PlotPipeline::kWarningTitle);
}

void PrintReport(frm_Pondera& window) {
    QPrinter printer(QPrinter::HighResolution);
    printer.setPageSize(ReportPage::PageSizeFor(QLocale()));
    QPrintDialog dialog(&printer, &window);
    dialog.setWindowTitle("Print Report");
    if (dialog.exec() != QDialog::Accepted) return;
    ReportPage::Print(printer, ReportOf(window));
}

} // namespace ChartExport
