// The skewness-kurtosis chart: the boundary K = S^2 + 1 below which no
// distribution exists, drawn grey, and the mappings the lock and drag handlers
// use.
// Kept: drawing and picking use different kurtosis scales: the drawing runs
// from 0 at the bottom to the largest boundary kurtosis (17), the handlers from
// the bottom caption (1) to tb_Ymax.
//
// Draw is the body of the window's DrawSkewKurtLimits and runs inside its trap.
#pragma once

#include <optional>
#include <string>
#include <vector>

class PictureBox;

namespace SkewKurtChart {

inline constexpr int kBoundaryPoints = 200;

struct Boundary {
    std::vector<double> S; // skewness, 0..199
    std::vector<double> K; // S^2 + 1
};

// S(i) = from + (to - from) * i / 199, K(i) = S(i)^2 + 1 for i = 0..199.
Boundary MakeBoundary(double skewFrom, double skewTo);

struct Input {
    bool Refresh = true; // clear the surface and draw the frame first
    int XTicks = 5, YTicks = 5;
    double XTickLength = 4, YTickLength = 4;
    bool XAxis = true, YAxis = true; // View menu flags: ticks or not
};

// The drawing's own scale: skewness from the smallest to the largest S across
// the width, kurtosis from 0 at the bottom edge to the largest K at the top.
struct DrawScale {
    double W = 0, H = 0;
    double SkewLow = 0, SkewHigh = 0;
    double KurtTop = 0;
    double X(double skew) const;
    double Y(double kurt) const;
};

// The captions the drawing writes, formatted "0.0": lb_XMin, lb_XMax, lb_YMin
// (always 1) and tb_Ymax (the largest K).
struct AxisTexts {
    std::string XMin, XMax, YMin, YMax;
};

struct Result {
    DrawScale Scale;
    AxisTexts Texts;
};

// Steps of the chart drawing: white background, frame, grey region (one
// vertical line per boundary point in the button-shadow colour), ticks, and
// the boundary itself as an anti-aliased line one pixel lower. The marker is
// placed by the caller (MarkerAfterDraw) with the texts written.
Result Draw(PictureBox& surface, const Boundary& boundary, const Input& input);

// The handlers' scale, read back from the captions and tb_Ymax. L and T are
// the chart's scale origin (0, 0) and W, H its size in pixels.
struct PickScale {
    double L = 0, T = 0, W = 0, H = 0;
    double SkewMin = -4, SkewMax = 4;
    double KurtMin = 1, KurtMax = 17;

    double SkewToX(double skew) const;
    double KurtToY(double kurt) const;
    // Mouse positions as given, without subtracting L and T.
    double XToSkew(double x) const;
    double YToKurt(double y) const;
};

struct MarkerPos {
    double Left = 0;
    double Top = 0;
};

// Where the drawing puts the marker: top = y + height / 2.
// Kept: half a marker lower than centred; the next lock click or drag centres it.
MarkerPos MarkerAfterDraw(const PickScale& scale, double skew, double kurt, double width,
                          double height);
// Where a lock click or a drag puts it: centred, top = y - height / 2.
MarkerPos MarkerCentred(const PickScale& scale, double skew, double kurt, double width,
                        double height);

// The data's point: centred on its moments, shown only on the chart.
struct DataPointView {
    MarkerPos Pos;
    bool Visible = false;
};
DataPointView DataPoint(const PickScale& scale, double skew, double kurt, double width,
                        double height);

// Curve points while a point is dragged on the chart, and for the drawing after.
inline constexpr int kDragPoints = 50, kAfterDragPoints = 300;

// Outside moments mode the kurtosis lock makes the axis follow the distribution
// shown: the whole number nearest |kurtosis| * 1.5, halves to even.
double FollowingKurtMax(double kurtosis);

// What a lock click draws: the lock lines through the current moments, the new
// top of the kurtosis axis (when it follows), and the centred marker.
struct LockView {
    std::optional<double> SkewLineX; // vertical line, top to bottom
    std::optional<double> KurtLineY; // horizontal line, left to right
    std::optional<double> KurtMax;   // tb_Ymax's new value
    MarkerPos Marker;
};
LockView Locks(PickScale scale, bool lockSkew, bool lockKurt, bool drawByMoments, double skew,
               double kurt, double width, double height);

// Whether a drag may take the point under the pointer: only a white pixel of
// the drawn chart is free, so the grey region, the boundary line, the ticks and
// the lock lines all refuse.
// Kept: one pixel read, not the boundary's formula; the chart judges by what it shows.
bool Free(PictureBox& surface, double x, double y);

// One accepted drag step (the pointer is over a free point): new values for
// the unlocked moments and the marker, centred on the pointer along an
// unlocked axis and on the locked value along a locked one.
struct DragStep {
    std::optional<double> Skew, Kurt;
    MarkerPos Marker;
};
DragStep Drag(const PickScale& scale, double x, double y, bool lockSkew, bool lockKurt, double skew,
              double kurt, double width, double height);

} // namespace SkewKurtChart
