// Independent references for the tests: closed forms computed here, never by
// the code under test.
#pragma once

#include <cmath>

namespace reference {

// The standard normal density phi(z) and cumulative probability Phi(z).
inline double NormalDensity(double z) {
    return std::exp(-0.5 * z * z) / std::sqrt(2 * M_PI);
}
inline double NormalCdf(double z) {
    return 0.5 * std::erfc(-z / std::sqrt(2.0));
}

// Johnson SU: z = gamma + delta asinh((x - xi) / lamda).
inline double JohnsonSUDensity(double x, double d, double g, double l, double xi) {
    const double y = (x - xi) / l;
    return d / (l * std::sqrt(y * y + 1)) * NormalDensity(g + d * std::asinh(y));
}

} // namespace reference
