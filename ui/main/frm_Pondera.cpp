#include "ui/main/frm_Pondera.h"

#include "engine/m_Distributions.h"
#include "settings/DisplayOptions.h"
#include "stats/m_Fits.h"
#include "support/ErrorTrap.h"
#include "support/Format.h"
#include "support/MExceptionHandler.h"
#include "support/UserFace.h"
#include "support/m_Interface.h"
#include "ui/draw/DistributionCombo.h"
#include "ui/draw/Look.h"
#include "ui/draw/MarkerShape.h"
#include "ui/draw/PictureBox.h"
#include "ui/draw/TitledFrame.h"
#include "ui/draw/m_PictureBoxCopy.h"
#include "ui/main/CapabilityPanel.h"
#include "ui/main/ChartExport.h"
#include "ui/main/IdentifyTable.h"
#include "ui/main/MarkerDrag.h"
#include "ui/main/Mnemonics.h"
#include "ui/main/QtFace.h"
#include "ui/main/ResultsSheet.h"
#include "ui/main/SessionView.h"
#include "ui/main/WindowLayout.h"
#include "ui/main/frm_About2.h"
#include "ui/main/frm_Data.h"
#include "ui/main/frm_LimitsFromProbability.h"
#include "ui/options/frm_Options.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QCloseEvent>
#include <QComboBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScopeGuard>

#include <cmath>
#include <tuple>

namespace {

// The redraw after a resize reports as the drawing it repeats.
constexpr const char* kDrawPDF = "Pondera.frm_Pondera.DrawPDF";

constexpr const char* kWarningTitle = PlotPipeline::kWarningTitle;
constexpr const char* kCalculating = "Calculating...";

using PlotPipeline::Field;
using WindowLayout::SetBoxLocked;

QString Q(const std::string& s) {
    return QString::fromStdString(s);
}
std::string S(const QString& s) {
    return s.toStdString();
}
template <class Field> double ValOf(const Field* field) {
    return support::Val(S(field->text()));
}

using Boxes = std::array<QLineEdit*, 4>;
std::array<std::string, 4> TextsOf(const Boxes& boxes) {
    return {S(boxes[0]->text()), S(boxes[1]->text()), S(boxes[2]->text()), S(boxes[3]->text())};
}
void SetTexts(const Boxes& boxes, const std::array<std::string, 4>& texts) {
    for (int i = 0; i < 4; ++i)
        boxes[i]->setText(Q(texts[i]));
}

void FocusAndSelect(QLineEdit* box) {
    box->setFocus(Qt::OtherFocusReason);
    box->selectAll();
}

PlotPipeline::RangeOptions CurrentRangeOptions() {
    return {DisplayOptions::AppXRange, DisplayOptions::AppNumStDev, DisplayOptions::AppXMin,
            DisplayOptions::AppXMax};
}

// Sets a check box's value the way the old runtime did: its Click handler runs
// only when the value actually changes.
template <class Handler> void SetCheckValue(QCheckBox* box, bool value, Handler&& click) {
    if (box->isChecked() == value) return;
    box->setChecked(value);
    click();
}

// The data dialog's limits (LSL, Target, USL; empty: none) into the window's
// boxes, ticked where given.
void TakeLimits(frm_Pondera& w, const std::array<QString, 3>& limits) {
    const std::array<std::pair<QCheckBox*, QLineEdit*>, 3> fields = {
        {{w.cb_LSL, w.tb_LSL}, {w.cb_Target, w.tb_Target}, {w.cb_USL, w.tb_USL}}};
    for (std::size_t i = 0; i < 3; ++i) {
        if (!limits[i].isEmpty()) fields[i].second->setText(limits[i]);
        fields[i].first->setChecked(!limits[i].isEmpty());
        fields[i].second->setEnabled(!limits[i].isEmpty());
    }
}

} // namespace

frm_Pondera::frm_Pondera(QWidget* parent) : QMainWindow(parent) {
    setObjectName("frm_Pondera");
    setFont(look::AppFont(9));
    WindowLayout::Build(*this);
    WindowLayout::BuildMenus(*this);
    WindowLayout::Connect(*this);
    WindowLayout::SetKeyboard(*this);
    lb_Capability = new QLabel;
    lb_Capability->setObjectName("lb_Capability");
    lb_Capability->setWordWrap(true);
    if (auto* grid = qobject_cast<QGridLayout*>(qarvFrame_Results->layout()))
        grid->addWidget(lb_Capability, 3, 0, 1, 4);
    capabilityPanel_ = new CapabilityPanel(this);
    connect(capabilityPanel_, &CapabilityPanel::Changed, this,
            [this] { RunAsAction([&] { RefreshCapability(); }); });
    resize(1200, 880);
    Form_Initialize();
}

frm_Pondera::~frm_Pondera() {
    Form_Unload();
    // The children outlive this part of the object (QWidget deletes them later) and
    // may still signal, a marker losing its focus for one: nothing may reach a
    // handler of a window that is half gone.
    for (QObject* child : findChildren<QObject*>())
        QObject::disconnect(child, nullptr, this, nullptr);
}

bool frm_Pondera::eventFilter(QObject* watched, QEvent* event) {
    if (WindowLayout::LimitMnemonic(*this, watched, *event)) return true;
    WindowLayout::RouteFocus(*this, watched, *event, unloaded_);
    return QMainWindow::eventFilter(watched, event);
}

void frm_Pondera::closeEvent(QCloseEvent* event) {
    RunAsAction([&] { Form_Unload(); });
    QMainWindow::closeEvent(event);
}

void frm_Pondera::showEvent(QShowEvent* event) {
    QMainWindow::showEvent(event);
    RunAsAction([&] { Form_Paint(); });
}

// ---- Start-up, paint, unload ----

void frm_Pondera::Form_Initialize() {
    support::Trap({kModule, __func__}, [&] {
        setWindowTitle("Pondera");
        // pb_PDF: solid fills, pixels, opaque text background, persistent drawing.
        pb_PDF->SetFontTransparent(false);
        pb_PDF->SetFontName(look::AppFontFamily());

        DisplayOptions::SetDefaults();
        NumPoints = 300;
        ShowXAxis = ShowYAxis = ShowLabels = true;
        mnuXAxis->setChecked(true);
        mnuYAxis->setChecked(true);
        mnuLabels->setChecked(true);
        DisplayOptions::Load();
        pb_PDF->SetBackColor(DisplayOptions::AppBackColor);
        lb_YMin->setText("1");
        // The options dialog is needed before the first plot writes its range back.
        options_ = new frm_Options(this);
        options_->setObjectName("frm_Options");
        options_->hide();
        connect(options_, &frm_Options::Applied, this, [this] { RunAsAction([&] { Plot(); }); });
        cb_DrawbyMoments_Click();
        options_->dd_Decimal->setCurrentIndex(6);
        PlotSkewKurt(4.0, -4.0);
        // The first thing to type is the first parameter.
        tb_Param1->setFocus(Qt::OtherFocusReason);
    });
}

void frm_Pondera::Form_Paint() {
    support::Trap({kModule, __func__}, [&] {
        WindowLayout::PaintUpright(*pb_YTitle, "Kurtosis", 13);
        WindowLayout::PaintUpright(*pb_Lock, "Fix", 12);
    });
}

void frm_Pondera::Form_Resize() {
    support::Trap({kModule, __func__}, [&] { RedrawLastChart(); });
}

void frm_Pondera::Form_Unload() {
    support::Trap({kModule, __func__}, [&] {
        if (unloaded_) return;
        unloaded_ = true;
        SessionView::Remember(*this);
        if (options_) {
            options_->close();
            delete options_;
            options_ = nullptr;
        }
        MExceptionHandler::RemoveExceptionFilter();
    });
}

void frm_Pondera::SetStatus(const std::string& text) {
    StatusPanel1->setText(Q(text));
}

std::string frm_Pondera::Caption(const QLabel* label) {
    return Mnemonics::Plain(S(label->text()));
}

// ---- The plot pipeline ----

PlotPipeline::Limits frm_Pondera::ReadLimits() const {
    return {{{cb_LSL->isChecked(), S(tb_LSL->text())},
             {cb_Target->isChecked(), S(tb_Target->text())},
             {cb_USL->isChecked(), S(tb_USL->text())}}};
}

std::optional<PlotPipeline::PncSource> frm_Pondera::FiguresSource() const {
    return PlotPipeline::FiguresSource(
        cb_DrawbyMoments->isChecked(),
        fit_ ? std::optional(MomentsStep::PncSourceOf(*fit_)) : std::nullopt,
        S(dd_Distribution->Text()), TextsOf({tb_Param1, tb_Param2, tb_Param3, tb_Param4}));
}

PlotPipeline::PlotInputs frm_Pondera::ReadPlotInputs() const {
    PlotPipeline::PlotInputs in;
    in.Name = S(dd_Distribution->Text());
    in.ParamTexts = TextsOf({tb_Param1, tb_Param2, tb_Param3, tb_Param4});
    in.ParamLabels = {Caption(lb_Param1), Caption(lb_Param2), Caption(lb_Param3),
                      Caption(lb_Param4)};
    in.Param3Shown = !tb_Param3->isHidden();
    in.Param4Shown = !tb_Param4->isHidden();
    in.Limit = ReadLimits();
    return in;
}

QLineEdit* frm_Pondera::Box(Field field) const {
    QLineEdit* const boxes[] = {nullptr, tb_Param1, tb_Param2, tb_Param3,   tb_LSL,      tb_Target,
                                tb_USL,  tb_Mean,   tb_StDev,  tb_Skewness, tb_Kurtosis, tb_Param4};
    return boxes[static_cast<int>(field)];
}

bool frm_Pondera::Refused(const PlotPipeline::Check& check) {
    if (check.Ok) return false;
    if (!check.Message.empty()) support::MsgBox(check.Message, kWarningTitle);
    if (QLineEdit* box = Box(check.Focus)) FocusAndSelect(box);
    return true;
}

void frm_Pondera::Plot() {
    support::Trap({kModule, __func__}, [&] {
        if (cb_DrawbyMoments->isChecked()) {
            SetStatus(kCalculating);
            // PlotbyMoments fills the PNC boxes itself when it draws; a run that
            // ended early leaves the previous results, so nothing follows here.
            PlotbyMoments();
            return;
        }
        const PlotPipeline::PlotInputs in = ReadPlotInputs();
        if (Refused(PlotPipeline::CheckInputs(in))) return;
        const std::array<double, 3> p = PlotPipeline::ParamValues(in);
        std::tie(Param1, Param2, Param3) = std::tuple(p[0], p[1], p[2]);

        // The moments are computed once the inputs are known good, so a failed
        // check leaves the previous results in place.
        CalcMomentsforDistribution();
        const auto [low, high] = WithOthersShown(PlotPipeline::WithDensityStart(
            in.Name,
            PlotPipeline::DisplayRange(Current.Mean, Current.StDev, CurrentRangeOptions(),
                                       in.Limit),
            p));
        // A point-like distribution (or equal fixed endpoints) leaves no width to
        // draw on; say so and keep the previous chart.
        if (!PlotPipeline::Drawable(low, high)) {
            support::MsgBox(PlotPipeline::kNoWidth, kWarningTitle);
            return;
        }
        PlotPipeline::Curve curve = PlotPipeline::Sample(in.Name, low, high, NumPoints,
                                                         {p[0], p[1], p[2], ValOf(tb_Param4)});
        WriteRangeBack(low, high);
        ShowCurve(std::move(curve), low, high);
        drawnSource_ = PlotPipeline::SourceFromFields(in.Name, in.ParamTexts);
        ShowResults();
        SetStatus("");
        but_Plot->setEnabled(false);
    });
}

void frm_Pondera::ShowCurve(PlotPipeline::Curve curve, double low, double high) {
    DrawPDF(true, DisplayOptions::AppXTicks, DisplayOptions::AppYTicks, 5, 5, *pb_PDF, curve.X,
            curve.Y);
    PlotX = std::move(curve.X);
    PlotY = std::move(curve.Y);
    RangeLow = low;
    RangeHigh = high;
    // A readout of the curve before is wrong now; the next move shows the new one.
    StatusPanel2->clear();
}

std::pair<double, double> frm_Pondera::WithOthersShown(std::pair<double, double> range) const {
    if (DataBins && !DataBins->Counts.empty())
        range = PlotPipeline::Covering(
            range, DataBins->Low,
            DataBins->Low + static_cast<double>(DataBins->Counts.size()) * DataBins->Width);
    if (PinnedX.size() > 1) range = PlotPipeline::Covering(range, PinnedX[1], PinnedX.back());
    return range;
}

void frm_Pondera::WriteRangeBack(double low, double high) {
    DisplayOptions::AppXMin = low;
    DisplayOptions::AppXMax = high;
    if (options_) {
        const std::string pattern = m_Interface::FormatDec(DisplayOptions::AppDecPlaces);
        options_->tb_XMin->setText(Q(support::Format(low, pattern)));
        options_->tb_XMax->setText(Q(support::Format(high, pattern)));
    }
}

void frm_Pondera::ShowResults() {
    const auto fixed = PlotPipeline::UncalculatedResults(ReadLimits(), DisplayOptions::Pattern());
    if (!fixed) return CalcPercent();
    ShowPNC(fixed->Pnc);
    capabilityFigures_ = false;
    capabilityPanel_->Clear();
    ResultsSheet::CapabilityTexts none;
    none.Ppm = fixed->Ppm;
    ShowCapability(none);
}

void frm_Pondera::ShowCapability(const ResultsSheet::CapabilityTexts& texts) {
    Capability = texts;
    tb_Pp->setText(Q(texts.Pp));
    tb_Pp->setToolTip(Q(texts.PpTip));
    tb_Ppk->setText(Q(texts.Ppk));
    tb_Ppk->setToolTip(Q(texts.PpkTip));
    tb_PPM->setText(Q(texts.Ppm));
    tb_PPM->setToolTip(Q(texts.PpmTip));
    lb_Capability->setText(Q(texts.Caption));
    lb_Capability->setToolTip(Q(texts.CaptionTip));
}

void frm_Pondera::RefreshCapability() {
    if (!capabilityFigures_) return;
    ShowCapability(ResultsSheet::Capability(capabilityPanel_->Current(), DisplayOptions::Pattern(),
                                            capabilityPanel_->Progress()));
}

const m_CapabilityStudy::Study& frm_Pondera::CapabilityStudy() const {
    return capabilityPanel_->Current();
}

void frm_Pondera::WaitForCapability() {
    capabilityPanel_->Wait();
}

void frm_Pondera::SetFittedRow(int row) {
    fittedRow_ = row;
    fittedParams_ = TextsOf({tb_Param1, tb_Param2, tb_Param3, tb_Param4});
}

std::optional<m_Identify::RowResult> frm_Pondera::ShownDataRow() const {
    const int row = FittedDataRow();
    const m_Identify::RowResult* chosen = dataDialog_ ? dataDialog_->ChosenFit() : nullptr;
    if (row < 0 || !chosen || chosen->Name != m_Fits::Info(row).Name) return std::nullopt;
    return *chosen;
}

int frm_Pondera::FittedDataRow() const {
    if (DataValues.empty()) return -1;
    // The data's Johnson fit holds while the moment fields show the data's moments.
    if (cb_DrawbyMoments->isChecked())
        return DataMoments &&
                       TextsOf({tb_Mean, tb_StDev, tb_Skewness, tb_Kurtosis}) == DataMoments->Shown
                   ? m_Fits::kJohnsonMoments
                   : -1;
    return fittedRow_ >= 0 && TextsOf({tb_Param1, tb_Param2, tb_Param3, tb_Param4}) == fittedParams_
               ? fittedRow_
               : -1;
}

m_CapabilityStudy::Request
frm_Pondera::CapabilityRequest(const PlotPipeline::PncSource& source) const {
    m_CapabilityStudy::Request r;
    r.Code = source.Code;
    for (int i = 0; i < 4; ++i)
        r.P[i] = source.Params[i].value_or(0);
    const PlotPipeline::Limits limits = ReadLimits();
    if (limits[0].Ticked) r.LSL = support::Val(limits[0].Text);
    if (limits[2].Ticked) r.USL = support::Val(limits[2].Text);
    r.Shown = DisplayOptions::AppCapMethod == 1 ? m_Capability::Method::ZScore
                                                : m_Capability::Method::Percentile;
    r.Level = DisplayOptions::AppConfLevel;
    if (!DataValues.empty()) {
        r.Values = &DataValues;
        r.Row = FittedDataRow();
    }
    return r;
}

void frm_Pondera::ShowPNC(const std::array<std::string, 3>& texts) {
    tb_LowerPNC->setText(Q(texts[0]));
    tb_UpperPNC->setText(Q(texts[1]));
    tb_PNC->setText(Q(texts[2]));
}

void frm_Pondera::CalcMomentsforDistribution() {
    support::Trap({kModule, __func__}, [&] {
        PlotPipeline::MomentsOf(S(dd_Distribution->Text()), ValOf(tb_Param1), ValOf(tb_Param2),
                                ValOf(tb_Param3), Current, ValOf(tb_Param4));
        SetTexts({tb_Mean, tb_StDev, tb_Skewness, tb_Kurtosis},
                 PlotPipeline::MomentTexts(Current, DisplayOptions::Pattern()));
    });
}

void frm_Pondera::CalcPercent() {
    support::Trap({kModule, __func__}, [&] {
        // A fit without a curve has no figures.
        const std::optional<PlotPipeline::PncSource> source = FiguresSource();
        if (!source) {
            capabilityFigures_ = false;
            capabilityPanel_->Clear();
            ShowCapability({});
            return ShowPNC({});
        }
        ShowPNC(PlotPipeline::PercentTexts(*source, ReadLimits(), DisplayOptions::Pattern()));
        capabilityFigures_ = true;
        capabilityPanel_->Show(CapabilityRequest(*source));
    });
}

void frm_Pondera::DrawPDF(bool refresh, int xTicks, int yTicks, double xTickLength,
                          double yTickLength, PictureBox& pbObject, const std::vector<double>& x,
                          const std::vector<double>& y) {
    support::Trap({kModule, __func__}, [&] {
        lastLimits_ = {{{cb_LSL->isChecked(), ValOf(tb_LSL)},
                        {cb_Target->isChecked(), ValOf(tb_Target)},
                        {cb_USL->isChecked(), ValOf(tb_USL)}}};
        DrawChart(pbObject, refresh, xTicks, yTicks, xTickLength, yTickLength, x, y);
        haveChart_ = true;
    });
}

// The body shared by DrawPDF and the redraw after a resize; runs in their trap.
DensityChart::Result frm_Pondera::DrawChart(PictureBox& surface, bool refresh, int xTicks,
                                            int yTicks, double xTickLength, double yTickLength,
                                            const std::vector<double>& x,
                                            const std::vector<double>& y) {
    DensityChart::Input in{.Refresh = refresh,
                           .XTicks = xTicks,
                           .YTicks = yTicks,
                           .XTickLength = xTickLength,
                           .YTickLength = yTickLength,
                           .X = x,
                           .Y = y,
                           .LSL = lastLimits_[0],
                           .Target = lastLimits_[1],
                           .USL = lastLimits_[2],
                           .DraggingLSL = DragLSL,
                           .DraggingUSL = DragUSL,
                           .XAxis = ShowXAxis,
                           .YAxis = ShowYAxis,
                           .Labels = ShowLabels,
                           .BackColor = DisplayOptions::AppBackColor,
                           .InSpecColor = DisplayOptions::AppInSpecColor,
                           .OutSpecColor = DisplayOptions::AppOutSpecColor,
                           .LSLMarkerWidth = double(sh_LSL->Width()),
                           .USLMarkerWidth = double(sh_USL->Width())};
    // The data's histogram under the curve fitted to it, and the pinned curve.
    HistogramHeights.clear();
    const bool onWindow = &surface == pb_PDF || &surface == exportSurface_;
    if (DataBins && onWindow) {
        for (std::size_t i = 0; i < DataBins->Counts.size(); ++i)
            HistogramHeights.push_back(DataBins->Density(i));
        in.Bins = {DataBins->Low, DataBins->Width, HistogramHeights};
    }
    if (onWindow) {
        in.PinnedX = PinnedX;
        in.PinnedY = PinnedY;
    }
    surface.SetBackColor(DisplayOptions::AppBackColor);
    const DensityChart::Result result = DensityChart::Draw(surface, in);
    if (&surface == pb_PDF) {
        ChartGeometry = result.Geom;
        sh_LSL->SetLeft(result.LSLMarker.Left);
        sh_LSL->SetVisible(result.LSLMarker.Visible);
        sh_USL->SetLeft(result.USLMarker.Left);
        sh_USL->SetVisible(result.USLMarker.Visible);
    }
    // Draw has shown what it drew (during a drag only the part that changed).
    return result;
}

TitledChart::Chart frm_Pondera::ExportChart(int width, int height, double ratio) {
    TitledChart::Chart chart;
    if (!haveChart_ || PlotX.size() < 2) return chart;
    // A surface of its own: the window's chart stays as it is on screen.
    PictureBox surface;
    surface.SetPixelRatio(ratio);
    surface.SetPictureSize(width, height);
    exportSurface_ = &surface;
    const auto done = qScopeGuard([this] { exportSurface_ = nullptr; });
    support::Trap(kDrawPDF, [&] {
        // The drawn curve again, a point per two device pixels, so it prints
        // without steps; the window's own points if a density is not finite.
        std::vector<double> x = PlotX, y = PlotY;
        const int n = static_cast<int>(width * ratio / 2);
        if (drawnSource_ && n > static_cast<int>(PlotX.size())) {
            std::vector<double> grid = MomentsStep::Grid(RangeLow, RangeHigh, n);
            std::vector<double> densities(grid.size(), 0.0);
            bool finite = true;
            for (std::size_t i = 1; i < grid.size() && finite; ++i) {
                densities[i] = PlotPipeline::ReadoutAt(*drawnSource_, grid[i]).Density;
                finite = std::isfinite(densities[i]);
            }
            if (finite) {
                x = std::move(grid);
                y = std::move(densities);
            }
        }
        chart.Geom = DrawChart(surface, true, DisplayOptions::AppXTicks, DisplayOptions::AppYTicks,
                               5, 5, x, y)
                         .Geom;
        chart.Image = surface.Image().copy();
    });
    // The chart names the limits at their lines unless labels are switched off.
    const char* names[] = {"LSL", "Target", "USL"};
    for (std::size_t i = 0; i < lastLimits_.size() && !ShowLabels; ++i)
        if (lastLimits_[i].Ticked) chart.Limits.push_back({names[i], lastLimits_[i].Value});
    return chart;
}

void frm_Pondera::RedrawLastChart() {
    if (!haveChart_ || PlotX.size() < 2) return;
    support::Trap(kDrawPDF, [&] {
        DrawChart(*pb_PDF, true, DisplayOptions::AppXTicks, DisplayOptions::AppYTicks, 5, 5, PlotX,
                  PlotY);
    });
}

// ---- Drawing by moments ----

void frm_Pondera::cb_DrawbyMoments_Click() {
    support::Trap({kModule, __func__}, [&] {
        const bool byMoments = cb_DrawbyMoments->isChecked();
        WindowLayout::ShowMode(*this, byMoments);
        if (byMoments) {
            fit_.reset();
        } else {
            tb_Param2->setText("1");
            // The data was fitted by moments; a distribution by parameters has none.
            ForgetData(true);
            // Selecting the item is a change of distribution: labels and defaults follow.
            dd_Distribution_Change();
            SetStatus("");
        }
        // Outside moments mode both locks are ticked, so the chart shows the moments.
        SetCheckValue(cb_LockKurtosis, !byMoments, [&] { cb_LockKurtosis_Click(); });
        SetCheckValue(cb_LockSkewness, !byMoments, [&] { cb_LockSkewness_Click(); });
        Plot();
    });
}

bool frm_Pondera::PlotbyMoments() {
    bool drawn = false;
    support::Trap({kModule, __func__}, [&] {
        const auto texts = TextsOf({tb_Mean, tb_StDev, tb_Skewness, tb_Kurtosis});
        if (Refused(MomentsStep::CheckMomentTexts(texts))) return;
        if (Refused(PlotPipeline::CheckLimitTexts(ReadLimits()))) return;

        const std::array<double, 4> m =
            DataStep::MomentValues(texts, DataMoments ? &*DataMoments : nullptr);
        const double mean = m[0], stDev = m[1];
        const MomentsStep::Fit fit = MomentsStep::FitMoments(mean, stDev, m[2], m[3]);
        SetStatus(fit.Message);
        if (fit.Failed()) return;

        SetStatus(kCalculating);
        // The hourglass for the rest of the run, whichever way it ends.
        QApplication::setOverrideCursor(Qt::WaitCursor);
        const auto hourglass = qScopeGuard([] { QApplication::restoreOverrideCursor(); });
        SetTexts({tb_Param1, tb_Param2, tb_Param3, tb_Param4},
                 MomentsStep::ParamTexts(fit, DisplayOptions::Pattern()));

        const auto [xMin, xMax] = WithOthersShown(
            PlotPipeline::DisplayRange(mean, stDev, CurrentRangeOptions(), ReadLimits()));
        if (!PlotPipeline::Drawable(xMin, xMax)) {
            SetStatus(fit.Message);
            support::MsgBox(PlotPipeline::kNoWidth, kWarningTitle);
            return;
        }
        WriteRangeBack(xMin, xMax);

        PlotPipeline::Curve curve;
        curve.X = MomentsStep::Grid(xMin, xMax, NumPoints);
        const char* item = MomentsStep::ListItem(fit.Type);
        if (item) dd_Distribution->SelectText(item);
        curve.Y = MomentsStep::Densities(fit, curve.X, mean, stDev);
        Current = {m[0], m[1], m[2], m[3]};
        ShowCurve(std::move(curve), xMin, xMax);
        fit_ = item ? std::optional(fit) : std::nullopt;
        drawnSource_ = fit_ ? std::optional(MomentsStep::PncSourceOf(*fit_)) : std::nullopt;

        but_Plot->setEnabled(false);
        SetStatus(fit.Message);
        ShowResults();
        drawn = true;
    });
    // A run that stopped on a fault must not leave "Calculating..." behind.
    if (!drawn && StatusPanel1->text() == kCalculating) SetStatus("");
    return drawn;
}

void frm_Pondera::SetFrameInactive() {
    support::Trap({kModule, __func__}, [&] {
        for (TitledFrame* frame : findChildren<TitledFrame*>())
            frame->Focus(false);
    });
}

// ---- The skewness-kurtosis chart ----

void frm_Pondera::PlotSkewKurt(double skewFrom, double skewTo) {
    support::Trap({kModule, __func__}, [&] {
        const SkewKurtChart::Boundary boundary = SkewKurtChart::MakeBoundary(skewFrom, skewTo);
        DrawSkewKurtLimits(*pb_SkewKurt, boundary, SkewKurtChart::kBoundaryPoints, 5, 5, 4, 4,
                           true);
    });
}

void frm_Pondera::DrawSkewKurtLimits(PictureBox& surface, const SkewKurtChart::Boundary& boundary,
                                     int /*count*/, int xTicks, int yTicks, double xTickLength,
                                     double yTickLength, bool refresh) {
    support::Trap({kModule, __func__}, [&] {
        const SkewKurtChart::Result result = SkewKurtChart::Draw(surface, boundary,
                                                                 {.Refresh = refresh,
                                                                  .XTicks = xTicks,
                                                                  .YTicks = yTicks,
                                                                  .XTickLength = xTickLength,
                                                                  .YTickLength = yTickLength,
                                                                  .XAxis = ShowXAxis,
                                                                  .YAxis = ShowYAxis});
        lb_XMin->setText(Q(result.Texts.XMin));
        lb_XMax->setText(Q(result.Texts.XMax));
        lb_YMin->setText(Q(result.Texts.YMin));
        tb_Ymax->setText(Q(result.Texts.YMax));
        MoveSkewKurtMarker(SkewKurtChart::MarkerAfterDraw(ReadPickScale(), ValOf(tb_Skewness),
                                                          ValOf(tb_Kurtosis), sh_SkewKurt->Width(),
                                                          sh_SkewKurt->Height()));
        surface.Refresh();
    });
}

SkewKurtChart::PickScale frm_Pondera::ReadPickScale() const {
    return {.W = double(pb_SkewKurt->ScaleWidth()),
            .H = double(pb_SkewKurt->ScaleHeight()),
            .SkewMin = ValOf(lb_XMin),
            .SkewMax = ValOf(lb_XMax),
            .KurtMin = ValOf(lb_YMin),
            .KurtMax = ValOf(tb_Ymax)};
}

void frm_Pondera::MoveSkewKurtMarker(const SkewKurtChart::MarkerPos& pos) {
    sh_SkewKurt->Move(pos.Left, pos.Top);
    PlaceDataPoint();
}

void frm_Pondera::PlaceDataPoint() {
    if (!DataBins || !DataMoments) return sh_DataPoint->SetVisible(false);
    const SkewKurtChart::DataPointView v =
        SkewKurtChart::DataPoint(ReadPickScale(), DataMoments->Exact[2], DataMoments->Exact[3],
                                 sh_DataPoint->Width(), sh_DataPoint->Height());
    sh_DataPoint->Move(v.Pos.Left, v.Pos.Top);
    sh_DataPoint->SetVisible(v.Visible);
}

// The body both lock clicks share.
void frm_Pondera::SkewKurtLockClick(support::Label label) {
    support::Trap(label, [&] {
        PlotSkewKurt(-4, 4);
        const SkewKurtChart::PickScale scale = ReadPickScale();
        SetBoxLocked(tb_Skewness, cb_LockSkewness->isChecked());
        SetBoxLocked(tb_Kurtosis, cb_LockKurtosis->isChecked());
        const SkewKurtChart::LockView v =
            SkewKurtChart::Locks(scale, cb_LockSkewness->isChecked(), cb_LockKurtosis->isChecked(),
                                 cb_DrawbyMoments->isChecked(), ValOf(tb_Skewness),
                                 ValOf(tb_Kurtosis), sh_SkewKurt->Width(), sh_SkewKurt->Height());
        if (v.SkewLineX)
            pb_SkewKurt->Line(*v.SkewLineX, scale.T, *v.SkewLineX, scale.T + scale.H - 1,
                              look::kBlack);
        if (v.KurtMax) tb_Ymax->setText(Q(support::Format(*v.KurtMax, "0")));
        if (v.KurtLineY)
            pb_SkewKurt->Line(scale.L, *v.KurtLineY, scale.L + scale.W - 1, *v.KurtLineY,
                              look::kBlack);
        MoveSkewKurtMarker(v.Marker);
        pb_SkewKurt->Refresh();
    });
}

void frm_Pondera::pb_SkewKurt_MouseDown(int button, int, double, double) {
    support::Trap({kModule, __func__}, [&] {
        if (button == 1 && cb_DrawbyMoments->isChecked()) sh_SkewKurt->SetFillColor(look::kWhite);
    });
}

void frm_Pondera::pb_SkewKurt_MouseMove(int button, int, double x, double y) {
    support::Trap({kModule, __func__}, [&] {
        if (!support::IsNumeric(S(tb_Ymax->text()))) {
            support::MsgBox("Maximum Kurtosis value must be a positive number greater than 1",
                            kWarningTitle);
            tb_Ymax->selectAll();
            return;
        }
        const SkewKurtChart::PickScale scale = ReadPickScale();
        if (!cb_DrawbyMoments->isChecked() || button != 1) return;
        if (!SkewKurtChart::Free(*pb_SkewKurt, x, y)) return;

        const SkewKurtChart::DragStep step = SkewKurtChart::Drag(
            scale, x, y, cb_LockSkewness->isChecked(), cb_LockKurtosis->isChecked(),
            ValOf(tb_Skewness), ValOf(tb_Kurtosis), sh_SkewKurt->Width(), sh_SkewKurt->Height());
        const std::string pattern = DisplayOptions::Pattern();
        if (step.Skew) tb_Skewness->setText(Q(support::Format(*step.Skew, pattern)));
        if (step.Kurt) tb_Kurtosis->setText(Q(support::Format(*step.Kurt, pattern)));
        MoveSkewKurtMarker(step.Marker);
        NumPoints = SkewKurtChart::kDragPoints;
        PlotbyMoments();
    });
}

void frm_Pondera::pb_SkewKurt_MouseUp(int, int, double, double) {
    support::Trap({kModule, __func__}, [&] {
        if (!cb_DrawbyMoments->isChecked()) return;
        sh_SkewKurt->SetFillColor(look::kBlack);
        NumPoints = SkewKurtChart::kAfterDragPoints;
        Plot();
    });
}

// ---- Spec-limit markers ----

// A press on a ticked limit's marker arms it, a second press releases it;
// LSL first, then USL, each redrawing before the next is tested.
void frm_Pondera::DragMouseDown(support::Label label, int button, double x) {
    support::Trap(label, [&] {
        for (const DragMarker& m : DragMarkers()) {
            if (!MarkerDrag::Toggles(button, m.Check->isChecked(), x, m.Shape->Left(),
                                     m.Shape->Width()))
                continue;
            m.Armed = !m.Armed;
            m.Shape->SetFillColor(m.Armed ? look::kRed : look::kBlack);
            // The dragged marker keeps the keyboard: the arrow keys go on from there.
            if (m.Armed) m.Shape->setFocus(Qt::MouseFocusReason);
            NumPoints = MarkerDrag::PointsFor(m.Armed);
            Plot();
        }
    });
}

void frm_Pondera::DragMouseMove(support::Label label, double x) {
    support::Trap(label, [&] {
        for (const DragMarker& m : DragMarkers()) {
            if (!m.Armed || !m.Check->isChecked()) continue;
            FollowTo(m, x);
        }
    });
}

// One drag step: the marker and its limit follow the pointer, the chart is redrawn.
void frm_Pondera::FollowTo(const DragMarker& m, double x) {
    const MarkerDrag::Follow f =
        MarkerDrag::FollowPointer(ChartGeometry, x, m.Shape->Width(), DisplayOptions::AppDecPlaces);
    m.Shape->SetLeft(f.Left);
    m.Box->setText(Q(f.Text));
    Plot();
}

void frm_Pondera::DragMouseUp(support::Label label) {
    support::Trap(label, [&] {
        sh_LSL->SetFillColor(look::kBlack);
        sh_USL->SetFillColor(look::kBlack);
        DragLSL = false;
        DragUSL = false;
        NumPoints = MarkerDrag::kAfterDragPoints;
        Plot();
    });
}

// An arrow key on a focused marker is a drag step at a pointer of its own:
// the first arms the marker (red, 75 points) as a press would.
void frm_Pondera::MarkerKeyDown(support::Label label, int marker, int key, int shift) {
    support::Trap(label, [&] {
        const double step = MarkerDrag::KeyStep(key, shift);
        const DragMarker m = DragMarkers()[marker];
        if (step == 0 || !m.Check->isChecked()) return;
        if (!m.Armed) {
            m.Armed = true;
            m.Shape->SetFillColor(look::kRed);
            NumPoints = MarkerDrag::PointsFor(true);
            keyPointerX_ = m.Shape->Left() + m.Shape->Width() / 2.0;
        }
        keyPointerX_ += step;
        FollowTo(m, keyPointerX_);
    });
}

// The key's release, or the focus leaving, ends a keyboard drag as a release
// of the button ends a mouse drag.
void frm_Pondera::MarkerKeyUp(support::Label label) {
    support::Trap(label, [&] {
        if (DragLSL || DragUSL) DragMouseUp(label);
    });
}

std::array<frm_Pondera::DragMarker, 2> frm_Pondera::DragMarkers() {
    return {{{cb_LSL, tb_LSL, sh_LSL, DragLSL}, {cb_USL, tb_USL, sh_USL, DragUSL}}};
}

// ---- Small handlers ----

void frm_Pondera::but_Plot_Click() {
    support::Trap({kModule, __func__},
                  [&] { cb_DrawbyMoments->isChecked() ? void(PlotbyMoments()) : Plot(); });
}

void frm_Pondera::dd_Distribution_Click() {
    support::Trap({kModule, __func__}, [&] { dd_Distribution_Change(); });
}

void frm_Pondera::dd_Distribution_Change() {
    support::Trap({kModule, __func__}, [&] {
        if (cb_DrawbyMoments->isChecked()) return;
        WindowLayout::ShowParamRows(*this, PlotPipeline::ParamRows(S(dd_Distribution->Text())));
        for (QLineEdit* box : {tb_Mean, tb_StDev, tb_Skewness, tb_Kurtosis})
            SetBoxLocked(box, true);
        Plot();
        cb_LockSkewness->setChecked(true);
        cb_LockSkewness_Click();
        cb_LockKurtosis->setChecked(true);
        cb_LockKurtosis_Click();
    });
}

void frm_Pondera::EnablePlot(support::Label label) {
    support::Trap(label, [&] { but_Plot->setEnabled(true); });
}

void frm_Pondera::FieldGotFocus(support::Label label, TitledFrame* frame, QLineEdit* box) {
    support::Trap(label, [&] {
        SetFrameInactive();
        if (frame) frame->Focus(true);
        if (box) box->setSelection(0, static_cast<int>(box->text().size()));
    });
}

void frm_Pondera::tb_Param1_LostFocus() {
    support::Trap({kModule, __func__}, [&] {
        if (!support::IsNumeric(S(tb_Param1->text())))
            support::MsgBox(PlotPipeline::NotANumber(Caption(lb_Param1)), kWarningTitle);
    });
}

void frm_Pondera::SpecLimitClick(support::Label label, QCheckBox* check, QLineEdit* box) {
    support::Trap(label, [&] {
        box->setEnabled(check->isChecked());
        Plot();
    });
}

void frm_Pondera::ViewToggle(support::Label label, bool& flag, const QAction* item) {
    support::Trap(label, [&] {
        flag = item->isChecked();
        Plot();
    });
}

// Outside moments mode the moment boxes are outputs: a change there means nothing.
void frm_Pondera::MomentChanged(support::Label label) {
    support::Trap(label, [&] {
        if (cb_DrawbyMoments->isChecked()) but_Plot->setEnabled(true);
    });
}

void frm_Pondera::ShowReadout(support::Label label, double x) {
    support::Trap(label, [&] {
        const DensityChart::Geometry& g = ChartGeometry;
        if (!drawnSource_ || !haveChart_ || x < g.X0 || x > g.X0 + g.PlotWidth)
            return StatusPanel2->clear();
        const PlotPipeline::Readout r = PlotPipeline::ReadoutAt(*drawnSource_, g.ValueAtPixel(x));
        StatusPanel2->setText(Q(PlotPipeline::ReadoutText(r, DisplayOptions::Pattern())));
    });
}

void frm_Pondera::pb_PDF_MouseLeave() {
    support::Trap({kModule, __func__}, [&] { StatusPanel2->clear(); });
}

// The curve drawn now stays on the chart in grey, on the axes of whatever is
// drawn next, until unpinned.
void frm_Pondera::mnuPinCurve_Click() {
    support::Trap({kModule, __func__}, [&] {
        if (!haveChart_ || PlotX.size() < 2) return;
        PinnedX = PlotX;
        PinnedY = PlotY;
        mnuUnpin->setEnabled(true);
        RedrawLastChart();
    });
}

void frm_Pondera::mnuUnpin_Click() {
    support::Trap({kModule, __func__}, [&] {
        PinnedX.clear();
        PinnedY.clear();
        mnuUnpin->setEnabled(false);
        // The axes need not take in the pinned curve any more.
        Plot();
    });
}

void frm_Pondera::mnuCopytoClipboard_Click() {
    support::Trap({kModule, __func__}, [&] { ChartExport::CopyChart(*this); });
}

void frm_Pondera::mnuSaveChart_Click() {
    support::Trap({kModule, __func__}, [&] { ChartExport::SaveChart(*this); });
}

void frm_Pondera::mnuSaveReport_Click() {
    support::Trap({kModule, __func__}, [&] { ChartExport::SaveReport(*this); });
}

void frm_Pondera::mnuPrint_Click() {
    support::Trap({kModule, __func__}, [&] { ChartExport::PrintReport(*this); });
}

ResultsSheet::Shown frm_Pondera::ResultsShown() {
    ResultsSheet::Shown shown;
    shown.Distribution = S(dd_Distribution->Text());
    const std::pair<QLabel*, QLineEdit*> params[] = {{lb_Param1, tb_Param1},
                                                     {lb_Param2, tb_Param2},
                                                     {lb_Param3, tb_Param3},
                                                     {lb_Param4, tb_Param4}};
    for (const auto& [caption, box] : params)
        if (!box->isHidden()) shown.Params.emplace_back(Caption(caption), S(box->text()));
    shown.Limit = ReadLimits();
    shown.Moments = TextsOf({tb_Mean, tb_StDev, tb_Skewness, tb_Kurtosis});
    shown.PNC = {S(tb_LowerPNC->text()), S(tb_UpperPNC->text()), S(tb_PNC->text())};
    WaitForCapability();
    shown.Capability = Capability;
    shown.Study = CapabilityStudy();
    shown.Pattern = DisplayOptions::Pattern();
    if (DataBins) shown.N = std::to_string(DataBins->N);
    return shown;
}

void frm_Pondera::mnuCopyResults_Click() {
    support::Trap({kModule, __func__}, [&] {
        if (QClipboard* clipboard = QGuiApplication::clipboard())
            clipboard->setText(Q(ResultsSheet::Text(ResultsShown())));
    });
}

void frm_Pondera::mnuOptions_Click() {
    support::Trap({kModule, __func__}, [&] {
        if (!options_) return;
        options_->show();
        options_->raise();
        options_->activateWindow();
    });
}

void frm_Pondera::mnuAbout_Click() {
    support::Trap({kModule, __func__}, [&] {
        frm_About2 about(this);
        about.exec();
    });
}

void frm_Pondera::mnuFitToData_Click() {
    support::Trap({kModule, __func__}, [&] {
        if (!dataDialog_) {
            dataDialog_ = new frm_Data(this);
            // The Johnson fit by moments is drawn in moments mode, as OK does.
            connect(dataDialog_, &QDialog::accepted, this, [this] {
                const m_Identify::RowResult* chosen = dataDialog_->ChosenFit();
                const bool byParams =
                    chosen && chosen->Name != m_Fits::Info(m_Fits::kJohnsonMoments).Name;
                RunAsAction([&] { byParams ? UseDataFit() : ApplyData(); });
            });
        }
        // The limits to draw the fit against start as the window's ticked ones.
        auto ticked = [](const QCheckBox* check, const QLineEdit* box) {
            return check->isChecked() ? box->text() : QString();
        };
        dataDialog_->SetLimits(
            {ticked(cb_LSL, tb_LSL), ticked(cb_Target, tb_Target), ticked(cb_USL, tb_USL)});
        dataDialog_->open();
    });
}

void frm_Pondera::ApplyData() {
    support::Trap({kModule, __func__}, [&] {
        const DataStep::Sample& sample = dataDialog_->Result();
        DataBins = DataStep::Bins(sample.Values);
        DataValues = sample.Values;
        DataMoments = DataStep::MomentsOf(sample.Summary, DisplayOptions::Pattern());
        mnuClearData->setEnabled(true);
        SetTexts({tb_Mean, tb_StDev, tb_Skewness, tb_Kurtosis}, DataMoments->Shown);
        // The dialog's limits, ticked where given; the plot below draws with them.
        TakeLimits(*this, dataDialog_->Limits());
        NumPoints = 300;
        // Switching to moments mode plots; in moments mode the fit follows at once.
        if (cb_DrawbyMoments->isChecked()) {
            cb_LockSkewness_Click();
            Plot();
        } else {
            SetCheckValue(cb_DrawbyMoments, true, [&] { cb_DrawbyMoments_Click(); });
        }
    });
}

void frm_Pondera::UseDataFit() {
    support::Trap({kModule, __func__}, [&] {
        const DataStep::Sample& sample = dataDialog_->Result();
        const IdentifyText::WindowParams fit =
            IdentifyText::ParamsOf(dataDialog_->ChosenFit()->F.C, DisplayOptions::Pattern());
        // The dialog's limits first, so no plot on the way meets an old bad one.
        TakeLimits(*this, dataDialog_->Limits());
        SetCheckValue(cb_DrawbyMoments, false, [&] { cb_DrawbyMoments_Click(); });
        // Choosing the family shows its rows, as a pick from the list does.
        dd_Distribution->SelectText(Q(fit.Name));
        dd_Distribution_Change();
        SetTexts({tb_Param1, tb_Param2, tb_Param3, tb_Param4}, fit.Texts);
        DataBins = DataStep::Bins(sample.Values);
        DataValues = sample.Values;
        DataMoments = DataStep::MomentsOf(sample.Summary, DisplayOptions::Pattern());
        // The row's intervals hold while its parameters stay as typed here.
        for (int row = 0; row < m_Fits::kRowCount; ++row)
            if (dataDialog_->ChosenFit()->Name == m_Fits::Info(row).Name) SetFittedRow(row);
        mnuClearData->setEnabled(true);
        NumPoints = 300;
        Plot();
        // The moments chart follows the fitted curve's moments, as after a pick
        // from the list, and shows the data's point beside them.
        cb_LockSkewness_Click();
        cb_LockKurtosis_Click();
    });
}

void frm_Pondera::mnuLimitsFromProbability_Click() {
    support::Trap({kModule, __func__}, [&] {
        if (!limitsDialog_) {
            // The curve is read when OK is pressed: the one CalcPercent would use.
            auto curve = [this] { return FiguresSource(); };
            limitsDialog_ = new frm_LimitsFromProbability(
                [curve](const ProbabilityLimits::Request& r) {
                    return ProbabilityLimits::LimitsFor(curve(), r);
                },
                this);
            connect(limitsDialog_, &QDialog::accepted, this,
                    [this] { RunAsAction([&] { ApplyProbabilityLimits(); }); });
        }
        const ToolkitWork toolkit;
        limitsDialog_->open();
    });
}

void frm_Pondera::ApplyProbabilityLimits() {
    support::Trap({kModule, __func__}, [&] {
        const ProbabilityLimits::Outcome& limits = limitsDialog_->Result();
        const std::pair<const std::optional<std::string>&, std::pair<QCheckBox*, QLineEdit*>>
            sides[] = {{limits.LSL, {cb_LSL, tb_LSL}}, {limits.USL, {cb_USL, tb_USL}}};
        for (const auto& [text, boxes] : sides) {
            if (!text) continue;
            boxes.second->setText(Q(*text));
            boxes.first->setChecked(true);
            boxes.second->setEnabled(true);
        }
        Plot();
    });
}

void frm_Pondera::mnuClearData_Click() {
    support::Trap({kModule, __func__}, [&] {
        ForgetData(false);
        RedrawLastChart();
    });
}

void frm_Pondera::ForgetData(bool moments) {
    DataBins.reset();
    DataValues.clear();
    if (moments) DataMoments.reset();
    HistogramHeights.clear();
    mnuClearData->setEnabled(false);
    PlaceDataPoint();
}

void frm_Pondera::mnuQuit_Click() {
    support::Trap({kModule, __func__}, [&] { close(); });
}
