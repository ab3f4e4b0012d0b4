// The window's capability study: figures at once, intervals from the worker
// thread only for a curve fitted to data, the Normal row's by the exact formulas.
#include "ui/main/CapabilityPanel.h"

#include "stats/m_Fits.h"

#include <gtest/gtest.h>

TEST(CapabilityPanel, IntervalsOnlyForACurveFittedToData) {
    const std::vector<double> x = {9.8, 10.1, 10.4, 9.9, 10.0, 10.3, 9.7, 10.2, 10.05, 9.95};
    const m_Fits::Fit fit = m_Fits::FitRow(m_Fits::kNormal, m_Fits::Prepare(x));
    m_CapabilityStudy::Request r;
    r.Code = 1;
    r.P[0] = fit.C.P[0], r.P[1] = fit.C.P[1];
    r.LSL = 9, r.USL = 11;
    r.Values = &x;
    CapabilityPanel panel;
    panel.Show(r); // typed: observed ppm and n, no interval
    EXPECT_EQ(panel.Current().N, 10u);
    EXPECT_EQ(panel.Progress(), "");
    r.Row = m_Fits::kNormal;
    panel.Show(r);
    EXPECT_EQ(panel.Progress(), "computing...");
    panel.Wait();
    const m_CapabilityStudy::Study& s = panel.Current();
    ASSERT_TRUE(s.PercentileCI.Pp && s.PercentileCI.Ppm);
    EXPECT_EQ(s.PercentileCI.Pp->Low,
              m_Capability::NormalPpInterval(*s.Percentile.Pp, 10, 0.95)->Low);
    EXPECT_LT(s.PercentileCI.Ppm->Low, s.Expected.Total);
    EXPECT_GT(s.PercentileCI.Ppm->High, s.Expected.Total);
    EXPECT_EQ(panel.Progress(), "");
}
