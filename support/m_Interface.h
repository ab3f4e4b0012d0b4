// Central error handling and the small numeric helpers every module uses.
#pragma once

#include <cstdint>
#include <string>

namespace m_Interface {

// Object-error numbers with their own message boxes.
inline constexpr int32_t kErrExceptionBox = static_cast<int32_t>(0x80041065u);
inline constexpr int32_t kErrUserInputBox = static_cast<int32_t>(0x80041066u);

// Creates the error-reporting component for the program (title, folder, version).
void SetupErrorHandling();

// Hands the current error (support::Err()) with the caller's label to the
// reporting component, routes it by number, and clears it.
void HandleErrors(const std::string& label) noexcept;

// "0", "0.0", ... "0.000000" for 0..6 places; empty for anything else.
std::string FormatDec(int16_t places);
double Max(double a, double b);
double Min(double a, double b);
double Pi();

} // namespace m_Interface
