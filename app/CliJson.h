// JSON output of the command-line tool: one object per answer, numbers with 17
// significant digits, plus what the error path and message boxes recorded.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace cli {

std::string Quote(std::string_view text);
// The offending text quoted in an answer: at most 80 characters, then an ellipsis,
// so a huge line is not echoed back whole.
std::string Excerpt(std::string_view text);
std::string Number(double value); // 17 significant digits; NaN and inf become null
std::string NumberArray(const std::vector<double>& values);

// Builds one JSON object member by member.
class JsonObject {
  public:
    JsonObject& Add(std::string_view key, double value);
    JsonObject& AddRaw(std::string_view key, std::string_view json);
    JsonObject& AddString(std::string_view key, std::string_view value);
    // Adds "messages" and "errors" from the recording face and clears it.
    JsonObject& AddRecorded();
    std::string Str() const;

  private:
    std::string body_;
};

// Parses a command-line number with the input-field rule; false when it is not one.
bool ParseArg(const std::string& text, double& value);

// Points to --help on stderr and returns 2.
int Usage();
// Prints "pondera-cli COMMAND: PROBLEM" and where the usage is to stderr; returns 2.
int Fail(const std::string& command, const std::string& problem);

// Prints one object as one line on standard output, at once.
void PrintLine(const JsonObject& out);

// Answers one request per line of standard input. `answer` prints its reply and
// returns "", or returns what is wrong with the line; such a line is answered
// {"invalid": ...} and the run ends with the usage status. Blank lines are skipped.
int AnswerLines(const char* command, const std::function<std::string(const std::string&)>& answer);

} // namespace cli
