#include "settings/DisplayOptions.h"

#include "settings/CAppSettings.h"
#include "support/ErrorTrap.h"
#include "support/Format.h"
#include "support/m_Interface.h"

#include <cmath>

namespace DisplayOptions {

uint32_t AppBackColor = 0xFFFFFF;
uint32_t AppInSpecColor = 0xFF0000;
uint32_t AppOutSpecColor = 0x0000FF;
int16_t AppXTicks = 5;
int16_t AppYTicks = 5;
int16_t AppDecPlaces = 6;
int32_t AppXRange = 0;
double AppNumStDev = 2.6;
double AppXMin = 0;
double AppXMax = 0;
bool AppDisplay = true;
bool AppRangeMode = false;
int32_t AppCapMethod = 0;
double AppConfLevel = 0.95;
bool AppChartTitles = false;

namespace {

constexpr const char* kModule = "Pondera.DisplayOptions";

constexpr uint32_t kLargestColor = 0xFFFFFF;

std::optional<double> NumberOf(const CAppSettings::Value& value) {
    if (const auto* text = std::get_if<std::string>(&value)) return support::ParseNumber(*text);
    if (const auto* real = std::get_if<double>(&value))
        return std::isfinite(*real) ? std::optional<double>(*real) : std::nullopt;
    if (const auto* whole = std::get_if<int64_t>(&value)) return static_cast<double>(*whole);
    return std::get<bool>(value) ? 1.0 : 0.0;
}

// The stored number for key, with the current value as the default.
std::optional<double> Read(const char* key, double current) {
    return NumberOf(AppSettings().GetSetting(kSection, key, CAppSettings::Value(current)));
}

// A whole number in [low, high].
bool WholeIn(const std::optional<double>& v, double low, double high) {
    return v && std::floor(*v) == *v && *v >= low && *v <= high;
}

// Integers in [low, high] replace value; anything else leaves it.
template <class Int> void ReadWhole(const char* key, Int& value, double low, double high) {
    const auto v = Read(key, static_cast<double>(value));
    if (WholeIn(v, low, high)) value = static_cast<Int>(*v);
}

// The 0/1 rule: compared with 0, then with 1; anything else leaves the flag.
void ReadFlag(const char* key, bool& flag) {
    const auto v = Read(key, flag ? 1.0 : 0.0);
    if (!v) return;
    if (*v == 0)
        flag = false;
    else if (*v == 1)
        flag = true;
}

} // namespace

void SetDefaults() {
    AppBackColor = 0xFFFFFF;
    AppInSpecColor = 0xFF0000;
    AppOutSpecColor = 0x0000FF;
    AppXTicks = 5;
    AppYTicks = 5;
    AppNumStDev = 2.6;
    AppDecPlaces = 6;
    AppDisplay = true;
    AppRangeMode = false;
    AppXRange = 0;
    AppXMin = 0;
    AppXMax = 0;
    AppCapMethod = 0;
    AppConfLevel = 0.95;
    AppChartTitles = false;
}

void Load() {
    support::Trap({kModule, __func__}, [&] {
        ReadWhole(kAppBackColor, AppBackColor, 0, kLargestColor);
        ReadWhole(kAppInSpecColor, AppInSpecColor, 0, kLargestColor);
        ReadWhole(kAppOutSpecColor, AppOutSpecColor, 0, kLargestColor);
        ReadWhole(kAppXTicks, AppXTicks, 1, kMaxTicks);
        ReadWhole(kAppYTicks, AppYTicks, 1, kMaxTicks);
        ReadWhole(kAppDecPlaces, AppDecPlaces, 0, kMaxDecPlaces);
        ReadWhole(kAppXRange, AppXRange, 0, 1);
        if (const auto v = Read(kAppNumStDev, AppNumStDev); v && *v > 0) AppNumStDev = *v;
        if (const auto v = Read(kAppXMin, AppXMin)) AppXMin = *v;
        if (const auto v = Read(kAppXMax, AppXMax)) AppXMax = *v;
        ReadFlag(kAppDisplay, AppDisplay);
        ReadFlag(kAppRangeMode, AppRangeMode);
        ReadWhole(kAppCapMethod, AppCapMethod, 0, 1);
        if (const auto v = Read(kAppConfLevel, AppConfLevel); v && *v > 0.5 && *v < 1)
            AppConfLevel = *v;
        ReadFlag(kAppChartTitles, AppChartTitles);
    });
}

void LoadDecPlaces() {
    support::TrapIgnore([&] {
        const auto stored = AppSettings().GetSetting(kSection, kAppDecPlaces, std::string());
        const auto v = NumberOf(stored);
        if (WholeIn(v, 0, kMaxDecPlaces)) AppDecPlaces = static_cast<int16_t>(*v);
    });
}

std::string Pattern() {
    return support::TrapValue({kModule, __func__}, std::string(), [&] {
        return m_Interface::FormatDec(AppDecPlaces) + (AppDisplay ? "E+00" : "");
    });
}

std::optional<double> NumStDevFrom(std::string_view text) {
    const auto v = support::ParseNumber(text);
    return v && *v > 0 ? v : std::nullopt;
}

std::optional<double> RangeEndFrom(std::string_view text) {
    return support::ParseNumber(text);
}

std::optional<int16_t> TicksFrom(std::string_view text) {
    const auto v = support::ParseNumber(text);
    if (!WholeIn(v, 1, kMaxTicks)) return std::nullopt;
    return static_cast<int16_t>(*v);
}

} // namespace DisplayOptions
