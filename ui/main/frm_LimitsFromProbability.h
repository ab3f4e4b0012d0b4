// The "Limits from Probability" dialog: which tail (lower, upper, or both with
// half on each side), and the probability as a fraction, a percentage or ppm.
// OK keeps the dialog open with a message while no limit can be given; the
// window reads Result() once it is accepted and writes the limits.
#pragma once

#include "ui/main/ProbabilityLimits.h"

#include <QDialog>

#include <functional>

class QComboBox;
class QDialogButtonBox;
class QLineEdit;
class QRadioButton;

class frm_LimitsFromProbability : public QDialog {
    Q_OBJECT

  public:
    // `limits` answers a request for the curve drawn when OK is pressed.
    using Solver = std::function<ProbabilityLimits::Outcome(const ProbabilityLimits::Request&)>;
    explicit frm_LimitsFromProbability(Solver limits, QWidget* parent = nullptr);

    QRadioButton* ob_Lower = nullptr;
    QRadioButton* ob_Upper = nullptr;
    QRadioButton* ob_Both = nullptr;
    QLineEdit* tb_Probability = nullptr;
    QComboBox* dd_Unit = nullptr;
    QDialogButtonBox* but_Buttons = nullptr;

    // The limits last accepted.
    const ProbabilityLimits::Outcome& Result() const { return result_; }

    void accept() override;

  protected:
    // Each opening starts in the probability, its text selected.
    void showEvent(QShowEvent* event) override;

  private:
    Solver limits_;
    ProbabilityLimits::Outcome result_;
};
