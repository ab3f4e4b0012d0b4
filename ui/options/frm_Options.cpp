#include "ui/options/frm_Options.h"

#include "settings/CAppSettings.h"
#include "settings/DisplayOptions.h"
#include "settings/RegistryStore.h"
#include "stats/m_Capability.h"
#include "support/ErrorReporter.h"
#include "support/ErrorTrap.h"
#include "support/Format.h"
#include "support/UserFace.h"
#include "support/m_Interface.h"
#include "ui/draw/Look.h"
#include "ui/options/ColorPicker.h"
#include "ui/options/SpinButton.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFocusEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include <algorithm>
#include <optional>
#include <vector>

using namespace DisplayOptions;

namespace {

// While Apply waits for another program's write lock on the settings store, the
// windows keep painting and show that they wait: a busy pointer and the status
// bar's text (user input waits until the store answers).
class StoreWait {
  public:
    StoreWait() {
        RegistryStore::SetWaitHook([this] {
            if (!waiting_) {
                waiting_ = true;
                QApplication::setOverrideCursor(Qt::WaitCursor);
                support::Face().SetStatusText("Waiting for the settings store...");
            }
            QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        });
    }
    ~StoreWait() {
        RegistryStore::SetWaitHook(nullptr);
        if (!waiting_) return;
        QApplication::restoreOverrideCursor();
        support::Face().SetStatusText("");
    }
    StoreWait(const StoreWait&) = delete;
    StoreWait& operator=(const StoreWait&) = delete;

  private:
    bool waiting_ = false;
};

constexpr const char* kModule = "Pondera.frm_Options";
// Queued from the event filter, so the handler is named for the form.
constexpr const char* kLabelFocus = "Pondera.frm_Options.Form_LostFocus";

constexpr int kFieldWidth = 96;

std::string Text(const QLineEdit* box) {
    return box->text().toStdString();
}
QString Q(const std::string& s) {
    return QString::fromStdString(s);
}

// Runs an event procedure as one user action, so its errors are reported once.
template <class Handler> auto AsEvent(Handler handler) {
    return [handler](auto&&...) {
        support::ActionScope action;
        handler();
    };
}

// A tick box holding a valid count moves its spin button along, quietly.
void SpinFollowsBox(const QLineEdit* box, SpinButton* spin) {
    if (const auto n = TicksFrom(Text(box))) {
        const QSignalBlocker quiet(spin);
        spin->SetValue(*n);
    }
}

QLabel* FieldLabel(const QString& text, QWidget* buddy) {
    auto* label = new QLabel(text);
    label->setBuddy(buddy);
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    return label;
}

} // namespace

frm_Options::frm_Options(QWidget* parent) : QDialog(parent) {
    setWindowTitle(QStringLiteral("Options"));
    // A fixed-size dialog: a title and a close box, nothing to minimise or maximise.
    setWindowFlags(Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                   Qt::WindowCloseButtonHint);
    setFont(look::AppFont(QApplication::font().pointSizeF()));
    BuildControls();
    ConnectEvents();
    Form_Load();
    shown_ = Take();
}

void frm_Options::BuildControls() {
    // Number format
    ob_Decimal = new QRadioButton(QStringLiteral("&Decimal"));
    ob_Scientific = new QRadioButton(QStringLiteral("&Scientific"));
    dd_Decimal = new QComboBox;
    dd_Decimal->setMinimumWidth(kFieldWidth / 2);
    auto* format = new QGroupBox(QStringLiteral("Number Format"));
    auto* formatGrid = new QGridLayout(format);
    formatGrid->addWidget(ob_Decimal, 0, 0);
    formatGrid->addWidget(ob_Scientific, 0, 1, 1, 2);
    formatGrid->addWidget(FieldLabel(QStringLiteral("Decimal &places:"), dd_Decimal), 1, 0);
    formatGrid->addWidget(dd_Decimal, 1, 1);
    formatGrid->setColumnStretch(2, 1);
    formatGrid->setRowStretch(2, 1);

    // X-axis range
    ob_StDev = new QRadioButton(QStringLiteral("Mean ± standard de&viations:"));
    tb_NumStDev = new QLineEdit;
    ob_Endpoints = new QRadioButton(QStringLiteral("&Fixed endpoints"));
    tb_XMin = new QLineEdit;
    tb_XMax = new QLineEdit;
    for (auto* box : {tb_NumStDev, tb_XMin, tb_XMax})
        box->setFixedWidth(kFieldWidth);
    auto* range = new QGroupBox(QStringLiteral("X-Axis Range"));
    auto* rangeGrid = new QGridLayout(range);
    rangeGrid->addWidget(ob_StDev, 0, 0, 1, 2);
    rangeGrid->addWidget(tb_NumStDev, 0, 2);
    rangeGrid->addWidget(ob_Endpoints, 1, 0, 1, 3);
    rangeGrid->addWidget(FieldLabel(QStringLiteral("M&inimum:"), tb_XMin), 2, 1);
    rangeGrid->addWidget(tb_XMin, 2, 2);
    rangeGrid->addWidget(FieldLabel(QStringLiteral("M&aximum:"), tb_XMax), 3, 1);
    rangeGrid->addWidget(tb_XMax, 3, 2);
    rangeGrid->setColumnMinimumWidth(0, 16);
    rangeGrid->setColumnStretch(1, 1);
    rangeGrid->setRowStretch(4, 1);

    // Ticks
    tb_XTicks = new QLineEdit;
    tb_YTicks = new QLineEdit;
    sb_XTicks = new SpinButton;
    sb_YTicks = new SpinButton;
    for (auto* spin : {sb_XTicks, sb_YTicks})
        spin->SetRange(1, kMaxTicks);
    auto* ticks = new QGroupBox(QStringLiteral("Ticks"));
    auto* ticksGrid = new QGridLayout(ticks);
    ticksGrid->setHorizontalSpacing(2);
    const struct {
        const char* caption;
        QLineEdit* box;
        SpinButton* spin;
    } tickRows[] = {{"&X-axis intervals:", tb_XTicks, sb_XTicks},
                    {"&Y-axis intervals:", tb_YTicks, sb_YTicks}};
    int row = 0;
    for (const auto& r : tickRows) {
        r.box->setFixedWidth(kFieldWidth / 2);
        r.spin->setFixedHeight(r.box->sizeHint().height());
        auto* label = FieldLabel(QString::fromUtf8(r.caption), r.box);
        label->setContentsMargins(0, 0, 6, 0);
        ticksGrid->addWidget(label, row, 0);
        ticksGrid->addWidget(r.box, row, 1);
        ticksGrid->addWidget(r.spin, row, 2);
        ++row;
    }
    ticksGrid->setColumnStretch(3, 1);
    ticksGrid->setRowStretch(row, 1);

    // Colours
    cp_Background = new ColorPicker;
    cp_InSpec = new ColorPicker;
    cp_OutSpec = new ColorPicker;
    auto* colors = new QGroupBox(QStringLiteral("Colors"));
    auto* colorGrid = new QGridLayout(colors);
    const struct {
        const char* caption;
        ColorPicker* picker;
    } colorRows[] = {{"&Background:", cp_Background},
                     {"I&n specification:", cp_InSpec},
                     {"&Out of specification:", cp_OutSpec}};
    row = 0;
    for (const auto& r : colorRows) {
        colorGrid->addWidget(FieldLabel(QString::fromUtf8(r.caption), r.picker), row, 0);
        colorGrid->addWidget(r.picker, row, 1);
        ++row;
    }
    colorGrid->setColumnStretch(2, 1);
    colorGrid->setRowStretch(row, 1);

    // Capability
    dd_CapMethod = new QComboBox;
    for (const auto m : {m_Capability::Method::Percentile, m_Capability::Method::ZScore}) {
        QString name = QString::fromUtf8(m_Capability::MethodName(m));
        dd_CapMethod->addItem(name.left(1).toUpper() + name.mid(1));
    }
    dd_ConfLevel = new QComboBox;
    auto* capability = new QGroupBox(QStringLiteral("Capability"));
    auto* capabilityGrid = new QGridLayout(capability);
    capabilityGrid->addWidget(FieldLabel(QStringLiteral("&Method:"), dd_CapMethod), 0, 0);
    capabilityGrid->addWidget(dd_CapMethod, 0, 1);
    capabilityGrid->addWidget(FieldLabel(QStringLiteral("Confidence &level:"), dd_ConfLevel), 0, 2);
    capabilityGrid->addWidget(dd_ConfLevel, 0, 3);
    capabilityGrid->setColumnStretch(4, 1);

    // Exports
    cb_ChartTitles = new QCheckBox(QStringLiteral("&Titles on copied and saved charts"));
    auto* exports = new QGroupBox(QStringLiteral("Exports"));
    auto* exportsBox = new QHBoxLayout(exports);
    exportsBox->addWidget(cb_ChartTitles);
    exportsBox->addStretch(1);

    // Buttons
    but_Apply = new QPushButton(QStringLiteral("Apply"));
    but_Cancel = new QPushButton(QStringLiteral("Cancel"));
    but_Apply->setDefault(true);
    but_Cancel->setAutoDefault(false);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(but_Apply);
    buttons->addWidget(but_Cancel);

    auto* groups = new QGridLayout;
    groups->addWidget(format, 0, 0);
    groups->addWidget(range, 0, 1);
    groups->addWidget(ticks, 1, 0);
    groups->addWidget(colors, 1, 1);
    groups->addWidget(capability, 2, 0, 1, 2);
    groups->addWidget(exports, 3, 0, 1, 2);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(groups);
    layout->addSpacing(4);
    layout->addLayout(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);

    setTabOrder(ob_Decimal, ob_Scientific);
    setTabOrder(ob_Scientific, dd_Decimal);
    setTabOrder(dd_Decimal, ob_StDev);
    setTabOrder(ob_StDev, tb_NumStDev);
    setTabOrder(tb_NumStDev, ob_Endpoints);
    setTabOrder(ob_Endpoints, tb_XMin);
    setTabOrder(tb_XMin, tb_XMax);
    setTabOrder(tb_XMax, tb_XTicks);
    setTabOrder(tb_XTicks, tb_YTicks);
    setTabOrder(tb_YTicks, cp_Background);
    setTabOrder(cp_Background, cp_InSpec);
    setTabOrder(cp_InSpec, cp_OutSpec);
    setTabOrder(cp_OutSpec, dd_CapMethod);
    setTabOrder(dd_CapMethod, dd_ConfLevel);
    setTabOrder(dd_ConfLevel, cb_ChartTitles);
    setTabOrder(cb_ChartTitles, but_Apply);
    setTabOrder(but_Apply, but_Cancel);
}

// Every control event is wired here; focus-out and arrow keys of the text
// boxes, which have no signal, come through the event filter.
void frm_Options::ConnectEvents() {
    connect(but_Apply, &QPushButton::clicked, this, AsEvent([this] { but_Apply_Click(); }));
    connect(but_Cancel, &QPushButton::clicked, this, AsEvent([this] { but_Cancel_Click(); }));
    connect(sb_XTicks, &SpinButton::ValueChanged, this, AsEvent([this] { sb_XTicks_Change(); }));
    connect(sb_YTicks, &SpinButton::ValueChanged, this, AsEvent([this] { sb_YTicks_Change(); }));
    connect(ob_StDev, &QRadioButton::toggled, this, AsEvent([this] { ob_StDev_Click(); }));
    connect(ob_Endpoints, &QRadioButton::toggled, this, AsEvent([this] { ob_Endpoints_Click(); }));
    for (const auto& [box, spin] :
         {std::pair{tb_XTicks, sb_XTicks}, std::pair{tb_YTicks, sb_YTicks}})
        connect(box, &QLineEdit::textEdited, this,
                [box = box, spin = spin] { SpinFollowsBox(box, spin); });
    for (auto* box : {tb_NumStDev, tb_XMin, tb_XMax, tb_XTicks, tb_YTicks})
        box->installEventFilter(this);
}

void frm_Options::Form_Load() {
    support::Trap({kModule, __func__}, [&] {
        dd_Decimal->clear();
        for (int places = 0; places <= kMaxDecPlaces; ++places)
            dd_Decimal->addItem(QString::number(places));
        dd_Decimal->setCurrentIndex(std::clamp<int>(AppDecPlaces, 0, kMaxDecPlaces));
        tb_NumStDev->setText(Q(support::Format(AppNumStDev, "")));
        tb_XTicks->setText(QString::number(AppXTicks));
        tb_YTicks->setText(QString::number(AppYTicks));
        {
            const QSignalBlocker quietX(sb_XTicks);
            const QSignalBlocker quietY(sb_YTicks);
            sb_XTicks->SetValue(AppXTicks);
            sb_YTicks->SetValue(AppYTicks);
        }
        const std::string pattern =
            m_Interface::FormatDec(static_cast<int16_t>(dd_Decimal->currentIndex()));
        tb_XMax->setText(Q(support::Format(AppXMax, pattern)));
        tb_XMin->setText(Q(support::Format(AppXMin, pattern)));
        cp_Background->SetTitle(QStringLiteral("Select Background Color"));
        cp_InSpec->SetTitle(QStringLiteral("Select In Specification Color"));
        cp_OutSpec->SetTitle(QStringLiteral("Select Out of Specification Color"));
        // The pickers show the colours in use, so Apply never stores a stale one.
        cp_Background->SetColor(AppBackColor);
        cp_InSpec->SetColor(AppInSpecColor);
        cp_OutSpec->SetColor(AppOutSpecColor);
        (AppDisplay ? ob_Scientific : ob_Decimal)->setChecked(true);
        (AppRangeMode ? ob_Endpoints : ob_StDev)->setChecked(true);
        EnableRangeFields();
        dd_CapMethod->setCurrentIndex(std::clamp<int>(AppCapMethod, 0, 1));
        // The usual levels, and a stored one that is none of them.
        dd_ConfLevel->clear();
        std::vector<double> levels = {0.8, 0.9, 0.95, 0.99};
        if (std::find(levels.begin(), levels.end(), AppConfLevel) == levels.end())
            levels.push_back(AppConfLevel);
        std::sort(levels.begin(), levels.end());
        for (double level : levels) {
            dd_ConfLevel->addItem(QString::number(level * 100, 'g', 4) + " %", level);
            if (level == AppConfLevel) dd_ConfLevel->setCurrentIndex(dd_ConfLevel->count() - 1);
        }
        cb_ChartTitles->setChecked(AppChartTitles);
    });
}

void frm_Options::but_Apply_Click() {
    support::Trap({kModule, __func__}, [&] {
        // Every field Apply reads must pass its check first: nothing is stored
        // from a form that holds a bad entry.
        if (!RunPendingCheck()) return;
        const bool byStDev = ob_StDev->isChecked();
        const bool endpoints = ob_Endpoints->isChecked();
        if (byStDev && !tb_NumStDev_LostFocus()) return;
        if (endpoints && (!tb_XMin_LostFocus() || !tb_XMax_LostFocus())) return;
        if (!tb_XTicks_LostFocus() || !tb_YTicks_LostFocus()) return;

        if (endpoints && *RangeEndFrom(Text(tb_XMin)) > *RangeEndFrom(Text(tb_XMax))) {
            support::MsgBox(kMsgRangeOrder);
            return;
        }

        // The options take effect for this run even when the store refuses
        // them; a refusal is reported once, after the redraw. They are stored
        // together, so a crash or kill never leaves half of them.
        std::optional<support::RunTimeError> refused;
        std::vector<std::pair<std::string, CAppSettings::Value>> stored;
        auto store = [&](const char* key, const CAppSettings::Value& value) {
            stored.emplace_back(key, value);
        };
        AppBackColor = cp_Background->Color();
        store(kAppBackColor, int64_t{AppBackColor});
        AppInSpecColor = cp_InSpec->Color();
        store(kAppInSpecColor, int64_t{AppInSpecColor});
        AppOutSpecColor = cp_OutSpec->Color();
        store(kAppOutSpecColor, int64_t{AppOutSpecColor});

        AppXTicks = *TicksFrom(Text(tb_XTicks));
        store(kAppXTicks, int64_t{AppXTicks});
        AppYTicks = *TicksFrom(Text(tb_YTicks));
        store(kAppYTicks, int64_t{AppYTicks});
        if (dd_Decimal->currentIndex() >= 0)
            AppDecPlaces = static_cast<int16_t>(dd_Decimal->currentIndex());
        store(kAppDecPlaces, int64_t{AppDecPlaces});

        if (byStDev) {
            AppXRange = 0;
            store(kAppXRange, int64_t{AppXRange});
            AppNumStDev = *NumStDevFrom(Text(tb_NumStDev));
            store(kAppNumStDev, AppNumStDev);
        }
        if (endpoints) {
            AppXRange = 1;
            store(kAppXRange, int64_t{AppXRange});
            AppXMin = *RangeEndFrom(Text(tb_XMin));
            store(kAppXMin, AppXMin);
            AppXMax = *RangeEndFrom(Text(tb_XMax));
            store(kAppXMax, AppXMax);
        }
        // Both flags are stored as the numbers 0 and 1.
        AppDisplay = ob_Scientific->isChecked();
        store(kAppDisplay, int64_t{AppDisplay ? 1 : 0});
        AppRangeMode = endpoints;
        store(kAppRangeMode, int64_t{AppRangeMode ? 1 : 0});
        AppCapMethod = std::clamp(dd_CapMethod->currentIndex(), 0, 1);
        store(kAppCapMethod, int64_t{AppCapMethod});
        if (dd_ConfLevel->currentIndex() >= 0)
            AppConfLevel = dd_ConfLevel->currentData().toDouble();
        store(kAppConfLevel, AppConfLevel);
        AppChartTitles = cb_ChartTitles->isChecked();
        store(kAppChartTitles, int64_t{AppChartTitles ? 1 : 0});
        try {
            const StoreWait wait;
            AppSettings().SaveSettings(kSection, stored);
        } catch (const support::RunTimeError& e) {
            refused = e;
        }

        but_Cancel->setText(QStringLiteral("Close"));
        emit Applied();
        shown_ = Take(); // includes the range the redraw wrote back
        if (refused) throw *refused;
    });
}

void frm_Options::but_Cancel_Click() {
    support::Trap({kModule, __func__}, [&] {
        pendingCheck_ = nullptr;
        Restore(shown_);
        QDialog::reject();
    });
}

void frm_Options::reject() {
    support::ActionScope action;
    but_Cancel_Click();
}

bool frm_Options::tb_NumStDev_LostFocus() {
    return support::TrapValue({kModule, __func__}, true, [&] {
        return NumStDevFrom(Text(tb_NumStDev)) ? true : ShowFailure(tb_NumStDev, kMsgNumStDev);
    });
}

bool frm_Options::tb_XMin_LostFocus() {
    return support::TrapValue({kModule, __func__}, true, [&] {
        return RangeEndFrom(Text(tb_XMin)) ? true : ShowFailure(tb_XMin, kMsgXMin);
    });
}

bool frm_Options::tb_XMax_LostFocus() {
    return support::TrapValue({kModule, __func__}, true, [&] {
        return RangeEndFrom(Text(tb_XMax)) ? true : ShowFailure(tb_XMax, kMsgXMax);
    });
}

bool frm_Options::tb_XTicks_LostFocus() {
    return support::TrapValue({kModule, __func__}, true, [&] {
        return TicksFrom(Text(tb_XTicks)) ? true : ShowFailure(tb_XTicks, kMsgTicks);
    });
}

bool frm_Options::tb_YTicks_LostFocus() {
    return support::TrapValue({kModule, __func__}, true, [&] {
        // Kept: the message names X ticks here too, the program's own wording.
        return TicksFrom(Text(tb_YTicks)) ? true : ShowFailure(tb_YTicks, kMsgTicks);
    });
}

void frm_Options::sb_XTicks_Change() {
    support::Trap({kModule, __func__},
                  [&] { tb_XTicks->setText(QString::number(sb_XTicks->Value())); });
}

void frm_Options::sb_YTicks_Change() {
    support::Trap({kModule, __func__},
                  [&] { tb_YTicks->setText(QString::number(sb_YTicks->Value())); });
}

void frm_Options::ob_StDev_Click() {
    support::Trap({kModule, __func__}, [&] { EnableRangeFields(); });
}

void frm_Options::ob_Endpoints_Click() {
    support::Trap({kModule, __func__}, [&] { EnableRangeFields(); });
}

bool frm_Options::eventFilter(QObject* watched, QEvent* event) {
    auto* box = qobject_cast<QLineEdit*>(watched);
    if (!box) return QDialog::eventFilter(watched, event);
    support::TrapIgnore([&] {
        if (event->type() == QEvent::FocusOut) {
            const auto reason = static_cast<QFocusEvent*>(event)->reason();
            // A message box or menu taking the focus, or our own refocusing, is
            // no reason to check; nor is the user heading for Cancel.
            const bool check =
                !refocusing_ && isVisible() && reason != Qt::ActiveWindowFocusReason &&
                reason != Qt::PopupFocusReason && QApplication::focusWidget() != but_Cancel;
            if (!check) return;
            // Checked once the focus change is complete, so the message box
            // never opens in the middle of it.
            pendingCheck_ = box;
            QMetaObject::invokeMethod(
                this,
                [this] {
                    support::ActionScope action;
                    support::Trap(kLabelFocus, [&] { RunPendingCheck(); });
                },
                Qt::QueuedConnection);
        } else if (event->type() == QEvent::KeyPress && (box == tb_XTicks || box == tb_YTicks)) {
            // Up and Down step the count, as the spin button beside the box does.
            const int key = static_cast<QKeyEvent*>(event)->key();
            SpinButton* spin = box == tb_XTicks ? sb_XTicks : sb_YTicks;
            if (key == Qt::Key_Up) spin->Step(1);
            if (key == Qt::Key_Down) spin->Step(-1);
        }
    });
    return QDialog::eventFilter(watched, event);
}

void frm_Options::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    but_Cancel->setText(QStringLiteral("Cancel"));
    pendingCheck_ = nullptr;
    shown_ = Take();
}

bool frm_Options::CheckBox(QLineEdit* box) {
    if (box == tb_NumStDev) return tb_NumStDev_LostFocus();
    if (box == tb_XMin) return tb_XMin_LostFocus();
    if (box == tb_XMax) return tb_XMax_LostFocus();
    if (box == tb_XTicks) return tb_XTicks_LostFocus();
    if (box == tb_YTicks) return tb_YTicks_LostFocus();
    return true;
}

// Runs the check of the box that last lost the focus, if still due.
bool frm_Options::RunPendingCheck() {
    QLineEdit* box = pendingCheck_;
    pendingCheck_ = nullptr;
    if (!box || !isVisible() || !box->isEnabled()) return true;
    return CheckBox(box);
}

bool frm_Options::ShowFailure(QLineEdit* box, const char* message) {
    support::MsgBox(message);
    ReturnFocus(box);
    return false;
}

void frm_Options::ReturnFocus(QLineEdit* box) {
    if (!box->isEnabled()) return;
    // The box taking the focus back makes another box lose it; that is not
    // the user leaving it, so it is not checked.
    refocusing_ = true;
    box->setFocus(Qt::OtherFocusReason);
    box->selectAll();
    refocusing_ = false;
}

void frm_Options::EnableRangeFields() {
    tb_NumStDev->setEnabled(ob_StDev->isChecked());
    tb_XMin->setEnabled(ob_Endpoints->isChecked());
    tb_XMax->setEnabled(ob_Endpoints->isChecked());
}

frm_Options::Snapshot frm_Options::Take() const {
    return {ob_Scientific->isChecked(),
            dd_Decimal->currentIndex(),
            ob_Endpoints->isChecked(),
            tb_NumStDev->text(),
            tb_XMin->text(),
            tb_XMax->text(),
            tb_XTicks->text(),
            tb_YTicks->text(),
            cp_Background->Color(),
            cp_InSpec->Color(),
            cp_OutSpec->Color(),
            dd_CapMethod->currentIndex(),
            dd_ConfLevel->currentIndex()};
}

void frm_Options::Restore(const Snapshot& s) {
    (s.Scientific ? ob_Scientific : ob_Decimal)->setChecked(true);
    dd_Decimal->setCurrentIndex(s.DecimalIndex);
    (s.Endpoints ? ob_Endpoints : ob_StDev)->setChecked(true);
    tb_NumStDev->setText(s.NumStDev);
    tb_XMin->setText(s.XMin);
    tb_XMax->setText(s.XMax);
    tb_XTicks->setText(s.XTicks);
    tb_YTicks->setText(s.YTicks);
    SpinFollowsBox(tb_XTicks, sb_XTicks);
    SpinFollowsBox(tb_YTicks, sb_YTicks);
    cp_Background->SetColor(s.Background);
    cp_InSpec->SetColor(s.InSpec);
    cp_OutSpec->SetColor(s.OutSpec);
    dd_CapMethod->setCurrentIndex(s.CapMethod);
    dd_ConfLevel->setCurrentIndex(s.ConfLevel);
    EnableRangeFields();
}
