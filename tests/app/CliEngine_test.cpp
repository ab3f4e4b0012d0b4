// pondera-cli moments, pdf, pnc and fit, run as a script would run them.
#include "tests/app/JsonReader.h"
#include "tests/helpers/TestSupport.h"

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

using json_reader::Value;

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
        try {
            r.Objects.push_back(json_reader::Parse(line));
        } catch (const std::exception& e) {
            ADD_FAILURE() << "not JSON (" << e.what() << "): " << line;
        }
    }
    return r;
}

double Rel(double a, long double b) {
    return static_cast<double>(std::fabs((a - b) / b));
}

long double Phi(long double z) {
    return std::exp(-z * z / 2) / std::sqrt(2 * 3.141592653589793238462643383279502884L);
}

// Every number in the answer is finite (a NaN or infinity would print as null).
void ExpectNoNull(const Value& v, const std::string& where) {
    for (const auto& path : v.Nulls)
        ADD_FAILURE() << where << ": null at " << path;
}

TEST(CliEngine, MomentsAndFitAnswerWithTheirFigures) {
    const double e = std::exp(1.0);
    // moments: the arguments the window passes, against closed forms.
    const std::pair<std::vector<std::string>, std::vector<double>> rows[] = {
        {{"Exponential", "2", "1"}, {1.5, 0.5, 2, 9}}, // the minimum moves only the mean
        {{"LogNormal", "0", "1", "3"},
         {std::sqrt(e) + 3, std::sqrt(e * (e - 1)), (e + 2) * std::sqrt(e - 1),
          e * e * e * e + 2 * e * e * e + 3 * e * e - 3}},
        {{"Triangular", "0", "0", "1"},
         {1 / 3.0, std::sqrt(1 / 18.0), 2 * std::sqrt(2.0) / 5, 2.4}},
        {{"Weibull", "1", "1", "0"}, {1, 1, 2, 9}},
    };
    for (const auto& [args, want] : rows) {
        std::vector<std::string> full = {"moments"};
        full.insert(full.end(), args.begin(), args.end());
        const CliRun r = Cli(full);
        ASSERT_EQ(r.Status, 0) << r.Err;
        ASSERT_EQ(r.Objects.size(), 1u);
        const Value& v = r.Objects[0];
        const char* keys[] = {"mean", "stdev", "skewness", "kurtosis"};
        for (int i = 0; i < 4; ++i)
            EXPECT_NEAR(v.N(keys[i]), want[i], 1e-9 * std::max(1.0, want[i])) << r.Out;
        EXPECT_EQ(v.Size.at("errors"), 0u);
    }
    // fit: table 6.1 of the fitting note.
    const CliRun fit = Cli({"fit", "0", "1", "0.5", "2.8"});
    ASSERT_EQ(fit.Status, 0) << fit.Err;
    const Value& v = fit.Objects.at(0);
    EXPECT_EQ(v.S("type"), "SB");
    EXPECT_EQ(v.S("message"), "Success");
    EXPECT_NEAR(v.N("delta"), 1.402419922, 1e-9);
    EXPECT_NEAR(v.N("gamma"), 1.036275374, 1e-9);
    EXPECT_NEAR(v.N("lamda"), 6.836352812, 1e-8);
    EXPECT_NEAR(v.N("xi"), -2.322119145, 1e-8);
    EXPECT_EQ(v.Size.at("errors"), 0u);
}

TEST(CliEngine, FailedChecksAndRunTimeErrorsAreReported) {
    // A failing check: its message, and no figures. Missing trailing parameters are 0.
    const std::pair<std::vector<std::string>, const char*> checks[] = {
        {{"pnc", "Triangular", "0", "2", "1", "--lsl", "0.5"},
         "Likeliest value must be between Minimum and Maximum for a Triangular distribution."},
        {{"moments", "Normal", "7"}, "Standard deviation must be greater than zero."}};
    for (const auto& [args, message] : checks) {
        const CliRun r = Cli(args);
        ASSERT_EQ(r.Status, 0);
        EXPECT_FALSE(r.Objects.at(0).Has("lower") || r.Objects.at(0).Has("mean")) << r.Out;
        ASSERT_EQ(r.Objects.at(0).Size.at("messages"), 1u);
        EXPECT_EQ(r.Objects.at(0).S("messages.0.title"), "Pondera");
        EXPECT_EQ(r.Objects.at(0).S("messages.0.text"), message);
    }
    // Run-time errors appear once per distinct error.
    const Value v = Cli({"moments", "LogNormal", "0", "50"}).Objects.at(0);
    EXPECT_EQ(v.N("mean"), 0);
    ASSERT_EQ(v.Size.at("errors"), 4u);
    EXPECT_EQ(v.S("errors.0.label"), "Pondera.m_Distributions.mean");
    EXPECT_EQ(v.N("errors.0.number"), 6);
    EXPECT_EQ(v.S("errors.0.description"), "Overflow");
    EXPECT_EQ(v.S("errors.3.label"), "Pondera.m_Distributions.Kurtosis");
    // The same overflow at several grid points is one entry.
    const Value w = Cli({"pdf", "Johnson SB", "1", "0", "1", "1e308", "--range", "-1e308", "-9e307",
                         "--points", "5"})
                        .Objects.at(0);
    ASSERT_EQ(w.Size.at("errors"), 1u);
    EXPECT_EQ(w.S("errors.0.label"), "Pondera.m_Distributions.JohnsonSB_PDF");
    for (double d : w.Numbers("density"))
        EXPECT_EQ(d, 0);
}

TEST(CliEngine, PdfSamplesThePlotGrid) {
    const Value v =
        Cli({"pdf", "Normal", "1", "2", "--range", "-3", "5", "--points", "8"}).Objects.at(0);
    const auto x = v.Numbers("x"), d = v.Numbers("density");
    ASSERT_EQ(x.size(), 8u);
    ASSERT_EQ(d.size(), 8u);
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(x[i], -3 + i); // x(i) = low + (i - 1)(high - low)/N
        EXPECT_LE(Rel(d[i], Phi((x[i] - 1) / 2.0L) / 2), 1e-15);
    }
    // Johnson names use the engine's own densities: SL keeps lamda inside the logarithm.
    const Value sl =
        Cli({"pdf", "Johnson SL", "2", "0.5", "3", "1", "--range", "1", "7", "--points", "3"})
            .Objects.at(0);
    const auto sx = sl.Numbers("x"), sd = sl.Numbers("density");
    EXPECT_EQ(sd[0], 0); // x = xi
    for (int i = 1; i < 3; ++i) {
        const long double y = (sx[i] - 1) / 3.0L, z = 0.5L + 2 * std::log(y);
        EXPECT_LE(Rel(sd[i], 2 * Phi(z) / (3 * y)), 1e-14);
    }
}

TEST(CliEngine, PncFigures) {
    const Value v =
        Cli({"pnc", "Normal", "0", "1", "0", "0", "--lsl", "-3", "--usl", "9"}).Objects.at(0);
    EXPECT_LE(Rel(v.N("lower"), 0.00134989803163009452665L), 1e-14);
    EXPECT_LE(Rel(v.N("upper"), 1.128588405953840647735e-19L), 1e-13);
    EXPECT_EQ(v.N("total"), v.N("lower") + v.N("upper"));
    // An absent limit is unticked: it contributes exactly 0.
    const Value only = Cli({"pnc", "Normal", "0", "1", "--usl", "3"}).Objects.at(0);
    EXPECT_EQ(only.N("lower"), 0);
    EXPECT_EQ(only.N("total"), only.N("upper"));
    // Log-normal limits at or below the threshold.
    const Value ln =
        Cli({"pnc", "LogNormal", "0", "1", "5", "0", "--lsl", "5", "--usl", "4"}).Objects.at(0);
    EXPECT_EQ(ln.N("lower"), 0);
    EXPECT_EQ(ln.N("upper"), 1);
    // A Johnson name picks its form: SL with lamda -1 lives below xi.
    const Value sl =
        Cli({"pnc", "Johnson SL", "3", "0.5", "-1", "2", "--lsl", "1", "--usl", "2"}).Objects.at(0);
    EXPECT_LE(Rel(sl.N("lower"), 0.30853753872598689637L), 1e-14); // Phi(-0.5)
    EXPECT_EQ(sl.N("upper"), 0);
}

TEST(CliEngine, LinesOnStandardInputAreAnsweredOneByOne) {
    const CliRun r =
        Cli({"pnc"}, "Normal|0|1|||-3|3\r\n\nUniform|4|4|||3|5\nJohnson SB|1|0|1|0|0.5|\n"
                     "Exponential|1|0||||\n");
    ASSERT_EQ(r.Status, 0) << r.Err;
    ASSERT_EQ(r.Objects.size(), 4u); // the blank line asks nothing
    EXPECT_NEAR(r.Objects[0].N("total"), 0.0026997960632601891, 1e-17);
    EXPECT_EQ(r.Objects[1].N("total"), 0);          // a point mass at 4, inside the limits
    EXPECT_DOUBLE_EQ(r.Objects[2].N("lower"), 0.5); // the symmetric SB's median
    EXPECT_EQ(r.Objects[2].N("upper"), 0);
    EXPECT_EQ(r.Objects[3].N("total"), 0);
    // A line that cannot be read is answered and marks the run as a usage error.
    const CliRun bad = Cli({"pnc"}, "Gamma|1|2\nNormal|0|x\nNormal|0|1||||1\n");
    EXPECT_EQ(bad.Status, 2);
    ASSERT_EQ(bad.Objects.size(), 3u);
    EXPECT_EQ(bad.Objects[0].S("invalid"), "unknown distribution \"Gamma\"");
    EXPECT_TRUE(bad.Objects[1].Has("invalid"));
    EXPECT_NEAR(bad.Objects[2].N("upper"), 0.15865525393145705, 1e-16);
    const CliRun fit = Cli({"fit"}, "0 1 1 6\n\n5 2 0 3\n1 2 x 4\n0 -1 0 3\n");
    EXPECT_EQ(fit.Status, 2);
    ASSERT_EQ(fit.Objects.size(), 4u);
    EXPECT_EQ(fit.Objects[0].S("type"), "SU");
    EXPECT_NEAR(fit.Objects[0].N("gamma"), -1.129333464, 1e-9); // table 6.1
    EXPECT_EQ(fit.Objects[1].S("type"), "Normal");
    EXPECT_EQ(fit.Objects[2].S("invalid"), "SKEW \"x\" is not a number");
    EXPECT_EQ(fit.Objects[3].S("message"), "Error: standard deviation less than zero.");
}

TEST(CliEngine, UsageErrorsExitWithTwo) {
    const std::vector<std::vector<std::string>> cases = {
        {},
        {"frobnicate"},
        {"moments"},
        {"moments", "Johnson SB", "1"},
        {"moments", "Normal", "abc"},
        {"moments", "Normal", "0", "1", "2", "3"},
        {"pdf", "Normal", "0", "1"},
        {"pdf", "Normal", "0", "1", "--range", "0", "--points", "5"},
        {"pdf", "Normal", "0", "1", "--range", "0", "1", "--points", "0"},
        {"pdf", "Normal", "0", "1", "--range", "0", "1", "--points", "40000"},
        {"pdf", "Normal", "0", "1", "--range", "0", "1", "--points", "1e300"},
        {"pdf", "Normal", "0", "1", "--range", "0", "1", "--points", "2.5"},
        {"pdf", "Johnson", "1", "0", "1", "0", "--range", "0", "1", "--points", "5"},
        {"pnc", "Normal", "0", "1", "--lsl"},
        {"pnc", "Normal", "0", "1", "--lsl", "nan"},
        {"pnc", "Normal", "0", "1", "--target", "0"},
        {"pnc", "Lognormal", "0", "1"},
        {"fit", "0", "1", "0.5"},
        {"fit", "0", "1", "0.5", "1e400"}};
    for (const auto& args : cases) {
        const CliRun r = Cli(args);
        std::string joined;
        for (const auto& a : args)
            joined += a + " ";
        EXPECT_EQ(r.Status, 2) << joined;
        EXPECT_TRUE(r.Out.empty()) << joined << r.Out;
        EXPECT_NE(r.Err.find("usage: pondera-cli"), std::string::npos) << joined;
    }
}

TEST(CliEngine, BadValuesNeverPrintNullOrCrash) {
    // Anything a person can type into a field, in every slot of every distribution.
    const char* values[] = {"1e308", "-1e308", "-0", "1e-320", "1e-3", "1e3", "50", "0"};
    const char* names[] = {"Normal",     "LogNormal",  "Exponential", "Weibull",   "Uniform",
                           "Triangular", "Johnson SB", "Johnson SL",  "Johnson SU"};
    std::string input;
    for (const char* name : names)
        for (int slot = 0; slot < 6; ++slot)
            for (const char* value : values) {
                std::string fields[6] = {"1", "2", "3", "0.5", "-1", "4"};
                fields[slot] = value;
                input += std::string(name);
                for (const auto& f : fields)
                    input += "|" + f;
                input += "\n";
            }
    const CliRun r = Cli({"pnc"}, input);
    EXPECT_EQ(r.Status, 0) << r.Err;
    ASSERT_EQ(r.Objects.size(), std::size(names) * 6 * std::size(values));
    for (const auto& v : r.Objects) {
        ExpectNoNull(v, "pnc");
        if (v.Has("total")) {
            EXPECT_TRUE(v.N("lower") >= 0 && v.N("upper") <= 1);
        }
    }
    for (int n = 0; n < 6; ++n) // the classical ones
        for (const char* value : values)
            for (int slot = 0; slot < 3; ++slot) {
                std::vector<std::string> args = {"moments", names[n], "1", "2", "3"};
                args[2 + slot] = value;
                const CliRun m = Cli(args);
                EXPECT_EQ(m.Status, 0);
                ASSERT_EQ(m.Objects.size(), 1u) << names[n] << " " << value;
                ExpectNoNull(m.Objects[0], std::string(names[n]) + " " + value);
            }
    const CliRun p =
        Cli({"pdf", "Weibull", "1e-3", "1", "0", "--range", "-1e308", "1e308", "--points", "500"});
    ASSERT_EQ(p.Objects.size(), 1u);
    ExpectNoNull(p.Objects[0], "pdf");
    const CliRun fit =
        Cli({"fit"}, "0 1e-300 0.5 4\n0 1 0 1e6\n0 1 1e3 30\n1e300 1e300 0.5 4\n0 1 0.5 3e15\n");
    ASSERT_EQ(fit.Objects.size(), 5u);
    for (const auto& v : fit.Objects)
        ExpectNoNull(v, "fit");
}

} // namespace
