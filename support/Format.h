// Number formatting by pattern, as the old runtime's Format did, and the one
// rule for what counts as a number in an input field.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace support {

// pattern "0.000": fixed, rounded to the places shown; "0.00E+00": scientific,
// mantissa with the places shown, signed exponent of at least two digits;
// "" : general form (up to 15 significant digits, exponent form for very large
// or small magnitudes). Never yields "-0..." for a value that rounds to zero.
std::string Format(double value, std::string_view pattern);

// Optional surrounding spaces, optional sign, digits with an optional decimal
// point, an optional exponent; empty text, "nan", "inf", hexadecimal and values
// beyond the double range are not numbers.
std::optional<double> ParseNumber(std::string_view text);
inline bool IsNumeric(std::string_view text) {
    return ParseNumber(text).has_value();
}

// The value of a field as the old runtime's Val would give it, for fields that
// are read without a check: the number, or 0 when the text is not one.
double Val(std::string_view text);

} // namespace support
