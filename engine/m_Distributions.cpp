// The distribution catalogue, parameter checks, closed-form moments, the
// engine's own normal and Johnson densities, and the calculator calls behind the
// density grid and the cumulative probability at a spec limit.
//
// Moments: the standard closed forms (Johnson, Kotz & Balakrishnan, Continuous
// Univariate Distributions), in the algebraically equal forms that avoid
// cancellation and spurious overflow: the triangular spread as half the sum of
// squared differences, exp(s^2) - 1 as expm1, and the log-normal variance as
// exp(mu + s^2/2)^2 (exp(s^2) - 1) without forming exp(2 mu + s^2).
#include "engine/m_Distributions.h"

#include "engine/DistCalculator.h"
#include "engine/m_NumRecipes.h"
#include "support/ErrorTrap.h"
#include "support/UserFace.h"

#include <algorithm>
#include <cmath>

namespace m_Distributions {

namespace {
constexpr const char* kModule = "Pondera.m_Distributions";

using Family = DistCalculator::Family;
using m_NumRecipes::kernel::RequireFinite;
using support::ck;

// Quiet comparisons: a NaN fails the rule (and shows its message) instead of
// raising an invalid-operation fault.
inline bool Gt(double a, double b) {
    return std::isgreater(a, b);
}
inline bool Le(double a, double b) {
    return std::islessequal(a, b);
}

bool Classical(int code) {
    return code >= kNormal && code <= kUniform;
}

// Gamma(1 + n/k) for the Weibull moments, afresh on every call.
double WeibullG(int n, double k) {
    const double g = m_NumRecipes::Gamma(ck(n / k) + 1);
    // Gamma has reported its own failure and given 0 (never a value of Gamma);
    // the moment fails with it rather than show a figure built on that 0.
    if (g == 0) support::Raise(support::kErrInvalidCall, support::kAppTitle, "");
    return g;
}

// Half the sum of the squared differences: a^2 + c^2 + b^2 - ac - cb - ab
// without its cancellation.
double TriangularSpread(double a, double c, double b) {
    return ck((std::pow(a - b, 2) + std::pow(b - c, 2) + std::pow(c - a, 2)) / 2);
}

void SetUpCalculator(DistCalculator& calc, const std::string& key, double p1, double p2, double p3,
                     double p4) {
    calc.SetDistribution(key);
    int slots = 0;
    if (key == "Normal" || key == "Exponential" || key == "Uniform")
        slots = 2;
    else if (key == "Lognormal" || key == "Triangular" || key == "Weibull")
        slots = 3;
    else if (key == "Johnson")
        slots = 4;
    const double p[4] = {p1, p2, p3, p4};
    for (int i = 0; i < slots; ++i)
        calc.SetParam(i + 1, p[i]);
}

// Sets up the calculator for a cumulative probability; when it refuses, its
// message goes to the status bar and the caller's figure stays 0.
bool ReadyForTail(DistCalculator& calc, const std::string& key, double p1, double p2, double p3,
                  double p4) {
    SetUpCalculator(calc, key, p1, p2, p3, p4);
    if (calc.Calculate()) return true;
    support::Face().SetStatusText(calc.Message());
    return false;
}
} // namespace

// ---- Catalogue -------------------------------------------------------------

const std::vector<CatalogueEntry>& Catalogue() {
    static const std::vector<CatalogueEntry> entries = {
        {"Normal", kNormal, "Normal", {{{"Mean:", "0"}, {"Std. Deviation:", "1"}, {}, {}}}, ""},
        {"LogNormal",
         kLogNormal,
         "Lognormal",
         {{{"Mean:", "0"}, {"Std. Deviation:", "1"}, {"Minimum:", "0"}, {}}},
         "3"},
        {"Exponential",
         kExponential,
         "Exponential",
         {{{"Scale:", "1"}, {"Minimum:", "0"}, {}, {}}},
         "2"},
        {"Weibull",
         kWeibull,
         "Weibull",
         {{{"Shape:", "2"}, {"Scale:", "10"}, {"Minimum:", "0"}, {}}},
         "3"},
        {"Uniform", kUniform, "Uniform", {{{"Minimum:", "-1"}, {"Maximum:", "1"}, {}, {}}}, ""},
        {"Triangular",
         kTriangular,
         "Triangular",
         {{{"Minimum:", "-1"}, {"Likeliest:", "0.5"}, {"Maximum:", "1"}, {}}},
         ""},
        {"Johnson SB",
         kJohnsonSB,
         "Johnson",
         {{{"Delta:", nullptr}, {"Gamma:", nullptr}, {"Lamda:", nullptr}, {"Xi:", nullptr}}},
         ""},
        {"Johnson SL",
         kJohnsonSL,
         "Johnson",
         {{{"Delta:", nullptr}, {"Gamma:", nullptr}, {"Lamda:", nullptr}, {"Xi:", nullptr}}},
         ""},
        {"Johnson SU",
         kJohnsonSU,
         "Johnson",
         {{{"Delta:", nullptr}, {"Gamma:", nullptr}, {"Lamda:", nullptr}, {"Xi:", nullptr}}},
         ""},
    };
    return entries;
}

const CatalogueEntry* FindDistribution(const std::string& name) {
    for (const auto& entry : Catalogue())
        if (name == entry.Name) return &entry;
    return nullptr;
}

namespace {
const FittedCurve kFits[] = {{"SB", "Johnson SB", kJohnsonSB, JohnsonSB_PDF},
                             {"SL", "Johnson SL", kJohnsonSL, JohnsonSL_PDF},
                             {"SU", "Johnson SU", kJohnsonSU, JohnsonSU_PDF},
                             {"Normal", "Normal", 0, nullptr}};
} // namespace

const FittedCurve* FindFit(const std::string& type) {
    for (const FittedCurve& f : kFits)
        if (type == f.Type) return &f;
    return nullptr;
}

JohnsonPdf JohnsonDensityOf(const std::string& name) {
    for (const FittedCurve& f : kFits)
        if (name == f.ListItem) return f.Density;
    return nullptr;
}

const std::vector<std::string>& ClassicalListOrder() {
    // Not the start-up order, on purpose.
    static const std::vector<std::string> names = {"Normal",  "Exponential", "LogNormal",
                                                   "Uniform", "Triangular",  "Weibull"};
    return names;
}

const std::vector<std::string>& MomentsListOrder() {
    static const std::vector<std::string> names = {"Johnson SB", "Johnson SL", "Johnson SU",
                                                   "Normal"};
    return names;
}

// ---- Parameter checks ---------------------------------------------------------

bool CheckParam1(const std::string& name, double p1, double p2, double p3) {
    bool result = true;
    support::Trap({kModule, __func__}, [&] {
        const char* message = nullptr;
        if (name == "Exponential") {
            if (!Gt(p1, 0))
                message =
                    "Scale parameter for an Exponential distribution must be greater than zero.";
        } else if (name == "Weibull") {
            if (!Gt(p1, 0))
                message = "Shape parameter for a Weibull distribution must be greater than zero.";
        } else if (name == "Triangular") {
            if (!Le(p1, p3))
                message = "Minimum must be less than Maximum for a Triangular distribution.";
        } else if (name == "Uniform") {
            if (!Le(p1, p2))
                message = "Minimum must be less than Maximum for a Uniform distribution.";
        }
        if (message) {
            result = false;
            support::MsgBox(message);
        }
    });
    return result;
}

bool CheckParam2(const std::string& name, double p1, double p2, double p3) {
    bool result = true;
    support::Trap({kModule, __func__}, [&] {
        const char* message = nullptr;
        if (name == "Normal" || name == "LogNormal") {
            if (!Gt(p2, 0)) message = "Standard deviation must be greater than zero.";
        } else if (name == "Weibull") {
            if (!Gt(p2, 0))
                message = "Scale parameter for a Weibull distribution must be greater than zero.";
        } else if (name == "Triangular") {
            if (!(Le(p1, p2) && Le(p2, p3)))
                message = "Likeliest value must be between Minimum and Maximum for a Triangular "
                          "distribution.";
        } else if (name == "Uniform") {
            // The text says the reverse of what it guards; it is shown as it always was.
            if (!Le(p1, p2))
                message = "Maximum must be less than Minimum for a Uniform distribution.";
        }
        if (message) {
            result = false;
            support::MsgBox(message);
        }
    });
    return result;
}

bool CheckParam3(const std::string& name, double p1, double /*p2*/, double p3) {
    bool result = true;
    support::Trap({kModule, __func__}, [&] {
        // Also tested by CheckParam1 in other words; reached only when called on its own.
        if (name == "Triangular" && !Le(p1, p3)) {
            result = false;
            support::MsgBox("Maximum must be greater than Minimum for a Triangular distribution.");
        }
    });
    return result;
}

// ---- Moments -----------------------------------------------------------------

bool ExcessKurtosis = false;

double mean(int code, double p1, double p2, double p3) {
    double result = 0;
    support::Trap({kModule, __func__}, [&] {
        if (!Classical(code)) return;
        RequireFinite({p1, p2, p3});
        switch (code) {
        case kNormal:
            result = ck(p1);
            break;
        case kTriangular:
            result = ck((p1 + p2 + p3) / 3);
            break;
        case kExponential:
            result = ck(1 / p1 + p2);
            break;
        case kLogNormal:
            result = ck(std::exp(p1 + std::pow(p2, 2) / 2) + p3);
            break;
        case kWeibull:
            result = ck(WeibullG(1, p1) * p2 + p3);
            break;
        case kUniform:
            result = ck((p1 + p2) / 2);
            break;
        }
    });
    return result;
}

double StDev(int code, double p1, double p2, double p3) {
    double result = 0;
    support::Trap({kModule, __func__}, [&] {
        if (!Classical(code)) return;
        RequireFinite({p1, p2, p3});
        switch (code) {
        case kNormal:
            result = ck(p2);
            break;
        case kTriangular:
            result = ck(std::sqrt(TriangularSpread(p1, p2, p3) / 18));
            break;
        // sqrt(1 / lambda^2): positive even for a negative rate.
        case kExponential:
            result = ck(std::fabs(1 / p1));
            break;
        case kLogNormal: {
            const double s2 = ck(std::pow(p2, 2));
            result = ck(std::exp(p1 + s2 / 2) * std::sqrt(std::expm1(s2)));
            break;
        }
        case kWeibull: {
            const double g1 = WeibullG(1, p1), g2 = WeibullG(2, p1);
            result = ck(std::sqrt(g2 - std::pow(g1, 2)) * std::fabs(p2));
            break;
        }
        case kUniform:
            result = ck(std::fabs(p2 - p1) / std::sqrt(12.0));
            break;
        }
    });
    return result;
}

double Skewness(int code, double p1, double p2, double p3) {
    double result = 0;
    support::Trap({kModule, __func__}, [&] {
        if (!Classical(code)) return;
        RequireFinite({p1, p2, p3});
        switch (code) {
        case kNormal:
        case kUniform:
            result = 0;
            break;
        case kTriangular: {
            const double a = p1, c = p2, b = p3;
            // Scale-free, so the differences are taken relative to the largest one;
            // with no spread at all this is 0/0, an invalid operation.
            const double s = std::max({std::fabs(a - b), std::fabs(b - c), std::fabs(c - a)});
            const double scale = s > 0 ? s : 1;
            const double u = (a - b) / scale, v = (c - b) / scale, w = (a - c) / scale;
            const double q = (std::pow(u, 2) + std::pow(v, 2) + std::pow(w, 2)) / 2;
            result = ck(std::sqrt(2.0) * (u + v) * (w + u) * (w - v) / (5 * std::pow(q, 1.5)));
            break;
        }
        case kExponential:
            result = 2;
            break;
        case kLogNormal: {
            const double s2 = ck(std::pow(p2, 2));
            const double wm1 = ck(std::expm1(s2)); // w - 1, w = exp(s^2)
            result = ck((wm1 + 3) * std::sqrt(wm1));
            break;
        }
        case kWeibull: {
            const double g1 = WeibullG(1, p1), g2 = WeibullG(2, p1), g3 = WeibullG(3, p1);
            result =
                ck((g3 - 3 * g1 * g2 + 2 * std::pow(g1, 3)) / std::pow(g2 - std::pow(g1, 2), 1.5));
            break;
        }
        }
    });
    return result;
}

double Kurtosis(int code, double p1, double p2, double p3) {
    double result = 0;
    support::Trap({kModule, __func__}, [&] {
        if (!Classical(code)) return;
        RequireFinite({p1, p2, p3});
        switch (code) {
        case kNormal:
            result = 3;
            break;
        case kTriangular:
            result = 2.4;
            break;
        case kExponential:
            result = 9;
            break;
        case kLogNormal: {
            const double s2 = ck(std::pow(p2, 2));
            const double wm1 = ck(std::expm1(s2));
            const double w = wm1 + 1;
            result = ck((std::pow(w, 3) + 3 * std::pow(w, 2) + 6 * w + 6) * wm1 + 3);
            break;
        }
        case kWeibull: {
            const double g1 = WeibullG(1, p1), g2 = WeibullG(2, p1), g3 = WeibullG(3, p1),
                         g4 = WeibullG(4, p1);
            result = ck((g4 - 4 * g1 * g3 + 6 * std::pow(g1, 2) * g2 - 3 * std::pow(g1, 4)) /
                        std::pow(g2 - std::pow(g1, 2), 2));
            break;
        }
        case kUniform:
            result = 1.8;
            break;
        }
        if (ExcessKurtosis) result = ck(result - 3);
    });
    return result;
}

// ---- Densities -----------------------------------------------------------------

std::vector<double> GetPDFData(const std::string& name, double low, double high, int n, double p1,
                               double p2, double p3, double p4) {
    std::vector<double> result(1, 0.0);
    support::Trap({kModule, __func__}, [&] {
        if (n > kMaxPoints) support::Raise(support::kErrOverflow, support::kAppTitle, "");
        const int count = std::max(n, 0);
        result.assign(static_cast<size_t>(count) + 1, 0.0);
        std::string key;
        if (name == "Normal" || name == "Exponential" || name == "Uniform" ||
            name == "Triangular" || name == "Weibull" || name == "Johnson")
            key = name;
        else if (name == "LogNormal")
            key = "Lognormal"; // the calculator's own spelling
        else
            return; // no branch knows the name: all zero
        DistCalculator calc;
        SetUpCalculator(calc, key, p1, p2, p3, p4);
        calc.SetNumberOfPoints(count);
        if (!calc.ComputeDensities(low, high))
            support::Raise(support::kErrInvalidCall, "DistCalculator", calc.Message());
        std::vector<double> values(static_cast<size_t>(count) + 1, 0.0);
        for (int i = 1; i <= count; ++i)
            values[static_cast<size_t>(i)] = calc.DensityValue(i);
        result = std::move(values);
    });
    return result;
}

double Normal_PDF(double x, double mean, double sd) {
    double result = 0;
    support::Trap({kModule, __func__}, [&] {
        RequireFinite({x, mean, sd});
        if (sd == 0) support::Raise(support::kErrDivByZero, support::kAppTitle, "");
        if (sd < 0) support::Raise(support::kErrInvalidCall, support::kAppTitle, "");
        result = ck(DistCalculator::FamilyDensity(Family::Normal, {mean, sd, 0, 0}, x));
    });
    return result;
}

// The Johnson densities return 0 outside their support without an error. A
// delta or lamda that is not positive counts as outside (the formula would give
// a negative density there), except the SL's negative lamda, which mirrors the
// curve about xi as a negative-skew fit gives it (lamda = -1).
double JohnsonSB_PDF(double x, double delta, double gamma, double lamda, double xi) {
    double result = 0;
    support::Trap({kModule, __func__}, [&] {
        RequireFinite({x, delta, gamma, lamda, xi});
        if (!(delta > 0 && lamda > 0)) return;
        result = ck(DistCalculator::FamilyDensity(Family::JohnsonSB, {delta, gamma, lamda, xi}, x));
    });
    return result;
}

double JohnsonSL_PDF(double x, double delta, double gamma, double lamda, double xi) {
    double result = 0;
    support::Trap({kModule, __func__}, [&] {
        RequireFinite({x, delta, gamma, lamda, xi});
        // The scale stays inside the logarithm: ln((x - xi) / lamda).
        if (!(delta > 0 && lamda != 0)) return;
        result = ck(DistCalculator::FamilyDensity(Family::JohnsonSL, {delta, gamma, lamda, xi}, x));
    });
    return result;
}

double JohnsonSU_PDF(double x, double delta, double gamma, double lamda, double xi) {
    double result = 0;
    support::Trap({kModule, __func__}, [&] {
        RequireFinite({x, delta, gamma, lamda, xi});
        if (!(delta > 0 && lamda > 0)) return;
        result = ck(DistCalculator::FamilyDensity(Family::JohnsonSU, {delta, gamma, lamda, xi}, x));
    });
    return result;
}

// ---- Cumulative probability at a limit -------------------------------------------

double PNC_LSL(const std::string& calcName, double lsl, double p1, double p2, double p3,
               double p4) {
    double result = 0;
    support::Trap({kModule, __func__}, [&] {
        DistCalculator calc;
        if (!ReadyForTail(calc, calcName, p1, p2, p3, p4)) return;
        // At or below the threshold nothing lies below the limit.
        if (calcName == "Lognormal" && lsl <= p3) return;
        result = calc.CumulativeProbability(lsl);
    });
    return result;
}

double PNC_USL(const std::string& calcName, double usl, double p1, double p2, double p3,
               double p4) {
    double result = 0;
    support::Trap({kModule, __func__}, [&] {
        DistCalculator calc;
        if (!ReadyForTail(calc, calcName, p1, p2, p3, p4)) return;
        if (calcName == "Lognormal" && usl < p3) return; // below the threshold: cumulative 0
        result = calc.CumulativeProbability(usl);
    });
    return result;
}

double PNC_USL_Upper(const std::string& calcName, double usl, double p1, double p2, double p3,
                     double p4) {
    double result = 0;
    support::Trap({kModule, __func__}, [&] {
        DistCalculator calc;
        if (!ReadyForTail(calc, calcName, p1, p2, p3, p4)) return;
        if (calcName == "Lognormal" && usl < p3) {
            result = 1; // everything lies above a limit below the threshold
            return;
        }
        result = calc.UpperTailProbability(usl);
    });
    return result;
}

} // namespace m_Distributions
