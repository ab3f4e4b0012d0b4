#include "ui/main/MomentsStep.h"

#include "engine/m_Distributions.h"
#include "johnson/JohnsonDist.h"
#include "support/ErrorTrap.h"
#include "support/Format.h"

namespace MomentsStep {

PlotPipeline::Check CheckMomentTexts(const std::array<std::string, 4>& texts) {
    using PlotPipeline::Field;
    static const std::pair<Field, const char*> checks[4] = {
        {Field::Mean, "Mean must be a number."},
        {Field::StDev, "Std. Dev. must be a number."},
        {Field::Skewness, "Skewness must be a number."},
        {Field::Kurtosis, "Kurtosis must be a positive number greater than or equal to 1."}};
    for (int i = 0; i < 4; ++i)
        if (!support::IsNumeric(texts[i])) return {false, checks[i].first, checks[i].second};
    return {};
}

Fit FitMoments(double mean, double stDev, double skewness, double kurtosis) {
    JohnsonDist fit;
    fit.Calculate(mean, stDev, skewness, kurtosis);
    return {fit.JDistribution, fit.CalcError, fit.Delta, fit.Gamma, fit.Lamda, fit.Xi};
}

const char* ListItem(const std::string& type) {
    const Families::Family* f = Families::ByFittedType(type);
    return f ? f->FitItem : nullptr;
}

std::array<std::string, 4> ParamTexts(const Fit& fit, const std::string& pattern) {
    return {support::Format(fit.Delta, pattern), support::Format(fit.Gamma, pattern),
            support::Format(fit.Lamda, pattern), support::Format(fit.Xi, pattern)};
}

std::vector<double> Grid(double low, double high, int n) {
    std::vector<double> x(n + 1, 0.0);
    const double step = support::ck((high - low) / n);
    for (int i = 1; i <= n; ++i)
        x[i] = support::ck(low + (i - 1) * step);
    if (n >= 1) x[n] = high;
    return x;
}

std::vector<double> Densities(const Fit& fit, const std::vector<double>& x, double mean,
                              double stDev) {
    std::vector<double> y(x.size(), 0.0);
    const Families::Family* f = Families::ByFittedType(fit.Type);
    if (!f) return y;
    for (std::size_t i = 1; i < x.size(); ++i)
        y[i] = f->EngineDensity ? f->EngineDensity(x[i], fit.Delta, fit.Gamma, fit.Lamda, fit.Xi)
                                : m_Distributions::Normal_PDF(x[i], mean, stDev);
    return y;
}

PlotPipeline::PncSource PncSourceOf(const Fit& fit) {
    PlotPipeline::PncSource s;
    const Families::Family* f = Families::ByFittedType(fit.Type);
    s.Code = f ? f->Code : 0;
    s.Params = {fit.Delta, fit.Gamma, fit.Lamda, fit.Xi};
    return s;
}

} // namespace MomentsStep
