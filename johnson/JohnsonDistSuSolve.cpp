// The SU solve that finishes SUFIT: AS 99's iteration stops on |beta1 - z| <=
// 1e-4, loose for a small skewness, and its arithmetic breaks down far out; the
// shape is then found by nested one-dimensional solves on Johnson's closed-form
// beta1 and beta2 of the SU curve (Johnson 1949).
#include "johnson/JohnsonDistFit.h"

#include <cmath>

namespace {

// A root of f on [a, b], f(a) < 0 < f(b), by the Illinois form of regula falsi
// (bracketed, so it cannot run off; superlinear, so it is quick). f may return
// NaN where it cannot be evaluated (past the numbers, on the far side of the
// root): such a point counts as above the root.
template <class F> bool Illinois(F&& f, double a, double fa, double b, double fb, double& x) {
    int side = 0;
    for (int k = 0; k < 200; ++k) {
        x = (fa * b - fb * a) / (fa - fb);
        if (!(x > a && x < b)) x = 0.5 * (a + b);
        const double fx = f(x);
        if (fx == 0 || b - a <= 4e-16 * std::fabs(x)) return std::isfinite(fx);
        if (std::isnan(fx) || fx > 0) {
            b = x, fb = std::isnan(fx) ? 1 : fx;
            if (side == 1) fa *= 0.5;
            side = 1;
        } else {
            a = x, fa = fx;
            if (side == -1) fb *= 0.5;
            side = -1;
        }
    }
    return false;
}

// beta1 and beta2 of the SU curve sinh(Z / delta - om) with t = 1 / delta^2 =
// ln w (Johnson 1949), om >= 0. Written with every hyperbolic term divided by its
// largest exponential and the powers of w taken out, so that it holds from the
// normal (t -> 0) out to where beta2 leaves the doubles.
struct SuShapeValue {
    double B1, B2;
};
SuShapeValue SuShape(double t, double om) {
    const double w = std::exp(t), wm1 = std::expm1(t);
    const double e2 = std::exp(-2 * om), e4 = e2 * e2;
    // sinh(3 om), sinh(om), cosh(2 om), cosh(4 om) over e^{3 om}, e^{om}, e^{2 om}, e^{4 om}, / 2.
    const double s3 = -std::expm1(-6 * om), s1 = -std::expm1(-2 * om);
    const double a = (1 + 2 / w) * s3 + 3 * s1 * e2 / (w * w);
    const double c = (1 + e4) + 2 * e2 / w;
    const double b = (1 + (2 + (3 - 3 / (w * w)) / w) / w) * (1 + e4 * e4) +
                     4 * (1 + 2 / w) / (w * w * w) * e2 * (1 + e4) +
                     6 * (2 + 1 / w) / (w * w * w * w * w) * e4;
    // Johnson's beta1 = w (w - 1) A^2 / (2 C^3) and beta2 = B / (2 C^2) with
    // A = w^2 a e^{3 om} / 2, C = w c e^{2 om} / 2, B = w^6 b e^{4 om} / 2: the
    // exponentials cancel.
    return {w * w * wm1 * a * a / (c * c * c), w * w * w * w * b / (c * c)};
}

} // namespace

namespace JohnsonDistFit {

// The SU shape (t = ln w, om >= 0) with beta1 = b1 and beta2 = b2, nested: at
// fixed w beta1 rises with om from 0 to the lognormal value of that w, and along
// a line of constant beta1 beta2 rises with w from the lognormal line. False
// where the arithmetic gives out first.
bool SuSolve(double b1, double b2, double tLine, double& t, double& om) {
    auto omegaAt = [&](double tt, double& o) {
        if (b1 == 0) {
            o = 0;
            return true;
        }
        auto f = [&](double x) {
            const double v = SuShape(tt, x).B1;
            return std::isfinite(v) ? (v - b1) / (v + b1) : std::nan("");
        };
        double hi = 1, fhi = f(hi);
        while (!(fhi > 0)) {
            if (hi > 300) return false;
            hi *= 2, fhi = f(hi);
        }
        return Illinois(f, 0, -1, hi, fhi, o);
    };
    auto g = [&](double tt) {
        double o = 0;
        if (!omegaAt(tt, o)) return std::nan("");
        const double v = SuShape(tt, o).B2;
        return std::isfinite(v) ? (v - b2) / (v + b2) : std::nan("");
    };
    const double line = tLine > 0 ? SuShape(tLine, 300).B2 : 3; // the lognormal's beta2
    double step = 1, hi = tLine + step, fhi = g(hi);
    while (!(fhi > 0)) {
        if (hi > 700) return false;
        step *= 2, hi = tLine + step, fhi = g(hi);
    }
    if (!Illinois(g, tLine, (line - b2) / (line + b2), hi, fhi, t)) return false;
    return omegaAt(t, om);
}

// True when the SU curve with this w and SUFIT's y has |skewness| and beta2
// within 1e-4 of rb1 and b2 (relative), or when they cannot be told.
bool SuMeets(double rb1, double b2, double w, double y) {
    const SuShapeValue v = SuShape(std::log(w), std::fabs(y));
    if (!std::isfinite(v.B1) || !std::isfinite(v.B2)) return true;
    const double rb = std::sqrt(v.B1);
    return (std::fabs(rb1) <= kTol || std::fabs(rb - std::fabs(rb1)) <= 1e-4 * std::fabs(rb1)) &&
           std::fabs(v.B2 - b2) <= 1e-4 * b2;
}

} // namespace JohnsonDistFit
