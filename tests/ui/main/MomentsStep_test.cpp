// One run of drawing by moments without a window: checks, fit mapping, grid,
// densities.
#include "ui/main/MomentsStep.h"

#include "engine/m_Distributions.h"
#include "tests/helpers/Reference.h"
#include "tests/helpers/TestSupport.h"

using namespace MomentsStep;
using PlotPipeline::Field;
using testing_support::RelErr;

TEST(MomentsStep, EachMomentIsCheckedInOrder) {
    struct Row {
        std::array<std::string, 4> Texts;
        Field Focus;
        const char* Message;
    } rows[] = {
        {{"0", "1", "0", "3"}, Field::None, ""},
        {{"abc", "x", "0", "3"}, Field::Mean, "Mean must be a number."},
        {{"0", "", "0", "3"}, Field::StDev, "Std. Dev. must be a number."},
        {{"0", "1", "s", "3"}, Field::Skewness, "Skewness must be a number."},
        // Only numericness: 0.5 passes here and the fit refuses it.
        {{"0", "1", "0", "k"},
         Field::Kurtosis,
         "Kurtosis must be a positive number greater than or equal to 1."},
    };
    for (const Row& r : rows) {
        const PlotPipeline::Check c = CheckMomentTexts(r.Texts);
        EXPECT_EQ(c.Focus, r.Focus) << r.Message;
        EXPECT_EQ(c.Message, r.Message);
    }
}

TEST(MomentsStep, TheFitChoosesTheListItemAndTheCalculatorCode) {
    struct Row {
        const char* Type;
        const char* Item;
        int Code;
    } rows[] = {{"SB", "Johnson SB", m_Distributions::kJohnsonSB},
                {"SL", "Johnson SL", m_Distributions::kJohnsonSL},
                {"SU", "Johnson SU", m_Distributions::kJohnsonSU},
                {"Normal", "Normal", 0},
                {"ST", nullptr, 0}};
    for (const Row& r : rows) {
        EXPECT_STREQ(ListItem(r.Type) ? ListItem(r.Type) : "none", r.Item ? r.Item : "none");
        EXPECT_EQ(PncSourceOf({r.Type, "", 1, 2, 3, 4}).Code, r.Code) << r.Type;
    }
    EXPECT_TRUE(FitMoments(0, 1, 0, 0.5).Failed());
}

// With N = 300 from -5 to 3 the grid divides by N and pins its last point.
TEST(MomentsStep, TheGridPinsItsLastPoint) {
    const std::vector<double> x = Grid(-5, 3, 300);
    EXPECT_DOUBLE_EQ(x[1], -5);
    EXPECT_NEAR(x[299], -5 + 298 * 8.0 / 300, 1e-12);
    EXPECT_DOUBLE_EQ(x[300], 3);
}

TEST(MomentsStep, DensitiesOfTheFittedCurve) {
    const Fit su = FitMoments(0, 1, 0.5, 4);
    ASSERT_EQ(su.Type, "SU");
    const std::vector<double> x = Grid(-3, 3, 40);
    const std::vector<double> y = Densities(su, x, 0, 1);
    for (int i : {1, 20, 40})
        EXPECT_LT(
            RelErr(y[i], reference::JohnsonSUDensity(x[i], su.Delta, su.Gamma, su.Lamda, su.Xi)),
            1e-12)
            << i;
    // A normal fit draws the normal of the requested moments; a type without a row nothing.
    const std::vector<double> n = Densities(Fit{.Type = "Normal", .Message = ""}, x, 10, 2);
    EXPECT_LT(RelErr(n[20], reference::NormalDensity((x[20] - 10) / 2) / 2), 1e-12);
    for (double v : Densities(Fit{.Type = "ST", .Message = ""}, x, 0, 1))
        EXPECT_EQ(v, 0);
}
