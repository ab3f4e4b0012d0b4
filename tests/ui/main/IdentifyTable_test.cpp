// The identification table without widgets: the rows best first, the failed
// ones after them greyed with their reason, the parameters in the window's
// slots and format, and the AD and p columns as they are filled or stopped.
#include "ui/main/IdentifyTable.h"

#include <gtest/gtest.h>

#include <QBrush>

#include <cmath>
#include <numeric>

namespace {

// Lieblein & Zelen's 23 ball-bearing fatigue lives (millions of revolutions).
const std::vector<double> kBearings = {17.88, 28.92, 33.00,  41.52,  42.12,  45.60,  48.48, 51.84,
                                       51.96, 54.12, 55.56,  67.80,  68.64,  68.64,  68.88, 84.12,
                                       93.12, 98.64, 105.12, 105.84, 127.92, 128.04, 173.40};

QString Cell(const IdentifyTable& t, int row, int column, int role = Qt::DisplayRole) {
    return t.data(t.index(row, column), role).toString();
}

TEST(IdentifyTable, RowsBestFirstFailedLastInTheWindowsFormat) {
    m_Identify::Options quick;
    quick.Replicates = 0;
    // Eight values, no threshold below them: the 3P rows fail.
    const std::vector<double> eight(kBearings.begin(), kBearings.begin() + 8);
    IdentifyTable t;
    t.SetRows(m_Identify::Identify(eight, quick), "0.000000");
    ASSERT_EQ(t.rowCount(), 9);
    int ranked = 0;
    while (ranked < 9 && t.Usable(ranked))
        ++ranked;
    EXPECT_EQ(ranked, 7);
    for (int r = 0; r < 9; ++r) {
        if (r < ranked) {
            EXPECT_EQ(Cell(t, r, IdentifyTable::kRank).toInt(), r + 1);
            if (r > 0) {
                EXPECT_GE(t.Fit(r).AICc, t.Fit(r - 1).AICc);
            }
            EXPECT_FALSE(t.data(t.index(r, 0), Qt::ForegroundRole).isValid());
        } else { // greyed, with the reason where the parameters would be
            EXPECT_EQ(Cell(t, r, IdentifyTable::kParams), "no threshold estimate");
            EXPECT_TRUE(t.data(t.index(r, 0), Qt::ForegroundRole).value<QBrush>() != QBrush());
            EXPECT_EQ(Cell(t, r, IdentifyTable::kRank), "");
        }
    }
    // The Normal row: the sample mean and s (divisor n - 1), in the fields' order.
    const double mean = std::accumulate(eight.begin(), eight.end(), 0.0) / 8;
    double ss = 0;
    for (double v : eight)
        ss += (v - mean) * (v - mean);
    int normal = 0;
    while (t.Fit(normal).Name != "Normal")
        ++normal;
    EXPECT_EQ(Cell(t, normal, IdentifyTable::kParams), QString("Mean: %1  Std. Deviation: %2")
                                                           .arg(mean, 0, 'f', 6)
                                                           .arg(std::sqrt(ss / 7), 0, 'f', 6));
    // A big sample's AD comes after its ranked row.
    std::vector<m_Identify::RowResult> rows;
    for (int i = 0; i < 9; ++i)
        rows.push_back(t.ByFitRow(i));
    const int best = t.FitRow(0);
    rows[best].A2 = std::nan("");
    IdentifyTable waiting;
    waiting.SetRows(rows, "0.000000");
    waiting.SkipSimulation("");
    EXPECT_EQ(Cell(waiting, 0, IdentifyTable::kAD), QString::fromUtf8("\u2026"));
    EXPECT_FALSE(waiting.Complete());
    waiting.SetA2(best, 0.25, std::nan(""));
    EXPECT_EQ(Cell(waiting, 0, IdentifyTable::kAD), "0.250");
    EXPECT_TRUE(waiting.Complete());
    // p: waiting, then arrived, then the rest stopped.
    EXPECT_EQ(Cell(t, normal, IdentifyTable::kP), QString::fromUtf8("\u2026"));
    EXPECT_FALSE(t.Complete());
    t.SetP(t.FitRow(normal), 0.4321);
    EXPECT_EQ(Cell(t, normal, IdentifyTable::kP), "0.432");
    t.StopWaiting();
    EXPECT_EQ(Cell(t, normal == 0 ? 1 : 0, IdentifyTable::kP), "stopped");
    EXPECT_EQ(Cell(t, 8, IdentifyTable::kP), "");
    EXPECT_FALSE(t.Complete()); // stopped rows are computed again when the dialog reopens
}

TEST(IdentifyTable, NumbersKeepTheirDigits) {
    using namespace IdentifyText;
    EXPECT_EQ(ParamText(12.3456789, "0.000000"), "12.345679");
    EXPECT_EQ(ParamText(3.45e-5, "0.000000"), "3.450000E-05"); // not 0.000035
    EXPECT_EQ(ParamText(3.45e-5, "0.00E+00"), "3.45E-05");
    EXPECT_EQ(PText(0.0049), "< 0.005");
    EXPECT_EQ(PText(0.072), "0.072");
    const WindowParams w = ParamsOf({m_Curves::Kind::Exponential, {0.5, 2, 0, 0}}, "0.000");
    EXPECT_EQ(w.Name, "Exponential");
    EXPECT_EQ(w.Count, 2);
    EXPECT_EQ(w.Texts[1], "2.000");
}

TEST(IdentifyTable, TheBallBearingsRankWeibullNearTheTop) {
    m_Identify::Options quick;
    quick.Replicates = 0;
    IdentifyTable t;
    t.SetRows(m_Identify::Identify(kBearings, quick), "0.000000");
    int weibull = 0;
    while (t.Fit(weibull).Name != "Weibull")
        ++weibull;
    EXPECT_LE(weibull, 2);
    EXPECT_EQ(t.Fit(0).Rank, 1);
}

} // namespace
