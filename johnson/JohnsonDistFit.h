// What the files of the fit by moments share; internal to johnson/.
//
//   JohnsonDistFit.cpp        AS 99 (jnsn, SUFIT, sbfit, MOM) with this program's
//                             tolerances and limits
//   JohnsonDistSbMoments.cpp  the exact SB moment rules, and the policy that picks
//                             MOM's series or one of them
//   JohnsonDistSbContinue.cpp the SB continuation: finishes a fit where AS 99's
//                             iteration stops
//   JohnsonDistSuSolve.cpp    the SU solve: finishes SUFIT where its answer misses
//
// The helpers here run inside their caller's error trap and have none of their own.
#pragma once

namespace JohnsonDistFit {

// The program's tolerance for the moment fit (the published value is 0.01).
inline constexpr double kTol = 0.0001;

// MOM's published constants, 10 digits as printed.
// Kept: the printed digits, not the true values; they move the moments by about
// 1e-10, and the published numbers are reproduced with them.
inline constexpr double kMomRootTwo = 1.414213562;    // sqrt(2)
inline constexpr double kMomInvRootPi = 0.5641895835; // 1 / sqrt(pi)
// MOM's guard: g / d above this is a fault.
inline constexpr double kMomExpGuard = 80.0;

// Where this beta1 meets the lognormal line: w = exp(delta^-2) of the lognormal
// with that skewness, and the line's beta2.
struct LognormalPoint {
    double W, B2;
};
LognormalPoint LognormalLine(double rb1, double b1);

// The standard SB curve's mean mu1 and variance m2, its rb = sqrt(beta1) and
// beta2, and their derivatives J = {drb/dg, drb/dd, db2/dg, db2/dd}, from its
// six raw moments, in AS 99's arrangement.
struct SbShape {
    double Mu1 = 0, M2 = 0, Rb = 0, B2 = 0, J[4] = {0, 0, 0, 0};
    double DMu1[2] = {0, 0}, DM2[2] = {0, 0}; // d mu1 and d m2 by gamma, delta
};

// The shape at (g, d); false when the moments fail or the variance is not
// positive (M2 then <= 0). exact: by MOMExact alone, else by SbMoments, which
// sets *seriesAbandoned once MOM's series has been given up for this fit.
bool ShapeAt(double g, double d, SbShape& out, bool exact = false, bool* seriesAbandoned = nullptr);

// How far a shape is from the wanted one: skewness as it is, beta2 relative.
inline double Miss(const SbShape& s, double rb1, double b2) {
    const double e1 = s.Rb - rb1, e2 = (s.B2 - b2) / b2;
    return e1 * e1 + e2 * e2;
}

// The SB continuation (JohnsonDistSbContinue.cpp): the shape (g, d) for
// |skewness| rb1 and beta2 b2 after AS 99's iteration has stopped without an
// answer, from a start near the lognormal line (e: where b2 lies between the
// lower boundary and the line, lineW: the line's w), else from AS 99's start
// (g0, d0). False when nothing finishes it.
bool ContinueSb(double rb1, double b2, double e, double lineW, double g0, double d0, double& g,
                double& d, double& mu1, double& m2);

// The SU solve (JohnsonDistSuSolve.cpp).
// True when the SU curve with this w and SUFIT's y has |skewness| and beta2
// within 1e-4 of rb1 and b2 (relative), or when they cannot be told.
bool SuMeets(double rb1, double b2, double w, double y);
// The SU shape (t = ln w, om >= 0) with beta1 = b1 and beta2 = b2; tLine: t of
// the lognormal line at that beta1. False where the arithmetic gives out first.
bool SuSolve(double b1, double b2, double tLine, double& t, double& om);

} // namespace JohnsonDistFit
