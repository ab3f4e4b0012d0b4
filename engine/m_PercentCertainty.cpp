// Fraction nonconforming for the current distribution: the program-wide current
// values turned into the calculator's key and passed to the cumulative probability.
#include "engine/m_PercentCertainty.h"

#include "engine/Families.h"
#include "engine/m_Distributions.h"
#include "support/ErrorTrap.h"

namespace m_PercentCertainty {

namespace {
constexpr const char* kModule = "Pondera.m_PercentCertainty";
} // namespace

int CurrentDistribution = 0;
double Param1 = 0, Param2 = 0, Param3 = 0, Param4 = 0;
double LSL = 0, USL = 0;
int16_t DecPlaces = 6;

std::string CalculatorName(int code) {
    std::string result;
    support::Trap({kModule, __func__}, [&] {
        // "Johnson" for the Johnson types and for any code without a family.
        result = Families::ByCode(code).CalculatorKey;
    });
    return result;
}

double CalcLSLPNC() {
    double result = 0;
    support::Trap({kModule, __func__}, [&] {
        result = support::ck(m_Distributions::PNC_LSL(CalculatorName(CurrentDistribution), LSL,
                                                      Param1, Param2, Param3, Param4));
    });
    return result;
}

double CalcUSLPNC() {
    double result = 0;
    support::Trap({kModule, __func__}, [&] {
        // The same figure as 1 - PNC_USL, taken directly so a small upper tail keeps
        // its digits, and a failed calculation gives 0 rather than 1.
        result = support::ck(m_Distributions::PNC_USL_Upper(CalculatorName(CurrentDistribution),
                                                            USL, Param1, Param2, Param3, Param4));
    });
    return result;
}

double CapUpperPNC(double lower, double upper) {
    double result = upper;
    support::Trap({kModule, __func__}, [&] {
        // 1 - lower is exact or within half an ulp of it, so lower + (1 - lower)
        // rounds to at most 1.
        if (LSL <= USL && upper > 1 - lower) result = 1 - lower;
    });
    return result;
}

} // namespace m_PercentCertainty
