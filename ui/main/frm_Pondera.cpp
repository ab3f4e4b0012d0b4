#include "ui/main/frm_Pondera.h"

#include "engine/m_Distributions.h"
#include "engine/m_PercentCertainty.h"
#include "johnson/JohnsonDist.h"
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
#include "ui/main/QtFace.h"
#include "ui/main/frm_About2.h"
#include "ui/options/frm_Options.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QFocusEvent>
#include <QFontMetrics>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QStatusBar>
#include <QTimer>
#include <QVBoxLayout>

#include <cmath>

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

constexpr const char* kWarningTitle = "Pondera Warning";
constexpr const char* kCalculating = "Calculating...";
constexpr double kUnticked = 1e299; // an unticked limit never decides the range
constexpr const char* kNoWidth =
    "Nothing to draw: the display range has no width. Check the parameters and the display "
    "options.";

// A range the chart can map: finite and wider than nothing.
bool Drawable(double low, double high) {
    return std::isfinite(low) && std::isfinite(high) && high > low;
}

constexpr int kLeftColumnWidth = 340;
constexpr int kSkewKurtWidth = 172;
constexpr int kSkewKurtHeight = 136;
constexpr int kSliderHeight = 16;
// The titled frame's panel colour, for the small surfaces that sit on it.
const QColor kFramePanel(0xFB, 0xFB, 0xFC);

QString Q(const std::string& s) {
    return QString::fromStdString(s);
}
std::string S(const QString& s) {
    return s.toStdString();
}

bool Numeric(const QLineEdit* box) {
    return support::IsNumeric(S(box->text()));
}
double ValOf(const QLineEdit* box) {
    return support::Val(S(box->text()));
}
double ValOf(const QLabel* label) {
    return support::Val(S(label->text()));
}

// Inputs are white; outputs and locked fields read-only in the button-face colour.
void SetBoxLocked(QLineEdit* box, bool locked) {
    box->setReadOnly(locked);
    QPalette pal = box->palette();
    pal.setColor(QPalette::Base, locked ? look::ToQColor(look::kButtonFace) : QColor(Qt::white));
    box->setPalette(pal);
}

void FocusAndSelect(QLineEdit* box) {
    box->setFocus(Qt::OtherFocusReason);
    box->selectAll();
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

QLineEdit* MakeBox(const char* name, QWidget* parent = nullptr) {
    auto* box = new QLineEdit(parent);
    box->setObjectName(name);
    box->setMinimumWidth(90);
    return box;
}

QLabel* MakeLabel(const QString& text, const char* name = nullptr) {
    auto* label = new QLabel(text);
    if (name) label->setObjectName(name);
    return label;
}

} // namespace

// ---------------------------------------------------------------------------
// Construction

frm_Pondera::frm_Pondera(QWidget* parent) : QMainWindow(parent) {
    setObjectName("frm_Pondera");
    setFont(look::AppFont(9));
    BuildControls();
    BuildMenus();
    ConnectHandlers();
    resize(1200, 880);
    Form_Initialize();
}

frm_Pondera::~frm_Pondera() {
    Form_Unload();
}

void frm_Pondera::BuildControls() {
    auto* central = new QWidget;
    central->setObjectName("central");
    setCentralWidget(central);
    auto* outer = new QHBoxLayout(central);
    outer->setContentsMargins(8, 8, 8, 4);
    outer->setSpacing(8);

    // ---- the left column of titled frames, scrollable on a small screen ----
    auto* column = new QWidget;
    column->setObjectName("leftColumn");
    auto* left = new QVBoxLayout(column);
    left->setContentsMargins(0, 0, 0, 0);
    left->setSpacing(5);

    qarvFrame_PDF = new TitledFrame("Distribution");
    qarvFrame_PDF->setObjectName("qarvFrame_PDF");
    {
        auto* grid = new QGridLayout(qarvFrame_PDF);
        grid->setVerticalSpacing(3);
        grid->setColumnStretch(1, 1);
        lb_Distribution = MakeLabel("Distribution:", "lb_Distribution");
        dd_Distribution = new DistributionCombo;
        dd_Distribution->setObjectName("dd_Distribution");
        grid->addWidget(lb_Distribution, 0, 0);
        grid->addWidget(dd_Distribution, 0, 1);
        QLabel** labels[] = {&lb_Param1, &lb_Param2, &lb_Param3, &lb_Param4};
        QLineEdit** boxes[] = {&tb_Param1, &tb_Param2, &tb_Param3, &tb_Param4};
        const char* labelNames[] = {"lb_Param1", "lb_Param2", "lb_Param3", "lb_Param4"};
        const char* boxNames[] = {"tb_Param1", "tb_Param2", "tb_Param3", "tb_Param4"};
        for (int i = 0; i < 4; ++i) {
            *labels[i] = MakeLabel(QString(), labelNames[i]);
            *boxes[i] = MakeBox(boxNames[i]);
            grid->addWidget(*labels[i], i + 1, 0);
            grid->addWidget(*boxes[i], i + 1, 1);
        }
    }
    left->addWidget(qarvFrame_PDF);

    qarvFrame_SpecLimits = new TitledFrame("Specification Limits");
    qarvFrame_SpecLimits->setObjectName("qarvFrame_SpecLimits");
    {
        auto* grid = new QGridLayout(qarvFrame_SpecLimits);
        grid->setVerticalSpacing(3);
        grid->setColumnStretch(1, 1);
        cb_LSL = new QCheckBox("Lower:");
        cb_LSL->setObjectName("cb_LSL");
        cb_Target = new QCheckBox("Target:");
        cb_Target->setObjectName("cb_Target");
        cb_USL = new QCheckBox("Upper:");
        cb_USL->setObjectName("cb_USL");
        tb_LSL = MakeBox("tb_LSL");
        tb_Target = MakeBox("tb_Target");
        tb_USL = MakeBox("tb_USL");
        tb_LSL->setText("-3");
        tb_Target->setText("0");
        tb_USL->setText("3");
        QCheckBox* checks[] = {cb_LSL, cb_Target, cb_USL};
        QLineEdit* boxes[] = {tb_LSL, tb_Target, tb_USL};
        for (int i = 0; i < 3; ++i) {
            boxes[i]->setEnabled(false);
            grid->addWidget(checks[i], i, 0);
            grid->addWidget(boxes[i], i, 1);
        }
    }
    left->addWidget(qarvFrame_SpecLimits);

    qarvFrame_Results = new TitledFrame("Results");
    qarvFrame_Results->setObjectName("qarvFrame_Results");
    {
        auto* grid = new QGridLayout(qarvFrame_Results);
        grid->setVerticalSpacing(3);
        grid->setColumnStretch(1, 1);
        tb_LowerPNC = MakeBox("tb_LowerPNC");
        tb_UpperPNC = MakeBox("tb_UpperPNC");
        tb_PNC = MakeBox("tb_PNC");
        const char* captions[] = {"PNC below LSL:", "PNC above USL:", "Total PNC:"};
        QLineEdit* boxes[] = {tb_LowerPNC, tb_UpperPNC, tb_PNC};
        for (int i = 0; i < 3; ++i) {
            SetBoxLocked(boxes[i], true);
            boxes[i]->setFocusPolicy(Qt::ClickFocus);
            grid->addWidget(MakeLabel(captions[i]), i, 0);
            grid->addWidget(boxes[i], i, 1);
        }
    }
    left->addWidget(qarvFrame_Results);

    qarvFrame_Moments = new TitledFrame("Moments");
    qarvFrame_Moments->setObjectName("qarvFrame_Moments");
    {
        auto* box = new QVBoxLayout(qarvFrame_Moments);
        box->setSpacing(3);
        auto* grid = new QGridLayout;
        grid->setVerticalSpacing(3);
        grid->setColumnStretch(1, 1);
        tb_Mean = MakeBox("tb_Mean");
        tb_StDev = MakeBox("tb_StDev");
        tb_Skewness = MakeBox("tb_Skewness");
        tb_Kurtosis = MakeBox("tb_Kurtosis");
        const char* captions[] = {"Mean:", "Std. Deviation:", "Skewness:", "Kurtosis:"};
        QLineEdit* boxes[] = {tb_Mean, tb_StDev, tb_Skewness, tb_Kurtosis};
        for (int i = 0; i < 4; ++i) {
            SetBoxLocked(boxes[i], true);
            grid->addWidget(MakeLabel(captions[i]), i, 0);
            grid->addWidget(boxes[i], i, 1);
        }
        box->addLayout(grid);

        cb_DrawbyMoments = new QCheckBox("Draw using Johnson Distributions");
        cb_DrawbyMoments->setObjectName("cb_DrawbyMoments");
        box->addWidget(cb_DrawbyMoments);

        // The skewness-kurtosis chart: kurtosis axis ends and title on the
        // left, skewness ends below, the locks with their "Fix" caption right.
        auto* chart = new QGridLayout;
        chart->setHorizontalSpacing(3);
        chart->setVerticalSpacing(1);
        tb_Ymax = MakeBox("tb_Ymax");
        tb_Ymax->setMinimumWidth(0);
        tb_Ymax->setFixedWidth(40);
        tb_Ymax->setAlignment(Qt::AlignRight);
        pb_YTitle = new PictureBox;
        pb_YTitle->setObjectName("pb_YTitle");
        pb_YTitle->setFocusPolicy(Qt::NoFocus);
        pb_YTitle->setFixedSize(40, kSkewKurtHeight - 50);
        pb_YTitle->SetPictureSize(40, kSkewKurtHeight - 50);
        lb_YMin = MakeLabel(QString(), "lb_YMin");
        lb_YMin->setAlignment(Qt::AlignRight | Qt::AlignBottom);
        pb_SkewKurt = new PictureBox;
        pb_SkewKurt->setObjectName("pb_SkewKurt");
        pb_SkewKurt->setFixedSize(kSkewKurtWidth, kSkewKurtHeight);
        pb_SkewKurt->SetPictureSize(kSkewKurtWidth, kSkewKurtHeight);
        // Moves count only while a button is held: the drag, not the hover.
        pb_SkewKurt->setMouseTracking(false);
        sh_SkewKurt = new MarkerShape(pb_SkewKurt, MarkerShape::Kind::Circle, 9, 9);
        sh_SkewKurt->setObjectName("sh_SkewKurt");
        pb_Lock = new PictureBox;
        pb_Lock->setObjectName("pb_Lock");
        pb_Lock->setFocusPolicy(Qt::NoFocus);
        pb_Lock->setFixedSize(18, 60);
        pb_Lock->SetPictureSize(18, 60);
        cb_LockSkewness = new QCheckBox("Skew.");
        cb_LockSkewness->setObjectName("cb_LockSkewness");
        cb_LockKurtosis = new QCheckBox("Kurt.");
        cb_LockKurtosis->setObjectName("cb_LockKurtosis");
        lb_XMin = MakeLabel(QString(), "lb_XMin");
        lb_XMax = MakeLabel(QString(), "lb_XMax");
        lb_XMax->setAlignment(Qt::AlignRight);
        auto* skewTitle = MakeLabel("Skewness");
        skewTitle->setAlignment(Qt::AlignHCenter);

        chart->addWidget(tb_Ymax, 0, 0, Qt::AlignTop);
        chart->addWidget(pb_YTitle, 1, 0, Qt::AlignCenter);
        chart->addWidget(lb_YMin, 2, 0, Qt::AlignRight | Qt::AlignBottom);
        chart->addWidget(pb_SkewKurt, 0, 1, 3, 1);
        auto* xAxis = new QHBoxLayout;
        xAxis->setContentsMargins(0, 0, 0, 0);
        xAxis->addWidget(lb_XMin);
        xAxis->addWidget(skewTitle, 1);
        xAxis->addWidget(lb_XMax);
        chart->addLayout(xAxis, 3, 1);
        auto* locks = new QGridLayout;
        locks->setContentsMargins(0, 0, 0, 0);
        locks->setHorizontalSpacing(2);
        locks->setVerticalSpacing(2);
        locks->addWidget(pb_Lock, 0, 0, 2, 1);
        locks->addWidget(cb_LockSkewness, 0, 1);
        locks->addWidget(cb_LockKurtosis, 1, 1);
        chart->addLayout(locks, 0, 2, 3, 1, Qt::AlignVCenter);
        chart->setColumnStretch(3, 1);
        box->addLayout(chart);
    }
    left->addWidget(qarvFrame_Moments);

    but_Plot = new QPushButton("Plot");
    but_Plot->setObjectName("but_Plot");
    but_Plot->setMinimumHeight(30);
    but_Plot->setDefault(true);
    left->addWidget(but_Plot);
    left->addStretch(1);

    auto* scroll = new QScrollArea;
    scroll->setObjectName("leftScroll");
    scroll->setWidget(column);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    column->setFixedWidth(kLeftColumnWidth);
    scroll->setFixedWidth(kLeftColumnWidth + scroll->verticalScrollBar()->sizeHint().width() + 2);
    outer->addWidget(scroll);

    // ---- the density chart and the strip with the spec-limit markers ----
    // Both share their left edge and width, so a pointer x means the same on each.
    auto* chartColumn = new QVBoxLayout;
    chartColumn->setContentsMargins(0, 0, 0, 0);
    chartColumn->setSpacing(0);
    pb_PDF = new PictureBox;
    pb_PDF->setObjectName("pb_PDF");
    pb_PDF->setMinimumSize(320, 220);
    pb_PDF->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    pb_PDF->SetPictureSize(820, 640);
    pb_Slider = new PictureBox;
    pb_Slider->setObjectName("pb_Slider");
    pb_Slider->setFixedHeight(kSliderHeight);
    pb_Slider->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    pb_Slider->SetPictureSize(820, kSliderHeight);
    sh_LSL = new MarkerShape(pb_Slider, MarkerShape::Kind::TriangleUp, 13, 11);
    sh_LSL->setObjectName("sh_LSL");
    sh_USL = new MarkerShape(pb_Slider, MarkerShape::Kind::TriangleUp, 13, 11);
    sh_USL->setObjectName("sh_USL");
    for (MarkerShape* marker : {sh_LSL, sh_USL}) {
        marker->SetTop(2);
        marker->SetVisible(false);
        marker->setCursor(Qt::SizeHorCursor);
    }
    chartColumn->addWidget(pb_PDF, 1);
    chartColumn->addWidget(pb_Slider);
    outer->addLayout(chartColumn, 1);

    // ---- status bar ----
    StatusBar1 = new QStatusBar;
    StatusBar1->setObjectName("StatusBar1");
    StatusPanel1 = new QLabel;
    StatusPanel1->setObjectName("StatusPanel1");
    StatusBar1->addWidget(StatusPanel1, 1);
    setStatusBar(StatusBar1);

    // The small surfaces on the moments frame take the frame's colour.
    for (PictureBox* pb : {pb_YTitle, pb_Lock, pb_Slider}) {
        pb->SetBackColor(look::FromQColor(kFramePanel));
        pb->Cls();
    }
    pb_Slider->SetBackColor(look::FromQColor(palette().color(QPalette::Window)));
    pb_Slider->Cls();
}

void frm_Pondera::BuildMenus() {
    QMenu* file = menuBar()->addMenu("File");
    mnuQuit = file->addAction("Exit");
    mnuQuit->setObjectName("mnuQuit");

    QMenu* edit = menuBar()->addMenu("Edit");
    mnuCopytoClipboard = edit->addAction("Copy Image to Clipboard");
    mnuCopytoClipboard->setObjectName("mnuCopytoClipboard");

    QMenu* view = menuBar()->addMenu("View");
    mnuXAxis = view->addAction("X-Axis");
    mnuXAxis->setObjectName("mnuXAxis");
    mnuYAxis = view->addAction("Y-Axis");
    mnuYAxis->setObjectName("mnuYAxis");
    mnuLabels = view->addAction("Labels");
    mnuLabels->setObjectName("mnuLabels");
    for (QAction* a : {mnuXAxis, mnuYAxis, mnuLabels}) {
        a->setCheckable(true);
        a->setChecked(true);
    }
    view->addSeparator();
    mnuOptions = view->addAction("Options...");
    mnuOptions->setObjectName("mnuOptions");
    mnuAbout = view->addAction("About");
    mnuAbout->setObjectName("mnuAbout");
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

void frm_Pondera::Plot() {
    support::Trap(kPlot, [&] {
        if (cb_DrawbyMoments->isChecked()) {
            SetStatus(kCalculating);
            // PlotbyMoments fills the PNC boxes itself when it draws; a run that
            // ended early leaves the previous results, so nothing follows here.
            PlotbyMoments();
            return;
        }

        const std::string name = S(dd_Distribution->Text());
        const m_Distributions::CatalogueEntry* entry = m_Distributions::FindDistribution(name);

        // Parameter fields must hold numbers (the third only where shown).
        QLineEdit* boxes[] = {tb_Param1, tb_Param2, tb_Param3};
        QLabel* labels[] = {lb_Param1, lb_Param2, lb_Param3};
        for (int i = 0; i < 3; ++i) {
            if (i == 2 && boxes[i]->isHidden()) break;
            if (!Numeric(boxes[i])) {
                support::MsgBox(S(labels[i]->text()) + " must be a number.", kWarningTitle);
                FocusAndSelect(boxes[i]);
                return;
            }
        }
        Param1 = ValOf(tb_Param1);
        Param2 = ValOf(tb_Param2);
        Param3 = tb_Param3->isHidden() ? 0.0 : ValOf(tb_Param3);

        // The distribution's rules; each check shows its own message.
        if (!m_Distributions::CheckParam1(name, Param1, Param2, Param3)) {
            FocusAndSelect(tb_Param1);
            return;
        }
        if (!m_Distributions::CheckParam2(name, Param1, Param2, Param3)) {
            FocusAndSelect(tb_Param2);
            return;
        }
        if (!m_Distributions::CheckParam3(name, Param1, Param2, Param3)) {
            FocusAndSelect(tb_Param3);
            return;
        }

        // Ticked limits must hold numbers.
        if (!LimitFieldsAreNumbers()) return;

        // The moments are computed once the inputs are known good, so a failed
        // check leaves the previous results in place.
        CalcMomentsforDistribution();

        // The range also takes in the point where the density starts.
        auto [low, high] = DisplayRange(CurMean, CurStDev);
        if (entry && entry->MinimumSlot && *entry->MinimumSlot) {
            const double minimum = std::string(entry->MinimumSlot) == "2" ? Param2 : Param3;
            low = m_Interface::Min(low, minimum);
            high = m_Interface::Max(high, minimum);
        }

        // A point-like distribution (or equal fixed endpoints) leaves no width to
        // draw on; say so and keep the previous chart.
        if (!Drawable(low, high)) {
            support::MsgBox(kNoWidth, kWarningTitle);
            return;
        }

        // The grid divides by N, so the last point stops one step short of high.
        const int n = NumPoints;
        std::vector<double> x(n + 1, 0.0);
        // The calculator samples on these very points.
        for (int i = 1; i <= n; ++i)
            x[i] = support::ck(m_Distributions::GridX(low, high, n, i));
        std::vector<double> y = m_Distributions::GetPDFData(name, low, high, n, Param1, Param2,
                                                            Param3, ValOf(tb_Param4));
        y.resize(n + 1, 0.0);

        WriteRangeBack(low, high);
        DrawPDF(true, DisplayOptions::AppXTicks, DisplayOptions::AppYTicks, 5, 5, *pb_PDF, x, y);
        PlotX = std::move(x);
        PlotY = std::move(y);
        RangeLow = low;
        RangeHigh = high;

        ShowResults();
        SetStatus("");
        but_Plot->setEnabled(false);
    });
}

std::array<frm_Pondera::LimitField, 3> frm_Pondera::LimitFields() const {
    return {{{cb_LSL, tb_LSL, "LSL must be a number."},
             {cb_Target, tb_Target, "Target must be a number."},
             {cb_USL, tb_USL, "USL must be a number."}}};
}

bool frm_Pondera::LimitFieldsAreNumbers() {
    for (const auto& f : LimitFields()) {
        if (f.Check->isChecked() && !Numeric(f.Box)) {
            support::MsgBox(f.Message, kWarningTitle);
            FocusAndSelect(f.Box);
            return false;
        }
    }
    return true;
}

std::pair<double, double> frm_Pondera::DisplayRange(double mean, double stDev) const {
    double low = 0, high = 0;
    if (DisplayOptions::AppXRange == 0) {
        low = support::ck(mean - DisplayOptions::AppNumStDev * stDev);
        high = support::ck(mean + DisplayOptions::AppNumStDev * stDev);
    } else {
        low = DisplayOptions::AppXMin;
        high = DisplayOptions::AppXMax;
    }
    for (const auto& f : LimitFields()) {
        const bool ticked = f.Check->isChecked();
        low = m_Interface::Min(low, ticked ? ValOf(f.Box) : kUnticked);
        high = m_Interface::Max(high, ticked ? ValOf(f.Box) : -kUnticked);
    }
    return {low, high};
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

// PNC boxes: empty when LSL is not below USL, from CalcPercent when a limit is
// ticked, zeros otherwise.
void frm_Pondera::ShowResults() {
    const bool lsl = cb_LSL->isChecked();
    const bool usl = cb_USL->isChecked();
    if (lsl && usl && !(ValOf(tb_LSL) < ValOf(tb_USL))) {
        ShowPNC({}, {}, {});
    } else if (lsl || usl) {
        CalcPercent();
    } else {
        const QString zero = Q(support::Format(0.0, DisplayOptions::Pattern()));
        ShowPNC(zero, zero, zero);
    }
}

void frm_Pondera::ShowPNC(const QString& lower, const QString& upper, const QString& total) {
    tb_LowerPNC->setText(lower);
    tb_UpperPNC->setText(upper);
    tb_PNC->setText(total);
}

void frm_Pondera::CalcMomentsforDistribution() {
    support::Trap(kCalcMomentsforDistribution, [&] {
        const double p1 = ValOf(tb_Param1), p2 = ValOf(tb_Param2), p3 = ValOf(tb_Param3);
        // The Johnson kinds have no closed-form moments: their codes give 0.
        const m_Distributions::CatalogueEntry* entry =
            m_Distributions::FindDistribution(S(dd_Distribution->Text()));
        const int code = entry ? entry->Code : 0;

        // Each family gets the parameters it uses; the others go in as 0.
        double mArgs[3] = {0, 0, 0}; // for the mean
        double oArgs[3] = {0, 0, 0}; // for the other three moments
        switch (code) {
        case m_Distributions::kNormal:
        case m_Distributions::kUniform:
            mArgs[0] = oArgs[0] = p1;
            mArgs[1] = oArgs[1] = p2;
            break;
        case m_Distributions::kExponential:
            mArgs[0] = p1;
            mArgs[1] = p2;
            oArgs[0] = p1;
            break;
        case m_Distributions::kWeibull:
        case m_Distributions::kTriangular:
            mArgs[0] = oArgs[0] = p1;
            mArgs[1] = oArgs[1] = p2;
            mArgs[2] = oArgs[2] = p3;
            break;
        case m_Distributions::kLogNormal:
            mArgs[0] = oArgs[0] = p1;
            mArgs[1] = oArgs[1] = p2;
            mArgs[2] = p3;
            break;
        default:
            break;
        }
        CurMean = m_Distributions::mean(code, mArgs[0], mArgs[1], mArgs[2]);
        CurStDev = m_Distributions::StDev(code, oArgs[0], oArgs[1], oArgs[2]);
        CurSkewness = m_Distributions::Skewness(code, oArgs[0], oArgs[1], oArgs[2]);
        CurKurtosis = m_Distributions::Kurtosis(code, oArgs[0], oArgs[1], oArgs[2]);

        const std::string pattern = DisplayOptions::Pattern();
        tb_Mean->setText(Q(support::Format(CurMean, pattern)));
        tb_StDev->setText(Q(support::Format(CurStDev, pattern)));
        tb_Skewness->setText(Q(support::Format(CurSkewness, pattern)));
        tb_Kurtosis->setText(Q(support::Format(CurKurtosis, pattern)));
    });
}

void frm_Pondera::CalcPercent() {
    support::Trap(kCalcPercent, [&] {
        namespace pc = m_PercentCertainty;
        const std::string name = S(dd_Distribution->Text());
        if (cb_DrawbyMoments->isChecked()) {
            // The fitted curve's exact parameters, not their rounded display.
            // A normal fit goes to the calculator's Johnson normal form
            // z = gamma + delta x (any code but 7, 8, 9), which is what its
            // delta and gamma describe; a fit without a curve has no figures.
            if (!fit_.Valid) {
                ShowPNC({}, {}, {});
                return;
            }
            if (fit_.Type == "SB")
                pc::CurrentDistribution = m_Distributions::kJohnsonSB;
            else if (fit_.Type == "SU")
                pc::CurrentDistribution = m_Distributions::kJohnsonSU;
            else if (fit_.Type == "SL")
                pc::CurrentDistribution = m_Distributions::kJohnsonSL;
            else
                pc::CurrentDistribution = 0;
            pc::Param1 = fit_.Delta;
            pc::Param2 = fit_.Gamma;
            pc::Param3 = fit_.Lamda;
            pc::Param4 = fit_.Xi;
        } else {
            const m_Distributions::CatalogueEntry* entry = m_Distributions::FindDistribution(name);
            pc::CurrentDistribution = entry ? entry->Code : 0;
            QLineEdit* boxes[] = {tb_Param1, tb_Param2, tb_Param3, tb_Param4};
            double* dest[] = {&pc::Param1, &pc::Param2, &pc::Param3, &pc::Param4};
            for (int i = 0; i < 4; ++i)
                if (entry && entry->Slots[i].Label) *dest[i] = ValOf(boxes[i]);
        }
        pc::DecPlaces = DisplayOptions::AppDecPlaces;

        double lower = 0, upper = 0;
        if (cb_LSL->isChecked()) {
            pc::LSL = ValOf(tb_LSL);
            lower = pc::CalcLSLPNC();
        }
        if (cb_USL->isChecked()) {
            pc::USL = ValOf(tb_USL);
            upper = pc::CalcUSLPNC();
        }
        if (cb_LSL->isChecked() && cb_USL->isChecked()) upper = pc::CapUpperPNC(lower, upper);
        const std::string pattern = DisplayOptions::Pattern();
        ShowPNC(Q(support::Format(lower, pattern)), Q(support::Format(upper, pattern)),
                Q(support::Format(support::ck(lower + upper), pattern)));
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
        MarkersFromDrawing(result);
    }
    surface.Refresh();
}

void frm_Pondera::MarkersFromDrawing(const DensityChart::Result& result) {
    sh_LSL->SetLeft(result.LSLMarker.Left);
    sh_LSL->SetVisible(result.LSLMarker.Visible);
    sh_USL->SetLeft(result.USLMarker.Left);
    sh_USL->SetVisible(result.USLMarker.Visible);
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
        QLineEdit* moments[] = {tb_Mean, tb_StDev, tb_Skewness, tb_Kurtosis};
        QLineEdit* params[] = {tb_Param1, tb_Param2, tb_Param3, tb_Param4};
        QLabel* labels[] = {lb_Param1, lb_Param2, lb_Param3, lb_Param4};
        if (cb_DrawbyMoments->isChecked()) {
            QStringList names;
            for (const auto& n : m_Distributions::MomentsListOrder())
                names << Q(n);
            dd_Distribution->SetLocked(true);
            dd_Distribution->SetDistributions(names);
            dd_Distribution->setCurrentIndex(0);
            for (QLineEdit* box : moments)
                SetBoxLocked(box, false);
            const char* captions[] = {"Delta:", "Gamma:", "Lamda:", "Xi:"};
            for (int i = 0; i < 4; ++i) {
                labels[i]->setText(captions[i]);
                labels[i]->setVisible(true);
                params[i]->setVisible(true);
                SetBoxLocked(params[i], true);
            }
            fit_ = Fit{};
            SetCheckValue(cb_LockKurtosis, false, [&] { cb_LockKurtosis_Click(); });
            SetCheckValue(cb_LockSkewness, false, [&] { cb_LockSkewness_Click(); });
            cb_LockKurtosis->setEnabled(true);
            cb_LockSkewness->setEnabled(true);
            tb_Ymax->setEnabled(true);
        } else {
            QStringList names;
            for (const auto& n : m_Distributions::ClassicalListOrder())
                names << Q(n);
            dd_Distribution->SetLocked(false);
            dd_Distribution->SetDistributions(names);
            tb_Param2->setText("1");
            dd_Distribution->setCurrentIndex(0);
            // Selecting the item is a change of distribution: labels and defaults follow.
            dd_Distribution_Change();
            for (QLineEdit* box : moments)
                SetBoxLocked(box, true);
            for (QLineEdit* box : params)
                SetBoxLocked(box, false);
            SetStatus("");
            SetCheckValue(cb_LockKurtosis, true, [&] { cb_LockKurtosis_Click(); });
            SetCheckValue(cb_LockSkewness, true, [&] { cb_LockSkewness_Click(); });
            cb_LockKurtosis->setEnabled(false);
            cb_LockSkewness->setEnabled(false);
            tb_Ymax->setEnabled(false);
        }
        Plot();
    });
}

bool frm_Pondera::PlotbyMoments() {
    bool drawn = false;
    support::Trap(kPlotbyMoments, [&] {
        // Only numericness is tested here, the fit judges the rest.
        struct Check {
            QLineEdit* Box;
            const char* Message;
        };
        const Check moments[] = {
            {tb_Mean, "Mean must be a number."},
            {tb_StDev, "Std. Dev. must be a number."},
            {tb_Skewness, "Skewness must be a number."},
            {tb_Kurtosis, "Kurtosis must be a positive number greater than or equal to 1."}};
        for (const auto& c : moments) {
            if (!Numeric(c.Box)) {
                support::MsgBox(c.Message, kWarningTitle);
                FocusAndSelect(c.Box);
                return;
            }
        }
        if (!LimitFieldsAreNumbers()) return;

        const double mean = ValOf(tb_Mean), stDev = ValOf(tb_StDev);
        const double skewness = ValOf(tb_Skewness), kurtosis = ValOf(tb_Kurtosis);
        const int n = NumPoints;
        std::vector<double> x(n + 1, 0.0), y(n + 1, 0.0);

        // One fit object per run, released when the run ends on any path.
        JohnsonDist fit;
        fit.Calculate(mean, stDev, skewness, kurtosis);
        SetStatus(fit.CalcError);
        if (fit.JDistribution == "Error") return;

        SetStatus(kCalculating);
        WaitCursor hourglass;
        const std::string pattern = DisplayOptions::Pattern();
        tb_Param1->setText(Q(support::Format(fit.Delta, pattern)));
        tb_Param2->setText(Q(support::Format(fit.Gamma, pattern)));
        tb_Param3->setText(Q(support::Format(fit.Lamda, pattern)));
        tb_Param4->setText(Q(support::Format(fit.Xi, pattern)));

        const auto [xMin, xMax] = DisplayRange(mean, stDev);
        if (!Drawable(xMin, xMax)) {
            SetStatus(fit.CalcError);
            support::MsgBox(kNoWidth, kWarningTitle);
            return;
        }
        WriteRangeBack(xMin, xMax);

        // The divisor is N and the last point is pinned to XMax: the last gap
        // is twice the step, as the chart and the PNC figures have always had it.
        const double step = support::ck((xMax - xMin) / n);
        for (int i = 1; i <= n; ++i)
            x[i] = support::ck(xMin + (i - 1) * step);
        x[n] = xMax;

        const std::string& type = fit.JDistribution;
        const char* item = type == "SB"       ? "Johnson SB"
                           : type == "SL"     ? "Johnson SL"
                           : type == "SU"     ? "Johnson SU"
                           : type == "Normal" ? "Normal"
                                              : nullptr;
        if (item) {
            dd_Distribution->SelectText(item);
            for (int i = 1; i <= n; ++i) {
                if (type == "SB")
                    y[i] = m_Distributions::JohnsonSB_PDF(x[i], fit.Delta, fit.Gamma, fit.Lamda,
                                                          fit.Xi);
                else if (type == "SL")
                    y[i] = m_Distributions::JohnsonSL_PDF(x[i], fit.Delta, fit.Gamma, fit.Lamda,
                                                          fit.Xi);
                else if (type == "SU")
                    y[i] = m_Distributions::JohnsonSU_PDF(x[i], fit.Delta, fit.Gamma, fit.Lamda,
                                                          fit.Xi);
                else
                    y[i] = m_Distributions::Normal_PDF(x[i], mean, stDev);
            }
        }

        CurMean = ValOf(tb_Mean);
        CurStDev = ValOf(tb_StDev);
        CurSkewness = ValOf(tb_Skewness);
        CurKurtosis = ValOf(tb_Kurtosis);

        DrawPDF(true, DisplayOptions::AppXTicks, DisplayOptions::AppYTicks, 5, 5, *pb_PDF, x, y);
        PlotX = std::move(x);
        PlotY = std::move(y);
        RangeLow = xMin;
        RangeHigh = xMax;

        fit_.Valid = item != nullptr;
        fit_.Type = type;
        fit_.Delta = fit.Delta;
        fit_.Gamma = fit.Gamma;
        fit_.Lamda = fit.Lamda;
        fit_.Xi = fit.Xi;

        but_Plot->setEnabled(false);
        SetStatus(fit.CalcError);
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
        // Half a marker lower than centred, until the next lock click or drag.
        const SkewKurtChart::MarkerPos pos =
            SkewKurtChart::MarkerAfterDraw(ReadPickScale(), ValOf(tb_Skewness), ValOf(tb_Kurtosis),
                                           sh_SkewKurt->Width(), sh_SkewKurt->Height());
        sh_SkewKurt->Move(pos.Left, pos.Top);
        surface.Refresh();
    });
}

SkewKurtChart::PickScale frm_Pondera::ReadPickScale() const {
    SkewKurtChart::PickScale s;
    s.L = 0;
    s.T = 0;
    s.W = pb_SkewKurt->ScaleWidth();
    s.H = pb_SkewKurt->ScaleHeight();
    s.SkewMin = ValOf(lb_XMin);
    s.SkewMax = ValOf(lb_XMax);
    s.KurtMin = ValOf(lb_YMin);
    s.KurtMax = ValOf(tb_Ymax);
    return s;
}

// The body both lock clicks share.
void frm_Pondera::SkewKurtLockClick() {
    PlotSkewKurt(-4, 4);
    SkewKurtChart::PickScale scale = ReadPickScale();
    const double bottom = scale.T + scale.H - 1;
    const double right = scale.L + scale.W - 1;
    if (cb_LockSkewness->isChecked()) {
        SetBoxLocked(tb_Skewness, true);
        const double px = scale.SkewToX(ValOf(tb_Skewness));
        pb_SkewKurt->Line(px, scale.T, px, bottom, look::kBlack);
    } else {
        SetBoxLocked(tb_Skewness, false);
    }
    if (cb_LockKurtosis->isChecked()) {
        SetBoxLocked(tb_Kurtosis, true);
        const double kurtosis = ValOf(tb_Kurtosis);
        if (!cb_DrawbyMoments->isChecked()) {
            // Outside moments mode the axis follows the distribution shown;
            // the nearest whole number, halves to even.
            const double top = std::nearbyint(support::ck(std::fabs(kurtosis) * 1.5));
            tb_Ymax->setText(Q(support::Format(top, "0")));
            scale.KurtMax = top;
        }
        const double py = scale.KurtToY(kurtosis);
        pb_SkewKurt->Line(scale.L, py, right, py, look::kBlack);
    } else {
        SetBoxLocked(tb_Kurtosis, false);
    }
    const SkewKurtChart::MarkerPos pos = SkewKurtChart::MarkerCentred(
        scale, ValOf(tb_Skewness), ValOf(tb_Kurtosis), sh_SkewKurt->Width(), sh_SkewKurt->Height());
    sh_SkewKurt->Move(pos.Left, pos.Top);
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
        if (!Numeric(tb_Ymax)) {
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

        const std::string pattern = DisplayOptions::Pattern();
        if (!cb_LockSkewness->isChecked()) {
            tb_Skewness->setText(Q(support::Format(scale.XToSkew(x), pattern)));
            sh_SkewKurt->SetLeft(x - sh_SkewKurt->Width() / 2.0);
        } else {
            sh_SkewKurt->SetLeft(scale.SkewToX(ValOf(tb_Skewness)) - sh_SkewKurt->Width() / 2.0);
        }
        if (!cb_LockKurtosis->isChecked()) {
            tb_Kurtosis->setText(Q(support::Format(scale.YToKurt(y), pattern)));
            sh_SkewKurt->SetTop(y - sh_SkewKurt->Height() / 2.0);
        } else {
            sh_SkewKurt->SetTop(scale.KurtToY(ValOf(tb_Kurtosis)) - sh_SkewKurt->Height() / 2.0);
        }
        NumPoints = 50;
        PlotbyMoments();
    });
}

void frm_Pondera::pb_SkewKurt_MouseUp(int, int, double, double) {
    support::Trap(kpb_SkewKurt_MouseUp, [&] {
        if (!cb_DrawbyMoments->isChecked()) return;
        sh_SkewKurt->SetFillColor(look::kBlack);
        NumPoints = 300;
        Plot();
    });
}

// ---------------------------------------------------------------------------
// Spec-limit markers

std::array<frm_Pondera::DragMarker, 2> frm_Pondera::DragMarkers() {
    return {{{cb_LSL, tb_LSL, sh_LSL, DragLSL}, {cb_USL, tb_USL, sh_USL, DragUSL}}};
}

// A press on a ticked limit's marker arms it, a second press releases it;
// LSL first, then USL, each redrawing before the next is tested.
void frm_Pondera::DragMouseDown(int button, double x) {
    if (button != 1) return;
    for (const DragMarker& m : DragMarkers()) {
        if (!m.Check->isChecked() || !DensityChart::MarkerHit(x, m.Shape->Left(), m.Shape->Width()))
            continue;
        m.Armed = !m.Armed;
        m.Shape->SetFillColor(m.Armed ? look::kRed : look::kBlack);
        NumPoints = m.Armed ? 75 : 500;
        Plot();
    }
}

void frm_Pondera::DragMouseMove(double x) {
    const std::string pattern = m_Interface::FormatDec(DisplayOptions::AppDecPlaces);
    for (const DragMarker& m : DragMarkers()) {
        if (!m.Armed || !m.Check->isChecked()) continue;
        m.Shape->SetLeft(x - m.Shape->Width() / 2.0);
        m.Box->setText(Q(support::Format(ChartGeometry.ValueAtPixel(x), pattern)));
        Plot();
    }
}

void frm_Pondera::DragMouseUp() {
    sh_LSL->SetFillColor(look::kBlack);
    sh_USL->SetFillColor(look::kBlack);
    DragLSL = false;
    DragUSL = false;
    NumPoints = 500;
    Plot();
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
        if (!Numeric(tb_Param1))
            support::MsgBox(S(lb_Param1->text()) + " must be a number.", kWarningTitle);
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
