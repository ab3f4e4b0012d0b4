// One Johnson curve fit: by moments (SL, SU, SB, normal, ST), with fixed end
// points ("SB3"), or from a sample; and the transforms between a Johnson variate
// and the standard normal.
#pragma once

#include <string>
#include <vector>

class JohnsonDist {
public:
    // Fits a curve to the moments. Skewness is the signed root of beta1, Kurtosis
    // is beta2. Both end points given: the fixed-end-point SB fit; exactly one: nothing.
    void Calculate(double mean, double stDev, double skewness, double kurtosis);
    void Calculate(double mean, double stDev, double skewness, double kurtosis,
                   const double* xLower, const double* xUpper);

    double JohnsontoNormal(double data, double delta, double gamma, double lamda, double xi,
                           int jDist);
    double NormaltoJohnson(double data, double delta, double gamma, double lamda, double xi,
                           int jDist);
    void CalculateFromData(const std::vector<double>& data, bool fixedEndpoints);

    // Properties (all start at 0 / empty / false).
    double Kurtosis = 0;
    double Skewness = 0;
    double StDev = 0;
    double Mean = 0;
    double Alpha = 0;
    std::string JDistribution;
    std::string CalcError;
    double Delta = 0;
    double Gamma = 0;
    double Lamda = 0;
    double Xi = 0;
    bool Reflected = false;
};
