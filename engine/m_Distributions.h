// The engine's named procedures: parameter checks, moments, densities and the
// cumulative probability at a limit, each a dispatcher over its family's record
// (engine/Families.h).
#pragma once

#include <cmath>
#include <string>
#include <vector>

namespace m_Distributions {

// Distribution codes.
inline constexpr int kNormal = 1, kTriangular = 2, kExponential = 3, kLogNormal = 4, kWeibull = 5,
                     kUniform = 6, kJohnsonSB = 7, kJohnsonSU = 8, kJohnsonSL = 9;

// ---- Parameter checks (true = valid; a message box has been shown otherwise) ----
bool CheckParam1(const std::string& name, double p1, double p2, double p3);
bool CheckParam2(const std::string& name, double p1, double p2, double p3);
bool CheckParam3(const std::string& name, double p1, double p2, double p3);

// ---- Moments of the six classical families by code -----------------------------
// Program-wide switch: subtract 3 from every kurtosis. Nothing sets it.
extern bool ExcessKurtosis;

double mean(int code, double p1, double p2, double p3);
double StDev(int code, double p1, double p2, double p3);
double Skewness(int code, double p1, double p2, double p3);
double Kurtosis(int code, double p1, double p2, double p3);

// The text for a moment a distribution does not have (NaN from the functions
// above: the skewness and kurtosis of a triangle without spread).
inline constexpr const char* kUndefinedMoment = "Undefined";

struct MomentSet {
    double Mean = 0, StDev = 0, Skewness = 0, Kurtosis = 0;
};
// The four moments of a distribution by name, as CalcMomentsforDistribution asks
// for them: each with the parameters the family uses, the others as 0, in the
// order mean, standard deviation, skewness, kurtosis. All 0 for the Johnson kinds.
MomentSet MomentsOf(const std::string& name, double p1, double p2, double p3);

// ---- Densities -------------------------------------------------------------
// Point i (1..N) of the sampling grid; the calculator samples on exactly these
// points, so a chart that uses this function lines up with the densities.
inline double GridX(double low, double high, int n, int i) {
    if (std::fabs(low) < 8e307 && std::fabs(high) < 8e307)
        return low + (i - 1) * ((high - low) / n);
    // high - low itself would overflow: the same points, taken in two halves.
    const double half = (i - 1) * ((0.5 * high - 0.5 * low) / n);
    return low + half + half;
}

// The point count is a 16-bit integer: more than this is an overflow error.
inline constexpr int kMaxPoints = 32767;

// Density values on x(i) = low + (i - 1)(high - low)/N, returned 1-based in a
// vector of N + 1 elements (element 0 unused). For the calculator's shared key
// "Johnson", form is the distribution code of the Johnson form (7 SB, 8 SU,
// 9 SL; any other: the normal form).
std::vector<double> GetPDFData(const std::string& name, double low, double high, int n, double p1,
                               double p2, double p3, double p4, int form = 0);

double Normal_PDF(double x, double mean, double sd);
double JohnsonSB_PDF(double x, double delta, double gamma, double lamda, double xi);
double JohnsonSL_PDF(double x, double delta, double gamma, double lamda, double xi);
double JohnsonSU_PDF(double x, double delta, double gamma, double lamda, double xi);

// ---- Cumulative probability at a limit (calculator key, limit, parameters) ----
// form tells the Johnson forms apart, as for GetPDFData.
double PNC_LSL(const std::string& calcName, double lsl, double p1, double p2, double p3, double p4,
               int form = 0);
double PNC_USL(const std::string& calcName, double usl, double p1, double p2, double p3, double p4,
               int form = 0);
// The same probability as 1 - PNC_USL, computed directly so the upper tail keeps its digits.
double PNC_USL_Upper(const std::string& calcName, double usl, double p1, double p2, double p3,
                     double p4, int form = 0);

} // namespace m_Distributions
