// The window's last session (mode, distribution, parameter texts, limits, and in
// moments mode the moments and their locks), kept in a section of its own beside
// the display options and restored at the next start. Data are not kept.
//
// Every entry stands alone: a missing or damaged one (a number that does not
// read, a tick that is not 0 or 1) is left empty, and the window keeps its
// start-up state for that entry only, without a message.
#pragma once

#include <array>
#include <optional>
#include <string>

namespace Session {

inline constexpr const char* kSection = "Session";

struct State {
    std::optional<bool> ByMoments;
    std::optional<std::string> Distribution;
    std::array<std::optional<std::string>, 4> Params;
    std::array<std::optional<bool>, 3> Ticked; // LSL, Target, USL
    std::array<std::optional<std::string>, 3> Limits;
    std::array<std::optional<std::string>, 4> Moments; // mean, sd, skewness, kurtosis
    std::array<std::optional<bool>, 2> Locks;          // skewness, kurtosis
};

// Stores the given entries in one transaction; raises when the store refuses.
void Save(const State& state);
// What the store holds; never raises.
State Load();

} // namespace Session
