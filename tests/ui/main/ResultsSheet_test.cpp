// The results as spreadsheet rows, and the mnemonics handed out to the captions.
#include "ui/main/Mnemonics.h"
#include "ui/main/ResultsSheet.h"

#include <gtest/gtest.h>

TEST(ResultsSheet, RowsOfCaptionAndValueWithOnlyTheTickedLimits) {
    struct Row {
        const char* Row;
        ResultsSheet::Shown In;
        const char* Text;
    } rows[] = {
        {"NormalBothLimits",
         {"Normal",
          {{"Mean:", "0"}, {"Std. Deviation:", "1"}},
          {{{true, "-3"}, {false, "0"}, {true, "3"}}},
          {"0,0E+00", "1,0E+00", "0,0E+00", "3,0E+00"},
          {"1,3E-03", "1,3E-03", "2,7E-03"},
          {"1,0E+00", "1,0E+00", "2,7E+03", "tip", "1,0E+00", "1,0E+00"},
          "20"},
         "Distribution\tNormal\nMean\t0\nStd. Deviation\t1\nLSL\t-3\nUSL\t3\nn\t20\n"
         "Moment: Mean\t0,0E+00\nMoment: Std. Deviation\t1,0E+00\nMoment: Skewness\t0,0E+00\n"
         "Moment: Kurtosis\t3,0E+00\nPNC below LSL\t1,3E-03\nPNC above USL\t1,3E-03\n"
         "Total PNC\t2,7E-03\nPp\t1,0E+00\nPpk\t1,0E+00\nPpl\t1,0E+00\nPpu\t1,0E+00\n"
         "ppm\t2,7E+03\n"},
        {"TargetOnlyEmptyFigures",
         {"Johnson SU", {{"Xi:", "0.5"}}, {{{false, ""}, {true, "1"}, {false, ""}}}, {}, {}},
         "Distribution\tJohnson SU\nXi\t0.5\nTarget\t1\nMoment: Mean\t\n"
         "Moment: Std. Deviation\t\nMoment: Skewness\t\nMoment: Kurtosis\t\n"
         "PNC below LSL\t\nPNC above USL\t\nTotal PNC\t\nPp\t\nPpk\t\nPpl\t\nPpu\t\nppm\t\n"},
    };
    for (const Row& r : rows)
        EXPECT_EQ(ResultsSheet::Text(r.In), r.Text) << r.Row;
}

TEST(Mnemonics, EachCaptionTakesItsFirstFreeLetter) {
    EXPECT_EQ(
        Mnemonics::Mark({"Plot", "Distribution:", "Mean:", "&Minimum:", "", "Xi", "Fix"}, "FEVD"),
        (std::vector<std::string>{"&Plot", "D&istribution:", "&Mean:", "Mi&nimum:", "", "&Xi",
                                  "Fix"}));
    EXPECT_EQ(Mnemonics::Mark({"Ix", "I"}, "F"), (std::vector<std::string>{"&Ix", "I"}));
    EXPECT_EQ(Mnemonics::Plain("Mi&nimum: &&"), "Minimum: &");
}
