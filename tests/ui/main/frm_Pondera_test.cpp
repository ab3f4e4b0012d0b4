// The main window end to end, one test per user path through the real widgets;
// the decisions behind each path are tested in the units' own files.
#include "tests/ui/main/WindowFixture.h"

#include "tests/helpers/Reference.h"
#include "ui/main/frm_Data.h"
#include "ui/options/frm_Options.h"

#include <QAction>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QMouseEvent>
#include <QPlainTextEdit>

using reference::NormalCdf;
using testing_support::RelErr;
using Strings = std::vector<std::string>;

TEST_F(WindowTest, StartsWithTheNormalDrawnAndTheChartLocked) {
    EXPECT_EQ(Items(), QStringList({"Normal", "Exponential", "LogNormal", "Uniform", "Triangular",
                                    "Weibull", "Johnson SB", "Johnson SL", "Johnson SU"}));
    EXPECT_EQ(Texts({w->tb_Mean, w->tb_StDev, w->tb_Kurtosis, w->tb_PNC}),
              (Strings{"0.000000E+00", "1.000000E+00", "3.000000E+00", "0.000000E+00"}));
    EXPECT_FALSE(w->but_Plot->isEnabled());
    // The options dialog is loaded hidden and shows the range drawn.
    ASSERT_NE(w->Options(), nullptr);
    EXPECT_FALSE(w->Options()->isVisible());
    EXPECT_EQ(Texts({w->Options()->tb_XMin, w->Options()->tb_XMax}),
              (Strings{"-2.600000", "2.600000"}));
    EXPECT_EQ(w->tb_Ymax->text(), "17.0");
    EXPECT_TRUE(w->cb_LockSkewness->isChecked() && !w->cb_LockSkewness->isEnabled());
    EXPECT_TRUE(Rec().Messages.empty());
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(WindowTest, PlotDrawsTheDensityAndTheFigures) {
    Choose("Weibull");
    EXPECT_EQ(frm_Pondera::Caption(w->lb_Param3), "Minimum:");
    Choose("Normal");
    EXPECT_TRUE(w->tb_Param3->isHidden());
    Type(w->tb_Param1, "1");
    Type(w->tb_Param2, "2");
    EXPECT_TRUE(w->but_Plot->isEnabled());
    Tick(w->cb_LSL, w->tb_LSL, "-5");
    Tick(w->cb_USL, w->tb_USL, "5");
    EXPECT_FALSE(w->but_Plot->isEnabled());
    EXPECT_DOUBLE_EQ(w->RangeLow, -5);
    EXPECT_DOUBLE_EQ(w->RangeHigh, 1 + 5.2);
    EXPECT_LT(RelErr(Num(w->tb_PNC), NormalCdf(-3) + NormalCdf(-2)), 1e-6);
    EXPECT_EQ(Text(w->tb_Mean), "1.000000E+00");
    EXPECT_TRUE(w->sh_LSL->Visible() && w->sh_USL->Visible());
    // Limits out of order: no figures, the chart is still drawn.
    Tick(w->cb_LSL, w->tb_LSL, "5");
    EXPECT_EQ(Texts({w->tb_LowerPNC, w->tb_UpperPNC, w->tb_PNC}), (Strings{"", "", ""}));
    EXPECT_DOUBLE_EQ(w->RangeHigh, 1 + 5.2);
    EXPECT_TRUE(Rec().Messages.empty());
}

TEST_F(WindowTest, AFailedCheckKeepsTheChartAndSelectsTheField) {
    const QImage before = Chart();
    Type(w->tb_Param2, "abc");
    PressPlot();
    EXPECT_EQ(LastMessage(), "Std. Deviation: must be a number.");
    EXPECT_EQ(LastTitle(), "Pondera Warning");
    EXPECT_EQ(QApplication::focusWidget(), w->tb_Param2);
    EXPECT_EQ(w->tb_Param2->selectedText(), "abc");
    EXPECT_EQ(Chart(), before);
    EXPECT_TRUE(w->but_Plot->isEnabled());
    // A distribution's own rule: its message, the focus on its field.
    Type(w->tb_Param2, "-1");
    PressPlot();
    EXPECT_EQ(QApplication::focusWidget(), w->tb_Param2);
    EXPECT_EQ(Chart(), before);
    EXPECT_TRUE(ErrorLabels().empty());
}

TEST_F(WindowTest, DraggingTheLSLMarkerMovesTheLimitLive) {
    Tick(w->cb_LSL, w->tb_LSL, "-1");
    Tick(w->cb_USL, w->tb_USL, "1");
    const QPoint on(static_cast<int>(w->sh_LSL->Left() + w->sh_LSL->Width() / 2.0), 8);
    QTest::mousePress(w->pb_Slider, Qt::LeftButton, {}, on);
    EXPECT_TRUE(w->DragLSL);
    EXPECT_EQ(w->PlotX.size(), 76u);
    EXPECT_EQ(w->sh_LSL->FillColor(), 0x0000FFu);

    const DensityChart::Geometry g = w->ChartGeometry;
    const int x = static_cast<int>(g.X0 + 0.2 * g.PlotWidth);
    QTest::mouseMove(w->pb_Slider, QPoint(x, 8));
    EXPECT_EQ(Text(w->tb_LSL), support::Format(g.ValueAtPixel(x), "0.000000"));
    EXPECT_EQ(w->NumPoints, 75);

    Release(w->pb_Slider, QPoint(x, 8));
    EXPECT_FALSE(w->DragLSL);
    EXPECT_EQ(w->PlotX.size(), 501u);
    EXPECT_EQ(w->sh_LSL->FillColor(), 0u);
    EXPECT_LT(RelErr(Num(w->tb_LowerPNC), NormalCdf(Num(w->tb_LSL))), 1e-6);
    EXPECT_EQ(Text(w->tb_USL), "1");
    EXPECT_TRUE(Rec().Messages.empty());
}

// Each key is a drag step of one pixel of the chart, ten with Shift, read with
// the geometry of the last drawing as a pointer's would be.
TEST_F(WindowTest, ArrowKeysDragAFocusedMarker) {
    Tick(w->cb_LSL, w->tb_LSL, "-1");
    const double x = w->sh_LSL->Left() + w->sh_LSL->Width() / 2.0;
    const DensityChart::Geometry g = w->ChartGeometry;
    w->sh_LSL->setFocus(Qt::TabFocusReason);
    QTest::keyPress(w->sh_LSL, Qt::Key_Right);
    EXPECT_TRUE(w->DragLSL);
    EXPECT_EQ(w->PlotX.size(), 76u);
    EXPECT_EQ(w->sh_LSL->FillColor(), 0x0000FFu);
    EXPECT_NEAR(Num(w->tb_LSL), -1 + g.XRange / g.PlotWidth, 1e-6);
    const DensityChart::Geometry g75 = w->ChartGeometry;
    QTest::keyPress(w->sh_LSL, Qt::Key_Left, Qt::ShiftModifier);
    EXPECT_NEAR(Num(w->tb_LSL), g75.ValueAtPixel(x + 1 - 10), 1e-6);
    QTest::keyRelease(w->sh_LSL, Qt::Key_Left, Qt::ShiftModifier);
    EXPECT_FALSE(w->DragLSL);
    EXPECT_TRUE(Rec().Messages.empty());
}

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

TEST_F(MomentsTest, TheFitIsShownAndDrawnAndUntickingRestoresTheView) {
    EXPECT_EQ(Items(), QStringList({"Johnson SB", "Johnson SL", "Johnson SU", "Normal"}));
    EXPECT_TRUE(w->tb_Param1->isReadOnly() && !w->tb_Mean->isReadOnly());
    Moments("10", "2", "0", "3");
    Tick(w->cb_LSL, w->tb_LSL, "4");
    Tick(w->cb_USL, w->tb_USL, "13");
    EXPECT_EQ(w->dd_Distribution->Text(), "Normal");
    EXPECT_EQ(Status(), "Success");
    EXPECT_EQ(Texts({w->tb_Param1, w->tb_Param2}), (Strings{"5.000000E-01", "-5.000000E+00"}));
    EXPECT_LT(RelErr(Num(w->tb_UpperPNC), NormalCdf(-1.5)), 1e-6);
    // A failed fit: its message in the status bar, the chart kept.
    const QImage before = Chart();
    Type(w->tb_Kurtosis, "0.5");
    PressPlot();
    EXPECT_NE(Status().find("Error"), std::string::npos);
    EXPECT_EQ(Chart(), before);

    Click(w->cb_DrawbyMoments);
    EXPECT_EQ(w->dd_Distribution->count(), 9);
    EXPECT_EQ(w->dd_Distribution->Text(), "Normal");
    EXPECT_EQ(Text(w->tb_Param2), "1");
    EXPECT_TRUE(w->cb_LockKurtosis->isChecked() && !w->cb_LockKurtosis->isEnabled());
    EXPECT_TRUE(w->tb_Mean->isReadOnly());
    EXPECT_EQ(Status(), "");
}

TEST_F(MomentsTest, DraggingOnTheChartRefitsAndALockKeepsItsCoordinate) {
    Moments("0", "1", "0.5", "4");
    PressPlot();
    Click(w->cb_LockSkewness);
    EXPECT_TRUE(w->tb_Skewness->isReadOnly());
    const double wd = w->pb_SkewKurt->ScaleWidth();
    const QPoint p(static_cast<int>(wd * 0.75), 30);
    ASSERT_EQ(w->pb_SkewKurt->GetPixel(p.x(), p.y()), 0xFFFFFFu);
    PressMove(w->pb_SkewKurt, p);
    EXPECT_EQ(w->sh_SkewKurt->FillColor(), 0xFFFFFFu);
    EXPECT_EQ(Text(w->tb_Skewness), "0.5");
    EXPECT_NE(Text(w->tb_Kurtosis), "4");
    EXPECT_NEAR(w->sh_SkewKurt->Left() + w->sh_SkewKurt->Width() / 2.0, (0.5 + 4) / 8 * wd, 1e-9);
    EXPECT_EQ(w->PlotX.size(), 51u);
    Release(w->pb_SkewKurt, p);
    EXPECT_EQ(w->PlotX.size(), 301u);
    EXPECT_EQ(w->sh_SkewKurt->FillColor(), 0u);

    // The grey region is refused.
    const QPoint grey(6, static_cast<int>(w->pb_SkewKurt->ScaleHeight()) - 6);
    const std::string kurt = Text(w->tb_Kurtosis);
    PressMove(w->pb_SkewKurt, grey);
    EXPECT_EQ(Text(w->tb_Kurtosis), kurt);
    EXPECT_EQ(w->NumPoints, 300);
    Release(w->pb_SkewKurt, grey);
    EXPECT_TRUE(Rec().Messages.empty());
}

TEST_F(WindowTest, FittingToDataDrawsTheCurveOverItsHistogram) {
    w->mnuFitToData->trigger();
    frm_Data* d = w->DataDialog();
    ASSERT_TRUE(d && d->isVisible());
    const QImage before = Chart();
    d->tb_Data->setPlainText("width\n1\n2\nabc\n");
    Click(d->but_Buttons->button(QDialogButtonBox::Ok));
    EXPECT_EQ(LastMessage(), "line 4: \"abc\" is not a number");
    EXPECT_TRUE(d->isVisible());
    EXPECT_EQ(Chart(), before);
    EXPECT_FALSE(w->cb_DrawbyMoments->isChecked());

    // 1..8: mean 4.5, s = sqrt(6), skewness 0, kurtosis 48.5625 / 5.25^2.
    d->tb_Data->setPlainText("width\n1\n2\n3\n4\n\n5\n6\n7\n8\n");
    Click(d->but_Buttons->button(QDialogButtonBox::Ok));
    EXPECT_FALSE(d->isVisible());
    EXPECT_TRUE(w->cb_DrawbyMoments->isChecked());
    EXPECT_EQ(Texts({w->tb_Mean, w->tb_StDev, w->tb_Skewness, w->tb_Kurtosis}),
              (Strings{"4.500000E+00", "2.449490E+00", "0.000000E+00", "1.761905E+00"}));
    EXPECT_DOUBLE_EQ(w->Current.StDev, std::sqrt(6.0)); // fitted exactly, not as shown
    EXPECT_EQ(w->dd_Distribution->Text(), "Johnson SB");
    // Two bins of four over 1..8, each 4 / (8 x 3.5) high.
    EXPECT_EQ(w->HistogramHeights, (std::vector<double>{4 / 28.0, 4 / 28.0}));
    EXPECT_TRUE(w->sh_DataPoint->Visible());
    w->mnuClearData->trigger();
    EXPECT_TRUE(w->HistogramHeights.empty());
    EXPECT_FALSE(w->sh_DataPoint->Visible() || w->mnuClearData->isEnabled());
    EXPECT_TRUE(ErrorLabels().empty());
}

// The chart's paths end to end; the suite also runs under a real X server.
class EndToEndChart : public WindowTest {
  protected:
    // The pointer moved over the chart with no button held, delivered at once
    // (on a real X server QTest's move arrives later, through the server).
    void Hover(QPoint p) {
        QMouseEvent move(QEvent::MouseMove, QPointF(p), QPointF(w->pb_PDF->mapToGlobal(p)),
                         Qt::NoButton, Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(w->pb_PDF, &move);
    }
    // A mid-grey pixel (not the black curve, not the background) within two
    // rows of (x, y) on the chart.
    bool GreyNear(double x, double y) {
        for (int dy = -2; dy <= 2; ++dy) {
            const uint32_t p = w->pb_PDF->GetPixel(static_cast<int>(std::lround(x)),
                                                   static_cast<int>(std::lround(y)) + dy);
            const int r = p & 0xFF, g = p >> 8 & 0xFF, b = p >> 16 & 0xFF;
            if (r > 0x40 && r < 0xE0 && std::abs(r - g) < 8 && std::abs(g - b) < 8) return true;
        }
        return false;
    }
};

TEST_F(EndToEndChart, TheReadoutFollowsThePointerWithoutRedrawing) {
    const DensityChart::Geometry g = w->ChartGeometry;
    const uint64_t drawn = w->pb_PDF->Generation();
    const int px = static_cast<int>(g.X0 + 0.9 * g.PlotWidth); // the upper tail, x near 2
    Hover(QPoint(px, 100));
    const double x = g.ValueAtPixel(px);
    const std::string shown = w->StatusPanel2->text().toStdString();
    for (double v : {x, reference::NormalDensity(x), NormalCdf(x), NormalCdf(-x)})
        EXPECT_NE(shown.find(support::Format(v, DisplayOptions::Pattern())), std::string::npos)
            << v << " in " << shown;
    EXPECT_EQ(w->pb_PDF->Generation(), drawn);
    // Nothing left of the plot, nothing once the pointer has left.
    Hover(QPoint(static_cast<int>(g.X0) - 5, 100));
    EXPECT_TRUE(w->StatusPanel2->text().isEmpty());
    Hover(QPoint(px, 100));
    EXPECT_FALSE(w->StatusPanel2->text().isEmpty());
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(w->pb_PDF, &leave);
    EXPECT_TRUE(w->StatusPanel2->text().isEmpty());
    testing_support::ExpectErrorLogEmpty();
}

TEST_F(EndToEndChart, APinnedCurveStaysUnderAChangedOne) {
    EXPECT_FALSE(w->mnuUnpin->isEnabled());
    w->mnuPinCurve->trigger();
    EXPECT_TRUE(w->mnuUnpin->isEnabled());
    Type(w->tb_Param1, "4");
    PressPlot();
    // The axes take in the pinned curve (-2.6 .. 2.6) and the new one (1.4 .. 6.6).
    EXPECT_DOUBLE_EQ(w->RangeLow, -2.6);
    EXPECT_DOUBLE_EQ(w->RangeHigh, 6.6);
    DensityChart::Geometry g = w->ChartGeometry;
    EXPECT_TRUE(GreyNear(g.Px(0), g.Py(reference::NormalDensity(0))));
    w->mnuUnpin->trigger();
    EXPECT_DOUBLE_EQ(w->RangeLow, 1.4);
    EXPECT_FALSE(w->mnuUnpin->isEnabled());
    g = w->ChartGeometry;
    EXPECT_FALSE(GreyNear(g.Px(1.5), g.Py(reference::NormalDensity(1.5))));
    testing_support::ExpectErrorLogEmpty();
}

TEST_F(EndToEndChart, TheHistogramTakesInAValueAboveTheUSL) {
    Tick(w->cb_USL, w->tb_USL, "9");
    FromEventLoop([this] { w->mnuFitToData->trigger(); });
    frm_Data* d = w->DataDialog();
    ASSERT_TRUE(d);
    d->tb_Data->setPlainText("1\n2\n3\n4\n5\n6\n7\n8\n30\n");
    Click(d->but_Buttons->button(QDialogButtonBox::Ok));
    ASSERT_FALSE(w->HistogramHeights.empty());
    DensityChart::Geometry g = w->ChartGeometry;
    EXPECT_GE(w->RangeHigh, 30);
    EXPECT_GE(g.XLow + g.XRange, 30);
    const double tallest =
        *std::max_element(w->HistogramHeights.begin(), w->HistogramHeights.end());
    EXPECT_GE(g.YLow + g.YRange, tallest);
    testing_support::ExpectErrorLogEmpty();
}
