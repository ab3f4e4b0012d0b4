// Fitting to data, the window's side: the bins against a hand count and which
// moments a run fits.
#include "ui/main/DataStep.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace DataStep;

TEST(DataStep, BinsAgainstAHandCount) {
    // 1..8: quartiles 2.75 and 6.25 (type 7), IQR 3.5, Freedman-Diaconis width
    // 2 x 3.5 / 8^(1/3) = 3.5, so two bins [1, 4.5) and [4.5, 8] of four each.
    const Histogram fd = Bins({8, 1, 7, 2, 6, 3, 5, 4});
    EXPECT_DOUBLE_EQ(fd.Low, 1);
    EXPECT_DOUBLE_EQ(fd.Width, 3.5);
    EXPECT_EQ(fd.Counts, (std::vector<std::size_t>{4, 4}));
    EXPECT_DOUBLE_EQ(fd.Density(0), 4 / (8 * 3.5));
    // No IQR: Sturges' ceil(log2 8) + 1 = 4 bins of width 1 over 5..9; the
    // largest value falls in the last bin.
    const Histogram sturges = Bins({5, 5, 5, 5, 5, 5, 5, 9});
    EXPECT_DOUBLE_EQ(sturges.Width, 1);
    EXPECT_EQ(sturges.Counts, (std::vector<std::size_t>{7, 0, 0, 1}));
    EXPECT_TRUE(Bins({2, 2, 2}).Counts.empty());
}

TEST(DataStep, FieldsStillShowingTheDataFitItsExactMoments) {
    m_SampleData::Summary s;
    s.Mean = 1.23456789, s.StDev = 0.5, s.Skewness = 0.987654321, s.Kurtosis = 4.5;
    const Moments data = MomentsOf(s, "0.00");
    EXPECT_EQ(data.Shown[0], "1.23");
    const auto m = MomentValues({"1.23", "0.50", "0.5", "4.50"}, &data);
    EXPECT_EQ(m, (std::array<double, 4>{1.23456789, 0.5, 0.5, 4.5}));
    EXPECT_EQ(MomentValues({"1.23", "x", "0", "4"}, nullptr),
              (std::array<double, 4>{1.23, 0, 0, 4}));
}
