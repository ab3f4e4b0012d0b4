// The main window on its density side: start-up, the plot pipeline with its
// checks, range and results, the menus and the spec-limit drag.
#include "tests/ui/main/WindowFixture.h"

#include "settings/CAppSettings.h"
#include "support/MExceptionHandler.h"
#include "ui/options/frm_Options.h"

#include <QAction>
#include <QComboBox>
#include <QTemporaryDir>

using testing_support::RelErr;
using Strings = std::vector<std::string>;

// ---- start-up --------------------------------------------------------------

TEST_F(WindowTest, StartsWithTheNormalAndTheClassicalList) {
    EXPECT_EQ(Items(), QStringList({"Normal", "Exponential", "LogNormal", "Uniform", "Triangular",
                                    "Weibull"}));
    EXPECT_EQ(w->dd_Distribution->Text(), "Normal");
    // Moments as read-only outputs; no limit ticked: the plot writes zeros itself.
    EXPECT_EQ(Texts({w->tb_Mean, w->tb_StDev, w->tb_Kurtosis, w->tb_PNC}),
              (Strings{"0.000000E+00", "1.000000E+00", "3.000000E+00", "0.000000E+00"}));
    EXPECT_TRUE(w->tb_Mean->isReadOnly());
    EXPECT_EQ(w->NumPoints, 300);
    EXPECT_FALSE(w->but_Plot->isEnabled());
    EXPECT_DOUBLE_EQ(w->RangeLow, -2.6);
    EXPECT_DOUBLE_EQ(w->RangeHigh, 2.6);
    // The options dialog is loaded hidden with the window and shows the range drawn.
    ASSERT_NE(w->Options(), nullptr);
    EXPECT_FALSE(w->Options()->isVisible());
    EXPECT_EQ(Texts({w->Options()->tb_XMin, w->Options()->tb_XMax}),
              (Strings{"-2.600000", "2.600000"}));
    // The last start-up step redraws the moments chart; its locks are ticked and disabled.
    EXPECT_EQ(w->tb_Ymax->text(), "17.0");
    EXPECT_TRUE(w->cb_LockSkewness->isChecked());
    EXPECT_FALSE(w->cb_LockSkewness->isEnabled());
    EXPECT_FALSE(w->tb_Ymax->isEnabled());
    EXPECT_TRUE(Rec().Messages.empty());
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(WindowTest, UnloadRemovesTheFilterAndTheOptionsDialog) {
    MExceptionHandler::InstallExceptionFilter();
    ASSERT_TRUE(MExceptionHandler::FilterInstalled());
    w->mnuQuit->trigger();
    EXPECT_FALSE(MExceptionHandler::FilterInstalled());
    EXPECT_EQ(w->Options(), nullptr);
}

// Start-up reads the stored options over the defaults; only 0 or 1 changes a flag.
TEST(WindowStartUp, StoredOptionsOverTheDefaults) {
    support::SetFace(nullptr);
    UsePrivateStore();
    const std::string saved = std::getenv("PONDERA_REGISTRY");
    QTemporaryDir dir;
    setenv("PONDERA_REGISTRY", (dir.path() + "/registry.sqlite3").toLocal8Bit().constData(), 1);
    RegistryStore::Reopen();
    AppSettings().Init("Qarvanto Labs, LLC\\Qarv Tools 3", "Pondera");
    auto start = [](const char* display) {
        AppSettings().SaveSetting(DisplayOptions::kSection, "AppDisplay", std::string(display));
        AppSettings().SaveSetting(DisplayOptions::kSection, "AppDecPlaces", std::string("2"));
        AppSettings().SaveSetting(DisplayOptions::kSection, "AppNumStDev", std::string("1"));
        return std::make_unique<frm_Pondera>();
    };
    auto decimal = start("0");
    EXPECT_EQ(decimal->tb_StDev->text(), "1.00");
    EXPECT_DOUBLE_EQ(decimal->RangeHigh, 1);
    decimal.reset();
    EXPECT_EQ(start("5")->tb_StDev->text(), "1.00E+00"); // neither 0 nor 1: scientific stays
    setenv("PONDERA_REGISTRY", saved.c_str(), 1);
    RegistryStore::Reopen();
}

// ---- distribution change ---------------------------------------------------

TEST_F(WindowTest, ChoosingADistributionShowsItsFieldsAndDefaults) {
    const std::tuple<const char*, QStringList, QStringList> rows[] = {
        {"Exponential", {"Scale:", "Minimum:"}, {"1", "0"}},
        {"LogNormal", {"Mean:", "Std. Deviation:", "Minimum:"}, {"0", "1", "0"}},
        {"Weibull", {"Shape:", "Scale:", "Minimum:"}, {"2", "10", "0"}},
        {"Uniform", {"Minimum:", "Maximum:"}, {"-1", "1"}},
        {"Triangular", {"Minimum:", "Likeliest:", "Maximum:"}, {"-1", "0.5", "1"}},
        {"Normal", {"Mean:", "Std. Deviation:"}, {"0", "1"}},
    };
    QLabel* labels[] = {w->lb_Param1, w->lb_Param2, w->lb_Param3, w->lb_Param4};
    QLineEdit* boxes[] = {w->tb_Param1, w->tb_Param2, w->tb_Param3, w->tb_Param4};
    for (const auto& [name, captions, texts] : rows) {
        SCOPED_TRACE(name);
        Type(w->tb_Param1, "123");
        Choose(name);
        QStringList shownCaptions, shownTexts;
        for (int i = 0; i < 4; ++i) {
            EXPECT_EQ(boxes[i]->isHidden(), labels[i]->isHidden()) << i;
            if (boxes[i]->isHidden()) continue;
            shownCaptions << labels[i]->text();
            shownTexts << boxes[i]->text();
        }
        EXPECT_EQ(shownCaptions, captions);
        EXPECT_EQ(shownTexts, texts);
        EXPECT_FALSE(w->but_Plot->isEnabled()) << "the change plots";
    }
    EXPECT_TRUE(Rec().Messages.empty());
}

TEST_F(WindowTest, AJohnsonNameOutsideMomentsModeHidesEveryField) {
    w->dd_Distribution->AddDistribution("Johnson SB");
    Type(w->tb_Param1, "7");
    Choose("Johnson SB");
    for (QLineEdit* box : {w->tb_Param1, w->tb_Param2, w->tb_Param3, w->tb_Param4})
        EXPECT_TRUE(box->isHidden());
    EXPECT_EQ(Text(w->tb_Param1), "7");
}

// ---- validation order, focus and selection -----------------------------------

struct BadInput {
    const char* Name;
    const char* Dist;
    const char* P1;
    const char* P2;
    const char* P3;
    const char* LSL; // nullptr = unticked
    const char* USL;
    const char* Message;
    const char* Title;
    const char* Focus;
    const char* Selected;
};

// Row names, not bytes, in the test list.
void PrintTo(const BadInput& c, std::ostream* os) {
    *os << c.Name;
}

class PlotChecks : public WindowTest, public ::testing::WithParamInterface<BadInput> {};

TEST_P(PlotChecks, StopWithTheMessageAndSelectTheField) {
    const BadInput& c = GetParam();
    Choose(c.Dist);
    Type(w->tb_Param1, c.P1);
    Type(w->tb_Param2, c.P2);
    if (c.P3) Type(w->tb_Param3, c.P3);
    if (c.LSL) Tick(w->cb_LSL, w->tb_LSL, c.LSL);
    if (c.USL) Tick(w->cb_USL, w->tb_USL, c.USL);
    const QImage before = Chart();
    const std::string meanBefore = Text(w->tb_Mean);
    Rec().Clear();
    w->activateWindow();
    PressPlot();

    ASSERT_EQ(Rec().Messages.size(), 1u) << testing::PrintToString(MessageTexts());
    EXPECT_EQ(LastMessage(), c.Message);
    EXPECT_EQ(LastTitle(), c.Title);
    ASSERT_NE(w->focusWidget(), nullptr);
    EXPECT_EQ(w->focusWidget()->objectName().toStdString(), c.Focus);
    EXPECT_EQ(w->findChild<QLineEdit*>(c.Focus)->selectedText().toStdString(), c.Selected);
    // Nothing drawn, no results changed, the Plot button still armed.
    EXPECT_EQ(Chart(), before);
    EXPECT_EQ(Text(w->tb_Mean), meanBefore);
    EXPECT_TRUE(w->but_Plot->isEnabled());
    EXPECT_TRUE(ErrorLabels().empty());
}

INSTANTIATE_TEST_SUITE_P(
    Window, PlotChecks,
    ::testing::Values(
        // The first of several bad fields wins.
        BadInput{"Param1BeforeParam2", "Normal", "abc", "xyz", nullptr, nullptr, nullptr,
                 "Mean: must be a number.", "Pondera Warning", "tb_Param1", "abc"},
        BadInput{"EmptyParam2", "Normal", "0", "", nullptr, nullptr, nullptr,
                 "Std. Deviation: must be a number.", "Pondera Warning", "tb_Param2", ""},
        BadInput{"HiddenThirdIsNotChecked_ThenRule", "Normal", "0", "0", nullptr, nullptr, nullptr,
                 "Standard deviation must be greater than zero.", "Pondera", "tb_Param2", "0"},
        BadInput{"ThirdShownAndChecked", "Triangular", "0", "0.5", "q", nullptr, nullptr,
                 "Maximum: must be a number.", "Pondera Warning", "tb_Param3", "q"},
        BadInput{"NumbersBeforeRules", "Weibull", "-1", "z", "0", nullptr, nullptr,
                 "Scale: must be a number.", "Pondera Warning", "tb_Param2", "z"},
        BadInput{"UniformReversed", "Uniform", "5", "4", nullptr, nullptr, nullptr,
                 "Minimum must be less than Maximum for a Uniform distribution.", "Pondera",
                 "tb_Param1", "5"},
        BadInput{"TriangularLikeliest", "Triangular", "0", "2", "1", nullptr, nullptr,
                 "Likeliest value must be between Minimum and Maximum for a Triangular "
                 "distribution.",
                 "Pondera", "tb_Param2", "2"},
        BadInput{"RulesBeforeLimits", "Exponential", "0", "0", nullptr, "abc", nullptr,
                 "Scale parameter for an Exponential distribution must be greater than zero.",
                 "Pondera", "tb_Param1", "0"},
        BadInput{"LSLBeforeUSL", "Normal", "0", "1", nullptr, "abc", "zz", "LSL must be a number.",
                 "Pondera Warning", "tb_LSL", "abc"},
        BadInput{"USL", "Normal", "0", "1", nullptr, "-1", "1e999", "USL must be a number.",
                 "Pondera Warning", "tb_USL", "1e999"}),
    [](const auto& info) { return std::string(info.param.Name); });

TEST_F(WindowTest, AnUntickedLimitAndAHiddenFieldAreNotChecked) {
    w->tb_LSL->setText("abc");    // disabled: unticked
    w->tb_Param3->setText("abc"); // hidden for the normal
    Type(w->tb_Param1, "1");
    QTest::keyClick(w->tb_Param1, Qt::Key_Return); // Enter in a field plots
    EXPECT_TRUE(Rec().Messages.empty());
    EXPECT_DOUBLE_EQ(w->RangeLow, 1 - 2.6);
    EXPECT_FALSE(w->but_Plot->isEnabled());
}

TEST_F(WindowTest, FocusActivatesItsFrameSelectsTheTextAndChecksTheFirstParameter) {
    w->activateWindow();
    w->tb_USL->setEnabled(true);
    Type(w->tb_USL, "2.5");
    w->tb_USL->setFocus(Qt::TabFocusReason);
    EXPECT_TRUE(w->qarvFrame_SpecLimits->IsActive());
    EXPECT_FALSE(w->qarvFrame_PDF->IsActive());
    EXPECT_EQ(w->tb_USL->selectedText().toStdString(), "2.5");
    Type(w->tb_Param1, "abc");
    w->tb_Param1->setFocus(Qt::TabFocusReason);
    EXPECT_TRUE(w->qarvFrame_PDF->IsActive());
    EXPECT_FALSE(w->qarvFrame_SpecLimits->IsActive());
    w->tb_Param2->setFocus(Qt::TabFocusReason); // leaving the first parameter with text warns
    EXPECT_EQ(MessageTexts(), Strings{"Mean: must be a number."});
    EXPECT_EQ(LastTitle(), "Pondera Warning");
    w->but_Plot->setEnabled(true);
    w->but_Plot->setFocus(Qt::TabFocusReason);
    for (auto* frame : w->findChildren<TitledFrame*>())
        EXPECT_FALSE(frame->IsActive());
}

// ---- the plot: range, grid, results ---------------------------------------------

struct RangeCase {
    const char* Name;
    const char* Dist;
    const char* P1;
    const char* P2;
    const char* P3;
    double K;        // standard deviations each side
    const char* LSL; // nullptr = unticked
    const char* Target;
    const char* USL;
    double Low, High; // expected range
};

void PrintTo(const RangeCase& c, std::ostream* os) {
    *os << c.Name;
}

class PlotRange : public WindowTest, public ::testing::WithParamInterface<RangeCase> {};

TEST_P(PlotRange, CoversTheCandidateTheTickedLimitsAndTheMinimum) {
    const RangeCase& c = GetParam();
    DisplayOptions::AppNumStDev = c.K;
    Choose(c.Dist);
    Type(w->tb_Param1, c.P1);
    Type(w->tb_Param2, c.P2);
    if (c.P3) Type(w->tb_Param3, c.P3);
    if (c.LSL) Tick(w->cb_LSL, w->tb_LSL, c.LSL);
    if (c.Target) Tick(w->cb_Target, w->tb_Target, c.Target);
    if (c.USL) Tick(w->cb_USL, w->tb_USL, c.USL);
    PressPlot();
    ASSERT_TRUE(Rec().Messages.empty()) << testing::PrintToString(MessageTexts());
    // The engine's gamma function (Lanczos) limits the Weibull figures.
    EXPECT_NEAR(w->RangeLow, c.Low, 1e-8);
    EXPECT_NEAR(w->RangeHigh, c.High, 1e-8);
    // Written back to the options and into the options dialog.
    EXPECT_DOUBLE_EQ(DisplayOptions::AppXMin, w->RangeLow);
    EXPECT_DOUBLE_EQ(DisplayOptions::AppXMax, w->RangeHigh);
    EXPECT_EQ(w->Options()->tb_XMin->text().toStdString(),
              support::Format(w->RangeLow, "0.000000"));
}

// Weibull 2, 10, 5: mean 5 + 10 Gamma(1.5) = 5 + 5 sqrt(pi), sd 10 sqrt(1 - pi/4).
const double kWeibullMean = 5 + 5 * std::sqrt(M_PI);
const double kWeibullSd = 10 * std::sqrt(1 - M_PI / 4);

INSTANTIATE_TEST_SUITE_P(
    Window, PlotRange,
    ::testing::Values(
        RangeCase{"MeanPlusMinusK", "Normal", "10", "2", nullptr, 2.6, nullptr, nullptr, nullptr,
                  10 - 5.2, 10 + 5.2},
        RangeCase{"TargetFarRight", "Normal", "0", "1", nullptr, 2.6, nullptr, "40", nullptr, -2.6,
                  40},
        RangeCase{"LSLLeftUSLInside", "Normal", "0", "1", nullptr, 3, "-5", nullptr, "1", -5, 3},
        RangeCase{"AllLimitsOneSide", "Normal", "0", "1", nullptr, 1, "7", "8", "9", -1, 9},
        RangeCase{"ExponentialMinimum", "Exponential", "1", "2", nullptr, 0.5, nullptr, nullptr,
                  nullptr, 2, 3.5},
        RangeCase{"WeibullMinimum", "Weibull", "2", "10", "5", 0.5, nullptr, nullptr, nullptr, 5,
                  kWeibullMean + 0.5 * kWeibullSd},
        RangeCase{"LogNormalMinimumAboveRange", "LogNormal", "0", "0.1", "100", 1, nullptr, nullptr,
                  nullptr, 100,
                  100 + std::exp(0.005) + std::exp(0.005) * std::sqrt(std::expm1(0.01))},
        RangeCase{"UniformAddsNothing", "Uniform", "0", "12", nullptr, 0.5, nullptr, nullptr,
                  nullptr, 6 - 0.5 * std::sqrt(12.0), 6 + 0.5 * std::sqrt(12.0)}),
    [](const auto& info) { return std::string(info.param.Name); });

TEST_F(WindowTest, FixedEndpointsAreTheCandidateRangeAndALimitWidensThem) {
    DisplayOptions::AppXRange = 1;
    DisplayOptions::AppXMin = DisplayOptions::AppXMax = 2; // alone they span nothing
    Tick(w->cb_USL, w->tb_USL, "6");
    EXPECT_TRUE(Rec().Messages.empty());
    EXPECT_DOUBLE_EQ(w->RangeLow, 2);
    EXPECT_DOUBLE_EQ(w->RangeHigh, 6);
}

TEST_F(WindowTest, ARangeWithoutWidthIsRefusedNotFaulted) {
    Choose("Uniform");
    const QImage uniform = Chart();
    Type(w->tb_Param1, "0");
    Type(w->tb_Param2, "0"); // equal ends pass the checks, but span nothing
    PressPlot();
    ASSERT_EQ(Rec().Messages.size(), 1u);
    EXPECT_EQ(LastTitle(), "Pondera Warning");
    EXPECT_NE(LastMessage().find("no width"), std::string::npos);
    EXPECT_EQ(Chart(), uniform);
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(WindowTest, TheGridStopsOneStepShortAndHoldsTheDensity) {
    Type(w->tb_Param1, "1");
    Type(w->tb_Param2, "2");
    PressPlot();
    ASSERT_EQ(w->PlotX.size(), 301u);
    const double low = 1 - 5.2, high = 1 + 5.2;
    EXPECT_NEAR(w->PlotX[1], low, 1e-12);
    EXPECT_NEAR(w->PlotX[300], high - (high - low) / 300, 1e-12);
    for (int i : {1, 77, 150, 151, 300})
        EXPECT_LT(RelErr(w->PlotY[i], PhiDensity((w->PlotX[i] - 1) / 2) / 2), 1e-12) << i;
    EXPECT_EQ(Text(w->tb_StDev), "2.000000E+00");
}

TEST_F(WindowTest, PNCFiguresFromTheTickedLimits) {
    Tick(w->cb_LSL, w->tb_LSL, "-3");
    const double tail = Phi(-3); // 0.0013498980316301
    EXPECT_LT(RelErr(Num(w->tb_LowerPNC), tail), 1e-6);
    EXPECT_EQ(Texts({w->tb_LowerPNC, w->tb_UpperPNC, w->tb_PNC}),
              (Strings{"1.349898E-03", "0.000000E+00", "1.349898E-03"}));
    Tick(w->cb_USL, w->tb_USL, "2");
    EXPECT_LT(RelErr(Num(w->tb_UpperPNC), Phi(-2)), 1e-6);
    EXPECT_LT(RelErr(Num(w->tb_PNC), tail + Phi(-2)), 1e-6);

    // Unticking both: zeros in the plain pattern in decimal display.
    DisplayOptions::AppDisplay = false;
    DisplayOptions::AppDecPlaces = 2;
    Click(w->cb_LSL);
    Click(w->cb_USL);
    EXPECT_EQ(Texts({w->tb_LowerPNC, w->tb_UpperPNC, w->tb_PNC}),
              (Strings{"0.00", "0.00", "0.00"}));
    EXPECT_FALSE(w->tb_LSL->isEnabled());
}

TEST_F(WindowTest, LimitsNotInOrderEmptyThePNCButStillDraw) {
    Tick(w->cb_LSL, w->tb_LSL, "5");
    Tick(w->cb_USL, w->tb_USL, "5");
    EXPECT_EQ(Texts({w->tb_LowerPNC, w->tb_UpperPNC, w->tb_PNC}), (Strings{"", "", ""}));
    EXPECT_DOUBLE_EQ(w->RangeHigh, 5);
    EXPECT_FALSE(w->but_Plot->isEnabled());
    EXPECT_TRUE(w->sh_LSL->Visible());
}

TEST_F(WindowTest, ThePlotButtonFollowsTheEditsOfTheInputsOnly) {
    QTest::keyClicks(w->tb_Param2, "5");
    EXPECT_TRUE(w->but_Plot->isEnabled());
    PressPlot();
    EXPECT_FALSE(w->but_Plot->isEnabled());
    // Outside moments mode the moment fields are outputs: editing them arms nothing.
    w->tb_Mean->setText("4");
    EXPECT_FALSE(w->but_Plot->isEnabled());
}

TEST_F(WindowTest, ViewTogglesRedrawWithoutAxes) {
    const QImage with = Chart();
    w->mnuXAxis->trigger();
    EXPECT_FALSE(w->ShowXAxis);
    EXPECT_FALSE(w->mnuXAxis->isChecked());
    // The x-axis tick labels sit below the baseline: that band is now blank.
    const QImage without = Chart();
    const int y0 = static_cast<int>(0.85 * without.height());
    const QRect band(static_cast<int>(without.width() * 0.15), y0 + 8,
                     static_cast<int>(without.width() * 0.7), 12);
    QImage white(band.size(), without.format());
    white.fill(Qt::white);
    EXPECT_EQ(without.copy(band), white);
    EXPECT_NE(with.copy(band), white);
    w->mnuXAxis->trigger();
    EXPECT_EQ(Chart(), with);
}

TEST_F(WindowTest, AFaultInOneActionGivesOneReport) {
    Choose("LogNormal");
    Type(w->tb_Param2, "15"); // the kurtosis, about exp(4 * 225), overflows; the rest does not
    PressPlot();
    ASSERT_EQ(Rec().Reports.size(), 1u);
    const auto labels = ErrorLabels();
    EXPECT_NE(std::find(labels.begin(), labels.end(), "Pondera.m_Distributions.Kurtosis"),
              labels.end());
    EXPECT_EQ(Text(w->tb_Kurtosis), "0.000000E+00");
    EXPECT_FALSE(w->but_Plot->isEnabled()) << "the rest of the plot went on";
    EXPECT_TRUE(Rec().Messages.empty());
}

TEST_F(WindowTest, ResizeRedrawsWithoutCheckingAgain) {
    Tick(w->cb_LSL, w->tb_LSL, "-1");
    Type(w->tb_Param1, "abc"); // not plotted: the resize must not complain
    const QSize before = w->pb_PDF->size();
    w->resize(w->width() - 200, w->height() - 100);
    QApplication::processEvents();
    const QImage& image = w->pb_PDF->Image();
    EXPECT_LT(image.width(), before.width());
    EXPECT_EQ(image.size(), w->pb_PDF->size());
    EXPECT_TRUE(Rec().Messages.empty());
    // The LSL line and marker are placed for the new width.
    EXPECT_NEAR(w->ChartGeometry.W, image.width(), 0.5);
    EXPECT_NEAR(w->sh_LSL->Left() + w->sh_LSL->Width() / 2.0, w->ChartGeometry.Px(-1), 1e-9);
}

TEST_F(WindowTest, TheUprightTitlesArePaintedReadingUpward) {
    // Text turned by 90 degrees covers a box taller than it is wide.
    for (PictureBox* pb : {w->pb_YTitle, w->pb_Lock}) {
        const QImage& image = pb->Image();
        const int back = qGray(image.pixel(0, 0));
        QRect ink;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (qGray(image.pixel(x, y)) < back - 80) ink |= QRect(x, y, 1, 1);
        ASSERT_TRUE(ink.isValid()) << pb->objectName().toStdString() << " is blank";
        EXPECT_GT(ink.height(), ink.width()) << pb->objectName().toStdString();
    }
}

// ---- dragging the spec-limit markers ---------------------------------------------

class DragTest : public WindowTest {
  protected:
    void SetUp() override {
        WindowTest::SetUp();
        Tick(w->cb_LSL, w->tb_LSL, "-1");
        Tick(w->cb_USL, w->tb_USL, "1");
        Rec().Clear();
    }
    QPoint On(MarkerShape* marker) const {
        return QPoint(static_cast<int>(marker->Left() + marker->Width() / 2.0), 8);
    }
};

TEST_F(DragTest, ThePointSequenceIs75WhileDraggingAnd500After) {
    EXPECT_EQ(w->NumPoints, 300);
    QTest::mousePress(w->pb_Slider, Qt::LeftButton, {}, On(w->sh_LSL));
    EXPECT_TRUE(w->DragLSL);
    EXPECT_EQ(w->NumPoints, 75);
    EXPECT_EQ(w->PlotX.size(), 76u);
    EXPECT_EQ(w->sh_LSL->FillColor(), 0x0000FFu);

    const auto& g = w->ChartGeometry;
    const int x = static_cast<int>(g.X0 + 0.2 * g.PlotWidth);
    const double expected = g.XLow + (x - 0.15 * g.W) * g.XRange / (0.775 * g.W);
    QTest::mouseMove(w->pb_Slider, QPoint(x, 8));
    EXPECT_EQ(Text(w->tb_LSL), support::Format(expected, "0.000000"));
    EXPECT_EQ(w->NumPoints, 75);
    EXPECT_NEAR(w->sh_LSL->Left(), g.Px(Num(w->tb_LSL)) - w->sh_LSL->Width() / 2.0, 1e-9);

    Release(w->pb_Slider, QPoint(x, 8));
    EXPECT_FALSE(w->DragLSL);
    EXPECT_EQ(w->NumPoints, 500);
    EXPECT_EQ(w->PlotX.size(), 501u);
    EXPECT_EQ(w->sh_LSL->FillColor(), 0u);
    EXPECT_LT(RelErr(Num(w->tb_LowerPNC), Phi(Num(w->tb_LSL))), 1e-6);
    EXPECT_TRUE(Rec().Messages.empty());
}

TEST_F(DragTest, APressBesideTheMarkerOrOnAnUntickedOneArmsNothing) {
    const QImage before = Chart();
    const QPoint beside(static_cast<int>(w->sh_LSL->Left() - 3), 8);
    PressMove(w->pb_Slider, beside);
    QTest::mouseMove(w->pb_Slider, QPoint(300, 8));
    EXPECT_FALSE(w->DragLSL);
    EXPECT_EQ(w->NumPoints, 300);
    EXPECT_EQ(Text(w->tb_LSL), "-1");
    EXPECT_EQ(Chart(), before);
    Release(w->pb_Slider, beside);

    Click(w->cb_LSL); // unticked; its marker is hidden but its place is known
    const int points = w->NumPoints;
    QTest::mousePress(w->pb_PDF, Qt::LeftButton, {}, On(w->sh_LSL));
    EXPECT_FALSE(w->DragLSL);
    EXPECT_EQ(w->NumPoints, points);
}

TEST_F(DragTest, TheUSLMarkerDragsTheUpperLimitAlone) {
    QTest::mousePress(w->pb_Slider, Qt::LeftButton, {}, On(w->sh_USL));
    const QPoint to(static_cast<int>(w->ChartGeometry.Px(2.0)), 8); // on the 75-point chart
    EXPECT_TRUE(w->DragUSL);
    EXPECT_FALSE(w->DragLSL);
    EXPECT_EQ(w->sh_USL->FillColor(), 0x0000FFu);
    QTest::mouseMove(w->pb_Slider, to);
    EXPECT_NEAR(Num(w->tb_USL), 2.0, w->ChartGeometry.XRange / w->ChartGeometry.PlotWidth);
    EXPECT_EQ(Text(w->tb_LSL), "-1");
    Release(w->pb_Slider, to);
    EXPECT_FALSE(w->DragUSL);
    EXPECT_EQ(w->sh_USL->FillColor(), 0u);
    EXPECT_LT(RelErr(Num(w->tb_UpperPNC), Phi(-Num(w->tb_USL))), 1e-6);
}

TEST_F(DragTest, DraggingLSLPastUSLEmptiesThePNC) {
    const QPoint past(static_cast<int>(w->ChartGeometry.Px(1.5)), 100);
    QTest::mousePress(w->pb_PDF, Qt::LeftButton, {}, On(w->sh_LSL));
    QTest::mouseMove(w->pb_PDF, past);
    EXPECT_GT(Num(w->tb_LSL), 1);
    EXPECT_EQ(Text(w->tb_PNC), "");
    Release(w->pb_PDF, past);
    EXPECT_EQ(Text(w->tb_PNC), "");
    EXPECT_TRUE(Rec().Messages.empty());
}
