// pondera-cli moments, pdf, pnc, fit and data and its command line, run as a script
// would run them. The figures themselves are the engine tests' business: here
// each command path is checked once against an independent reference.
#include "tests/helpers/TestSupport.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

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

// Runs pondera-cli; every line it prints is read as JSON unless json is false.
CliRun Cli(const std::vector<std::string>& args, const std::string& input = "", bool json = true) {
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
    for (std::string line; json && std::getline(lines, line);) {
        try {
            r.Objects.push_back(Value::parse(line));
        } catch (const std::exception& e) {
            ADD_FAILURE() << "not JSON (" << e.what() << "): " << line;
        }
    }
    return r;
}

double Rel(double a, long double b) {
    return static_cast<double>(std::fabs((a - b) / b));
}

TEST(CliEngine, MomentsAndFitAnswerWithTheirFigures) {
    // A negative number stands as a parameter; the figures are the engine tests' business.
    const CliRun normal = Cli({"moments", "Normal", "-3", "2"});
    ASSERT_EQ(normal.Status, 0) << normal.Err;
    EXPECT_EQ(normal.Objects.at(0)["mean"], -3);
    EXPECT_EQ(normal.Objects.at(0)["stdev"], 2);
    // fit: its figures are the Johnson tests' business.
    const CliRun fit = Cli({"fit", "0", "1", "0.5", "2.8"});
    ASSERT_EQ(fit.Status, 0) << fit.Err;
    const Value& f = fit.Objects.at(0);
    EXPECT_EQ(f["type"], "SB");
    EXPECT_EQ(f["message"], "Success");
}

TEST(CliEngine, FailedChecksAndRunTimeErrorsAreReported) {
    // A failing check: its message, and no figures.
    const Value check = Cli({"moments", "Normal", "7"}).Objects.at(0);
    EXPECT_FALSE(check.contains("mean"));
    ASSERT_EQ(check["messages"].size(), 1u);
    EXPECT_EQ(check["messages"][0]["title"], "Pondera");
    EXPECT_EQ(check["messages"][0]["text"], "Standard deviation must be greater than zero.");
    // Run-time errors appear once per distinct error.
    const Value v = Cli({"moments", "LogNormal", "0", "50"}).Objects.at(0);
    EXPECT_EQ(v["mean"], 0);
    ASSERT_EQ(v["errors"].size(), 4u);
    EXPECT_EQ(v["errors"][0]["label"], "Pondera.m_Distributions.mean");
    EXPECT_EQ(v["errors"][0]["description"], "Overflow");
}

TEST(CliEngine, PdfSamplesThePlotGrid) {
    const Value v =
        Cli({"pdf", "Normal", "1", "2", "--range", "-3", "5", "--points", "8"}).Objects.at(0);
    // x(i) = low + (i - 1)(high - low)/N; the densities are the engine tests' business.
    EXPECT_EQ(v["x"], Value({-3, -2, -1, 0, 1, 2, 3, 4}));
    EXPECT_EQ(v["density"].size(), 8u);
}

TEST(CliEngine, PncTakesLimitValuesEitherWay) {
    for (const auto& usl : {std::vector<std::string>{"--usl", "9"}, {"--usl=9"}}) {
        std::vector<std::string> args = {"pnc", "Normal", "0", "1", "0", "0", "--lsl", "-3"};
        args.insert(args.end(), usl.begin(), usl.end());
        const Value v = Cli(args).Objects.at(0);
        EXPECT_LE(Rel(v["lower"], 0.00134989803163009452665L), 1e-14);
        EXPECT_LE(Rel(v["upper"], 1.128588405953840647735e-19L), 1e-13);
    }
    // An absent limit is unticked: it contributes exactly 0.
    const Value only = Cli({"pnc", "Normal", "0", "1", "--lsl=-1"}).Objects.at(0);
    EXPECT_EQ(only["upper"], 0);
    EXPECT_EQ(only["total"], only["lower"]);
}

TEST(CliEngine, LinesOnStandardInputAreAnsweredOneByOne) {
    const CliRun r = Cli({"pnc"}, "Normal|0|1|||-3|3\r\n\nUniform|4|4|||3|5\n");
    ASSERT_EQ(r.Status, 0) << r.Err;
    ASSERT_EQ(r.Objects.size(), 2u); // the blank line asks nothing
    EXPECT_NEAR(r.Objects[0]["total"], 0.0026997960632601891, 1e-17);
    EXPECT_EQ(r.Objects[1]["total"], 0); // a point mass at 4, inside the limits
    // A line that cannot be read is answered and marks the run as a usage error.
    const CliRun bad = Cli({"pnc"}, "Gamma|1|2\nNormal|0|1||||1\n");
    EXPECT_EQ(bad.Status, 2);
    ASSERT_EQ(bad.Objects.size(), 2u);
    EXPECT_EQ(bad.Objects[0]["invalid"], "unknown distribution \"Gamma\"");
    EXPECT_NEAR(bad.Objects[1]["upper"], 0.15865525393145705, 1e-16);
    const CliRun fit = Cli({"fit"}, "0 1 1 6\n1 2 x 4\n");
    EXPECT_EQ(fit.Status, 2);
    ASSERT_EQ(fit.Objects.size(), 2u);
    EXPECT_NEAR(fit.Objects[0]["gamma"], -1.129333464, 1e-9); // table 6.1
    EXPECT_EQ(fit.Objects[1]["invalid"], "SKEW \"x\" is not a number");
}

TEST(CliEngine, HelpAndVersionExitWithZero) {
    for (const auto& args : {std::vector<std::string>{"--help"}, {"pnc", "--help"}}) {
        const CliRun r = Cli(args, "", false);
        EXPECT_EQ(r.Status, 0);
        EXPECT_NE(r.Out.find("Usage: pondera-cli"), std::string::npos) << r.Out;
    }
    EXPECT_EQ(Cli({"--version"}, "", false).Out,
              std::string("pondera-cli ") + PONDERA_VERSION_TEXT + "\n");
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
        std::string joined;
        for (const auto& a : args)
            joined += a + " ";
        EXPECT_EQ(r.Status, 2) << joined;
        EXPECT_TRUE(r.Out.empty()) << joined << r.Out;
        EXPECT_NE(r.Err.find("pondera-cli"), std::string::npos) << joined;
    }
}

TEST(CliData, AnswersWithMomentsFitPncAndCapability) {
    const CliRun r = Cli({"data", "-", "--lsl", "9", "--usl", "12", "--target", "10"},
                         "Diameter\n10.1\n10.3\n\n9.8;10.0\n10.6\t10.2\n11.5\n");
    ASSERT_EQ(r.Status, 0) << r.Err;
    const Value& v = r.Objects.at(0);
    EXPECT_EQ(v["n"], 7);
    EXPECT_NEAR(v["mean"], 72.5 / 7, 1e-13);
    EXPECT_EQ(v["fit"]["type"], "SB");
    EXPECT_EQ(v["fit"]["message"], "Success");
    const auto& c = v["capability"];
    EXPECT_EQ(c["ppk"].get<double>(), std::min(c["ppl"].get<double>(), c["ppu"].get<double>()));

    const CliRun bad = Cli({"data", "-"}, "x\n1\n2\nabc\n5\n");
    EXPECT_EQ(bad.Status, 2);
    EXPECT_EQ(bad.Err.rfind("pondera-cli data: line 4: \"abc\" is not a number\n", 0), 0u)
        << bad.Err;

    const Value pnc = Cli({"pnc", "Normal", "10", "2", "--usl", "13"}).Objects.at(0);
    EXPECT_NEAR(pnc["capability"]["ppu"], 0.5, 1e-15);
    EXPECT_TRUE(pnc["capability"]["pp"].is_null() && pnc["capability"]["ppl"].is_null());
}

} // namespace
