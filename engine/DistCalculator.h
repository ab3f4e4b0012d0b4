// The distribution calculator: densities on a grid and cumulative probabilities
// for "Normal", "Lognormal", "Exponential", "Weibull", "Uniform", "Triangular"
// and "Johnson".
//
// It receives only the key "Johnson" and four parameters (delta, gamma, lamda,
// xi), so it learns which Johnson form it has from the program-wide current
// distribution code (m_PercentCertainty::CurrentDistribution): 7 SB, 8 SU, 9 SL,
// anything else the Johnson normal form z = gamma + delta x.
#pragma once

#include <string>
#include <vector>

class DistCalculator {
public:
    void SetDistribution(const std::string& key) { key_ = key; }
    const std::string& Distribution() const { return key_; }
    void SetParam(int slot, double value); // slot 1..4
    void SetNumberOfPoints(int n) { n_ = n; }

    // Evaluates the density on x(i) = low + (i - 1)(high - low)/N, i = 1..N.
    // Returns false (with Message()) when the key or parameters are unusable.
    bool ComputeDensities(double low, double high);
    double DensityValue(int i) const; // 1..N

    // Prepares the cumulative probabilities; false with a message on failure.
    bool Calculate();
    const std::string& Message() const { return message_; }

    double CumulativeProbability(double x) const; // P(X <= x)
    double UpperTailProbability(double x) const;  // P(X > x), without cancellation

private:
    std::string key_;
    double p_[4] = {0, 0, 0, 0};
    int n_ = 0;
    std::vector<double> density_;
    std::string message_;
};
