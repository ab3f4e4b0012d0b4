// Density chart: margins and value-pixel mapping in closed form, the flat-curve
// rule, marker hits, and the drawing read back pixel by pixel at each display scale.
#include "ui/main/DensityChart.h"

#include "support/ErrorTrap.h"
#include "tests/helpers/Reference.h"
#include "tests/helpers/TestSupport.h"
#include "ui/draw/PictureBox.h"

#include <cmath>

using DensityChart::Geometry;

namespace {

constexpr uint32_t kWhite = 0xFFFFFF, kBlack = 0x000000, kBlue = 0xFF0000, kRed = 0x0000FF;

// The standard normal density on x(i) = low + (i - 1) * (high - low) / n, 1-based,
// from its closed form (not the engine).
struct Curve {
    std::vector<double> X, Y;
};
Curve NormalCurve(int n, double low = -3, double high = 3) {
    Curve c{std::vector<double>(n + 1, 0.0), std::vector<double>(n + 1, 0.0)};
    for (int i = 1; i <= n; ++i) {
        c.X[i] = low + (i - 1) * (high - low) / n;
        c.Y[i] = reference::NormalDensity(c.X[i]);
    }
    return c;
}

int Round(double v) {
    return static_cast<int>(std::lround(v));
}

class DensityChartTest : public testing_support::RecordingTest {
  protected:
    void SetUp() override {
        RecordingTest::SetUp();
        box.SetPictureSize(400, 300);
        box.SetFontSize(8);
    }
    DensityChart::Result DrawWith(DensityChart::Input in) {
        DensityChart::Result result;
        support::Trap("Pondera.frm_Pondera.DrawPDF", [&] { result = DensityChart::Draw(box, in); });
        return result;
    }
    DensityChart::Input Standard(const Curve& c) {
        DensityChart::Input in;
        in.X = c.X;
        in.Y = c.Y;
        in.LSLMarkerWidth = in.USLMarkerWidth = 11;
        return in;
    }
    // Pixels of / not of `colour` inside a rectangle (inclusive).
    int CountNot(int x1, int y1, int x2, int y2, uint32_t colour) {
        int n = 0;
        for (int y = y1; y <= y2; ++y)
            for (int x = x1; x <= x2; ++x)
                n += box.GetPixel(x, y) != colour;
        return n;
    }
    int Count(int x1, int y1, int x2, int y2, uint32_t colour) {
        return (x2 - x1 + 1) * (y2 - y1 + 1) - CountNot(x1, y1, x2, y2, colour);
    }

    PictureBox box;
};

} // namespace

TEST(DensityGeometry, MapsValuesToPixelsAndBack) {
    Geometry g = Geometry::ForSize(800, 500);
    // 1-based: element 0 is never looked at.
    const std::vector<double> x = {999, 2, 4, 10, 6}, y = {-999, 0.5, 0.1, 0.3, 0.9};
    support::TrapIgnore([&] { g.SetRanges(x, y); });
    EXPECT_DOUBLE_EQ(g.XLow, 2);
    EXPECT_DOUBLE_EQ(g.XRange, 8);
    EXPECT_DOUBLE_EQ(g.YLow, 0.1);
    EXPECT_NEAR(g.YRange, 0.8, 1e-15);
    // Ends of the ranges land on the plot's corners: 0.15 W .. 0.925 W, 0.85 H .. 0.15 H.
    for (const auto& [value, px] : {std::pair{2.0, 120.0}, {10.0, 740.0}, {6.0, 430.0}})
        EXPECT_NEAR(g.Px(value), px, 1e-9);
    for (const auto& [density, py] : {std::pair{0.1, 425.0}, {0.9, 75.0}, {0.5, 250.0}})
        EXPECT_NEAR(g.Py(density), py, 1e-9);
    // The drag's inverse: range low + (x - x0) * x range / plot width.
    for (double v : {2.0, 3.7, 6.0, 10.0, -5.0, 15.5})
        EXPECT_NEAR(g.ValueAtPixel(g.Px(v)), v, 1e-12);
    // Widening to what else is drawn keeps the far ends, on either side alone.
    g.Cover(-2, 9, 0.5);
    EXPECT_EQ(std::pair(g.XLow, g.XRange), std::pair(-2.0, 12.0));
    g.Cover(0, 12, 1.3);
    EXPECT_EQ(std::pair(g.XLow, g.XRange), std::pair(-2.0, 14.0));
    EXPECT_NEAR(g.YLow + g.YRange, 1.3, 1e-15);
}

TEST(DensityGeometry, FlatCurveKeepsThePreviousPyAndAZeroCurveLiesOnTheBaseline) {
    Geometry g = Geometry::ForSize(400, 300);
    const std::vector<double> x = {0, 1, 2, 3};
    g.SetRanges(x, std::vector<double>{0, 0.5, 0.5, 0.5});
    ASSERT_EQ(g.YRange, 0);
    EXPECT_NEAR(g.Py(0.5), 45, 1e-9);
    g.LastPy = 123;
    EXPECT_EQ(g.Py(0.5), 123);
    EXPECT_EQ(g.Py(1e300), 123);                     // not recomputed whatever the density
    g.SetRanges(x, std::vector<double>{0, 0, 0, 0}); // nothing under it
    EXPECT_EQ(g.Py(0), g.Y0);
}

// At every display scale the geometry is in logical pixels (the value under
// the pointer and the markers answer the same) while the picture has device pixels.
TEST_F(DensityChartTest, ShadesInAndOutOfSpecDrawsLimitLinesMarkersAndTheCurve) {
    const Curve c = NormalCurve(300);
    DensityChart::Input in = Standard(c);
    in.LSL = {true, -1};
    in.USL = {true, 1.5};
    in.Target = {true, 0.25};
    in.DraggingUSL = true;
    for (double ratio : {1.0, 1.5, 2.0}) {
        SCOPED_TRACE(ratio);
        box.SetPixelRatio(ratio);
        const DensityChart::Result r = DrawWith(in);
        ASSERT_TRUE(ErrorLabels().empty());
        ASSERT_EQ(box.Image().size(), QSize(400, 300) * ratio);
        Geometry g = r.Geom;
        EXPECT_DOUBLE_EQ(g.X0, 60);
        EXPECT_DOUBLE_EQ(g.PlotWidth, 310);
        const int base = static_cast<int>(g.Y0);

        // Just above the baseline: out-of-spec red left of the LSL and right of
        // the USL, in-spec blue between (away from the lines); background above the curve.
        for (const auto& [x, colour] :
             {std::pair{-1.6, kRed}, {-0.5, kBlue}, {1.0, kBlue}, {2.2, kRed}})
            EXPECT_EQ(box.GetPixel(Round(g.Px(x)), base - 3), colour) << x;
        EXPECT_EQ(box.GetPixel(static_cast<int>(g.Px(-2.5)), static_cast<int>(g.Py(0.3))), kWhite);

        // The LSL line (black, 2 wide) reaches the top of the plot; the USL line is
        // red while its marker is dragged; the target line is 3 wide.
        const int top = static_cast<int>(std::ceil(0.15 * 300)) + 2;
        const int lslX = Round(g.Px(-1)), uslX = Round(g.Px(1.5)), targetX = Round(g.Px(0.25));
        EXPECT_GE(Count(lslX - 2, top, lslX + 2, top, kBlack), 2);
        EXPECT_GE(Count(uslX - 2, top, uslX + 2, top, kRed), 2);
        EXPECT_GE(Count(targetX - 2, top, targetX + 2, top, kBlack), 3);
        // Markers are centred on their lines; the labels sit at the top edge.
        EXPECT_TRUE(r.LSLMarker.Visible && r.USLMarker.Visible);
        EXPECT_NEAR(r.LSLMarker.Left, g.Px(-1) - 5.5, 1e-9);
        EXPECT_NEAR(r.USLMarker.Left, g.Px(1.5) - 5.5, 1e-9);
        EXPECT_GT(CountNot(lslX - 10, 2, lslX + 10, 14, kWhite), 5);
    }
}

TEST_F(DensityChartTest, AxisFlagsDecideTicksAndLabelsOnly) {
    const Curve c = NormalCurve(300);
    for (const bool axes : {true, false}) {
        SCOPED_TRACE(axes ? "axes on" : "axes off");
        DensityChart::Input in = Standard(c);
        in.XAxis = in.YAxis = axes;
        in.LSL = {true, -1};
        const Geometry g = DrawWith(in).Geom;
        // Below the baseline (ticks, x labels) and left of the plot (y labels).
        const int below = CountNot(0, static_cast<int>(g.Y0) + 2, 399, 299, kWhite);
        const int left = CountNot(0, 0, static_cast<int>(g.X0) - 2, 299, kWhite);
        EXPECT_EQ(below > 50, axes) << below;
        EXPECT_EQ(left > 50, axes) << left;
        const uint32_t tick = box.GetPixel(static_cast<int>(g.X0), static_cast<int>(g.Y0) + 4);
        EXPECT_EQ(tick == kBlack, axes); // the tick at x0 goes down 5 pixels
        // Shading, the limit line and the baseline (on to 0.925 W past the axis) stay.
        EXPECT_EQ(box.GetPixel(Round(g.Px(0)), static_cast<int>(g.Y0) - 5), kBlue);
        EXPECT_EQ(box.GetPixel(Round(g.Px(-2)), static_cast<int>(g.Y0) - 3), kRed);
        EXPECT_EQ(box.GetPixel(static_cast<int>(g.X0 + g.PlotWidth) - 1, static_cast<int>(g.Y0)),
                  kBlack);
    }
    EXPECT_TRUE(ErrorLabels().empty());
}

// The data's bins take part in the axes: one past the curve's end and one
// taller than its peak are drawn whole inside the plot, translucent.
TEST_F(DensityChartTest, HistogramBarsWidenTheAxesAndLetTheShadingShowThrough) {
    const Curve c = NormalCurve(300); // -3 .. 2.98, peak 0.399
    const std::vector<double> heights = {0.1, 0.05, 0.6, 0.02};
    DensityChart::Input in = Standard(c);
    in.Bins = {-4, 2.25, heights}; // -4 .. 5, the tallest from 0.5 to 2.75
    Geometry g = DrawWith(in).Geom;
    ASSERT_TRUE(ErrorLabels().empty());
    EXPECT_DOUBLE_EQ(g.XLow, -4);
    EXPECT_DOUBLE_EQ(g.XLow + g.XRange, 5);
    EXPECT_DOUBLE_EQ(g.YLow + g.YRange, 0.6);
    // Over the blue shading a bar lets the blue show through its green.
    const uint32_t bar = box.GetPixel(Round(g.Px(1)), static_cast<int>(g.Y0) - 3);
    EXPECT_TRUE((bar >> 8 & 0xFF) > (bar & 0xFF) && (bar >> 16 & 0xFF) > 0x7D) << std::hex << bar;
    // The tallest bar reaches the plot's top edge and nothing above it.
    const int top = Round(g.Py(0.6));
    EXPECT_EQ(top, Round(0.15 * 300));
    EXPECT_EQ(CountNot(Round(g.Px(0.6)), 16, Round(g.Px(2.65)), top - 2, kWhite), 0);
}

// A drag step redraws only a strip; the picture after any run of steps must
// be, pixel for pixel, the one a whole drawing of the last state makes.
TEST_F(DensityChartTest, DragStepsLeaveThePictureOfAWholeDrawing) {
    const struct {
        const char* Name;
        double Ratio;
        bool Lower;                 // the LSL moves, else the USL
        std::vector<double> Values; // the limit's value after each step
    } rows[] = {
        {"LSL right across the target and the USL", 1, true, {-0.95, -0.9, 0.3, 1.7, 2.1}},
        {"USL left across the target and the LSL", 1.5, false, {1.45, 0.2, -1.2}},
        {"LSL back and forth", 1.5, true, {-0.97, -1.02, -0.9, -1.3, -2.9}},
        {"USL right then left", 2, false, {1.52, 2.4, 1.1}},
        {"LSL right across the target", 2, true, {-0.8, 0.26, 0.6}},
        {"USL at ratio 1.25", 1.25, false, {1.49, 1.3, 1.8}},
    };
    // A histogram and a pinned curve (the curve itself, raised) under the strips too.
    const Curve c = NormalCurve(75);
    std::vector<double> raised = c.Y;
    for (double& y : raised)
        y *= 1.2;
    const std::vector<double> bins = {0.1, 0.3, 0.2};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.Name);
        DensityChart::Input in = Standard(c);
        in.Bins = {-1.5, 1, bins};
        in.PinnedX = c.X;
        in.PinnedY = raised;
        in.LSL = {true, -1};
        in.Target = {true, 0.25};
        in.USL = {true, 1.5};
        (row.Lower ? in.DraggingLSL : in.DraggingUSL) = true;
        box.SetPixelRatio(row.Ratio);
        DrawWith(in);
        for (double v : row.Values) {
            (row.Lower ? in.LSL : in.USL).Value = v;
            EXPECT_LT(DrawWith(in).RedrawnWidth, 0.6 * box.ScaleWidth()) << v;
        }
        // Taking the picture counts as touching it: the next drawing is whole.
        const QImage stepped = box.Image().copy();
        EXPECT_EQ(DrawWith(in).RedrawnWidth, box.ScaleWidth());
        EXPECT_TRUE(box.Image() == stepped);
    }
    EXPECT_TRUE(ErrorLabels().empty());
}

// At ratio 2 the curve and the shading's edges use device pixels: the picture
// is not the ratio-1 picture with every pixel doubled.
TEST(DensityChartScale, RatioTwoDrawsAtDeviceResolution) {
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
