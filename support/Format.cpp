#include "support/Format.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string>

namespace support {

namespace {

char& Separator() {
    static char separator = '.';
    return separator;
}

struct Pattern {
    int intDigits = 1; // '0' placeholders before the point
    int decimals = 0;  // '0' placeholders after the point
    bool scientific = false;
    bool expAlwaysSigned = true; // "E+00" shows the sign always, "E-00" only when negative
    int expDigits = 2;
    char expLetter = 'E';
};

Pattern Parse(std::string_view text) {
    Pattern p;
    const size_t e = text.find_first_of("Ee");
    std::string_view mantissa = text.substr(0, e);
    const size_t point = mantissa.find('.');
    std::string_view whole = mantissa.substr(0, point);
    p.intDigits = 0;
    for (char c : whole)
        if (c == '0') ++p.intDigits;
    if (point != std::string_view::npos)
        for (char c : mantissa.substr(point + 1))
            if (c == '0' || c == '#') ++p.decimals;
    if (e != std::string_view::npos) {
        p.scientific = true;
        p.expLetter = text[e];
        std::string_view rest = text.substr(e + 1);
        p.expAlwaysSigned = !rest.empty() && rest.front() == '+';
        p.expDigits = 0;
        for (char c : rest)
            if (c == '0') ++p.expDigits;
        if (p.expDigits == 0) p.expDigits = 1;
    }
    return p;
}

std::string ToChars(double value, std::chars_format fmt, int precision) {
    char buffer[400];
    auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, value, fmt, precision);
    if (ec != std::errc()) return {};
    return std::string(buffer, end);
}

bool AllZeroDigits(const std::string& text) {
    for (char c : text)
        if (std::isdigit(static_cast<unsigned char>(c)) && c != '0') return false;
    return true;
}

std::string FormatFixed(double value, const Pattern& p) {
    std::string s = ToChars(value, std::chars_format::fixed, p.decimals);
    if (s.empty()) return s;
    if (s.front() == '-' && AllZeroDigits(s)) s.erase(0, 1); // no "-0.00"
    const bool negative = s.front() == '-';
    std::string digits = negative ? s.substr(1) : s;
    const size_t point = digits.find('.');
    std::string whole = digits.substr(0, point);
    const std::string fraction = point == std::string::npos ? "" : digits.substr(point);
    if (whole == "0" && p.intDigits == 0) whole.clear();
    while (static_cast<int>(whole.size()) < p.intDigits)
        whole.insert(0, "0");
    return (negative ? "-" : "") + whole + fraction;
}

std::string FormatScientific(double value, const Pattern& p) {
    std::string s = ToChars(value, std::chars_format::scientific, p.decimals);
    if (s.empty()) return s;
    const size_t e = s.find('e');
    std::string mantissa = s.substr(0, e);
    int exponent = std::atoi(s.c_str() + e + 1);
    if (mantissa.front() == '-' && AllZeroDigits(mantissa)) mantissa.erase(0, 1);
    if (value == 0) exponent = 0;
    std::string digits = std::to_string(std::abs(exponent));
    while (static_cast<int>(digits.size()) < p.expDigits)
        digits.insert(0, "0");
    std::string sign = exponent < 0 ? "-" : (p.expAlwaysSigned ? "+" : "");
    return mantissa + p.expLetter + sign + digits;
}

// The general form: up to 15 significant digits, exponent form below 1e-4 or
// from 1e15 on, exponent with a sign and at least two digits ("1E-05").
std::string FormatGeneral(double value) {
    if (value == 0) return "0";
    std::string s = ToChars(value, std::chars_format::general, 15);
    const size_t e = s.find('e');
    if (e == std::string::npos) return s;
    std::string mantissa = s.substr(0, e);
    const int exponent = std::atoi(s.c_str() + e + 1);
    std::string digits = std::to_string(std::abs(exponent));
    if (digits.size() < 2) digits.insert(0, "0");
    return mantissa + "E" + (exponent < 0 ? "-" : "+") + digits;
}

} // namespace

char DecimalSeparator() {
    return Separator();
}

void SetDecimalSeparator(char separator) {
    Separator() = separator;
}

char LocaleDecimalSeparator() {
    const char* point = std::localeconv()->decimal_point;
    return point && std::strlen(point) == 1 ? point[0] : '.';
}

std::string Format(double value, std::string_view pattern, char separator) {
    if (!std::isfinite(value)) return "Error";
    std::string text;
    if (pattern.empty()) {
        text = FormatGeneral(value);
    } else {
        const Pattern p = Parse(pattern);
        text = p.scientific ? FormatScientific(value, p) : FormatFixed(value, p);
    }
    if (separator != '.') std::replace(text.begin(), text.end(), '.', separator);
    return text;
}

namespace {

constexpr std::size_t kLongestTickLabel = 9;
constexpr int kMostDecimals = 16; // 17 significant digits tell any two doubles apart

bool NeighboursApart(std::span<const double> values, const std::vector<std::string>& labels) {
    for (std::size_t i = 1; i < labels.size(); ++i)
        if (std::isfinite(values[i]) && std::isfinite(values[i - 1]) &&
            values[i] != values[i - 1] && labels[i] == labels[i - 1])
            return false;
    return true;
}

std::vector<std::string> LabelsWith(std::span<const double> values, const std::string& pattern) {
    std::vector<std::string> labels;
    labels.reserve(values.size());
    for (double v : values)
        labels.push_back(Format(v, pattern));
    return labels;
}

} // namespace

std::vector<std::string> TickLabels(std::span<const double> input) {
    std::vector<double> values(input.begin(), input.end());
    double spacing = 0;
    for (std::size_t i = 1; i < values.size(); ++i)
        if (const double gap = std::fabs(values[i] - values[i - 1]); std::isfinite(gap))
            spacing = std::max(spacing, gap);
    for (double& v : values)
        if (std::fabs(v) < 1e-6 * spacing) v = 0;

    std::vector<std::string> labels;
    for (int decimals = 2;; ++decimals) {
        labels = LabelsWith(values, "0." + std::string(decimals, '0'));
        const bool tooLong = std::any_of(labels.begin(), labels.end(), [](const std::string& l) {
            return l.size() > kLongestTickLabel;
        });
        if (tooLong) break;
        if (NeighboursApart(values, labels)) return labels;
    }
    for (int decimals = 2; decimals <= kMostDecimals; ++decimals) {
        labels = LabelsWith(values, "0." + std::string(decimals, '0') + "E+00");
        if (NeighboursApart(values, labels)) break;
    }
    return labels;
}

std::optional<double> ParseNumber(std::string_view input, char separator) {
    // The user's separator stands for the point; no other character does. (A
    // copy only then: a file of millions of numbers comes through here.)
    std::string buffer;
    if (separator != '.') {
        buffer = input;
        std::replace(buffer.begin(), buffer.end(), separator, '.');
        input = buffer;
    }
    const std::string_view text = input;
    size_t i = 0, n = text.size();
    // The C locale's classes, without asking the locale for each character.
    auto space = [&](size_t k) {
        const char c = text[k];
        return c == ' ' || (c >= '\t' && c <= '\r');
    };
    auto digit = [&](size_t k) { return k < n && text[k] >= '0' && text[k] <= '9'; };
    while (i < n && space(i))
        ++i;
    while (n > i && space(n - 1))
        --n;
    if (i == n) return std::nullopt;

    bool negative = false;
    if (text[i] == '+' || text[i] == '-') negative = text[i++] == '-';
    const size_t numberStart = i;
    // The decimal exponent of the first non-zero digit plus the written exponent
    // tell a number beyond the double range that is too large from one too small.
    size_t mantissaDigits = 0;
    long long lead = 0;
    bool significant = false;
    while (digit(i)) {
        if (significant) ++lead;
        significant = significant || text[i] != '0';
        ++i, ++mantissaDigits;
    }
    if (i < n && text[i] == '.') {
        ++i;
        while (digit(i)) {
            if (!significant) --lead;
            significant = significant || text[i] != '0';
            ++i, ++mantissaDigits;
        }
    }
    if (mantissaDigits == 0) return std::nullopt;
    long long exponent = 0;
    if (i < n && (text[i] == 'e' || text[i] == 'E')) {
        ++i;
        bool negativeExponent = false;
        if (i < n && (text[i] == '+' || text[i] == '-')) negativeExponent = text[i++] == '-';
        if (!digit(i)) return std::nullopt;
        for (; digit(i); ++i)
            exponent = std::min(exponent * 10 + (text[i] - '0'), 1000000000000LL);
        if (negativeExponent) exponent = -exponent;
    }
    if (i != n) return std::nullopt;

    double value = 0;
    const char* first = text.data() + numberStart;
    const char* last = text.data() + n;
    auto [end, ec] = std::from_chars(first, last, value, std::chars_format::general);
    if (end != last) return std::nullopt;
    if (ec == std::errc::result_out_of_range) {
        // Too small to represent is zero; too large is not a number.
        if (lead + exponent >= 0) return std::nullopt;
        value = 0;
    } else if (ec != std::errc() || !std::isfinite(value)) {
        return std::nullopt;
    }
    return negative ? -value : value;
}

double Val(std::string_view text) {
    return ParseNumber(text).value_or(0.0);
}

std::size_t Utf8Length(std::string_view text, std::size_t at) {
    auto byte = [&](std::size_t k) { return static_cast<unsigned char>(text[k]); };
    const unsigned char c = byte(at);
    if (c < 0x80) return 1;
    // The second byte's range rules out overlong forms, surrogates and values
    // beyond U+10FFFF (RFC 3629's table).
    std::size_t length = 0;
    unsigned char low = 0x80, high = 0xBF;
    if (c >= 0xC2 && c <= 0xDF)
        length = 2;
    else if (c >= 0xE0 && c <= 0xEF)
        length = 3, low = c == 0xE0 ? 0xA0 : 0x80, high = c == 0xED ? 0x9F : 0xBF;
    else if (c >= 0xF0 && c <= 0xF4)
        length = 4, low = c == 0xF0 ? 0x90 : 0x80, high = c == 0xF4 ? 0x8F : 0xBF;
    else
        return 0;
    if (at + length > text.size() || byte(at + 1) < low || byte(at + 1) > high) return 0;
    for (std::size_t k = at + 2; k < at + length; ++k)
        if ((byte(k) & 0xC0) != 0x80) return 0;
    return length;
}

std::string Excerpt(std::string_view text, std::size_t characters) {
    std::size_t at = 0;
    for (std::size_t count = 0; at < text.size(); ++count) {
        if (count == characters) return std::string(text.substr(0, at)) + "\u2026";
        at += std::max<std::size_t>(1, Utf8Length(text, at));
    }
    return std::string(text);
}

} // namespace support
