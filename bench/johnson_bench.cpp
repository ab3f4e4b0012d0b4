// Johnson fits by moments, per region of the (skewness, kurtosis) plane, over a
// grid spread across the whole feasible plane, and one step of a drag on the
// skewness-kurtosis chart as the moments view runs it (fit + 50 density points).
#include "engine/m_Distributions.h"
#include "johnson/JohnsonDist.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

namespace {

struct Moments {
    double Mean, Sd, Skew, Kurt;
};

// Points of one region, taken in turn so no single easy point sets the pace.
const std::vector<Moments> kSU = {{0, 1, 1, 6},  {10, 2, -0.5, 5}, {0, 1, 0.3, 8},
                                  {5, 3, 2, 15}, {0, 1, -3, 25},   {1, 0.5, 0.8, 4.5},
                                  {-2, 1, 0, 4}, {0, 1, 3, 28}};
// Converged SB fits (the failing ones stop early and would flatter the figure).
const std::vector<Moments> kSB = {{0, 1, 0, 2.5},    {0, 1, 0.5, 2.8},  {0, 1, 1, 4},
                                  {0, 1, -0.8, 3.2}, {10, 2, 0.3, 2.2}, {0, 1, 1.5, 4.5},
                                  {5, 2, -1.2, 3.5}, {0, 1, 2, 9}};
// On the lognormal line: a negative kurtosis asks for it.
const std::vector<Moments> kSL = {
    {1, 1, 2, -1}, {2, 0.5, -0.6, -1}, {0, 1, 1, -1}, {3, 2, 0.2, -1}};

// skewness -4..4 by 0.1, kurtosis from just inside the boundary to 30 by 0.25.
std::vector<Moments> Grid() {
    std::vector<Moments> points;
    for (int i = -40; i <= 40; ++i) {
        const double s = i * 0.1;
        for (double k = s * s + 1 + 0.05; k <= 30; k += 0.25)
            points.push_back({0, 1, s, k});
    }
    return points;
}

void RunFits(benchmark::State& state, const std::vector<Moments>& points) {
    std::size_t i = 0;
    for (auto _ : state) {
        const Moments& m = points[i];
        if (++i == points.size()) i = 0;
        JohnsonDist jd;
        jd.Calculate(m.Mean, m.Sd, m.Skew, m.Kurt);
        benchmark::DoNotOptimize(jd.Delta);
    }
    state.SetItemsProcessed(state.iterations());
}

void BM_FitSU(benchmark::State& state) {
    RunFits(state, kSU);
}
void BM_FitSB(benchmark::State& state) {
    RunFits(state, kSB);
}
void BM_FitSL(benchmark::State& state) {
    RunFits(state, kSL);
}
void BM_FitGrid(benchmark::State& state) {
    static const std::vector<Moments> grid = Grid();
    RunFits(state, grid);
    state.SetLabel(std::to_string(grid.size()) + " points");
}

// One step of a drag on the skewness-kurtosis chart: fit, then 50 density
// points over mean +- 3 sd with the engine's SB density.
void BM_MomentsRedrawStep(benchmark::State& state) {
    constexpr int kPoints = 50;
    std::vector<double> y(kPoints + 1);
    std::size_t i = 0;
    for (auto _ : state) {
        const Moments& m = kSB[i];
        if (++i == kSB.size()) i = 0;
        JohnsonDist jd;
        jd.Calculate(m.Mean, m.Sd, m.Skew, m.Kurt);
        const double low = m.Mean - 3 * m.Sd, high = m.Mean + 3 * m.Sd;
        const double step = (high - low) / kPoints;
        for (int k = 1; k <= kPoints; ++k) {
            const double x = k == kPoints ? high : low + (k - 1) * step;
            y[k] = m_Distributions::JohnsonSB_PDF(x, jd.Delta, jd.Gamma, jd.Lamda, jd.Xi);
        }
        benchmark::DoNotOptimize(y.data());
    }
}

#define JOHNSON_BENCH(f)                                                                           \
    BENCHMARK(f)->Unit(benchmark::kMicrosecond)->Repetitions(5)->ReportAggregatesOnly(true)

JOHNSON_BENCH(BM_FitSU);
JOHNSON_BENCH(BM_FitSB);
JOHNSON_BENCH(BM_FitSL);
JOHNSON_BENCH(BM_FitGrid);
JOHNSON_BENCH(BM_MomentsRedrawStep);

} // namespace
