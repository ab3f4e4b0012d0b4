// The distribution calculator: the state around one family's density and tails.
#include "engine/DistCalculator.h"

#include "engine/Families.h"
#include "support/ErrorTrap.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr const char* kSource = "DistCalculator";

[[noreturn]] void Fail(int32_t number, const std::string& description = "") {
    support::Raise(number, kSource, description);
}

} // namespace

void DistCalculator::SetParam(int slot, double value) {
    if (slot < 1 || slot > 4) Fail(9);
    p_[slot - 1] = value;
    ready_ = false;
}

bool DistCalculator::Prepare() {
    message_.clear();
    ready_ = false;
    pointMass_ = false;
    family_ = Families::ForCalculator(key_, form_);
    if (!family_) {
        message_ = "Unknown distribution \"" + key_ + "\".";
        return false;
    }
    for (int i = 0; i < family_->SlotCount; ++i)
        if (!std::isfinite(p_[i])) {
            message_ = "The parameters must be finite numbers.";
            return false;
        }
    // The rules of the parameter checks, in their order, and the Johnson forms' own.
    if (const Families::Rule* broken = family_->Refusal(p_)) {
        message_ = broken->Message;
        return false;
    }
    pointMass_ = family_->NoSpread && family_->NoSpread(p_);
    return true;
}

bool DistCalculator::ComputeDensities(double low, double high) {
    density_.clear();
    if (!Prepare()) return false;
    if (!std::isfinite(low) || !std::isfinite(high)) {
        message_ = "The range must be finite.";
        return false;
    }
    const int n = n_ > 0 ? n_ : 0;
    density_.assign(static_cast<size_t>(n), 0.0);
    if (pointMass_) return true; // no spread, no density to draw
    family_->Grid(p_, low, high, n, density_.data());
    // A fault anywhere on the grid goes to the caller before it copies a value.
    support::CheckFp();
    return true;
}

double DistCalculator::DensityValue(int i) const {
    if (i < 1 || i > static_cast<int>(density_.size())) Fail(9);
    return density_[static_cast<size_t>(i - 1)];
}

bool DistCalculator::Calculate() {
    if (!Prepare()) return false;
    ready_ = true;
    return true;
}

// Each side is computed on its own, and a sum of rounded terms may stray an ulp
// past 1 (a triangular limit just below the maximum); a probability stays in [0, 1].
double DistCalculator::CumulativeProbability(double x) const {
    return std::clamp(support::ck(Tail(x, false)), 0.0, 1.0);
}

double DistCalculator::UpperTailProbability(double x) const {
    return std::clamp(support::ck(Tail(x, true)), 0.0, 1.0);
}

double DistCalculator::Density(double x) const {
    if (!ready_) Fail(support::kErrInvalidCall, "The distribution has not been calculated.");
    if (std::isnan(x)) Fail(support::kErrInvalidCall);
    if (pointMass_) return 0; // no spread, no density to draw
    return support::ck(family_->Density(p_, x));
}

double DistCalculator::Tail(double x, bool upper) const {
    if (!ready_) Fail(support::kErrInvalidCall, "The distribution has not been calculated.");
    if (std::isnan(x)) Fail(support::kErrInvalidCall);
    if (std::isinf(x)) return (x > 0) == upper ? 0.0 : 1.0;
    // Minimum = maximum: all the probability sits at that point, so the
    // cumulative is a step; a limit on the point leaves nothing beyond it.
    if (pointMass_) return upper ? (x < p_[0] ? 1.0 : 0.0) : (x > p_[0] ? 1.0 : 0.0);
    return family_->Tail(p_, x, upper);
}
