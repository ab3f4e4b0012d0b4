#include "ui/main/WindowLayout.h"

#include "engine/Families.h"
#include "engine/m_Distributions.h"
#include "ui/draw/DistributionCombo.h"
#include "ui/draw/Look.h"
#include "ui/draw/MarkerShape.h"
#include "ui/draw/PictureBox.h"
#include "ui/draw/TitledFrame.h"
#include "ui/draw/m_TextRotate.h"
#include "ui/main/Mnemonics.h"
#include "ui/main/QtFace.h"
#include "ui/main/frm_Pondera.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QFocusEvent>
#include <QFontMetrics>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeySequence>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QStatusBar>
#include <QTimer>
#include <QVBoxLayout>

#include <cctype>
#include <tuple>
#include <vector>

namespace WindowLayout {

namespace {

constexpr int kLeftColumnWidth = 340;
constexpr int kSkewKurtWidth = 172;
constexpr int kSkewKurtHeight = 136;
constexpr int kSliderHeight = 16;
// The titled frame's panel colour, for the small surfaces that sit on it.
const QColor kFramePanel(0xFB, 0xFB, 0xFC);

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

// The overlay's light green (red 125, green 255, blue 125), blue-green-red.
constexpr uint32_t kOverlayGreen = 0x7DFF7D;

// Pp, Ppk and the total in ppm in a second column beside the three PNC boxes;
// the PNC boxes keep their width and the new column takes what is left.
void AddCapabilityBoxes(frm_Pondera& w, QGridLayout& grid) {
    w.tb_Pp = MakeBox("tb_Pp");
    w.tb_Ppk = MakeBox("tb_Ppk");
    w.tb_PPM = MakeBox("tb_PPM");
    w.tb_Pp->setToolTip("Pp = (USL - LSL) / (X99.865 - X0.135), from the curve's own percentiles");
    const char* captions[] = {"Pp:", "Ppk:", "ppm:"};
    QLineEdit* boxes[] = {w.tb_Pp, w.tb_Ppk, w.tb_PPM};
    for (int i = 0; i < 3; ++i) {
        SetBoxLocked(boxes[i], true);
        boxes[i]->setFocusPolicy(Qt::ClickFocus);
        boxes[i]->setMinimumWidth(86);
        grid.addWidget(MakeLabel(captions[i]), i, 2);
        grid.addWidget(boxes[i], i, 3);
    }
    grid.setHorizontalSpacing(4);
    grid.setColumnStretch(1, 0);
    grid.setColumnStretch(3, 1);
}

} // namespace

// Inputs are white; outputs and locked fields read-only in the button-face colour.
void SetBoxLocked(QLineEdit* box, bool locked) {
    box->setReadOnly(locked);
    QPalette pal = box->palette();
    pal.setColor(QPalette::Base, locked ? look::ToQColor(look::kButtonFace) : QColor(Qt::white));
    box->setPalette(pal);
}

void Build(frm_Pondera& w) {
    auto* central = new QWidget;
    central->setObjectName("central");
    w.setCentralWidget(central);
    auto* outer = new QHBoxLayout(central);
    outer->setContentsMargins(8, 8, 8, 4);
    outer->setSpacing(8);

    // ---- the left column of titled frames, scrollable on a small screen ----
    auto* column = new QWidget;
    column->setObjectName("leftColumn");
    auto* left = new QVBoxLayout(column);
    left->setContentsMargins(0, 0, 0, 0);
    left->setSpacing(5);

    w.qarvFrame_PDF = new TitledFrame("Distribution");
    w.qarvFrame_PDF->setObjectName("qarvFrame_PDF");
    {
        auto* grid = new QGridLayout(w.qarvFrame_PDF);
        grid->setVerticalSpacing(3);
        grid->setColumnStretch(1, 1);
        w.lb_Distribution = MakeLabel("Distribution:", "lb_Distribution");
        w.dd_Distribution = new DistributionCombo;
        w.dd_Distribution->setObjectName("dd_Distribution");
        grid->addWidget(w.lb_Distribution, 0, 0);
        grid->addWidget(w.dd_Distribution, 0, 1);
        QLabel** labels[] = {&w.lb_Param1, &w.lb_Param2, &w.lb_Param3, &w.lb_Param4};
        QLineEdit** boxes[] = {&w.tb_Param1, &w.tb_Param2, &w.tb_Param3, &w.tb_Param4};
        const char* labelNames[] = {"lb_Param1", "lb_Param2", "lb_Param3", "lb_Param4"};
        const char* boxNames[] = {"tb_Param1", "tb_Param2", "tb_Param3", "tb_Param4"};
        for (int i = 0; i < 4; ++i) {
            *labels[i] = MakeLabel(QString(), labelNames[i]);
            *boxes[i] = MakeBox(boxNames[i]);
            grid->addWidget(*labels[i], i + 1, 0);
            grid->addWidget(*boxes[i], i + 1, 1);
        }
    }
    left->addWidget(w.qarvFrame_PDF);

    w.qarvFrame_SpecLimits = new TitledFrame("Specification Limits");
    w.qarvFrame_SpecLimits->setObjectName("qarvFrame_SpecLimits");
    {
        auto* grid = new QGridLayout(w.qarvFrame_SpecLimits);
        grid->setVerticalSpacing(3);
        grid->setColumnStretch(1, 1);
        w.cb_LSL = new QCheckBox("Lower:");
        w.cb_LSL->setObjectName("cb_LSL");
        w.cb_Target = new QCheckBox("Target:");
        w.cb_Target->setObjectName("cb_Target");
        w.cb_USL = new QCheckBox("Upper:");
        w.cb_USL->setObjectName("cb_USL");
        w.tb_LSL = MakeBox("tb_LSL");
        w.tb_Target = MakeBox("tb_Target");
        w.tb_USL = MakeBox("tb_USL");
        w.tb_LSL->setText("-3");
        w.tb_Target->setText("0");
        w.tb_USL->setText("3");
        QCheckBox* checks[] = {w.cb_LSL, w.cb_Target, w.cb_USL};
        QLineEdit* boxes[] = {w.tb_LSL, w.tb_Target, w.tb_USL};
        for (int i = 0; i < 3; ++i) {
            boxes[i]->setEnabled(false);
            grid->addWidget(checks[i], i, 0);
            grid->addWidget(boxes[i], i, 1);
        }
    }
    left->addWidget(w.qarvFrame_SpecLimits);

    w.qarvFrame_Results = new TitledFrame("Results");
    w.qarvFrame_Results->setObjectName("qarvFrame_Results");
    {
        auto* grid = new QGridLayout(w.qarvFrame_Results);
        grid->setVerticalSpacing(3);
        grid->setColumnStretch(1, 1);
        w.tb_LowerPNC = MakeBox("tb_LowerPNC");
        w.tb_UpperPNC = MakeBox("tb_UpperPNC");
        w.tb_PNC = MakeBox("tb_PNC");
        const char* captions[] = {"PNC below LSL:", "PNC above USL:", "Total PNC:"};
        QLineEdit* boxes[] = {w.tb_LowerPNC, w.tb_UpperPNC, w.tb_PNC};
        for (int i = 0; i < 3; ++i) {
            SetBoxLocked(boxes[i], true);
            boxes[i]->setFocusPolicy(Qt::ClickFocus);
            grid->addWidget(MakeLabel(captions[i]), i, 0);
            grid->addWidget(boxes[i], i, 1);
        }
        AddCapabilityBoxes(w, *grid);
    }
    left->addWidget(w.qarvFrame_Results);

    w.qarvFrame_Moments = new TitledFrame("Moments");
    w.qarvFrame_Moments->setObjectName("qarvFrame_Moments");
    {
        auto* box = new QVBoxLayout(w.qarvFrame_Moments);
        box->setSpacing(3);
        auto* grid = new QGridLayout;
        grid->setVerticalSpacing(3);
        grid->setColumnStretch(1, 1);
        w.tb_Mean = MakeBox("tb_Mean");
        w.tb_StDev = MakeBox("tb_StDev");
        w.tb_Skewness = MakeBox("tb_Skewness");
        w.tb_Kurtosis = MakeBox("tb_Kurtosis");
        const char* captions[] = {"Mean:", "Std. Deviation:", "Skewness:", "Kurtosis:"};
        const char* labelNames[] = {"lb_Mean", "lb_StDev", "lb_Skewness", "lb_Kurtosis"};
        QLineEdit* boxes[] = {w.tb_Mean, w.tb_StDev, w.tb_Skewness, w.tb_Kurtosis};
        for (int i = 0; i < 4; ++i) {
            SetBoxLocked(boxes[i], true);
            grid->addWidget(MakeLabel(captions[i], labelNames[i]), i, 0);
            grid->addWidget(boxes[i], i, 1);
        }
        box->addLayout(grid);

        w.cb_DrawbyMoments = new QCheckBox("Draw using Johnson Distributions");
        w.cb_DrawbyMoments->setObjectName("cb_DrawbyMoments");
        box->addWidget(w.cb_DrawbyMoments);

        // The skewness-kurtosis chart: kurtosis axis ends and title on the
        // left, skewness ends below, the locks with their "Fix" caption right.
        auto* chart = new QGridLayout;
        chart->setHorizontalSpacing(3);
        chart->setVerticalSpacing(1);
        w.tb_Ymax = MakeBox("tb_Ymax");
        w.tb_Ymax->setMinimumWidth(0);
        w.tb_Ymax->setFixedWidth(40);
        w.tb_Ymax->setAlignment(Qt::AlignRight);
        w.pb_YTitle = new PictureBox;
        w.pb_YTitle->setObjectName("pb_YTitle");
        w.pb_YTitle->setFocusPolicy(Qt::NoFocus);
        w.pb_YTitle->setFixedSize(40, kSkewKurtHeight - 50);
        w.pb_YTitle->SetPictureSize(40, kSkewKurtHeight - 50);
        w.lb_YMin = MakeLabel(QString(), "lb_YMin");
        w.lb_YMin->setAlignment(Qt::AlignRight | Qt::AlignBottom);
        w.pb_SkewKurt = new PictureBox;
        w.pb_SkewKurt->setObjectName("pb_SkewKurt");
        w.pb_SkewKurt->setFixedSize(kSkewKurtWidth, kSkewKurtHeight);
        w.pb_SkewKurt->SetPictureSize(kSkewKurtWidth, kSkewKurtHeight);
        // Moves count only while a button is held: the drag, not the hover.
        w.pb_SkewKurt->setMouseTracking(false);
        w.sh_DataPoint = new MarkerShape(w.pb_SkewKurt, MarkerShape::Kind::TriangleUp, 9, 9);
        w.sh_DataPoint->setObjectName("sh_DataPoint");
        w.sh_DataPoint->SetFillColor(kOverlayGreen);
        w.sh_DataPoint->SetVisible(false);
        w.sh_SkewKurt = new MarkerShape(w.pb_SkewKurt, MarkerShape::Kind::Circle, 9, 9);
        w.sh_SkewKurt->setObjectName("sh_SkewKurt");
        w.pb_Lock = new PictureBox;
        w.pb_Lock->setObjectName("pb_Lock");
        w.pb_Lock->setFocusPolicy(Qt::NoFocus);
        w.pb_Lock->setFixedSize(18, 60);
        w.pb_Lock->SetPictureSize(18, 60);
        w.cb_LockSkewness = new QCheckBox("Skew.");
        w.cb_LockSkewness->setObjectName("cb_LockSkewness");
        w.cb_LockKurtosis = new QCheckBox("Kurt.");
        w.cb_LockKurtosis->setObjectName("cb_LockKurtosis");
        w.lb_XMin = MakeLabel(QString(), "lb_XMin");
        w.lb_XMax = MakeLabel(QString(), "lb_XMax");
        w.lb_XMax->setAlignment(Qt::AlignRight);
        auto* skewTitle = MakeLabel("Skewness");
        skewTitle->setAlignment(Qt::AlignHCenter);

        chart->addWidget(w.tb_Ymax, 0, 0, Qt::AlignTop);
        chart->addWidget(w.pb_YTitle, 1, 0, Qt::AlignCenter);
        chart->addWidget(w.lb_YMin, 2, 0, Qt::AlignRight | Qt::AlignBottom);
        chart->addWidget(w.pb_SkewKurt, 0, 1, 3, 1);
        auto* xAxis = new QHBoxLayout;
        xAxis->setContentsMargins(0, 0, 0, 0);
        xAxis->addWidget(w.lb_XMin);
        xAxis->addWidget(skewTitle, 1);
        xAxis->addWidget(w.lb_XMax);
        chart->addLayout(xAxis, 3, 1);
        auto* locks = new QGridLayout;
        locks->setContentsMargins(0, 0, 0, 0);
        locks->setHorizontalSpacing(2);
        locks->setVerticalSpacing(2);
        locks->addWidget(w.pb_Lock, 0, 0, 2, 1);
        locks->addWidget(w.cb_LockSkewness, 0, 1);
        locks->addWidget(w.cb_LockKurtosis, 1, 1);
        chart->addLayout(locks, 0, 2, 3, 1, Qt::AlignVCenter);
        chart->setColumnStretch(3, 1);
        box->addLayout(chart);
    }
    left->addWidget(w.qarvFrame_Moments);

    w.but_Plot = new QPushButton("Plot");
    w.but_Plot->setObjectName("but_Plot");
    w.but_Plot->setMinimumHeight(30);
    w.but_Plot->setDefault(true);
    left->addWidget(w.but_Plot);
    left->addStretch(1);

    auto* scroll = new QScrollArea;
    scroll->setObjectName("leftScroll");
    scroll->setWidget(column);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    // Only a container: no Tab stop of its own (its fields still scroll into view).
    scroll->setFocusPolicy(Qt::NoFocus);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    column->setFixedWidth(kLeftColumnWidth);
    scroll->setFixedWidth(kLeftColumnWidth + scroll->verticalScrollBar()->sizeHint().width() + 2);
    outer->addWidget(scroll);

    // ---- the density chart and the strip with the spec-limit markers ----
    // Both share their left edge and width, so a pointer x means the same on each.
    auto* chartColumn = new QVBoxLayout;
    chartColumn->setContentsMargins(0, 0, 0, 0);
    chartColumn->setSpacing(0);
    w.pb_PDF = new PictureBox;
    w.pb_PDF->setObjectName("pb_PDF");
    w.pb_PDF->setMinimumSize(320, 220);
    w.pb_PDF->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    w.pb_PDF->SetPictureSize(820, 640);
    w.pb_Slider = new PictureBox;
    w.pb_Slider->setObjectName("pb_Slider");
    w.pb_Slider->setFixedHeight(kSliderHeight);
    w.pb_Slider->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    w.pb_Slider->SetPictureSize(820, kSliderHeight);
    w.sh_LSL = new MarkerShape(w.pb_Slider, MarkerShape::Kind::TriangleUp, 13, 11);
    w.sh_LSL->setObjectName("sh_LSL");
    w.sh_USL = new MarkerShape(w.pb_Slider, MarkerShape::Kind::TriangleUp, 13, 11);
    w.sh_USL->setObjectName("sh_USL");
    for (MarkerShape* marker : {w.sh_LSL, w.sh_USL}) {
        marker->SetTop(2);
        marker->SetVisible(false);
        marker->setCursor(Qt::SizeHorCursor);
    }
    chartColumn->addWidget(w.pb_PDF, 1);
    chartColumn->addWidget(w.pb_Slider);
    outer->addLayout(chartColumn, 1);

    // ---- status bar ----
    w.StatusBar1 = new QStatusBar;
    w.StatusBar1->setObjectName("StatusBar1");
    w.StatusPanel1 = new QLabel;
    w.StatusPanel1->setObjectName("StatusPanel1");
    w.StatusBar1->addWidget(w.StatusPanel1, 1);
    w.StatusPanel2 = new QLabel;
    w.StatusPanel2->setObjectName("StatusPanel2");
    w.StatusPanel2->setMinimumWidth(1); // a long readout is cut, never widens the window
    w.StatusBar1->addPermanentWidget(w.StatusPanel2);
    w.setStatusBar(w.StatusBar1);

    // The small surfaces on the moments frame take the frame's colour.
    for (PictureBox* pb : {w.pb_YTitle, w.pb_Lock, w.pb_Slider}) {
        pb->SetBackColor(look::FromQColor(kFramePanel));
        pb->Cls();
    }
    w.pb_Slider->SetBackColor(look::FromQColor(w.palette().color(QPalette::Window)));
    w.pb_Slider->Cls();
}

void BuildMenus(frm_Pondera& w) {
    QMenu* file = w.menuBar()->addMenu("&File");
    w.mnuSaveChart = file->addAction("&Save Chart As...");
    w.mnuSaveChart->setObjectName("mnuSaveChart");
    w.mnuSaveReport = file->addAction("Save &Report...");
    w.mnuSaveReport->setObjectName("mnuSaveReport");
    w.mnuPrint = file->addAction("&Print...");
    w.mnuPrint->setObjectName("mnuPrint");
    file->addSeparator();
    w.mnuQuit = file->addAction("E&xit");
    w.mnuQuit->setObjectName("mnuQuit");

    QMenu* edit = w.menuBar()->addMenu("&Edit");
    w.mnuCopytoClipboard = edit->addAction("&Copy Image to Clipboard");
    w.mnuCopytoClipboard->setObjectName("mnuCopytoClipboard");
    w.mnuCopyResults = edit->addAction("Copy &Results");
    w.mnuCopyResults->setObjectName("mnuCopyResults");
    edit->addSeparator();
    w.mnuLimitsFromProbability = edit->addAction("&Limits from Probability...");
    w.mnuLimitsFromProbability->setObjectName("mnuLimitsFromProbability");
    w.mnuLimitsFromProbability->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_L));

    QMenu* view = w.menuBar()->addMenu("&View");
    w.mnuXAxis = view->addAction("&X-Axis");
    w.mnuXAxis->setObjectName("mnuXAxis");
    w.mnuYAxis = view->addAction("&Y-Axis");
    w.mnuYAxis->setObjectName("mnuYAxis");
    w.mnuLabels = view->addAction("&Labels");
    w.mnuLabels->setObjectName("mnuLabels");
    for (QAction* a : {w.mnuXAxis, w.mnuYAxis, w.mnuLabels}) {
        a->setCheckable(true);
        a->setChecked(true);
    }
    view->addSeparator();
    w.mnuPinCurve = view->addAction("&Pin Curve");
    w.mnuPinCurve->setObjectName("mnuPinCurve");
    w.mnuUnpin = view->addAction("&Unpin");
    w.mnuUnpin->setObjectName("mnuUnpin");
    w.mnuUnpin->setEnabled(false);
    view->addSeparator();
    w.mnuOptions = view->addAction("&Options...");
    w.mnuOptions->setObjectName("mnuOptions");
    w.mnuAbout = view->addAction("&About");
    w.mnuAbout->setObjectName("mnuAbout");

    QMenu* data = w.menuBar()->addMenu("&Data");
    data->setObjectName("mnuData");
    w.mnuFitToData = data->addAction("&Fit to Data...");
    w.mnuFitToData->setObjectName("mnuFitToData");
    w.mnuFitToData->setShortcut(QKeySequence("Ctrl+D"));
    w.mnuClearData = data->addAction("&Clear Data");
    w.mnuClearData->setObjectName("mnuClearData");
    w.mnuClearData->setEnabled(false);
}

// Every handler is connected here, each run as one user action.
void Connect(frm_Pondera& w) {
    frm_Pondera* self = &w;
    auto act = [self](auto member) {
        return [self, member] { RunAsAction([&] { (self->*member)(); }); };
    };
    auto mouse = [self](auto member) {
        return [self, member](int button, int shift, double x, double y) {
            RunAsAction([&] { (self->*member)(button, shift, x, y); });
        };
    };

    QObject::connect(w.but_Plot, &QPushButton::clicked, self, act(&frm_Pondera::but_Plot_Click));
    QObject::connect(w.dd_Distribution, &QComboBox::activated, self,
                     act(&frm_Pondera::dd_Distribution_Click));

    QObject::connect(w.tb_Param1, &QLineEdit::textChanged, self,
                     act(&frm_Pondera::tb_Param1_Change));
    QObject::connect(w.tb_Param2, &QLineEdit::textChanged, self,
                     act(&frm_Pondera::tb_Param2_Change));
    QObject::connect(w.tb_Param3, &QLineEdit::textChanged, self,
                     act(&frm_Pondera::tb_Param3_Change));
    QObject::connect(w.tb_Param4, &QLineEdit::textChanged, self,
                     act(&frm_Pondera::tb_Param4_Change));
    QObject::connect(w.tb_LSL, &QLineEdit::textChanged, self, act(&frm_Pondera::tb_LSL_Change));
    QObject::connect(w.tb_Target, &QLineEdit::textChanged, self,
                     act(&frm_Pondera::tb_Target_Change));
    QObject::connect(w.tb_USL, &QLineEdit::textChanged, self, act(&frm_Pondera::tb_USL_Change));
    QObject::connect(w.tb_Mean, &QLineEdit::textChanged, self, act(&frm_Pondera::tb_Mean_Change));
    QObject::connect(w.tb_StDev, &QLineEdit::textChanged, self, act(&frm_Pondera::tb_StDev_Change));
    QObject::connect(w.tb_Skewness, &QLineEdit::textChanged, self,
                     act(&frm_Pondera::tb_Skewness_Change));
    QObject::connect(w.tb_Kurtosis, &QLineEdit::textChanged, self,
                     act(&frm_Pondera::tb_Kurtosis_Change));

    QObject::connect(w.cb_LSL, &QCheckBox::clicked, self, act(&frm_Pondera::cb_LSL_Click));
    QObject::connect(w.cb_Target, &QCheckBox::clicked, self, act(&frm_Pondera::cb_Target_Click));
    QObject::connect(w.cb_USL, &QCheckBox::clicked, self, act(&frm_Pondera::cb_USL_Click));
    QObject::connect(w.cb_DrawbyMoments, &QCheckBox::clicked, self,
                     act(&frm_Pondera::cb_DrawbyMoments_Click));
    QObject::connect(w.cb_LockSkewness, &QCheckBox::clicked, self,
                     act(&frm_Pondera::cb_LockSkewness_Click));
    QObject::connect(w.cb_LockKurtosis, &QCheckBox::clicked, self,
                     act(&frm_Pondera::cb_LockKurtosis_Click));

    QObject::connect(w.mnuXAxis, &QAction::triggered, self, act(&frm_Pondera::mnuXAxis_Click));
    QObject::connect(w.mnuYAxis, &QAction::triggered, self, act(&frm_Pondera::mnuYAxis_Click));
    QObject::connect(w.mnuLabels, &QAction::triggered, self, act(&frm_Pondera::mnuLabels_Click));
    QObject::connect(w.mnuPinCurve, &QAction::triggered, self,
                     act(&frm_Pondera::mnuPinCurve_Click));
    QObject::connect(w.mnuUnpin, &QAction::triggered, self, act(&frm_Pondera::mnuUnpin_Click));
    QObject::connect(w.mnuCopytoClipboard, &QAction::triggered, self,
                     act(&frm_Pondera::mnuCopytoClipboard_Click));
    QObject::connect(w.mnuOptions, &QAction::triggered, self, act(&frm_Pondera::mnuOptions_Click));
    QObject::connect(w.mnuAbout, &QAction::triggered, self, act(&frm_Pondera::mnuAbout_Click));
    QObject::connect(w.mnuQuit, &QAction::triggered, self, act(&frm_Pondera::mnuQuit_Click));
    QObject::connect(w.mnuFitToData, &QAction::triggered, self,
                     act(&frm_Pondera::mnuFitToData_Click));
    QObject::connect(w.mnuClearData, &QAction::triggered, self,
                     act(&frm_Pondera::mnuClearData_Click));
    QObject::connect(w.mnuSaveChart, &QAction::triggered, self,
                     act(&frm_Pondera::mnuSaveChart_Click));
    QObject::connect(w.mnuCopyResults, &QAction::triggered, self,
                     act(&frm_Pondera::mnuCopyResults_Click));
    QObject::connect(w.mnuSaveReport, &QAction::triggered, self,
                     act(&frm_Pondera::mnuSaveReport_Click));
    QObject::connect(w.mnuPrint, &QAction::triggered, self, act(&frm_Pondera::mnuPrint_Click));
    QObject::connect(w.mnuLimitsFromProbability, &QAction::triggered, self,
                     act(&frm_Pondera::mnuLimitsFromProbability_Click));
    // A focused spec-limit marker is dragged by the arrow keys.
    auto key = [self](auto member) {
        return
            [self, member](int k, int shift) { RunAsAction([&] { (self->*member)(k, shift); }); };
    };
    QObject::connect(w.sh_LSL, &MarkerShape::KeyDown, self, key(&frm_Pondera::sh_LSL_KeyDown));
    QObject::connect(w.sh_USL, &MarkerShape::KeyDown, self, key(&frm_Pondera::sh_USL_KeyDown));
    QObject::connect(w.sh_LSL, &MarkerShape::KeyUp, self, key(&frm_Pondera::sh_LSL_KeyUp));
    QObject::connect(w.sh_USL, &MarkerShape::KeyUp, self, key(&frm_Pondera::sh_USL_KeyUp));
    QObject::connect(w.sh_LSL, &MarkerShape::LostFocus, self, act(&frm_Pondera::sh_LSL_LostFocus));
    QObject::connect(w.sh_USL, &MarkerShape::LostFocus, self, act(&frm_Pondera::sh_USL_LostFocus));

    QObject::connect(w.pb_PDF, &PictureBox::MouseDown, self, mouse(&frm_Pondera::pb_PDF_MouseDown));
    QObject::connect(w.pb_PDF, &PictureBox::MouseMove, self, mouse(&frm_Pondera::pb_PDF_MouseMove));
    QObject::connect(w.pb_PDF, &PictureBox::MouseUp, self, mouse(&frm_Pondera::pb_PDF_MouseUp));
    QObject::connect(w.pb_PDF, &PictureBox::MouseLeave, self, act(&frm_Pondera::pb_PDF_MouseLeave));
    QObject::connect(w.pb_Slider, &PictureBox::MouseDown, self,
                     mouse(&frm_Pondera::pb_Slider_MouseDown));
    QObject::connect(w.pb_Slider, &PictureBox::MouseMove, self,
                     mouse(&frm_Pondera::pb_Slider_MouseMove));
    QObject::connect(w.pb_Slider, &PictureBox::MouseUp, self,
                     mouse(&frm_Pondera::pb_Slider_MouseUp));
    QObject::connect(w.pb_SkewKurt, &PictureBox::MouseDown, self,
                     mouse(&frm_Pondera::pb_SkewKurt_MouseDown));
    QObject::connect(w.pb_SkewKurt, &PictureBox::MouseMove, self,
                     mouse(&frm_Pondera::pb_SkewKurt_MouseMove));
    QObject::connect(w.pb_SkewKurt, &PictureBox::MouseUp, self,
                     mouse(&frm_Pondera::pb_SkewKurt_MouseUp));
    QObject::connect(w.pb_PDF, &PictureBox::KeyDown, self,
                     [self](int, int) { RunAsAction([&] { self->pb_PDF_KeyDown(); }); });
    QObject::connect(w.pb_Slider, &PictureBox::GotFocus, self,
                     act(&frm_Pondera::pb_Slider_GotFocus));
    QObject::connect(w.pb_SkewKurt, &PictureBox::GotFocus, self,
                     act(&frm_Pondera::pb_SkewKurt_GotFocus));

    // A resize redraws the last good chart; the small surfaces keep their text.
    QObject::connect(w.pb_PDF, &PictureBox::Resized, self, act(&frm_Pondera::Form_Resize));
    // On a screen of another scale the moments chart and the titles are drawn anew.
    QObject::connect(w.pb_SkewKurt, &PictureBox::RatioChanged, self,
                     act(&frm_Pondera::cb_LockSkewness_Click));
    for (PictureBox* title : {w.pb_YTitle, w.pb_Lock})
        QObject::connect(title, &PictureBox::RatioChanged, self, act(&frm_Pondera::Form_Paint));

    // Enter in an input field presses Plot (which does nothing while it is disabled).
    for (QLineEdit* box :
         {w.tb_Param1, w.tb_Param2, w.tb_Param3, w.tb_Param4, w.tb_LSL, w.tb_Target, w.tb_USL,
          w.tb_Mean, w.tb_StDev, w.tb_Skewness, w.tb_Kurtosis})
        QObject::connect(box, &QLineEdit::returnPressed, w.but_Plot, &QPushButton::click);

    // Focus events have no signal: they come through the one event filter.
    for (QWidget* widget : std::initializer_list<QWidget*>{
             w.tb_Param1, w.tb_Param2, w.tb_Param3, w.tb_Param4, w.tb_LSL, w.tb_Target, w.tb_USL,
             w.cb_LSL, w.cb_Target, w.cb_USL, w.dd_Distribution, w.but_Plot, w.tb_Mean, w.tb_StDev,
             w.tb_Skewness, w.tb_Kurtosis, w.tb_Ymax, w.cb_DrawbyMoments})
        widget->installEventFilter(self);
}

FocusHandler FocusHandlerOf(const frm_Pondera& w, const QObject* watched) {
    const std::pair<const QObject*, FocusHandler> table[] = {
        {w.tb_Param1, &frm_Pondera::tb_Param1_GotFocus},
        {w.tb_Param2, &frm_Pondera::tb_Param2_GotFocus},
        {w.tb_Param3, &frm_Pondera::tb_Param3_GotFocus},
        {w.tb_Param4, &frm_Pondera::tb_Param4_GotFocus},
        {w.tb_LSL, &frm_Pondera::tb_LSL_GotFocus},
        {w.tb_Target, &frm_Pondera::tb_Target_GotFocus},
        {w.tb_USL, &frm_Pondera::tb_USL_GotFocus},
        {w.cb_LSL, &frm_Pondera::cb_LSL_GotFocus},
        {w.cb_Target, &frm_Pondera::cb_Target_GotFocus},
        {w.cb_USL, &frm_Pondera::cb_USL_GotFocus},
        {w.dd_Distribution, &frm_Pondera::dd_Distribution_GotFocus},
        {w.but_Plot, &frm_Pondera::but_Plot_GotFocus},
        {w.tb_Mean, &frm_Pondera::tb_Mean_GotFocus},
        {w.tb_StDev, &frm_Pondera::tb_StDev_GotFocus},
        {w.tb_Skewness, &frm_Pondera::tb_Skewness_GotFocus},
        {w.tb_Kurtosis, &frm_Pondera::tb_Kurtosis_GotFocus},
        {w.tb_Ymax, &frm_Pondera::tb_Ymax_GotFocus},
        {w.cb_DrawbyMoments, &frm_Pondera::cb_DrawbyMoments_GotFocus},
    };
    for (const auto& [object, handler] : table)
        if (object == watched) return handler;
    return nullptr;
}

void SetKeyboard(frm_Pondera& w) {
    w.mnuSaveChart->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_S));
    w.mnuPrint->setShortcut(QKeySequence::Print);
    w.mnuQuit->setShortcut(QKeySequence::Quit);
    w.mnuCopytoClipboard->setShortcut(QKeySequence::Copy);
    w.mnuCopyResults->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_C));
    w.mnuOptions->setShortcut(QKeySequence::Preferences);
    // Ctrl+Q also where the desktop names no quit key.
    if (w.mnuQuit->shortcut().isEmpty()) w.mnuQuit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));

    const std::pair<QLabel*, QWidget*> buddies[] = {
        {w.lb_Distribution, w.dd_Distribution},
        {w.lb_Param1, w.tb_Param1},
        {w.lb_Param2, w.tb_Param2},
        {w.lb_Param3, w.tb_Param3},
        {w.lb_Param4, w.tb_Param4},
        {w.findChild<QLabel*>("lb_Mean"), w.tb_Mean},
        {w.findChild<QLabel*>("lb_StDev"), w.tb_StDev},
        {w.findChild<QLabel*>("lb_Skewness"), w.tb_Skewness},
        {w.findChild<QLabel*>("lb_Kurtosis"), w.tb_Kurtosis}};
    for (const auto& [label, buddy] : buddies)
        label->setBuddy(buddy);

    // The surfaces a keyboard can do nothing with take the focus only from
    // the mouse (their GotFocus handlers still run); the markers take Tab.
    for (PictureBox* pb : {w.pb_PDF, w.pb_Slider, w.pb_SkewKurt})
        pb->setFocusPolicy(Qt::ClickFocus);
    for (MarkerShape* marker : {w.sh_LSL, w.sh_USL})
        marker->setFocusPolicy(Qt::StrongFocus);

    // Tab walks the frames top to bottom, each limit's box after its tick.
    QWidget* const order[] = {
        w.dd_Distribution,  w.tb_Param1, w.tb_Param2,       w.tb_Param3,       w.tb_Param4,
        w.cb_LSL,           w.tb_LSL,    w.cb_Target,       w.tb_Target,       w.cb_USL,
        w.tb_USL,           w.tb_Mean,   w.tb_StDev,        w.tb_Skewness,     w.tb_Kurtosis,
        w.cb_DrawbyMoments, w.tb_Ymax,   w.cb_LockSkewness, w.cb_LockKurtosis, w.but_Plot,
        w.sh_LSL,           w.sh_USL};
    for (std::size_t i = 1; i < std::size(order); ++i)
        QWidget::setTabOrder(order[i - 1], order[i]);

    const std::tuple<QWidget*, const char*, const char*> described[] = {
        {w.pb_PDF, "Density chart",
         "The probability density, the area inside the spec limits shaded in one colour and "
         "outside in another, with the limit lines"},
        {w.pb_Slider, "Spec-limit markers", "Drag a marker, or focus it and use the arrow keys"},
        {w.sh_LSL, "LSL marker",
         "Left and Right move the lower spec limit by one pixel of the chart, with Shift by ten"},
        {w.sh_USL, "USL marker",
         "Left and Right move the upper spec limit by one pixel of the chart, with Shift by ten"},
        {w.pb_SkewKurt, "Skewness-kurtosis chart",
         "Skewness across, kurtosis up; the grey region is impossible. In moments mode drag the "
         "point to choose the moments"},
        {w.sh_SkewKurt, "Skewness-kurtosis point", "The current skewness and kurtosis"},
        {w.pb_YTitle, "Kurtosis", "Title of the kurtosis axis"},
        {w.pb_Lock, "Fix", "Caption of the lock boxes"},
        {w.tb_LowerPNC, "PNC below LSL", "Fraction nonconforming below the lower spec limit"},
        {w.tb_UpperPNC, "PNC above USL", "Fraction nonconforming above the upper spec limit"},
        {w.tb_PNC, "Total PNC", "Fraction nonconforming in total"}};
    for (const auto& [widget, name, description] : described) {
        widget->setAccessibleName(name);
        widget->setAccessibleDescription(description);
    }
    MarkMnemonics(w);
}

bool LimitMnemonic(frm_Pondera& w, QObject* watched, const QEvent& event) {
    if (event.type() != QEvent::Shortcut) return false;
    const std::pair<QCheckBox*, QLineEdit*> limits[] = {
        {w.cb_LSL, w.tb_LSL}, {w.cb_Target, w.tb_Target}, {w.cb_USL, w.tb_USL}};
    for (const auto& [check, box] : limits) {
        if (watched != check) continue;
        check->click();
        // Unticked, the value cannot be typed: the focus stays on the tick.
        QWidget* next = check->isChecked() ? static_cast<QWidget*>(box) : check;
        next->setFocus(Qt::ShortcutFocusReason);
        if (next == box) box->selectAll();
        return true;
    }
    return false;
}

// Fresh letters for the captions, after the menu bar's.
void RouteFocus(frm_Pondera& w, QObject* watched, const QEvent& event, bool unloaded) {
    const bool in = event.type() == QEvent::FocusIn, out = event.type() == QEvent::FocusOut;
    if (!in && !out) return;
    const Qt::FocusReason reason = static_cast<const QFocusEvent&>(event).reason();
    // A window coming back to the front, or a message box taking it, moves no
    // focus between the fields.
    if (reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason) return;
    if (out && watched == w.tb_Param1 && !unloaded) {
        RunAsAction([&] { w.tb_Param1_LostFocus(); });
    } else if (const FocusHandler handler = in ? FocusHandlerOf(w, watched) : nullptr) {
        RunAsAction([&] { (w.*handler)(); });
        // A click would put the cursor back after the selection; select again after it.
        if (auto* box = qobject_cast<QLineEdit*>(watched);
            box && reason == Qt::MouseFocusReason && box->hasSelectedText())
            QTimer::singleShot(0, box, [box] { box->selectAll(); });
    }
}

void ShowParamRows(frm_Pondera& w, const std::array<PlotPipeline::ParamRow, 4>& rows) {
    QLabel* labels[] = {w.lb_Param1, w.lb_Param2, w.lb_Param3, w.lb_Param4};
    QLineEdit* boxes[] = {w.tb_Param1, w.tb_Param2, w.tb_Param3, w.tb_Param4};
    for (int i = 0; i < 4; ++i) {
        if (rows[i].Label) labels[i]->setText(rows[i].Label);
        labels[i]->setVisible(rows[i].Label != nullptr);
        boxes[i]->setVisible(rows[i].Label != nullptr);
        if (rows[i].DefaultText) boxes[i]->setText(rows[i].DefaultText);
    }
    MarkMnemonics(w);
}

void ShowMode(frm_Pondera& w, bool byMoments) {
    QStringList names;
    for (const auto& n :
         byMoments ? m_Distributions::MomentsListOrder() : m_Distributions::ClassicalListOrder())
        names << QString::fromStdString(n);
    // After the six, the Johnson forms a user types by their parameters.
    if (!byMoments)
        for (const Families::Family& f : Families::All())
            if (f.Name && f.As99Type) names << QString::fromLatin1(f.Name);
    w.dd_Distribution->SetLocked(byMoments);
    w.dd_Distribution->SetDistributions(names);
    w.dd_Distribution->setCurrentIndex(0);
    if (byMoments) {
        std::array<PlotPipeline::ParamRow, 4> rows;
        for (int i = 0; i < 4; ++i)
            rows[i].Label = MomentsStep::kParamCaptions[i];
        ShowParamRows(w, rows);
    }
    // Moments become inputs and parameters outputs, or back.
    for (QLineEdit* box : {w.tb_Mean, w.tb_StDev, w.tb_Skewness, w.tb_Kurtosis})
        SetBoxLocked(box, !byMoments);
    for (QLineEdit* box : {w.tb_Param1, w.tb_Param2, w.tb_Param3, w.tb_Param4})
        SetBoxLocked(box, byMoments);
    w.cb_LockKurtosis->setEnabled(byMoments);
    w.cb_LockSkewness->setEnabled(byMoments);
    w.tb_Ymax->setEnabled(byMoments);
}

void MarkMnemonics(frm_Pondera& w) {
    // Plot and the limits first, so that their letters never change; then the
    // captions top to bottom (hidden ones take none).
    std::vector<QWidget*> owners = {w.but_Plot,  w.cb_LSL,          w.cb_Target,
                                    w.cb_USL,    w.lb_Distribution, w.lb_Param1,
                                    w.lb_Param2, w.lb_Param3,       w.lb_Param4};
    for (const char* name : {"lb_Mean", "lb_StDev", "lb_Skewness", "lb_Kurtosis"})
        owners.push_back(w.findChild<QLabel*>(name));
    for (QWidget* owner : {w.cb_DrawbyMoments, w.cb_LockSkewness, w.cb_LockKurtosis})
        owners.push_back(owner);
    auto textOf = [](QWidget* owner) {
        if (auto* label = qobject_cast<QLabel*>(owner)) return label->text();
        return static_cast<QAbstractButton*>(owner)->text();
    };
    std::vector<std::string> captions;
    for (QWidget* owner : owners)
        captions.push_back(owner->isHidden() ? std::string() : textOf(owner).toStdString());

    // The menu bar keeps its letters (the marked one, else the first).
    std::string menuLetters;
    for (QAction* menu : w.menuBar()->actions()) {
        const QString text = menu->text();
        const qsizetype amp = text.indexOf('&');
        const QString letter = amp >= 0 ? text.mid(amp + 1, 1) : text.left(1);
        menuLetters += letter.toUpper().toStdString();
    }
    const std::vector<std::string> marked = Mnemonics::Mark(captions, menuLetters);
    for (std::size_t i = 0; i < owners.size(); ++i) {
        if (owners[i]->isHidden()) continue;
        const QString text = QString::fromStdString(marked[i]);
        if (auto* label = qobject_cast<QLabel*>(owners[i]))
            label->setText(text);
        else
            static_cast<QAbstractButton*>(owners[i])->setText(text);
    }
}

void PaintUpright(PictureBox& pb, const QString& text, int size) {
    pb.Cls();
    QFont font(look::AppFontFamily());
    font.setPixelSize(size);
    const double textWidth = QFontMetrics(font).horizontalAdvance(text);
    // Reading upward, centred on the surface.
    const double x = (pb.ScaleWidth() - size) / 2.0;
    const double y = (pb.ScaleHeight() + textWidth) / 2.0;
    m_TextRotate::PrintRotatedText(pb, text, x, y, 900, "Tahoma", size, false, false);
    pb.Refresh();
}

} // namespace WindowLayout
