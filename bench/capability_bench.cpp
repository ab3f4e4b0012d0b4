// Capability intervals by the parametric bootstrap: 1,000 replicates for a
// three-parameter row at n = 100 (the Weibull 3P and LogNormal 3P rows, the
// slowest refits), on one and on two threads.
#include "stats/m_Bootstrap.h"
#include "stats/m_Fits.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

namespace {

// A three-parameter Weibull (shape 1.7, scale 2, threshold 3) at the points of
// a golden-ratio sequence, as in stats_bench.cpp.
std::vector<double> Values(int n) {
    std::vector<double> x(n);
    for (int i = 0; i < n; ++i) {
        const double v = (i + 0.5) * 0.6180339887498949, u = v - std::floor(v);
        x[i] = 3 + 2 * std::pow(-std::log1p(-u), 1 / 1.7);
    }
    return x;
}

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
