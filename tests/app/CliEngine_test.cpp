// pondera-cli moments, pdf, pnc, fit and data and its command line, run as a script
// would run them. The figures themselves are the engine tests' business: here
// each command path is checked once against an independent reference.
#include "tests/helpers/TestSupport.h"

#include <nlohmann/json.hpp>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <unistd.h>

namespace {

using Value = nlohmann::json;

struct CliRun {
    int Status = -1;
    std::string Out, Err;
    std::vector<Value> Objects; // one per output line
};

std::string Quoted(const std::string& s) {
    std::string out = "'";
    for (char c : s)
        out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}

std::string Slurp(const std::string& path) {
    std::stringstream ss;
    ss << std::ifstream(path).rdbuf();
    return ss.str();
}

// Runs pondera-cli; every line it prints is read as JSON.
CliRun Cli(const std::vector<std::string>& args, const std::string& input = "") {
    const std::string dir = testing::TempDir() + "cli-" + std::to_string(getpid());
    std::system(("mkdir -p " + Quoted(dir)).c_str());
    std::ofstream(dir + "/in") << input;
    std::string cmd = Quoted(PONDERA_CLI);
    for (const auto& a : args)
        cmd += " " + Quoted(a);
    const int raw = std::system((cmd + " <" + Quoted(dir + "/in") + " >" + Quoted(dir + "/out") +
                                 " 2>" + Quoted(dir + "/err"))
                                    .c_str());
    CliRun r{WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, Slurp(dir + "/out"), Slurp(dir + "/err"), {}};
    std::istringstream lines(r.Out);
    for (std::string line; std::getline(lines, line);) {
        r.Objects.push_back(Value::parse(line, nullptr, false));
        EXPECT_FALSE(r.Objects.back().is_discarded()) << "not JSON: " << line;
    }
    return r;
}

TEST(CliEngine, EachCommandAnswersWithItsFigures) {
    // A negative number stands as a parameter; the figures are the engine tests' business.
    const Value normal = Cli({"moments", "Normal", "-3", "2"}).Objects.at(0);
    EXPECT_EQ(normal["mean"], -3);
    EXPECT_EQ(normal["stdev"], 2);
    // A triangle without spread: no skewness or kurtosis, and no error.
    const Value point = Cli({"moments", "Triangular", "1", "1", "1"}).Objects.at(0);
    EXPECT_TRUE(point["skewness"].is_null() && point["kurtosis"].is_null());
    EXPECT_TRUE(point["errors"].empty());
    const Value fit = Cli({"fit", "0", "1", "0.5", "2.8"}).Objects.at(0);
    EXPECT_EQ(fit["type"], "SB");
    EXPECT_EQ(fit["message"], "Success");
    // x(i) = low + (i - 1)(high - low)/N.
    const Value pdf =
        Cli({"pdf", "Normal", "1", "2", "--range", "-3", "5", "--points", "8"}).Objects.at(0);
    EXPECT_EQ(pdf["x"], Value({-3, -2, -1, 0, 1, 2, 3, 4}));
    EXPECT_EQ(pdf["density"].size(), 8u);
    // Below -1 and above 1 standard deviation: lower and upper in their places.
    const Value pnc = Cli({"pnc", "Normal", "10", "2", "--lsl", "8", "--usl=14"}).Objects.at(0);
    EXPECT_NEAR(pnc["lower"], 0.158655253931457051, 1e-16);
    EXPECT_NEAR(pnc["upper"], 0.0227501319481792072, 1e-16);
    // An absent limit is unticked: it contributes exactly 0.
    const Value only = Cli({"pnc", "Normal", "0", "1", "--lsl=-1"}).Objects.at(0);
    EXPECT_EQ(only["upper"], 0);
    EXPECT_EQ(only["total"], only["lower"]);
    // 2.5 % above z = 1.959963984540054 (mpmath); a probability of 1 has no limit.
    const Value q = Cli({"quantile", "Normal", "10", "2", "--upper", "0.025"}).Objects.at(0);
    EXPECT_NEAR(q["x"], 10 + 2 * 1.959963984540054, 4e-15);
    const Value none = Cli({"quantile", "Normal", "0", "1", "--lower=1"}).Objects.at(0);
    EXPECT_TRUE(none["x"].is_null());
    EXPECT_EQ(none["messages"].size(), 1u);
}

TEST(CliEngine, AFailedCheckAnswersWithItsMessage) {
    // No figures; run-time errors travel the same way (the JSON writer's tests).
    const Value check = Cli({"moments", "Normal", "7"}).Objects.at(0);
    EXPECT_FALSE(check.contains("mean"));
    ASSERT_EQ(check["messages"].size(), 1u);
    EXPECT_EQ(check["messages"][0]["title"], "Pondera");
    EXPECT_EQ(check["messages"][0]["text"], "Standard deviation must be greater than zero.");
}

TEST(CliEngine, LinesOnStandardInputAreAnsweredOneByOne) {
    const CliRun r = Cli({"pnc"}, "Normal|10|2|||8|14\r\n\nGamma|1|2\n");
    EXPECT_EQ(r.Status, 2);          // a line that cannot be read marks the run as a usage error
    ASSERT_EQ(r.Objects.size(), 2u); // the blank line asks nothing
    EXPECT_EQ(r.Objects[0],
              Cli({"pnc", "Normal", "10", "2", "--lsl", "8", "--usl", "14"}).Objects.at(0));
    EXPECT_EQ(r.Objects[1]["invalid"], "unknown distribution \"Gamma\"");
    const CliRun fit = Cli({"fit"}, "0 1 1 6\n1 2 x 4\n");
    ASSERT_EQ(fit.Objects.size(), 2u);
    EXPECT_NEAR(fit.Objects[0]["gamma"], -1.129333464, 1e-9); // table 6.1
    EXPECT_EQ(fit.Objects[1]["invalid"], "SKEW \"x\" is not a number");
}

TEST(CliEngine, UsageErrorsExitWithTwo) {
    const std::vector<std::vector<std::string>> cases = {
        {},
        {"frobnicate"},
        {"moments", "Johnson SB", "1"},
        {"pdf", "Normal", "0", "1"},
        {"pdf", "Johnson", "1", "0", "1", "0", "--range", "0", "1", "--points", "5"},
        {"pnc", "Normal", "0", "1", "--lsl=nan"},
        {"pnc", "Normal", "0", "1", "--target", "0"},
        {"fit", "0", "1", "0.5"}};
    for (const auto& args : cases) {
        const CliRun r = Cli(args);
        SCOPED_TRACE(testing::PrintToString(args));
        EXPECT_EQ(r.Status, 2);
        EXPECT_TRUE(r.Out.empty()) << r.Out;
        EXPECT_NE(r.Err.find("pondera-cli"), std::string::npos);
    }
}

TEST(CliData, AnswersWithMomentsFitPncAndCapability) {
    // Reading the values and the figures are m_SampleData's and m_Capability's business.
    const Value v = Cli({"data", "-", "--lsl", "9", "--usl", "11", "--target", "10"},
                        "Diameter\n10.1\n10.3\n9.8\n10.0\n10.6\n10.2\n11.5\n")
                        .Objects.at(0);
    EXPECT_EQ(v["n"], 7);
    EXPECT_EQ(v["fit"]["type"], "SB");
    EXPECT_TRUE(v["capability"]["ppk"].is_number() && v["total"].is_number());
    EXPECT_TRUE(v["capability_z"]["ppk"].is_number());
    EXPECT_NEAR(v["ppm"]["observed_above"].get<double>(), 1e6 / 7, 1e-6); // 11.5 of 7 values
    const CliRun bad = Cli({"data", "-"}, "x\n1\n2\nabc\n5\n");
    EXPECT_EQ(bad.Status, 2);
    EXPECT_EQ(bad.Err.rfind("pondera-cli data: line 4:", 0), 0u) << bad.Err;
}

TEST(CliData, ReadsTheChosenColumnOrNamesTheColumns) {
    const std::string csv = "Part,Diameter\n1,10.1\n2,10.3\n3,9.8\n4,10.0\n5,10.6\n";
    const Value byName = Cli({"data", "-", "--column", "Diameter"}, csv).Objects.at(0);
    EXPECT_EQ(byName["n"], 5);
    EXPECT_NEAR(byName["mean"], 10.16, 1e-12);
    EXPECT_EQ(Cli({"data", "-", "--column", "2"}, csv).Objects.at(0), byName);
    const CliRun several = Cli({"data", "-"}, csv);
    EXPECT_EQ(several.Status, 2);
    EXPECT_TRUE(several.Out.empty());
    EXPECT_NE(several.Err.find("2 columns (\"Part\", \"Diameter\"): choose one with --column"),
              std::string::npos)
        << several.Err;
}

// Answers that would mislead are refused: crossed limits and parameters the
// calculator rejects give no figures, in every command that computes them.
TEST(CliEngine, RefusalsCarryNoFigures) {
    const std::string crossed = "The LSL is not below the USL: there is no fraction nonconforming.";
    const Value pnc = Cli({"pnc", "Normal", "10", "1", "--lsl", "12", "--usl", "8"}).Objects.at(0);
    EXPECT_TRUE(pnc["total"].is_null() && pnc["lower"].is_null() &&
                pnc["capability"]["pp"].is_null());
    EXPECT_EQ(pnc["messages"].at(0)["text"], crossed);
    EXPECT_EQ(Cli({"pnc"}, "Normal|10|1|||12|8\n").Objects.at(0), pnc);
    const Value data = Cli({"data", "-", "--lsl", "3", "--usl", "3"}, "1\n2\n3\n5\n").Objects.at(0);
    EXPECT_TRUE(data["total"].is_null() && data["capability"]["ppk"].is_null());
    EXPECT_EQ(data["messages"].at(0)["text"], crossed);

    const Value sb =
        Cli({"pnc", "Johnson SB", "1", "0", "-2", "0", "--lsl", "-1", "--usl", "1"}).Objects.at(0);
    EXPECT_FALSE(sb.contains("total"));
    EXPECT_EQ(sb["status"], "Lamda must be greater than zero for a Johnson SB distribution.");
    // A fit that found no curve says so and gives no parameters.
    const Value failed = Cli({"fit", "0", "1e-320", "0", "3"}).Objects.at(0);
    EXPECT_EQ(failed["type"], "Error");
    EXPECT_TRUE(failed["delta"].is_null() && failed["xi"].is_null());
}

TEST(CliEngine, EchoedTextIsValidJsonAndAWriteErrorIsAnError) {
    const CliRun r = Cli({"pnc"}, "Normal|\xff\xc0\xaf|1\n");
    EXPECT_EQ(r.Objects.at(0)["invalid"], "parameter \"\ufffd\ufffd\ufffd\" is not a number");
    for (const char* command : {"fit 0 1 0 3", "pnc Normal 0 1", "moments Normal 0 1"}) {
        const std::string cmd =
            std::string(PONDERA_CLI) + " " + command + " >/dev/full 2>/dev/null";
        const int raw = std::system(cmd.c_str());
        EXPECT_EQ(WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, 1) << command;
    }
}

TEST(CliIdentify, AnswersWithEveryRowInTableOrder) {
    // The ball-bearing lifetimes (Lieblein & Zelen 1956); the figures are the stats tests'
    // business.
    const std::string bearings =
        "17.88\n28.92\n33.00\n41.52\n42.12\n45.60\n48.48\n51.84\n51.96\n54.12\n55.56\n67.80\n"
        "68.64\n68.64\n68.88\n84.12\n93.12\n98.64\n105.12\n105.84\n127.92\n128.04\n173.40\n";
    const Value v =
        Cli({"identify", "-", "--replicates", "0", "--lsl", "10", "--usl", "200"}, bearings)
            .Objects.at(0);
    EXPECT_EQ(v["n"], 23);
    const char* rows[] = {"Normal",      "LogNormal",         "LogNormal 3P",
                          "Exponential", "Exponential 2P",    "Weibull",
                          "Weibull 3P",  "Johnson (moments)", "Johnson (percentiles)"};
    ASSERT_EQ(v["fits"].size(), 9u);
    for (int i = 0; i < 9; ++i) {
        const Value& row = v["fits"][i];
        EXPECT_EQ(row["row"], rows[i]);
        EXPECT_EQ(row["status"], "ok") << rows[i];
        EXPECT_TRUE(row["p"].is_null() && row["rank"].is_number() && row["total"].is_number());
    }
    EXPECT_NEAR(v["fits"][5]["params"][0].get<double>(), 2.102, 0.0005);
    EXPECT_TRUE(v["fits"][8]["z"].is_number() && v["fits"][8]["type"].is_string());
    // Both methods; the Normal row's exact intervals need no simulated samples.
    const Value& normal = v["fits"][0]["capability"];
    EXPECT_EQ(normal["method"], "percentile");
    EXPECT_EQ(v["fits"][0]["capability_z"]["method"], "z-score");
    EXPECT_LT(normal["pp_low"].get<double>(), normal["pp"].get<double>());
    EXPECT_GT(normal["ppk_high"].get<double>(), normal["ppk"].get<double>());
    EXPECT_TRUE(v["fits"][5]["capability"]["pp_low"].is_null());
    EXPECT_EQ(v["fits"][5]["ppm"]["observed_total"], 0);
    const CliRun tooFew = Cli({"identify", "-"}, "1\n2\n3\n4\n");
    EXPECT_EQ(tooFew.Status, 2);
    EXPECT_TRUE(tooFew.Objects.empty());
}

} // namespace
