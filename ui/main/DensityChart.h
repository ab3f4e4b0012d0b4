// The density chart's geometry and drawing. The geometry is a plain struct so
// the drag code (and the tests) can map between values and pixels without a
// screen; Draw does the whole chart on a PictureBox from one input struct.
//
// Draw is the body of the window's DrawPDF and runs inside its error trap: a
// floating-point fault (an x range of 0, say) is raised to that trap, the chart
// is left as far as it got.
#pragma once

#include <cstdint>
#include <span>

class PictureBox;

namespace DensityChart {

struct Geometry {
    double W = 0, H = 0;   // the surface's inner size in pixels
    double X0 = 0;         // left edge of the plot, 0.15 W
    double Y0 = 0;         // baseline, 0.85 H
    double PlotWidth = 0;  // 0.775 W: the plot runs past the x axis' end at 0.85 W
    double PlotHeight = 0; // 0.7 H
    double XLow = 0;       // smallest x of the points
    double XRange = 0;     // largest x - smallest x
    double YLow = 0;       // smallest density
    double YRange = 0;     // largest density - smallest density
    // The py that Py returns while the y range is 0; it starts at the top of
    // the plot, so a flat density is drawn as a full box (a zero one on the baseline).
    double LastPy = 0;

    // Margins of a surface of w x h pixels; ranges still 0.
    static Geometry ForSize(double w, double h);
    // Smallest and largest x and density over points 1..N of two 1-based
    // arrays (element 0 unused); N is the shorter array's size - 1.
    void SetRanges(std::span<const double> x, std::span<const double> y);

    // Value to pixel. Py keeps the previous py when the y range is exactly 0,
    // so a flat curve never divides by zero.
    double Px(double x) const;
    double Py(double density);
    // Pointer x to value, for dragging a spec-limit marker.
    double ValueAtPixel(double pointerX) const;
    // Widens the ranges to take in x from xLow to xHigh and densities up to
    // yHigh (what else is drawn on the curve's axes); never narrows them.
    void Cover(double xLow, double xHigh, double yHigh);
};

// A press hits a marker when its x lies between the marker's left edge and
// left edge + width (both ends included).
bool MarkerHit(double pointerX, double markerLeft, double markerWidth);

struct Limit {
    bool Ticked = false;
    double Value = 0;
};

struct Input {
    bool Refresh = true; // clear and draw background, axes and ticks
    int XTicks = 5, YTicks = 5;
    double XTickLength = 5, YTickLength = 5;
    // The curve: 1-based arrays of x and density (element 0 unused).
    std::span<const double> X{}, Y{};
    Limit LSL{}, Target{}, USL{};
    bool DraggingLSL = false, DraggingUSL = false; // their lines are red
    bool XAxis = true, YAxis = true, Labels = true;
    uint32_t BackColor = 0xFFFFFF, InSpecColor = 0xFF0000, OutSpecColor = 0x0000FF;
    // A second curve in light green, mapped with the same ranges.
    bool Overlay = false;
    std::span<const double> OverlayX{}, OverlayY{};
    // Widths of sh_LSL and sh_USL, to centre them on their lines.
    double LSLMarkerWidth = 0, USLMarkerWidth = 0;
    // The data's histogram: equal bins from Low, their heights as densities,
    // drawn as translucent bars in the overlay colour with a darker outline.
    struct Histogram {
        double Low = 0, Width = 0;
        std::span<const double> Heights{};
    } Bins{};
    // A pinned curve (1-based like X and Y), drawn as a grey line.
    std::span<const double> PinnedX{}, PinnedY{};
};

// The margins of a w x h surface and the ranges of the curve, widened to take
// in every bin of the histogram and the whole pinned curve.
Geometry GeometryOf(double w, double h, const Input& input);

struct MarkerPlacement {
    double Left = 0;      // px - width / 2
    bool Visible = false; // the limit is ticked
};

struct Result {
    Geometry Geom;
    MarkerPlacement LSLMarker, USLMarker;
    // The columns drawn afresh: the whole width, or only the strip a moved
    // spec limit can change when nothing else differs from the last drawing
    // on the same, untouched picture (a marker drag step).
    double RedrawnLeft = 0, RedrawnWidth = 0;
};

// Background, axes, shading by one vertical line per sample (in-spec or
// out-of-spec colour), the histogram and the pinned curve, ticks with labels
// that tell them apart (support::TickLabels), spec-limit lines and labels, the
// baseline again, then the curve (and overlay) as anti-aliased black dots.
// The picture is always that of a whole drawing; the surface is shown anew
// where it changed.
Result Draw(PictureBox& surface, const Input& input);

} // namespace DensityChart
