// Number formatting by pattern, as the old runtime's Format did, and the one
// rule for what counts as a number in an input field.
//
// Both speak the user's decimal separator: the window sets it from the numeric
// locale at start, so a German user reads and types 1,5. Everything else
// (settings, the command-line tool's JSON) keeps the point, the default.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace support {

// The decimal separator of numbers shown to and typed by the user; '.' until set.
char DecimalSeparator();
void SetDecimalSeparator(char separator);
// The numeric locale's separator (as setlocale left it); '.' when the locale's
// is not a single character.
char LocaleDecimalSeparator();

// pattern "0.000": fixed, rounded to the places shown; "0.00E+00": scientific,
// mantissa with the places shown, signed exponent of at least two digits;
// "" : general form (up to 15 significant digits, exponent form for very large
// or small magnitudes). Never yields "-0..." for a value that rounds to zero.
// The decimal point is written as `separator`.
std::string Format(double value, std::string_view pattern, char separator);
inline std::string Format(double value, std::string_view pattern) {
    return Format(value, pattern, DecimalSeparator());
}

// Labels for a run of axis ticks, in order: two decimals where two tell every
// pair of neighbouring ticks apart, else the fewest more that do; the "0.00E+00"
// form, its decimals chosen the same way, once a label would be longer than
// nine characters. A value that is a rounding residue of zero next to its
// neighbours (below a millionth of their spacing) is labelled as zero.
std::vector<std::string> TickLabels(std::span<const double> values);

// Optional surrounding spaces, optional sign, digits with an optional decimal
// point ('.' or `separator`), an optional exponent; empty text, "nan", "inf",
// hexadecimal, thousands separators and values beyond the double range are not
// numbers.
std::optional<double> ParseNumber(std::string_view text, char separator);
inline std::optional<double> ParseNumber(std::string_view text) {
    return ParseNumber(text, DecimalSeparator());
}
inline bool IsNumeric(std::string_view text) {
    return ParseNumber(text).has_value();
}

// The value of a field as the old runtime's Val would give it, for fields that
// are read without a check: the number, or 0 when the text is not one.
double Val(std::string_view text);

// The length of the well-formed UTF-8 character at text[at], or 0 when the byte
// there starts none (a stray, overlong or surrogate sequence).
std::size_t Utf8Length(std::string_view text, std::size_t at);
// At most `characters` characters of a text quoted back to the user, then an
// ellipsis; a byte that starts no character counts as one.
std::string Excerpt(std::string_view text, std::size_t characters = 80);

} // namespace support
