// The main window in moments mode and its skewness-kurtosis chart.
#include "tests/ui/main/WindowFixture.h"

#include <QComboBox>

using testing_support::RelErr;

namespace {

// Johnson SU and SB through their normal transforms, written out here.
double SuDensity(double x, double d, double g, double l, double xi) {
    const double y = (x - xi) / l;
    const double z = g + d * std::asinh(y);
    return d / (l * std::sqrt(y * y + 1)) * PhiDensity(z);
}
double SuCdf(double x, double d, double g, double l, double xi) {
    return Phi(g + d * std::asinh((x - xi) / l));
}
double SbCdf(double x, double d, double g, double l, double xi) {
    const double y = (x - xi) / l;
    return Phi(g + d * std::log(y / (1 - y)));
}

} // namespace

class MomentsTest : public WindowTest {
  protected:
    void SetUp() override {
        WindowTest::SetUp();
        Click(w->cb_DrawbyMoments);
        Rec().Clear();
    }
    void Moments(const char* mean, const char* sd, const char* skew, const char* kurt) {
        Type(w->tb_Mean, mean);
        Type(w->tb_StDev, sd);
        Type(w->tb_Skewness, skew);
        Type(w->tb_Kurtosis, kurt);
    }
    std::string Status() const { return w->StatusPanel1->text().toStdString(); }
};

TEST_F(MomentsTest, TickingSwapsInputsAndOutputs) {
    EXPECT_EQ(Items(), QStringList({"Johnson SB", "Johnson SL", "Johnson SU", "Normal"}));
    EXPECT_TRUE(w->dd_Distribution->Locked());
    for (QLineEdit* box : {w->tb_Param1, w->tb_Param2, w->tb_Param3, w->tb_Param4})
        EXPECT_TRUE(!box->isHidden() && box->isReadOnly()) << box->objectName().toStdString();
    for (QLineEdit* box : {w->tb_Mean, w->tb_StDev, w->tb_Skewness, w->tb_Kurtosis})
        EXPECT_FALSE(box->isReadOnly());
    EXPECT_FALSE(w->cb_LockSkewness->isChecked() || w->cb_LockKurtosis->isChecked());
    EXPECT_TRUE(w->cb_LockSkewness->isEnabled() && w->tb_Ymax->isEnabled());
    // The normal's own moments fit the "Normal" type: delta 1/sd, gamma -mean/sd.
    EXPECT_EQ(w->dd_Distribution->Text(), "Normal");
    EXPECT_EQ(Text(w->tb_Param1), "1.000000E+00");
    EXPECT_EQ(Status(), "Success");
    EXPECT_FALSE(w->but_Plot->isEnabled());
}

TEST_F(MomentsTest, AnSUFitIsDrawnWithItsOwnDensityAndPNC) {
    // beta2 = 3.5 lies above the lognormal line at skewness 0.5 (3.446): SU.
    Moments("10", "2", "0.5", "3.5");
    EXPECT_TRUE(w->but_Plot->isEnabled());
    Tick(w->cb_LSL, w->tb_LSL, "6");
    Tick(w->cb_USL, w->tb_USL, "15");
    ASSERT_TRUE(Rec().Messages.empty()) << testing::PrintToString(MessageTexts());
    EXPECT_EQ(w->dd_Distribution->Text(), "Johnson SU");
    const double d = Num(w->tb_Param1), g = Num(w->tb_Param2), l = Num(w->tb_Param3);
    const double xi = Num(w->tb_Param4);
    // Shown to 7 significant digits, so the references agree to about 1e-5.
    for (int i : {1, 60, 150, 240, 300})
        EXPECT_LT(RelErr(w->PlotY[i], SuDensity(w->PlotX[i], d, g, l, xi)), 1e-5) << i;
    EXPECT_LT(RelErr(Num(w->tb_LowerPNC), SuCdf(6, d, g, l, xi)), 1e-4);
    EXPECT_LT(RelErr(Num(w->tb_UpperPNC), 1 - SuCdf(15, d, g, l, xi)), 1e-4);
    EXPECT_EQ(Status(), "Success");
}

TEST_F(MomentsTest, AnSBFitGivesItsPNC) {
    Moments("0", "1", "0.5", "2.8"); // below the lognormal line: bounded
    PressPlot();
    Tick(w->cb_USL, w->tb_USL, "1.5");
    EXPECT_EQ(w->dd_Distribution->Text(), "Johnson SB");
    const double d = Num(w->tb_Param1), g = Num(w->tb_Param2), l = Num(w->tb_Param3);
    EXPECT_LT(RelErr(Num(w->tb_UpperPNC), 1 - SbCdf(1.5, d, g, l, Num(w->tb_Param4))), 1e-4);
}

TEST_F(MomentsTest, ANormalFitGetsNormalPNCFigures) {
    // Delta and gamma describe z = gamma + delta x; the figures must be those of
    // the normal with the typed mean and standard deviation.
    Moments("10", "2", "0", "3");
    PressPlot();
    Tick(w->cb_LSL, w->tb_LSL, "4");
    Tick(w->cb_USL, w->tb_USL, "13");
    EXPECT_EQ(w->dd_Distribution->Text(), "Normal");
    // delta = 1 / sd, gamma = -mean / sd, in the scientific display.
    EXPECT_EQ(Texts({w->tb_Param1, w->tb_Param2}),
              (std::vector<std::string>{"5.000000E-01", "-5.000000E+00"}));
    EXPECT_LT(RelErr(Num(w->tb_LowerPNC), Phi(-3)), 1e-6);
    EXPECT_LT(RelErr(Num(w->tb_UpperPNC), Phi(-1.5)), 1e-6);
    EXPECT_LT(RelErr(Num(w->tb_PNC), Phi(-3) + Phi(-1.5)), 1e-6);
    EXPECT_LT(RelErr(w->PlotY[151], PhiDensity((w->PlotX[151] - 10) / 2) / 2), 1e-12);
}

TEST_F(MomentsTest, TheGridPinsItsLastPointToXMax) {
    DisplayOptions::AppNumStDev = 3;
    Moments("0", "1", "0", "3");
    PressPlot();
    Tick(w->cb_LSL, w->tb_LSL, "-5");
    EXPECT_DOUBLE_EQ(w->RangeLow, -5);
    EXPECT_DOUBLE_EQ(w->RangeHigh, 3);
    ASSERT_EQ(w->PlotX.size(), 301u);
    EXPECT_DOUBLE_EQ(w->PlotX[1], -5);
    EXPECT_NEAR(w->PlotX[299], -5 + 298 * 8.0 / 300, 1e-12);
    EXPECT_DOUBLE_EQ(w->PlotX[300], 3);
}

TEST_F(MomentsTest, AFailedFitKeepsTheOldChartAndFields) {
    Moments("0", "1", "0.3", "0.5");
    const QImage before = Chart();
    const std::string delta = Text(w->tb_Param1);
    PressPlot();
    EXPECT_EQ(Status(), "Error: Kurtosis < SQRT(Skewness) + 1");
    EXPECT_EQ(Chart(), before);
    EXPECT_EQ(Text(w->tb_Param1), delta);
    EXPECT_TRUE(Rec().Messages.empty());
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(MomentsTest, EachMomentFieldIsCheckedInOrderAndTheLimitsLast) {
    const std::pair<QLineEdit*, const char*> rows[] = {
        {w->tb_Mean, "Mean must be a number."},
        {w->tb_StDev, "Std. Dev. must be a number."},
        {w->tb_Skewness, "Skewness must be a number."},
        {w->tb_Kurtosis, "Kurtosis must be a positive number greater than or equal to 1."},
        {w->tb_Target, "Target must be a number."},
    };
    for (const auto& [box, message] : rows) {
        SCOPED_TRACE(message);
        Moments("0", "1", "0", "3");
        if (box == w->tb_Target)
            Click(w->cb_Target);
        else if (box != w->tb_Kurtosis)
            Type(w->tb_Kurtosis, "x"); // a later bad field
        Type(box, "abc");
        const QImage before = Chart();
        Rec().Clear();
        PressPlot();
        EXPECT_EQ(MessageTexts(), std::vector<std::string>{message});
        EXPECT_EQ(LastTitle(), "Pondera Warning");
        EXPECT_EQ(w->focusWidget(), box);
        EXPECT_EQ(box->selectedText().toStdString(), "abc");
        EXPECT_EQ(Chart(), before);
    }
}

TEST_F(MomentsTest, UntickingRestoresTheClassicalView) {
    Moments("0", "1", "0.5", "3.5");
    PressPlot();
    Click(w->cb_DrawbyMoments);
    for (QCheckBox* lock : {w->cb_LockSkewness, w->cb_LockKurtosis})
        EXPECT_TRUE(lock->isChecked() && !lock->isEnabled()) << lock->objectName().toStdString();
    EXPECT_FALSE(w->tb_Ymax->isEnabled());
    EXPECT_EQ(w->dd_Distribution->count(), 6);
    EXPECT_EQ(w->dd_Distribution->Text(), "Normal");
    EXPECT_FALSE(w->dd_Distribution->Locked());
    EXPECT_EQ(Text(w->tb_Param2), "1");
    EXPECT_TRUE(w->tb_Param3->isHidden());
    EXPECT_FALSE(w->tb_Param1->isReadOnly());
    EXPECT_TRUE(w->tb_Mean->isReadOnly());
    EXPECT_EQ(Status(), "");
    EXPECT_TRUE(Rec().Messages.empty());
}

TEST_F(MomentsTest, ChoosingWhileTickedLeavesTheFields) {
    const std::string delta = Text(w->tb_Param1);
    w->dd_Distribution_Change();
    EXPECT_EQ(Text(w->tb_Param1), delta);
    EXPECT_EQ(w->lb_Param1->text(), "Delta:");
}

// ---- the skewness-kurtosis chart ---------------------------------------------------

namespace {
// The handlers' mapping, written out: x = S - SkewMin over the span times W,
// y = H - (K - KurtMin) / (KurtMax - KurtMin) H.
double YOf(double k, double kMin, double kMax, double h) {
    return h - (k - kMin) / (kMax - kMin) * h;
}
} // namespace

TEST_F(WindowTest, TheChartRedrawPutsItsAxisEndsBack) {
    w->tb_Ymax->setText("99");
    w->PlotSkewKurt(-4, 4);
    EXPECT_EQ((QStringList{w->lb_XMin->text(), w->lb_XMax->text(), w->lb_YMin->text(),
                           w->tb_Ymax->text()}),
              (QStringList{"-4.0", "4.0", "1.0", "17.0"}));
    // Drawn half a marker low; a lock click centres it.
    const double h = w->pb_SkewKurt->ScaleHeight();
    const double y = YOf(3, 1, 17, h);
    EXPECT_NEAR(w->sh_SkewKurt->Top(), y + w->sh_SkewKurt->Height() / 2.0, 1e-9);
    w->cb_LockSkewness_Click();
    const double yLock = YOf(3, 1, 4, h); // the lock click also sets tb_Ymax to 4
    EXPECT_NEAR(w->sh_SkewKurt->Top(), yLock - w->sh_SkewKurt->Height() / 2.0, 1e-9);
}

TEST_F(WindowTest, TheLockClickRoundsTheAxisTopHalfToEven) {
    for (const auto& [kurtosis, ymax] : {std::pair{"3.000000E+00", "4"},
                                         {"5.000000E+00", "8"},
                                         {"9", "14"},
                                         {"1.8", "3"},
                                         {"-2", "3"}}) {
        w->tb_Kurtosis->setText(kurtosis);
        w->cb_LockKurtosis_Click();
        EXPECT_EQ(w->tb_Ymax->text().toStdString(), ymax) << kurtosis;
    }
    // Both locks draw their lines through the marker's centre, in black.
    w->tb_Skewness->setText("0");
    w->tb_Kurtosis->setText("3");
    w->cb_LockKurtosis_Click();
    const int cx = static_cast<int>(w->pb_SkewKurt->ScaleWidth() / 2.0);
    EXPECT_EQ(w->pb_SkewKurt->GetPixel(cx, 5), 0u);
    const int cy = static_cast<int>(YOf(3, 1, 4, w->pb_SkewKurt->ScaleHeight()));
    EXPECT_EQ(w->pb_SkewKurt->GetPixel(8, cy), 0u);
}

TEST_F(WindowTest, OutsideMomentsModeTheChartOnlyDisplays) {
    const std::string skew = Text(w->tb_Skewness);
    const double left = w->sh_SkewKurt->Left();
    PressMove(w->pb_SkewKurt, QPoint(86, 20));
    QTest::mouseMove(w->pb_SkewKurt, QPoint(100, 20));
    Release(w->pb_SkewKurt, QPoint(100, 20));
    EXPECT_EQ(Text(w->tb_Skewness), skew);
    EXPECT_EQ(w->sh_SkewKurt->Left(), left);
    EXPECT_EQ(w->NumPoints, 300);
}

TEST_F(MomentsTest, DraggingOnWhiteRefitsWithFiftyPointsThenThreeHundred) {
    Moments("0", "1", "0", "3");
    PressPlot();
    const double wd = w->pb_SkewKurt->ScaleWidth(), h = w->pb_SkewKurt->ScaleHeight();
    const QPoint top(static_cast<int>(wd / 2), 10);
    ASSERT_EQ(w->pb_SkewKurt->GetPixel(top.x(), top.y()), 0xFFFFFFu);
    QTest::mousePress(w->pb_SkewKurt, Qt::LeftButton, {}, top);
    EXPECT_EQ(w->sh_SkewKurt->FillColor(), 0xFFFFFFu);
    QTest::mouseMove(w->pb_SkewKurt, top);
    const double skew = top.x() / wd * 8 - 4;
    const double kurt = 17 - top.y() / h * 16;
    EXPECT_EQ(Text(w->tb_Skewness), support::Format(skew, "0.000000E+00"));
    EXPECT_EQ(Text(w->tb_Kurtosis), support::Format(kurt, "0.000000E+00"));
    EXPECT_NEAR(w->sh_SkewKurt->Left(), top.x() - w->sh_SkewKurt->Width() / 2.0, 1e-9);
    EXPECT_NEAR(w->sh_SkewKurt->Top(), top.y() - w->sh_SkewKurt->Height() / 2.0, 1e-9);
    EXPECT_EQ(w->NumPoints, 50);
    EXPECT_EQ(w->PlotX.size(), 51u);
    EXPECT_EQ(w->dd_Distribution->Text(), "Johnson SU");

    Release(w->pb_SkewKurt, top);
    EXPECT_EQ(w->NumPoints, 300);
    EXPECT_EQ(w->PlotX.size(), 301u);
    EXPECT_EQ(w->sh_SkewKurt->FillColor(), 0u);
    EXPECT_TRUE(Rec().Messages.empty());
}

TEST_F(MomentsTest, TheGreyRegionIsRefused) {
    Moments("0", "1", "0", "3");
    PressPlot();
    const double h = w->pb_SkewKurt->ScaleHeight();
    const QPoint grey(6, static_cast<int>(h) - 6); // skewness near -4, kurtosis near 1
    ASSERT_NE(w->pb_SkewKurt->GetPixel(grey.x(), grey.y()), 0xFFFFFFu);
    const double left = w->sh_SkewKurt->Left(), top = w->sh_SkewKurt->Top();
    PressMove(w->pb_SkewKurt, grey);
    EXPECT_EQ(Texts({w->tb_Skewness, w->tb_Kurtosis}), (std::vector<std::string>{"0", "3"}));
    EXPECT_EQ(w->sh_SkewKurt->Left(), left);
    EXPECT_EQ(w->sh_SkewKurt->Top(), top);
    EXPECT_EQ(w->NumPoints, 300);
    Release(w->pb_SkewKurt, grey);
}

TEST_F(MomentsTest, ASkewnessLockKeepsTheMarkerOnItsLine) {
    Moments("0", "1", "0.5", "4");
    PressPlot();
    Click(w->cb_LockSkewness);
    EXPECT_TRUE(w->tb_Skewness->isReadOnly());
    const double wd = w->pb_SkewKurt->ScaleWidth();
    const double lineX = (0.5 + 4) / 8 * wd;
    const QPoint p(static_cast<int>(wd * 0.75), 30);
    ASSERT_EQ(w->pb_SkewKurt->GetPixel(p.x(), p.y()), 0xFFFFFFu);
    PressMove(w->pb_SkewKurt, p);
    EXPECT_EQ(Text(w->tb_Skewness), "0.5");
    EXPECT_NE(Text(w->tb_Kurtosis), "4");
    EXPECT_NEAR(w->sh_SkewKurt->Left() + w->sh_SkewKurt->Width() / 2.0, lineX, 1e-9);
    Release(w->pb_SkewKurt, p);
}

TEST_F(MomentsTest, ANonNumericAxisTopWarnsOnMove) {
    w->tb_Ymax->setText("x");
    PressMove(w->pb_SkewKurt, QPoint(80, 20));
    ASSERT_EQ(Rec().Messages.size(), 1u);
    EXPECT_EQ(LastMessage(), "Maximum Kurtosis value must be a positive number greater than 1");
    EXPECT_EQ(LastTitle(), "Pondera Warning");
    EXPECT_EQ(w->tb_Ymax->selectedText(), "x");
    Release(w->pb_SkewKurt, QPoint(80, 20));
}

TEST_F(MomentsTest, AZeroStandardDeviationHasNothingToDraw) {
    Moments("5", "0", "0", "3");
    const QImage before = Chart();
    PressPlot();
    ASSERT_EQ(Rec().Messages.size(), 1u);
    EXPECT_NE(LastMessage().find("no width"), std::string::npos);
    EXPECT_EQ(Chart(), before);
    EXPECT_EQ(Status(), "Success"); // the fit's own message (a two-point ST curve)
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(MomentsTest, AFaultMidRunIsReportedAndClearsTheBusyStatus) {
    Moments("1e308", "1e308", "0", "3");
    PressPlot();
    EXPECT_FALSE(ErrorLabels().empty());
    EXPECT_NE(Status(), "Calculating...");
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
}
