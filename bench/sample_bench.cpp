// Reading a file of 100,000 measurements and fitting a Johnson curve to them,
// as "pondera-cli data" and the data dialog do: parse, sample moments, fit.
#include "johnson/JohnsonDist.h"
#include "johnson/m_SampleData.h"

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

} // namespace
