#include "ui/main/frm_Pondera.h"

#include "engine/m_Distributions.h"
#include "settings/DisplayOptions.h"
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
#include "ui/draw/m_TextRotate.h"
#include "ui/main/MarkerDrag.h"
#include "ui/main/QtFace.h"
#include "ui/main/WindowLayout.h"
#include "ui/main/frm_About2.h"
#include "ui/options/frm_Options.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QFocusEvent>
#include <QFontMetrics>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

namespace {

// Error labels, one per procedure.
constexpr const char* kForm_Initialize = "Pondera.frm_Pondera.Form_Initialize";
constexpr const char* kForm_Paint = "Pondera.frm_Pondera.Form_Paint";
constexpr const char* kForm_Unload = "Pondera.frm_Pondera.Form_Unload";
constexpr const char* kForm_Resize = "Pondera.frm_Pondera.Form_Resize";
constexpr const char* kPlot = "Pondera.frm_Pondera.Plot";
constexpr const char* kCalcMomentsforDistribution =
    "Pondera.frm_Pondera.CalcMomentsforDistribution";
constexpr const char* kCalcPercent = "Pondera.frm_Pondera.CalcPercent";
constexpr const char* kDrawPDF = "Pondera.frm_Pondera.DrawPDF";
constexpr const char* kPlotbyMoments = "Pondera.frm_Pondera.PlotbyMoments";
constexpr const char* kSetFrameInactive = "Pondera.frm_Pondera.SetFrameInactive";
constexpr const char* kPlotSkewKurt = "Pondera.frm_Pondera.PlotSkewKurt";
constexpr const char* kDrawSkewKurtLimits = "Pondera.frm_Pondera.DrawSkewKurtLimits";
constexpr const char* kbut_Plot_Click = "Pondera.frm_Pondera.but_Plot_Click";
constexpr const char* kbut_Plot_GotFocus = "Pondera.frm_Pondera.but_Plot_GotFocus";
constexpr const char* kdd_Distribution_Change = "Pondera.frm_Pondera.dd_Distribution_Change";
constexpr const char* kdd_Distribution_Click = "Pondera.frm_Pondera.dd_Distribution_Click";
constexpr const char* kdd_Distribution_GotFocus = "Pondera.frm_Pondera.dd_Distribution_GotFocus";
constexpr const char* ktb_Param1_Change = "Pondera.frm_Pondera.tb_Param1_Change";
constexpr const char* ktb_Param2_Change = "Pondera.frm_Pondera.tb_Param2_Change";
constexpr const char* ktb_Param3_Change = "Pondera.frm_Pondera.tb_Param3_Change";
constexpr const char* ktb_Param4_Change = "Pondera.frm_Pondera.tb_Param4_Change";
constexpr const char* ktb_LSL_Change = "Pondera.frm_Pondera.tb_LSL_Change";
constexpr const char* ktb_Target_Change = "Pondera.frm_Pondera.tb_Target_Change";
constexpr const char* ktb_USL_Change = "Pondera.frm_Pondera.tb_USL_Change";
constexpr const char* ktb_Param1_GotFocus = "Pondera.frm_Pondera.tb_Param1_GotFocus";
constexpr const char* ktb_Param2_GotFocus = "Pondera.frm_Pondera.tb_Param2_GotFocus";
constexpr const char* ktb_Param3_GotFocus = "Pondera.frm_Pondera.tb_Param3_GotFocus";
constexpr const char* ktb_Param4_GotFocus = "Pondera.frm_Pondera.tb_Param4_GotFocus";
constexpr const char* ktb_LSL_GotFocus = "Pondera.frm_Pondera.tb_LSL_GotFocus";
constexpr const char* ktb_Target_GotFocus = "Pondera.frm_Pondera.tb_Target_GotFocus";
constexpr const char* ktb_USL_GotFocus = "Pondera.frm_Pondera.tb_USL_GotFocus";
constexpr const char* ktb_Param1_LostFocus = "Pondera.frm_Pondera.tb_Param1_LostFocus";
constexpr const char* kcb_LSL_Click = "Pondera.frm_Pondera.cb_LSL_Click";
constexpr const char* kcb_Target_Click = "Pondera.frm_Pondera.cb_Target_Click";
constexpr const char* kcb_USL_Click = "Pondera.frm_Pondera.cb_USL_Click";
constexpr const char* kcb_LSL_GotFocus = "Pondera.frm_Pondera.cb_LSL_GotFocus";
constexpr const char* kcb_Target_GotFocus = "Pondera.frm_Pondera.cb_Target_GotFocus";
constexpr const char* kcb_USL_GotFocus = "Pondera.frm_Pondera.cb_USL_GotFocus";
constexpr const char* kmnuXAxis_Click = "Pondera.frm_Pondera.mnuXAxis_Click";
constexpr const char* kmnuYAxis_Click = "Pondera.frm_Pondera.mnuYAxis_Click";
constexpr const char* kmnuLabels_Click = "Pondera.frm_Pondera.mnuLabels_Click";
constexpr const char* kmnuCopytoClipboard_Click = "Pondera.frm_Pondera.mnuCopytoClipboard_Click";
constexpr const char* kmnuOptions_Click = "Pondera.frm_Pondera.mnuOptions_Click";
constexpr const char* kmnuAbout_Click = "Pondera.frm_Pondera.mnuAbout_Click";
constexpr const char* kmnuQuit_Click = "Pondera.frm_Pondera.mnuQuit_Click";
constexpr const char* kpb_PDF_KeyDown = "Pondera.frm_Pondera.pb_PDF_KeyDown";
constexpr const char* kpb_Slider_GotFocus = "Pondera.frm_Pondera.pb_Slider_GotFocus";
constexpr const char* kpb_PDF_MouseDown = "Pondera.frm_Pondera.pb_PDF_MouseDown";
constexpr const char* kpb_PDF_MouseMove = "Pondera.frm_Pondera.pb_PDF_MouseMove";
constexpr const char* kpb_PDF_MouseUp = "Pondera.frm_Pondera.pb_PDF_MouseUp";
constexpr const char* kpb_Slider_MouseDown = "Pondera.frm_Pondera.pb_Slider_MouseDown";
constexpr const char* kpb_Slider_MouseMove = "Pondera.frm_Pondera.pb_Slider_MouseMove";
constexpr const char* kpb_Slider_MouseUp = "Pondera.frm_Pondera.pb_Slider_MouseUp";
constexpr const char* kcb_DrawbyMoments_Click = "Pondera.frm_Pondera.cb_DrawbyMoments_Click";
constexpr const char* kcb_DrawbyMoments_GotFocus = "Pondera.frm_Pondera.cb_DrawbyMoments_GotFocus";
constexpr const char* ktb_Mean_Change = "Pondera.frm_Pondera.tb_Mean_Change";
constexpr const char* ktb_StDev_Change = "Pondera.frm_Pondera.tb_StDev_Change";
constexpr const char* ktb_Skewness_Change = "Pondera.frm_Pondera.tb_Skewness_Change";
constexpr const char* ktb_Kurtosis_Change = "Pondera.frm_Pondera.tb_Kurtosis_Change";
constexpr const char* ktb_Mean_GotFocus = "Pondera.frm_Pondera.tb_Mean_GotFocus";
constexpr const char* ktb_StDev_GotFocus = "Pondera.frm_Pondera.tb_StDev_GotFocus";
constexpr const char* ktb_Skewness_GotFocus = "Pondera.frm_Pondera.tb_Skewness_GotFocus";
constexpr const char* ktb_Kurtosis_GotFocus = "Pondera.frm_Pondera.tb_Kurtosis_GotFocus";
constexpr const char* ktb_Ymax_GotFocus = "Pondera.frm_Pondera.tb_Ymax_GotFocus";
constexpr const char* kpb_SkewKurt_GotFocus = "Pondera.frm_Pondera.pb_SkewKurt_GotFocus";
constexpr const char* kcb_LockSkewness_Click = "Pondera.frm_Pondera.cb_LockSkewness_Click";
constexpr const char* kcb_LockKurtosis_Click = "Pondera.frm_Pondera.cb_LockKurtosis_Click";
constexpr const char* kpb_SkewKurt_MouseDown = "Pondera.frm_Pondera.pb_SkewKurt_MouseDown";
constexpr const char* kpb_SkewKurt_MouseMove = "Pondera.frm_Pondera.pb_SkewKurt_MouseMove";
constexpr const char* kpb_SkewKurt_MouseUp = "Pondera.frm_Pondera.pb_SkewKurt_MouseUp";

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
double ValOf(const QLineEdit* box) {
    return support::Val(S(box->text()));
}
double ValOf(const QLabel* label) {
    return support::Val(S(label->text()));
}

void FocusAndSelect(QLineEdit* box) {
    box->setFocus(Qt::OtherFocusReason);
    box->selectAll();
}

PlotPipeline::RangeOptions CurrentRangeOptions() {
    return {DisplayOptions::AppXRange, DisplayOptions::AppNumStDev, DisplayOptions::AppXMin,
            DisplayOptions::AppXMax};
}

// Mouse pointer as an hourglass for the scope of one run.
class WaitCursor {
  public:
    WaitCursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }
    ~WaitCursor() { QApplication::restoreOverrideCursor(); }
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;
};

// Sets a check box's value the way the old runtime did: its Click handler runs
// only when the value actually changes.
template <class Handler> void SetCheckValue(QCheckBox* box, bool value, Handler&& click) {
    if (box->isChecked() == value) return;
    box->setChecked(value);
    click();
}

} // namespace

frm_Pondera::frm_Pondera(QWidget* parent) : QMainWindow(parent) {
    setObjectName("frm_Pondera");
    setFont(look::AppFont(9));
    WindowLayout::Build(*this);
    WindowLayout::BuildMenus(*this);
    ConnectHandlers();
    resize(1200, 880);
    Form_Initialize();
}

frm_Pondera::~frm_Pondera() {
    Form_Unload();
}

// Every handler is connected here, each run as one user action.
void frm_Pondera::ConnectHandlers() {
    auto act = [this](auto member) {
        return [this, member] { RunAsAction([&] { (this->*member)(); }); };
    };
    auto mouse = [this](auto member) {
        return [this, member](int button, int shift, double x, double y) {
            RunAsAction([&] { (this->*member)(button, shift, x, y); });
        };
    };

    connect(but_Plot, &QPushButton::clicked, this, act(&frm_Pondera::but_Plot_Click));
    connect(dd_Distribution, &QComboBox::activated, this, act(&frm_Pondera::dd_Distribution_Click));

    connect(tb_Param1, &QLineEdit::textChanged, this, act(&frm_Pondera::tb_Param1_Change));
    connect(tb_Param2, &QLineEdit::textChanged, this, act(&frm_Pondera::tb_Param2_Change));
    connect(tb_Param3, &QLineEdit::textChanged, this, act(&frm_Pondera::tb_Param3_Change));
    connect(tb_Param4, &QLineEdit::textChanged, this, act(&frm_Pondera::tb_Param4_Change));
    connect(tb_LSL, &QLineEdit::textChanged, this, act(&frm_Pondera::tb_LSL_Change));
    connect(tb_Target, &QLineEdit::textChanged, this, act(&frm_Pondera::tb_Target_Change));
    connect(tb_USL, &QLineEdit::textChanged, this, act(&frm_Pondera::tb_USL_Change));
    connect(tb_Mean, &QLineEdit::textChanged, this, act(&frm_Pondera::tb_Mean_Change));
    connect(tb_StDev, &QLineEdit::textChanged, this, act(&frm_Pondera::tb_StDev_Change));
    connect(tb_Skewness, &QLineEdit::textChanged, this, act(&frm_Pondera::tb_Skewness_Change));
    connect(tb_Kurtosis, &QLineEdit::textChanged, this, act(&frm_Pondera::tb_Kurtosis_Change));

    connect(cb_LSL, &QCheckBox::clicked, this, act(&frm_Pondera::cb_LSL_Click));
    connect(cb_Target, &QCheckBox::clicked, this, act(&frm_Pondera::cb_Target_Click));
    connect(cb_USL, &QCheckBox::clicked, this, act(&frm_Pondera::cb_USL_Click));
    connect(cb_DrawbyMoments, &QCheckBox::clicked, this, act(&frm_Pondera::cb_DrawbyMoments_Click));
    connect(cb_LockSkewness, &QCheckBox::clicked, this, act(&frm_Pondera::cb_LockSkewness_Click));
    connect(cb_LockKurtosis, &QCheckBox::clicked, this, act(&frm_Pondera::cb_LockKurtosis_Click));

    connect(mnuXAxis, &QAction::triggered, this, act(&frm_Pondera::mnuXAxis_Click));
    connect(mnuYAxis, &QAction::triggered, this, act(&frm_Pondera::mnuYAxis_Click));
    connect(mnuLabels, &QAction::triggered, this, act(&frm_Pondera::mnuLabels_Click));
    connect(mnuCopytoClipboard, &QAction::triggered, this,
            act(&frm_Pondera::mnuCopytoClipboard_Click));
    connect(mnuOptions, &QAction::triggered, this, act(&frm_Pondera::mnuOptions_Click));
    connect(mnuAbout, &QAction::triggered, this, act(&frm_Pondera::mnuAbout_Click));
    connect(mnuQuit, &QAction::triggered, this, act(&frm_Pondera::mnuQuit_Click));

    connect(pb_PDF, &PictureBox::MouseDown, this, mouse(&frm_Pondera::pb_PDF_MouseDown));
    connect(pb_PDF, &PictureBox::MouseMove, this, mouse(&frm_Pondera::pb_PDF_MouseMove));
    connect(pb_PDF, &PictureBox::MouseUp, this, mouse(&frm_Pondera::pb_PDF_MouseUp));
    connect(pb_Slider, &PictureBox::MouseDown, this, mouse(&frm_Pondera::pb_Slider_MouseDown));
    connect(pb_Slider, &PictureBox::MouseMove, this, mouse(&frm_Pondera::pb_Slider_MouseMove));
    connect(pb_Slider, &PictureBox::MouseUp, this, mouse(&frm_Pondera::pb_Slider_MouseUp));
    connect(pb_SkewKurt, &PictureBox::MouseDown, this, mouse(&frm_Pondera::pb_SkewKurt_MouseDown));
    connect(pb_SkewKurt, &PictureBox::MouseMove, this, mouse(&frm_Pondera::pb_SkewKurt_MouseMove));
    connect(pb_SkewKurt, &PictureBox::MouseUp, this, mouse(&frm_Pondera::pb_SkewKurt_MouseUp));
    connect(pb_PDF, &PictureBox::KeyDown, this,
            [this](int, int) { RunAsAction([&] { pb_PDF_KeyDown(); }); });
    connect(pb_Slider, &PictureBox::GotFocus, this, act(&frm_Pondera::pb_Slider_GotFocus));
    connect(pb_SkewKurt, &PictureBox::GotFocus, this, act(&frm_Pondera::pb_SkewKurt_GotFocus));

    // A resize redraws the last good chart; the small surfaces keep their text.
    connect(pb_PDF, &PictureBox::Resized, this, [this] {
        RunAsAction([&] { support::Trap(kForm_Resize, [&] { RedrawLastChart(); }); });
    });

    // Enter in an input field presses Plot (which does nothing while it is disabled).
    for (QLineEdit* box : {tb_Param1, tb_Param2, tb_Param3, tb_Param4, tb_LSL, tb_Target, tb_USL,
                           tb_Mean, tb_StDev, tb_Skewness, tb_Kurtosis})
        connect(box, &QLineEdit::returnPressed, but_Plot, &QPushButton::click);

    // Focus events have no signal: they come through the one event filter.
    for (QWidget* w : std::initializer_list<QWidget*>{
             tb_Param1, tb_Param2, tb_Param3, tb_Param4, tb_LSL, tb_Target, tb_USL, cb_LSL,
             cb_Target, cb_USL, dd_Distribution, but_Plot, tb_Mean, tb_StDev, tb_Skewness,
             tb_Kurtosis, tb_Ymax, cb_DrawbyMoments})
        WatchFocus(w);
}

void frm_Pondera::WatchFocus(QWidget* widget) {
    widget->installEventFilter(this);
}

bool frm_Pondera::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusIn) {
        const auto reason = static_cast<QFocusEvent*>(event)->reason();
        // A window coming back to the front is no new focus of the field.
        if (reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason)
            return QMainWindow::eventFilter(watched, event);
        using Handler = void (frm_Pondera::*)();
        const std::pair<QObject*, Handler> table[] = {
            {tb_Param1, &frm_Pondera::tb_Param1_GotFocus},
            {tb_Param2, &frm_Pondera::tb_Param2_GotFocus},
            {tb_Param3, &frm_Pondera::tb_Param3_GotFocus},
            {tb_Param4, &frm_Pondera::tb_Param4_GotFocus},
            {tb_LSL, &frm_Pondera::tb_LSL_GotFocus},
            {tb_Target, &frm_Pondera::tb_Target_GotFocus},
            {tb_USL, &frm_Pondera::tb_USL_GotFocus},
            {cb_LSL, &frm_Pondera::cb_LSL_GotFocus},
            {cb_Target, &frm_Pondera::cb_Target_GotFocus},
            {cb_USL, &frm_Pondera::cb_USL_GotFocus},
            {dd_Distribution, &frm_Pondera::dd_Distribution_GotFocus},
            {but_Plot, &frm_Pondera::but_Plot_GotFocus},
            {tb_Mean, &frm_Pondera::tb_Mean_GotFocus},
            {tb_StDev, &frm_Pondera::tb_StDev_GotFocus},
            {tb_Skewness, &frm_Pondera::tb_Skewness_GotFocus},
            {tb_Kurtosis, &frm_Pondera::tb_Kurtosis_GotFocus},
            {tb_Ymax, &frm_Pondera::tb_Ymax_GotFocus},
            {cb_DrawbyMoments, &frm_Pondera::cb_DrawbyMoments_GotFocus},
        };
        for (const auto& [object, handler] : table) {
            if (object != watched) continue;
            RunAsAction([&] { (this->*handler)(); });
            // A click would put the cursor back after the selection; select again after it.
            if (auto* box = qobject_cast<QLineEdit*>(watched);
                box && reason == Qt::MouseFocusReason && box->hasSelectedText())
                QTimer::singleShot(0, box, [box] { box->selectAll(); });
            break;
        }
    } else if (event->type() == QEvent::FocusOut && watched == tb_Param1) {
        const auto reason = static_cast<QFocusEvent*>(event)->reason();
        // Leaving the window (or a message box taking the front) is not leaving the field.
        if (reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason && !unloaded_)
            RunAsAction([&] { tb_Param1_LostFocus(); });
    }
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

// ---------------------------------------------------------------------------
// Start-up, paint, unload

void frm_Pondera::Form_Initialize() {
    support::Trap(kForm_Initialize, [&] {
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
    });
}

void frm_Pondera::Form_Paint() {
    support::Trap(kForm_Paint, [&] {
        const QString family = look::AppFontFamily();
        auto upright = [&](PictureBox* pb, const QString& text, int size) {
            pb->Cls();
            QFont font(family);
            font.setPixelSize(size);
            const double textWidth = QFontMetrics(font).horizontalAdvance(text);
            // Reading upward, centred on the surface.
            const double x = (pb->ScaleWidth() - size) / 2.0;
            const double y = (pb->ScaleHeight() + textWidth) / 2.0;
            m_TextRotate::PrintRotatedText(*pb, text, x, y, 900, "Tahoma", size, false, false);
            pb->Refresh();
        };
        upright(pb_YTitle, "Kurtosis", 13);
        upright(pb_Lock, "Fix", 12);
    });
}

void frm_Pondera::Form_Unload() {
    support::Trap(kForm_Unload, [&] {
        if (unloaded_) return;
        unloaded_ = true;
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

// ---------------------------------------------------------------------------
// The plot pipeline

PlotPipeline::Limits frm_Pondera::ReadLimits() const {
    return {{{cb_LSL->isChecked(), S(tb_LSL->text())},
             {cb_Target->isChecked(), S(tb_Target->text())},
             {cb_USL->isChecked(), S(tb_USL->text())}}};
}

PlotPipeline::PlotInputs frm_Pondera::ReadPlotInputs() const {
    PlotPipeline::PlotInputs in;
    in.Name = S(dd_Distribution->Text());
    const QLineEdit* boxes[] = {tb_Param1, tb_Param2, tb_Param3, tb_Param4};
    const QLabel* labels[] = {lb_Param1, lb_Param2, lb_Param3, lb_Param4};
    for (int i = 0; i < 4; ++i) {
        in.ParamTexts[i] = S(boxes[i]->text());
        in.ParamLabels[i] = S(labels[i]->text());
    }
    in.Param3Shown = !tb_Param3->isHidden();
    in.Limit = ReadLimits();
    return in;
}

QLineEdit* frm_Pondera::Box(Field field) const {
    switch (field) {
    case Field::Param1:
        return tb_Param1;
    case Field::Param2:
        return tb_Param2;
    case Field::Param3:
        return tb_Param3;
    case Field::LSL:
        return tb_LSL;
    case Field::Target:
        return tb_Target;
    case Field::USL:
        return tb_USL;
    case Field::Mean:
        return tb_Mean;
    case Field::StDev:
        return tb_StDev;
    case Field::Skewness:
        return tb_Skewness;
    case Field::Kurtosis:
        return tb_Kurtosis;
    case Field::None:
        break;
    }
    return nullptr;
}

bool frm_Pondera::Refused(const PlotPipeline::Check& check) {
    if (check.Ok) return false;
    if (!check.Message.empty()) support::MsgBox(check.Message, kWarningTitle);
    if (QLineEdit* box = Box(check.Focus)) FocusAndSelect(box);
    return true;
}

void frm_Pondera::Plot() {
    support::Trap(kPlot, [&] {
        if (cb_DrawbyMoments->isChecked()) {
            SetStatus(kCalculating);
            // PlotbyMoments fills the PNC boxes itself when it draws; a run that
            // ended early leaves the previous results, so nothing follows here.
            PlotbyMoments();
            return;
        }
        const PlotPipeline::PlotInputs in = ReadPlotInputs();
        if (Refused(PlotPipeline::CheckParamTexts(in))) return;
        const std::array<double, 3> p = PlotPipeline::ParamValues(in);
        Param1 = p[0];
        Param2 = p[1];
        Param3 = p[2];
        if (Refused(PlotPipeline::CheckParamRules(in.Name, p))) return;
        if (Refused(PlotPipeline::CheckLimitTexts(in.Limit))) return;

        // The moments are computed once the inputs are known good, so a failed
        // check leaves the previous results in place.
        CalcMomentsforDistribution();
        const auto [low, high] = PlotPipeline::WithDensityStart(
            in.Name,
            PlotPipeline::DisplayRange(Current.Mean, Current.StDev, CurrentRangeOptions(),
                                       in.Limit),
            p);
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
    switch (PlotPipeline::ResultKind(ReadLimits())) {
    case PlotPipeline::PncBoxes::Empty:
        ShowPNC({});
        break;
    case PlotPipeline::PncBoxes::Calculated:
        CalcPercent();
        break;
    case PlotPipeline::PncBoxes::Zero: {
        const std::string zero = support::Format(0.0, DisplayOptions::Pattern());
        ShowPNC({zero, zero, zero});
        break;
    }
    }
}

void frm_Pondera::ShowPNC(const std::array<std::string, 3>& texts) {
    tb_LowerPNC->setText(Q(texts[0]));
    tb_UpperPNC->setText(Q(texts[1]));
    tb_PNC->setText(Q(texts[2]));
}

void frm_Pondera::CalcMomentsforDistribution() {
    support::Trap(kCalcMomentsforDistribution, [&] {
        PlotPipeline::MomentsOf(S(dd_Distribution->Text()), ValOf(tb_Param1), ValOf(tb_Param2),
                                ValOf(tb_Param3), Current);
        const std::string pattern = DisplayOptions::Pattern();
        tb_Mean->setText(Q(support::Format(Current.Mean, pattern)));
        tb_StDev->setText(Q(support::Format(Current.StDev, pattern)));
        tb_Skewness->setText(Q(support::Format(Current.Skewness, pattern)));
        tb_Kurtosis->setText(Q(support::Format(Current.Kurtosis, pattern)));
    });
}

void frm_Pondera::CalcPercent() {
    support::Trap(kCalcPercent, [&] {
        // In moments mode the fitted curve's exact parameters, not their rounded
        // display; a fit without a curve has no figures.
        if (cb_DrawbyMoments->isChecked() && !fit_) return ShowPNC({});
        const QLineEdit* boxes[] = {tb_Param1, tb_Param2, tb_Param3, tb_Param4};
        std::array<std::string, 4> texts;
        for (int i = 0; i < 4; ++i)
            texts[i] = S(boxes[i]->text());
        const PlotPipeline::PncSource source =
            cb_DrawbyMoments->isChecked()
                ? MomentsStep::PncSourceOf(*fit_)
                : PlotPipeline::SourceFromFields(S(dd_Distribution->Text()), texts);
        ShowPNC(PlotPipeline::PercentTexts(source, ReadLimits(), DisplayOptions::AppDecPlaces,
                                           DisplayOptions::Pattern()));
    });
}

void frm_Pondera::DrawPDF(bool refresh, int xTicks, int yTicks, double xTickLength,
                          double yTickLength, PictureBox& pbObject, const std::vector<double>& x,
                          const std::vector<double>& y) {
    support::Trap(kDrawPDF, [&] {
        DensityChart::Input in;
        in.Refresh = refresh;
        in.XTicks = xTicks;
        in.YTicks = yTicks;
        in.XTickLength = xTickLength;
        in.YTickLength = yTickLength;
        in.X = x;
        in.Y = y;
        in.LSL = {cb_LSL->isChecked(), ValOf(tb_LSL)};
        in.Target = {cb_Target->isChecked(), ValOf(tb_Target)};
        in.USL = {cb_USL->isChecked(), ValOf(tb_USL)};
        lastLSL_ = in.LSL;
        lastTarget_ = in.Target;
        lastUSL_ = in.USL;
        DrawChart(in, pbObject);
        haveChart_ = true;
    });
}

// The body shared by DrawPDF and the redraw after a resize; runs in their trap.
void frm_Pondera::DrawChart(const DensityChart::Input& given, PictureBox& surface) {
    DensityChart::Input in = given;
    in.DraggingLSL = DragLSL;
    in.DraggingUSL = DragUSL;
    in.XAxis = ShowXAxis;
    in.YAxis = ShowYAxis;
    in.Labels = ShowLabels;
    in.BackColor = DisplayOptions::AppBackColor;
    in.InSpecColor = DisplayOptions::AppInSpecColor;
    in.OutSpecColor = DisplayOptions::AppOutSpecColor;
    in.LSLMarkerWidth = sh_LSL->Width();
    in.USLMarkerWidth = sh_USL->Width();
    surface.SetBackColor(DisplayOptions::AppBackColor);
    const DensityChart::Result result = DensityChart::Draw(surface, in);
    if (&surface == pb_PDF) {
        ChartGeometry = result.Geom;
        sh_LSL->SetLeft(result.LSLMarker.Left);
        sh_LSL->SetVisible(result.LSLMarker.Visible);
        sh_USL->SetLeft(result.USLMarker.Left);
        sh_USL->SetVisible(result.USLMarker.Visible);
    }
    surface.Refresh();
}

void frm_Pondera::RedrawLastChart() {
    if (!haveChart_ || PlotX.size() < 2) return;
    support::Trap(kDrawPDF, [&] {
        DensityChart::Input in;
        in.XTicks = DisplayOptions::AppXTicks;
        in.YTicks = DisplayOptions::AppYTicks;
        in.X = PlotX;
        in.Y = PlotY;
        in.LSL = lastLSL_;
        in.Target = lastTarget_;
        in.USL = lastUSL_;
        DrawChart(in, *pb_PDF);
    });
}

// ---------------------------------------------------------------------------
// Drawing by moments

void frm_Pondera::cb_DrawbyMoments_Click() {
    support::Trap(kcb_DrawbyMoments_Click, [&] {
        const bool byMoments = cb_DrawbyMoments->isChecked();
        QStringList names;
        for (const auto& n : byMoments ? m_Distributions::MomentsListOrder()
                                       : m_Distributions::ClassicalListOrder())
            names << Q(n);
        dd_Distribution->SetLocked(byMoments);
        dd_Distribution->SetDistributions(names);
        QLineEdit* params[] = {tb_Param1, tb_Param2, tb_Param3, tb_Param4};
        QLabel* labels[] = {lb_Param1, lb_Param2, lb_Param3, lb_Param4};
        if (byMoments) {
            dd_Distribution->setCurrentIndex(0);
            for (int i = 0; i < 4; ++i) {
                labels[i]->setText(MomentsStep::kParamCaptions[i]);
                labels[i]->setVisible(true);
                params[i]->setVisible(true);
            }
            fit_.reset();
        } else {
            tb_Param2->setText("1");
            dd_Distribution->setCurrentIndex(0);
            // Selecting the item is a change of distribution: labels and defaults follow.
            dd_Distribution_Change();
        }
        // Moments become inputs and parameters outputs, or back.
        for (QLineEdit* box : {tb_Mean, tb_StDev, tb_Skewness, tb_Kurtosis})
            SetBoxLocked(box, !byMoments);
        for (QLineEdit* box : params)
            SetBoxLocked(box, byMoments);
        if (!byMoments) SetStatus("");
        // Outside moments mode both locks are ticked, so the chart shows the moments.
        SetCheckValue(cb_LockKurtosis, !byMoments, [&] { cb_LockKurtosis_Click(); });
        SetCheckValue(cb_LockSkewness, !byMoments, [&] { cb_LockSkewness_Click(); });
        cb_LockKurtosis->setEnabled(byMoments);
        cb_LockSkewness->setEnabled(byMoments);
        tb_Ymax->setEnabled(byMoments);
        Plot();
    });
}

bool frm_Pondera::PlotbyMoments() {
    bool drawn = false;
    support::Trap(kPlotbyMoments, [&] {
        QLineEdit* moments[] = {tb_Mean, tb_StDev, tb_Skewness, tb_Kurtosis};
        std::array<std::string, 4> texts;
        for (int i = 0; i < 4; ++i)
            texts[i] = S(moments[i]->text());
        if (Refused(MomentsStep::CheckMomentTexts(texts))) return;
        if (Refused(PlotPipeline::CheckLimitTexts(ReadLimits()))) return;

        const double mean = ValOf(tb_Mean), stDev = ValOf(tb_StDev);
        const MomentsStep::Fit fit =
            MomentsStep::FitMoments(mean, stDev, ValOf(tb_Skewness), ValOf(tb_Kurtosis));
        SetStatus(fit.Message);
        if (fit.Failed()) return;

        SetStatus(kCalculating);
        WaitCursor hourglass;
        const std::array<std::string, 4> params =
            MomentsStep::ParamTexts(fit, DisplayOptions::Pattern());
        QLineEdit* paramBoxes[] = {tb_Param1, tb_Param2, tb_Param3, tb_Param4};
        for (int i = 0; i < 4; ++i)
            paramBoxes[i]->setText(Q(params[i]));

        const auto [xMin, xMax] =
            PlotPipeline::DisplayRange(mean, stDev, CurrentRangeOptions(), ReadLimits());
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
        Current = {ValOf(tb_Mean), ValOf(tb_StDev), ValOf(tb_Skewness), ValOf(tb_Kurtosis)};
        ShowCurve(std::move(curve), xMin, xMax);
        if (item)
            fit_ = fit;
        else
            fit_.reset();

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
    support::Trap(kSetFrameInactive, [&] {
        for (TitledFrame* frame : findChildren<TitledFrame*>())
            frame->Focus(false);
    });
}

// ---------------------------------------------------------------------------
// The skewness-kurtosis chart

void frm_Pondera::PlotSkewKurt(double skewFrom, double skewTo) {
    support::Trap(kPlotSkewKurt, [&] {
        const SkewKurtChart::Boundary boundary = SkewKurtChart::MakeBoundary(skewFrom, skewTo);
        DrawSkewKurtLimits(*pb_SkewKurt, boundary, SkewKurtChart::kBoundaryPoints, 5, 5, 4, 4,
                           true);
    });
}

void frm_Pondera::DrawSkewKurtLimits(PictureBox& surface, const SkewKurtChart::Boundary& boundary,
                                     int /*count*/, int xTicks, int yTicks, double xTickLength,
                                     double yTickLength, bool refresh) {
    support::Trap(kDrawSkewKurtLimits, [&] {
        SkewKurtChart::Input in;
        in.Refresh = refresh;
        in.XTicks = xTicks;
        in.YTicks = yTicks;
        in.XTickLength = xTickLength;
        in.YTickLength = yTickLength;
        in.XAxis = ShowXAxis;
        in.YAxis = ShowYAxis;
        const SkewKurtChart::Result result = SkewKurtChart::Draw(surface, boundary, in);
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
    SkewKurtChart::PickScale s;
    s.W = pb_SkewKurt->ScaleWidth();
    s.H = pb_SkewKurt->ScaleHeight();
    s.SkewMin = ValOf(lb_XMin);
    s.SkewMax = ValOf(lb_XMax);
    s.KurtMin = ValOf(lb_YMin);
    s.KurtMax = ValOf(tb_Ymax);
    return s;
}

void frm_Pondera::MoveSkewKurtMarker(const SkewKurtChart::MarkerPos& pos) {
    sh_SkewKurt->Move(pos.Left, pos.Top);
}

// The body both lock clicks share.
void frm_Pondera::SkewKurtLockClick() {
    PlotSkewKurt(-4, 4);
    const SkewKurtChart::PickScale scale = ReadPickScale();
    SetBoxLocked(tb_Skewness, cb_LockSkewness->isChecked());
    SetBoxLocked(tb_Kurtosis, cb_LockKurtosis->isChecked());
    const SkewKurtChart::LockView v =
        SkewKurtChart::Locks(scale, cb_LockSkewness->isChecked(), cb_LockKurtosis->isChecked(),
                             cb_DrawbyMoments->isChecked(), ValOf(tb_Skewness), ValOf(tb_Kurtosis),
                             sh_SkewKurt->Width(), sh_SkewKurt->Height());
    if (v.SkewLineX)
        pb_SkewKurt->Line(*v.SkewLineX, scale.T, *v.SkewLineX, scale.T + scale.H - 1, look::kBlack);
    if (v.KurtMax) tb_Ymax->setText(Q(support::Format(*v.KurtMax, "0")));
    if (v.KurtLineY)
        pb_SkewKurt->Line(scale.L, *v.KurtLineY, scale.L + scale.W - 1, *v.KurtLineY, look::kBlack);
    MoveSkewKurtMarker(v.Marker);
    pb_SkewKurt->Refresh();
}

void frm_Pondera::cb_LockSkewness_Click() {
    support::Trap(kcb_LockSkewness_Click, [&] { SkewKurtLockClick(); });
}

void frm_Pondera::cb_LockKurtosis_Click() {
    support::Trap(kcb_LockKurtosis_Click, [&] { SkewKurtLockClick(); });
}

void frm_Pondera::pb_SkewKurt_MouseDown(int button, int, double, double) {
    support::Trap(kpb_SkewKurt_MouseDown, [&] {
        if (button == 1 && cb_DrawbyMoments->isChecked()) sh_SkewKurt->SetFillColor(look::kWhite);
    });
}

void frm_Pondera::pb_SkewKurt_MouseMove(int button, int, double x, double y) {
    support::Trap(kpb_SkewKurt_MouseMove, [&] {
        if (!support::IsNumeric(S(tb_Ymax->text()))) {
            support::MsgBox("Maximum Kurtosis value must be a positive number greater than 1",
                            kWarningTitle);
            tb_Ymax->selectAll();
            return;
        }
        const SkewKurtChart::PickScale scale = ReadPickScale();
        if (!cb_DrawbyMoments->isChecked() || button != 1) return;
        // The pixel under the pointer is the feasibility test: only white is free.
        const int px = static_cast<int>(std::nearbyint(x));
        const int py = static_cast<int>(std::nearbyint(y));
        if (pb_SkewKurt->GetPixel(px, py) != look::kWhite) return;

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
    support::Trap(kpb_SkewKurt_MouseUp, [&] {
        if (!cb_DrawbyMoments->isChecked()) return;
        sh_SkewKurt->SetFillColor(look::kBlack);
        NumPoints = SkewKurtChart::kAfterDragPoints;
        Plot();
    });
}

// ---------------------------------------------------------------------------
// Spec-limit markers

// A press on a ticked limit's marker arms it, a second press releases it;
// LSL first, then USL, each redrawing before the next is tested.
void frm_Pondera::DragMouseDown(int button, double x) {
    for (const DragMarker& m : DragMarkers()) {
        if (!MarkerDrag::Toggles(button, m.Check->isChecked(), x, m.Shape->Left(),
                                 m.Shape->Width()))
            continue;
        m.Armed = !m.Armed;
        m.Shape->SetFillColor(m.Armed ? look::kRed : look::kBlack);
        NumPoints = MarkerDrag::PointsFor(m.Armed);
        Plot();
    }
}

void frm_Pondera::DragMouseMove(double x) {
    for (const DragMarker& m : DragMarkers()) {
        if (!m.Armed || !m.Check->isChecked()) continue;
        const MarkerDrag::Follow f = MarkerDrag::FollowPointer(ChartGeometry, x, m.Shape->Width(),
                                                               DisplayOptions::AppDecPlaces);
        m.Shape->SetLeft(f.Left);
        m.Box->setText(Q(f.Text));
        Plot();
    }
}

void frm_Pondera::DragMouseUp() {
    sh_LSL->SetFillColor(look::kBlack);
    sh_USL->SetFillColor(look::kBlack);
    DragLSL = false;
    DragUSL = false;
    NumPoints = MarkerDrag::kAfterDragPoints;
    Plot();
}

std::array<frm_Pondera::DragMarker, 2> frm_Pondera::DragMarkers() {
    return {{{cb_LSL, tb_LSL, sh_LSL, DragLSL}, {cb_USL, tb_USL, sh_USL, DragUSL}}};
}

void frm_Pondera::pb_PDF_MouseDown(int button, int, double x, double) {
    support::Trap(kpb_PDF_MouseDown, [&] { DragMouseDown(button, x); });
}
void frm_Pondera::pb_PDF_MouseMove(int, int, double x, double) {
    support::Trap(kpb_PDF_MouseMove, [&] { DragMouseMove(x); });
}
void frm_Pondera::pb_PDF_MouseUp(int, int, double, double) {
    support::Trap(kpb_PDF_MouseUp, [&] { DragMouseUp(); });
}
void frm_Pondera::pb_Slider_MouseDown(int button, int, double x, double) {
    support::Trap(kpb_Slider_MouseDown, [&] { DragMouseDown(button, x); });
}
void frm_Pondera::pb_Slider_MouseMove(int, int, double x, double) {
    support::Trap(kpb_Slider_MouseMove, [&] { DragMouseMove(x); });
}
void frm_Pondera::pb_Slider_MouseUp(int, int, double, double) {
    support::Trap(kpb_Slider_MouseUp, [&] { DragMouseUp(); });
}

// ---------------------------------------------------------------------------
// Small handlers

void frm_Pondera::but_Plot_Click() {
    support::Trap(kbut_Plot_Click, [&] {
        if (cb_DrawbyMoments->isChecked())
            PlotbyMoments();
        else
            Plot();
    });
}

void frm_Pondera::but_Plot_GotFocus() {
    support::Trap(kbut_Plot_GotFocus, [&] { SetFrameInactive(); });
}

void frm_Pondera::dd_Distribution_Click() {
    support::Trap(kdd_Distribution_Click, [&] { dd_Distribution_Change(); });
}

void frm_Pondera::dd_Distribution_Change() {
    support::Trap(kdd_Distribution_Change, [&] {
        if (cb_DrawbyMoments->isChecked()) return;
        QLabel* labels[] = {lb_Param1, lb_Param2, lb_Param3, lb_Param4};
        QLineEdit* boxes[] = {tb_Param1, tb_Param2, tb_Param3, tb_Param4};
        const m_Distributions::CatalogueEntry* entry =
            m_Distributions::FindDistribution(S(dd_Distribution->Text()));
        // The Johnson kinds have no default texts: their fields are left alone.
        const bool classical = entry && entry->Code <= m_Distributions::kUniform;
        for (int i = 0; i < 4; ++i) {
            labels[i]->setVisible(false);
            boxes[i]->setVisible(false);
        }
        if (classical) {
            for (int i = 0; i < 4; ++i) {
                const m_Distributions::ParamSlot& slot = entry->Slots[i];
                if (!slot.Label) continue;
                labels[i]->setText(slot.Label);
                labels[i]->setVisible(true);
                boxes[i]->setVisible(true);
                if (slot.DefaultText) boxes[i]->setText(slot.DefaultText);
            }
        }
        for (QLineEdit* box : {tb_Mean, tb_StDev, tb_Skewness, tb_Kurtosis})
            SetBoxLocked(box, true);
        Plot();
        cb_LockSkewness->setChecked(true);
        cb_LockSkewness_Click();
        cb_LockKurtosis->setChecked(true);
        cb_LockKurtosis_Click();
    });
}

void frm_Pondera::dd_Distribution_GotFocus() {
    support::Trap(kdd_Distribution_GotFocus, [&] {
        SetFrameInactive();
        qarvFrame_PDF->Focus(true);
    });
}

void frm_Pondera::EnablePlot(const char* label) {
    support::Trap(label, [&] { but_Plot->setEnabled(true); });
}

void frm_Pondera::tb_Param1_Change() {
    EnablePlot(ktb_Param1_Change);
}
void frm_Pondera::tb_Param2_Change() {
    EnablePlot(ktb_Param2_Change);
}
void frm_Pondera::tb_Param3_Change() {
    EnablePlot(ktb_Param3_Change);
}
void frm_Pondera::tb_Param4_Change() {
    EnablePlot(ktb_Param4_Change);
}
void frm_Pondera::tb_LSL_Change() {
    EnablePlot(ktb_LSL_Change);
}
void frm_Pondera::tb_Target_Change() {
    EnablePlot(ktb_Target_Change);
}
void frm_Pondera::tb_USL_Change() {
    EnablePlot(ktb_USL_Change);
}

void frm_Pondera::FieldGotFocus(const char* label, TitledFrame* frame, QLineEdit* box) {
    support::Trap(label, [&] {
        SetFrameInactive();
        if (frame) frame->Focus(true);
        if (box) box->setSelection(0, static_cast<int>(box->text().size()));
    });
}

void frm_Pondera::tb_Param1_GotFocus() {
    FieldGotFocus(ktb_Param1_GotFocus, qarvFrame_PDF, tb_Param1);
}
void frm_Pondera::tb_Param2_GotFocus() {
    FieldGotFocus(ktb_Param2_GotFocus, qarvFrame_PDF, tb_Param2);
}
void frm_Pondera::tb_Param3_GotFocus() {
    FieldGotFocus(ktb_Param3_GotFocus, qarvFrame_PDF, tb_Param3);
}
void frm_Pondera::tb_Param4_GotFocus() {
    FieldGotFocus(ktb_Param4_GotFocus, qarvFrame_PDF, tb_Param4);
}
void frm_Pondera::tb_LSL_GotFocus() {
    FieldGotFocus(ktb_LSL_GotFocus, qarvFrame_SpecLimits, tb_LSL);
}
void frm_Pondera::tb_Target_GotFocus() {
    FieldGotFocus(ktb_Target_GotFocus, qarvFrame_SpecLimits, tb_Target);
}
void frm_Pondera::tb_USL_GotFocus() {
    FieldGotFocus(ktb_USL_GotFocus, qarvFrame_SpecLimits, tb_USL);
}
void frm_Pondera::cb_LSL_GotFocus() {
    FieldGotFocus(kcb_LSL_GotFocus, qarvFrame_SpecLimits, nullptr);
}
void frm_Pondera::cb_Target_GotFocus() {
    FieldGotFocus(kcb_Target_GotFocus, qarvFrame_SpecLimits, nullptr);
}
void frm_Pondera::cb_USL_GotFocus() {
    FieldGotFocus(kcb_USL_GotFocus, qarvFrame_SpecLimits, nullptr);
}
void frm_Pondera::tb_Mean_GotFocus() {
    FieldGotFocus(ktb_Mean_GotFocus, qarvFrame_Moments, tb_Mean);
}
void frm_Pondera::tb_StDev_GotFocus() {
    FieldGotFocus(ktb_StDev_GotFocus, qarvFrame_Moments, tb_StDev);
}
void frm_Pondera::tb_Skewness_GotFocus() {
    FieldGotFocus(ktb_Skewness_GotFocus, qarvFrame_Moments, tb_Skewness);
}
void frm_Pondera::tb_Kurtosis_GotFocus() {
    FieldGotFocus(ktb_Kurtosis_GotFocus, qarvFrame_Moments, tb_Kurtosis);
}
void frm_Pondera::tb_Ymax_GotFocus() {
    FieldGotFocus(ktb_Ymax_GotFocus, qarvFrame_Moments, nullptr);
}
void frm_Pondera::pb_SkewKurt_GotFocus() {
    FieldGotFocus(kpb_SkewKurt_GotFocus, qarvFrame_Moments, nullptr);
}

void frm_Pondera::cb_DrawbyMoments_GotFocus() {
    support::Trap(kcb_DrawbyMoments_GotFocus, [&] { SetFrameInactive(); });
}

void frm_Pondera::tb_Param1_LostFocus() {
    support::Trap(ktb_Param1_LostFocus, [&] {
        if (!support::IsNumeric(S(tb_Param1->text())))
            support::MsgBox(PlotPipeline::NotANumber(S(lb_Param1->text())), kWarningTitle);
    });
}

void frm_Pondera::SpecLimitClick(const char* label, QCheckBox* check, QLineEdit* box) {
    support::Trap(label, [&] {
        box->setEnabled(check->isChecked());
        Plot();
    });
}

void frm_Pondera::cb_LSL_Click() {
    SpecLimitClick(kcb_LSL_Click, cb_LSL, tb_LSL);
}
void frm_Pondera::cb_Target_Click() {
    SpecLimitClick(kcb_Target_Click, cb_Target, tb_Target);
}
void frm_Pondera::cb_USL_Click() {
    SpecLimitClick(kcb_USL_Click, cb_USL, tb_USL);
}

// Outside moments mode the moment boxes are outputs: a change there means nothing.
void frm_Pondera::MomentChanged(const char* label) {
    support::Trap(label, [&] {
        if (cb_DrawbyMoments->isChecked()) but_Plot->setEnabled(true);
    });
}

void frm_Pondera::tb_Mean_Change() {
    MomentChanged(ktb_Mean_Change);
}
void frm_Pondera::tb_StDev_Change() {
    MomentChanged(ktb_StDev_Change);
}
void frm_Pondera::tb_Skewness_Change() {
    MomentChanged(ktb_Skewness_Change);
}
void frm_Pondera::tb_Kurtosis_Change() {
    MomentChanged(ktb_Kurtosis_Change);
}

void frm_Pondera::mnuXAxis_Click() {
    support::Trap(kmnuXAxis_Click, [&] {
        ShowXAxis = mnuXAxis->isChecked();
        Plot();
    });
}

void frm_Pondera::mnuYAxis_Click() {
    support::Trap(kmnuYAxis_Click, [&] {
        ShowYAxis = mnuYAxis->isChecked();
        Plot();
    });
}

void frm_Pondera::mnuLabels_Click() {
    support::Trap(kmnuLabels_Click, [&] {
        ShowLabels = mnuLabels->isChecked();
        Plot();
    });
}

void frm_Pondera::mnuCopytoClipboard_Click() {
    support::Trap(kmnuCopytoClipboard_Click, [&] { m_PictureBoxCopy::CopyEntirePicture(*pb_PDF); });
}

void frm_Pondera::mnuOptions_Click() {
    support::Trap(kmnuOptions_Click, [&] {
        if (!options_) return;
        options_->show();
        options_->raise();
        options_->activateWindow();
    });
}

void frm_Pondera::mnuAbout_Click() {
    support::Trap(kmnuAbout_Click, [&] {
        frm_About2 about(this);
        about.exec();
    });
}

void frm_Pondera::mnuQuit_Click() {
    support::Trap(kmnuQuit_Click, [&] { close(); });
}

void frm_Pondera::pb_PDF_KeyDown() {
    support::Trap(kpb_PDF_KeyDown, [&] { SetFrameInactive(); });
}

void frm_Pondera::pb_Slider_GotFocus() {
    support::Trap(kpb_Slider_GotFocus, [&] { SetFrameInactive(); });
}
