// The charts at display scales 1, 1.5 and 2: geometry stays in logical pixels,
// so the value under the pointer, the marker hit test and the white-pixel test
// of the moments chart answer the same, while the picture has device pixels.
#include "support/ErrorTrap.h"
#include "tests/helpers/TestSupport.h"
#include "ui/draw/PictureBox.h"
#include "ui/main/DensityChart.h"
#include "ui/main/SkewKurtChart.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {
class PixelRatioTest : public testing_support::RecordingTest {};
} // namespace

TEST_F(PixelRatioTest, PointerValueMarkerHitAndFeasibilityAreTheSameAtEveryRatio) {
    // The standard normal on -3..3, 300 points, from its closed form.
    std::vector<double> x(301), y(301);
    for (int i = 1; i <= 300; ++i) {
        x[i] = -3 + (i - 1) * 6.0 / 300;
        y[i] = std::exp(-x[i] * x[i] / 2) / std::sqrt(2 * M_PI);
    }
    DensityChart::Input in;
    in.X = x;
    in.Y = y;
    in.LSL = {true, -1};
    in.USL = {true, 1.5};
    in.LSLMarkerWidth = in.USLMarkerWidth = 11;
    const SkewKurtChart::Boundary boundary = SkewKurtChart::MakeBoundary(-4, 4);

    for (double ratio : {1.0, 1.5, 2.0}) {
        PictureBox pdf, skewKurt;
        pdf.SetPictureSize(400, 300);
        skewKurt.SetPictureSize(172, 136);
        pdf.SetPixelRatio(ratio);
        skewKurt.SetPixelRatio(ratio);
        DensityChart::Result r;
        support::Trap("test", [&] {
            r = DensityChart::Draw(pdf, in);
            SkewKurtChart::Draw(skewKurt, boundary, {});
        });
        EXPECT_EQ(pdf.Image().size(), QSize(400, 300) * ratio);
        // Plot from 0.15 W = 60 over 0.775 W = 310 pixels, x from -3 to 2.98.
        const double xRange = 6.0 * 299 / 300;
        EXPECT_NEAR(r.Geom.ValueAtPixel(60 + 155), -3 + xRange / 2, 1e-12) << ratio;
        const double lslPx = 60 + 2 * 310 / xRange;
        EXPECT_NEAR(r.LSLMarker.Left, lslPx - 5.5, 1e-9) << ratio;
        EXPECT_TRUE(DensityChart::MarkerHit(lslPx + 5.5, r.LSLMarker.Left, 11));
        EXPECT_FALSE(DensityChart::MarkerHit(lslPx + 6, r.LSLMarker.Left, 11));
        // Shading under the curve: out of spec left of the LSL, in spec at 0.
        EXPECT_EQ(pdf.GetPixel(static_cast<int>(60 + 1 * 310 / xRange), 250), in.OutSpecColor);
        EXPECT_EQ(pdf.GetPixel(static_cast<int>(60 + 3 * 310 / xRange), 250), in.InSpecColor);
        // Moments chart: kurtosis 0 to 17 up the drawing; white above K = S^2 + 1.
        auto at = [&](double s, double k) {
            return skewKurt.GetPixel(static_cast<int>((s + 4) / 8 * 172),
                                     static_cast<int>(136 - k * 136 / 17));
        };
        EXPECT_EQ(at(0, 10), 0xFFFFFFu) << ratio;
        EXPECT_NE(at(3, 5), 0xFFFFFFu) << ratio;
        EXPECT_NE(at(-1, 1.5), 0xFFFFFFu) << ratio;
        EXPECT_EQ(at(-1, 3), 0xFFFFFFu) << ratio;
    }
    EXPECT_TRUE(ErrorLabels().empty());
}

// At ratio 2 the curve and the shading's edges use device pixels: the picture
// is not the ratio-1 picture with every pixel doubled.
TEST_F(PixelRatioTest, RatioTwoDrawsAtDeviceResolution) {
    std::vector<double> x(101), y(101);
    for (int i = 1; i <= 100; ++i) {
        x[i] = i;
        y[i] = std::sin(i / 15.0) + 1.5;
    }
    DensityChart::Input in;
    in.X = x;
    in.Y = y;
    in.XAxis = in.YAxis = in.Labels = false; // text is sharp anyway: leave it out
    PictureBox pdf;
    pdf.SetPictureSize(200, 100);
    pdf.SetPixelRatio(2);
    support::Trap("test", [&] { DensityChart::Draw(pdf, in); });
    const QImage& image = pdf.Image();
    int split = 0; // 2 x 2 blocks that are not one colour
    for (int by = 0; by < 100; ++by)
        for (int bx = 0; bx < 200; ++bx) {
            const QRgb c = image.pixel(2 * bx, 2 * by);
            split += image.pixel(2 * bx + 1, 2 * by) != c || image.pixel(2 * bx, 2 * by + 1) != c ||
                     image.pixel(2 * bx + 1, 2 * by + 1) != c;
        }
    EXPECT_GT(split, 100);
}
