// How well a curve describes a sample: its log-likelihood, the Anderson-Darling
// statistic, the normal table p and the likelihood-ratio p.
#pragma once

#include "stats/m_Curves.h"

#include <vector>

namespace m_GoodnessOfFit {

// Every value lies where the curve has a density and both of its tails keep
// digits: told by the sorted sample's ends, since every curve's support is an
// interval and its tails are monotone. Else neither figure below exists.
bool Covers(const m_Curves::Curve& c, const std::vector<double>& sorted);

// The sum of ln f over the sorted sample; NaN when the curve does not cover it.
double LogLik(const m_Curves::Curve& c, const std::vector<double>& sorted);

// Anderson-Darling A2 of the sorted sample; NaN when the curve does not cover it.
double A2(const m_Curves::Curve& c, const std::vector<double>& sorted);

// D'Agostino and Stephens (1986), the normal with both parameters estimated: p
// of A2 for a sample of n; 0 for a modified A2 past 10, where the formula turns.
double NormalTableP(double a2, double n);

// P(chi-squared with 1 degree of freedom >= 2 (l3 - l2)); 1 when l3 <= l2.
double LikelihoodRatioP(double l3, double l2);

// AICc = -2 l + 2k + 2k(k + 1)/(n - k - 1); NaN when n <= k + 1.
double AICc(double logLik, int k, double n);

} // namespace m_GoodnessOfFit
