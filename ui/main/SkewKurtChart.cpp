#include "ui/main/SkewKurtChart.h"

#include "support/ErrorTrap.h"
#include "support/Format.h"
#include "ui/draw/Look.h"
#include "ui/draw/PictureBox.h"
#include "ui/draw/m_AntiAlias.h"
#include "ui/draw/m_GetDIBBits.h"

#include <algorithm>
#include <cmath>

namespace SkewKurtChart {

namespace {

using look::kBlack;
using look::kWhite;

void Frame(PictureBox& surface, double w, double h) {
    surface.SetDrawWidth(1);
    surface.Line(0, 0, w - 1, 0, kBlack);
    surface.Line(w - 1, 0, w - 1, h - 1, kBlack);
    surface.Line(w - 1, h - 1, 0, h - 1, kBlack);
    surface.Line(0, h - 1, 0, 0, kBlack);
}

} // namespace

Boundary MakeBoundary(double skewFrom, double skewTo) {
    Boundary b;
    b.S.resize(kBoundaryPoints);
    b.K.resize(kBoundaryPoints);
    for (int i = 0; i < kBoundaryPoints; ++i) {
        b.S[i] = support::ck(skewFrom + (skewTo - skewFrom) * i / (kBoundaryPoints - 1));
        b.K[i] = support::ck(b.S[i] * b.S[i] + 1);
    }
    return b;
}

double DrawScale::X(double skew) const {
    return support::ck((skew - SkewLow) / (SkewHigh - SkewLow) * W);
}

double DrawScale::Y(double kurt) const {
    return support::ck(H - kurt * H / KurtTop);
}

Result Draw(PictureBox& surface, const Boundary& boundary, const Input& in) {
    Result result;
    const std::size_t n = std::min(boundary.S.size(), boundary.K.size());

    surface.SetBackColor(kWhite);
    surface.SetForeColor(kBlack);
    const double w = surface.ScaleWidth();
    const double h = surface.ScaleHeight();
    if (in.Refresh) {
        surface.Cls();
        Frame(surface, w, h);
    }

    // The drawing's scale: skewness over the boundary's span, kurtosis from 0.
    DrawScale scale;
    scale.W = w;
    scale.H = h;
    double skewLow = 1e30, skewHigh = -1e30, kurtTop = -1e30;
    for (std::size_t i = 0; i < n; ++i) {
        skewLow = std::min(skewLow, boundary.S[i]);
        skewHigh = std::max(skewHigh, boundary.S[i]);
        kurtTop = std::max(kurtTop, boundary.K[i]);
    }
    scale.SkewLow = skewLow;
    scale.SkewHigh = skewHigh;
    scale.KurtTop = kurtTop;

    // The impossible region: one vertical line per boundary point, wide
    // enough that neighbouring lines leave no white column between them.
    const uint32_t shadow = look::kButtonShadow;
    surface.SetForeColor(shadow);
    surface.SetFillColor(shadow);
    const int width =
        n > 1 ? std::max(1, static_cast<int>(std::ceil(w / static_cast<double>(n - 1)))) : 1;
    surface.SetDrawWidth(width);
    for (std::size_t i = 0; i < n; ++i) {
        const double x = scale.X(boundary.S[i]);
        const double y = scale.Y(boundary.K[i]);
        surface.Line(x, h - 1, x, y, shadow);
    }
    surface.SetDrawWidth(1);
    surface.SetForeColor(kBlack);

    // Ticks into the plot from the bottom and the left edge.
    if (in.XAxis) {
        for (int j = 0; j <= in.XTicks; ++j) {
            const double x = support::ck(j * w / in.XTicks);
            surface.Line(x, h - 1, x, h - in.XTickLength, kBlack);
        }
    }
    if (in.YAxis) {
        for (int j = 0; j <= in.YTicks; ++j) {
            const double y = support::ck(h - j * h / in.YTicks);
            surface.Line(0, y, in.YTickLength - 1, y, kBlack);
        }
    }

    // Axis ends; the bottom caption says 1 although the drawing starts at 0.
    result.Texts.XMin = support::Format(skewLow, "0.0");
    result.Texts.XMax = support::Format(skewHigh, "0.0");
    result.Texts.YMin = support::Format(1, "0.0");
    result.Texts.YMax = support::Format(kurtTop, "0.0");

    // The boundary itself, anti-aliased, each point one pixel lower so it
    // sits on the grey region's edge under the pixel rule of the buffer.
    if (n > 1 && m_GetDIBBits::InitSetDIBPixel(surface)) {
        for (std::size_t i = 0; i + 1 < n; ++i) {
            m_AntiAlias::AALine(scale.X(boundary.S[i]), scale.Y(boundary.K[i]) + 1,
                                scale.X(boundary.S[i + 1]), scale.Y(boundary.K[i + 1]) + 1, 0, 0,
                                0);
        }
        m_GetDIBBits::FinishSetDIBPixel(surface);
    }
    // The frame once more, over the grey region's edge columns and bottom row.
    if (in.Refresh) Frame(surface, w, h);

    surface.Refresh();
    result.Scale = scale;
    return result;
}

double PickScale::SkewToX(double skew) const {
    return support::ck((skew - SkewMin) / (SkewMax - SkewMin) * W + L);
}

double PickScale::KurtToY(double kurt) const {
    return support::ck(T + H - (kurt - KurtMin) / (KurtMax - KurtMin) * H);
}

double PickScale::XToSkew(double x) const {
    return support::ck(x / W * (SkewMax - SkewMin) + SkewMin);
}

double PickScale::YToKurt(double y) const {
    return support::ck(y / H * (KurtMin - KurtMax) + KurtMax);
}

MarkerPos MarkerAfterDraw(const PickScale& scale, double skew, double kurt, double width,
                          double height) {
    const double x = scale.SkewToX(skew);
    const double y = scale.KurtToY(kurt);
    return {support::ck(x - width / 2), support::ck(y + height / 2)};
}

MarkerPos MarkerCentred(const PickScale& scale, double skew, double kurt, double width,
                        double height) {
    const double x = scale.SkewToX(skew);
    const double y = scale.KurtToY(kurt);
    return {support::ck(x - width / 2), support::ck(y - height / 2)};
}

DataPointView DataPoint(const PickScale& scale, double skew, double kurt, double width,
                        double height) {
    const double x = scale.SkewToX(skew), y = scale.KurtToY(kurt);
    return {MarkerCentred(scale, skew, kurt, width, height),
            x >= 0 && x <= scale.W && y >= 0 && y <= scale.H};
}

double FollowingKurtMax(double kurtosis) {
    return std::nearbyint(support::ck(std::fabs(kurtosis) * 1.5));
}

LockView Locks(PickScale scale, bool lockSkew, bool lockKurt, bool drawByMoments, double skew,
               double kurt, double width, double height) {
    LockView v;
    if (lockSkew) v.SkewLineX = scale.SkewToX(skew);
    if (lockKurt) {
        if (!drawByMoments) scale.KurtMax = *(v.KurtMax = FollowingKurtMax(kurt));
        v.KurtLineY = scale.KurtToY(kurt);
    }
    v.Marker = MarkerCentred(scale, skew, kurt, width, height);
    return v;
}

DragStep Drag(const PickScale& scale, double x, double y, bool lockSkew, bool lockKurt, double skew,
              double kurt, double width, double height) {
    DragStep d;
    if (!lockSkew) {
        d.Skew = scale.XToSkew(x);
        d.Marker.Left = x - width / 2.0;
    } else {
        d.Marker.Left = scale.SkewToX(skew) - width / 2.0;
    }
    if (!lockKurt) {
        d.Kurt = scale.YToKurt(y);
        d.Marker.Top = y - height / 2.0;
    } else {
        d.Marker.Top = scale.KurtToY(kurt) - height / 2.0;
    }
    return d;
}

bool Free(PictureBox& surface, double x, double y) {
    return surface.GetPixel(int(std::nearbyint(x)), int(std::nearbyint(y))) == kWhite;
}

} // namespace SkewKurtChart
