// Limits from Probability, end to end: the menu entry, the dialog as a person
// fills it, and the limits and figures the window then shows.
#include "tests/ui/main/WindowFixture.h"
#include "ui/main/frm_LimitsFromProbability.h"

#include <QAction>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QRadioButton>

namespace {

class EndToEndLimitsFromProbability : public WindowTest {};

TEST_F(EndToEndLimitsFromProbability, AWeibullGetsLimitsFrom100PpmOnEachSide) {
    Choose("Weibull"); // shape 2, scale 10, minimum 0
    w->mnuLimitsFromProbability->trigger();
    frm_LimitsFromProbability* d = w->LimitsDialog();
    ASSERT_TRUE(d && d->isVisible());
    QPushButton* ok = d->but_Buttons->button(QDialogButtonBox::Ok);
    // Text that is no probability keeps the dialog open, with its message.
    Type(d->tb_Probability, "abc");
    Click(ok);
    EXPECT_EQ(MessageTexts(), std::vector<std::string>{ProbabilityLimits::kNotANumber});
    EXPECT_TRUE(d->isVisible());

    Click(d->ob_Both); // central: half of 200 ppm on each side
    Type(d->tb_Probability, "200");
    d->dd_Unit->setCurrentIndex(d->dd_Unit->findText("ppm"));
    Click(ok);
    EXPECT_FALSE(d->isVisible());
    EXPECT_TRUE(w->cb_LSL->isChecked() && w->cb_USL->isChecked());
    EXPECT_TRUE(w->tb_LSL->isEnabled() && w->tb_USL->isEnabled());
    // Closed form: x = 10 sqrt(H) with H = -ln(1 - 1e-4) below, -ln(1e-4) above.
    EXPECT_NEAR(Num(w->tb_LSL), 10 * std::sqrt(-std::log1p(-1e-4)), 1e-15);
    EXPECT_NEAR(Num(w->tb_USL), 10 * std::sqrt(-std::log(1e-4)), 1e-13);
    EXPECT_EQ(Texts({w->tb_LowerPNC, w->tb_UpperPNC, w->tb_PNC}),
              (std::vector<std::string>{"1.000000E-04", "1.000000E-04", "2.000000E-04"}));
    testing_support::ExpectErrorLogEmpty();
}

} // namespace
