// A small JSON reader for the command-line tests: strict enough to fail on
// malformed output, and flat: every value is kept under its path, so
// {"errors":[{"label":"x"}]} holds the string "x" at "errors.0.label" and the
// size 1 at "errors".
#pragma once

#include <cstdlib>
#include <cstring>
#include <map>
#include <regex>
#include <stdexcept>
#include <string>
#include <vector>

namespace json_reader {

struct Value {
    std::map<std::string, double> Num;      // numbers
    std::map<std::string, std::string> Str; // strings
    std::map<std::string, size_t> Size;     // arrays and objects: how many members
    std::vector<std::string> Nulls;         // where a null stood (a NaN or infinity prints so)

    bool Has(const std::string& path) const {
        return Num.count(path) || Str.count(path) || Size.count(path);
    }
    double N(const std::string& path) const { return Num.at(path); }
    const std::string& S(const std::string& path) const { return Str.at(path); }
    std::vector<double> Numbers(const std::string& path) const {
        std::vector<double> out;
        for (size_t i = 0; i < Size.at(path); ++i)
            out.push_back(N(path + "." + std::to_string(i)));
        return out;
    }
};

class Parser {
  public:
    explicit Parser(const std::string& text) : s_(text) {}
    Value ParseAll() {
        ParseValue("");
        if (Peek() != '\0') Fail("trailing text");
        return v_;
    }

  private:
    [[noreturn]] void Fail(const std::string& what) const {
        throw std::runtime_error(what + " at " + std::to_string(pos_));
    }
    char Peek() { // the next non-blank character, '\0' at the end
        while (pos_ < s_.size() && std::strchr(" \t\r\n", s_[pos_]))
            ++pos_;
        return pos_ < s_.size() ? s_[pos_] : '\0';
    }
    char Next() {
        if (pos_ >= s_.size()) Fail("unterminated string");
        return s_[pos_++];
    }
    void Expect(char c) {
        if (Peek() != c) Fail(std::string("expected ") + c);
        ++pos_;
    }
    std::string ParseString() {
        Expect('"');
        std::string out;
        for (char c; (c = Next()) != '"'; out += c) {
            if (static_cast<unsigned char>(c) < 0x20) Fail("raw control character");
            if (c != '\\') continue;
            const char* escapes = "n\nt\tr\rb\bf\f\"\"\\\\//";
            const char e = Next();
            if (e == 'u') {
                c = static_cast<char>(std::stoi(s_.substr(pos_, 4), nullptr, 16));
                pos_ += 4;
            } else if (const char* at = std::strchr(escapes, e);
                       e && at && (at - escapes) % 2 == 0) {
                c = at[1];
            } else {
                Fail("bad escape");
            }
        }
        return out;
    }
    void ParseValue(const std::string& path) {
        const std::string prefix = path.empty() ? "" : path + ".";
        const char c = Peek();
        if (c == '{' || c == '[') {
            const char close = c == '{' ? '}' : ']';
            size_t n = 0;
            ++pos_;
            if (Peek() != close) do {
                    std::string key = std::to_string(n++);
                    if (c == '{') {
                        key = ParseString();
                        Expect(':');
                        if (v_.Has(prefix + key)) Fail("duplicate key " + key);
                    }
                    ParseValue(prefix + key);
                } while (Peek() == ',' && ++pos_);
            Expect(close);
            v_.Size[path] = n;
            return;
        }
        if (c == '"') {
            v_.Str[path] = ParseString();
            return;
        }
        if (s_.compare(pos_, 4, "null") == 0) { // the tool prints no true or false
            pos_ += 4;
            v_.Nulls.push_back(path);
            return;
        }
        // Numbers: JSON grammar only (no nan, inf, hex or leading +).
        static const std::regex number(R"(-?(0|[1-9]\d*)(\.\d+)?([eE][+-]?\d+)?)");
        std::smatch m;
        if (!std::regex_search(s_.begin() + pos_, s_.end(), m, number,
                               std::regex_constants::match_continuous))
            Fail("bad value");
        v_.Num[path] = std::strtod(m.str().c_str(), nullptr);
        pos_ += m.length();
    }

    const std::string& s_;
    size_t pos_ = 0;
    Value v_;
};

inline Value Parse(const std::string& text) {
    return Parser(text).ParseAll();
}

} // namespace json_reader
