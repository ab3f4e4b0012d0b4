// Reading measurements and taking their sample moments.
#include "johnson/m_SampleData.h"

#include "johnson/JohnsonDist.h"
#include "support/ErrorTrap.h"
#include "support/Format.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <sstream>

namespace m_SampleData {

constexpr const char* kModule = "Pondera.m_SampleData";

namespace {

constexpr std::string_view kSeparators = " \t;\r\v\f";
constexpr std::size_t kQuoteLimit = 80; // a pasted megabyte must not come back whole

std::optional<double> Number(std::string_view token, char decimal) {
    if (decimal == '.' || token.find(decimal) == std::string_view::npos)
        return support::ParseNumber(token);
    std::string text(token);
    std::replace(text.begin(), text.end(), decimal, '.');
    return support::ParseNumber(text);
}

std::string NotANumber(int line, std::string_view token) {
    std::string shown(token.substr(0, kQuoteLimit));
    if (token.size() > kQuoteLimit) shown += "\xE2\x80\xA6"; // an ellipsis
    return "line " + std::to_string(line) + ": \"" + shown + "\" is not a number";
}

} // namespace

Parsed Parse(std::string_view text, char decimal) {
    Parsed out;
    support::Trap({kModule, __func__}, [&] {
        if (text.substr(0, 3) == "\xEF\xBB\xBF") text.remove_prefix(3); // a byte-order mark
        bool headerAllowed = true;
        int line = 0;
        for (std::size_t pos = 0; pos < text.size();) {
            std::size_t end = text.find('\n', pos);
            if (end == std::string_view::npos) end = text.size();
            const std::string_view row = text.substr(pos, end - pos);
            pos = end + 1;
            ++line;
            bool first = true;
            for (std::size_t t = row.find_first_not_of(kSeparators); t != std::string_view::npos;
                 t = row.find_first_not_of(kSeparators, t)) {
                const std::size_t stop = std::min(row.find_first_of(kSeparators, t), row.size());
                const std::string_view token = row.substr(t, stop - t);
                t = stop;
                if (const std::optional<double> v = Number(token, decimal)) {
                    out.Values.push_back(*v);
                } else if (first && headerAllowed) {
                    break; // column titles
                } else {
                    out = Parsed{{}, NotANumber(line, token), line};
                    return;
                }
                first = false;
            }
            if (row.find_first_not_of(kSeparators) != std::string_view::npos) headerAllowed = false;
        }
    });
    return out;
}

Parsed ReadFile(const std::string& path, char decimal) {
    Parsed out;
    support::Trap({kModule, __func__}, [&] {
        std::string text;
        if (path == "-") {
            text.assign(std::istreambuf_iterator<char>(std::cin), {});
        } else {
            std::error_code ec;
            std::ifstream in(path, std::ios::binary);
            if (!in || std::filesystem::is_directory(path, ec)) {
                out.Problem = "cannot read \"" + path + "\"";
                return;
            }
            std::ostringstream buffer;
            buffer << in.rdbuf();
            text = std::move(buffer).str();
        }
        out = Parse(text, decimal);
    });
    return out;
}

std::string Describe(const std::vector<double>& values, Summary& out) {
    std::string problem = "The moments of these values cannot be computed.";
    support::Trap({kModule, __func__}, [&] {
        const std::size_t n = values.size();
        if (n < kMinValues) {
            problem = "At least " + std::to_string(kMinValues) + " values are needed; found " +
                      std::to_string(n) + ".";
            return;
        }
        const auto [low, high] = std::minmax_element(values.begin(), values.end());
        if (*low == *high) {
            problem =
                "All " + std::to_string(n) + " values are equal; a curve needs values that vary.";
            return;
        }
        Summary s;
        s.N = n;
        bool fault = true;
        JohnsonDist::MOMENT(values, s.Mean, s.StDev, s.Skewness, s.Kurtosis, fault);
        if (fault) return;
        out = s;
        problem.clear();
    });
    return problem;
}

} // namespace m_SampleData
