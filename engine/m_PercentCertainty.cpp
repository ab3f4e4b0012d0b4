// Fraction nonconforming: the family's tails at the limits, through the
// cumulative probability of m_Distributions, each step in its own error trap.
#include "engine/m_PercentCertainty.h"

#include "engine/m_Distributions.h"
#include "support/ErrorTrap.h"

namespace m_PercentCertainty {

namespace {
constexpr const char* kModule = "Pondera.m_PercentCertainty";
constexpr const char* kLower = "CalcLSLPNC";
constexpr const char* kUpper = "CalcUSLPNC";
constexpr const char* kCap = "CapUpperPNC";

double Lower(const Families::Family& f, const Families::Params& p, double lsl) {
    return support::TrapValue({kModule, kLower}, 0.0, [&] {
        return support::ck(
            m_Distributions::PNC_LSL(f.CalculatorKey, lsl, p[0], p[1], p[2], p[3], f.Code));
    });
}

double Upper(const Families::Family& f, const Families::Params& p, double usl) {
    return support::TrapValue({kModule, kUpper}, 0.0, [&] {
        // The same figure as 1 - PNC_USL, taken directly so a small upper tail keeps
        // its digits, and a failed calculation gives 0 rather than 1.
        return support::ck(
            m_Distributions::PNC_USL_Upper(f.CalculatorKey, usl, p[0], p[1], p[2], p[3], f.Code));
    });
}

double Capped(double lsl, double usl, double lower, double upper) {
    return support::TrapValue({kModule, kCap}, upper, [&] {
        // 1 - lower is exact or within half an ulp of it, so lower + (1 - lower)
        // rounds to at most 1.
        return lsl <= usl && upper > 1 - lower ? 1 - lower : upper;
    });
}

} // namespace

Figures Pnc(const Families::Family& family, const Families::Params& p, std::optional<double> lsl,
            std::optional<double> usl) {
    Figures f;
    if (lsl) f.Lower = Lower(family, p, *lsl);
    if (usl) f.Upper = Upper(family, p, *usl);
    if (lsl && usl) f.Upper = Capped(*lsl, *usl, f.Lower, f.Upper);
    f.Total = f.Lower + f.Upper;
    return f;
}

int CurrentDistribution = 0;
double Param1 = 0, Param2 = 0, Param3 = 0, Param4 = 0;
double LSL = 0, USL = 0;
int16_t DecPlaces = 6;

std::string CalculatorName(int code) {
    return support::TrapValue({kModule, __func__}, std::string(), [&] {
        // "Johnson" for the Johnson types and for any code without a family.
        return std::string(Families::ByCode(code).CalculatorKey);
    });
}

double CalcLSLPNC() {
    return Lower(Families::ByCode(CurrentDistribution), {Param1, Param2, Param3, Param4}, LSL);
}

double CalcUSLPNC() {
    return Upper(Families::ByCode(CurrentDistribution), {Param1, Param2, Param3, Param4}, USL);
}

double CapUpperPNC(double lower, double upper) {
    return Capped(LSL, USL, lower, upper);
}

} // namespace m_PercentCertainty
