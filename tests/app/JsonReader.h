// A small JSON reader for the command-line tests: enough to check what
// pondera-cli prints, and strict enough to fail on malformed output.
#pragma once

#include <cstdlib>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace json_reader {

struct Value {
    enum class Kind { Null, Bool, Number, String, Array, Object } Type = Kind::Null;
    bool Bool = false;
    double Num = 0;
    std::string Str;
    std::vector<Value> Items;
    std::map<std::string, Value> Members;

    bool Has(const std::string& key) const { return Members.count(key) > 0; }
    const Value& operator[](const std::string& key) const {
        auto it = Members.find(key);
        if (it == Members.end()) throw std::runtime_error("no member " + key);
        return it->second;
    }
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
        Skip();
        if (pos_ != s_.size()) throw std::runtime_error("trailing text");
        return v;
    }

private:
    void Skip() {
        while (pos_ < s_.size() && (s_[pos_] == ' ' || s_[pos_] == '\n' || s_[pos_] == '\t' || s_[pos_] == '\r'))
            ++pos_;
    }
    char Peek() {
        Skip();
        if (pos_ >= s_.size()) throw std::runtime_error("unexpected end");
        return s_[pos_];
    }
    void Expect(char c) {
        if (Peek() != c) throw std::runtime_error(std::string("expected ") + c);
        ++pos_;
    }
    bool Literal(const char* word) {
        const std::string w = word;
        if (s_.compare(pos_, w.size(), w) != 0) return false;
        pos_ += w.size();
        return true;
    }
    std::string ParseString() {
        Expect('"');
        std::string out;
        while (pos_ < s_.size() && s_[pos_] != '"') {
            char c = s_[pos_++];
            if (static_cast<unsigned char>(c) < 0x20) throw std::runtime_error("raw control character");
            if (c == '\\') {
                const char e = s_.at(pos_++);
                switch (e) {
                case 'n': c = '\n'; break;
                case 't': c = '\t'; break;
                case 'r': c = '\r'; break;
                case 'b': c = '\b'; break;
                case 'f': c = '\f'; break;
                case 'u': c = static_cast<char>(std::stoi(s_.substr(pos_, 4), nullptr, 16)); pos_ += 4; break;
                case '"': case '\\': case '/': c = e; break;
                default: throw std::runtime_error("bad escape");
                }
            }
            out += c;
        }
        Expect('"');
        return out;
    }
    Value ParseValue() {
        Value v;
        const char c = Peek();
        if (c == '{') {
            v.Type = Value::Kind::Object;
            ++pos_;
            if (Peek() == '}') return ++pos_, v;
            while (true) {
                const std::string key = ParseString();
                if (v.Members.count(key)) throw std::runtime_error("duplicate key " + key);
                Expect(':');
                v.Members[key] = ParseValue();
                if (Peek() == ',') { ++pos_; continue; }
                Expect('}');
                return v;
            }
        }
        if (c == '[') {
            v.Type = Value::Kind::Array;
            ++pos_;
            if (Peek() == ']') return ++pos_, v;
            while (true) {
                v.Items.push_back(ParseValue());
                if (Peek() == ',') { ++pos_; continue; }
                Expect(']');
                return v;
            }
        }
        if (c == '"') {
            v.Type = Value::Kind::String;
            v.Str = ParseString();
            return v;
        }
        if (Literal("null")) return v;
        if (Literal("true")) { v.Type = Value::Kind::Bool; v.Bool = true; return v; }
        if (Literal("false")) { v.Type = Value::Kind::Bool; return v; }
        // Numbers: JSON grammar only (no nan, inf, hex or leading +).
        const size_t start = pos_;
        if (s_[pos_] == '-') ++pos_;
        auto digits = [&] { size_t n = 0; while (pos_ < s_.size() && isdigit(static_cast<unsigned char>(s_[pos_]))) ++pos_, ++n; return n; };
        if (!digits()) throw std::runtime_error("bad value at " + std::to_string(start));
        if (pos_ < s_.size() && s_[pos_] == '.') { ++pos_; if (!digits()) throw std::runtime_error("bad fraction"); }
        if (pos_ < s_.size() && (s_[pos_] == 'e' || s_[pos_] == 'E')) {
            ++pos_;
            if (s_[pos_] == '+' || s_[pos_] == '-') ++pos_;
            if (!digits()) throw std::runtime_error("bad exponent");
        }
        v.Type = Value::Kind::Number;
        v.Num = std::strtod(s_.substr(start, pos_ - start).c_str(), nullptr);
        return v;
    }

    const std::string& s_;
    size_t pos_ = 0;
};

inline Value Parse(const std::string& text) { return Parser(text).ParseAll(); }

} // namespace json_reader
