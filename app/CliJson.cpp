// JSON output of the command-line tool.
#include "app/CliJson.h"

#include "support/Format.h"
#include "support/UserFace.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <poll.h>
#include <unistd.h>

namespace cli {

std::string Quote(std::string_view text) {
    std::string out = "\"";
    for (size_t i = 0; i < text.size(); ++i) {
        const char ch = text[i];
        const auto c = static_cast<unsigned char>(ch);
        if (c >= 0x80) {
            // Well-formed UTF-8 passes through; any other byte is no character.
            if (const size_t length = support::Utf8Length(text, i)) {
                out += text.substr(i, length);
                i += length - 1;
            } else {
                out += "\\ufffd";
            }
            continue;
        }
        switch (c) {
        case '"':
            out += "\\\"";
            break;
        case '\\':
            out += "\\\\";
            break;
        case '\n':
            out += "\\n";
            break;
        case '\r':
            out += "\\r";
            break;
        case '\t':
            out += "\\t";
            break;
        case '\b':
            out += "\\b";
            break;
        case '\f':
            out += "\\f";
            break;
        default:
            if (c < 0x20) {
                char buf[8];
                std::snprintf(buf, sizeof buf, "\\u%04x", c);
                out += buf;
            } else {
                out += ch;
            }
        }
    }
    return out + "\"";
}

std::string Excerpt(std::string_view text) {
    return support::Excerpt(text, 80);
}

std::string Number(double value) {
    if (!std::isfinite(value)) return "null";
    // to_chars ignores the locale, which Qt sets from the environment.
    char buf[32];
    const auto result = std::to_chars(buf, buf + sizeof buf, value, std::chars_format::general, 17);
    return std::string(buf, result.ptr);
}

std::string NumberArray(const std::vector<double>& values) {
    std::string out = "[";
    for (size_t i = 0; i < values.size(); ++i) {
        if (i) out += ",";
        out += Number(values[i]);
    }
    return out + "]";
}

JsonObject& JsonObject::Add(std::string_view key, double value) {
    return AddRaw(key, Number(value));
}

JsonObject& JsonObject::AddRaw(std::string_view key, std::string_view json) {
    if (!body_.empty()) body_ += ",";
    body_ += Quote(key);
    body_ += ":";
    body_ += json;
    return *this;
}

JsonObject& JsonObject::AddString(std::string_view key, std::string_view value) {
    return AddRaw(key, Quote(value));
}

JsonObject& JsonObject::AddRecorded() {
    support::RecordingFace& rec = support::Recorder();
    std::string messages = "[";
    for (size_t i = 0; i < rec.Messages.size(); ++i) {
        if (i) messages += ",";
        messages += JsonObject()
                        .AddString("title", rec.Messages[i].Title)
                        .AddString("text", rec.Messages[i].Text)
                        .Str();
    }
    messages += "]";

    // One entry per distinct error, however often it was reported.
    std::vector<support::ErrorEntry> distinct;
    for (const auto& e : rec.AllErrors()) {
        bool seen = false;
        for (const auto& d : distinct)
            seen = seen || (d.Label == e.Label && d.Number == e.Number && d.Source == e.Source &&
                            d.Description == e.Description);
        if (!seen) distinct.push_back(e);
    }
    std::string errors = "[";
    for (size_t i = 0; i < distinct.size(); ++i) {
        if (i) errors += ",";
        errors += JsonObject()
                      .AddString("label", distinct[i].Label)
                      .Add("number", distinct[i].Number)
                      .AddString("source", distinct[i].Source)
                      .AddString("description", distinct[i].Description)
                      .Str();
    }
    errors += "]";

    AddRaw("messages", messages);
    AddRaw("errors", errors);
    rec.Clear();
    return *this;
}

std::string JsonObject::Str() const {
    return "{" + body_ + "}";
}

bool ParseArg(const std::string& text, double& value) {
    const auto parsed = support::ParseNumber(text);
    if (!parsed) return false;
    value = *parsed;
    return true;
}

int Usage() {
    std::fputs("Run 'pondera-cli --help' for the usage.\n", stderr);
    return 2;
}

int Fail(const std::string& command, const std::string& problem) {
    const std::string name = command.empty() ? "pondera-cli" : "pondera-cli " + command;
    std::fprintf(stderr, "%s: %s\nRun '%s --help' for the usage.\n", name.c_str(), problem.c_str(),
                 name.c_str());
    return 2;
}

void PrintLine(const JsonObject& out) {
    const std::string line = out.Str() + "\n";
    std::fwrite(line.data(), 1, line.size(), stdout);
}

// A caller that waits for each answer before it writes the next line must get
// it now; while more input is already waiting, the answers go out together.
void FlushBeforeWaiting() {
    pollfd input{.fd = STDIN_FILENO, .events = POLLIN, .revents = 0};
    if (poll(&input, 1, 0) != 1) std::fflush(stdout);
}

int AnswerLines(const char* command, const std::function<std::string(const std::string&)>& answer) {
    int status = 0;
    std::string line;
    for (int number = 1; std::getline(std::cin, line); ++number) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.find_first_not_of(" \t") == std::string::npos) continue;
        if (const std::string problem = answer(line); !problem.empty()) {
            std::fprintf(stderr, "pondera-cli %s: line %d: %s\n", command, number, problem.c_str());
            JsonObject out;
            out.AddString("invalid", problem);
            PrintLine(out);
            status = 2;
        }
        FlushBeforeWaiting();
        if (std::ferror(stdout)) break; // the answers cannot be written: Run says so
    }
    std::fflush(stdout);
    if (status) Usage();
    return status;
}

} // namespace cli
