// Identifying a sample: every row without simulation at n = 100, 10^5 and 10^6,
// each row alone at 10^6, and every row with 1,000 simulated samples at n = 100.
// Capability intervals by the parametric bootstrap: 1,000 replicates for a
// three-parameter row at n = 100 (the slowest refits), on one and two threads.
// bench/scipy_fits.py times scipy.stats on the same values.
#include "stats/m_Bootstrap.h"
#include "stats/m_Fits.h"
#include "stats/m_Identify.h"

#include <benchmark/benchmark.h>

#include <cmath>

namespace {

// A three-parameter Weibull (shape 1.7, scale 2, threshold 3) at the points of a
// golden-ratio sequence: the same values in bench/scipy_fits.py.
std::vector<double> Values(int n) {
    std::vector<double> x(n);
    for (int i = 0; i < n; ++i) {
        const double v = (i + 0.5) * 0.6180339887498949, u = v - std::floor(v);
        x[i] = 3 + 2 * std::pow(-std::log1p(-u), 1 / 1.7);
    }
    return x;
}

void BM_IdentifyWithoutSimulation(benchmark::State& state) {
    const std::vector<double> x = Values(static_cast<int>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(m_Identify::Identify(x, {0, 1, 2}));
}
BENCHMARK(BM_IdentifyWithoutSimulation)
    ->Arg(100)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond);

void BM_RowAtAMillion(benchmark::State& state) {
    const m_Fits::Sample s = m_Fits::Prepare(Values(1000000));
    const int row = static_cast<int>(state.range(0));
    state.SetLabel(m_Fits::Info(row).Name);
    for (auto _ : state)
        benchmark::DoNotOptimize(m_Fits::FitRow(row, s));
}
BENCHMARK(BM_RowAtAMillion)->DenseRange(0, m_Fits::kRowCount - 1)->Unit(benchmark::kMillisecond);

void BM_IdentifyWith1000Replicates(benchmark::State& state) {
    const std::vector<double> x = Values(100);
    const int threads = static_cast<int>(state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(m_Identify::Identify(x, {1000, 1, threads}));
}
BENCHMARK(BM_IdentifyWith1000Replicates)
    ->Arg(1)
    ->Arg(2)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

// Bootstrap intervals for capability figures.
void BM_BootstrapIntervals(benchmark::State& state) {
    const int row = static_cast<int>(state.range(0));
    const m_Fits::Sample s = m_Fits::Prepare(Values(100));
    const m_Fits::Fit f = m_Fits::FitRow(row, s);
    m_Bootstrap::Options o;
    o.Replicates = 1000;
    o.Threads = static_cast<int>(state.range(1));
    state.SetLabel(m_Fits::Info(row).Name);
    for (auto _ : state)
        benchmark::DoNotOptimize(m_Bootstrap::Intervals(row, f.C, 100, 3.1, 9, o));
}
BENCHMARK(BM_BootstrapIntervals)
    ->Args({m_Fits::kWeibull3P, 1})
    ->Args({m_Fits::kWeibull3P, 2})
    ->Args({m_Fits::kLogNormal3P, 1})
    ->Args({m_Fits::kLogNormal3P, 2})
    ->Args({m_Fits::kJohnsonMoments, 1})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

} // namespace
