// Skewness-kurtosis chart: the boundary arrays, the handlers' mappings (with
// the picking scale 1..KurtMax), the two marker placements, and the drawing's
// grey region read back pixel by pixel on its own scale 0..17.
#include "ui/main/SkewKurtChart.h"

#include "support/ErrorTrap.h"
#include "tests/helpers/TestSupport.h"
#include "ui/draw/Look.h"
#include "ui/draw/PictureBox.h"

#include <cmath>
#include <optional>

using SkewKurtChart::PickScale;

namespace {

class SkewKurtChartTest : public testing_support::RecordingTest {
  protected:
    void SetUp() override {
        RecordingTest::SetUp();
        box.SetPictureSize(W, H);
    }

    SkewKurtChart::Result DrawStandard(SkewKurtChart::Input in = {}) {
        SkewKurtChart::Result r;
        support::Trap("Pondera.frm_Pondera.DrawSkewKurtLimits", [&] {
            r = SkewKurtChart::Draw(box, SkewKurtChart::MakeBoundary(-4, 4), in);
        });
        return r;
    }

    static constexpr int W = 240, H = 200;
    PictureBox box;
};

PickScale Standard(double w, double h, double kurtMax = 17) {
    PickScale s;
    s.W = w;
    s.H = h;
    s.SkewMin = -4;
    s.SkewMax = 4;
    s.KurtMin = 1;
    s.KurtMax = kurtMax;
    return s;
}

} // namespace

// Centred after a lock (the lock rows), half a height low after drawing.
TEST(SkewKurtMapping, MarkerSitsHalfAHeightLowAfterDrawing) {
    const auto drawn = SkewKurtChart::MarkerAfterDraw(Standard(240, 200), 0, 3, 9, 7);
    EXPECT_DOUBLE_EQ(drawn.Left, 120 - 4.5);
    EXPECT_DOUBLE_EQ(drawn.Top, 200 - (3.0 - 1) / 16 * 200 + 3.5);
}

// Locks: the lines through the current moments, the axis top following the
// kurtosis outside moments mode (|k| * 1.5, halves to even), the marker centred.
TEST(SkewKurtLocks, LinesAxisTopAndMarker) {
    const PickScale s = Standard(240, 200);
    struct Row {
        const char* Row;
        bool LockSkew, LockKurt, ByMoments;
        double Kurt;
        std::optional<double> KurtMax;
    } rows[] = {{"NoLocks", false, false, true, 3, {}},
                {"BothInMomentsMode", true, true, true, 3, {}},
                {"Kurt3Gives4", true, true, false, 3, 4},
                {"Kurt5Gives8", false, true, false, 5, 8},
                {"Kurt2Gives3", false, true, false, 2, 3}};
    for (const Row& r : rows) {
        const SkewKurtChart::LockView v =
            SkewKurtChart::Locks(s, r.LockSkew, r.LockKurt, r.ByMoments, 1, r.Kurt, 9, 7);
        EXPECT_EQ(v.KurtMax, r.KurtMax) << r.Row;
        PickScale shown = s;
        shown.KurtMax = r.KurtMax.value_or(17);
        EXPECT_EQ(v.SkewLineX.value_or(-1), r.LockSkew ? 150 : -1) << r.Row;
        EXPECT_EQ(v.KurtLineY.value_or(-1), r.LockKurt ? shown.KurtToY(r.Kurt) : -1) << r.Row;
        EXPECT_DOUBLE_EQ(v.Marker.Top, shown.KurtToY(r.Kurt) - 3.5) << r.Row;
        EXPECT_DOUBLE_EQ(v.Marker.Left, 150 - 4.5) << r.Row;
    }
}

// A drag step: an unlocked moment follows the pointer, a locked one keeps its value.
TEST(SkewKurtDrag, LocksKeepTheirCoordinate) {
    const PickScale s = Standard(240, 200);
    const auto free = SkewKurtChart::Drag(s, 180, 50, false, false, 0, 3, 9, 7);
    EXPECT_DOUBLE_EQ(*free.Skew, 2);
    EXPECT_DOUBLE_EQ(*free.Kurt, 13);
    EXPECT_DOUBLE_EQ(free.Marker.Left, 175.5);
    EXPECT_DOUBLE_EQ(free.Marker.Top, 46.5);
    const auto skewLocked = SkewKurtChart::Drag(s, 180, 50, true, false, -1, 3, 9, 7);
    EXPECT_FALSE(skewLocked.Skew);
    EXPECT_DOUBLE_EQ(skewLocked.Marker.Left, 90 - 4.5);
    const auto kurtLocked = SkewKurtChart::Drag(s, 180, 50, false, true, 0, 9, 9, 7);
    EXPECT_FALSE(kurtLocked.Kurt);
    EXPECT_DOUBLE_EQ(kurtLocked.Marker.Top, 100 - 3.5);
}

// The axis texts are the boundary's ends and 1; on the drawing's own scale
// (from 0) a few pixels below K = S^2 + 1 is grey, a few above is white, and
// the boundary line itself is dark.
// At every display scale: the pixel test under the pointer reads logical pixels.
TEST_F(SkewKurtChartTest, GreyBelowTheBoundaryWhiteAbove) {
    for (double ratio : {1.0, 1.5, 2.0}) {
        SCOPED_TRACE(ratio);
        box.SetPixelRatio(ratio);
        const SkewKurtChart::Result r = DrawStandard();
        EXPECT_EQ(r.Texts.XMin + r.Texts.XMax + r.Texts.YMin + r.Texts.YMax, "-4.04.01.017.0");
        EXPECT_DOUBLE_EQ(r.Scale.Y(0), H);
        const uint32_t grey = look::Resolve(look::kButtonShadow);
        const auto& sc = r.Scale;
        for (double skew = -3.5; skew <= 3.5; skew += 0.25) {
            const int x = static_cast<int>(std::lround(sc.X(skew)));
            const double edge = sc.Y(skew * skew + 1);
            // The curve is steep away from the middle; step off it far enough
            // along the column.
            const double slope = std::fabs(2 * skew) * (H / 17.0) / (W / 8.0);
            const double margin = 4 + 2 * slope;
            if (edge + margin < H - 6) {
                EXPECT_EQ(box.GetPixel(x, static_cast<int>(edge + margin)), grey) << skew;
            }
            if (edge - margin > 6) {
                // Free there, read through the drag's own test.
                EXPECT_TRUE(SkewKurtChart::Free(box, x, static_cast<int>(edge - margin))) << skew;
            }
        }
        // The whole bottom row inside the frame is grey or frame; no white column.
        for (int x = 1; x < W - 1; ++x)
            EXPECT_NE(box.GetPixel(x, H - 8), 0xFFFFFFu) << x;
        // Near the middle the boundary line is dark.
        const int x0 = static_cast<int>(std::lround(sc.X(0)));
        const int y0 = static_cast<int>(sc.Y(1));
        bool dark = false;
        for (int y = y0 - 2; y <= y0 + 2; ++y)
            dark |= (box.GetPixel(x0, y) & 0xFF) < 100;
        EXPECT_TRUE(dark);
    }
    EXPECT_TRUE(ErrorLabels().empty());
}
