// The engine's share of one plot: the density on a 500-point grid plus the
// cumulative probabilities at two spec limits, per family.
#include "engine/m_Distributions.h"

#include <benchmark/benchmark.h>

namespace {

struct Family {
    const char* Name; // as GetPDFData takes it
    const char* Key;  // as the PNC functions take it
    int Code;         // the Johnson form the "Johnson" key means
    double P[4];
    double Low, High, LSL, USL;
};

const Family kFamilies[] = {
    {"Normal", "Normal", 1, {0, 1, 0, 0}, -2.6, 2.6, -3, 3},
    {"LogNormal", "Lognormal", 4, {0, 0.5, 0, 0}, 0, 4, 0.3, 3},
    {"Exponential", "Exponential", 3, {1, 0, 0, 0}, 0, 3.6, 0.01, 3},
    {"Weibull", "Weibull", 5, {2, 10, 0, 0}, 0, 25, 1, 20},
    {"Weibull", "Weibull", 5, {2.5, 10, 0, 0}, 0, 25, 1, 20},
    {"Uniform", "Uniform", 6, {-1, 1, 0, 0}, -1.5, 1.5, -0.9, 0.9},
    {"Triangular", "Triangular", 2, {-1, 0.5, 1, 0}, -1.2, 1.2, -0.8, 0.9},
    {"Johnson", "Johnson", 7, {1.4, 1.0, 6.8, -2.3}, -2.5, 4.5, -1.5, 3}, // SB
    {"Johnson", "Johnson", 8, {2.3, 0, 2.1, 0}, -3, 3, -2.5, 2.5},        // SU
    {"Johnson", "Johnson", 9, {3.2, -3.4, 1, -3.1}, -2.5, 4, -2, 3},      // SL
};

void BM_PlotFigures(benchmark::State& state) {
    const Family& f = kFamilies[state.range(0)];
    for (auto _ : state) {
        auto density = m_Distributions::GetPDFData(f.Name, f.Low, f.High, 500, f.P[0], f.P[1],
                                                   f.P[2], f.P[3], f.Code);
        double lower =
            m_Distributions::PNC_LSL(f.Key, f.LSL, f.P[0], f.P[1], f.P[2], f.P[3], f.Code);
        double upper =
            m_Distributions::PNC_USL_Upper(f.Key, f.USL, f.P[0], f.P[1], f.P[2], f.P[3], f.Code);
        benchmark::DoNotOptimize(density.data());
        benchmark::DoNotOptimize(lower);
        benchmark::DoNotOptimize(upper);
    }
    static const char* labels[] = {"Normal",      "LogNormal", "Exponential", "Weibull",
                                   "Weibull 2.5", "Uniform",   "Triangular",  "Johnson SB",
                                   "Johnson SU",  "Johnson SL"};
    state.SetLabel(labels[state.range(0)]);
}
BENCHMARK(BM_PlotFigures)->DenseRange(0, 9)->Unit(benchmark::kMicrosecond);

// Drawing by moments samples the engine's own Johnson density, point by point.
void BM_JohnsonDensityGrid(benchmark::State& state) {
    for (auto _ : state) {
        double sum = 0;
        for (int i = 1; i <= 500; ++i)
            sum += m_Distributions::JohnsonSU_PDF(m_Distributions::GridX(-3, 3, 500, i), 2.3, 0,
                                                  2.1, 0);
        benchmark::DoNotOptimize(sum);
    }
}
BENCHMARK(BM_JohnsonDensityGrid)->Unit(benchmark::kMicrosecond);

} // namespace
