// The display options (the twelve of the chart and its numbers, then the
// capability method and level), held program-wide, loaded at start-up from the
// settings section "Application Settings" and written by the options dialog.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace DisplayOptions {

inline constexpr const char* kSection = "Application Settings";

// The program's settings object is named with these at start-up.
inline constexpr const char* kCompanyName = "Qarvanto Labs, LLC\\Qarv Tools 3";
inline constexpr const char* kAppName = "Pondera";

// Value names in the store.
inline constexpr const char* kAppBackColor = "AppBackColor";
inline constexpr const char* kAppInSpecColor = "AppInSpecColor";
inline constexpr const char* kAppOutSpecColor = "AppOutSpecColor";
inline constexpr const char* kAppXTicks = "AppXTicks";
inline constexpr const char* kAppYTicks = "AppYTicks";
inline constexpr const char* kAppDecPlaces = "AppDecPlaces";
inline constexpr const char* kAppXRange = "AppXRange";
inline constexpr const char* kAppNumStDev = "AppNumStDev";
inline constexpr const char* kAppXMin = "AppXMin";
inline constexpr const char* kAppXMax = "AppXMax";
inline constexpr const char* kAppDisplay = "AppDisplay";
inline constexpr const char* kAppRangeMode = "AppRangeMode";
inline constexpr const char* kAppCapMethod = "AppCapMethod";
inline constexpr const char* kAppConfLevel = "AppConfLevel";
inline constexpr const char* kAppChartTitles = "AppChartTitles";

extern uint32_t AppBackColor; // 0x00BBGGRR
extern uint32_t AppInSpecColor;
extern uint32_t AppOutSpecColor;
extern int16_t AppXTicks;
extern int16_t AppYTicks;
extern int16_t AppDecPlaces;
extern int32_t AppXRange; // 0 standard deviations, 1 fixed endpoints
extern double AppNumStDev;
extern double AppXMin;
extern double AppXMax;
extern bool AppDisplay;   // true = scientific
extern bool AppRangeMode; // true = fixed endpoints
// The capability figures the window shows: 0 percentile (ISO 22514-2), 1 Z-score.
extern int32_t AppCapMethod;
// Confidence level of the capability intervals, above 0.5 and below 1.
extern double AppConfLevel;
// Exported charts (copied, or the type first offered on saving) carry their
// title, axis titles and figures.
extern bool AppChartTitles;

// Puts the start values back (as the window does before it reads the store).
void SetDefaults();
// Reads every key in the fixed order; a missing key keeps its value; AppDisplay
// and AppRangeMode change only for a stored 0 or 1. A stored value that is not a
// number, or one the option cannot hold (a colour beyond 24 bits, decimal places
// outside 0..6, a tick count below 1, a range mode or method other than 0 or 1, a
// number of standard deviations not above 0, a level outside (0.5, 1)), keeps the
// value too. Errors are reported
// with the label "Pondera.DisplayOptions.Load"; the options read so far stay.
void Load();
// Program start: reads AppDecPlaces alone (empty default), before the error path
// exists, so every failure is ignored and a missing value changes nothing.
void LoadDecPlaces();

// The display pattern: FormatDec(places), plus "E+00" in scientific display.
std::string Pattern();

// The checks of the options dialog's fields, with its own wording.
// Kept: the missing "be" and the "X" in the y-tick message, as the program
// always had them.
inline constexpr const char* kMsgNumStDev = "Number of standard deviations must greater than zero.";
inline constexpr const char* kMsgXMin = "Display range minimum must be a number.";
inline constexpr const char* kMsgXMax = "Display range maximum must be a number.";
inline constexpr const char* kMsgTicks =
    "Number of X Ticks must be an integer greater or equal to one.";
inline constexpr const char* kMsgRangeOrder =
    "Display range minimum must be less than or equal to the display range maximum.\n"
    "Please change the either the minimum or maximum value.";

// Largest tick count the 16-bit option holds.
inline constexpr int kMaxTicks = 32767;
// Decimal places run from 0 to this.
inline constexpr int kMaxDecPlaces = 6;

// The value a field's text stands for, or nothing when it fails its check.
std::optional<double> NumStDevFrom(std::string_view text); // a number > 0
std::optional<double> RangeEndFrom(std::string_view text); // any number
std::optional<int16_t> TicksFrom(std::string_view text);   // an integer 1..kMaxTicks

} // namespace DisplayOptions
