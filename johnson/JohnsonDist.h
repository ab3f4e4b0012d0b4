// One Johnson curve fit: by moments (SL, SU, SB, normal, ST), with fixed end
// points ("SB3"), or from a sample; and the transforms between a Johnson variate
// and the standard normal.
//
// The numeric routines follow the Applied Statistics algorithms AS 99 (fitting
// by moments: jnsn, SUFIT, sbfit, MOM), AS 100 (SNV, AJV) and AS 111 (PPND),
// with this program's own tolerances and limits. None of them raises to its
// caller: faults travel as small integer codes, run-time errors go to the error
// path with the label "Pondera.JohnsonDist.<routine>".
#pragma once

#include <cstdint>
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
    double Lamda = 0; // Kept: spelled without the b, the property's own name
    double Xi = 0;
    bool Reflected = false;

    // The module part of every routine's error label, "Pondera.JohnsonDist.<routine>".
    static constexpr const char* kModule = "Pondera.JohnsonDist";

    // ---- Curve type codes shared with the routines -------------------------
    static constexpr int kSL = 1, kSU = 2, kSB = 3, kNormal = 4, kST = 5, kSB3 = 6,
                         kSB3Mirrored = 7;

    // ---- The routines behind the object ------------------------------------
    // Internal to the fit; public so that tests and benchmarks can reach them.

    // How one sbfit run went (filled only when asked for).
    struct SbfitTrace {
        // How AS 99's iteration ended; Continued: it stopped, SbContinue finished.
        enum class Exit {
            None,
            Converged,
            IterationLimit,
            MomFault,
            NonPositiveVariance,
            Runaway,
            Continued
        };
        struct Round {
            double Gamma, Delta; // the values handed to MOM
            double RootB1, B2;   // shape of the standard SB curve at those values
            double Mu1, M2;      // its mean and variance
        };
        double Gamma0 = 0, Delta0 = 0; // starting values
        std::vector<Round> Rounds;     // rounds whose MOM call succeeded with m2 > 0
        Exit Outcome = Exit::None;
        double Gamma = 0, Delta = 0; // where SbContinue finished (gamma >= 0)
    };

    // AS 99 JNSN: type code (1 SL, 2 SU, 3 SB, 4 normal, 5 ST) and parameters for
    // the four moments; ifault 0 success, 1 negative sd, 2 impossible moments,
    // kNoCurve no curve could be had (a fault on the way, or no convergence).
    static constexpr int16_t kNoCurve = 4;
    static void jnsn(double xbar, double sd, double rb1, double bb2, int& itype, double& gamma,
                     double& delta, double& xlam, double& xi, int16_t& ifault);
    // AS 99 SUFIT, finished by a solve on Johnson's closed-form moments where its
    // answer misses skewness or kurtosis by more than 1e-4 (relative) or breaks
    // down; writes all four parameters or none. `rounds`: the published passes.
    static void SUFIT(double xbar, double sd, double rb1, double b2, double& gamma, double& delta,
                      double& xlam, double& xi, long* rounds = nullptr);
    // AS 99 SBFIT, finished by SbContinue where AS 99's iteration stops. The
    // fault flag is taken by value, so a caller never learns of a failure; a fit
    // that cannot be finished goes to the error path and writes no parameters.
    static void sbfit(double xbar, double sigma, double rtb1, double b2, double& gamma,
                      double& delta, double& xlam, double& xi, bool fault,
                      SbfitTrace* trace = nullptr);
    // Finishes an SB fit where AS 99's iteration stopped: damped Newton on (g, d)
    // for |skewness| rb1 and beta2 b2, from the g, d given; on success they hold
    // the answer, mu1 and m2 the mean and variance of its standard variable.
    // nearLine: iterate on q = exp(-g / d) in place of g (see JohnsonDistSbContinue.cpp).
    static void SbContinue(double rb1, double b2, bool nearLine, double& g, double& d, double& mu1,
                           double& m2, bool& fault);
    // The SB shape (g, d) for |skewness| rb1 and beta2 b2 by nested one-dimensional
    // solves, from the g, d given: slow but sure where SbContinue cannot finish.
    static void SbSolve(double rb1, double b2, double& g, double& d, double& mu1, double& m2,
                        bool& fault);
    // AS 99 MOM: the first six raw moments a[0..5] of the standard SB variable.
    static void MOM(double g, double d, double (&a)[6], bool& fault, int* passes = nullptr);
    // The same six moments by adaptive Gauss-Kronrod quadrature over the normal
    // variate, each to about 1e-12 relative: for any delta > 0 and any g.
    static void MOMQuadrature(double g, double d, double (&a)[6], bool& fault);
    // The same six moments by a fixed rule for a narrow step: delta up to
    // kNarrowDelta and |g| up to kNarrowGamma (fault outside).
    static constexpr double kNarrowDelta = 0.25, kNarrowGamma = 5;
    static void MOMNarrow(double g, double d, double (&a)[6], bool& fault);
    // The moments to 1e-13: MOMNarrow where it holds, else MOMQuadrature.
    static void MOMExact(double g, double d, double (&a)[6], bool& fault);
    // The moments sbfit uses: MOM's (from g / d = 4 on, what MOM converges to,
    // by MOMExact), and MOMExact's where the series fails or cannot finish.
    // seriesAbandoned, when given, is set then, and MOMExact alone serves while set.
    static void SbMoments(double g, double d, double (&a)[6], bool& fault,
                          bool* seriesAbandoned = nullptr);

    // AS 100: Johnson variate -> standard normal, and back.
    static double SNV(double x, int itype, double gamma, double delta, double xlam, double xi);
    static double AJV(double z, int itype, double gamma, double delta, double xlam, double xi);
    // The five-parameter SB form: z = gamma + delta ln(p / (1 - p)), p = u^(1/alpha).
    static double Johnson5ToNormal(double x, double delta, double gamma, double xlam, double xi,
                                   double alpha, bool mirrored, int16_t& fault);
    // AS 111: z with P(Z <= z) = p; fault 1 (result 0) for p outside (0, 1).
    static double PPND(double p, int16_t& ifault);
    // Fortran SIGN: |a| with the sign of b (b = 0 counts as positive).
    static double sign(double a, double b);

    // Sample mean, standard deviation, skewness and kurtosis (beta2); fault for
    // fewer than two values or no spread.
    static void MOMENT(const std::vector<double>& data, double& ave, double& sdev, double& skew,
                       double& curt, bool& fault);
    static double MinofArray(const std::vector<double>& data);
    static double MaxofArray(const std::vector<double>& data);

    // The fixed-end-point SB fit: xi = xLower, lamda = xUpper - xLower, and
    // params = {delta, gamma, alpha} so that the curve has the given mean, sd and
    // skewness. fault: 0 success, 1 bad end points or nmom != 3, 2 bad moments,
    // 3 parameters out of bounds, 4 Newton breakdown, 5 no convergence in 1000 steps.
    static void FitSB3(int nmom, double xLower, double xUpper, double mean, double sd, double skew,
                       double tol, double (&params)[3], bool& reflected, int16_t& fault);
    // Mean, standard deviation and skewness of V = p^alpha on (0, 1), with
    // p = 1 / (1 + exp(-(Z - gamma) / delta)) and Z standard normal.
    static void SB3Moments(double delta, double gamma, double alpha, double& mean, double& sd,
                           double& skew);

    // The status texts of Calculate.
    static const char* FitMessage(int16_t fault);
    static const char* FixedEndpointMessage(int16_t fault);
};
