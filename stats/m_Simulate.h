// Samples drawn from a fitted curve, as the simulated p and the bootstrap
// intervals draw them: one random stream per (seed, row, replicate), so an
// answer never depends on how many threads share the replicates.
#pragma once

#include "stats/m_Curves.h"

#include <cstdint>
#include <thread>
#include <vector>

namespace m_Simulate {

// A replicate whose refit fails this often in a row gives up.
inline constexpr int kAttempts = 20;

// SplitMix64 (Steele, Lea & Flood 2014): a stream per (seed, row, replicate).
class Stream {
  public:
    Stream(std::uint64_t seed, int row, int replicate);
    // Uniform on (0, 1), never 0 or 1.
    double Uniform();
    // Standard normal by Marsaglia's polar method.
    double Normal();

  private:
    std::uint64_t Next();
    std::uint64_t state_;
    bool spare_ = false;
    double saved_ = 0;
};

// Runs work(0) .. work(threads - 1), each on a thread of its own (work(0) on
// this one), and returns when all are done.
template <class Work> void OnThreads(int threads, Work&& work) {
    std::vector<std::thread> pool;
    for (int t = 1; t < threads; ++t)
        pool.emplace_back(work, t);
    work(0);
    for (std::thread& th : pool)
        th.join();
}

// Fills x with values drawn from the curve: a normal-based curve from standard
// normals, the others from standard exponentials, through the curve's transform.
void Draw(const m_Curves::Curve& curve, Stream& stream, std::vector<double>& x);

} // namespace m_Simulate
