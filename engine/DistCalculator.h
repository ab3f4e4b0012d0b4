// The distribution calculator: densities on a grid and cumulative probabilities
// for "Normal", "Lognormal", "Exponential", "Weibull", "Uniform", "Triangular"
// and "Johnson".
//
// It receives only the key "Johnson" and four parameters (delta, gamma, lamda,
// xi), so it learns which Johnson form it has from the program-wide current
// distribution code (m_PercentCertainty::CurrentDistribution): 7 SB, 8 SU, 9 SL,
// anything else the Johnson normal form z = gamma + delta x.
//
// The forms follow the AS 100 Johnson-to-normal transform, with CDF = Phi(z):
//   SB  z = gamma + delta ln((x - xi) / (xi + lamda - x))   on (xi, xi + lamda)
//   SU  z = gamma + delta asinh((x - xi) / lamda)
//   SL  z = gamma + delta ln((x - xi) / lamda)             where (x - xi) / lamda > 0;
//       a negative lamda (the fitted -1 of a negative skew) mirrors the curve
//       about xi, and there CDF = Phi(-z).
//
// Like the component it stands for, the calculator has no error trap of its own:
// unusable parameters make ComputeDensities and Calculate return false with a
// Message(), and a floating-point fault raises a run-time error into the
// caller's trap.
#pragma once

#include <string>
#include <vector>

class DistCalculator {
  public:
    void SetDistribution(const std::string& key) {
        key_ = key;
        ready_ = false;
    }
    void SetParam(int slot, double value); // slot 1..4
    void SetNumberOfPoints(int n) { n_ = n; }

    // Evaluates the density on x(i) = low + (i - 1)(high - low)/N, i = 1..N.
    // Returns false (with Message()) when the key or parameters are unusable.
    // A distribution without spread (minimum = maximum) has no density: all 0.
    bool ComputeDensities(double low, double high);
    double DensityValue(int i) const; // 1..N

    // Prepares the cumulative probabilities; false with a message on failure.
    bool Calculate();
    const std::string& Message() const { return message_; }

    double CumulativeProbability(double x) const; // P(X <= x)
    double UpperTailProbability(double x) const;  // P(X > x), without cancellation

    // The density at one point (same checks as ComputeDensities, after Calculate).
    double Density(double x) const;

    enum class Family {
        None,
        Normal,
        Lognormal,
        Exponential,
        Weibull,
        Uniform,
        Triangular,
        JohnsonSB,
        JohnsonSU,
        JohnsonSL,
        JohnsonNormal
    };
    // The one density formula of each family, also behind the engine's own
    // densities; parameters as the calculator takes them, unchecked.
    static double FamilyDensity(Family family, const double (&p)[4], double x);

  private:
    // Resolves the key (and the Johnson form) and checks the parameters.
    bool Prepare();
    double DensityAt(double x) const;
    void FillGrid(double low, double high, int n);
    // Lower (P(X <= x)) or upper (P(X > x)) tail, each without cancellation.
    double Tail(double x, bool upper) const;

    std::string key_;
    double p_[4] = {0, 0, 0, 0};
    int n_ = 0;
    std::vector<double> density_;
    std::string message_;
    Family family_ = Family::None;
    bool ready_ = false;
    bool pointMass_ = false; // minimum = maximum: no spread, no density
};
