// The curves a sample is fitted with, in the window's parameter slots, and what
// the fits and tests need of them: the log density and both log tails at a
// point, and a point drawn from the curve.
#pragma once

namespace m_Curves {

enum class Kind { Normal, LogNormal, Exponential, Weibull, JohnsonSB, JohnsonSL, JohnsonSU };

// Param slots as the window holds them: Normal mean, sd; LogNormal mean and sd
// of ln(x - min), min; Exponential rate, min; Weibull shape, scale, min;
// Johnson delta, gamma, lamda, xi (an SL with a negative lamda is mirrored).
struct Curve {
    Kind K = Kind::Normal;
    double P[4] = {0, 0, 0, 0};
};

// The distribution code of the catalogue (1 Normal, 3 Exponential, 4 LogNormal,
// 5 Weibull, 7 SB, 8 SU, 9 SL) and its name.
int Code(Kind k);
const char* Family(Kind k);

// The normal-based curves are Phi of a variate z; the others are 1 - exp(-t)
// of a cumulative hazard t.
bool NormalBased(Kind k);

struct Point {
    bool Inside = false; // false: the curve gives x no density
    double LogDensity = 0;
    double LogLower = 0; // ln P(X <= x)
    double LogUpper = 0; // ln P(X > x), computed on its own side
};
Point Evaluate(const Curve& c, double x);

// Evaluate at many points: what does not depend on x is worked out once (the
// same values to the bit).
class Evaluator {
  public:
    explicit Evaluator(const Curve& c);
    Point operator()(double x) const;
    // The log density alone (-infinity outside), as operator() gives it.
    double LogDensity(double x) const;

  private:
    // x's variate (z, or the cumulative hazard t) and log density.
    struct Variate {
        bool Inside = false;
        double V = 0, LogDensity = 0;
    };
    Variate At(double x) const;

    Curve c_;
    double lead_ = 0;     // the log density's constant part
    double logLamda_ = 0; // SL: ln |lamda|
};

// The point whose z (normal-based) or cumulative hazard t (the others) is v,
// and back (NaN where the curve gives x no density).
double FromStandard(const Curve& c, double v);
double ToStandard(const Curve& c, double x);

// ln Phi(z), keeping its digits far into the lower tail.
double LogPhi(double z);

} // namespace m_Curves
