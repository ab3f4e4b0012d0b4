// A small JSON reader for the command-line tests: enough to check what
// pondera-cli prints, and strict enough to fail on malformed output.
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
    enum class Kind { Null, Bool, Number, String, Array, Object } Type = Kind::Null;
    double Num = 0; // also 1 / 0 for true / false
    std::string Str;
    std::vector<Value> Items;
    std::map<std::string, Value> Members;

    bool Has(const std::string& key) const { return Members.count(key) > 0; }
    const Value& operator[](const std::string& key) const { return Members.at(key); }
    const Value& operator[](size_t i) const { return Items.at(i); }
    std::vector<double> Numbers() const {
        std::vector<double> out;
        for (const auto& v : Items) out.push_back(v.Num);
        return out;
    }
};

class Parser {
public:
    explicit Parser(const std::string& text) : s_(text) {}
    Value ParseAll() {
        Value v = ParseValue();
        if (Peek() != '\0') Fail("trailing text");
        return v;
    }

private:
    [[noreturn]] void Fail(const std::string& what) const {
        throw std::runtime_error(what + " at " + std::to_string(pos_));
    }
    char Peek() { // the next non-blank character, '\0' at the end
        while (pos_ < s_.size() && std::strchr(" \t\r\n", s_[pos_])) ++pos_;
        return pos_ < s_.size() ? s_[pos_] : '\0';
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
            } else if (const char* at = std::strchr(escapes, e); e && at && (at - escapes) % 2 == 0) {
                c = at[1];
            } else {
                Fail("bad escape");
            }
        }
        return out;
    }
    char Next() {
        if (pos_ >= s_.size()) Fail("unterminated string");
        return s_[pos_++];
    }
    Value ParseValue() {
        Value v;
        const char c = Peek();
        if (c == '{' || c == '[') {
            const bool object = c == '{';
            v.Type = object ? Value::Kind::Object : Value::Kind::Array;
            ++pos_;
            if (Peek() == (object ? '}' : ']')) return ++pos_, v;
            do {
                if (!object) {
                    v.Items.push_back(ParseValue());
                    continue;
                }
                const std::string key = ParseString();
                Expect(':');
                if (!v.Members.emplace(key, ParseValue()).second) Fail("duplicate key " + key);
            } while (Peek() == ',' && ++pos_);
            Expect(object ? '}' : ']');
            return v;
        }
        if (c == '"') {
            v.Type = Value::Kind::String;
            v.Str = ParseString();
            return v;
        }
        for (const char* word : {"null", "true", "false"})
            if (s_.compare(pos_, std::strlen(word), word) == 0) {
                pos_ += std::strlen(word);
                v.Type = *word == 'n' ? Value::Kind::Null : Value::Kind::Bool;
                v.Num = *word == 't';
                return v;
            }
        // Numbers: JSON grammar only (no nan, inf, hex or leading +).
        static const std::regex number(R"(-?(0|[1-9]\d*)(\.\d+)?([eE][+-]?\d+)?)");
        std::smatch m;
        if (!std::regex_search(s_.begin() + pos_, s_.end(), m, number, std::regex_constants::match_continuous))
            Fail("bad value");
        v.Type = Value::Kind::Number;
        v.Num = std::strtod(m.str().c_str(), nullptr);
        pos_ += m.length();
        return v;
    }

    const std::string& s_;
    size_t pos_ = 0;
};

inline Value Parse(const std::string& text) { return Parser(text).ParseAll(); }

} // namespace json_reader
