#include "settings/Session.h"

#include "settings/CAppSettings.h"
#include "support/Format.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace Session {

namespace {

constexpr const char* kParams[] = {"Param1", "Param2", "Param3", "Param4"};
constexpr const char* kLimits[] = {"LSL", "Target", "USL"};
constexpr const char* kTicked[] = {"LSLTicked", "TargetTicked", "USLTicked"};
constexpr const char* kMoments[] = {"Mean", "StDev", "Skewness", "Kurtosis"};
constexpr const char* kLocks[] = {"LockSkewness", "LockKurtosis"};

std::optional<std::string> Text(const char* key) {
    const CAppSettings::Value v = AppSettings().GetSetting(kSection, key, std::string());
    const auto* text = std::get_if<std::string>(&v);
    if (!text || text->empty()) return std::nullopt;
    return *text;
}

// A number's text as the user typed it (decimal separator of this locale).
std::optional<std::string> Number(const char* key) {
    auto text = Text(key);
    if (text && !support::ParseNumber(*text)) text.reset();
    return text;
}

std::optional<bool> Flag(const char* key) {
    const auto text = Text(key);
    if (text == "0") return false;
    if (text == "1") return true;
    return std::nullopt;
}

} // namespace

void Save(const State& state) {
    std::vector<std::pair<std::string, CAppSettings::Value>> entries;
    auto text = [&](const char* key, const std::optional<std::string>& v) {
        if (v) entries.emplace_back(key, *v);
    };
    auto flag = [&](const char* key, const std::optional<bool>& v) {
        if (v) entries.emplace_back(key, std::string(*v ? "1" : "0"));
    };
    flag("ByMoments", state.ByMoments);
    text("Distribution", state.Distribution);
    for (int i = 0; i < 4; ++i) {
        text(kParams[i], state.Params[i]);
        text(kMoments[i], state.Moments[i]);
    }
    for (int i = 0; i < 3; ++i) {
        flag(kTicked[i], state.Ticked[i]);
        text(kLimits[i], state.Limits[i]);
    }
    for (int i = 0; i < 2; ++i)
        flag(kLocks[i], state.Locks[i]);
    AppSettings().SaveSettings(kSection, entries);
}

State Load() {
    State s;
    try {
        s.ByMoments = Flag("ByMoments");
        s.Distribution = Text("Distribution");
        for (int i = 0; i < 4; ++i) {
            s.Params[i] = Number(kParams[i]);
            s.Moments[i] = Number(kMoments[i]);
        }
        for (int i = 0; i < 3; ++i) {
            s.Ticked[i] = Flag(kTicked[i]);
            s.Limits[i] = Number(kLimits[i]);
        }
        for (int i = 0; i < 2; ++i)
            s.Locks[i] = Flag(kLocks[i]);
    } catch (...) {
        return {}; // a store that cannot be read: today's start-up state
    }
    return s;
}

} // namespace Session
