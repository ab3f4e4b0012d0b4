// Independent references for the Johnson tests: the moments of a curve by
// composite Gauss-Legendre quadrature over the normal variate (with the inverse
// transforms written out here, not taken from the code under test), the normal
// quantile by Newton's method on std::erfc, and the lognormal line.
#pragma once

#include <algorithm>
#include <cmath>
#include <functional>
#include <string>
#include <vector>

namespace johnson_reference {

struct Moments {
    double Mean = 0, Sd = 0, Skew = 0, Kurt = 0;
};

// Nodes and weights of the 16-point Gauss-Legendre rule on [-1, 1], by Newton's
// method on the Legendre polynomial.
inline const std::vector<std::pair<double, double>>& GaussLegendre16() {
    static const auto rule = [] {
        const int n = 16;
        std::vector<std::pair<double, double>> r;
        for (int i = 0; i < n; ++i) {
            double t = std::cos(M_PI * (i + 0.75) / (n + 0.5)), dp = 1;
            for (int it = 0; it < 100; ++it) {
                double p0 = 1, p1 = t;
                for (int k = 2; k <= n; ++k) {
                    const double p2 = ((2 * k - 1) * t * p1 - (k - 1) * p0) / k;
                    p0 = p1, p1 = p2;
                }
                dp = n * (t * p1 - p0) / (t * t - 1);
                t -= p1 / dp;
                if (std::fabs(p1 / dp) < 1e-16) break;
            }
            r.emplace_back(t, 2 / ((1 - t * t) * dp * dp));
        }
        return r;
    }();
    return rule;
}

// Moments of X = x(Z), Z standard normal, over the segments {lo, hi, panel width}
// in Gauss-Legendre panels; central moments from a second pass about the mean.
struct Segment {
    double Lo, Hi, Panel;
};
inline Moments OfTransformOn(const std::function<double(double)>& x,
                             const std::vector<Segment>& segments) {
    std::vector<std::pair<double, double>> pts; // value, weight
    for (const Segment& s : segments) {
        if (!(s.Hi > s.Lo)) continue;
        const int panels = static_cast<int>(std::ceil((s.Hi - s.Lo) / s.Panel));
        const double h = (s.Hi - s.Lo) / panels;
        for (int p = 0; p < panels; ++p)
            for (const auto& [t, w] : GaussLegendre16()) {
                const double z = s.Lo + (p + 0.5 + 0.5 * t) * h;
                pts.emplace_back(x(z), 0.5 * h * w * std::exp(-0.5 * z * z) / std::sqrt(2 * M_PI));
            }
    }
    double m = 0, c2 = 0, c3 = 0, c4 = 0;
    for (const auto& [v, w] : pts)
        m += w * v;
    for (const auto& [v, w] : pts) {
        const double d = v - m, d2 = d * d;
        c2 += w * d2, c3 += w * d2 * d, c4 += w * d2 * d2;
    }
    if (!(c2 > 1e-150)) return {m, 0, 0, 0}; // too little spread for c2^2 in double precision
    return {m, std::sqrt(c2), c3 / (c2 * std::sqrt(c2)), c4 / (c2 * c2)};
}

// The same over [-zmax, zmax] in panels of about the given width.
inline Moments OfTransform(const std::function<double(double)>& x, double zmax,
                           double panel = 0.25) {
    return OfTransformOn(x, {{-zmax, zmax, panel}});
}

// 1 / (1 + exp(-t)) without overflow (a raised flag would outlive the test).
inline double Logistic(double t) {
    return t >= 0 ? 1 / (1 + std::exp(-t)) : std::exp(t) / (1 + std::exp(t));
}

// Moments of the SB curve X = xi + lamda / (1 + exp(-(Z - gamma) / delta)), from
// Johnson's definition; bounded, so the normal weight alone sets the range.
inline Moments OfSB(double delta, double gamma, double lamda, double xi) {
    // Narrow panels only where the logistic steps, within 40 delta of gamma.
    const double d = std::min(0.25, delta), a = std::clamp(gamma - 40 * d, -12.0, 12.0),
                 b = std::clamp(gamma + 40 * d, -12.0, 12.0);
    return OfTransformOn([=](double z) { return xi + lamda * Logistic((z - gamma) / delta); },
                         {{-12, a, 0.25}, {a, b, d}, {b, 12, 0.25}});
}

// Moments of the SU curve X = xi + lamda sinh((Z - gamma) / delta) in closed form
// (Johnson 1949, with w = exp(delta^-2), W = gamma / delta).
inline Moments OfSU(double delta, double gamma, double lamda, double xi) {
    const double w = std::exp(1 / (delta * delta)), W = gamma / delta;
    const double var = 0.5 * (w - 1) * (w * std::cosh(2 * W) + 1);
    const double m3 = -0.25 * std::sqrt(w) * (w - 1) * (w - 1) *
                      (w * (w + 2) * std::sinh(3 * W) + 3 * std::sinh(W));
    const double m4 = 0.125 * (w - 1) * (w - 1) *
                      (w * w * (w * w * w * w + 2 * w * w * w + 3 * w * w - 3) * std::cosh(4 * W) +
                       4 * w * w * (w + 2) * std::cosh(2 * W) + 3 * (2 * w + 1));
    return {xi - lamda * std::sqrt(w) * std::sinh(W), lamda * std::sqrt(var),
            m3 / (var * std::sqrt(var)), m4 / (var * var)};
}

// Inverse normal by Newton's method on erfc, working in the smaller tail so the
// residual keeps its digits: an independent check on PPND.
inline double NormalQuantile(double p) {
    double z = p < 0.5   ? -std::sqrt(-2 * std::log(p))
               : p > 0.5 ? std::sqrt(-2 * std::log1p(-p))
                         : 0;
    for (int i = 0; i < 200; ++i) {
        const double f = 0.5 * (p < 0.5 ? std::erfc(-z / M_SQRT2) - 2 * p
                                        : 2 * (1 - p) - std::erfc(z / M_SQRT2));
        const double step = f / (std::exp(-0.5 * z * z) / std::sqrt(2 * M_PI));
        z -= step;
        if (std::fabs(step) <= 1e-15 * std::max(1.0, std::fabs(z))) break;
    }
    return z;
}

// Beta2 on the lognormal line at this skewness (Johnson's w = exp(delta^-2)).
inline double LognormalLine(double s) {
    const double b1 = s * s;
    const double u = std::cbrt(0.5 * b1 + 1 + std::fabs(s) * std::sqrt(0.25 * b1 + 1));
    const double w = u + 1 / u - 1;
    return w * w * w * w + 2 * w * w * w + 3 * w * w - 3;
}

} // namespace johnson_reference
