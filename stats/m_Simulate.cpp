#include "stats/m_Simulate.h"

#include <cmath>

namespace m_Simulate {

namespace {
std::uint64_t Mix(std::uint64_t z) {
    z += 0x9E3779B97F4A7C15ull;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
}
} // namespace

Stream::Stream(std::uint64_t seed, int row, int replicate) {
    state_ = Mix(Mix(Mix(seed) ^ static_cast<std::uint64_t>(row + 1)) ^
                 static_cast<std::uint64_t>(replicate + 1));
}

std::uint64_t Stream::Next() {
    return Mix(state_ += 0x9E3779B97F4A7C15ull);
}

double Stream::Uniform() {
    return (static_cast<double>(Next() >> 11) + 0.5) * 0x1p-53;
}

double Stream::Normal() {
    if (spare_) {
        spare_ = false;
        return saved_;
    }
    double u, v, s;
    do {
        u = 2 * Uniform() - 1;
        v = 2 * Uniform() - 1;
        s = u * u + v * v;
    } while (s >= 1);
    const double f = std::sqrt(-2 * std::log(s) / s);
    saved_ = v * f;
    spare_ = true;
    return u * f;
}

void Draw(const m_Curves::Curve& curve, Stream& stream, std::vector<double>& x) {
    const bool normal = m_Curves::NormalBased(curve.K);
    for (double& v : x)
        v = m_Curves::FromStandard(curve, normal ? stream.Normal() : -std::log(stream.Uniform()));
}

} // namespace m_Simulate
