// The distribution calculator: densities on a grid and cumulative probabilities
// for "Normal", "Lognormal", "Exponential", "Weibull", "Uniform", "Triangular"
// and "Johnson".
//
// The Johnson forms share the key "Johnson" and four parameters (delta, gamma,
// lamda, xi); the caller names the form with its distribution code beside the
// key. The formulas and the rules on the parameters are the families' own
// (engine/Families.h).
//
// Like the component it stands for, the calculator has no error trap of its own:
// unusable parameters make ComputeDensities and Calculate return false with a
// Message(), and a floating-point fault raises a run-time error into the
// caller's trap.
#pragma once

#include <string>
#include <vector>

namespace Families {
struct Family;
}

class DistCalculator {
  public:
    // form: the distribution code that tells apart the forms sharing a key
    // ("Johnson": 7 SB, 8 SU, 9 SL); any other code means the Johnson normal form.
    void SetDistribution(const std::string& key, int form = 0) {
        key_ = key;
        form_ = form;
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

  private:
    // Resolves the key (and the Johnson form) and checks the parameters.
    bool Prepare();
    // Lower (P(X <= x)) or upper (P(X > x)) tail, each without cancellation.
    double Tail(double x, bool upper) const;

    std::string key_;
    int form_ = 0;
    double p_[4] = {0, 0, 0, 0};
    int n_ = 0;
    std::vector<double> density_;
    std::string message_;
    const Families::Family* family_ = nullptr;
    bool ready_ = false;
    bool pointMass_ = false; // minimum = maximum: no spread, no density
};
