// Densities and tails on the log scale, so that a point far out in a tail gives
// a large finite Anderson-Darling term instead of log(0).
//   normal-based: f = |dz/dx| phi(z), F = Phi(z);
//     Normal z = (x - mu)/sigma; LogNormal z = (ln(x - min) - mu)/sigma;
//     SB z = gamma + delta ln(d/(lamda - d)), SU z = gamma + delta asinh(d/lamda),
//     SL z = gamma + delta ln(d/lamda) (mirrored for lamda < 0: F = Phi(-z)), d = x - xi.
//   hazard-based: F = 1 - exp(-t), ln F = ln(-expm1(-t));
//     Exponential t = rate (x - min); Weibull t = ((x - min)/scale)^shape.
#include "stats/m_Curves.h"

#include <cmath>
#include <limits>

namespace m_Curves {

namespace {
constexpr double kHalfLog2Pi = 0.91893853320467274178;
constexpr double kInf = std::numeric_limits<double>::infinity();

Point Outside() {
    return Point{};
}

// ln phi(z) with the variate's log slope |dz/dx|.
double ZDensity(double z, double logSlope) {
    return logSlope - kHalfLog2Pi - 0.5 * z * z;
}

Point FromZ(double z, double logDensity) {
    Point p;
    p.Inside = true;
    p.LogDensity = logDensity;
    if (std::fabs(z) < 37) { // one erfc serves both tails
        const double near = 0.5 * std::erfc(std::fabs(z) / std::sqrt(2.0)), far = std::log1p(-near);
        p.LogLower = z < 0 ? std::log(near) : far;
        p.LogUpper = z < 0 ? far : std::log(near);
    } else {
        p.LogLower = LogPhi(z);
        p.LogUpper = LogPhi(-z);
    }
    return p;
}

Point FromHazard(double t, double logDensity) {
    Point p;
    p.Inside = true;
    p.LogDensity = logDensity;
    p.LogLower = t > 0 ? std::log(-std::expm1(-t)) : -kInf;
    p.LogUpper = -t;
    return p;
}
} // namespace

int Code(Kind k) {
    switch (k) {
    case Kind::Normal:
        return 1;
    case Kind::LogNormal:
        return 4;
    case Kind::Exponential:
        return 3;
    case Kind::Weibull:
        return 5;
    case Kind::JohnsonSB:
        return 7;
    case Kind::JohnsonSU:
        return 8;
    case Kind::JohnsonSL:
        return 9;
    }
    return 0;
}

const char* Family(Kind k) {
    switch (k) {
    case Kind::Normal:
        return "Normal";
    case Kind::LogNormal:
        return "LogNormal";
    case Kind::Exponential:
        return "Exponential";
    case Kind::Weibull:
        return "Weibull";
    case Kind::JohnsonSB:
        return "Johnson SB";
    case Kind::JohnsonSU:
        return "Johnson SU";
    case Kind::JohnsonSL:
        return "Johnson SL";
    }
    return "";
}

bool NormalBased(Kind k) {
    return k != Kind::Exponential && k != Kind::Weibull;
}

double LogPhi(double z) {
    if (z > 0) return std::log1p(-0.5 * std::erfc(z / std::sqrt(2.0)));
    if (z > -37) return std::log(0.5 * std::erfc(-z / std::sqrt(2.0)));
    // Past erfc's range: the asymptotic series of the Mills ratio.
    const double r = 1 / (z * z);
    const double series = 1 - r * (1 - 3 * r * (1 - 5 * r * (1 - 7 * r)));
    return -0.5 * z * z - kHalfLog2Pi - std::log(-z) + std::log(series);
}

Evaluator::Evaluator(const Curve& c) : c_(c) {
    const double* p = c.P;
    switch (c.K) {
    case Kind::Normal:
    case Kind::LogNormal:
        lead_ = -std::log(p[1]);
        break;
    case Kind::JohnsonSB:
        lead_ = std::log(p[0] * p[2]);
        break;
    case Kind::JohnsonSU:
        lead_ = std::log(p[0]);
        break;
    case Kind::JohnsonSL:
        lead_ = std::log(p[0]);
        logLamda_ = std::log(std::fabs(p[2]));
        break;
    case Kind::Exponential:
        lead_ = std::log(p[0]);
        break;
    case Kind::Weibull:
        lead_ = std::log(p[0] / p[1]);
        break;
    }
}

Evaluator::Variate Evaluator::At(double x) const {
    const double* p = c_.P;
    auto z = [](double v, double logSlope) { return Variate{true, v, ZDensity(v, logSlope)}; };
    switch (c_.K) {
    case Kind::Normal:
        return z((x - p[0]) / p[1], lead_);
    case Kind::LogNormal: {
        const double d = x - p[2];
        if (!(d > 0)) return {};
        const double ld = std::log(d);
        return z((ld - p[0]) / p[1], lead_ - ld);
    }
    case Kind::JohnsonSB: {
        const double delta = p[0], gamma = p[1], lamda = p[2], d = x - p[3], v = lamda - d;
        if (!(d > 0 && v > 0)) return {};
        const double ld = std::log(d), lv = std::log(v);
        return z(gamma + delta * (ld - lv), lead_ - ld - lv);
    }
    case Kind::JohnsonSU: {
        const double delta = p[0], gamma = p[1], lamda = p[2], d = x - p[3];
        return z(gamma + delta * std::asinh(d / lamda), lead_ - std::log(std::hypot(d, lamda)));
    }
    case Kind::JohnsonSL: {
        const double delta = p[0], gamma = p[1], lamda = p[2], d = x - p[3];
        if (!((lamda > 0 && d > 0) || (lamda < 0 && d < 0))) return {};
        const double ld = std::log(std::fabs(d));
        const double v = gamma + delta * (ld - logLamda_);
        return z(lamda > 0 ? v : -v, lead_ - ld);
    }
    case Kind::Exponential: {
        const double rate = p[0], d = x - p[1];
        if (!(d >= 0)) return {};
        const double t = rate * d;
        return {true, t, lead_ - t};
    }
    case Kind::Weibull: {
        const double k = p[0], scale = p[1], d = x - p[2];
        if (!(d > 0)) return {};
        const double lr = std::log(d / scale), t = std::exp(k * lr);
        return {true, t, lead_ + (k - 1) * lr - t};
    }
    }
    return {};
}

Point Evaluator::operator()(double x) const {
    const Variate v = At(x);
    if (!v.Inside) return Outside();
    return NormalBased(c_.K) ? FromZ(v.V, v.LogDensity) : FromHazard(v.V, v.LogDensity);
}

double Evaluator::LogDensity(double x) const {
    const Variate v = At(x);
    return v.Inside ? v.LogDensity : -kInf;
}

Point Evaluate(const Curve& c, double x) {
    return Evaluator(c)(x);
}

double FromStandard(const Curve& c, double v) {
    const double* p = c.P;
    switch (c.K) {
    case Kind::Normal:
        return p[0] + p[1] * v;
    case Kind::LogNormal:
        return p[2] + std::exp(p[0] + p[1] * v);
    case Kind::JohnsonSB: {
        const double w = (v - p[1]) / p[0];
        return p[3] + p[2] / (1 + std::exp(-w));
    }
    case Kind::JohnsonSU:
        return p[3] + p[2] * std::sinh((v - p[1]) / p[0]);
    case Kind::JohnsonSL: {
        const double z = p[2] > 0 ? v : -v; // the mirrored curve falls as z rises
        return p[3] + p[2] * std::exp((z - p[1]) / p[0]);
    }
    case Kind::Exponential:
        return p[1] + v / p[0];
    case Kind::Weibull:
        return p[2] + p[1] * std::pow(v, 1 / p[0]);
    }
    return 0;
}

double ToStandard(const Curve& c, double x) {
    const double* p = c.P;
    const double nan = std::numeric_limits<double>::quiet_NaN();
    switch (c.K) {
    case Kind::Normal:
        return (x - p[0]) / p[1];
    case Kind::LogNormal:
        return x > p[2] ? (std::log(x - p[2]) - p[0]) / p[1] : nan;
    case Kind::JohnsonSB: {
        const double d = x - p[3], v = p[2] - d;
        return d > 0 && v > 0 ? p[1] + p[0] * (std::log(d) - std::log(v)) : nan;
    }
    case Kind::JohnsonSU:
        return p[1] + p[0] * std::asinh((x - p[3]) / p[2]);
    case Kind::JohnsonSL: {
        const double d = x - p[3], lamda = p[2];
        if (!((lamda > 0 && d > 0) || (lamda < 0 && d < 0))) return nan;
        const double z = p[1] + p[0] * std::log(d / lamda);
        return lamda > 0 ? z : -z;
    }
    case Kind::Exponential:
        return x >= p[1] ? p[0] * (x - p[1]) : nan;
    case Kind::Weibull:
        return x > p[2] ? std::pow((x - p[2]) / p[1], p[0]) : nan;
    }
    return nan;
}

} // namespace m_Curves
