// The twelve display options, held program-wide, loaded at start-up from the
// settings section "Application Settings" and written by the options dialog.
#pragma once

#include <cstdint>
#include <string>

namespace DisplayOptions {

inline constexpr const char* kSection = "Application Settings";

extern uint32_t AppBackColor;    // 0x00BBGGRR
extern uint32_t AppInSpecColor;
extern uint32_t AppOutSpecColor;
extern int16_t AppXTicks;
extern int16_t AppYTicks;
extern int16_t AppDecPlaces;
extern int32_t AppXRange;        // 0 standard deviations, 1 fixed endpoints
extern double AppNumStDev;
extern double AppXMin;
extern double AppXMax;
extern bool AppDisplay;          // true = scientific
extern bool AppRangeMode;        // true = fixed endpoints

// Puts the start values back (as the window does before it reads the store).
void SetDefaults();
// Reads every key in the fixed order; a missing key keeps its value; AppDisplay
// and AppRangeMode change only for a stored 0 or 1.
void Load();

// The display pattern: FormatDec(places), plus "E+00" in scientific display.
std::string Pattern();

} // namespace DisplayOptions
