#include "ui/main/DensityChart.h"

#include "support/ErrorTrap.h"
#include "support/Format.h"
#include "ui/draw/Look.h"
#include "ui/draw/PictureBox.h"
#include "ui/draw/m_AntiAlias.h"
#include "ui/draw/m_GetDIBBits.h"

#include <QRect>
#include <QString>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <vector>

namespace DensityChart {

namespace {

using look::kBlack;

std::size_t PointCount(std::span<const double> x, std::span<const double> y) {
    const std::size_t n = std::min(x.size(), y.size());
    return n > 0 ? n - 1 : 0;
}

// The overlay's light green for the histogram's bars, half covering what lies
// under them, and a darker shade of it for their outline (blue-green-red).
constexpr uint32_t kOverlayGreen = 0x7DFF7D;
constexpr double kBarCover = 0.45;
constexpr uint32_t kBarOutline = 0x288228;
// The pinned curve: a grey line two pixels wide.
constexpr uint32_t kPinnedGrey = 0x808080;
constexpr double kPinnedWidth = 2;

// Labels for ticks at first + i * step, i = 0..count.
std::vector<QString> TickTexts(double first, double step, int count) {
    std::vector<double> values;
    for (int i = 0; i <= count; ++i)
        values.push_back(support::ck(first + i * step));
    std::vector<QString> texts;
    for (const std::string& label : support::TickLabels(values))
        texts.push_back(QString::fromStdString(label));
    return texts;
}

void DrawHistogram(PictureBox& surface, Geometry& g, const Input::Histogram& bins) {
    for (std::size_t i = 0; i < bins.Heights.size(); ++i) {
        const double height = bins.Heights[i];
        if (!(height > 0)) continue;
        const double left = g.Px(bins.Low + static_cast<double>(i) * bins.Width);
        const double right = g.Px(bins.Low + static_cast<double>(i + 1) * bins.Width);
        const double top = g.Py(height);
        surface.BlendArea(left, top, right, g.Y0, kOverlayGreen, kBarCover);
        surface.Line(left, g.Y0, left, top, kBarOutline);
        surface.Line(left, top, right, top, kBarOutline);
        surface.Line(right, top, right, g.Y0, kBarOutline);
    }
}

void DrawPinned(PictureBox& surface, Geometry& g, std::span<const double> x,
                std::span<const double> y) {
    const std::size_t n = PointCount(x, y);
    if (n < 2) return;
    std::vector<QPointF> points;
    points.reserve(n);
    for (std::size_t i = 1; i <= n; ++i)
        points.emplace_back(g.Px(x[i]), g.Py(y[i]));
    surface.Polyline(points, kPinnedGrey, kPinnedWidth);
}

// One anti-aliased dot per sample, all between one open and one close.
void DrawDots(PictureBox& surface, Geometry& g, std::span<const double> x,
              std::span<const double> y, int red, int green, int blue) {
    if (!m_GetDIBBits::InitSetDIBPixel(surface)) return;
    const std::size_t n = PointCount(x, y);
    for (std::size_t i = 1; i <= n; ++i) {
        const double px = g.Px(x[i]);
        const double py = g.Py(y[i]);
        m_AntiAlias::AADot(px, py, red, green, blue);
    }
    m_GetDIBBits::FinishSetDIBPixel(surface);
}

// The last drawing and the picture it went to. When the next one differs
// only in where the spec limits stand (a marker drag step, which keeps the
// range and so the curve), only the columns that can change are drawn again:
// the whole drawing runs clipped to them, so they come out exactly as a full
// drawing would draw them and everything else stays as it is.
// What of the surface itself shapes a drawing.
struct SurfaceLook {
    double W = 0, H = 0, Ratio = 0, FontSize = 0;
    QString FontName;
    uint32_t BackColor = 0;
    bool FontTransparent = false;
    bool operator==(const SurfaceLook&) const = default;
};

SurfaceLook LookOf(const PictureBox& s) {
    return {double(s.ScaleWidth()), double(s.ScaleHeight()), s.PixelRatio(),     s.FontSize(),
            s.FontName(),           s.BackColor(),           s.FontTransparent()};
}

struct Drawn {
    uint64_t Generation = 0; // of the surface right after the drawing; 0: none
    SurfaceLook Look;
    Input In; // its spans point into the copies below
    std::vector<double> X, Y, OverlayX, OverlayY, Heights, PinnedX, PinnedY;
};

Drawn& Last() {
    static Drawn drawn;
    return drawn;
}

bool Same(std::span<const double> a, std::span<const double> b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end());
}

// Everything but the LSL's and USL's values is as it was drawn.
bool SameButLimits(const Input& a, const Input& b) {
    return a.Refresh == b.Refresh && a.XTicks == b.XTicks && a.YTicks == b.YTicks &&
           a.XTickLength == b.XTickLength && a.YTickLength == b.YTickLength && Same(a.X, b.X) &&
           Same(a.Y, b.Y) && a.LSL.Ticked == b.LSL.Ticked && a.Target.Ticked == b.Target.Ticked &&
           (!a.Target.Ticked || a.Target.Value == b.Target.Value) && a.USL.Ticked == b.USL.Ticked &&
           a.DraggingLSL == b.DraggingLSL && a.DraggingUSL == b.DraggingUSL && a.XAxis == b.XAxis &&
           a.YAxis == b.YAxis && a.Labels == b.Labels && a.BackColor == b.BackColor &&
           a.InSpecColor == b.InSpecColor && a.OutSpecColor == b.OutSpecColor &&
           a.Overlay == b.Overlay && Same(a.OverlayX, b.OverlayX) && Same(a.OverlayY, b.OverlayY) &&
           a.LSLMarkerWidth == b.LSLMarkerWidth && a.USLMarkerWidth == b.USLMarkerWidth &&
           a.Bins.Low == b.Bins.Low && a.Bins.Width == b.Bins.Width &&
           Same(a.Bins.Heights, b.Bins.Heights) && Same(a.PinnedX, b.PinnedX) &&
           Same(a.PinnedY, b.PinnedY);
}

void Remember(const PictureBox& surface, const Input& in, const SurfaceLook& look) {
    Drawn& d = Last();
    d.Look = look;
    d.X.assign(in.X.begin(), in.X.end());
    d.Y.assign(in.Y.begin(), in.Y.end());
    d.OverlayX.assign(in.OverlayX.begin(), in.OverlayX.end());
    d.OverlayY.assign(in.OverlayY.begin(), in.OverlayY.end());
    d.Heights.assign(in.Bins.Heights.begin(), in.Bins.Heights.end());
    d.PinnedX.assign(in.PinnedX.begin(), in.PinnedX.end());
    d.PinnedY.assign(in.PinnedY.begin(), in.PinnedY.end());
    d.In = in;
    d.In.X = d.X;
    d.In.Y = d.Y;
    d.In.OverlayX = d.OverlayX;
    d.In.OverlayY = d.OverlayY;
    d.In.Bins.Heights = d.Heights;
    d.In.PinnedX = d.PinnedX;
    d.In.PinnedY = d.PinnedY;
    d.Generation = surface.Generation();
}

// The logical step whose multiples fall on whole device pixels (2 at ratio
// 1.5, 4 at 1.25); 0 when there is none small enough.
int DeviceAlignedStep(double ratio) {
    for (int k = 1; k <= 8; ++k)
        if (std::fabs(k * ratio - std::round(k * ratio)) < 1e-9) return k;
    return 0;
}

// The columns a move of the spec limits can change: their old and new lines
// and labels, and the shading between (each line of shading reaches at most
// one sample gap to either side of its sample).
std::optional<QRect> ChangedStrip(PictureBox& surface, const Input& was, const Input& in) {
    const int step = DeviceAlignedStep(surface.PixelRatio());
    if (step == 0) return std::nullopt;
    Geometry g = GeometryOf(surface.ScaleWidth(), surface.ScaleHeight(), in);
    const std::size_t n = PointCount(in.X, in.Y);
    double gap = 1;
    for (std::size_t i = 2; i <= n; ++i)
        gap = std::max(gap, std::fabs(g.Px(in.X[i]) - g.Px(in.X[i - 1])));
    const double label = std::max(surface.TextWidth(QStringLiteral("LSL")),
                                  surface.TextWidth(QStringLiteral("USL")));
    double lo = 1e300, hi = -1e300;
    const auto cover = [&](const Limit& a, const Limit& b) {
        if (!a.Ticked || a.Value == b.Value) return;
        for (double v : {a.Value, b.Value}) {
            const double px = g.Px(v);
            lo = std::min(lo, px - std::max(gap, 10.0));
            hi = std::max(hi, px + std::max(gap, label - 10.0) + 1);
        }
    };
    cover(was.LSL, in.LSL);
    cover(was.USL, in.USL);
    if (!(lo <= hi)) return std::nullopt;
    // A few pixels more for rounding and the glyphs' edges, out to whole device pixels.
    constexpr double kPad = 4;
    const double w = surface.ScaleWidth();
    const double left = std::max(0.0, std::floor((lo - kPad) / step) * step);
    const double right = std::min(std::ceil(w / step) * step, std::ceil((hi + kPad) / step) * step);
    if (!(left < right)) return std::nullopt;
    return QRect(static_cast<int>(left), 0, static_cast<int>(right - left), surface.ScaleHeight());
}

Result DrawWhole(PictureBox& surface, const Input& in);

} // namespace

Geometry Geometry::ForSize(double w, double h) {
    Geometry g;
    g.W = w;
    g.H = h;
    g.X0 = 0.15 * w;
    g.Y0 = 0.85 * h;
    g.PlotWidth = 0.85 * w - (0.15 * w) / 2;
    g.PlotHeight = 0.85 * h - 0.15 * h;
    g.LastPy = g.Y0 - g.PlotHeight;
    return g;
}

void Geometry::SetRanges(std::span<const double> x, std::span<const double> y) {
    // Kept: the density's running maximum starts at -1e30 (no density is below
    // it). The others start beyond any value, so a curve beyond 1e30 (mean
    // 1e300) keeps its own ends.
    constexpr double kBeyond = std::numeric_limits<double>::infinity();
    double xMin = kBeyond, xMax = -kBeyond, yMin = kBeyond, yMax = -1e30;
    const std::size_t n = PointCount(x, y);
    for (std::size_t i = 1; i <= n; ++i) {
        if (x[i] < xMin) xMin = x[i];
        if (x[i] > xMax) xMax = x[i];
        if (y[i] < yMin) yMin = y[i];
        if (y[i] > yMax) yMax = y[i];
    }
    if (n == 0) xMin = yMin = 1e30, xMax = -1e30; // nothing drawn, nothing infinite
    XLow = xMin;
    XRange = support::ck(xMax - xMin);
    YLow = yMin;
    YRange = support::ck(yMax - yMin);
    // A curve that is zero everywhere (a fit with no curve, a support outside
    // the range) has nothing under it: it lies on the baseline, not as a full box.
    if (YRange == 0 && yMax <= 0) LastPy = Y0;
}

double Geometry::Px(double x) const {
    return support::ck(X0 + (x - XLow) * PlotWidth / XRange);
}

double Geometry::Py(double density) {
    // A flat curve keeps the previous py rather than dividing by zero.
    if (YRange != 0) LastPy = support::ck(Y0 - (density - YLow) * PlotHeight / YRange);
    return LastPy;
}

double Geometry::ValueAtPixel(double pointerX) const {
    return support::ck(XLow + (pointerX - X0) * XRange / PlotWidth);
}

void Geometry::Cover(double xLow, double xHigh, double yHigh) {
    const double xTop = XLow + XRange;
    if (xLow < XLow || xHigh > xTop) {
        XLow = std::min(XLow, xLow);
        XRange = support::ck(std::max(xTop, xHigh) - XLow);
    }
    if (yHigh > YLow + YRange) YRange = support::ck(yHigh - YLow);
}

Geometry GeometryOf(double w, double h, const Input& in) {
    Geometry g = Geometry::ForSize(w, h);
    g.SetRanges(in.X, in.Y);
    const auto& bins = in.Bins;
    if (!bins.Heights.empty()) {
        const double top = *std::max_element(bins.Heights.begin(), bins.Heights.end());
        g.Cover(bins.Low, bins.Low + static_cast<double>(bins.Heights.size()) * bins.Width, top);
    }
    const std::size_t n = PointCount(in.PinnedX, in.PinnedY);
    if (n >= 1) {
        const auto [lo, hi] =
            std::minmax_element(in.PinnedX.begin() + 1, in.PinnedX.begin() + n + 1);
        const double top = *std::max_element(in.PinnedY.begin() + 1, in.PinnedY.begin() + n + 1);
        g.Cover(*lo, *hi, top);
    }
    return g;
}

bool MarkerHit(double pointerX, double markerLeft, double markerWidth) {
    return pointerX >= markerLeft && pointerX <= markerLeft + markerWidth;
}

Result Draw(PictureBox& surface, const Input& in) {
    const SurfaceLook look = LookOf(surface);
    const Drawn& last = Last();
    const bool unchangedPicture = last.Generation != 0 && last.Generation == surface.Generation() &&
                                  in.Refresh && last.Look == look && SameButLimits(last.In, in);
    std::optional<QRect> strip;
    if (unchangedPicture) strip = ChangedStrip(surface, last.In, in);
    Last().Generation = 0; // forgotten until this drawing has finished
    Result result;
    if (strip) {
        // The clip goes with the drawing, also when a fault ends it early.
        struct Unclip {
            PictureBox& Surface;
            ~Unclip() { Surface.ClearClip(); }
        } unclip{surface};
        surface.SetClip(*strip);
        result = DrawWhole(surface, in);
        result.RedrawnLeft = strip->left();
        result.RedrawnWidth = strip->width();
    } else {
        result = DrawWhole(surface, in);
        result.RedrawnWidth = surface.ScaleWidth();
    }
    Remember(surface, in, look);
    return result;
}

namespace {

Result DrawWhole(PictureBox& surface, const Input& in) {
    Result result;

    if (in.Refresh) {
        surface.SetBackColor(in.BackColor);
        surface.Cls();
    }

    const double w = surface.ScaleWidth();
    const double h = surface.ScaleHeight();
    Geometry g = Geometry::ForSize(w, h);
    surface.SetForeColor(kBlack);
    surface.SetDrawWidth(1);

    if (in.Refresh) {
        if (in.XAxis) surface.Line(0.15 * w, 0.85 * h, 0.85 * w, 0.85 * h, kBlack);
        if (in.YAxis) surface.Line(0.15 * w, 0.15 * h, 0.15 * w, 0.85 * h, kBlack);
    }

    g = GeometryOf(w, h, in);

    // Shading: one vertical line per sample, coloured sample by sample. Each
    // line is as wide as its share of the gaps to its neighbours (at least one
    // pixel), so the area reads as filled without stripes.
    const std::size_t n = PointCount(in.X, in.Y);
    // The end samples get no outer share, so nothing pokes past them.
    std::vector<double> sampleX(n + 2, 0.0);
    for (std::size_t i = 1; i <= n; ++i)
        sampleX[i] = g.Px(in.X[i]);
    if (n >= 1) {
        sampleX[0] = sampleX[1];
        sampleX[n + 1] = sampleX[n];
    }
    std::vector<PictureBox::Bar> bars;
    bars.reserve(n);
    for (std::size_t i = 1; i <= n; ++i) {
        const double x = in.X[i];
        const double py = g.Py(in.Y[i]);
        const bool out = (in.LSL.Ticked && x < in.LSL.Value) || (in.USL.Ticked && x > in.USL.Value);
        const uint32_t color = out ? in.OutSpecColor : in.InSpecColor;
        surface.SetForeColor(color);
        surface.SetFillColor(color);
        // From halfway to the left neighbour to halfway to the right one, and
        // never narrower than the sample's own pixel; edges at device resolution.
        const double left = std::min(sampleX[i], (sampleX[i - 1] + sampleX[i]) / 2);
        const double right = std::max(sampleX[i] + 1, (sampleX[i] + sampleX[i + 1]) / 2);
        bars.push_back({left, right, std::min(g.Y0, py), std::max(g.Y0, py) + 1, color});
    }
    surface.FillBars(bars);
    surface.SetForeColor(kBlack);

    // The data and the pinned curve over the shading, under everything else.
    DrawHistogram(surface, g, in.Bins);
    DrawPinned(surface, g, in.PinnedX, in.PinnedY);

    // Ticks and their labels.
    if (in.Refresh) {
        const double fontSize = surface.FontSize();
        if (in.XAxis) {
            const double step = support::ck(g.PlotWidth / in.XTicks);
            const std::vector<QString> labels =
                TickTexts(g.XLow, support::ck(g.XRange / in.XTicks), in.XTicks);
            for (int i = 0; i <= in.XTicks; ++i) {
                const double px = support::ck(g.X0 + i * step);
                surface.Line(px, g.Y0, px, g.Y0 + in.XTickLength, kBlack);
                surface.CurrentX = px - 10;
                surface.CurrentY = g.Y0 + fontSize;
                surface.Print(labels[i]);
            }
        }
        if (in.YAxis) {
            const double step = support::ck(g.PlotHeight / in.YTicks);
            const std::vector<QString> labels =
                TickTexts(g.YLow, support::ck(g.YRange / in.YTicks), in.YTicks);
            for (int i = 0; i <= in.YTicks; ++i) {
                const double py = support::ck(g.Y0 - i * step);
                surface.Line(g.X0, py, g.X0 - in.YTickLength, py, kBlack);
                // A label longer than "0.00" ends short of its tick instead of
                // running into the plot.
                const double clear = g.X0 - in.YTickLength - 2 - surface.TextWidth(labels[i]);
                surface.CurrentX = std::min(g.X0 - fontSize - 20, clear);
                surface.CurrentY = py - 5;
                surface.Print(labels[i]);
            }
        }
    }

    // The text cursor is parked; the chart has no axis titles.
    surface.CurrentX = 0.04 * w;
    surface.CurrentY = 0.03 * h;

    // Spec-limit lines, labels and markers.
    auto limitLine = [&](const Limit& limit, int width, uint32_t color, const char* label,
                         double labelShift) -> double {
        const double px = g.Px(limit.Value);
        const double top = g.Py(g.YLow + g.YRange);
        surface.SetDrawWidth(width);
        surface.Line(px, g.Y0, px, top, color);
        surface.SetDrawWidth(1);
        if (in.Labels) {
            surface.CurrentX = px - labelShift;
            surface.CurrentY = 2;
            surface.Print(QString::fromLatin1(label));
        }
        return px;
    };
    if (in.LSL.Ticked) {
        const double px = limitLine(in.LSL, 2, in.DraggingLSL ? look::kRed : kBlack, "LSL", 10);
        result.LSLMarker = {support::ck(px - in.LSLMarkerWidth / 2), true};
    }
    if (in.Target.Ticked) {
        // The longer word is shifted further left.
        limitLine(in.Target, 3, kBlack, "Target", 15);
    }
    if (in.USL.Ticked) {
        const double px = limitLine(in.USL, 2, in.DraggingUSL ? look::kRed : kBlack, "USL", 10);
        result.USLMarker = {support::ck(px - in.USLMarkerWidth / 2), true};
    }

    // The baseline over the shading, out to the plot's right end.
    surface.Line(g.X0, g.Y0, g.X0 + g.PlotWidth, g.Y0, kBlack);

    // The curve as sub-pixel dots, then the overlay in light green.
    DrawDots(surface, g, in.X, in.Y, 0, 0, 0);
    if (in.Overlay) DrawDots(surface, g, in.OverlayX, in.OverlayY, 125, 255, 125);

    surface.Refresh();
    result.Geom = g;
    return result;
}

} // namespace

} // namespace DensityChart
