// Reading a file of 100,000 measurements and fitting a Johnson curve to them,
// as "pondera-cli data" and the data dialog do: parse, sample moments, fit.
#include "johnson/JohnsonDist.h"
#include "stats/m_SampleData.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

namespace {

void BM_ReadAndFit100k(benchmark::State& state) {
    // Skewed values written as a measuring program would, one per line after a header.
    const std::string path = std::string(std::getenv("TMPDIR") ? std::getenv("TMPDIR") : "/tmp") +
                             "/pondera-bench-sample.txt";
    {
        std::ofstream out(path);
        out << "Diameter\n";
        char line[32];
        for (int i = 1; i <= 100000; ++i) {
            std::snprintf(line, sizeof line, "%.6f\n", 10 - 0.3 * std::log1p(-(i - 0.5) / 1e5));
            out << line;
        }
    }
    for (auto _ : state) {
        const m_SampleData::Parsed data = m_SampleData::ReadFile(path);
        m_SampleData::Summary s;
        if (!data.Problem.empty() || !m_SampleData::Describe(data.Values, s).empty())
            state.SkipWithError("the sample was refused");
        JohnsonDist fit;
        fit.Calculate(s.Mean, s.StDev, s.Skewness, s.Kurtosis);
        benchmark::DoNotOptimize(fit.Delta);
    }
    std::remove(path.c_str());
}
BENCHMARK(BM_ReadAndFit100k)->Unit(benchmark::kMillisecond);

// A kilobyte figure from /proc/self/status ("VmHWM", "VmRSS").
double StatusKb(const std::string& key) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.rfind(key + ":", 0) == 0) return std::atof(line.c_str() + key.size() + 1);
    return 0;
}

// Ten million values streamed from a file: the peak memory the read adds, against
// the target of 4 x the values' bytes + 100 MB.
void BM_ReadFile10M(benchmark::State& state) {
    const std::string path = std::string(std::getenv("TMPDIR") ? std::getenv("TMPDIR") : "/tmp") +
                             "/pondera-bench-10m.txt";
    constexpr int n = 10'000'000;
    {
        std::FILE* out = std::fopen(path.c_str(), "w");
        for (int i = 1; i <= n; ++i)
            std::fprintf(out, "%.6g\n", std::log1p(-(i - 0.5) / n));
        std::fclose(out);
    }
    double added = 0;
    for (auto _ : state) {
        std::ofstream("/proc/self/clear_refs") << "5"; // resets the peak to the present
        const double before = StatusKb("VmRSS");
        const m_SampleData::Parsed data = m_SampleData::ReadFile(path);
        if (data.Values.size() != static_cast<std::size_t>(n))
            state.SkipWithError("not read whole");
        added = (StatusKb("VmHWM") - before) / 1024;
    }
    state.counters["peak_added_MB"] = added;
    state.counters["target_MB"] = 4.0 * 8 * n / (1 << 20) + 100;
    std::remove(path.c_str());
}
BENCHMARK(BM_ReadFile10M)->Unit(benchmark::kMillisecond)->Iterations(1);

} // namespace
