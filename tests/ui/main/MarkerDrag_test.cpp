// The spec-limit marker drag without a window.
#include "ui/main/MarkerDrag.h"

#include <gtest/gtest.h>

TEST(MarkerDrag, APressTogglesOnlyATickedMarkerUnderTheLeftButton) {
    struct Row {
        const char* Row;
        int Button;
        bool Ticked;
        double X;
        bool Toggles;
    } rows[] = {{"LeftEdge", 1, true, 100, true},
                {"RightEdge", 1, true, 113, true},
                {"Beside", 1, true, 113.5, false},
                {"Unticked", 1, false, 105, false},
                {"RightButton", 2, true, 105, false}};
    for (const Row& r : rows)
        EXPECT_EQ(MarkerDrag::Toggles(r.Button, r.Ticked, r.X, 100, 13), r.Toggles) << r.Row;
}

TEST(MarkerDrag, TheMarkerFollowsThePointerAndTheLimitTakesTheValueUnderIt) {
    // x0 = 60, plot width 310 (W = 400) over the values -2 .. 2.
    DensityChart::Geometry g = DensityChart::Geometry::ForSize(400, 300);
    g.XLow = -2;
    g.XRange = 4;
    const MarkerDrag::Follow f = MarkerDrag::FollowPointer(g, 60 + 310 * 0.75, 13, 3);
    EXPECT_DOUBLE_EQ(f.Left, 60 + 310 * 0.75 - 6.5);
    EXPECT_EQ(f.Text, "1.000");
}

TEST(MarkerDrag, ArrowKeysStepOnePixelOrTenWithShift) {
    EXPECT_EQ(MarkerDrag::KeyStep(MarkerDrag::kKeyLeft, 0), -1);
    EXPECT_EQ(MarkerDrag::KeyStep(MarkerDrag::kKeyRight, 0), 1);
    EXPECT_EQ(MarkerDrag::KeyStep(MarkerDrag::kKeyLeft, 1), -10);
    EXPECT_EQ(MarkerDrag::KeyStep(MarkerDrag::kKeyRight, 3), 10); // Shift+Ctrl
    EXPECT_EQ(MarkerDrag::KeyStep(38, 0), 0);                     // up
}
