// The named procedures of the engine: each finds its family's record
// (engine/Families.h) and runs it inside its own error trap; the calculator
// calls behind the density grid and the cumulative probability at a limit.
#include "engine/m_Distributions.h"

#include "engine/DistCalculator.h"
#include "engine/Families.h"
#include "engine/m_NumRecipes.h"
#include "support/ErrorTrap.h"
#include "support/UserFace.h"

#include <algorithm>
#include <cmath>

namespace m_Distributions {

namespace {
constexpr const char* kModule = "Pondera.m_Distributions";

using m_NumRecipes::kernel::RequireFinite;
using support::ck;

void SetUpCalculator(DistCalculator& calc, const std::string& key, double p1, double p2, double p3,
                     double p4, int form) {
    calc.SetDistribution(key, form);
    const Families::Family* family = Families::ForCalculator(key, form);
    const int slots = family ? family->SlotCount : 0;
    const double p[4] = {p1, p2, p3, p4};
    for (int i = 0; i < slots; ++i)
        calc.SetParam(i + 1, p[i]);
}

// True when the limit lies at or below where the family's support starts (the
// minimum of the Exponential, Weibull and LogNormal): nothing lies below it, and
// the calculator's cumulative probability is not asked for.
bool AtOrBelowStart(const std::string& key, double limit, double p1, double p2, double p3,
                    double p4, int form) {
    const Families::Family* family = Families::ForCalculator(key, form);
    const double p[4] = {p1, p2, p3, p4};
    return family && family->MinimumSlot && std::islessequal(limit, p[family->MinimumSlot - 1]);
}

// Sets up the calculator for a cumulative probability; when it refuses, its
// message goes to the status bar and the caller's figure stays 0.
bool ReadyForTail(DistCalculator& calc, const std::string& key, double p1, double p2, double p3,
                  double p4, int form) {
    SetUpCalculator(calc, key, p1, p2, p3, p4, form);
    if (calc.Calculate()) return true;
    support::Face().SetStatusText(calc.Message());
    return false;
}
} // namespace

// ---- Parameter checks ---------------------------------------------------------

namespace {
// The family's rule for check `check` (1..3), if it breaks it: its message is
// shown and the check fails. A name outside the catalogue passes.
bool RunCheck(int check, const std::string& name, double p1, double p2, double p3) {
    const Families::Family* family = Families::ByName(name);
    if (!family) return true;
    const double p[4] = {p1, p2, p3, 0};
    for (const Families::Rule& rule : family->Rules)
        if (rule.Check == check) {
            if (rule.Holds(p)) return true;
            support::MsgBox(rule.Message);
            return false;
        }
    return true;
}
} // namespace

bool CheckParam1(const std::string& name, double p1, double p2, double p3) {
    return support::TrapValue({kModule, __func__}, true,
                              [&] { return RunCheck(1, name, p1, p2, p3); });
}

bool CheckParam2(const std::string& name, double p1, double p2, double p3) {
    return support::TrapValue({kModule, __func__}, true,
                              [&] { return RunCheck(2, name, p1, p2, p3); });
}

bool CheckParam3(const std::string& name, double p1, double p2, double p3) {
    return support::TrapValue({kModule, __func__}, true,
                              [&] { return RunCheck(3, name, p1, p2, p3); });
}

// ---- Moments -----------------------------------------------------------------

bool ExcessKurtosis = false;

namespace {
// The family's closed form for the code; nullptr for the Johnson codes and any other.
Families::Moment Formula(int code, Families::Moment Families::Family::*moment) {
    return Families::ByCode(code).*moment;
}
} // namespace

double mean(int code, double p1, double p2, double p3) {
    return support::TrapValue({kModule, __func__}, 0.0, [&] {
        const Families::Moment f = Formula(code, &Families::Family::Mean);
        if (!f) return 0.0;
        RequireFinite({p1, p2, p3});
        return f(p1, p2, p3);
    });
}

double StDev(int code, double p1, double p2, double p3) {
    return support::TrapValue({kModule, __func__}, 0.0, [&] {
        const Families::Moment f = Formula(code, &Families::Family::StDev);
        if (!f) return 0.0;
        RequireFinite({p1, p2, p3});
        return f(p1, p2, p3);
    });
}

double Skewness(int code, double p1, double p2, double p3) {
    return support::TrapValue({kModule, __func__}, 0.0, [&] {
        const Families::Moment f = Formula(code, &Families::Family::Skewness);
        if (!f) return 0.0;
        RequireFinite({p1, p2, p3});
        return f(p1, p2, p3);
    });
}

double Kurtosis(int code, double p1, double p2, double p3) {
    double result = 0;
    support::Trap({kModule, __func__}, [&] {
        const Families::Moment f = Formula(code, &Families::Family::Kurtosis);
        if (!f) return;
        RequireFinite({p1, p2, p3});
        result = f(p1, p2, p3);
        if (ExcessKurtosis) result = ck(result - 3);
    });
    return result;
}

MomentSet MomentsOf(const std::string& name, double p1, double p2, double p3) {
    MomentSet m;
    const Families::Family* family = Families::ByName(name);
    if (!family || !family->Classical) return m;
    const double p[3] = {p1, p2, p3};
    auto first = [&p](int count, int i) { return i < count ? p[i] : 0.0; };
    const int c = family->Code, a = family->MeanArgs, b = family->MomentArgs;
    m.Mean = mean(c, first(a, 0), first(a, 1), first(a, 2));
    m.StDev = StDev(c, first(b, 0), first(b, 1), first(b, 2));
    m.Skewness = Skewness(c, first(b, 0), first(b, 1), first(b, 2));
    m.Kurtosis = Kurtosis(c, first(b, 0), first(b, 1), first(b, 2));
    return m;
}

// ---- Densities -----------------------------------------------------------------

std::vector<double> GetPDFData(const std::string& name, double low, double high, int n, double p1,
                               double p2, double p3, double p4, int form) {
    std::vector<double> result(1, 0.0);
    support::Trap({kModule, __func__}, [&] {
        if (n > kMaxPoints) support::Raise(support::kErrOverflow, support::kAppTitle, "");
        const int count = std::max(n, 0);
        result.assign(static_cast<size_t>(count) + 1, 0.0);
        // A classical family by its name ("LogNormal" goes to the calculator as
        // "Lognormal"), or the Johnson forms by their shared key; any other name
        // leaves the array all zero.
        const Families::Family* family = Families::ByName(name);
        std::string key;
        if (family && family->Classical)
            key = family->CalculatorKey;
        else if (const Families::Family* shared = Families::ForCalculator(name, form);
                 !family && shared && !shared->Classical)
            key = name;
        else
            return;
        DistCalculator calc;
        SetUpCalculator(calc, key, p1, p2, p3, p4, form);
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
    return support::TrapValue({kModule, __func__}, 0.0, [&] {
        RequireFinite({x, mean, sd});
        if (sd == 0) support::Raise(support::kErrDivByZero, support::kAppTitle, "");
        if (sd < 0) support::Raise(support::kErrInvalidCall, support::kAppTitle, "");
        const double p[4] = {mean, sd, 0, 0};
        return ck(Families::ByCode(kNormal).Density(p, x));
    });
}

namespace {
// The Johnson densities return 0 outside their support without an error, and
// so for the parameters the calculator refuses: a delta or lamda that is not
// positive (the formula would give a negative density there), except the SL's
// negative lamda, which mirrors the curve about xi as a negative-skew fit gives
// it (lamda = -1). The SL keeps its scale inside the logarithm: ln((x - xi) / lamda).
double JohnsonDensity(int code, double x, double delta, double gamma, double lamda, double xi) {
    RequireFinite({x, delta, gamma, lamda, xi});
    const Families::Family& family = Families::ByCode(code);
    const double p[4] = {delta, gamma, lamda, xi};
    if (family.Refusal(p)) return 0;
    return ck(family.Density(p, x));
}
} // namespace

double JohnsonSB_PDF(double x, double delta, double gamma, double lamda, double xi) {
    return support::TrapValue({kModule, __func__}, 0.0, [&] {
        return JohnsonDensity(kJohnsonSB, x, delta, gamma, lamda, xi);
    });
}

double JohnsonSL_PDF(double x, double delta, double gamma, double lamda, double xi) {
    return support::TrapValue({kModule, __func__}, 0.0, [&] {
        return JohnsonDensity(kJohnsonSL, x, delta, gamma, lamda, xi);
    });
}

double JohnsonSU_PDF(double x, double delta, double gamma, double lamda, double xi) {
    return support::TrapValue({kModule, __func__}, 0.0, [&] {
        return JohnsonDensity(kJohnsonSU, x, delta, gamma, lamda, xi);
    });
}

// ---- Cumulative probability at a limit -------------------------------------------

double PNC_LSL(const std::string& calcName, double lsl, double p1, double p2, double p3, double p4,
               int form) {
    return support::TrapValue({kModule, __func__}, 0.0, [&] {
        DistCalculator calc;
        if (!ReadyForTail(calc, calcName, p1, p2, p3, p4, form)) return 0.0;
        if (AtOrBelowStart(calcName, lsl, p1, p2, p3, p4, form)) return 0.0;
        return calc.CumulativeProbability(lsl);
    });
}

double PNC_USL(const std::string& calcName, double usl, double p1, double p2, double p3, double p4,
               int form) {
    return support::TrapValue({kModule, __func__}, 0.0, [&] {
        DistCalculator calc;
        if (!ReadyForTail(calc, calcName, p1, p2, p3, p4, form)) return 0.0;
        if (AtOrBelowStart(calcName, usl, p1, p2, p3, p4, form)) return 0.0;
        return calc.CumulativeProbability(usl);
    });
}

double PNC_USL_Upper(const std::string& calcName, double usl, double p1, double p2, double p3,
                     double p4, int form) {
    return support::TrapValue({kModule, __func__}, 0.0, [&] {
        DistCalculator calc;
        if (!ReadyForTail(calc, calcName, p1, p2, p3, p4, form)) return 0.0;
        if (AtOrBelowStart(calcName, usl, p1, p2, p3, p4, form)) return 1.0;
        return calc.UpperTailProbability(usl);
    });
}

} // namespace m_Distributions
