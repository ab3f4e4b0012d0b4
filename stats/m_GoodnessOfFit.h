// How well a curve describes a sample: its log-likelihood, the Anderson-Darling
// statistic, the normal table p and the likelihood-ratio p.
#pragma once

#include "stats/m_Curves.h"

#include <vector>

namespace m_GoodnessOfFit {

struct Measures {
    bool Covered = false; // false: a value lies outside the curve (no figures)
    double LogLik = 0;
    double A2 = 0;
};

// On the sorted sample, at the curve's parameters, in one pass.
Measures Measure(const m_Curves::Curve& c, const std::vector<double>& sorted);

// D'Agostino and Stephens (1986), the normal with both parameters estimated: p
// of A2 for a sample of n; 0 for a modified A2 past 10, where the formula turns.
double NormalTableP(double a2, double n);

// P(chi-squared with 1 degree of freedom >= 2 (l3 - l2)); 1 when l3 <= l2.
double LikelihoodRatioP(double l3, double l2);

// AICc = -2 l + 2k + 2k(k + 1)/(n - k - 1); NaN when n <= k + 1.
double AICc(double logLik, int k, double n);

} // namespace m_GoodnessOfFit
