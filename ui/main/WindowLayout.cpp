#include "ui/main/WindowLayout.h"

#include "engine/Families.h"
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

#include <tuple>
#include <type_traits>
#include <variant>
#include <vector>

namespace WindowLayout {

namespace {

constexpr int kLeftColumnWidth = 340;
constexpr int kSkewKurtWidth = 172;
constexpr int kSkewKurtHeight = 136;
constexpr int kSliderHeight = 16;
// The titled frame's panel colour, for the small surfaces that sit on it.
const QColor kFramePanel(0xFB, 0xFB, 0xFC);
// The overlay's light green (red 125, green 255, blue 125), blue-green-red.
constexpr uint32_t kOverlayGreen = 0x7DFF7D;

using Handler = void (frm_Pondera::*)();
template <class T> using Member = T* frm_Pondera::*;
// A field's control, named by the window member that holds it (and so of its kind).
using Control = std::variant<Member<QLineEdit>, Member<QCheckBox>, Member<DistributionCombo>,
                             Member<QPushButton>>;

// Where a field sits: in the grid of one of the titled frames of kFrames (in
// their order), or placed by hand.
enum class Place { Distribution, SpecLimits, Results, Moments, ByHand };
// The titled frames of the left column, top to bottom.
struct FrameSpec {
    Member<TitledFrame> frame;
    const char* name;
    const char* caption;
};
constexpr FrameSpec kFrames[] = {
    {&frm_Pondera::qarvFrame_PDF, "qarvFrame_PDF", "Distribution"},
    {&frm_Pondera::qarvFrame_SpecLimits, "qarvFrame_SpecLimits", "Specification Limits"},
    {&frm_Pondera::qarvFrame_Results, "qarvFrame_Results", "Results"},
    {&frm_Pondera::qarvFrame_Moments, "qarvFrame_Moments", "Moments"},
};

enum class Role {
    Input,       // typed or clicked; a Tab stop
    Output,      // read-only in the button-face colour; the mouse may focus it, Tab passes it
    Parameter,   // an input, but shows the fitted parameters in moments mode
    Moment,      // shows the moments, but is an input in moments mode
    MomentsOnly, // an input enabled only in moments mode
};

// One field of the window. Table order is the Tab order (outputs take no Tab);
// a caption label of a Tab stop is its buddy and carries its mnemonic, as do
// the captions of tick boxes and buttons.
struct Field {
    Place place;
    int row = 0, column = 1; // the control's cell in its frame; the label sits left of it
    Control control;
    const char* name;
    const char* text = nullptr;      // a box's starting text, a tick box's or button's caption
    const char* label = nullptr;     // the caption label's text ("" while the distribution sets it)
    const char* labelName = nullptr; // its object name (needed when it takes a mnemonic)
    Member<QLabel> labelMember = nullptr; // the window's member for it, if any
    Role role = Role::Input;
    Member<QCheckBox> tick = nullptr; // the tick box that enables the field (a spec limit)
    Handler onChange = nullptr;       // Change of a box; Click of a tick, list or button
    Handler onGotFocus = nullptr;     // through the window's one event filter
    bool keepsLetter = false;         // takes its mnemonic before captions that change
    const char* accessibleName = nullptr;
    const char* description = nullptr;
};

using W = frm_Pondera;
// Packed by hand: clang-format would give every designator a line of its own.
// clang-format off
constexpr Field kFields[] = {
    {.place = Place::Distribution, .control = &W::dd_Distribution, .name = "dd_Distribution",
     .label = "Distribution:", .labelName = "lb_Distribution", .labelMember = &W::lb_Distribution,
     .onChange = &W::dd_Distribution_Click, .onGotFocus = &W::dd_Distribution_GotFocus},
    {.place = Place::Distribution, .row = 1, .control = &W::tb_Param1, .name = "tb_Param1",
     .label = "", .labelName = "lb_Param1", .labelMember = &W::lb_Param1, .role = Role::Parameter,
     .onChange = &W::tb_Param1_Change, .onGotFocus = &W::tb_Param1_GotFocus},
    {.place = Place::Distribution, .row = 2, .control = &W::tb_Param2, .name = "tb_Param2",
     .label = "", .labelName = "lb_Param2", .labelMember = &W::lb_Param2, .role = Role::Parameter,
     .onChange = &W::tb_Param2_Change, .onGotFocus = &W::tb_Param2_GotFocus},
    {.place = Place::Distribution, .row = 3, .control = &W::tb_Param3, .name = "tb_Param3",
     .label = "", .labelName = "lb_Param3", .labelMember = &W::lb_Param3, .role = Role::Parameter,
     .onChange = &W::tb_Param3_Change, .onGotFocus = &W::tb_Param3_GotFocus},
    {.place = Place::Distribution, .row = 4, .control = &W::tb_Param4, .name = "tb_Param4",
     .label = "", .labelName = "lb_Param4", .labelMember = &W::lb_Param4, .role = Role::Parameter,
     .onChange = &W::tb_Param4_Change, .onGotFocus = &W::tb_Param4_GotFocus},

    {.place = Place::SpecLimits, .column = 0, .control = &W::cb_LSL, .name = "cb_LSL",
     .text = "Lower:", .onChange = &W::cb_LSL_Click, .onGotFocus = &W::cb_LSL_GotFocus,
     .keepsLetter = true},
    {.place = Place::SpecLimits, .control = &W::tb_LSL, .name = "tb_LSL", .text = "-3",
     .tick = &W::cb_LSL, .onChange = &W::tb_LSL_Change, .onGotFocus = &W::tb_LSL_GotFocus},
    {.place = Place::SpecLimits, .row = 1, .column = 0, .control = &W::cb_Target,
     .name = "cb_Target", .text = "Target:", .onChange = &W::cb_Target_Click,
     .onGotFocus = &W::cb_Target_GotFocus, .keepsLetter = true},
    {.place = Place::SpecLimits, .row = 1, .control = &W::tb_Target, .name = "tb_Target",
     .text = "0", .tick = &W::cb_Target, .onChange = &W::tb_Target_Change,
     .onGotFocus = &W::tb_Target_GotFocus},
    {.place = Place::SpecLimits, .row = 2, .column = 0, .control = &W::cb_USL, .name = "cb_USL",
     .text = "Upper:", .onChange = &W::cb_USL_Click, .onGotFocus = &W::cb_USL_GotFocus,
     .keepsLetter = true},
    {.place = Place::SpecLimits, .row = 2, .control = &W::tb_USL, .name = "tb_USL", .text = "3",
     .tick = &W::cb_USL, .onChange = &W::tb_USL_Change, .onGotFocus = &W::tb_USL_GotFocus},

    {.place = Place::Results, .control = &W::tb_LowerPNC, .name = "tb_LowerPNC",
     .label = "PNC below LSL:", .role = Role::Output, .accessibleName = "PNC below LSL",
     .description = "Fraction nonconforming below the lower spec limit"},
    {.place = Place::Results, .row = 1, .control = &W::tb_UpperPNC, .name = "tb_UpperPNC",
     .label = "PNC above USL:", .role = Role::Output, .accessibleName = "PNC above USL",
     .description = "Fraction nonconforming above the upper spec limit"},
    {.place = Place::Results, .row = 2, .control = &W::tb_PNC, .name = "tb_PNC",
     .label = "Total PNC:", .role = Role::Output, .accessibleName = "Total PNC",
     .description = "Fraction nonconforming in total"},
    // Pp, Ppk and the total in ppm in a second column beside the three PNC boxes.
    {.place = Place::Results, .column = 3, .control = &W::tb_Pp, .name = "tb_Pp", .label = "Pp:",
     .role = Role::Output},
    {.place = Place::Results, .row = 1, .column = 3, .control = &W::tb_Ppk, .name = "tb_Ppk",
     .label = "Ppk:", .role = Role::Output},
    {.place = Place::Results, .row = 2, .column = 3, .control = &W::tb_PPM, .name = "tb_PPM",
     .label = "ppm:", .role = Role::Output},

    {.place = Place::Moments, .control = &W::tb_Mean, .name = "tb_Mean", .label = "Mean:",
     .labelName = "lb_Mean", .role = Role::Moment, .onChange = &W::tb_Mean_Change,
     .onGotFocus = &W::tb_Mean_GotFocus},
    {.place = Place::Moments, .row = 1, .control = &W::tb_StDev, .name = "tb_StDev",
     .label = "Std. Deviation:", .labelName = "lb_StDev", .role = Role::Moment,
     .onChange = &W::tb_StDev_Change, .onGotFocus = &W::tb_StDev_GotFocus},
    {.place = Place::Moments, .row = 2, .control = &W::tb_Skewness, .name = "tb_Skewness",
     .label = "Skewness:", .labelName = "lb_Skewness", .role = Role::Moment,
     .onChange = &W::tb_Skewness_Change, .onGotFocus = &W::tb_Skewness_GotFocus},
    {.place = Place::Moments, .row = 3, .control = &W::tb_Kurtosis, .name = "tb_Kurtosis",
     .label = "Kurtosis:", .labelName = "lb_Kurtosis", .role = Role::Moment,
     .onChange = &W::tb_Kurtosis_Change, .onGotFocus = &W::tb_Kurtosis_GotFocus},
    // Below the moments' grid: the mode and the skewness-kurtosis chart's fields.
    {.place = Place::ByHand, .control = &W::cb_DrawbyMoments, .name = "cb_DrawbyMoments",
     .text = "Draw using Johnson Distributions", .onChange = &W::cb_DrawbyMoments_Click,
     .onGotFocus = &W::cb_DrawbyMoments_GotFocus},
    {.place = Place::ByHand, .control = &W::tb_Ymax, .name = "tb_Ymax", .role = Role::MomentsOnly,
     .onGotFocus = &W::tb_Ymax_GotFocus},
    {.place = Place::ByHand, .control = &W::cb_LockSkewness, .name = "cb_LockSkewness",
     .text = "Skew.", .role = Role::MomentsOnly, .onChange = &W::cb_LockSkewness_Click},
    {.place = Place::ByHand, .control = &W::cb_LockKurtosis, .name = "cb_LockKurtosis",
     .text = "Kurt.", .role = Role::MomentsOnly, .onChange = &W::cb_LockKurtosis_Click},

    {.place = Place::ByHand, .control = &W::but_Plot, .name = "but_Plot", .text = "Plot",
     .onChange = &W::but_Plot_Click, .onGotFocus = &W::but_Plot_GotFocus, .keepsLetter = true},
};
// clang-format on

QWidget* WidgetOf(const frm_Pondera& w, const Field& f) {
    return std::visit([&](auto member) -> QWidget* { return w.*member; }, f.control);
}

QLineEdit* BoxOf(const frm_Pondera& w, const Field& f) {
    const auto* member = std::get_if<Member<QLineEdit>>(&f.control);
    return member ? w.**member : nullptr;
}

// The caption label of a field, or nullptr.
QLabel* LabelOf(const frm_Pondera& w, const Field& f) {
    if (f.labelMember) return w.*f.labelMember;
    return f.labelName ? w.findChild<QLabel*>(f.labelName) : nullptr;
}

bool TabStop(const Field& f) {
    return f.role != Role::Output;
}

QLineEdit* MakeBox(const char* name) {
    auto* box = new QLineEdit;
    box->setObjectName(name);
    box->setMinimumWidth(90);
    return box;
}

QLabel* MakeLabel(const QString& text, const char* name = nullptr) {
    auto* label = new QLabel(text);
    if (name) label->setObjectName(name);
    return label;
}

// The field's control with its name, starting text and look; unplaced.
QWidget* MakeControl(frm_Pondera& w, const Field& f) {
    QWidget* made = std::visit(
        [&](auto member) -> QWidget* {
            using T = std::remove_pointer_t<std::remove_reference_t<decltype(w.*member)>>;
            T* control = nullptr;
            if constexpr (std::is_same_v<T, QLineEdit>) {
                control = MakeBox(f.name);
                if (f.text) control->setText(f.text);
            } else {
                if constexpr (std::is_same_v<T, DistributionCombo>)
                    control = new T;
                else
                    control = new T(f.text);
                control->setObjectName(f.name);
            }
            w.*member = control;
            return control;
        },
        f.control);
    if (QLineEdit* box = BoxOf(w, f)) {
        if (f.role == Role::Output || f.role == Role::Moment) SetBoxLocked(box, true);
        if (f.tick) box->setEnabled(false);
    }
    if (f.role == Role::Output) made->setFocusPolicy(Qt::ClickFocus);
    return made;
}

// Every field's label and control, in its frame's grid unless placed by hand.
void MakeFields(frm_Pondera& w, QGridLayout* const (&grids)[std::size(kFrames)]) {
    for (const Field& f : kFields) {
        QLabel* label = nullptr;
        if (f.label) {
            label = MakeLabel(f.label, f.labelName);
            if (f.labelMember) w.*f.labelMember = label;
        }
        QWidget* control = MakeControl(w, f);
        if (label && TabStop(f)) label->setBuddy(control);
        if (f.place == Place::ByHand) continue;
        QGridLayout* grid = grids[static_cast<int>(f.place)];
        if (label) grid->addWidget(label, f.row, f.column - 1);
        grid->addWidget(control, f.row, f.column);
    }
}

// The capability column takes what the PNC boxes leave, its boxes a little narrower.
void ShapeCapabilityColumn(frm_Pondera& w, QGridLayout& grid) {
    w.tb_Pp->setToolTip("Pp = (USL - LSL) / (X99.865 - X0.135), from the curve's own percentiles");
    for (QLineEdit* box : {w.tb_Pp, w.tb_Ppk, w.tb_PPM})
        box->setMinimumWidth(86);
    grid.setHorizontalSpacing(4);
    grid.setColumnStretch(1, 0);
    grid.setColumnStretch(3, 1);
}

// Under the moments' grid: the mode tick and the skewness-kurtosis chart, with
// the kurtosis axis ends and title on the left, skewness ends below, the locks
// with their "Fix" caption right.
void BuildSkewKurtChart(frm_Pondera& w, QVBoxLayout& box) {
    box.addWidget(w.cb_DrawbyMoments);
    auto* chart = new QGridLayout;
    chart->setHorizontalSpacing(3);
    chart->setVerticalSpacing(1);
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
    box.addLayout(chart);
}

// The left column of titled frames with Plot under them, scrollable on a small screen.
QScrollArea* BuildLeftColumn(frm_Pondera& w) {
    auto* column = new QWidget;
    column->setObjectName("leftColumn");
    auto* left = new QVBoxLayout(column);
    left->setContentsMargins(0, 0, 0, 0);
    left->setSpacing(5);

    QGridLayout* grids[std::size(kFrames)];
    QVBoxLayout* momentsBox = nullptr;
    for (std::size_t i = 0; i < std::size(kFrames); ++i) {
        TitledFrame* frame = new TitledFrame(kFrames[i].caption);
        w.*kFrames[i].frame = frame;
        frame->setObjectName(kFrames[i].name);
        if (i == static_cast<std::size_t>(Place::Moments)) {
            // The moments' grid has the chart under it.
            momentsBox = new QVBoxLayout(frame);
            momentsBox->setSpacing(3);
            grids[i] = new QGridLayout;
            momentsBox->addLayout(grids[i]);
        } else {
            grids[i] = new QGridLayout(frame);
        }
        grids[i]->setVerticalSpacing(3);
        grids[i]->setColumnStretch(1, 1);
    }
    MakeFields(w, grids);
    ShapeCapabilityColumn(w, *grids[static_cast<int>(Place::Results)]);
    BuildSkewKurtChart(w, *momentsBox);
    for (const FrameSpec& spec : kFrames)
        left->addWidget(w.*spec.frame);

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
    return scroll;
}

// The density chart and the strip with the spec-limit markers. Both share
// their left edge and width, so a pointer x means the same on each.
QVBoxLayout* BuildChartColumn(frm_Pondera& w) {
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
    return chartColumn;
}

void BuildStatusBar(frm_Pondera& w) {
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
    outer->addWidget(BuildLeftColumn(w));
    outer->addLayout(BuildChartColumn(w), 1);
    BuildStatusBar(w);

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

    // The fields: a box's Change, a tick's, the list's or Plot's Click.
    for (const Field& f : kFields) {
        if (!f.onChange) continue;
        std::visit(
            [&](auto member) {
                auto* control = w.*member;
                using T = std::remove_pointer_t<decltype(control)>;
                if constexpr (std::is_same_v<T, QLineEdit>)
                    QObject::connect(control, &QLineEdit::textChanged, self, act(f.onChange));
                else if constexpr (std::is_same_v<T, DistributionCombo>)
                    QObject::connect(control, &QComboBox::activated, self, act(f.onChange));
                else
                    QObject::connect(control, &QAbstractButton::clicked, self, act(f.onChange));
            },
            f.control);
    }

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
    // Focus events have no signal: they come through the one event filter.
    for (const Field& f : kFields) {
        if (QLineEdit* box = BoxOf(w, f); box && f.onChange)
            QObject::connect(box, &QLineEdit::returnPressed, w.but_Plot, &QPushButton::click);
        if (f.onGotFocus) WidgetOf(w, f)->installEventFilter(self);
    }
}

FocusHandler FocusHandlerOf(const frm_Pondera& w, const QObject* watched) {
    for (const Field& f : kFields)
        if (f.onGotFocus && WidgetOf(w, f) == watched) return f.onGotFocus;
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

    // The surfaces a keyboard can do nothing with take the focus only from
    // the mouse (their GotFocus handlers still run); the markers take Tab.
    for (PictureBox* pb : {w.pb_PDF, w.pb_Slider, w.pb_SkewKurt})
        pb->setFocusPolicy(Qt::ClickFocus);
    for (MarkerShape* marker : {w.sh_LSL, w.sh_USL})
        marker->setFocusPolicy(Qt::StrongFocus);

    // Tab walks the fields top to bottom, then the spec-limit markers.
    std::vector<QWidget*> order;
    for (const Field& f : kFields)
        if (TabStop(f)) order.push_back(WidgetOf(w, f));
    order.push_back(w.sh_LSL);
    order.push_back(w.sh_USL);
    for (std::size_t i = 1; i < order.size(); ++i)
        QWidget::setTabOrder(order[i - 1], order[i]);

    for (const Field& f : kFields) {
        if (!f.accessibleName) continue;
        WidgetOf(w, f)->setAccessibleName(f.accessibleName);
        WidgetOf(w, f)->setAccessibleDescription(f.description);
    }
    const std::tuple<QWidget*, const char*, const char*> surfaces[] = {
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
        {w.pb_Lock, "Fix", "Caption of the lock boxes"}};
    for (const auto& [widget, name, description] : surfaces) {
        widget->setAccessibleName(name);
        widget->setAccessibleDescription(description);
    }
    MarkMnemonics(w);
}

bool LimitMnemonic(frm_Pondera& w, QObject* watched, const QEvent& event) {
    if (event.type() != QEvent::Shortcut) return false;
    for (const Field& f : kFields) {
        if (!f.tick || watched != w.*f.tick) continue;
        QCheckBox* check = w.*f.tick;
        QLineEdit* box = BoxOf(w, f);
        check->click();
        // Unticked, the value cannot be typed: the focus stays on the tick.
        QWidget* next = check->isChecked() ? static_cast<QWidget*>(box) : check;
        next->setFocus(Qt::ShortcutFocusReason);
        if (next == box) box->selectAll();
        return true;
    }
    return false;
}

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
    std::size_t i = 0;
    for (const Field& f : kFields) {
        if (f.role != Role::Parameter) continue;
        const PlotPipeline::ParamRow& row = rows.at(i++);
        QLabel* label = LabelOf(w, f);
        QLineEdit* box = BoxOf(w, f);
        if (row.Label) label->setText(row.Label);
        label->setVisible(row.Label != nullptr);
        box->setVisible(row.Label != nullptr);
        if (row.DefaultText) box->setText(row.DefaultText);
    }
    MarkMnemonics(w);
}

void ShowMode(frm_Pondera& w, bool byMoments) {
    QStringList names;
    for (const std::string& n : Families::ListOrder(byMoments))
        names << QString::fromStdString(n);
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
    for (const Field& f : kFields) {
        if (f.role == Role::Moment) SetBoxLocked(BoxOf(w, f), !byMoments);
        if (f.role == Role::Parameter) SetBoxLocked(BoxOf(w, f), byMoments);
        if (f.role == Role::MomentsOnly) WidgetOf(w, f)->setEnabled(byMoments);
    }
}

void MarkMnemonics(frm_Pondera& w) {
    // Plot and the limits first, so that their letters never change; then the
    // captions top to bottom (hidden ones take none).
    std::vector<QWidget*> owners;
    for (const bool first : {true, false})
        for (const Field& f : kFields) {
            if (!TabStop(f) || f.keepsLetter != first) continue;
            if (QLabel* label = LabelOf(w, f))
                owners.push_back(label);
            else if (auto* button = qobject_cast<QAbstractButton*>(WidgetOf(w, f)))
                owners.push_back(button);
        }
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
    const QString family = look::AppFontFamily();
    QFont font(family);
    font.setPixelSize(size);
    const double textWidth = QFontMetrics(font).horizontalAdvance(text);
    // Reading upward, centred on the surface.
    const double x = (pb.ScaleWidth() - size) / 2.0;
    const double y = (pb.ScaleHeight() + textWidth) / 2.0;
    m_TextRotate::PrintRotatedText(pb, text, x, y, 900, family, size, false, false);
    pb.Refresh();
}

} // namespace WindowLayout
