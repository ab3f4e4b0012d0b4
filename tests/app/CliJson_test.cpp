// The JSON writer shared by the pondera-cli commands.
#include "app/CliJson.h"

#include "support/UserFace.h"
#include "tests/helpers/TestSupport.h"

#include <cmath>
#include <nlohmann/json.hpp>

namespace {

class CliJsonTest : public testing_support::RecordingTest {};

std::string Repeat(const std::string& piece, int times) {
    std::string s;
    while (times-- > 0)
        s += piece;
    return s;
}

TEST_F(CliJsonTest, NumbersKeepSeventeenDigitsAndNonFiniteBecomesNull) {
    EXPECT_EQ(cli::Number(0.1), "0.10000000000000001");
    EXPECT_EQ(cli::Number(-0.0), "-0");
    EXPECT_EQ(cli::Number(1e-320), "9.9998886718268301e-321");
    EXPECT_EQ(cli::Number(NAN), "null");
    for (double v : {0.1, 1.0 / 3, 1.1285884059538295e-19, 1.7976931348623157e308, 5e-324})
        EXPECT_EQ(std::strtod(cli::Number(v).c_str(), nullptr), v) << "round trip of " << v;
    EXPECT_EQ(cli::NumberArray({}), "[]");
    EXPECT_EQ(cli::NumberArray({1, 2.5}), "[1,2.5]");
}

TEST_F(CliJsonTest, StringsAreEscaped) {
    const std::string nasty = "a\"b\\c\nd\te\x01 \xc3\xa9";
    EXPECT_EQ(cli::Quote(nasty), "\"a\\\"b\\\\c\\nd\\te\\u0001 \xc3\xa9\"");
    EXPECT_EQ(nlohmann::json::parse(cli::JsonObject().AddString("k", nasty).Str())["k"], nasty);
    // Bytes that are not UTF-8 (stray, overlong, surrogate, cut short) become U+FFFD.
    EXPECT_EQ(cli::Quote("\xff|\xc0\xaf|\xed\xa0\x80|\xe2\x82"),
              "\"\\ufffd|\\ufffd\\ufffd|\\ufffd\\ufffd\\ufffd|\\ufffd\\ufffd\"");
}

TEST_F(CliJsonTest, OffendingTextIsQuotedToEightyCharactersAndAnEllipsis) {
    const std::pair<std::string, std::string> rows[] = {
        {"1x", "1x"},
        {std::string(80, 'a'), std::string(80, 'a')},
        {std::string(10'000'000, 'a'), std::string(80, 'a') + "\u2026"},
        // Whole characters are counted, not bytes.
        {Repeat("\u00e9", 90), Repeat("\u00e9", 80) + "\u2026"},
        // A byte that starts no character counts as one.
        {std::string(1'000'000, '\x80'), std::string(80, '\x80') + "\u2026"},
    };
    for (const auto& [text, quoted] : rows)
        EXPECT_EQ(cli::Excerpt(text), quoted) << text.size() << " bytes";
}

TEST_F(CliJsonTest, RecordedMessagesAndDistinctErrorsAreAddedAndCleared) {
    support::MsgBox("Standard deviation must be greater than zero.");
    Rec().ShowErrorReport(
        {{"Pondera.m_Distributions.mean", 6, "Pondera", "Overflow", 3},
         {"Pondera.m_Distributions.StDev", 11, "Pondera", "Division by zero", 1}});
    Rec().ShowErrorReport({{"Pondera.m_Distributions.mean", 6, "Pondera", "Overflow", 1}});
    const auto v = nlohmann::json::parse(cli::JsonObject().Add("x", 1).AddRecorded().Str());
    EXPECT_EQ(v["messages"], nlohmann::json::parse(R"([{"title": "Pondera",
        "text": "Standard deviation must be greater than zero."}])"));
    ASSERT_EQ(v["errors"].size(), 2u);
    EXPECT_EQ(v["errors"][0], nlohmann::json::parse(R"({"label": "Pondera.m_Distributions.mean",
        "number": 6, "source": "Pondera", "description": "Overflow"})"));
    EXPECT_EQ(v["errors"][1]["description"], "Division by zero");
    EXPECT_TRUE(Rec().Messages.empty());
    EXPECT_TRUE(Rec().Reports.empty());
}

} // namespace
