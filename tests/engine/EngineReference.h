// Independent reference values for the engine tests, computed in long double by
// methods other than the ones under test.
#pragma once

#include <cmath>

namespace engine_ref {

inline constexpr long double kPi = 3.141592653589793238462643383279502884L;

inline long double Phi(long double z) {
    return std::exp(-z * z / 2) / std::sqrt(2 * kPi);
}

// P(Z > z) for the standard normal: the Taylor series of the integral for small
// |z| (Abramowitz & Stegun 26.2.10) and Laplace's continued fraction for the
// Mills ratio in the tail (A&S 26.2.14), evaluated from the back.
inline long double NormalUpper(long double z) {
    if (z < 0) return 1 - NormalUpper(-z);
    if (z < 3) {
        long double term = z, sum = z;
        for (int n = 1; n < 300; ++n) {
            term *= z * z / (2 * n + 1);
            sum += term;
        }
        return 0.5L - Phi(z) * sum;
    }
    long double f = 0;
    for (int n = 4000; n >= 1; --n)
        f = n / (z + f);
    return Phi(z) / (z + f);
}

inline long double NormalLower(long double z) {
    return NormalUpper(-z);
}

inline double Rel(long double actual, long double expected) {
    if (expected == 0) return static_cast<double>(std::fabs(actual));
    return static_cast<double>(std::fabs((actual - expected) / expected));
}

} // namespace engine_ref
