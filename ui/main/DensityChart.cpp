#include "ui/main/DensityChart.h"

#include "support/ErrorTrap.h"
#include "support/Format.h"
#include "ui/draw/Look.h"
#include "ui/draw/PictureBox.h"
#include "ui/draw/m_AntiAlias.h"
#include "ui/draw/m_GetDIBBits.h"

#include <QString>

#include <algorithm>
#include <cmath>
#include <vector>

namespace DensityChart {

namespace {

using look::kBlack;

std::size_t PointCount(std::span<const double> x, std::span<const double> y) {
    const std::size_t n = std::min(x.size(), y.size());
    return n > 0 ? n - 1 : 0;
}

QString Label(double value) {
    return QString::fromStdString(support::Format(value, "0.00"));
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
    double xMin = 1e30, xMax = -1e30, yMin = 1e30, yMax = -1e30;
    const std::size_t n = PointCount(x, y);
    for (std::size_t i = 1; i <= n; ++i) {
        if (x[i] < xMin) xMin = x[i];
        if (x[i] > xMax) xMax = x[i];
        if (y[i] < yMin) yMin = y[i];
        if (y[i] > yMax) yMax = y[i];
    }
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

bool MarkerHit(double pointerX, double markerLeft, double markerWidth) {
    return pointerX >= markerLeft && pointerX <= markerLeft + markerWidth;
}

Result Draw(PictureBox& surface, const Input& in) {
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

    g.SetRanges(in.X, in.Y);

    // Shading: one vertical line per sample, coloured sample by sample. Each
    // line is as wide as its share of the gaps to its neighbours (at least one
    // pixel), so the area reads as filled without stripes.
    const std::size_t n = PointCount(in.X, in.Y);
    // The end samples get no outer share, so nothing pokes past them.
    std::vector<double> px(n + 2, 0.0);
    for (std::size_t i = 1; i <= n; ++i)
        px[i] = g.Px(in.X[i]);
    if (n >= 1) {
        px[0] = px[1];
        px[n + 1] = px[n];
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
        const double left = std::min(px[i], (px[i - 1] + px[i]) / 2);
        const double right = std::max(px[i] + 1, (px[i] + px[i + 1]) / 2);
        bars.push_back({left, right, std::min(g.Y0, py), std::max(g.Y0, py) + 1, color});
    }
    surface.FillBars(bars);
    surface.SetForeColor(kBlack);

    // Ticks and their labels.
    if (in.Refresh) {
        const double fontSize = surface.FontSize();
        if (in.XAxis) {
            const double step = support::ck(g.PlotWidth / in.XTicks);
            const double valueStep = support::ck(g.XRange / in.XTicks);
            for (int i = 0; i <= in.XTicks; ++i) {
                const double px = support::ck(g.X0 + i * step);
                surface.Line(px, g.Y0, px, g.Y0 + in.XTickLength, kBlack);
                surface.CurrentX = px - 10;
                surface.CurrentY = g.Y0 + fontSize;
                surface.Print(Label(support::ck(g.XLow + i * valueStep)));
            }
        }
        if (in.YAxis) {
            const double step = support::ck(g.PlotHeight / in.YTicks);
            const double valueStep = support::ck(g.YRange / in.YTicks);
            for (int i = 0; i <= in.YTicks; ++i) {
                const double py = support::ck(g.Y0 - i * step);
                surface.Line(g.X0, py, g.X0 - in.YTickLength, py, kBlack);
                surface.CurrentX = g.X0 - fontSize - 20;
                surface.CurrentY = py - 5;
                surface.Print(Label(support::ck(g.YLow + i * valueStep)));
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

} // namespace DensityChart
