// Percentile points and performance indices (ISO 22514-2, percentile method).
// The quantiles are the family records' own (engine/Families.h), the Johnson
// forms' by AS 100's inverse transform.
#include "stats/m_Capability.h"

#include "engine/Families.h"
#include "engine/m_Quantile.h"
#include "support/ErrorTrap.h"

#include <boost/math/distributions/chi_squared.hpp>

#include <algorithm>
#include <cfenv>
#include <cmath>

namespace m_Capability {

constexpr const char* kModule = "Pondera.m_Capability";

namespace {

// A figure beyond the double range is no figure: it stays empty, and the
// overflow that showed it is not an error to report beside a sound PNC.
void Quiet() {
    std::feclearexcept(FE_ALL_EXCEPT);
}

// One quantile: z and its two tails P(Z <= z), P(Z > z).
struct Point {
    double Z, Lower, Upper;
};

// Empty when the calculator would refuse the parameters as well.
std::optional<double> Quantile(int code, double p1, double p2, double p3, double p4,
                               const Point& p) {
    const Families::Family& family = Families::ByCode(code);
    const double params[4] = {p1, p2, p3, p4};
    if (family.Refusal(params)) return std::nullopt;
    return family.Quantile(params, p.Z, p.Lower, p.Upper);
}

} // namespace

std::optional<Percentiles> PercentilePoints(int code, double p1, double p2, double p3, double p4) {
    return support::TrapValue({kModule, __func__}, std::optional<Percentiles>(), [&] {
        const double tail = 0.5 * std::erfc(3 / std::sqrt(2.0)); // P(Z < -3)
        const Point points[3] = {{-3, tail, 1 - tail}, {0, 0.5, 0.5}, {3, 1 - tail, tail}};
        double x[3];
        for (int i = 0; i < 3; ++i) {
            const std::optional<double> q = Quantile(code, p1, p2, p3, p4, points[i]);
            if (!q || !std::isfinite(*q)) {
                Quiet();
                return std::optional<Percentiles>();
            }
            x[i] = *q;
        }
        Quiet();
        return std::optional<Percentiles>(Percentiles{x[0], x[1], x[2]});
    });
}

Figures Indices(const Percentiles& x, std::optional<double> lsl, std::optional<double> usl,
                double pncTotal) {
    Figures f;
    support::Trap({kModule, __func__}, [&] {
        // (a - b) / (c - d); halved first when a difference leaves the double
        // range, so limits at +-1e308 still give their figure.
        auto quotient = [](double a, double b, double c, double d) -> std::optional<double> {
            double above = a - b, below = c - d;
            if (!std::isfinite(above) || !std::isfinite(below))
                above = a / 2 - b / 2, below = c / 2 - d / 2;
            const double r = above / below;
            if (below > 0 && std::isfinite(r)) return r;
            return std::nullopt;
        };
        if (lsl && usl) f.Pp = quotient(*usl, *lsl, x.X99865, x.X0135);
        if (lsl) f.Ppl = quotient(x.X50, *lsl, x.X50, x.X0135);
        if (usl) f.Ppu = quotient(*usl, x.X50, x.X99865, x.X50);
        if (f.Ppl && f.Ppu)
            f.Ppk = std::min(*f.Ppl, *f.Ppu);
        else
            f.Ppk = f.Ppl ? f.Ppl : f.Ppu;
        if (lsl || usl) f.Ppm = quotient(pncTotal, 0, 1e-6, 0);
        Quiet();
    });
    return f;
}

Figures ZScoreIndices(std::optional<Tails> lsl, std::optional<Tails> usl, double pncTotal) {
    Figures f;
    support::Trap({kModule, __func__}, [&] {
        // Phi^-1(F(x)) from whichever tail is the smaller; an empty tail has no z.
        auto z = [](const Tails& t) -> std::optional<double> {
            if (!(t.Below > 0 && t.Above > 0)) return std::nullopt;
            return t.Below <= t.Above ? m_Quantile::NormalQuantile(t.Below, false)
                                      : m_Quantile::NormalQuantile(t.Above, true);
        };
        const std::optional<double> zl = lsl ? z(*lsl) : std::nullopt;
        const std::optional<double> zu = usl ? z(*usl) : std::nullopt;
        const double low = zl.value_or(0), high = zu.value_or(0);
        if (zl && zu) f.Pp = (high - low) / 6;
        if (zl) f.Ppl = -low / 3;
        if (zu) f.Ppu = high / 3;
        if (f.Ppl && f.Ppu)
            f.Ppk = std::min(*f.Ppl, *f.Ppu);
        else
            f.Ppk = f.Ppl ? f.Ppl : f.Ppu;
        // A limit beyond the curve's far end (the whole curve on its wrong side)
        // has no finite z either, but its side is worse than any figure: then
        // there is no Ppk rather than the other side's.
        if ((lsl && lsl->Above == 0 && lsl->Below > 0) ||
            (usl && usl->Below == 0 && usl->Above > 0))
            f.Pp.reset(), f.Ppk.reset();
        if (lsl || usl) f.Ppm = pncTotal * 1e6;
        Quiet();
    });
    return f;
}

const char* MethodName(Method m) {
    return m == Method::ZScore ? "Z-score" : "percentile (ISO 22514-2)";
}

const char* MethodKey(Method m) {
    return m == Method::ZScore ? "z-score" : "percentile";
}

Figures ZScoreFigures(int code, const double (&p)[4], std::optional<double> lsl,
                      std::optional<double> usl, double pncTotal) {
    Figures f;
    support::Trap({kModule, __func__}, [&] {
        const Families::Family& family = Families::ByCode(code);
        if (family.Refusal(p)) return;
        auto tails = [&](std::optional<double> x) -> std::optional<Tails> {
            if (!x) return std::nullopt;
            return Tails{family.Tail(p, *x, false), family.Tail(p, *x, true)};
        };
        f = ZScoreIndices(tails(lsl), tails(usl), pncTotal);
        Quiet();
    });
    return f;
}

Ppm Observed(const std::vector<double>& values, std::optional<double> lsl,
             std::optional<double> usl) {
    Ppm o;
    if (values.empty()) return o;
    std::size_t below = 0, above = 0;
    for (double v : values) {
        if (lsl && v < *lsl) ++below;
        if (usl && v > *usl) ++above;
    }
    const double n = static_cast<double>(values.size());
    o.Below = 1e6 * static_cast<double>(below) / n;
    o.Above = 1e6 * static_cast<double>(above) / n;
    o.Total = 1e6 * static_cast<double>(below + above) / n;
    return o;
}

std::optional<Interval> NormalPpInterval(double pp, int n, double level) {
    return support::TrapValue({kModule, __func__}, std::optional<Interval>(), [&] {
        if (n < 2 || !(level > 0 && level < 1) || !std::isfinite(pp))
            return std::optional<Interval>();
        const boost::math::chi_squared chi(n - 1);
        const double alpha = 1 - level;
        return std::optional<Interval>(
            Interval{pp * std::sqrt(boost::math::quantile(chi, alpha / 2) / (n - 1)),
                     pp * std::sqrt(boost::math::quantile(chi, 1 - alpha / 2) / (n - 1))});
    });
}

std::optional<Interval> NormalPpkInterval(double ppk, int n, double level) {
    return support::TrapValue({kModule, __func__}, std::optional<Interval>(), [&] {
        if (n < 2 || !(level > 0 && level < 1) || !std::isfinite(ppk))
            return std::optional<Interval>();
        const double z = m_Quantile::NormalQuantile((1 - level) / 2, true);
        const double half = z * std::sqrt(1.0 / (9.0 * n) + ppk * ppk / (2.0 * (n - 1)));
        return std::optional<Interval>(Interval{ppk - half, ppk + half});
    });
}

} // namespace m_Capability
