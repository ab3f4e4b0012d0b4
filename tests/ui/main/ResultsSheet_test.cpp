// The results as spreadsheet rows, and the mnemonics handed out to the captions.
#include "ui/main/Mnemonics.h"
#include "ui/main/ResultsSheet.h"

#include <gtest/gtest.h>

namespace {

// Data of 20 values, one below the LSL, with intervals by the bootstrap.
m_CapabilityStudy::Study DataStudy() {
    m_CapabilityStudy::Study s;
    s.N = 20;
    s.Observed = m_Capability::Ppm{50000, 0, 50000};
    s.IntervalMethod = "parametric bootstrap, 1000 samples";
    s.PercentileCI.Pp = m_Capability::Interval{0.75, 1.26};
    s.PercentileCI.Ppm = m_Capability::Interval{10, 9000};
    return s;
}

} // namespace

TEST(ResultsSheet, RowsOfCaptionAndValueWithOnlyTheTickedLimits) {
    struct Row {
        const char* Row;
        ResultsSheet::Shown In;
        const char* Text;
    } rows[] = {
        {"NormalBothLimitsWithData",
         {"Normal",
          {{"Mean:", "0"}, {"Std. Deviation:", "1"}},
          {{{true, "-3"}, {false, "0"}, {true, "3"}}},
          {"0,0E+00", "1,0E+00", "0,0E+00", "3,0E+00"},
          {"1,3E-03", "1,3E-03", "2,7E-03"},
          {"1,0E+00", "1,0E+00", "2,7E+03", "1,0E+00", "1,0E+00", "", "", "", "", ""},
          DataStudy(),
          "0.0",
          "20"},
         "Distribution\tNormal\nMean\t0\nStd. Deviation\t1\nLSL\t-3\nUSL\t3\nn\t20\n"
         "Moment: Mean\t0,0E+00\nMoment: Std. Deviation\t1,0E+00\nMoment: Skewness\t0,0E+00\n"
         "Moment: Kurtosis\t3,0E+00\nPNC below LSL\t1,3E-03\nPNC above USL\t1,3E-03\n"
         "Total PNC\t2,7E-03\nPp\t1,0E+00\nPpk\t1,0E+00\nPpl\t1,0E+00\nPpu\t1,0E+00\n"
         "ppm\t2,7E+03\nCapability method\tpercentile (ISO 22514-2)\n"
         "ppm observed below LSL\t50000.0\nppm observed above USL\t0.0\nppm observed\t50000.0\n"
         "Pp 95 % interval\t0.8\t1.3\nppm 95 % interval\t10.0\t9000.0\n"
         "Interval method\tparametric bootstrap, 1000 samples\n"},
        {"TargetOnlyEmptyFigures",
         {"Johnson SU",
          {{"Xi:", "0.5"}},
          {{{false, ""}, {true, "1"}, {false, ""}}},
          {},
          {},
          {},
          {},
          "",
          ""},
         "Distribution\tJohnson SU\nXi\t0.5\nTarget\t1\nMoment: Mean\t\n"
         "Moment: Std. Deviation\t\nMoment: Skewness\t\nMoment: Kurtosis\t\n"
         "PNC below LSL\t\nPNC above USL\t\nTotal PNC\t\nPp\t\nPpk\t\nPpl\t\nPpu\t\nppm\t\n"
         "Capability method\tpercentile (ISO 22514-2)\n"},
    };
    for (const Row& r : rows)
        EXPECT_EQ(ResultsSheet::Text(r.In), r.Text) << r.Row;
}

TEST(ResultsSheet, CaptionNamesTheMethodAndTinyPpmStaysVisible) {
    m_CapabilityStudy::Study s = DataStudy();
    s.Shown = m_Capability::Method::ZScore;
    s.ZScoreCI = s.PercentileCI;
    const ResultsSheet::CapabilityTexts t = ResultsSheet::Capability(s, "0.00");
    EXPECT_EQ(t.Caption,
              "Method: Z-score; n = 20\nObserved ppm: 50000 below, 0 above, 50000 total\n"
              "95 % CI: Pp 0.75\u20131.26, ppm 10\u20139000");
    EXPECT_EQ(ResultsSheet::Capability(s, "0.00", "35 %").Caption.substr(t.Caption.find("95 %")),
              "95 % CI: 35 %");
    EXPECT_EQ(ResultsSheet::PpmText(3e-7, "0.00"), "3.00E-07");
    EXPECT_EQ(ResultsSheet::PpmText(0, "0.00"), "0.00");
    EXPECT_EQ(ResultsSheet::PpmText(2700, "0.00"), "2700.00");
}

TEST(Mnemonics, EachCaptionTakesItsFirstFreeLetter) {
    EXPECT_EQ(
        Mnemonics::Mark({"Plot", "Distribution:", "Mean:", "&Minimum:", "", "Xi", "Fix"}, "FEVD"),
        (std::vector<std::string>{"&Plot", "D&istribution:", "&Mean:", "Mi&nimum:", "", "&Xi",
                                  "Fix"}));
    EXPECT_EQ(Mnemonics::Mark({"Ix", "I"}, "F"), (std::vector<std::string>{"&Ix", "I"}));
    EXPECT_EQ(Mnemonics::Plain("Mi&nimum: &&"), "Minimum: &");
}
