// Independent references for the Johnson tests: the moments of a fitted curve by
// composite Gauss-Legendre quadrature over the normal variate (with the closed
// inverse transforms written out here, not taken from the code under test), and
// the standard normal distribution from std::erfc.
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

// Nodes and weights of the n-point Gauss-Legendre rule on [-1, 1], by Newton's
// method on the Legendre polynomial.
inline void GaussLegendre(int n, std::vector<double>& x, std::vector<double>& w) {
    x.assign(n, 0);
    w.assign(n, 0);
    const double pi = std::acos(-1.0);
    for (int i = 0; i < n; ++i) {
        double t = std::cos(pi * (i + 0.75) / (n + 0.5));
        double dp = 1;
        for (int it = 0; it < 100; ++it) {
            double p0 = 1, p1 = t;
            for (int k = 2; k <= n; ++k) {
                const double p2 = ((2 * k - 1) * t * p1 - (k - 1) * p0) / k;
                p0 = p1;
                p1 = p2;
            }
            dp = n * (t * p1 - p0) / (t * t - 1);
            const double step = p1 / dp;
            t -= step;
            if (std::fabs(step) < 1e-16) break;
        }
        x[i] = t;
        w[i] = 2 / ((1 - t * t) * dp * dp);
    }
}

// Moments of X = x(Z), Z standard normal, integrated over [-zmax, zmax] in
// panels of the given width; central moments from a second pass about the mean.
inline Moments OfTransform(const std::function<double(double)>& x, double zmax,
                           double panel = 0.25) {
    static std::vector<double> gx, gw;
    if (gx.empty()) GaussLegendre(16, gx, gw);
    const double c = 1 / std::sqrt(2 * std::acos(-1.0));
    const int panels = static_cast<int>(std::ceil(2 * zmax / panel));
    const double h = 2 * zmax / panels;
    std::vector<double> nodes, weights;
    nodes.reserve(panels * gx.size());
    weights.reserve(panels * gx.size());
    for (int p = 0; p < panels; ++p) {
        const double mid = -zmax + (p + 0.5) * h;
        for (std::size_t i = 0; i < gx.size(); ++i) {
            const double z = mid + 0.5 * h * gx[i];
            nodes.push_back(x(z));
            weights.push_back(0.5 * h * gw[i] * c * std::exp(-0.5 * z * z));
        }
    }
    double m1 = 0;
    for (std::size_t i = 0; i < nodes.size(); ++i) m1 += weights[i] * nodes[i];
    double c2 = 0, c3 = 0, c4 = 0;
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        const double d = nodes[i] - m1, d2 = d * d;
        c2 += weights[i] * d2;
        c3 += weights[i] * d2 * d;
        c4 += weights[i] * d2 * d2;
    }
    Moments m;
    m.Mean = m1;
    m.Sd = std::sqrt(c2);
    m.Skew = c3 / (c2 * m.Sd);
    m.Kurt = c4 / (c2 * c2);
    return m;
}

// The curve of a JDistribution text ("SB", "SU", "SL", "Normal") with the four
// parameters, written from Johnson's definitions:
//   SB: X = xi + lamda / (1 + exp(-(Z - gamma) / delta))
//   SU: X = xi + lamda sinh((Z - gamma) / delta)
//   SL: X = xi + lamda exp((Z - gamma) / delta), lamda = +-1 (Z and -Z share a law)
//   Normal: X = (Z - gamma) / delta
inline Moments OfCurve(const std::string& type, double delta, double gamma, double lamda,
                       double xi) {
    if (type == "Normal") return {-gamma / delta, 1 / delta, 0, 3};
    // The fourth moment's integrand peaks near z = 4 / delta.
    const double zmax = 12 + 4 / delta;
    if (type == "SB") // bounded: the normal weight alone sets the range
        return OfTransform(
            [=](double z) { return xi + lamda / (1 + std::exp(-(z - gamma) / delta)); }, 12,
            std::min(0.25, delta));
    if (type == "SU")
        return OfTransform([=](double z) { return xi + lamda * std::sinh((z - gamma) / delta); },
                           zmax);
    return OfTransform([=](double z) { return xi + lamda * std::exp((z - gamma) / delta); }, zmax);
}

inline double NormalCdf(double z) { return 0.5 * std::erfc(-z / std::sqrt(2.0)); }
inline double NormalUpper(double z) { return 0.5 * std::erfc(z / std::sqrt(2.0)); }

// Inverse normal by Newton's method on erfc, started from a crude guess: an
// independent check on PPND.
inline double NormalQuantile(double p) {
    double z = 0;
    if (p < 0.5) z = -std::sqrt(-2 * std::log(p));
    else if (p > 0.5) z = std::sqrt(-2 * std::log1p(-p));
    const double c = 1 / std::sqrt(2 * std::acos(-1.0));
    for (int i = 0; i < 200; ++i) {
        // Work in the smaller tail so the residual keeps its digits.
        const double f = p < 0.5 ? NormalCdf(z) - p : (1 - p) - NormalUpper(z);
        const double step = f / (c * std::exp(-0.5 * z * z));
        z -= step;
        if (std::fabs(step) <= 1e-15 * std::max(1.0, std::fabs(z))) break;
    }
    return z;
}

} // namespace johnson_reference
