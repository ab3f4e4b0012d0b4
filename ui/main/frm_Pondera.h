// The main window: the distribution and its parameters, the spec limits, the
// results, the moments frame with its skewness-kurtosis chart, and the density
// chart with the marker strip. It owns all interactive state; every change by
// the user ends in Plot (or PlotbyMoments in moments mode).
//
// The window decides nothing itself: each procedure reads its fields, asks
// PlotPipeline, MomentsStep, SkewKurtChart or MarkerDrag, and paints or routes
// the answer. One-line handlers that share a body are defined below with their
// error label.
//
// Controls keep the names of the design and are public, so that the tests and
// the command-line tool drive the real widgets. Handlers keep their
// <control>_<Event> names; they are connected in WindowLayout::Connect, and focus
// events reach them through the window's one event filter.
#pragma once

#include "stats/m_Identify.h"
#include "support/ErrorTrap.h"
#include "ui/main/DataStep.h"
#include "ui/main/DensityChart.h"
#include "ui/main/MomentsStep.h"
#include "ui/main/PlotPipeline.h"
#include "ui/main/ResultsSheet.h"
#include "ui/main/SkewKurtChart.h"
#include "ui/main/TitledChart.h"

#include <QMainWindow>

#include <array>
#include <optional>
#include <string>
#include <vector>

class CapabilityPanel;
class DistributionCombo;
class MarkerShape;
class PictureBox;
class QAction;
class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QStatusBar;
class TitledFrame;
class frm_About2;
class frm_Data;
class frm_LimitsFromProbability;
class frm_Options;

class frm_Pondera : public QMainWindow {
    Q_OBJECT

  public:
    // Error labels are this module and the procedure's own name.
    static constexpr const char* kModule = "Pondera.frm_Pondera";

    explicit frm_Pondera(QWidget* parent = nullptr);
    ~frm_Pondera() override;

    // ---- Controls ----------------------------------------------------------
    TitledFrame* qarvFrame_PDF = nullptr;
    QLabel* lb_Distribution = nullptr;
    DistributionCombo* dd_Distribution = nullptr;
    QLabel* lb_Param1 = nullptr;
    QLabel* lb_Param2 = nullptr;
    QLabel* lb_Param3 = nullptr;
    QLabel* lb_Param4 = nullptr;
    QLineEdit* tb_Param1 = nullptr;
    QLineEdit* tb_Param2 = nullptr;
    QLineEdit* tb_Param3 = nullptr;
    QLineEdit* tb_Param4 = nullptr;

    TitledFrame* qarvFrame_SpecLimits = nullptr;
    QCheckBox* cb_LSL = nullptr;
    QCheckBox* cb_Target = nullptr;
    QCheckBox* cb_USL = nullptr;
    QLineEdit* tb_LSL = nullptr;
    QLineEdit* tb_Target = nullptr;
    QLineEdit* tb_USL = nullptr;

    TitledFrame* qarvFrame_Results = nullptr;
    QLineEdit* tb_LowerPNC = nullptr;
    QLineEdit* tb_UpperPNC = nullptr;
    QLineEdit* tb_PNC = nullptr;
    // Capability beside the PNC: Pp, Ppk (Ppl and Ppu in its tool tip), total PNC in ppm.
    QLineEdit* tb_Pp = nullptr;
    QLineEdit* tb_Ppk = nullptr;
    QLineEdit* tb_PPM = nullptr;
    // Beneath them: the method, observed ppm and the intervals (or their progress).
    QLabel* lb_Capability = nullptr;

    TitledFrame* qarvFrame_Moments = nullptr;
    QLineEdit* tb_Mean = nullptr;
    QLineEdit* tb_StDev = nullptr;
    QLineEdit* tb_Skewness = nullptr;
    QLineEdit* tb_Kurtosis = nullptr;
    QCheckBox* cb_DrawbyMoments = nullptr;
    PictureBox* pb_SkewKurt = nullptr;
    MarkerShape* sh_SkewKurt = nullptr;
    PictureBox* pb_YTitle = nullptr;
    PictureBox* pb_Lock = nullptr;
    QLineEdit* tb_Ymax = nullptr;
    QLabel* lb_YMin = nullptr;
    QLabel* lb_XMin = nullptr;
    QLabel* lb_XMax = nullptr;
    QCheckBox* cb_LockSkewness = nullptr;
    QCheckBox* cb_LockKurtosis = nullptr;

    QPushButton* but_Plot = nullptr;
    PictureBox* pb_PDF = nullptr;
    PictureBox* pb_Slider = nullptr;
    MarkerShape* sh_LSL = nullptr;
    MarkerShape* sh_USL = nullptr;

    QStatusBar* StatusBar1 = nullptr;
    QLabel* StatusPanel1 = nullptr; // panel 1 of the status bar
    QLabel* StatusPanel2 = nullptr; // the readout under the pointer

    QAction* mnuQuit = nullptr;
    QAction* mnuSaveChart = nullptr;
    QAction* mnuCopytoClipboard = nullptr;
    QAction* mnuCopyResults = nullptr;
    QAction* mnuSaveReport = nullptr;
    QAction* mnuPrint = nullptr;
    QAction* mnuLimitsFromProbability = nullptr;
    QAction* mnuXAxis = nullptr;
    QAction* mnuYAxis = nullptr;
    QAction* mnuLabels = nullptr;
    QAction* mnuPinCurve = nullptr;
    QAction* mnuUnpin = nullptr;
    QAction* mnuOptions = nullptr;
    QAction* mnuAbout = nullptr;
    QAction* mnuFitToData = nullptr;
    QAction* mnuClearData = nullptr;
    // The data's point on the skewness-kurtosis chart.
    MarkerShape* sh_DataPoint = nullptr;

    // The options dialog, loaded hidden with the window and unloaded with it.
    frm_Options* Options() const { return options_; }
    // The data dialog, made on first use and kept, so it shows the last data.
    frm_Data* DataDialog() const { return dataDialog_; }
    // The limits-from-probability dialog, made on first use and kept with its last entries.
    frm_LimitsFromProbability* LimitsDialog() const { return limitsDialog_; }

    // ---- Window state --------------------------------------------------------
    int NumPoints = 300;  // curve sample count N
    bool DragLSL = false; // the LSL marker is armed
    bool DragUSL = false;
    bool ShowXAxis = true; // mirrored by mnuXAxis, mnuYAxis, mnuLabels
    bool ShowYAxis = true;
    bool ShowLabels = true;
    // Parameters as Plot last read them.
    double Param1 = 0, Param2 = 0, Param3 = 0;
    // The moments last drawn (mean, standard deviation, skewness, kurtosis).
    PlotPipeline::Moments Current;
    // Geometry of the last drawing of pb_PDF, read by the marker drag.
    DensityChart::Geometry ChartGeometry;
    // The sampled curve of the last good plot (1-based, element 0 unused).
    std::vector<double> PlotX, PlotY;
    double RangeLow = 0, RangeHigh = 0;
    // Data fitted from the data dialog: its histogram and point, drawn until
    // cleared or moments mode is left; and its moments, fitted exactly while
    // their texts stay in the moment fields.
    std::optional<DataStep::Histogram> DataBins;
    std::optional<DataStep::Moments> DataMoments;
    // The heights of the histogram's bars in the last drawing (empty without data).
    std::vector<double> HistogramHeights;
    // The pinned curve (1-based; empty when nothing is pinned), drawn in grey.
    std::vector<double> PinnedX, PinnedY;
    // The capability figures as last shown.
    ResultsSheet::CapabilityTexts Capability;
    // The values of the data loaded from the data dialog (empty without data).
    std::vector<double> DataValues;
    // The study behind the capability boxes: both methods, expected and
    // observed ppm, n, and the intervals once they are in.
    const m_CapabilityStudy::Study& CapabilityStudy() const;
    // Waits for intervals under way (Copy Results, a report).
    void WaitForCapability();
    // The curve now in the parameter fields was fitted to DataValues by this
    // m_Fits row: its figures get intervals until a parameter is changed.
    void SetFittedRow(int row);
    // The data dialog's row behind the drawn curve (its name, fit, A² and p),
    // for the report; none when the curve was not fitted to the loaded data
    // from a row of the table.
    std::optional<m_Identify::RowResult> ShownDataRow() const;

    // ---- Procedures ------------------------------------------------------------
    void Form_Initialize();
    void Form_Paint();
    void Form_Unload();
    // Redraws the last good chart at the surface's new size.
    void Form_Resize();
    void Plot();
    void CalcMomentsforDistribution();
    void CalcPercent();
    void DrawPDF(bool refresh, int xTicks, int yTicks, double xTickLength, double yTickLength,
                 PictureBox& pbObject, const std::vector<double>& x, const std::vector<double>& y);
    // One validate-fit-sample-draw run in moments mode; false when it ended early.
    bool PlotbyMoments();
    void SetFrameInactive();
    void PlotSkewKurt(double skewFrom, double skewTo);
    void DrawSkewKurtLimits(PictureBox& surface, const SkewKurtChart::Boundary& boundary, int count,
                            int xTicks, int yTicks, double xTickLength, double yTickLength,
                            bool refresh);

    // ---- Event handlers --------------------------------------------------------
    void but_Plot_Click();
    void but_Plot_GotFocus() { FieldGotFocus({kModule, __func__}, nullptr, nullptr); }
    void dd_Distribution_Change();
    void dd_Distribution_Click();
    void dd_Distribution_GotFocus() { FieldGotFocus({kModule, __func__}, qarvFrame_PDF, nullptr); }
    void tb_Param1_Change() { EnablePlot({kModule, __func__}); }
    void tb_Param2_Change() { EnablePlot({kModule, __func__}); }
    void tb_Param3_Change() { EnablePlot({kModule, __func__}); }
    void tb_Param4_Change() { EnablePlot({kModule, __func__}); }
    void tb_LSL_Change() { EnablePlot({kModule, __func__}); }
    void tb_Target_Change() { EnablePlot({kModule, __func__}); }
    void tb_USL_Change() { EnablePlot({kModule, __func__}); }
    void tb_Param1_GotFocus() { FieldGotFocus({kModule, __func__}, qarvFrame_PDF, tb_Param1); }
    void tb_Param2_GotFocus() { FieldGotFocus({kModule, __func__}, qarvFrame_PDF, tb_Param2); }
    void tb_Param3_GotFocus() { FieldGotFocus({kModule, __func__}, qarvFrame_PDF, tb_Param3); }
    void tb_Param4_GotFocus() { FieldGotFocus({kModule, __func__}, qarvFrame_PDF, tb_Param4); }
    void tb_LSL_GotFocus() { FieldGotFocus({kModule, __func__}, qarvFrame_SpecLimits, tb_LSL); }
    void tb_Target_GotFocus() {
        FieldGotFocus({kModule, __func__}, qarvFrame_SpecLimits, tb_Target);
    }
    void tb_USL_GotFocus() { FieldGotFocus({kModule, __func__}, qarvFrame_SpecLimits, tb_USL); }
    void tb_Param1_LostFocus();
    void cb_LSL_Click() { SpecLimitClick({kModule, __func__}, cb_LSL, tb_LSL); }
    void cb_Target_Click() { SpecLimitClick({kModule, __func__}, cb_Target, tb_Target); }
    void cb_USL_Click() { SpecLimitClick({kModule, __func__}, cb_USL, tb_USL); }
    void cb_LSL_GotFocus() { FieldGotFocus({kModule, __func__}, qarvFrame_SpecLimits, nullptr); }
    void cb_Target_GotFocus() { FieldGotFocus({kModule, __func__}, qarvFrame_SpecLimits, nullptr); }
    void cb_USL_GotFocus() { FieldGotFocus({kModule, __func__}, qarvFrame_SpecLimits, nullptr); }
    void mnuXAxis_Click() { ViewToggle({kModule, __func__}, ShowXAxis, mnuXAxis); }
    void mnuYAxis_Click() { ViewToggle({kModule, __func__}, ShowYAxis, mnuYAxis); }
    void mnuLabels_Click() { ViewToggle({kModule, __func__}, ShowLabels, mnuLabels); }
    void mnuPinCurve_Click();
    void mnuUnpin_Click();
    void mnuCopytoClipboard_Click();
    void mnuSaveChart_Click();
    void mnuCopyResults_Click();
    void mnuSaveReport_Click();
    void mnuPrint_Click();
    void mnuLimitsFromProbability_Click();
    // The accepted dialog's limits into their boxes, ticked, then Plot.
    void ApplyProbabilityLimits();
    void mnuOptions_Click();
    void mnuAbout_Click();
    void mnuQuit_Click();
    void mnuFitToData_Click();
    void mnuClearData_Click();
    // The accepted dialog's data: moments into the fields, moments mode, a fit.
    void ApplyData();
    // "Use this fit": the dialog's chosen row drawn by its parameters, with the
    // data's histogram and point and the dialog's limits.
    void UseDataFit();
    void pb_PDF_KeyDown() { FieldGotFocus({kModule, __func__}, nullptr, nullptr); }
    void pb_Slider_GotFocus() { FieldGotFocus({kModule, __func__}, nullptr, nullptr); }
    void pb_PDF_MouseDown(int button, int, double x, double) {
        DragMouseDown({kModule, __func__}, button, x);
    }
    void pb_PDF_MouseMove(int, int, double x, double) {
        DragMouseMove({kModule, __func__}, x);
        ShowReadout({kModule, __func__}, x);
    }
    void pb_PDF_MouseLeave();
    void pb_PDF_MouseUp(int, int, double, double) { DragMouseUp({kModule, __func__}); }
    void pb_Slider_MouseDown(int button, int, double x, double) {
        DragMouseDown({kModule, __func__}, button, x);
    }
    void pb_Slider_MouseMove(int, int, double x, double) { DragMouseMove({kModule, __func__}, x); }
    void pb_Slider_MouseUp(int, int, double, double) { DragMouseUp({kModule, __func__}); }

    // A focused marker moved by the arrow keys: each press a drag step, the
    // release or the loss of focus the end of the drag.
    void sh_LSL_KeyDown(int key, int shift) { MarkerKeyDown({kModule, __func__}, 0, key, shift); }
    void sh_USL_KeyDown(int key, int shift) { MarkerKeyDown({kModule, __func__}, 1, key, shift); }
    void sh_LSL_KeyUp(int, int) { MarkerKeyUp({kModule, __func__}); }
    void sh_USL_KeyUp(int, int) { MarkerKeyUp({kModule, __func__}); }
    void sh_LSL_LostFocus() { MarkerKeyUp({kModule, __func__}); }
    void sh_USL_LostFocus() { MarkerKeyUp({kModule, __func__}); }

    void cb_DrawbyMoments_Click();
    void cb_DrawbyMoments_GotFocus() { FieldGotFocus({kModule, __func__}, nullptr, nullptr); }
    void tb_Mean_Change() { MomentChanged({kModule, __func__}); }
    void tb_StDev_Change() { MomentChanged({kModule, __func__}); }
    void tb_Skewness_Change() { MomentChanged({kModule, __func__}); }
    void tb_Kurtosis_Change() { MomentChanged({kModule, __func__}); }
    void tb_Mean_GotFocus() { FieldGotFocus({kModule, __func__}, qarvFrame_Moments, tb_Mean); }
    void tb_StDev_GotFocus() { FieldGotFocus({kModule, __func__}, qarvFrame_Moments, tb_StDev); }
    void tb_Skewness_GotFocus() {
        FieldGotFocus({kModule, __func__}, qarvFrame_Moments, tb_Skewness);
    }
    void tb_Kurtosis_GotFocus() {
        FieldGotFocus({kModule, __func__}, qarvFrame_Moments, tb_Kurtosis);
    }
    void tb_Ymax_GotFocus() { FieldGotFocus({kModule, __func__}, qarvFrame_Moments, nullptr); }
    void pb_SkewKurt_GotFocus() { FieldGotFocus({kModule, __func__}, qarvFrame_Moments, nullptr); }
    void cb_LockSkewness_Click() { SkewKurtLockClick({kModule, __func__}); }
    void cb_LockKurtosis_Click() { SkewKurtLockClick({kModule, __func__}); }
    void pb_SkewKurt_MouseDown(int button, int shift, double x, double y);
    void pb_SkewKurt_MouseMove(int button, int shift, double x, double y);
    void pb_SkewKurt_MouseUp(int button, int shift, double x, double y);

    // Redraws the last good chart at the surface's current size, without
    // validating again (after a resize).
    void RedrawLastChart();
    // What the window shows, for the exports: the figures as Copy Results lists
    // them, and the last good chart drawn afresh on a surface of its own at
    // width x height pixels of the given ratio (empty before the first plot).
    ResultsSheet::Shown ResultsShown();
    TitledChart::Chart ExportChart(int width, int height, double ratio);
    // Sets panel 1 of the status bar.
    void SetStatus(const std::string& text);
    // A label's caption as the user reads it, without its mnemonic marker.
    static std::string Caption(const QLabel* label);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void showEvent(QShowEvent* event) override;

  private:
    // What the fields hold, for the pipeline.
    PlotPipeline::PlotInputs ReadPlotInputs() const;
    PlotPipeline::Limits ReadLimits() const;
    std::optional<PlotPipeline::PncSource> FiguresSource() const;
    QLineEdit* Box(PlotPipeline::Field field) const;
    // True, after its message and with its field focused, when a check failed.
    bool Refused(const PlotPipeline::Check& check);
    // Draws a sampled curve and keeps it as the last good plot.
    void ShowCurve(PlotPipeline::Curve curve, double low, double high);
    void WriteRangeBack(double low, double high);
    void ShowResults();
    void ShowPNC(const std::array<std::string, 3>& texts);
    void ShowCapability(const ResultsSheet::CapabilityTexts& texts);
    // The study's figures again (they change when the intervals come in).
    void RefreshCapability();
    m_CapabilityStudy::Request CapabilityRequest(const PlotPipeline::PncSource& source) const;
    // The m_Fits row the shown curve was fitted to the data by, or -1.
    int FittedDataRow() const;
    // Drops the data's histogram and point (and, with moments, its exact moments).
    void ForgetData(bool moments);
    void PlaceDataPoint();
    DensityChart::Result DrawChart(PictureBox& surface, bool refresh, int xTicks, int yTicks,
                                   double xTickLength, double yTickLength,
                                   const std::vector<double>& x, const std::vector<double>& y);
    SkewKurtChart::PickScale ReadPickScale() const;
    void MoveSkewKurtMarker(const SkewKurtChart::MarkerPos& pos);
    void SkewKurtLockClick(support::Label label);
    void EnablePlot(support::Label label);
    void MomentChanged(support::Label label);
    void FieldGotFocus(support::Label label, TitledFrame* frame, QLineEdit* box);
    void SpecLimitClick(support::Label label, QCheckBox* check, QLineEdit* box);
    // The LSL and USL markers with their boxes and drag flags.
    struct DragMarker {
        QCheckBox* Check;
        QLineEdit* Box;
        MarkerShape* Shape;
        bool& Armed;
    };
    std::array<DragMarker, 2> DragMarkers();
    void DragMouseDown(support::Label label, int button, double x);
    void DragMouseMove(support::Label label, double x);
    void FollowTo(const DragMarker& m, double x);
    void DragMouseUp(support::Label label);
    void MarkerKeyDown(support::Label label, int marker, int key, int shift);
    void MarkerKeyUp(support::Label label);
    void ViewToggle(support::Label label, bool& flag, const QAction* item);
    // The readout under the pointer at x in panel 2; nothing outside the plot.
    void ShowReadout(support::Label label, double x);
    // The range widened to the data's values and the pinned curve.
    std::pair<double, double> WithOthersShown(std::pair<double, double> range) const;

    // Where the arrow keys have moved the pointer of a keyboard drag.
    double keyPointerX_ = 0;
    frm_Options* options_ = nullptr;
    frm_Data* dataDialog_ = nullptr;
    frm_LimitsFromProbability* limitsDialog_ = nullptr;
    bool unloaded_ = false;
    bool haveChart_ = false;
    // Spec limits of the last drawing, for the redraw after a resize.
    std::array<DensityChart::Limit, 3> lastLimits_; // LSL, Target, USL
    PictureBox* exportSurface_ = nullptr;           // drawn like pb_PDF while an export draws
    // The last fit drawn in moments mode (the exact values, not the shown
    // text); empty when it had no curve.
    std::optional<MomentsStep::Fit> fit_;
    // The distribution of the curve drawn last, for the readout; empty when
    // the last drawing had no curve.
    std::optional<PlotPipeline::PncSource> drawnSource_;
    CapabilityPanel* capabilityPanel_ = nullptr;
    bool capabilityFigures_ = false; // the boxes show a study (not zeros or blanks)
    int fittedRow_ = -1;
    std::array<std::string, 4> fittedParams_;
};
