#include "ui/main/frm_LimitsFromProbability.h"

#include "support/ErrorTrap.h"
#include "support/UserFace.h"
#include "ui/main/PlotPipeline.h"
#include "ui/main/QtFace.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QVBoxLayout>

namespace {
constexpr const char* kaccept = "Pondera.frm_LimitsFromProbability.accept";
}

frm_LimitsFromProbability::frm_LimitsFromProbability(Solver limits, QWidget* parent)
    : QDialog(parent), limits_(std::move(limits)) {
    setObjectName("frm_LimitsFromProbability");
    setWindowTitle("Limits from Probability");
    auto* layout = new QVBoxLayout(this);
    ob_Lower = new QRadioButton("&Lower tail: the fraction below the LSL");
    ob_Upper = new QRadioButton("&Upper tail: the fraction above the USL");
    ob_Both = new QRadioButton("&Both tails: central, half the fraction on each side");
    ob_Lower->setObjectName("ob_Lower");
    ob_Upper->setObjectName("ob_Upper");
    ob_Both->setObjectName("ob_Both");
    ob_Both->setChecked(true);
    for (QRadioButton* b : {ob_Lower, ob_Upper, ob_Both})
        layout->addWidget(b);
    auto* row = new QHBoxLayout;
    tb_Probability = new QLineEdit("0.27");
    tb_Probability->setObjectName("tb_Probability");
    dd_Unit = new QComboBox;
    dd_Unit->setObjectName("dd_Unit");
    for (const char* unit : ProbabilityLimits::kUnitNames)
        dd_Unit->addItem(unit);
    dd_Unit->setCurrentIndex(static_cast<int>(ProbabilityLimits::Unit::Percent));
    row->addWidget(tb_Probability, 1);
    row->addWidget(dd_Unit);
    auto* caption = new QLabel("&Probability:");
    caption->setBuddy(tb_Probability);
    row->insertWidget(0, caption);
    layout->addLayout(row);
    but_Buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    but_Buttons->setObjectName("but_Buttons");
    layout->addWidget(but_Buttons);
    connect(but_Buttons, &QDialogButtonBox::accepted, this, &frm_LimitsFromProbability::accept);
    connect(but_Buttons, &QDialogButtonBox::rejected, this, &frm_LimitsFromProbability::reject);
}

void frm_LimitsFromProbability::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    tb_Probability->setFocus();
    tb_Probability->selectAll();
}

void frm_LimitsFromProbability::accept() {
    bool done = false;
    support::Trap(kaccept, [&] {
        using namespace ProbabilityLimits;
        const std::optional<double> fraction = FractionOf(
            tb_Probability->text().toStdString(), static_cast<Unit>(dd_Unit->currentIndex()));
        std::string message = kNotANumber;
        if (fraction) {
            const Side side = ob_Lower->isChecked()   ? Side::Lower
                              : ob_Upper->isChecked() ? Side::Upper
                                                      : Side::Both;
            Outcome outcome = limits_({side, *fraction});
            message = outcome.Message;
            if (message.empty()) result_ = std::move(outcome);
        }
        if (message.empty()) {
            done = true;
            return;
        }
        support::MsgBox(message, PlotPipeline::kWarningTitle);
        const ToolkitWork toolkit;
        tb_Probability->setFocus();
        tb_Probability->selectAll();
    });
    if (done) QDialog::accept();
}
